// A user mode's profile, made, signed and opened to all users, as the library saves it.
#include "Jobs.h"

#include <cstring>
#include <filesystem>

#include "Harness.h"
#include "frame/Constants.h"
#include "icc/ICCProfileOperation.h"

namespace bench {

void AddProfileRows() {
  std::filesystem::create_directories(velora::userTempDir);
  UserDesignInfo design = {};
  std::strcpy(design.id, "bench");
  std::strcpy(design.modeName, "Benchmark");
  design.gamut = 1;
  design.gamma = 2.2;
  design.whitePointX = 0.3127;
  design.whitePointY = 0.3290;
  AddRow(kProfile, kOurs, std::nullopt, [design]() mutable {
    benchmark::DoNotOptimize(velora::ICCProfileOperation().CreateAndSaveIccProfile(design));
  });
}

}  // namespace bench
