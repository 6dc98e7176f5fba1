// Natural colour at work on the stage, and a plain calculation of what has to come.
#pragma once

#include <array>
#include <optional>
#include <vector>

#include "virtualnotebook/tour/Acts.h"

namespace tour {

using Gains = std::array<double, 3>;  // of R, G and B

// What the factory gave the host: the panel's gains at a colour temperature, and when to follow the
// room.
inline constexpr CctAlgoInfo kCurve[] = {
    {.cct = 2700, .r = 1, .g = 0.81, .b = 0.58}, {.cct = 3400, .r = 1, .g = 0.87, .b = 0.71},
    {.cct = 4200, .r = 1, .g = 0.92, .b = 0.82}, {.cct = 5000, .r = 1, .g = 0.96, .b = 0.90},
    {.cct = 6500, .r = 1, .g = 1, .b = 1},       {.cct = 7500, .r = 0.93, .g = 0.97, .b = 1},
    {.cct = 9000, .r = 0.86, .g = 0.94, .b = 1},
};
inline constexpr double kNeutralCct = 6500;
inline constexpr double kThreshold = 100;  // kelvin
inline constexpr double kDarkLux = 50;
inline constexpr double kDarkCct = 3400;  // taken for that of a dark room
inline constexpr double kSwitchedOnCct = 5000;

// By the straight line between the curve's points.
Gains GainsAt(double cct);
// As near as single precision, and six decimals on a command line, let them be.
bool AreNear(const Gains& a, const Gains& b);
// On the panel.
Gains ShownGains(const Stage& stage);

// What has to come, by a plain calculation from the readings. All its colour temperatures are whole
// kelvin, which numbers of either precision hold exactly.
class Calculation {
 public:
  // The frames of a dimming ahead of its last one.
  explicit Calculation(int frames) : frames_(frames) {}

  void StartSwitchedOff();  // ahead of all others; without it the start is switched on
  void Switch(bool on);
  void Read(double kelvin, double lux);
  void RefuseFrame(int number) { refused_ = number; }  // of the next dimming, from 1

  double Target() const { return target_; }
  double Shown() const { return shown_; }
  const std::vector<double>& Delivered() const { return delivered_; }  // frame by frame
  size_t CountDimmingFrames() const { return dimmingFrames_; }         // refused ones included
  size_t CountStarts() const { return starts_; }  // of dimmings, by a reading over the threshold

 private:
  void Dim(double target, int frames, int framesOfAStep);

  int frames_;
  double reference_ = kSwitchedOnCct;
  double target_ = kSwitchedOnCct;
  double shown_ = kSwitchedOnCct;
  bool failed_ = false;
  std::optional<int> refused_;
  std::vector<double> delivered_;
  size_t dimmingFrames_ = 0;
  size_t starts_ = 0;
};

// Starts natural colour, with nothing left of an earlier run, and stops it at the end. Each
// operation tells the calculation the same, and waits until as many frames have come.
class NaturalColour {
 public:
  enum class Source : int32_t { kSensor = 0, kSensorAndFirmware = 1 };
  enum class Delivery : int32_t { kByHelper = 0, kByPlatform = 1 };
  struct Settings {
    Source source;
    Delivery delivery;
    int frames;
    bool on;                     // at the start
    double measured = kDarkCct;  // by the firmware until then
  };
  NaturalColour(Stage& stage, const Settings& settings, Calculation& calculation);
  ~NaturalColour();
  NaturalColour(const NaturalColour&) = delete;
  NaturalColour& operator=(const NaturalColour&) = delete;

  // As the settings application does: the setting, and a ring.
  void Switch(bool on);
  void ChooseMode(int mode);  // while switched on

  // A report of the light sensor, with the colour temperature or, where the firmware tells that,
  // without. False when nobody listens.
  bool Report(double kelvin, double lux);
  bool Report(double lux);

  // The firmware measures, and says so. False when nobody listens.
  bool Measure(double kelvin);

  // All frames came so far.
  bool InTime() const { return inTime_; }

 private:
  void SetMeasurement(double kelvin);
  void Ring();
  void Await();
  void LookAtLog();

  Stage& stage_;
  Calculation& calculation_;
  double kelvin_ = 0;  // measured last
  double lux_ = 300;   // reported last; what the library takes until then
  size_t rings_ = 0;
  bool inTime_ = true;
  size_t linesSeen_ = 0;
  size_t framesSeen_ = 0;
  size_t ringsSeen_ = 0;
};

// "SensorColor": the colour temperature on the display, as the library stored it.
double StoredCct();

// The platform, called in this process, got the calculation's frames and no others.
Check AllFrames(Stage& stage, const Calculation& calculation);

}  // namespace tour
