#include "naturalcolor/CctCurve.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace velora {
namespace {

// Two colour temperatures no farther apart than this, in kelvin, are one.
constexpr float kSameCct = 1e-6F;

float Interp(float x0, float y0, float x1, float y1, float x) {
  if (x0 >= x) return y0;
  if (!(x1 - x > kSameCct)) return y1;
  if (!(std::fabs(x1 - x0) > kSameCct)) return y1;
  return (y1 - y0) * (x - x0) / (x1 - x0) + y0;
}

// The first point of the interval that holds x; the curve's first one where none does.
size_t FindInterval(const CctCurve& curve, float x) {
  for (size_t i = 0; i + 1 < curve.size(); ++i) {
    if (x > curve[i].cct && curve[i + 1].cct >= x) {
      return i;
    }
  }
  return 0;
}

// 1.7 counts as 1 too.
bool IsOne(double gain) { return gain >= 1 && gain < 2; }

}  // namespace

float Clamp(float low, float value, float high) {
  if (low > value) return low;
  return value > high ? high : value;
}

float ClampToCurve(const CctCurve& curve, float cct) {
  return Clamp(curve.front().cct, cct, curve.back().cct);
}

std::optional<float> FindNeutralCct(const CctCurve& curve) {
  const auto point = std::ranges::find_if(curve, [](const CctAlgoInfo& info) {
    return IsOne(info.r) && IsOne(info.g) && IsOne(info.b);
  });
  return point == curve.end() ? std::nullopt : std::optional(point->cct);
}

bool CalcCctRgb(const CctCurve& curve, float cct, float& r, float& g, float& b) {
  if (curve.empty()) {
    return false;
  }
  const float x = ClampToCurve(curve, cct);
  const size_t i = FindInterval(curve, x);
  const CctAlgoInfo& from = curve[i];
  const CctAlgoInfo& to = curve[std::min(i + 1, curve.size() - 1)];
  const auto gain = [&](double CctAlgoInfo::*channel) {
    return Interp(from.cct, static_cast<float>(from.*channel), to.cct,
                  static_cast<float>(to.*channel), x);
  };
  r = gain(&CctAlgoInfo::r);
  g = gain(&CctAlgoInfo::g);
  b = gain(&CctAlgoInfo::b);
  return true;
}

}  // namespace velora
