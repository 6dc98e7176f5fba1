#include "virtualnotebook/tour/Acts.h"

namespace tour {

std::vector<Act> AllActs() {
  std::vector<Act> all;
  for (const std::span<const Act> acts : {PresetActs(), WayActs(), ColourMathsActs(),
                                          UserModeActs(), NaturalColourActs(), SettingsActs()}) {
    all.insert(all.end(), acts.begin(), acts.end());
  }
  return all;
}

}  // namespace tour
