// The colour circle and the fusion of features, through the shipped library.
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "support/IniFile.h"
#include "support/NotebookTest.h"
#include "support/Registry.h"
#include "virtualnotebook/HostedLibrary.h"

namespace scenarios {
namespace {

using Lines = std::vector<testsupport::LogLine>;

constexpr double k82 = 0.8199999928474426;  // strength at the default slider position
constexpr double k93 = 0.9300000071525574;
const std::wstring kRoot = L"SOFTWARE\\Norvex\\Velora\\";

class ColourMathsScenario : public testing::Test {
 protected:
  ColourMathsScenario() { notebook.platformType = 2; }

  ColorTemperatureRgb Transform(double x, double y, double radius = 80) {
    ColorTemperatureRgb rgb = {-1, -1, -1};
    const ColorTemperatureConfig point = {x, y};
    library.TransColorTemperatureConfigToRGB(&point, radius, &rgb);
    return rgb;
  }
  Color3DInfo Fuse(uint32_t feature, const FusionInfo& input) {
    Color3DInfo output = {9, 9, 9, 9, 9};
    library.Fusion(feature, &input, &output);
    return output;
  }

  // Gains of a feature's key; fewer texts than three: the rest is not stored.
  static void StoreGains(const std::wstring& key, const std::vector<std::wstring>& gains) {
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, (kRoot + key).c_str());
    const wchar_t* const names[] = {L"r", L"g", L"b"};
    for (size_t i = 0; i < gains.size(); ++i) {
      testsupport::WriteValue(HKEY_LOCAL_MACHINE, kRoot + key, names[i],
                              testsupport::TextValue(gains[i]));
    }
  }
  bool LogIs(const Lines& lines) { return testsupport::LogIs(notebook, lines); }
  bool Logged(int level, const std::wstring& text) {
    return testsupport::Logged(notebook, level, text);
  }

  const testsupport::ScopedKey settings{HKEY_LOCAL_MACHINE, L"SOFTWARE\\Norvex\\Velora"};
  const testsupport::IniFile ini;
  virtualnotebook::HostedLibrary library;
  virtualnotebook::Notebook& notebook = library.notebook;
};

void ExpectRgb(const ColorTemperatureRgb& rgb, double r, double g, double b) {
  EXPECT_EQ(rgb.r, r);
  EXPECT_EQ(rgb.g, g);
  EXPECT_EQ(rgb.b, b);
}

// --- TransColorTemperatureConfigToRGB ---

TEST_F(ColourMathsScenario, Transform_LogsItsArguments) {
  Transform(1, 2);
  notebook.ForgetRecords();
  ExpectRgb(Transform(80, 0), 1.0, k93, k93);
  EXPECT_TRUE(LogIs({{1,
                      L"config:x:80, y:0, radius:80, rgb:r:-1, g:-1, b:-1"
                      L"(TransColorTemperatureConfigToRGB)"}}));
}

TEST_F(ColourMathsScenario, Transform_TheCentreWritesNothing) {
  ExpectRgb(Transform(80, 80), -1, -1, -1);
}

// A platform without a row is looked up again by each point, ahead of the centre; one with a row
// settles for the process.
TEST_F(ColourMathsScenario, Transform_PlatformWithoutARow) {
  for (uint32_t type : {4u, 7u}) {
    notebook.platformType = type;
    notebook.ForgetRecords();
    ExpectRgb(Transform(80, 0), 1, k93, k93);
    ExpectRgb(Transform(80, 80), -1, -1, -1);
    EXPECT_EQ(notebook.CountCalls("GetPlatform"), 2u);
    EXPECT_TRUE(Logged(3, L"Alpha Info not define in alphaInfoTable! platform type:" +
                              std::to_wstring(type) + L"(ColorTemperatureTrans::InitAlphaInfo)"));
  }
  constexpr double k95 = 0.949999988079071;
  notebook.platformType = 0;
  ExpectRgb(Transform(80, 0), 1, k95, k95);
  notebook.platformType = 4;
  notebook.ForgetRecords();
  ExpectRgb(Transform(80, 0), 1, k95, k95);
  EXPECT_EQ(notebook.CountCalls("GetPlatform"), 0u);
}

TEST_F(ColourMathsScenario, Transform_FailedPlatformIsType6AndSettles) {
  notebook.platformType = 0;
  notebook.FailCall("GetPlatform", 1, 5);
  ExpectRgb(Transform(80, 0), 1, k93, k93);
  EXPECT_TRUE(Logged(3, L"GetPlatform failed!(ColorTemperatureTrans::InitAlphaInfo)"));
  notebook.ForgetRecords();
  ExpectRgb(Transform(80, 0), 1, k93, k93);
  EXPECT_EQ(notebook.CountCalls("GetPlatform"), 0u);
}

TEST_F(ColourMathsScenario, Transform_NegativeRadius) {
  ExpectRgb(Transform(0, 0, -80), -1, -1, -1);
  EXPECT_TRUE(Logged(3,
                     L"Invalid rho value, valid range:(0, 1]! rho:-1.41421"
                     L"(ColorTemperatureTrans::GainCalc)"));
}

// --- Fusion ---

const Lines kProtectLines = {
    {1, L"defaultSliderValue:-1(GetEyeProtectValue)"},
    {2, L"Set slider value to default value 185(FusionAlgorithm::GetProtectValue)"},
    {1, L"sliderValue:185(TransEyeProtectSliderValue)"},
    {1, L"defaultEyeProtectEnable:0(GetEyeProtectStatus)"},
};

TEST_F(ColourMathsScenario, Fusion_UnknownFeature) {
  for (uint32_t feature : {1u, 3u, 5u, 99u}) {
    notebook.ForgetRecords();
    const Color3DInfo out = Fuse(feature, {1, {0.5, 0.5, 0.5, 255, 0.5}});
    EXPECT_EQ(out.r, 1.0);
    EXPECT_EQ(out.g, 1.0);
    EXPECT_EQ(out.b, 1.0);
    EXPECT_EQ(out.colorBlue, 0u);
    EXPECT_EQ(out.protectValue, 0.0);
    EXPECT_TRUE(LogIs({{3, L"Fusion Feature not defined in fusionFeatureTable! feature:" +
                               std::to_wstring(feature) + L"(FusionAlgorithm::Fusion)"}}));
  }
}

TEST_F(ColourMathsScenario, Fusion_PlatformWithoutFusion) {
  notebook.platformType = 3;
  const std::wstring refused =
      L"Feature Fusion just support on platform PLATFORM_INTEL_TGL or PLATFORM_INTEL_ADL or "
      L"PLATFORM_QCOM, not support on:3(FusionAlgorithm::IsNeedFusion)";
  Color3DInfo out = Fuse(0, {1, {0.5, 0.5, 0.5, 255, 0.5}});
  EXPECT_EQ(out.r, 1.0);
  EXPECT_EQ(out.colorBlue, 0u);
  EXPECT_TRUE(LogIs({{3, refused}}));
  notebook.ForgetRecords();
  out = Fuse(2, {1, {0.5, 0.6, 0.7, 255, 0.25}});
  EXPECT_EQ(out.r, 0.5);
  EXPECT_EQ(out.g, 0.6);
  EXPECT_EQ(out.b, 0.7);
  EXPECT_EQ(out.colorBlue, 255u);
  EXPECT_EQ(out.protectValue, 0.25);
  EXPECT_TRUE(LogIs({{3, refused}}));
}

TEST_F(ColourMathsScenario, Fusion_PlatformFails) {
  notebook.FailCall("GetPlatform", 0, 5);
  for (uint32_t feature : {0u, 2u, 4u}) {
    notebook.ForgetRecords();
    Fuse(feature, {1, {0.5, 0.5, 0.5, 0, 0}});
    EXPECT_TRUE(Logged(3, L"GetPlatform failed! No need to fusion feature:" +
                              std::to_wstring(feature) + L"(FusionAlgorithm::IsNeedFusion)"));
  }
}

TEST_F(ColourMathsScenario, Fusion_LogsNestedExports) {
  library.SetFeatureSupport(2, 1);
  const ColorTemperatureConfig point = {80, 0};
  library.SetColorTemperatureConfig(&point);
  library.SetEyeProtectStatus(0);
  library.SetNatureColorStatus(0);
  library.SetWhitePointStatus(0);
  Fuse(4, {1, {1, 1, 1, 0, 0}});  // singletons and platform settle
  notebook.ForgetRecords();
  const Color3DInfo out = Fuse(4, {1, {0.5, 1, 1, 0, 0}});
  EXPECT_EQ(out.r, 0.5);
  EXPECT_EQ(out.g, k93);
  EXPECT_EQ(out.b, k93);
  EXPECT_EQ(out.colorBlue, 0u);
  EXPECT_EQ(out.protectValue, k82);
  Lines entries;
  for (const auto& line : notebook.log) {
    if (line.text.find(L"::") == std::wstring::npos ||
        line.text.find(L"(FusionAlgorithm") != std::wstring::npos) {
      entries.push_back(line);
    }
  }
  Lines expected = kProtectLines;
  expected.insert(expected.end(), {{1, L"value:0(GetColorBlueValue)"},
                                   {1, L"colorConfig:x:0, y:0(GetColorTemperatureConfig)"},
                                   {1,
                                    L"config:x:80, y:0, radius:80, rgb:r:1, g:1, b:1"
                                    L"(TransColorTemperatureConfigToRGB)"},
                                   {1, L"defaultWhitePointEnable:0(GetWhitePointStatus)"}});
  EXPECT_EQ(entries, expected);
}

TEST_F(ColourMathsScenario, Fusion_PointThatCannotBeRead) {
  library.SetFeatureSupport(2, 1);
  library.SetEyeProtectStatus(1);
  library.SetEyeProtectHandleType(1);
  library.SetEyeProtectRGB(0.5, 0.5, 0.5);
  const Color3DInfo out = Fuse(4, {1, {0.9, 0.8, 0.7, 0, 0}});
  EXPECT_EQ(out.r, 0.9) << "without eye protection either";
  EXPECT_EQ(out.colorBlue, 255u);
  EXPECT_TRUE(Logged(3,
                     L"GetColorTemperatureConfig failed when feature fusion!"
                     L"(FusionAlgorithm::GetColorTemperatureInfo)"));
}

TEST_F(ColourMathsScenario, Fusion_PointAtTheCentreIsNeutral) {
  library.SetFeatureSupport(2, 1);
  const ColorTemperatureConfig point = {80, 80};
  library.SetColorTemperatureConfig(&point);
  const Color3DInfo out = Fuse(4, {1, {0.9, 0.8, 0.7, 0, 0}});
  EXPECT_EQ(out.r, 0.9);
  EXPECT_EQ(out.g, 0.8);
  EXPECT_EQ(out.b, 0.7);
}

TEST_F(ColourMathsScenario, Fusion_StoredSliderIsUsed) {
  library.SetFeatureSupport(2, 1);
  library.SetFeatureSupport(1, 1);
  library.SetEyeProtectValue(0);
  const Color3DInfo out = Fuse(4, {1, {1, 1, 1, 0, 0}});
  EXPECT_EQ(out.protectValue, library.TransEyeProtectSliderValue(0));
  EXPECT_NE(out.protectValue, k82);
}

// All combinations against a second, plain form of the rules.
struct Machine {
  uint32_t platform;
  bool supported[5];  // by feature
  int whitePoint;     // status
  int natural;        // status
  int eye;            // status
  int handleType;
  size_t stored;  // gains of each kind that are stored, 0 to 3
};

constexpr double kWhiteGains[] = {0.99, 0.98, 0.97};
constexpr double kNaturalGains[] = {0.96, 0.95, 0.94};
constexpr double kEyeGains[] = {0.9, 0.85, 0.8};

Color3DInfo PlainFusion(const Machine& m, uint32_t feature, const FusionInfo& in) {
  double rgb[3] = {1, 1, 1};
  uint32_t blue = 0;
  double protect = 0;
  const bool fuses = m.platform == 1 || m.platform == 2 || m.platform == 4;
  const bool whole = m.stored == 3;
  const auto times = [&](const double gains[3]) {
    for (int c = 0; c < 3; ++c) rgb[c] *= gains[c];
  };
  const auto white = [&](uint32_t status) {
    if (m.supported[0] && status == 1 && whole) times(kWhiteGains);
  };
  const auto natural = [&] {
    if (m.natural == 1 && m.supported[4] && whole) times(kNaturalGains);
  };
  const auto temperature = [&] {
    if (!m.supported[2]) return;
    double circle[3] = {1, k93, k93};
    blue = m.eye == 1 ? 255 : 0;
    protect = k82;
    if (blue != 0 && m.handleType != 0 && whole) {
      for (int c = 0; c < 3; ++c) circle[c] *= kEyeGains[c];
      blue = 0;
    }
    times(circle);
  };
  const auto take = [&] {
    rgb[0] = in.colorInfo.r;
    rgb[1] = in.colorInfo.g;
    rgb[2] = in.colorInfo.b;
  };
  if (feature == 0 && fuses) {
    white(in.status);
    temperature();
    natural();
  } else if (feature == 2) {
    take();
    blue = in.colorInfo.colorBlue;
    protect = in.colorInfo.protectValue;
    if (fuses) {
      if (blue != 0 && m.handleType != 0 && whole) {
        times(kEyeGains);
        blue = 0;
      }
      if (m.whitePoint == 1) white(1);
      natural();
    }
  } else if (feature == 4) {
    take();
    temperature();
    if (fuses && m.whitePoint == 1) white(1);
  }
  return {rgb[0], rgb[1], rgb[2], blue, protect};
}

class FusionSweep : public ColourMathsScenario {
 protected:
  void Prepare(const Machine& m) {
    for (int feature : {0, 2, 4}) library.SetFeatureSupport(feature, m.supported[feature]);
    const std::vector<std::wstring> white = {L"0.990000", L"0.980000", L"0.970000"};
    const std::vector<std::wstring> natural = {L"0.960000", L"0.950000", L"0.940000"};
    const std::vector<std::wstring> eye = {L"0.900000", L"0.850000", L"0.800000"};
    const auto count = static_cast<ptrdiff_t>(m.stored);
    StoreGains(L"WhitePoint", {white.begin(), white.begin() + count});
    StoreGains(L"NaturalColor", {natural.begin(), natural.begin() + count});
    StoreGains(L"EyeProtect", {eye.begin(), eye.begin() + count});
    library.SetWhitePointStatus(m.whitePoint);
    library.SetNatureColorStatus(m.natural);
    library.SetEyeProtectStatus(m.eye);
    library.SetEyeProtectHandleType(m.handleType);
  }

  // Every feature and input on this machine, on these platforms.
  void Check(Machine m, std::initializer_list<uint32_t> platforms) {
    Prepare(m);
    for (uint32_t platform : platforms) {
      notebook.platformType = m.platform = platform;
      for (uint32_t feature : {0u, 2u, 3u, 4u}) {
        for (uint32_t status : {0u, 1u, 2u}) {
          for (uint32_t blue : {0u, 255u}) {
            if (feature != 2 && blue != 0) continue;
            const FusionInfo in = {status, {0.7, 0.8, 0.9, blue, 0.5}};
            const Color3DInfo out = Fuse(feature, in);
            const Color3DInfo expected = PlainFusion(m, feature, in);
            ++cases;
            const bool same = out.r == expected.r && out.g == expected.g && out.b == expected.b &&
                              out.colorBlue == expected.colorBlue &&
                              out.protectValue == expected.protectValue;
            ASSERT_TRUE(same) << "feature " << feature << " status " << status << " platform "
                              << platform << " supported " << m.supported[0] << m.supported[2]
                              << m.supported[4] << " white " << m.whitePoint << " natural "
                              << m.natural << " eye " << m.eye << " handle " << m.handleType
                              << " stored " << m.stored << ": " << out.r << ' ' << out.g << ' '
                              << out.b << ' ' << out.colorBlue << ' ' << out.protectValue;
            notebook.ForgetRecords();
          }
        }
      }
    }
  }

  size_t cases = 0;
};

TEST_F(FusionSweep, AllCombinations) {
  const ColorTemperatureConfig point = {80, 0};
  library.SetColorTemperatureConfig(&point);
  Transform(80, 0);  // settles on platform 2's strengths
  for (int bits = 0; bits < 128; ++bits) {
    const auto bit = [bits](int i) { return (bits >> i & 1) != 0; };
    for (size_t stored : {size_t{0}, size_t{2}, size_t{3}}) {
      const Machine m = {.platform = 0,
                         .supported = {bit(0), true, bit(1), false, bit(2)},
                         .whitePoint = bit(3),
                         .natural = bit(4),
                         .eye = bit(5),
                         .handleType = bit(6),
                         .stored = stored};
      // The platforms of a group are one to the rules: all of them where most is merged.
      if (stored == 3 && bit(0) && bit(1) && bit(2)) {
        Check(m, {0, 1, 2, 3, 4, 5, 6});
      } else {
        Check(m, {2, 3});
      }
      ASSERT_FALSE(HasFatalFailure());
    }
  }
  RecordProperty("cases", static_cast<int>(cases));
}

}  // namespace
}  // namespace scenarios
