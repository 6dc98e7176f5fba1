#pragma once

#include <windows.h>

#include <array>
#include <cstdint>
#include <string>

#include "settings/RegisterHelper.h"
#include "velora/VeloraCtlApi.h"

namespace velora {

inline constexpr int kFeatureCount = 9;  // the FeatureTypes, with those that have no flags

// Which display features this machine has: four flags a feature, which stand in the machine's
// registry and are read once per process, by the first reader. A later change by another process is
// not seen.
//
// Features 7 and 8 are valid numbers without flags: they read as 0 and nothing sets them.
//
// Threads: no lock. Two threads that load at once store the same values.
class FeatureManager {
 public:
  static FeatureManager& GetInstance();

  // The flag; 0 for a featureType outside 0 to 8 (logged).
  int IsFeatureSupport(FeatureType type);
  int IsMultiUser(FeatureType type);
  int IsDisplayerCheck(FeatureType type);
  int IsFirstUse(FeatureType type);

  // Store the flag in the registry and, after that, in memory, as it is given. They do not load:
  // what is set ahead of the first reader is replaced in memory by what that reader loads.
  ResultT SetFeatureSupport(FeatureType type, int value);
  ResultT SetMultiUser(FeatureType type, int value);
  ResultT SetDisplayerCheck(FeatureType type, int value);
  ResultT SetFirstUseState(FeatureType type, int value);

  // Not kept in memory: each call goes to the registry.
  int GetFrameWorkType() const;
  ResultT SetFrameWorkType(int type);

 protected:
  using FlagTable = std::array<uint32_t, kFeatureCount>;  // indexed by FeatureType

  // What the readers and the writers have in common.
  int IsFeatureImpl(FeatureType type, const FlagTable* table);
  ResultT SetFeatureImpl(HKEY root, FeatureType type, int value, FlagTable* table,
                         const std::wstring& subKey);

 private:
  void Load();
  HKEY FirstUseRoot(FeatureType type) const;

  FlagTable support_{};
  FlagTable multiUser_{};
  FlagTable lcdCheck_{};
  FlagTable firstUse_{};
  bool isLoaded_ = false;
  const std::wstring supportPath_ = L"SOFTWARE\\Norvex\\Velora\\FeatureInfo\\Support";
  const std::wstring multiUserPath_ = L"SOFTWARE\\Norvex\\Velora\\FeatureInfo\\MultiUser";
  const std::wstring lcdCheckPath_ = L"SOFTWARE\\Norvex\\Velora\\FeatureInfo\\LcdCheck";
  const std::wstring firstUsePath_ = L"SOFTWARE\\Norvex\\Velora\\FeatureInfo\\FirstUse";
  const std::wstring featureInfoPath_ = L"SOFTWARE\\Norvex\\Velora\\FeatureInfo";
  const HKEY rootKey_ = HKEY_LOCAL_MACHINE;
  RegisterHelper registry_;
};

}  // namespace velora
