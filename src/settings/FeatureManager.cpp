#include "settings/FeatureManager.h"

#include <algorithm>

#include "frame/Log.h"

namespace velora {
namespace {

// A feature that has flags, and the name of its value in each of the flag keys.
struct Feature {
  FeatureType type;
  const wchar_t* name;
};

constexpr Feature kFeatures[] = {
    {FEATURE_TYPE_WHITEPOINT, L"WhitePoint"},
    {FEATURE_TYPE_EYE_PROTECT, L"EyeProtect"},
    {FEATURE_TYPE_TEMPERATURE, L"Temperature"},
    {FEATURE_TYPE_COLOR_FIELD, L"ColorField"},
    {FEATURE_TYPE_NATURAL_COLOR, L"NaturalColor"},
    {FEATURE_TYPE_DP_IN_OUT, L"DpInOut"},
    {FEATURE_TYPE_ESD, L"Esd"},
};

constexpr wchar_t kFrameWorkType[] = L"FrameWorkType";

bool IsInRange(FeatureType type) { return type >= 0 && type < kFeatureCount; }

bool AreValid(FeatureType type, const void* table, const FunctionLog& log) {
  if (table == nullptr) {
    log.Error(L"table null");
    return false;
  }
  if (!IsInRange(type)) {
    log.Error(L"invalid featureType:", type, L", valid range:[0, ", kFeatureCount, L")");
    return false;
  }
  return true;
}

}  // namespace

FeatureManager& FeatureManager::GetInstance() {
  static FeatureManager instance;
  return instance;
}

int FeatureManager::IsFeatureSupport(FeatureType type) { return IsFeatureImpl(type, &support_); }

int FeatureManager::IsMultiUser(FeatureType type) { return IsFeatureImpl(type, &multiUser_); }

int FeatureManager::IsDisplayerCheck(FeatureType type) { return IsFeatureImpl(type, &lcdCheck_); }

int FeatureManager::IsFirstUse(FeatureType type) { return IsFeatureImpl(type, &firstUse_); }

ResultT FeatureManager::SetFeatureSupport(FeatureType type, int value) {
  return SetFeatureImpl(rootKey_, type, value, &support_, supportPath_);
}

ResultT FeatureManager::SetMultiUser(FeatureType type, int value) {
  return SetFeatureImpl(rootKey_, type, value, &multiUser_, multiUserPath_);
}

ResultT FeatureManager::SetDisplayerCheck(FeatureType type, int value) {
  return SetFeatureImpl(rootKey_, type, value, &lcdCheck_, lcdCheckPath_);
}

// The root goes by the flags as they stand: ahead of the first reader that is the machine's hive,
// for a multi-user feature too.
ResultT FeatureManager::SetFirstUseState(FeatureType type, int value) {
  return SetFeatureImpl(FirstUseRoot(type), type, value, &firstUse_, firstUsePath_);
}

int FeatureManager::GetFrameWorkType() const {
  return registry_.RegReadValue(rootKey_, featureInfoPath_, kFrameWorkType, 0);
}

ResultT FeatureManager::SetFrameWorkType(int type) {
  return registry_.RegWriteValue(rootKey_, featureInfoPath_, kFrameWorkType,
                                 static_cast<uint32_t>(type));
}

int FeatureManager::IsFeatureImpl(FeatureType type, const FlagTable* table) {
  if (!AreValid(type, table, FunctionLog("FeatureManager::IsFeatureImpl"))) {
    return 0;
  }
  if (!isLoaded_) {
    Load();
  }
  return static_cast<int>((*table)[static_cast<size_t>(type)]);
}

ResultT FeatureManager::SetFeatureImpl(HKEY root, FeatureType type, int value, FlagTable* table,
                                       const std::wstring& subKey) {
  if (!AreValid(type, table, FunctionLog("FeatureManager::SetFeatureImpl"))) {
    return ResultFailed;
  }
  const auto feature = std::ranges::find(kFeatures, type, &Feature::type);
  if (feature == std::end(kFeatures)) {
    return ResultFailed;
  }
  const auto flag = static_cast<uint32_t>(value);
  const ResultT result = registry_.RegWriteValue(root, subKey, feature->name, flag);
  if (result == ResultOk) {
    (*table)[static_cast<size_t>(type)] = flag;
  }
  return result;
}

void FeatureManager::Load() {
  const auto read = [this](HKEY root, const std::wstring& subKey, const Feature& feature,
                           uint32_t defaultFlag) -> uint32_t {
    return registry_.RegReadValue(root, subKey, feature.name, defaultFlag) != 0;
  };
  for (const Feature& feature : kFeatures) {
    const auto row = static_cast<size_t>(feature.type);
    support_[row] = read(rootKey_, supportPath_, feature, 0);
    multiUser_[row] = read(rootKey_, multiUserPath_, feature, 0);
    lcdCheck_[row] = read(rootKey_, lcdCheckPath_, feature, 0);
    firstUse_[row] = read(FirstUseRoot(feature.type), firstUsePath_, feature, 1);
  }
  isLoaded_ = true;
}

// Only 1 is multi-user here: a flag of another value, which SetMultiUser keeps as it came, is not.
HKEY FeatureManager::FirstUseRoot(FeatureType type) const {
  return IsInRange(type) && multiUser_[static_cast<size_t>(type)] == 1 ? HKEY_CURRENT_USER
                                                                       : rootKey_;
}

}  // namespace velora
