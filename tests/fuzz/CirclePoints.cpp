// Points of the colour circle, from the host's hands: gains by atan2 instead of two arcsines, and a
// walk round the wheel instead of sectors.
#include <array>
#include <cmath>

#include "colormath/ColorTemperatureTrans.h"
#include "fuzz/Fuzz.h"
#include "support/LogCapture.h"

namespace {

constexpr double kUntouched = -7;

// Cyan, blue, magenta, red, yellow, green: the channels that a hue pulls down.
struct Hue {
  bool r;
  bool g;
  bool b;
};
constexpr std::array<Hue, 6> kHues = {{{true, false, false},
                                       {true, true, false},
                                       {false, true, false},
                                       {false, true, true},
                                       {false, false, true},
                                       {true, false, true}}};
// Strengths by platform in the hues' order.
struct Platform {
  uint32_t type;
  std::array<double, 6> strengths;
};
constexpr std::array<Platform, 2> kPlatforms = {
    {{0, {0.93, 0.82, 0.94, 0.95, 0.90, 0.94}}, {3, {0.92, 0.88, 0.93, 0.93, 0.90, 0.92}}}};

double Channel(const Platform& platform, double degrees, double rho, bool Hue::*channel) {
  const double place = degrees / 60;
  const auto from = static_cast<size_t>(place) % 6;
  const double way = place - std::floor(place);
  const auto strength = [&](size_t hue) {
    return kHues[hue].*channel ? platform.strengths[hue] : 1.0;
  };
  const double rim = strength(from) + (strength((from + 1) % 6) - strength(from)) * way;
  return 1 + (rim - 1) * rho;
}

void CheckPoint(const Platform& platform, double x, double y, double radius) {
  velora::ColorTemperatureTrans trans;
  fuzz::Require(trans.SetAlphas(platform.type), "the platform has strengths");
  ColorTemperatureRgb rgb = {kUntouched, kUntouched, kUntouched};
  trans.PointToGains({x, y}, radius, &rgb);

  const bool isUntouched = rgb.r == kUntouched && rgb.g == kUntouched && rgb.b == kUntouched;
  const auto isGain = [](double gain) { return gain >= 0.8199 && gain <= 1; };
  fuzz::Require(isUntouched || (isGain(rgb.r) && isGain(rgb.g) && isGain(rgb.b)),
                "gains are within their strengths, whatever the point is");

  const double dx = x - radius;
  const double dy = y - radius;
  const double distance = std::hypot(dx, dy);
  if (!(std::fabs(x) < 1e9 && std::fabs(y) < 1e9 && std::fabs(radius) < 1e9)) {
    return;
  }
  if (distance < 0.9e-6 || radius < -1.1e-6) {
    fuzz::Require(isUntouched, "the centre, and a circle turned inside out, give no gains");
  }
  if (distance < 1.1e-6 || radius < 1.1e-6) {
    return;
  }
  const double angle = std::atan2(dx, dy);
  const double degrees = std::fmod((angle < 0 ? angle + 2 * M_PI : angle) / M_PI * 180, 360);
  if (isUntouched) {
    fuzz::Require(degrees < 1e-6 || degrees > 360 - 1e-6, "only a full turn gives no gains");
    return;
  }
  const double rho = std::fmin(distance / radius, 1);
  constexpr double kTolerance = 1e-6;
  fuzz::Require(std::fabs(rgb.r - Channel(platform, degrees, rho, &Hue::r)) < kTolerance &&
                    std::fabs(rgb.g - Channel(platform, degrees, rho, &Hue::g)) < kTolerance &&
                    std::fabs(rgb.b - Channel(platform, degrees, rho, &Hue::b)) < kTolerance,
                "the gains are the wheel's");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const testsupport::LogCapture log;
  fuzz::Input input(data, size);
  for (int points = 0; points < 64 && !input.IsEmpty(); ++points) {
    const auto kind = input.Take<uint8_t>();
    const Platform& platform = kPlatforms[kind & 1];
    if ((kind & 2) != 0) {
      // On the application's circle, in steps of 1/256.
      const auto x = input.Take<uint16_t>();
      const auto y = input.Take<uint16_t>();
      CheckPoint(platform, x / 256.0, y / 256.0, 80);
    } else {
      const auto x = input.Take<double>();
      const auto y = input.Take<double>();
      CheckPoint(platform, x, y, input.Take<double>());
    }
  }
  return 0;
}
