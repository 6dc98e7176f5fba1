#include "virtualnotebook/ColourCircle.h"

#include <algorithm>
#include <cmath>

namespace virtualnotebook {
namespace {

constexpr int kSize = 320;
constexpr double kRadius = 80;
constexpr double kExaggeration = 4;

}  // namespace

Image DrawColourCircle(const CircleGains& gains) {
  Image image{.width = kSize, .height = kSize, .pixels = {}};
  image.pixels.reserve(size_t{kSize} * kSize * 3);
  for (int row = 0; row < kSize; ++row) {
    for (int column = 0; column < kSize; ++column) {
      const double x = (column + 0.5) * 2 * kRadius / kSize;
      const double y = (row + 0.5) * 2 * kRadius / kSize;
      const bool inside = std::hypot(x - kRadius, y - kRadius) <= kRadius;
      const std::array<double, 3> gain = inside ? gains(x, y) : std::array<double, 3>{};
      for (double value : gain) {
        const double shown = inside ? 1 - kExaggeration * (1 - value) : 0;
        image.pixels.push_back(
            static_cast<uint8_t>(std::lround(255 * std::clamp(shown, 0.0, 1.0))));
      }
    }
  }
  return image;
}

}  // namespace virtualnotebook
