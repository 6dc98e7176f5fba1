// The same mode by each way to the panel, a fine-tuned white point, and external monitors.
#include <algorithm>
#include <cmath>
#include <cstdio>

#include "pictures/CurvePlot.h"
#include "virtualnotebook/tour/Checks.h"

namespace tour {
namespace {

using namespace virtualnotebook;

// A step of the platform's 12 bits is 1; the power of an unbent curve moves the last bits only.
constexpr double kCurveTolerance = 1e-6;

constexpr WhitePointFineTueInfo kWarmer = {.id = "", .mode = P3Mode, .r = 1, .g = 0.97, .b = 0.92};

std::vector<double> ShownGamma(const Stage& stage) {
  const softwarepanel::State shown = stage.Shown();
  if (shown.hasGammaLut == 0) {
    return {};
  }
  return {std::begin(shown.gammaLut), std::end(shown.gammaLut)};
}

// The panel has the firmware's curve with these gains on it.
bool ShowsGamma(const Stage& stage, const WhitePointFineTueInfo& gains) {
  const std::vector<double> shown = ShownGamma(stage);
  const std::vector<double> firmware = MakeLut(stage.Machine().panel, kGammaLut);
  const double gain[] = {gains.r, gains.g, gains.b};
  for (size_t i = 0; i < firmware.size(); ++i) {
    if (shown.empty() || std::abs(shown[i] - firmware[i] * gain[i % 3]) > kCurveTolerance) {
      return false;
    }
  }
  return true;
}

Report GammaWay(Stage& stage) {
  stage.ClearPanel();
  stage.StartHost(kGammaWay);
  const Outcome outcome = stage.SetColorField(P3Mode);
  return {outcome,
          {Result(outcome, ResultOk, "ResultOk"),
           {"the panel has the firmware's gamma curve",
            ShowsGamma(stage, {.id = "", .mode = P3Mode, .r = 1, .g = 1, .b = 1})},
           FactoryLut(stage),
           Profile(stage, kP3Lut)}};
}

Report FineTune(Stage& stage) {
  const Outcome outcome = stage.Do([](HostedLibrary& library) {
    WhitePointFineTueInfo gains = kWarmer;
    const ResultT stored = library.SetWhitePointTueValue(&gains);
    return stored != ResultOk ? stored : library.WhitePointFineTue(&gains);
  });
  return {
      outcome,
      {Result(outcome, ResultOk, "ResultOk"),
       {"the panel's curves are 1, 0.97 and 0.92 times the firmware's", ShowsGamma(stage, kWarmer)},
       FactoryLut(stage)}};
}

std::string DrawGammaCurves(Stage& stage, const std::string& directory) {
  std::string name = "gamma-fine-tuned.svg";
  constexpr double kTop = 4095;
  pictures::WriteFile(directory + "/" + name,
                      pictures::CurvePlot("Gamma LUT of mode 2", kTop,
                                          {{"before", MakeLut(stage.Machine().panel, kGammaLut)},
                                           {"fine-tuned", ShownGamma(stage)}})
                          .Svg());
  return name;
}

Report FineTuneOfTheNextHost(Stage& stage) {
  stage.ClearPanel();
  stage.StartHost(kGammaWay);
  const Outcome outcome = stage.SetColorField(P3Mode);
  WhitePointFineTueInfo neutral = {.id = "", .mode = P3Mode, .r = 1, .g = 1, .b = 1};
  stage.Do([&](HostedLibrary& library) { return library.SetWhitePointTueValue(&neutral); });
  return {outcome,
          {Result(outcome, ResultOk, "ResultOk"),
           {"the stored gains are on the curves again", ShowsGamma(stage, kWarmer)}}};
}

Report PccWay(Stage& stage) {
  stage.ClearPanel();
  stage.StartHost(kPccWay);
  const Outcome outcome = stage.SetColorField(P3Mode);
  const softwarepanel::State shown = stage.Shown();
  return {outcome,
          {Result(outcome, ResultOk, "ResultOk"),
           {"the panel has the mode's matrix, all 9 values",
            shown.hasMatrix != 0 && std::ranges::equal(shown.matrix, kPccMatrix)},
           {"and no LUT", shown.has3DLut == 0 && shown.hasGammaLut == 0},
           Profile(stage, kP3Lut)}};
}

// Where the library switches the colour mode of the maker's monitors.
constexpr uint8_t kColourFeature = 224;

// The monitor shows this value and has it in its memory.
Check MonitorKeeps(const PhysicalMonitor& monitor, uint32_t value) {
  const bool keeps =
      !monitor.taken.empty() && monitor.taken.back() == VcpWrite{kColourFeature, value, true};
  return {"the monitor keeps value " + std::to_string(value) + " of feature 224", keeps};
}

Report MonitorTakes(Stage& stage) {
  stage.ClearPanel();
  stage.StartHost(kDdcciWay);
  stage.DockWithTheLidClosed();
  const uint64_t changes = stage.PanelChanges();
  const Outcome outcome = stage.SetColorField(P3Mode);
  return {outcome,
          {Result(outcome, ResultOk, "ResultOk"),
           MonitorKeeps(stage.ExternalMonitor(), 1),
           {"the monitor's profile is NVX-P3.icc", stage.ExternalProfile() == "NVX-P3.icc"},
           PanelUntouched(stage, changes)}};
}

Report MonitorRefuses(Stage& stage) {
  stage.ExternalMonitor().answersDdcci = false;
  const Outcome outcome = stage.SetColorField(SrgbMode);
  return {outcome,
          {Result(outcome, ResultColorFieldError, "ResultColorFieldError"),
           MonitorKeeps(stage.ExternalMonitor(), 1),
           {"NVX-sRGB.icc was set, then NVX-P3.icc put back",
            Associated(stage) == std::vector<std::wstring>{L"NVX-sRGB.icc", L"NVX-P3.icc"}},
           {"the monitor's profile is NVX-P3.icc", stage.ExternalProfile() == "NVX-P3.icc"}}};
}

constexpr Act kWayActs[] = {
    {"SetColorField(2) by gamma LUT and 3D LUT",
     "The firmware's gamma curve takes the mode's gamma and coefficients; the 3D LUT follows.",
     GammaWay, "chart-4-gamma-way.png"},
    {"WhitePointFineTue", "The user wants mode 2 warmer: gains of 1, 0.97 and 0.92.", FineTune,
     "chart-4-gamma-way-warmer.png", DrawGammaCurves},
    {"SetColorField(2) in the next host",
     "A new process, a panel that has just come on: the stored gains act again.",
     FineTuneOfTheNextHost, nullptr},
    {"SetColorField(2) by PCC matrix", "Nine numbers of the maker's instead of LUTs.", PccWay,
     "chart-5-pcc-way.png"},
    {"SetColorField(2) on an external monitor",
     "Docked, the lid closed. The monitor switches by itself, over DDC/CI, and is asked to keep "
     "it.",
     MonitorTakes, nullptr},
    {"SetColorField(1) on an external monitor that refuses",
     "The write fails: no result is claimed, and the old profile is put back.", MonitorRefuses,
     nullptr},
};

}  // namespace

std::span<const Act> WayActs() { return kWayActs; }

}  // namespace tour
