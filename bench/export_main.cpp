// Whole exports of the shipped library under Wine, with what they do themselves told from what they
// ask of the system and of the closed libraries.
#include <string_view>

#include "Exports.h"
#include "Harness.h"

int main(int argc, char** argv) {
  const bench::Machine machine;
  if (argc == 2 && std::string_view(argv[1]) == "--memory") {
    bench::PrintMemory(machine);
    return 0;
  }
  bench::AddSettingsRows();
  bench::AddSwitchRows(machine);
  bench::AddFusionRows(machine);
  bench::AddFrameRows(machine);
  bench::AddLoadRows();
  return bench::Run(argc, argv);
}
