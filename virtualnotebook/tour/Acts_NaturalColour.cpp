// Natural colour: the panel follows the light in the room.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>

#include "virtualnotebook/DayPlot.h"
#include "virtualnotebook/tour/Checks.h"
#include "virtualnotebook/tour/HelpersInTurn.h"
#include "virtualnotebook/tour/NaturalColour.h"

namespace tour {
namespace {

using namespace virtualnotebook;
using Source = NaturalColour::Source;
using Delivery = NaturalColour::Delivery;

constexpr int kEbookMode = 7;
constexpr int kPlatformsRefusal = 5;

// --- The day's light ---

struct Light {
  double kelvin;
  double lux;
};

// From this hour on, in straight lines to the end.
struct Span {
  double from;
  double to;
  Light atFrom;
  Light atTo;
};

constexpr Span kRoom[] = {
    {0, 6.5, {2800, 2}, {2800, 2}},            // night
    {6.5, 8, {2850, 160}, {2850, 180}},        // a lamp
    {8, 11.5, {4600, 350}, {6300, 1200}},      // daylight
    {11.5, 13.5, {6300, 1400}, {6300, 1400}},  // noon
    {13.5, 18, {6300, 1300}, {5000, 200}},     // daylight
    {18, 22.75, {2850, 180}, {2750, 140}},     // the lamp
    {22.75, 24, {2800, 2}, {2800, 2}},         // night
};

// A sky that is bluer, and darker by half, for half an hour.
constexpr double kClouds[] = {9.5, 10.5, 14.5, 15.5};
constexpr double kCloudLength = 0.5;
constexpr double kCloudKelvin = 700;

constexpr int kReadings = 144;   // one each ten minutes
constexpr double kFlicker = 40;  // kelvin, below the threshold

double HourOf(int reading) { return 24.0 * reading / kReadings; }
constexpr int ReadingAt(double hour) { return static_cast<int>(hour * kReadings / 24); }

Light LightAt(int reading) {
  const double hour = HourOf(reading);
  const Span& span = *std::ranges::find_if(kRoom, [=](const Span& s) { return hour < s.to; });
  const double part = (hour - span.from) / (span.to - span.from);
  Light light = {std::lerp(span.atFrom.kelvin, span.atTo.kelvin, part),
                 std::lerp(span.atFrom.lux, span.atTo.lux, part)};
  for (const double cloud : kClouds) {
    if (hour >= cloud && hour < cloud + kCloudLength) {
      light = {light.kelvin + kCloudKelvin, light.lux / 2};
    }
  }
  light.kelvin = std::round(light.kelvin + (reading % 2 == 0 ? kFlicker : -kFlicker) / 2);
  return light;
}

// --- What the user and the display do ---

constexpr int kSwitchOn = ReadingAt(1);
constexpr int kNoonOff = ReadingAt(12);
constexpr int kNoonOn = ReadingAt(12.5);
constexpr int kEbookOn = ReadingAt(16.5);
constexpr int kEbookOff = ReadingAt(17.5);
constexpr int kRefusal = ReadingAt(14.5);  // at the cloud
constexpr int kRefusedFrame = 20;

constexpr int kFrames = 50;

// Of the library's lines, which number thousands: what went wrong and what the user did.
void KeepMilestones(Outcome& outcome) {
  constexpr int kWarning = 2;
  constexpr const wchar_t* kMilestones[] = {L"dataIn:",
                                            L"NaturalColorReset Success",
                                            L"InitNatureColor end",
                                            L"SyncNatureColorStatus:",
                                            L"MonitorNatureColor S",
                                            L"ReadWmiSensorColor1:",
                                            L"FiniNatureColor Success"};
  outcome.linesLeftOut = std::erase_if(outcome.log, [&](const LogLine& line) {
    return line.level < kWarning && std::ranges::none_of(kMilestones, [&](const wchar_t* part) {
             return line.text.find(part) != std::wstring::npos;
           });
  });
}

size_t CountLogged(const Outcome& outcome, const wchar_t* part) {
  return static_cast<size_t>(std::ranges::count_if(outcome.log, [=](const LogLine& line) {
    return line.text.find(part) != std::wstring::npos;
  }));
}

std::string Kelvin(double cct) { return std::to_string(std::lround(cct)) + " K"; }

// --- By the platform ---

// One day, hour by hour.
class Day {
 public:
  Day(Stage& stage, Calculation& calculation) : stage_(stage), calculation_(calculation) {}

  void Live() {
    NaturalColour natural(stage_,
                          {.source = Source::kSensor,
                           .delivery = Delivery::kByPlatform,
                           .frames = kFrames,
                           .on = false},
                          calculation_);
    stage_.day.clear();
    for (int reading = 0; reading < kReadings; ++reading) {
      Happen(natural, reading);
      const Light light = LightAt(reading);
      const bool heard = natural.Report(light.kelvin, light.lux);
      heard_ += heard ? 1 : 0;
      heardWhenOn_ = heardWhenOn_ && heard == IsOn(reading);
      Look(reading, light);
    }
    inTime_ = natural.InTime();
  }

  std::vector<Check> Checks(const Outcome& outcome) const {
    const std::string starts = std::to_string(calculation_.CountStarts());
    return {
        {"no frame was missing", inTime_},
        AllFrames(stage_, calculation_),
        {"behind each reading the panel and the settings had the temperature of the calculation",
         steady_},
        {"the sensor was listened to while natural colour was on, and only then", heardWhenOn_},
        {"of " + std::to_string(heard_) + " readings " + starts + " were over the threshold",
         CountLogged(outcome, L"StartCct:isEnableCctDimming = ") == heard_ &&
             CountLogged(outcome, L"StartCct:isEnableCctDimming = 1") ==
                 calculation_.CountStarts()},
        {"the refused frame left the panel at " + Kelvin(afterRefusal_) + " of " +
             Kelvin(refusedTarget_),
         Logged(outcome, L"Set3DColorTemperature error: 5") && afterRefusal_ > 0 &&
             afterRefusal_ < refusedTarget_},
        {"the next reading, within the threshold, took it to " + Kelvin(afterResumption_),
         afterResumption_ == LightAt(kRefusal + 1).kelvin}};
  }

 private:
  static bool IsOn(int reading) {
    return reading >= kSwitchOn && !(reading >= kNoonOff && reading < kNoonOn) &&
           !(reading >= kEbookOn && reading < kEbookOff);
  }

  void Happen(NaturalColour& natural, int reading) {
    switch (reading) {
      case kSwitchOn:
      case kNoonOn:
        return natural.Switch(true);
      case kNoonOff:
        return natural.Switch(false);
      case kEbookOn:
        return natural.ChooseMode(kEbookMode);
      case kEbookOff:
        return natural.ChooseMode(P3Mode);
      case kRefusal:
        stage_.Notebook().FailCall("PlatformSet3DColorTemperature", kRefusedFrame,
                                   kPlatformsRefusal);
        return calculation_.RefuseFrame(kRefusedFrame);
      default:
        return;
    }
  }

  void Look(int reading, const Light& light) {
    const double stored = StoredCct();
    const Gains gains = ShownGains(stage_);
    steady_ = steady_ && stored == calculation_.Shown() && AreNear(gains, GainsAt(stored));
    stage_.day.push_back({.hour = HourOf(reading),
                          .ambient = light.kelvin,
                          .target = calculation_.Target(),
                          .delivered = stored,
                          .gains = gains});
    if (reading == kRefusal) {
      afterRefusal_ = stored;
      refusedTarget_ = calculation_.Target();
    } else if (reading == kRefusal + 1) {
      afterResumption_ = stored;
    }
  }

  Stage& stage_;
  Calculation& calculation_;
  bool inTime_ = false;
  bool steady_ = true;
  bool heardWhenOn_ = true;
  size_t heard_ = 0;
  double afterRefusal_ = 0;
  double refusedTarget_ = 0;
  double afterResumption_ = 0;
};

Report DayByPlatform(Stage& stage) {
  stage.ClearPanel();
  stage.StartHost();
  const uint32_t starts = stage.Shown().initCount;
  Calculation calculation(kFrames);
  Day day(stage, calculation);
  Outcome outcome = stage.Do([&](HostedLibrary&) {
    day.Live();
    return ResultOk;
  });
  std::vector<Check> checks = day.Checks(outcome);
  checks.push_back(
      {"what was started of the platform is stopped", stage.Shown().initCount == starts});
  KeepMilestones(outcome);
  return {outcome, checks};
}

std::string DrawDay(Stage& stage, const std::string& directory) {
  constexpr char kName[] = "natural-colour-day.svg";
  WriteDayPlot(directory + "/" + kName, stage.day,
               {{HourOf(0), HourOf(kSwitchOn), "off"},
                {HourOf(kNoonOff), HourOf(kNoonOn), "off"},
                {HourOf(kRefusal), HourOf(kRefusal + 1), "refused"},
                {HourOf(kEbookOn), HourOf(kEbookOff), "e-book"}});
  return kName;
}

// --- By the firmware's event ---

Report FirmwareAndSensor(Stage& stage) {
  constexpr double kMorning = 4400;
  constexpr double kNoon = 6100;
  constexpr double kBright = 400;
  constexpr double kDark = 10;
  stage.ClearPanel();
  stage.StartHost();
  Calculation calculation(kFrames);
  bool inTime = false;
  std::vector<double> cct;
  Outcome outcome = stage.Do([&](HostedLibrary&) {
    NaturalColour natural(stage,
                          {.source = Source::kSensorAndFirmware,
                           .delivery = Delivery::kByPlatform,
                           .frames = kFrames,
                           .on = true,
                           .measured = kMorning},
                          calculation);
    cct.push_back(StoredCct());
    natural.Measure(kNoon);
    cct.push_back(StoredCct());
    natural.Report(kDark);
    cct.push_back(StoredCct());
    natural.Report(kBright);
    cct.push_back(StoredCct());
    inTime = natural.InTime();
    return ResultOk;
  });
  KeepMilestones(outcome);
  return {outcome,
          {{"no frame was missing", inTime},
           AllFrames(stage, calculation),
           {"the first measurement, " + Kelvin(kMorning) + ", did not wait for an event",
            cct[0] == kMorning},
           {"the event brought " + Kelvin(kNoon), cct[1] == kNoon},
           {"in the dark it is " + Kelvin(kDarkCct), cct[2] == kDarkCct},
           {"in the light it is the measurement again", cct[3] == kNoon},
           {"the firmware was asked twice", stage.Notebook().biosQueries.size() == 2}}};
}

// --- By the helper ---

Report DayByHelper(Stage& stage) {
  constexpr int kFewFrames = 3;
  constexpr size_t kTooMany = 11;
  constexpr Light kLamp = {2850, 180};
  constexpr Light kDaylight = {5600, 900};
  constexpr Light kCloud = {6900, 400};
  constexpr Light kNight = {2800, 2};
  stage.ClearPanel();
  stage.StartHost();
  Calculation calculation(kFewFrames);
  HelpersInTurn helpers(stage.Notebook(), stage.IsApart());
  bool inTime = false;
  double afterRefusal = 0;
  double afterResumption = 0;
  Outcome outcome = stage.Do([&](HostedLibrary&) {
    Notebook& notebook = stage.Notebook();
    NaturalColour natural(stage,
                          {.source = Source::kSensor,
                           .delivery = Delivery::kByHelper,
                           .frames = kFewFrames,
                           .on = false},
                          calculation);
    natural.Switch(true);
    natural.Report(kLamp.kelvin, kLamp.lux);
    natural.Report(kDaylight.kelvin, kDaylight.lux);
    notebook.Locked([&] { notebook.processes.assign(kTooMany, L"VeloraAssistant.exe"); });
    calculation.RefuseFrame(1);
    natural.Report(kCloud.kelvin, kCloud.lux);
    afterRefusal = StoredCct();
    notebook.Locked([&] { notebook.processes.clear(); });
    natural.Report(kCloud.kelvin - kThreshold, kCloud.lux);
    afterResumption = StoredCct();
    natural.Report(kNight.kelvin, kNight.lux);
    natural.Switch(false);
    inTime = natural.InTime();
    return ResultOk;
  });
  KeepMilestones(outcome);
  const std::vector<Gains>& shown = helpers.Shown();
  return {
      outcome,
      {{"no frame was missing", inTime},
       {"the panel showed the gains of " + std::to_string(shown.size()) + " helpers, as calculated",
        std::ranges::equal(
            shown, calculation.Delivered(),
            [](const Gains& got, double cct) { return AreNear(got, GainsAt(cct)); })},
       {"the library itself sent no colour temperature",
        stage.Notebook().platform.temperatures3D.empty()},
       {"with 11 helpers running no other is started",
        Logged(outcome, L"no start veloraassistand.exe") && afterRefusal == kDaylight.kelvin},
       {"the next reading, within the threshold, goes on",
        afterResumption == kCloud.kelvin - kThreshold}}};
}

constexpr Act kNaturalColourActs[] = {
    {"Natural colour, a day",
     "A reading of the light sensor each ten minutes, from a dark room through lamp light and\n"
     "daylight with clouds, in a few seconds: the panel follows in dimmings of 51 frames. Natural\n"
     "colour comes on at one o'clock; switched off for half an hour at noon it goes to the "
     "neutral\n"
     "point, and back on it stays at 5000 K until the light changes. At half past two the "
     "platform\n"
     "refuses a frame. From half past four the e-book mode keeps natural colour off for an hour.",
     DayByPlatform, "chart-9-night.png", DrawDay},
    {"Natural colour by the firmware's event",
     "The firmware measures the colour temperature and rings; the sensor tells how bright it is.",
     FirmwareAndSensor, nullptr},
    {"Natural colour by VeloraAssistant.exe",
     "The host is a service that cannot reach the display: each frame is shown by a process of "
     "its\n"
     "own in the user's session. Dimmings of 4 frames, one of them while too many helpers run.",
     DayByHelper, nullptr},
};

}  // namespace

std::span<const Act> NaturalColourActs() { return kNaturalColourActs; }

}  // namespace tour
