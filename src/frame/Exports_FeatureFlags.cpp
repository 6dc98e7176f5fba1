// The feature flags forward at once: they are asked so often that an entry line would flood the
// log.
#include "settings/FeatureManager.h"
#include "velora/VeloraCtlApi.h"

using velora::FeatureManager;

int IsFeatureSupport(int featureType) {
  return FeatureManager::GetInstance().IsFeatureSupport(featureType);
}

int IsMultiUser(int featureType) { return FeatureManager::GetInstance().IsMultiUser(featureType); }

int IsDisplayerCheck(int featureType) {
  return FeatureManager::GetInstance().IsDisplayerCheck(featureType);
}

int IsFirstUse(int featureType) { return FeatureManager::GetInstance().IsFirstUse(featureType); }

ResultT SetFeatureSupport(int featureType, int value) {
  return FeatureManager::GetInstance().SetFeatureSupport(featureType, value);
}

ResultT SetMultiUser(int featureType, int value) {
  return FeatureManager::GetInstance().SetMultiUser(featureType, value);
}

ResultT SetDisplayerCheck(int featureType, int value) {
  return FeatureManager::GetInstance().SetDisplayerCheck(featureType, value);
}

ResultT SetFirstUseState(int featureType, int value) {
  return FeatureManager::GetInstance().SetFirstUseState(featureType, value);
}

int GetFrameWorkType() { return FeatureManager::GetInstance().GetFrameWorkType(); }

ResultT SetFrameWorkType(int type) { return FeatureManager::GetInstance().SetFrameWorkType(type); }
