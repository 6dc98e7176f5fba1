// Gains: the colour circle, eye protection, and what Fusion makes of all features.
#include "veloractl/Commands.h"
#include "veloractl/Features.h"
#include "veloractl/SettingsTable.h"
#include "veloractl/Shown.h"

namespace veloractl {
namespace {

using virtualnotebook::LoadedLibrary;

constexpr double kRadius = 80;  // of the colour temperature circle
constexpr int kSliderEnd = 366;

Json AsJson(const Color3DInfo& info) {
  return {{"gains", {info.r, info.g, info.b}},
          {"colorBlue", info.colorBlue},
          {"protectValue", info.protectValue}};
}

// --- fuse ---

struct FuseArguments {
  std::string feature;
  std::vector<double> gains;
  std::vector<double> point;
  int status = 1;
  bool show = false;
};

// The gains given; those of the point given; those of the stored point.
ColorTemperatureRgb InputGains(const FuseArguments& arguments, Session& session) {
  ColorTemperatureRgb rgb = {.r = 1, .g = 1, .b = 1};
  if (!arguments.gains.empty()) {
    NumbersOf(SettingOf("eye-protection.gains"), arguments.gains, kBadArguments, "--gains");
    return {.r = arguments.gains[0], .g = arguments.gains[1], .b = arguments.gains[2]};
  }
  if (arguments.feature != "temperature") {
    return rgb;
  }
  ColorTemperatureConfig point = {.x = kRadius, .y = kRadius};
  if (!arguments.point.empty()) {
    NumbersOf(SettingOf("temperature.point"), arguments.point, kBadArguments, "--point");
    point = {.x = arguments.point[0], .y = arguments.point[1]};
  } else {
    session.Library().GetColorTemperatureConfig(&point);
  }
  session.Library().TransColorTemperatureConfigToRGB(&point, kRadius, &rgb);
  return rgb;
}

Report Fuse(const FuseArguments& arguments, Session& session) {
  const Feature& feature = FeatureOf(arguments.feature);
  if (feature.type != FEATURE_TYPE_WHITEPOINT && feature.type != FEATURE_TYPE_TEMPERATURE &&
      feature.type != FEATURE_TYPE_NATURAL_COLOR) {
    throw Failure(kBadArguments, "only white-point, temperature and natural-color can be fused");
  }
  const LoadedLibrary& library = session.StartedLibrary();
  const ColorTemperatureRgb rgb = InputGains(arguments, session);
  FusionInfo input = {};
  input.status = static_cast<uint32_t>(arguments.status);
  input.colorInfo = {
      .r = rgb.r,
      .g = rgb.g,
      .b = rgb.b,
      .colorBlue = static_cast<uint32_t>(library.GetColorBlueValue(library.GetEyeProtectStatus(0))),
      .protectValue = library.TransEyeProtectSliderValue(library.GetEyeProtectValue(0))};
  Color3DInfo output = {};
  library.Fusion(static_cast<uint32_t>(feature.type), &input, &output);
  if (arguments.show) {
    Expect(library.Set3DColorTemperature(&output), "Set3DColorTemperature");
  }
  const Json report = {{"feature", feature.name},
                       {"input", AsJson(input.colorInfo)},
                       {"output", AsJson(output)},
                       {"shown", arguments.show}};
  return arguments.show ? WithShown(session, report) : report;
}

// --- temperature ---

struct SliderArguments {
  int position = 0;
  bool eyeProtection = false;
};

void CheckPosition(int position) {
  if (position < 0 || position > kSliderEnd) {
    throw Failure(kBadArguments, "a slider's position is from 0 to 366");
  }
}

Report Temperature(const SliderArguments& arguments, Session& session) {
  CheckPosition(arguments.position);
  const LoadedLibrary& library = session.StartedLibrary();
  const Color2DInfo info = {.temperature = static_cast<uint32_t>(arguments.position),
                            .colorBlue = static_cast<uint32_t>(
                                library.GetColorBlueValue(arguments.eyeProtection ? 1 : 0))};
  Expect(library.Set2DColorTemperature(&info), "Set2DColorTemperature");
  return Json{{"position", arguments.position}, {"colorBlue", info.colorBlue}, {"shown", true}};
}

Report EyeStrength(const SliderArguments& arguments, Session& session) {
  CheckPosition(arguments.position);
  const LoadedLibrary& library = session.Library();
  return Json{{"position", arguments.position},
              {"protectValue", library.TransEyeProtectSliderValue(arguments.position)},
              {"colorBlueOn", library.GetColorBlueValue(1)},
              {"colorBlueOff", library.GetColorBlueValue(0)}};
}

}  // namespace

void AddColorCommands(const CommandSet& commands) {
  commands.Add("fuse", "What goes to the panel when a feature has changed",
               [](CLI::App& app) -> Action {
                 const auto arguments = std::make_shared<FuseArguments>();
                 app.add_option("FEATURE", arguments->feature,
                                "white-point, temperature or natural-color: the one that changed")
                     ->required();
                 app.add_option("--gains", arguments->gains, "Its gains of red, green and blue")
                     ->expected(3);
                 app.add_option("--point", arguments->point,
                                "Of temperature: a point of the circle; else the stored one")
                     ->expected(2);
                 app.add_option("--status", arguments->status, "Of white-point: 1 on, 0 off")
                     ->check(CLI::Range(0, 1));
                 app.add_flag("--show", arguments->show, "Send it to the panel");
                 app.footer(
                     "Its gains, multiplied by those of the other features as they are stored.\n"
                     "  veloractl fuse temperature --point 80 0 --show");
                 return [arguments](Session& session) { return Fuse(*arguments, session); };
               });
  commands.Add("temperature", "Shows a colour temperature by its slider's position",
               [](CLI::App& app) -> Action {
                 const auto arguments = std::make_shared<SliderArguments>();
                 app.add_option("POSITION", arguments->position, "0 to 366")->required();
                 app.add_flag("--eye-protection", arguments->eyeProtection, "With less blue light");
                 return [arguments](Session& session) { return Temperature(*arguments, session); };
               });
  commands.Add("eye-strength", "Strength of eye protection at a slider's position",
               [](CLI::App& app) -> Action {
                 const auto arguments = std::make_shared<SliderArguments>();
                 app.add_option("POSITION", arguments->position, "0 to 366")->required();
                 return [arguments](Session& session) { return EyeStrength(*arguments, session); };
               });
}

}  // namespace veloractl
