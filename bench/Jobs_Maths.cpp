// Gains: of points of the colour circle, and of colour temperatures.
#include "Jobs.h"

#include <algorithm>
#include <cmath>

#include "Harness.h"
#include "PlainForms.h"
#include "colormath/ColorTemperatureTrans.h"
#include "naturalcolor/CctCurve.h"

namespace bench {
namespace {

constexpr int kPoints = 1000;

struct CirclePoint {
  double rho;
  double theta;  // in degrees
};

// Strewn over the circle, so that no branch can be foretold.
std::vector<CirclePoint> Points() {
  std::vector<CirclePoint> points;
  for (int i = 0; i < kPoints; ++i) {
    points.push_back({(i * 619 % kPoints + 1) / 1000.0, i * 383 % kPoints * 0.36});
  }
  return points;
}

// Between white and the hue, between two hues sixty degrees apart.
void AppendPlainGains(const CirclePoint& point, Lut& gains) {
  constexpr double kR = 0.93F, kG = 0.92F, kB = 0.88F, kC = 0.92F, kM = 0.93F, kY = 0.90F;
  constexpr double kHues[7][3] = {{kC, 1, 1}, {kB, kB, 1}, {1, kM, 1}, {1, kR, kR},
                                  {1, 1, kY}, {kG, 1, kG}, {kC, 1, 1}};
  const auto sector = static_cast<size_t>(point.theta / 60);
  const double part = point.theta / 60 - static_cast<double>(sector);
  for (size_t c = 0; c < 3; ++c) {
    const double hue = kHues[sector][c] * (1 - part) + kHues[sector + 1][c] * part;
    gains.push_back(1 - point.rho + hue * point.rho);
  }
}

void AddGains() {
  const auto ours = [points = Points(), gains = Lut()]() mutable -> const Lut& {
    const velora::ColorTemperatureTrans circle;
    gains.clear();
    for (const CirclePoint& point : points) {
      ColorTemperatureRgb rgb = {1, 1, 1};
      circle.GainCalc(point.rho, point.theta, &rgb);
      gains.insert(gains.end(), {rgb.r, rgb.g, rgb.b});
    }
    return gains;
  };
  const auto plain = [points = Points(), gains = Lut()]() mutable -> const Lut& {
    gains.clear();
    for (const CirclePoint& point : points) {
      AppendPlainGains(point, gains);
    }
    return gains;
  };
  AddRow(kGains, kOurs, LargestDifference(ResultOf(plain), ResultOf(ours)), ours);
  AddRow(kGains, kPlainForm, 0, plain);
}

// A factory curve has a point every few hundred kelvin.
velora::CctCurve Curve() {
  velora::CctCurve curve;
  for (int i = 0; i < 16; ++i) {
    curve.push_back({2500.0F + 400.0F * static_cast<float>(i), 1.0 - 0.01 * i, 0.9 + 0.005 * i,
                     0.6 + 0.02 * i});
  }
  return curve;
}

std::vector<float> Temperatures() {
  std::vector<float> temperatures;
  for (int i = 0; i < kPoints; ++i) {
    temperatures.push_back(2400.0F + 6.3F * static_cast<float>(i * 619 % kPoints));
  }
  return temperatures;
}

void AppendPlainGains(const velora::CctCurve& curve, float kelvin, Lut& gains) {
  const float x = std::clamp(kelvin, curve.front().cct, curve.back().cct);
  size_t next = 1;
  while (next + 1 < curve.size() && curve[next].cct < x) {
    ++next;
  }
  const CctAlgoInfo& from = curve[next - 1];
  const CctAlgoInfo& to = curve[next];
  for (double CctAlgoInfo::*channel : {&CctAlgoInfo::r, &CctAlgoInfo::g, &CctAlgoInfo::b}) {
    const auto low = static_cast<float>(from.*channel);
    const auto high = static_cast<float>(to.*channel);
    gains.push_back((high - low) * (x - from.cct) / (to.cct - from.cct) + low);
  }
}

void AddCurve() {
  const auto ours = [curve = Curve(), kelvins = Temperatures(),
                     gains = Lut()]() mutable -> const Lut& {
    gains.clear();
    for (const float kelvin : kelvins) {
      float r = 1;
      float g = 1;
      float b = 1;
      velora::CalcCctRgb(curve, kelvin, r, g, b);
      gains.insert(gains.end(), {r, g, b});
    }
    return gains;
  };
  const auto plain = [curve = Curve(), kelvins = Temperatures(),
                      gains = Lut()]() mutable -> const Lut& {
    gains.clear();
    for (const float kelvin : kelvins) {
      AppendPlainGains(curve, kelvin, gains);
    }
    return gains;
  };
  AddRow(kCurve, kOurs, LargestDifference(ResultOf(plain), ResultOf(ours)), ours);
  AddRow(kCurve, kPlainForm, 0, plain);
}

}  // namespace

void AddMathsRows() {
  AddGains();
  AddCurve();
}

}  // namespace bench
