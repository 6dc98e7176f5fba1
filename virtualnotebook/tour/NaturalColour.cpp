#include "virtualnotebook/tour/NaturalColour.h"

#include <windows.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <iterator>
#include <string>

namespace tour {
namespace {

using namespace virtualnotebook;

constexpr wchar_t kKey[] = L"SOFTWARE\\Norvex\\Velora\\NaturalColor";
constexpr int kEbookMode = 7;
constexpr uint32_t kPlatformThatFuses = 2;
constexpr int kSwitchFrames = 25;          // of the short dimming
constexpr uint32_t kMeasuredEvent = 705;   // of the firmware
constexpr DWORD kDimmingPatience = 60000;  // milliseconds for the frames of one dimming

NatureColorDataIn DataIn(const NaturalColour::Settings& settings) {
  return {.frameCount = settings.frames,
          .frameTime = 0,
          .dimmingThreshold = static_cast<float>(kThreshold),
          .methodVersion = 1,
          .minLuma = static_cast<float>(kDarkCct),
          .luminanceThreshold = static_cast<float>(kDarkLux),
          .monitorType = static_cast<int32_t>(settings.source),
          .executionType = static_cast<int32_t>(settings.delivery),
          .algoInfo = kCurve,
          .algoInfoCnt = static_cast<int32_t>(std::size(kCurve))};
}

}  // namespace

Gains GainsAt(double cct) {
  const double x = std::clamp<double>(cct, std::begin(kCurve)->cct, std::rbegin(kCurve)->cct);
  const CctAlgoInfo* to = std::begin(kCurve) + 1;
  while (to->cct < x) {
    ++to;
  }
  const CctAlgoInfo* const from = to - 1;
  const double part = (x - from->cct) / (to->cct - from->cct);
  return {std::lerp(from->r, to->r, part), std::lerp(from->g, to->g, part),
          std::lerp(from->b, to->b, part)};
}

bool AreNear(const Gains& a, const Gains& b) {
  constexpr double kTolerance = 1e-6;
  return std::ranges::equal(a, b, [](double x, double y) { return std::abs(x - y) <= kTolerance; });
}

Gains ShownGains(const Stage& stage) {
  const Color3DInfo shown = stage.Shown().temperature3D;
  return {shown.r, shown.g, shown.b};
}

// --- Calculation ---

void Calculation::StartSwitchedOff() {
  shown_ = target_ = kNeutralCct;
  delivered_.push_back(kNeutralCct);
}

void Calculation::Switch(bool on) {
  Dim(on ? kSwitchedOnCct : kNeutralCct, std::max(frames_ - kSwitchFrames, 0), kSwitchFrames);
}

void Calculation::Read(double kelvin, double lux) {
  const double wanted = lux < kDarkLux ? kDarkCct : kelvin;
  const bool isFar = std::abs(wanted - reference_) > kThreshold;
  if (isFar) {
    reference_ = wanted;
    ++starts_;
  }
  if (isFar || failed_) {
    Dim(std::clamp<double>(wanted, std::begin(kCurve)->cct, std::rbegin(kCurve)->cct), frames_,
        frames_);
  }
}

void Calculation::Dim(double target, int frames, int framesOfAStep) {
  target_ = target;
  const double step = std::trunc((target - shown_) / framesOfAStep);
  for (int number = 1; number <= frames + 1; ++number) {
    ++dimmingFrames_;
    failed_ = refused_ == number;
    if (failed_) {
      refused_.reset();
      return;
    }
    shown_ = number <= frames ? shown_ + step : target;
    delivered_.push_back(shown_);
  }
}

// --- NaturalColour ---

NaturalColour::NaturalColour(Stage& stage, const Settings& settings, Calculation& calculation)
    : stage_(stage), calculation_(calculation) {
  stage_.Notebook().platformType = kPlatformThatFuses;
  RegDeleteTreeW(HKEY_LOCAL_MACHINE, kKey);
  stage_.Library().SetNatureColorStatus(settings.on ? 1 : 0);
  SetMeasurement(settings.measured);
  const NatureColorDataIn data = DataIn(settings);
  stage_.Library().InitNatureColor(&data);
  if (!settings.on) {
    calculation_.StartSwitchedOff();
  } else if (settings.source == Source::kSensorAndFirmware) {
    calculation_.Read(kelvin_, lux_);
  }
  Await();
}

NaturalColour::~NaturalColour() { stage_.Library().FiniNatureColor(); }

void NaturalColour::Switch(bool on) {
  stage_.Library().SetNatureColorStatus(on ? 1 : 0);
  calculation_.Switch(on);
  Ring();
}

void NaturalColour::ChooseMode(int mode) {
  stage_.Library().SetColorFieldCurrentMode(mode);
  calculation_.Switch(mode != kEbookMode);
  Ring();
}

bool NaturalColour::Report(double kelvin, double lux) {
  const auto heard = stage_.Notebook().ReportLight(
      {SensorFloat(static_cast<float>(lux)), SensorFloat(static_cast<float>(kelvin))});
  if (heard) {
    calculation_.Read(kelvin, lux);
    Await();
  }
  return heard.has_value();
}

bool NaturalColour::Report(double lux) {
  const auto heard =
      stage_.Notebook().ReportLight({SensorFloat(static_cast<float>(lux)), std::nullopt});
  if (heard) {
    lux_ = lux;
    calculation_.Read(kelvin_, lux_);
    Await();
  }
  return heard.has_value();
}

bool NaturalColour::Measure(double kelvin) {
  SetMeasurement(kelvin);
  const bool heard = stage_.Notebook().FireBiosEvent(kMeasuredEvent);
  if (heard) {
    calculation_.Read(kelvin_, lux_);
    Await();
  }
  return heard;
}

void NaturalColour::Ring() {
  stage_.Library().NotifyConfigChange(FEATURE_TYPE_NATURAL_COLOR);
  ++rings_;
  Await();
}

// The library logs each frame behind its delivery, and each ring behind all that it does.
void NaturalColour::Await() {
  const ULONGLONG end = GetTickCount64() + kDimmingPatience;
  const auto hasCome = [this] {
    LookAtLog();
    return framesSeen_ >= calculation_.CountDimmingFrames() && ringsSeen_ >= rings_;
  };
  while (inTime_ && !hasCome()) {
    inTime_ = GetTickCount64() < end;
    Sleep(1);
  }
}

void NaturalColour::LookAtLog() {
  const Notebook& notebook = stage_.Notebook();
  notebook.Locked([&] {
    for (; linesSeen_ < notebook.log.size(); ++linesSeen_) {
      const std::wstring& text = notebook.log[linesSeen_].text;
      framesSeen_ += size_t{text.starts_with(L"frameIndex_ = ")};
      ringsSeen_ += size_t{text.starts_with(L"GetNcConfig:")};
    }
  });
}

// The answer to the library's question.
void NaturalColour::SetMeasurement(double kelvin) {
  constexpr uint8_t kGood = 0;
  kelvin_ = kelvin;
  const auto value = static_cast<uint16_t>(kelvin);
  stage_.Notebook().Locked([&] {
    stage_.Notebook().biosAnswer = {kGood, static_cast<uint8_t>(value),
                                    static_cast<uint8_t>(value >> 8), 0, 0};
  });
}

// --- What there is to see ---

double StoredCct() {
  wchar_t text[64] = L"";
  DWORD size = sizeof text;
  RegGetValueW(HKEY_LOCAL_MACHINE, kKey, L"SensorColor", RRF_RT_REG_SZ, nullptr, text, &size);
  return std::wcstod(text, nullptr);
}

Check AllFrames(Stage& stage, const Calculation& calculation) {
  const bool held =
      std::ranges::equal(stage.Notebook().platform.temperatures3D, calculation.Delivered(),
                         [](const Color3DInfo& got, double cct) {
                           return AreNear({got.r, got.g, got.b}, GainsAt(cct));
                         });
  return {"the platform got the gains of " + std::to_string(calculation.Delivered().size()) +
              " frames, as calculated",
          held};
}

}  // namespace tour
