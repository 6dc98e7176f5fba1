// The notebook's display pipeline as the software panel renders it.
#pragma once

#include "VeloraPlatform/SoftwarePanel.h"
#include "virtualnotebook/Notebook.h"

namespace tour {

// LUTs and matrix as the platform's calls left them, and the last gains, if there were any, in
// state.
void TakePipeline(const virtualnotebook::Notebook& notebook, softwarepanel::State& state);

}  // namespace tour
