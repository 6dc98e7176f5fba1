#pragma once

#include <cstdint>

#include "velora/VeloraCtlApi.h"

namespace velora {

// Several features tint one panel, whose platform has a single colour temperature: the gains of all
// of them are multiplied. What the settings hold is read through the exports, so that the log shows
// it as it shows a host's calls. Has no state; any thread.
class FusionAlgorithm {
 public:
  // What goes to the platform when this feature has changed. A source that can't be read is left
  // out; a feature without a row gives neutral gains.
  void Fusion(uint32_t feature, const FusionInfo* input, Color3DInfo* output) const;

  // Whether the platform takes the fusion of this feature with others.
  bool IsNeedFusion(uint32_t feature) const;

  // Strength of eye protection at the stored slider position, or at the default one.
  double GetProtectValue() const;

  // The point of the colour circle as gains, with eye protection in them or beside them.
  void GetColorTemperatureInfo(Color3DInfo& info) const;

 private:
  void FusionWhitePoint(const FusionInfo& input, Color3DInfo& output) const;
  void FusionColorTemperature(const FusionInfo& input, Color3DInfo& output) const;
  void FusionNaturalColor(const FusionInfo& input, Color3DInfo& output) const;

  struct FeatureHandler {
    uint32_t feature;
    void (FusionAlgorithm::*fuse)(const FusionInfo& input, Color3DInfo& output) const;
  };
  static const FeatureHandler fusionFeatureTable[3];

  void MergeColorTemperature(Color3DInfo& output) const;
  void MergeWhitePoint(uint32_t status, Color3DInfo& output) const;
  ResultT MergeNaturalColor(uint32_t status, Color3DInfo& output) const;

  // False where no gain is to be merged; gain may then hold what was read of it.
  bool GetEyeProtectGain(uint32_t colorBlue, ColorTemperatureRgb& gain) const;
};

}  // namespace velora
