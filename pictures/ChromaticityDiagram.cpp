#include "pictures/ChromaticityDiagram.h"

namespace pictures {
namespace {

constexpr double kScale = 600;  // units of the picture for 1 of x or y
constexpr double kMargin = 40;
constexpr double kWidth = 0.8;   // of x
constexpr double kHeight = 0.9;  // of y

// The spectral locus from 380 to 700 nm, CIE 1931 2-degree observer.
constexpr Point kLocus[] = {
    {0.1741, 0.0050}, {0.1738, 0.0049}, {0.1733, 0.0048}, {0.1714, 0.0051}, {0.1644, 0.0109},
    {0.1566, 0.0177}, {0.1440, 0.0297}, {0.1241, 0.0578}, {0.0913, 0.1327}, {0.0687, 0.2007},
    {0.0454, 0.2950}, {0.0235, 0.4127}, {0.0082, 0.5384}, {0.0039, 0.6548}, {0.0139, 0.7502},
    {0.0389, 0.8120}, {0.0743, 0.8338}, {0.1142, 0.8262}, {0.1547, 0.8059}, {0.2296, 0.7543},
    {0.3016, 0.6923}, {0.3731, 0.6245}, {0.4441, 0.5547}, {0.5125, 0.4866}, {0.5752, 0.4242},
    {0.6270, 0.3725}, {0.6658, 0.3340}, {0.6915, 0.3083}, {0.7079, 0.2920}, {0.7190, 0.2809},
    {0.7260, 0.2740}, {0.7347, 0.2653},
};

constexpr const char* kTenths[] = {"0", "0.1", "0.2", "0.3", "0.4", "0.5", "0.6", "0.7", "0.8"};

}  // namespace

Point InDiagram(Point xy) { return {kMargin + kScale * xy.x, kMargin + kScale * (kHeight - xy.y)}; }

Picture ChromaticityDiagram(const std::vector<DiagramGamut>& gamuts) {
  Picture picture(kScale * kWidth + 2 * kMargin, kScale * kHeight + 2 * kMargin);
  std::vector<Point> locus;
  for (Point xy : kLocus) {
    locus.push_back(InDiagram(xy));
  }
  picture.Outline(locus, "#999999", 1);
  picture.Line({InDiagram({0, kHeight}), InDiagram({0, 0}), InDiagram({kWidth, 0})}, "#000000", 1);
  double value = 0;
  for (const char* label : kTenths) {
    const Point onX = InDiagram({value, 0});
    const Point onY = InDiagram({0, value});
    picture.Text({onX.x, onX.y + 18}, label, "#000000", Anchor::Middle);
    picture.Text({onY.x - 8, onY.y + 4}, label, "#000000", Anchor::End);
    value += 0.1;
  }
  Point label = InDiagram({0.45, 0.85});
  for (const DiagramGamut& gamut : gamuts) {
    picture.Outline({InDiagram(gamut.red), InDiagram(gamut.green), InDiagram(gamut.blue)},
                    gamut.colour, gamut.lineWidth);
    picture.Dot(InDiagram(gamut.white), 4, gamut.colour);
    picture.Text(label, gamut.label, gamut.colour);
    label.y += 18;
  }
  return picture;
}

}  // namespace pictures
