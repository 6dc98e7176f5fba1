#include <limits>

#include "lut/UserLutTest.h"
#include "support/FailingNew.h"

namespace lutmachine {
namespace {

constexpr wchar_t kP3Key[] = L"PresetMode\\P3Mode";
const std::vector<std::wstring> kNeutral(3, L"1.000000");

class ColorField3DLutWhitePoint : public UserLutTest {
 protected:
  ColorField3DLutWhitePoint() {
    engine.InitColorFieldGammaInfo(ModeInfo(2, 2));
    engine.SyncGammaLutDataTable(2);
    notebook.ForgetRecords();
  }

  std::vector<double> Loaded() {
    const double* lut = engine.FindGammalutByMode(Gains(2, 1, 1, 1));
    return {lut, lut + 3072};
  }
};

TEST_F(ColorField3DLutWhitePoint, GetPresetModeWhitePoint) {
  StoreGains(Gains(2, 0.9, 0.95, 1));
  const WhitePointFineTueInfo record = engine.GetPresetModeWhitePoint(2);
  EXPECT_EQ(record.mode, 2);
  EXPECT_EQ(record.id[0], '\0');
  EXPECT_EQ(record.r, 0.9);
  EXPECT_EQ(record.g, 0.95);
  EXPECT_EQ(record.b, 1.0);
  EXPECT_TRUE(EngineLog().empty());
}

TEST_F(ColorField3DLutWhitePoint, GetPresetModeWhitePoint_NothingStoredGivesZeros) {
  const WhitePointFineTueInfo record = engine.GetPresetModeWhitePoint(2);
  EXPECT_EQ(record.r, 0.0);
  EXPECT_EQ(record.g, 0.0);
  EXPECT_EQ(record.b, 0.0);
  EXPECT_EQ(
      EngineLog(),
      Lines({Error("GetPresetModeWhitePoint", "Get preset mode white point value fail, mode: 2")}));
}

TEST_F(ColorField3DLutWhitePoint, GetUsrModeWhitePoint) {
  StoreGains(Gains(11, 0.9, 0.95, 1, "Mine%1"));
  const WhitePointFineTueInfo record = engine.GetUsrModeWhitePoint("Mine%1");
  EXPECT_EQ(record.mode, 11);
  EXPECT_STREQ(record.id, "Mine%1");
  EXPECT_EQ(record.r, 0.9);
  engine.GetUsrModeWhitePoint("Other%1");
  EXPECT_EQ(EngineLog(),
            Lines({Error("GetUsrModeWhitePoint", "Get usr mode white point fail, id: Other%1")}));
}

TEST_F(ColorField3DLutWhitePoint, GetUsrModeWhitePoint_IdBeyondItsField) {
  const std::string id(101, 'x');
  const WhitePointFineTueInfo record = engine.GetUsrModeWhitePoint(id);
  EXPECT_EQ(record.r, 0.0);
  EXPECT_EQ(EngineLog(),
            Lines({Error("GetUsrModeWhitePoint",
                         "Memcpy mode id error, get usr mode white point fail, id: " + id)}));
  EXPECT_EQ(notebook.CountCalls("RegQueryValueExW"), 0u) << "the store is not asked";
}

TEST_F(ColorField3DLutWhitePoint, EditGammaLutByWhitePoint_MultipliesACopy) {
  const std::vector<double> loaded = Loaded();
  const double lowest = 0.9 - 0.00001;
  WhitePointFineTueInfo record = Gains(2, lowest, 1.0, 1.00001);
  EXPECT_EQ(engine.EditGammaLutByWhitePoint(record), 0);
  std::vector<double> expected = loaded;
  for (size_t i = 0; i < expected.size(); ++i) {
    expected[i] *= std::array{lowest, 1.0, 1.00001}[i % 3];
  }
  EXPECT_EQ(notebook.platform.gammaLut, expected);
  EXPECT_GT(notebook.platform.gammaLut.back(), 4095) << "no clamp";
  EXPECT_EQ(Loaded(), loaded);
  EXPECT_TRUE(EngineLog().empty());
  EXPECT_TRUE(StoredGains(kP3Key).empty()) << "nothing is stored";
}

TEST_F(ColorField3DLutWhitePoint, EditGammaLutByWhitePoint_GainsOfOneAreTheLutItself) {
  WhitePointFineTueInfo record = Gains(2, 1, 1, 1);
  EXPECT_EQ(engine.EditGammaLutByWhitePoint(record), 0);
  EXPECT_EQ(notebook.platform.gammaLut, Loaded());
}

TEST_F(ColorField3DLutWhitePoint, EditGammaLutByWhitePoint_BadGainsRepairThemselves) {
  for (double bad : {0.89998, 1.00002, 0.0, 1e-16, -0.5, 1e6}) {
    StoreGains(Gains(2, bad, 0.95, 0.9));
    WhitePointFineTueInfo record = Gains(2, bad, 0.95, 0.9);
    EXPECT_EQ(engine.EditGammaLutByWhitePoint(record), 0) << bad;
    EXPECT_EQ(notebook.platform.gammaLut, Loaded()) << bad;
    EXPECT_EQ(StoredGains(kP3Key), kNeutral) << bad;
    EXPECT_EQ(record.r, 1.0);
    EXPECT_EQ(record.g, 1.0);
    EXPECT_EQ(record.b, 1.0);
  }
}

TEST_F(ColorField3DLutWhitePoint, EditGammaLutByWhitePoint_RepairIsLogged) {
  WhitePointFineTueInfo record = Gains(2, 0.5, 0.95, 2);
  EXPECT_EQ(engine.EditGammaLutByWhitePoint(record), 0);
  EXPECT_EQ(
      EngineLog(),
      Lines({Error("IsWhitePointValueValid", "White point value is invalid, r: 0.5, g: 0.95, b: 2"),
             Info("FusionGammaLut", "WhitePoint in is invalid, need reset whitePoint")}));
}

TEST_F(ColorField3DLutWhitePoint, EditGammaLutByWhitePoint_NotANumberIsNeitherBelowNorAbove) {
  WhitePointFineTueInfo record = Gains(2, std::numeric_limits<double>::quiet_NaN(), 1, 1);
  EXPECT_EQ(engine.EditGammaLutByWhitePoint(record), 0);
  EXPECT_TRUE(std::isnan(notebook.platform.gammaLut.at(3)));
  EXPECT_EQ(notebook.platform.gammaLut.at(4), Loaded().at(4));
}

TEST_F(ColorField3DLutWhitePoint, EditGammaLutByWhitePoint_RepairSurvivesALaterFailure) {
  StoreGains(Gains(2, 0.5, 1, 1));
  notebook.FailCall("PlatformSetGammaLut", 1, 9);
  WhitePointFineTueInfo record = Gains(2, 0.5, 1, 1);
  EXPECT_EQ(engine.EditGammaLutByWhitePoint(record), 9) << "the platform's result";
  EXPECT_EQ(EngineLog().back(),
            Error("EditGammaLutByWhitePoint", "PlatformSetGammaLut fail, mode: 2, id : "));
  EXPECT_EQ(StoredGains(kP3Key), kNeutral);
}

TEST_F(ColorField3DLutWhitePoint, EditGammaLutByWhitePoint_UserModeThatIsNotLoaded) {
  StoreGains(Gains(11, 0.5, 1, 1, "Mine%1"));
  WhitePointFineTueInfo record = Gains(11, 0.5, 1, 1, "Mine%1");
  EXPECT_EQ(engine.EditGammaLutByWhitePoint(record), 1);
  EXPECT_EQ(EngineLog(), Lines({Error("FusionGammaLut", "Gammalut in is null, fusion fail"),
                                Error("EditGammaLutByWhitePoint",
                                      "Fusion gammalut data fail, mode: 11, id : Mine%1")}));
  EXPECT_EQ(StoredGains(L"UserDesignMode\\Mine%1").at(0), L"0.500000") << "not repaired";
  EXPECT_EQ(notebook.CountCalls("PlatformSetGammaLut"), 0u);
}

TEST_F(ColorField3DLutWhitePoint, EditGammaLutByWhitePoint_DarkLut) {
  std::vector<double> dark = SomeGammaLut();
  dark[3071] = 0;
  WriteFileBytes(UserFileGamma("Mine%1"), UserBlock(dark));
  ASSERT_TRUE(engine.GetGammaLutDataFromBin("Mine%1"));
  WhitePointFineTueInfo record = Gains(11, 1, 1, 1, "Mine%1");
  EXPECT_EQ(engine.EditGammaLutByWhitePoint(record), 1);
  EXPECT_EQ(EngineLog(), Lines({Error("IsGammaLutDataValid", "GammaLut data is invalid"),
                                Error("EditGammaLutByWhitePoint",
                                      "Fusion gammalut data is invalid, mode: 11, id : Mine%1")}));
  EXPECT_EQ(notebook.CountCalls("PlatformSetGammaLut"), 0u);
}

TEST_F(ColorField3DLutWhitePoint, EditGammaLutByWhitePoint_NoMemory) {
  WhitePointFineTueInfo record = Gains(2, 1, 1, 1);
  const testsupport::FailingNew failing(1);
  EXPECT_EQ(engine.EditGammaLutByWhitePoint(record), 1);
  EXPECT_EQ(EngineLog(),
            Lines({Error("EditGammaLutByWhitePoint", "Gammalut create fail, mode: 2, id : ")}));
}

}  // namespace
}  // namespace lutmachine
