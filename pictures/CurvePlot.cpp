#include "pictures/CurvePlot.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace pictures {
namespace {

constexpr double kSize = 480;       // of the plot's square
constexpr double kMargin = 40;      // around it
constexpr size_t kMostPoints = 94;  // of a line; 1023 levels are 93 steps of 11
constexpr const char* kChannelColours[] = {"#d02020", "#108030", "#2040d0"};

struct Scale {
  double low;
  double high;

  double Y(double value) const { return kMargin + kSize * (high - value) / (high - low); }
};

std::string TextOf(double value) {
  std::array<char, 32> digits;
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value,
                                 std::chars_format::general, 6);
  return {digits.data(), end.ptr};
}

Picture Frame(const std::string& title, const Scale& scale) {
  Picture picture(kSize + 2 * kMargin, kSize + 2 * kMargin);
  picture.Outline({{kMargin, kMargin},
                   {kMargin + kSize, kMargin},
                   {kMargin + kSize, kMargin + kSize},
                   {kMargin, kMargin + kSize}},
                  "#888888", 1);
  picture.Text({kMargin, kMargin - 14}, title, "#000000");
  for (double value : {scale.low, scale.high}) {
    picture.Text({kMargin - 6, scale.Y(value) + 4}, TextOf(value), "#000000", Anchor::End);
  }
  return picture;
}

void DrawCurve(Picture& picture, const Scale& scale, const std::vector<double>& values,
               double width) {
  const size_t levels = values.size() / 3;
  if (levels < 2) {
    return;
  }
  // The last level is a point of the line too.
  const size_t step = std::max<size_t>(1, (levels - 1) / (kMostPoints - 1));
  for (size_t channel = 0; channel < 3; ++channel) {
    std::vector<Point> points;
    for (size_t level = 0; level < levels; level += step) {
      const double x = static_cast<double>(level) / static_cast<double>(levels - 1);
      points.push_back({kMargin + kSize * x, scale.Y(values[3 * level + channel])});
    }
    picture.Line(std::move(points), kChannelColours[channel], width);
  }
}

}  // namespace

Picture CurvePlot(const std::string& title, double maximum, const std::vector<Curve>& curves) {
  const Scale scale = {0, maximum};
  Picture picture = Frame(title, scale);
  for (size_t i = 0; i < curves.size(); ++i) {
    const double number = static_cast<double>(i);
    picture.Text({kMargin + 12, kMargin + 22 + 18 * number},
                 (curves.size() < 2 ? ""
                  : i == 0          ? "thin: "
                                    : "thick: ") +
                     curves[i].label,
                 "#000000");
    DrawCurve(picture, scale, curves[i].values, 0.8 + 1.2 * number);
  }
  return picture;
}

Picture DifferencePlot(const std::string& title, double limit, const Curve& difference) {
  const Scale scale = {-limit, limit};
  Picture picture = Frame(title, scale);
  picture.Line({{kMargin, scale.Y(0)}, {kMargin + kSize, scale.Y(0)}}, "#888888", 1);
  picture.Text({kMargin + 12, kMargin + 22}, difference.label, "#000000");
  DrawCurve(picture, scale, difference.values, 1.2);
  return picture;
}

}  // namespace pictures
