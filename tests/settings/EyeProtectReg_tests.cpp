#include "settings/EyeProtectReg.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "settings/SettingsTest.h"

namespace velora {
namespace {

class EyeProtectRegTest : public SettingsTest<EyeProtectReg> {
 protected:
  EyeProtectRegTest() : SettingsTest(L"EyeProtect") {}
  ~EyeProtectRegTest() override { SupportFeature(0); }

  void SupportFeature(int flag) {
    FeatureManager::GetInstance().SetFeatureSupport(FEATURE_TYPE_EYE_PROTECT, flag);
  }
};

// --- Status ---

TEST_F(EyeProtectRegTest, Status_Stored) {
  Store(L"IsEnable", DwordValue(6));
  ini.Write("[EYEPROTECT]\r\nIsEnableEyeProtect=1\r\n");
  EXPECT_EQ(settings.GetEyeProtectStatus(0), 6);
  EXPECT_LOG();
}

TEST_F(EyeProtectRegTest, Status_SeededFromTheIniFile) {
  ini.Write("[EYEPROTECT]\r\nIsEnableEyeProtect=1\r\n");
  EXPECT_EQ(settings.GetEyeProtectStatus(0), 1);
  EXPECT_EQ(Stored(), (RegistryValues{{L"IsEnable", DwordValue(1)}}));
  EXPECT_LOG();
  ini.Write("[EYEPROTECT]\r\nIsEnableEyeProtect=0\r\n");
  EXPECT_EQ(settings.GetEyeProtectStatus(0), 1) << "from then on the file plays no part";
  Delete(L"IsEnable");
  EXPECT_EQ(settings.GetEyeProtectStatus(5), 0) << "and again when the value is gone";
}

TEST_F(EyeProtectRegTest, Status_SeededFromTheDefault) {
  EXPECT_EQ(settings.GetEyeProtectStatus(-3), -3);
  EXPECT_EQ(Stored(), (RegistryValues{{L"IsEnable", DwordValue(0xFFFFFFFD)}}));
  EXPECT_LOG(IniLine(L"EYEPROTECT", L"IsEnableEyeProtect"));
}

TEST_F(EyeProtectRegTest, Status_IsReturnedThoughItCannotBeStored) {
  notebook.FailCall("RegCreateKeyExW", 0, ERROR_ACCESS_DENIED);
  ini.Write("[EYEPROTECT]\r\nIsEnableEyeProtect=1\r\n");
  EXPECT_EQ(settings.GetEyeProtectStatus(0), 1);
  EXPECT_EQ(settings.GetEyeProtectStatus(0), 1);
  EXPECT_LOG(NotCreatedLine(), NotCreatedLine()) << "each read seeds again";
}

// --- Slider ---

TEST_F(EyeProtectRegTest, Value_GateClosedGivesTheDefault) {
  ini.Write("[BLUEPROTECT]\r\nCurrentBlueProtect=0\r\nCurrentBlueProtectSlider=150\r\n");
  EXPECT_EQ(settings.GetEyeProtectValue(100), 100);
  EXPECT_EQ(Stored(), (RegistryValues{{L"ProtectValue", DwordValue(100)}}));
  EXPECT_LOG();
}

TEST_F(EyeProtectRegTest, Value_GateOpenGivesTheIniFiles) {
  ini.Write("[BLUEPROTECT]\r\nCurrentBlueProtect=1\r\nCurrentBlueProtectSlider=150\r\n");
  EXPECT_EQ(settings.GetEyeProtectValue(100), 150);
  EXPECT_EQ(Stored(), (RegistryValues{{L"ProtectValue", DwordValue(150)}}));
}

TEST_F(EyeProtectRegTest, Value_AnyGateButZeroIsOpen) {
  ini.Write("[BLUEPROTECT]\r\nCurrentBlueProtect=-2\r\nCurrentBlueProtectSlider=150\r\n");
  EXPECT_EQ(settings.GetEyeProtectValue(100), 150);
}

TEST_F(EyeProtectRegTest, Value_NoIniFile) {
  EXPECT_EQ(settings.GetEyeProtectValue(100), 100);
  EXPECT_EQ(Stored(), (RegistryValues{{L"ProtectValue", DwordValue(100)}}));
  EXPECT_LOG(IniLine(L"BLUEPROTECT", L"CurrentBlueProtect"));
}

TEST_F(EyeProtectRegTest, Value_GateOpenWithoutSlider) {
  ini.Write("[BLUEPROTECT]\r\nCurrentBlueProtect=1\r\n");
  EXPECT_EQ(settings.GetEyeProtectValue(100), 100);
  EXPECT_EQ(Stored(), (RegistryValues{{L"ProtectValue", DwordValue(100)}}));
  EXPECT_LOG(IniLine(L"BLUEPROTECT", L"CurrentBlueProtectSlider"));
}

TEST_F(EyeProtectRegTest, Value_IniFilesOutOfRange) {
  for (const char* slider : {"367", "500", "-1", "4294967295"}) {
    SCOPED_TRACE(slider);
    const testsupport::ScopedKey clean(HKEY_LOCAL_MACHINE, key);
    ini.Write(std::string("[BLUEPROTECT]\r\nCurrentBlueProtect=1\r\nCurrentBlueProtectSlider=") +
              slider + "\r\n");
    EXPECT_EQ(settings.GetEyeProtectValue(100), 100);
    EXPECT_EQ(Stored(), (RegistryValues{{L"ProtectValue", DwordValue(100)}}));
  }
}

TEST_F(EyeProtectRegTest, Value_StoredInRangeIsGivenUntouched) {
  for (const uint32_t value : {0u, 1u, 365u, 366u}) {
    Store(L"ProtectValue", DwordValue(value));
    notebook.ForgetRecords();
    EXPECT_EQ(settings.GetEyeProtectValue(100), static_cast<int>(value));
    EXPECT_EQ(notebook.CountCalls("RegSetValueExW"), 0u);
  }
  EXPECT_LOG();
}

TEST_F(EyeProtectRegTest, Value_StoredOutOfRangeIsHealed) {
  ini.Write("[BLUEPROTECT]\r\nCurrentBlueProtect=1\r\nCurrentBlueProtectSlider=150\r\n");
  for (const uint32_t value : {367u, 0xFFFFFFFFu, 0x80000000u}) {
    Store(L"ProtectValue", DwordValue(value));
    EXPECT_EQ(settings.GetEyeProtectValue(100), 100) << "the default, not the file's";
    EXPECT_EQ(Stored(), (RegistryValues{{L"ProtectValue", DwordValue(100)}}));
  }
  EXPECT_LOG();
}

TEST_F(EyeProtectRegTest, Value_DefaultOutOfRangeHealsNothing) {
  Store(L"ProtectValue", DwordValue(400));
  EXPECT_EQ(settings.GetEyeProtectValue(367), 367);
  EXPECT_EQ(Stored(), (RegistryValues{{L"ProtectValue", DwordValue(400)}}));
  EXPECT_LOG({3,
              L"exceed eyeProtectSliderValue:367, valid range:[0, 366]"
              L"(EyeProtectReg::SetEyeProtectValue)"});
}

TEST_F(EyeProtectRegTest, SetValue_Range) {
  for (const int value : {0, 1, 365, 366}) {
    EXPECT_EQ(settings.SetEyeProtectValue(value), ResultOk);
    EXPECT_EQ(Stored(),
              (RegistryValues{{L"ProtectValue", DwordValue(static_cast<uint32_t>(value))}}));
  }
  EXPECT_LOG();
  for (const int value : {-1, 367, INT_MIN, INT_MAX}) {
    notebook.ForgetRecords();
    EXPECT_EQ(settings.SetEyeProtectValue(value), ResultOutOfRange);
    EXPECT_EQ(Stored(), (RegistryValues{{L"ProtectValue", DwordValue(366)}}));
    EXPECT_LOG({3, L"exceed eyeProtectSliderValue:" + std::to_wstring(value) +
                       L", valid range:[0, 366](EyeProtectReg::SetEyeProtectValue)"});
  }
}

TEST_F(EyeProtectRegTest, SetValue_FailedWrite) {
  notebook.FailCall("RegCreateKeyExW", 1, ERROR_ACCESS_DENIED);
  EXPECT_EQ(settings.SetEyeProtectValue(5), ResultFailed);
  EXPECT_LOG(NotCreatedLine());
}

// --- Plain values ---

TEST_F(EyeProtectRegTest, PsrAndHandleType_ArePlain) {
  EXPECT_EQ(settings.GetPSRStatusValue(8), 8);
  EXPECT_EQ(settings.GetEyeProtectHandleType(9), 9);
  EXPECT_EQ(Stored(), RegistryValues());
  EXPECT_EQ(settings.SetPSRStatusValue(-1), ResultOk);
  EXPECT_EQ(settings.SetEyeProtectHandleType(2), ResultOk);
  EXPECT_EQ(settings.GetPSRStatusValue(8), -1);
  EXPECT_EQ(settings.GetEyeProtectHandleType(9), 2);
  EXPECT_EQ(Stored(), (RegistryValues{{L"PSRIsEnable", DwordValue(0xFFFFFFFF)},
                                      {L"HandleType", DwordValue(2)}}));
  EXPECT_LOG();
}

TEST_F(EyeProtectRegTest, Rhine) {
  EXPECT_EQ(settings.GetRhineValue(0.25), 0.25);
  EXPECT_LOG(NoKeyLine(L"Reg key:"));
  EXPECT_EQ(settings.SetRhineValue(0.8199999928474426), ResultOk);
  EXPECT_EQ(Stored(), (RegistryValues{{L"RhineValue", TextValue(L"0.820000")}}));
  EXPECT_EQ(settings.GetRhineValue(0.25), 0.82);
  notebook.ForgetRecords();
  Store(L"RhineValue", TextValue(L"abc"));
  EXPECT_EQ(settings.GetRhineValue(0.25), 0.25);
  EXPECT_LOG(NoNumberLine());
  EXPECT_EQ(Stored(), (RegistryValues{{L"RhineValue", TextValue(L"abc")}}));
}

TEST_F(EyeProtectRegTest, Rgb) {
  EXPECT_EQ(settings.SetEyeProtectRGB(0.1, 0.2, 0.3), ResultOk);
  EXPECT_EQ(Stored(), (RegistryValues{{L"r", TextValue(L"0.100000")},
                                      {L"g", TextValue(L"0.200000")},
                                      {L"b", TextValue(L"0.300000")}}));
  Delete(L"g");
  double r = 7;
  double g = 8;
  double b = 9;
  EXPECT_EQ(settings.GetEyeProtectRGB(&r, &g, &b), ResultFailed);
  EXPECT_EQ(r, 0.1);
  EXPECT_EQ(g, 8);
  EXPECT_EQ(b, 9);
}

TEST_F(EyeProtectRegTest, ColorBlue) {
  EXPECT_EQ(settings.GetColorBlueValue(1), 255);
  for (const int value : {0, 2, -1, 255, INT_MAX}) {
    EXPECT_EQ(settings.GetColorBlueValue(value), 0);
  }
  EXPECT_TRUE(notebook.calls.empty()) << "no store is touched";
}

// --- Strength of the slider ---

TEST_F(EyeProtectRegTest, TransSlider_Curve) {
  SupportFeature(1);
  settings.SetRhineValue(0.82);
  constexpr double rounding = 1e-7;  // of the single-precision factors
  struct Row {
    int slider;
    double strength;
  };
  const Row rows[] = {{0, 0.937},      // 0.82 + 0.65 * 0.18
                      {90, 0.8785},    // half of the rise
                      {179, 0.82065},  // 0.82 + 0.117 / 180
                      {180, 0.82},    {187, 0.82},
                      {195, 0.82},    {196, 0.8195204678362573},  // 0.82 - 0.082 / 171
                      {366, 0.738},                               // 0.9 * 0.82
                      {-180, 1.054},                              // the lines go on
                      {537, 0.656}};
  for (const Row& row : rows) {
    EXPECT_NEAR(settings.TransEyeProtectSliderValue(row.slider), row.strength, rounding)
        << row.slider;
  }
}

// The factors are single-precision numbers, widened.
TEST_F(EyeProtectRegTest, TransSlider_Factors) {
  SupportFeature(1);
  settings.SetRhineValue(0.5);
  EXPECT_EQ(settings.TransEyeProtectSliderValue(0), 0.5 + 0.5 * 0.6499999761581421);
  EXPECT_EQ(settings.TransEyeProtectSliderValue(366),
            0.5 - 171 * (0.5 * 0.10000000149011612) / 171);
  EXPECT_EQ(settings.TransEyeProtectSliderValue(180), 0.5);
  EXPECT_EQ(settings.TransEyeProtectSliderValue(195), 0.5);
}

TEST_F(EyeProtectRegTest, TransSlider_WithoutStoredRhine) {
  SupportFeature(1);
  notebook.ForgetRecords();
  EXPECT_EQ(settings.TransEyeProtectSliderValue(190), 0.8199999928474426);
  EXPECT_LOG(NoKeyLine(L"Reg key:"));
}

TEST_F(EyeProtectRegTest, TransSlider_OfAFeatureThatIsNotSupported) {
  SupportFeature(0);
  settings.SetRhineValue(0.82);
  for (const int slider : {-5, 0, 100, 180, 195, 200, 366, 400}) {
    EXPECT_EQ(settings.TransEyeProtectSliderValue(slider), 0.82);
  }
}

}  // namespace
}  // namespace velora
