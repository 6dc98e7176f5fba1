// The colour circle, and features that share the panel's one colour temperature.
#include <cmath>
#include <cstdio>

#include "virtualnotebook/ColourCircle.h"
#include "virtualnotebook/tour/Checks.h"

namespace tour {
namespace {

using namespace virtualnotebook;

constexpr double kRadius = 80;
constexpr ColorTemperatureConfig kTowardsRed = {.x = kRadius, .y = 0};  // the rim's top
constexpr uint32_t kTemperatureFeature = FEATURE_TYPE_TEMPERATURE;
constexpr uint32_t kPlatformThatFuses = 2;
constexpr double kRedVertex = 0.93f;  // of the channels that are not red
constexpr double kEyeGains[] = {1, 0.95, 0.8};

bool Shows(const Stage& stage, double r, double g, double b) {
  const Color3DInfo shown = stage.Shown().temperature3D;
  return shown.r == r && shown.g == g && shown.b == b;
}

Report PointOnTheCircle(Stage& stage) {
  stage.ClearPanel();
  stage.StartHost();
  stage.Notebook().platformType = kPlatformThatFuses;
  const Outcome outcome = stage.Do([](HostedLibrary& library) {
    ColorTemperatureRgb rgb = {1, 1, 1};
    library.TransColorTemperatureConfigToRGB(&kTowardsRed, kRadius, &rgb);
    const Color3DInfo info = {
        .r = rgb.r, .g = rgb.g, .b = rgb.b, .colorBlue = 0, .protectValue = 0};
    return static_cast<ResultT>(library.Set3DColorTemperature(&info));
  });
  return {outcome,
          {Result(outcome, ResultOk, "ResultOk"),
           {"the panel shows 1, 0.93 and 0.93", Shows(stage, 1, kRedVertex, kRedVertex)}}};
}

std::string DrawCircle(Stage& stage, const std::string& directory) {
  const HostedLibrary& library = stage.Library();
  const Image circle = DrawColourCircle([&](double x, double y) {
    const ColorTemperatureConfig point = {.x = x, .y = y};
    ColorTemperatureRgb rgb = {1, 1, 1};
    library.TransColorTemperatureConfigToRGB(&point, kRadius, &rgb);
    return std::array<double, 3>{rgb.r, rgb.g, rgb.b};
  });
  constexpr char kName[] = "colour-circle.png";
  WritePng(directory + "/" + kName, circle, stage.Machine().panel);
  return kName;
}

Report EyeProtectionOnTop(Stage& stage) {
  const Outcome outcome = stage.Do([](HostedLibrary& library) {
    library.SetEyeProtectRGB(kEyeGains[0], kEyeGains[1], kEyeGains[2]);
    library.SetEyeProtectHandleType(1);
    library.SetEyeProtectStatus(1);
    FusionInfo input = {};
    input.status = 1;
    input.colorInfo = {
        .r = 1, .g = kRedVertex, .b = kRedVertex, .colorBlue = 255, .protectValue = 0.8};
    Color3DInfo output = {};
    library.Fusion(kTemperatureFeature, &input, &output);
    return static_cast<ResultT>(library.Set3DColorTemperature(&output));
  });
  return {outcome,
          {Result(outcome, ResultOk, "ResultOk"),
           {"the panel shows the product of both",
            Shows(stage, kEyeGains[0], kRedVertex * kEyeGains[1], kRedVertex * kEyeGains[2])},
           {"and no eye protection of its own", stage.Shown().temperature3D.colorBlue == 0}}};
}

constexpr Act kColourMathsActs[] = {
    {"A point of the colour circle",
     "The user drags the colour temperature to the top of the circle, to red.", PointOnTheCircle,
     nullptr, DrawCircle},
    {"Fusion with eye protection",
     "Eye protection comes on. The platform has one input: the gains of both are multiplied.",
     EyeProtectionOnTop, "chart-5-fused.png"},
};

}  // namespace

std::span<const Act> ColourMathsActs() { return kColourMathsActs; }

}  // namespace tour
