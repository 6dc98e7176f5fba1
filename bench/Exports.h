// The jobs of export_bench: whole exports of the shipped library.
#pragma once

#include "Host.h"

namespace bench {

void AddSettingsRows();
void AddSwitchRows(const Machine& machine);
void AddFusionRows(const Machine& machine);
void AddFrameRows(const Machine& machine);
void AddLoadRows();

// Each export's heap, and what loading the library adds to the process, as JSON.
void PrintMemory(const Machine& machine);

}  // namespace bench
