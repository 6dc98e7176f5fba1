#pragma once

namespace velora {

// White point and primaries of an RGB space, CIE 1931 xy.
struct ChromaticityGamut {
  double whiteX;
  double whiteY;
  double redX;
  double redY;
  double greenX;
  double greenY;
  double blueX;
  double blueY;

  friend bool operator==(const ChromaticityGamut&, const ChromaticityGamut&) = default;
};

// The gamuts that a user can choose from, by their number from 1. All have a D65 white, which a
// mode replaces by its own.
inline constexpr ChromaticityGamut kTargetGamuts[] = {
    {0.3127, 0.329, 0.64, 0.33, 0.3, 0.6, 0.15, 0.06},
    {0.3127, 0.329, 0.68, 0.32, 0.265, 0.69, 0.15, 0.06},
    {0.3127, 0.329, 0.64, 0.33, 0.21, 0.71, 0.15, 0.06},
    {0.3127, 0.329, 0.708, 0.292, 0.17, 0.797, 0.131, 0.046},
    {0.3127, 0.329, 0.64, 0.33, 0.29, 0.6, 0.15, 0.06},
    {0.3127, 0.329, 0.63, 0.34, 0.31, 0.595, 0.155, 0.07},
};
inline constexpr int kTargetGamutCount = 6;

// Null for any number but 1 to 6.
constexpr const ChromaticityGamut* FindTargetGamut(int number) {
  return number >= 1 && number <= kTargetGamutCount ? &kTargetGamuts[number - 1] : nullptr;
}

}  // namespace velora
