// Settings, flags and change events; profile and mode by the settings; the desktop and telemetry.
#include <algorithm>
#include <cmath>
#include <filesystem>

#include "virtualnotebook/tour/Checks.h"

namespace tour {
namespace {

using namespace virtualnotebook;

constexpr int kSliderEnd = 366;

// The factory's defaults, in their place for as long as the object lives.
class FactoryDefaults {
 public:
  FactoryDefaults(const Stage& stage, const std::string& text)
      : path_(stage.BinFile("SetColor.ini")) {
    WriteBytes(path_, Bytes(text.begin(), text.end()));
  }
  ~FactoryDefaults() { std::filesystem::remove(path_); }
  FactoryDefaults(const FactoryDefaults&) = delete;
  FactoryDefaults& operator=(const FactoryDefaults&) = delete;

 private:
  std::string path_;
};

Report Settings(Stage& stage) {
  constexpr int kFactory = 90;
  constexpr int kChosen = 120;
  stage.StartHost();
  const FactoryDefaults defaults(
      stage, "[BLUEPROTECT]\r\nCurrentBlueProtect=1\r\nCurrentBlueProtectSlider=90\r\n");
  int first = 0;
  int chosen = 0;
  int kept = 0;
  ResultT tooFar = ResultOk;
  const Outcome outcome = stage.Do([&](HostedLibrary& library) {
    first = library.GetEyeProtectValue(0);
    const ResultT stored = library.SetEyeProtectValue(kChosen);
    chosen = library.GetEyeProtectValue(0);
    tooFar = library.SetEyeProtectValue(kSliderEnd + 1);
    kept = library.GetEyeProtectValue(0);
    return stored;
  });
  return {outcome,
          {Result(outcome, ResultOk, "ResultOk"),
           {"the factory's default is 90", first == kFactory},
           {"then the user's 120", chosen == kChosen},
           {"a position of 367 is refused, ResultOutOfRange", tooFar == ResultOutOfRange},
           {"and 120 stays", kept == kChosen}}};
}

Report Flags(Stage& stage) {
  constexpr double kRhine = 0.8;
  double without = 0;
  double with = 0;
  const auto strength = [](HostedLibrary& library) {
    return library.TransEyeProtectSliderValue(0);
  };
  stage.StartHost();
  stage.Do([&](HostedLibrary& library) {
    library.SetFeatureSupport(FEATURE_TYPE_EYE_PROTECT, 0);
    library.SetRhineValue(kRhine);
    without = strength(library);
    return library.SetFeatureSupport(FEATURE_TYPE_EYE_PROTECT, 1);
  });
  stage.StartHost();
  int supported = 0;
  const Outcome outcome = stage.Do([&](HostedLibrary& library) {
    supported = library.IsFeatureSupport(FEATURE_TYPE_EYE_PROTECT);
    with = strength(library);
    return ResultOk;
  });
  return {outcome,
          {{"the next host finds the flag", supported == 1},
           {"without it the slider is without effect, 0.8", without == kRhine},
           {"with it its start is 0.93", std::abs(with - 0.93) < 1e-6}}};
}

Report ChangeEvent(Stage& stage) {
  constexpr uint32_t kMoment = 20;  // milliseconds
  ResultT rung = ResultFailed;
  ResultT silent = ResultFailed;
  const Outcome outcome = stage.Do([&](HostedLibrary& library) {
    const ResultT opened = library.InitConfigSyncObject(FEATURE_TYPE_TEMPERATURE);
    library.SetTemperatureValue(200);
    library.NotifyConfigChange(FEATURE_TYPE_TEMPERATURE);
    rung = library.WaitConfigChangeSync(FEATURE_TYPE_TEMPERATURE, kMoment);
    silent = library.WaitConfigChangeSync(FEATURE_TYPE_TEMPERATURE, kMoment);
    library.FiniConfigSyncObject(FEATURE_TYPE_TEMPERATURE);
    return opened;
  });
  return {outcome,
          {Result(outcome, ResultOk, "ResultOk"),
           {"the ring is heard", rung == ResultOk},
           {"once: the next wait ends by its time limit, ResultTimeout", silent == ResultTimeout}}};
}

Report ModeDecides(Stage& stage) {
  bool synced = false;
  stage.StartHost();
  stage.Notebook().profiles.clear();
  const Outcome outcome = stage.Do([&](HostedLibrary& library) {
    library.SetColorFieldCurrentMode(P3Mode);
    synced = library.SyncCurrentModeIccFile();
    return ResultOk;
  });
  return {outcome, {{"it is done", synced}, Profile(stage, kP3Lut)}};
}

Report Reset(Stage& stage) {
  stage.SetColorField(P3Mode);
  const bool had = stage.Shown().has3DLut != 0;
  const Outcome outcome = stage.Do([](HostedLibrary& library) {
    library.SetColorFieldResetMode(SrgbMode);
    library.SetColorFieldSetType(k3DLutWay);
    return library.ResetColorField();
  });
  return {outcome,
          {Result(outcome, ResultOk, "ResultOk"),
           {"the panel had a 3D LUT", had},
           {"and has none now", stage.Shown().has3DLut == 0},
           Profile(stage, kP3Lut)}};
}

Report Extend(Stage& stage) {
  virtualnotebook::Notebook& notebook = stage.Notebook();
  notebook.topology.paths.resize(2);
  notebook.topology.modes.resize(4);
  notebook.sleeps = false;  // of the three seconds that displays take
  bool extended = false;
  const Outcome outcome = stage.Do([&](HostedLibrary& library) {
    extended = library.SetMonitorExtendMode();
    return ResultOk;
  });
  notebook.sleeps = true;
  return {outcome,
          {{"the desktop is extended", extended},
           {"the former path is written back: two writes",
            notebook.CountCalls("SetDisplayConfig") == 2}}};
}

Report Telemetry(Stage& stage) {
  constexpr int kEvent = 4711;
  char vendor[5] = "";
  const Outcome outcome = stage.Do([&](HostedLibrary& library) {
    library.GetVendor(vendor, sizeof vendor);
    library.OrbviewReportDataSync(kEvent, "panel", vendor);
    return ResultOk;
  });
  const std::vector<Call>& calls = stage.Notebook().calls;
  const auto put = std::ranges::find(calls, "OrbEvent::PutString", &Call::function);
  const std::string expected = stage.Machine().panel.vendor + "#";
  return {outcome,
          {{"the panel's maker is " + expected, vendor == expected},
           {"an event with it went out",
            put != calls.end() &&
                put->arguments.back() == std::wstring(expected.begin(), expected.end()) &&
                stage.Notebook().CountCalls("OrbView::Report") == 1}}};
}

constexpr Act kSettingsActs[] = {
    {"Settings",
     "The slider of eye protection: the factory's default, the user's choice, a mistake.", Settings,
     nullptr},
    {"Feature flags",
     "The machine gets a feature. Flags are read once a process: the next host has it.", Flags,
     nullptr},
    {"A change event", "One process stores and rings, another waits. Here both are one.",
     ChangeEvent, nullptr},
    {"SyncCurrentModeIccFile",
     "Somebody took the profile away in the system's settings: the stored mode gives it back.",
     ModeDecides, nullptr},
    {"ResetColorField", "Back to the panel as it is, by the stored way.", Reset, nullptr},
    {"SetMonitorExtendMode", "A second display is plugged in, and the desktop goes over both.",
     Extend, nullptr},
    {"GetVendor, and telemetry", "The host reports which maker's panel it found.", Telemetry,
     nullptr},
};

}  // namespace

std::span<const Act> SettingsActs() { return kSettingsActs; }

}  // namespace tour
