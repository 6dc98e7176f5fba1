#pragma once

#include <span>

#include "virtualnotebook/ImportRedirection.h"

namespace virtualnotebook {

// Every function that the notebook stands in for.
std::span<const ImportedFunction> Imports();

}  // namespace virtualnotebook
