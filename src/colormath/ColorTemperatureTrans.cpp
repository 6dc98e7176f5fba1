#include "colormath/ColorTemperatureTrans.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iterator>

#include "frame/IntegerCast.h"
#include "frame/Log.h"

namespace velora {
namespace {

constexpr double kPi = 3.141592653589793;
constexpr double kTwoPi = 6.283185307179586;
constexpr double kZero = 1e-6;  // of distances on the circle
constexpr double kSectorDegrees = 60;

// Strengths in single precision, widened.
struct AlphaInfo {
  uint32_t platformType;
  double alphaR;
  double alphaG;
  double alphaB;
  double alphaC;
  double alphaM;
  double alphaY;
};
constexpr AlphaInfo alphaInfoTable[] = {
    {0, 0.95F, 0.94F, 0.82F, 0.93F, 0.94F, 0.90F}, {1, 0.93F, 0.92F, 0.88F, 0.92F, 0.93F, 0.90F},
    {2, 0.93F, 0.92F, 0.88F, 0.92F, 0.93F, 0.90F}, {3, 0.93F, 0.92F, 0.88F, 0.92F, 0.93F, 0.90F},
    {5, 0.93F, 0.92F, 0.88F, 0.92F, 0.93F, 0.90F}, {6, 0.93F, 0.92F, 0.88F, 0.92F, 0.93F, 0.90F},
};

double Lerp(double a, double b, double t) { return t >= 0 && t <= 1 ? a * (1 - t) + b * t : 0.0; }

// Rounds down.
int32_t SectorOf(double theta) { return TruncateToInt32(std::floor(theta / kSectorDegrees)); }

// From the +y axis towards +x, by arcsine on either side of the horizontal.
double HueAngle(double dx, double dy, double distance) {
  if (dy > 0) {
    const double angle = std::asin(dx / distance);
    return angle < 0 ? kTwoPi + angle : angle;
  }
  return kPi - std::asin(dx / distance);
}

}  // namespace

ColorTemperatureTrans::ColorTemperatureTrans()
    : alphaR(0.93F), alphaG(0.92F), alphaB(0.88F), alphaC(0.92F), alphaM(0.93F), alphaY(0.90F) {}

bool ColorTemperatureTrans::SetAlphas(uint32_t platformType) {
  const auto* row = std::ranges::find(alphaInfoTable, platformType, &AlphaInfo::platformType);
  if (row == std::end(alphaInfoTable)) {
    return false;
  }
  alphaR = row->alphaR;
  alphaG = row->alphaG;
  alphaB = row->alphaB;
  alphaC = row->alphaC;
  alphaM = row->alphaM;
  alphaY = row->alphaY;
  return true;
}

void ColorTemperatureTrans::PointToGains(const ColorTemperatureConfig& config, double radius,
                                         ColorTemperatureRgb* rgb) const {
  const double dx = config.x - radius;
  const double dy = config.y - radius;
  const double distance = std::sqrt(dx * dx + dy * dy);
  if (std::fabs(distance) <= kZero) {
    return;
  }
  const double theta = HueAngle(dx, dy, distance) / kPi * 180;
  double rho = std::fabs(radius) > kZero ? distance / radius : distance;
  if (rho > 1.0) {
    rho = 1.0;  // a point beyond the rim is the rim's at the same angle
  }
  GainCalc(rho, theta, rgb);
}

void ColorTemperatureTrans::GainCalc(double rho, double theta, ColorTemperatureRgb* rgb) const {
  constexpr FunctionLog log("ColorTemperatureTrans::GainCalc");
  if (!(rho > 0 && rho <= 1)) {
    log.Error(L"Invalid rho value, valid range:(0, 1]! rho:", rho);
    return;
  }
  // Each sector goes from its hue to the next one's.
  const ColorTemperatureRgb hues[] = {
      {alphaC, 1, 1},       // cyan
      {alphaB, alphaB, 1},  // blue
      {1, alphaM, 1},       // magenta
      {1, alphaR, alphaR},  // red
      {1, 1, alphaY},       // yellow
      {alphaG, 1, alphaG},  // green
  };
  constexpr int32_t kSectors = std::size(hues);
  const int32_t sector = SectorOf(theta);
  if (sector < 0 || sector >= kSectors) {
    log.Error(L"Invalid theta type:", sector);
    return;
  }
  const double fraction = theta / kSectorDegrees - sector;
  if (!(fraction >= 0 && fraction <= 1)) {
    return;
  }
  const ColorTemperatureRgb& a = hues[sector];
  const ColorTemperatureRgb& b = hues[(sector + 1) % kSectors];
  rgb->r = Lerp(1.0, Lerp(a.r, b.r, fraction), rho);
  rgb->g = Lerp(1.0, Lerp(a.g, b.g, fraction), rho);
  rgb->b = Lerp(1.0, Lerp(a.b, b.b, fraction), rho);
}

}  // namespace velora
