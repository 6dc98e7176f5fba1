#include "pictures/LutSlices.h"

#include <algorithm>
#include <cmath>

namespace pictures {
namespace {

constexpr double kCell = 7;
constexpr double kGap = 14;
constexpr double kMargin = 40;
constexpr size_t kColumns = 9;

Point SliceOf(size_t blue, size_t size) {
  const double stride = kCell * static_cast<double>(size) + kGap;
  const size_t column = blue % kColumns;
  const size_t row = blue / kColumns;
  return {kMargin + stride * static_cast<double>(column),
          kMargin + stride * static_cast<double>(row)};
}

// colour(entry) for each entry of the LUT.
template <typename ColourAt>
Picture Slices(const std::string& title, size_t size, ColourAt colour) {
  const double stride = kCell * static_cast<double>(size) + kGap;
  const size_t rows = (size + kColumns - 1) / kColumns;
  Picture picture(2 * kMargin - kGap + stride * static_cast<double>(std::min(size, kColumns)),
                  2 * kMargin - kGap + stride * static_cast<double>(rows));
  picture.Text({kMargin, kMargin - 14}, title, "#000000");
  for (size_t blue = 0; blue < size; ++blue) {
    for (size_t red = 0; red < size; ++red) {
      for (size_t green = 0; green < size; ++green) {
        picture.Area(CellOf(red, green, blue, size), kCell, kCell,
                     colour((red * size + green) * size + blue));
      }
    }
    const Point at = SliceOf(blue, size);
    const double width = stride - kGap;
    picture.Outline({at, {at.x + width, at.y}, {at.x + width, at.y + width}, {at.x, at.y + width}},
                    "#888888", 1);
  }
  return picture;
}

int Mix(double from, double to, double part) {
  return static_cast<int>(std::lround(from + (to - from) * part));
}

// Piecewise from white by yellow and red to dark red.
Colour HeatOf(double part) {
  if (part <= 0) {
    return "#ffffff";
  }
  if (part < 0.5) {
    return ColourOf(255, Mix(240, 110, 2 * part), Mix(150, 20, 2 * part));
  }
  const double rest = std::min(2 * part - 1, 1.0);
  return ColourOf(Mix(255, 110, rest), Mix(110, 0, rest), Mix(20, 0, rest));
}

}  // namespace

Point CellOf(size_t red, size_t green, size_t blue, size_t size) {
  const Point slice = SliceOf(blue, size);
  return {slice.x + kCell * static_cast<double>(red),
          slice.y + kCell * static_cast<double>(size - 1 - green)};
}

Picture LutSlices(const std::string& title, std::span<const double> lut, size_t size,
                  double maximum) {
  return Slices(title, size, [&](size_t entry) {
    const auto byte = [&](size_t channel) {
      return static_cast<int>(
          std::lround(255 * std::clamp(lut[3 * entry + channel] / maximum, 0.0, 1.0)));
    };
    return ColourOf(byte(0), byte(1), byte(2));
  });
}

Picture LutDifferenceSlices(const std::string& title, std::span<const double> first,
                            std::span<const double> second, size_t size, double limit) {
  return Slices(title, size, [&](size_t entry) {
    double most = 0;
    for (size_t i = 3 * entry; i < 3 * entry + 3; ++i) {
      most = std::max(most, std::fabs(first[i] - second[i]));
    }
    return HeatOf(limit > 0 ? most / limit : 0);
  });
}

}  // namespace pictures
