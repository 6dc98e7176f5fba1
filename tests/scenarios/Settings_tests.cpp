// The settings through the shipped library: entry lines, homes, the road to the platform.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/IniFile.h"
#include "support/NotebookTest.h"
#include "support/Registry.h"
#include "virtualnotebook/HostedLibrary.h"

namespace virtualnotebook {
namespace {

using testsupport::DwordValue;
using testsupport::LogIs;
using testsupport::ReadKey;
using testsupport::RegistryValues;
using testsupport::TextValue;

const std::wstring kSettingsTestKey = L"SOFTWARE\\Norvex\\Velora";

class Settings : public testing::Test {
 protected:
  RegistryValues Stored(const std::wstring& feature) const {
    return ReadKey(HKEY_LOCAL_MACHINE, kSettingsTestKey + L"\\" + feature);
  }
  // The first line since the last one that was asked for.
  std::wstring EntryLine() {
    const std::wstring line =
        library.notebook.log.empty()
            ? L"nothing"
            : std::to_wstring(library.notebook.log[0].level) + L" " + library.notebook.log[0].text;
    library.notebook.ForgetRecords();
    return line;
  }

  const testsupport::ScopedKey machine{HKEY_LOCAL_MACHINE, kSettingsTestKey};
  const testsupport::ScopedKey user{HKEY_CURRENT_USER, kSettingsTestKey};
  const testsupport::IniFile ini;
  HostedLibrary library;
};

TEST_F(Settings, EyeProtection) {
  EXPECT_EQ(library.SetEyeProtectStatus(1), ResultOk);
  EXPECT_EQ(EntryLine(), L"1 eyeProtectEnable:1(SetEyeProtectStatus)");
  EXPECT_EQ(library.GetEyeProtectStatus(0), 1);
  EXPECT_EQ(EntryLine(), L"1 defaultEyeProtectEnable:0(GetEyeProtectStatus)");
  EXPECT_EQ(library.SetEyeProtectValue(200), ResultOk);
  EXPECT_EQ(EntryLine(), L"1 eyeProtectValue:200(SetEyeProtectValue)");
  EXPECT_EQ(library.GetEyeProtectValue(-1), 200);
  EXPECT_EQ(EntryLine(), L"1 defaultSliderValue:-1(GetEyeProtectValue)");
  EXPECT_EQ(library.SetPSRStatusValue(2), ResultOk);
  EXPECT_EQ(EntryLine(), L"1 PSREnable:2(SetPSRStatusValue)");
  EXPECT_EQ(library.GetPSRStatusValue(0), 2);
  EXPECT_EQ(EntryLine(), L"1 defaultPSREnable:0(GetPSRStatusValue)");
  EXPECT_EQ(library.SetRhineValue(0.75), ResultOk);
  EXPECT_EQ(EntryLine(), L"1 rhineValue:0.75(SetRhineValue)");
  EXPECT_EQ(library.GetRhineValue(0.8199999928474426), 0.75);
  EXPECT_EQ(EntryLine(), L"1 defaultRhineValue:0.82(GetRhineValue)");
  EXPECT_EQ(library.GetColorBlueValue(1), 255);
  EXPECT_EQ(EntryLine(), L"1 value:1(GetColorBlueValue)");
  EXPECT_EQ(library.TransEyeProtectSliderValue(366), 0.75);
  EXPECT_EQ(EntryLine(), L"1 sliderValue:366(TransEyeProtectSliderValue)");
  EXPECT_EQ(library.SetFeatureSupport(FEATURE_TYPE_EYE_PROTECT, 1), ResultOk);
  EXPECT_NEAR(library.TransEyeProtectSliderValue(366), 0.675, 1e-7);
  library.notebook.ForgetRecords();
  EXPECT_EQ(library.SetEyeProtectHandleType(1), ResultOk);
  EXPECT_EQ(EntryLine(), L"1 handleType:1(SetEyeProtectHandleType)");
  EXPECT_EQ(library.SetEyeProtectRGB(1, 0.5, 0.25), ResultOk);
  EXPECT_EQ(EntryLine(), L"1 r:1, g:0.5, b:0.25(SetEyeProtectRGB)");
  EXPECT_EQ(Stored(L"EyeProtect"), (RegistryValues{{L"IsEnable", DwordValue(1)},
                                                   {L"ProtectValue", DwordValue(200)},
                                                   {L"PSRIsEnable", DwordValue(2)},
                                                   {L"RhineValue", TextValue(L"0.750000")},
                                                   {L"HandleType", DwordValue(1)},
                                                   {L"r", TextValue(L"1.000000")},
                                                   {L"g", TextValue(L"0.500000")},
                                                   {L"b", TextValue(L"0.250000")}}));
}

TEST_F(Settings, ColorTemperature) {
  EXPECT_EQ(library.SetTemperatureValue(150), ResultOk);
  EXPECT_EQ(EntryLine(), L"1 temperaturValue:150(SetTemperatureValue)");
  EXPECT_EQ(library.GetTemperatureValue(0), 150);
  EXPECT_EQ(EntryLine(), L"1 defaultTemperatureValue:0(GetTemperatureValue)");
  EXPECT_EQ(library.SetColorTemperatureType(2), ResultOk);
  EXPECT_EQ(EntryLine(), L"1 colorType:2(SetColorTemperatureType)");
  EXPECT_EQ(library.GetColorTemperatureType(0), 2);
  EXPECT_EQ(EntryLine(), L"1 defaultColorType:0(GetColorTemperatureType)");
  ColorTemperatureConfig point{81.5, 79};
  EXPECT_EQ(library.SetColorTemperatureConfig(&point), ResultOk);
  EXPECT_EQ(EntryLine(), L"1 colorConfig:x:81.5, y:79(SetColorTemperatureConfig)");
  point = {1, 2};
  EXPECT_EQ(library.GetColorTemperatureConfig(&point), ResultOk);
  EXPECT_EQ(EntryLine(), L"1 colorConfig:x:1, y:2(GetColorTemperatureConfig)");
  EXPECT_EQ(point.x, 81.5);
  EXPECT_EQ(point.y, 79);
  EXPECT_EQ(Stored(L"ColorTemperature"), (RegistryValues{{L"TemperatureValue", DwordValue(150)},
                                                         {L"TemperatureType", DwordValue(2)},
                                                         {L"X", TextValue(L"81.500000")},
                                                         {L"Y", TextValue(L"79.000000")}}));
}

TEST_F(Settings, ASliderOutOfRange) {
  library.GetTemperatureValue(0);
  library.notebook.ForgetRecords();
  EXPECT_EQ(library.SetTemperatureValue(367), ResultOutOfRange);
  EXPECT_TRUE(LogIs(library.notebook, {{1, L"temperaturValue:367(SetTemperatureValue)"},
                                       {3,
                                        L"exceed temperatureValue:367, valid range:[0, 366]"
                                        L"(ColorTemperatureReg::SetTemperatureValue)"}}));
}

TEST_F(Settings, NaturalColor) {
  EXPECT_EQ(library.GetNatureColorStatus(1), 1);
  EXPECT_EQ(EntryLine(), L"1 defaultStatus:1(GetNatureColorStatus)");
  EXPECT_EQ(library.SetNatureColorStatus(0), ResultOk);
  EXPECT_EQ(EntryLine(), L"1 status:0(SetNatureColorStatus)");
  EXPECT_EQ(Stored(L"NaturalColor"), (RegistryValues{{L"IsEnable", DwordValue(0)}}));
}

TEST_F(Settings, ColorField) {
  EXPECT_EQ(library.SetColorFieldCurrentMode(2), ResultOk);
  EXPECT_EQ(EntryLine(), L"1 mode:2(SetColorFieldCurrentMode)");
  EXPECT_EQ(library.GetColorFieldCurrentMode(1), 2);
  EXPECT_EQ(EntryLine(), L"1 defaultMode:1(GetColorFieldCurrentMode)");
  EXPECT_EQ(library.SetColorFieldResetMode(3), ResultOk);
  EXPECT_EQ(EntryLine(), L"1 config:3(SetColorFieldResetMode)");
  EXPECT_EQ(library.GetColorFieldResetMode(1), 3);
  EXPECT_EQ(EntryLine(), L"1 defaultMode:1(GetColorFieldResetMode)");
  EXPECT_EQ(library.SetColorFieldSetType(1), ResultOk);
  EXPECT_EQ(EntryLine(), L"1 setType:1(SetColorFieldSetType)");
  EXPECT_EQ(library.GetColorFieldSetType(4), 1);
  EXPECT_EQ(EntryLine(), L"1 defaultType:4(GetColorFieldSetType)");
  EXPECT_EQ(Stored(L"ColorField"), (RegistryValues{{L"CurrentMode", DwordValue(2)},
                                                   {L"ResetMode", DwordValue(3)},
                                                   {L"SetType", DwordValue(1)}}));
}

// Each class says once, behind the first entry line, where its values are.
TEST_F(Settings, EachClassIsConstructedOnFirstUse) {
  library.GetColorFieldSetType(4);
  library.GetColorFieldSetType(4);
  EXPECT_TRUE(
      LogIs(library.notebook,
            {{1, L"defaultType:4(GetColorFieldSetType)"},
             {1, L"FeatureType 3 is single user!(MultiUserReg::MultiUserReg)"},
             {1, L"reg path:" + kSettingsTestKey + L"\\ColorField(MultiUserReg::MultiUserReg)"},
             {1, L"defaultType:4(GetColorFieldSetType)"}}));
}

// Only the white point follows the user: the others stay where they were constructed.
TEST_F(Settings, SwitchUserLeavesTheOthers) {
  testsupport::WriteValue(HKEY_LOCAL_MACHINE, kSettingsTestKey + L"\\FeatureInfo\\MultiUser",
                          L"NaturalColor", DwordValue(1));
  library.notebook.administrator = true;
  library.notebook.userSid = testsupport::CurrentUserSid();
  EXPECT_EQ(library.SetNatureColorStatus(5), ResultOk);
  library.notebook.userSid = L"S-1-5-21-1-2-3-1001";
  library.SwitchUser();
  EXPECT_EQ(library.GetNatureColorStatus(0), 5);
  EXPECT_EQ(ReadKey(HKEY_CURRENT_USER, kSettingsTestKey + L"\\NaturalColor"),
            (RegistryValues{{L"IsEnable", DwordValue(5)}}));
}

TEST_F(Settings, DefaultsOfTheIniFile) {
  ini.Write(
      "[EYEPROTECT]\r\nIsEnableEyeProtect=1\r\n[BLUEPROTECT]\r\nCurrentBlueProtect=1\r\n"
      "CurrentBlueProtectSlider=150\r\n[TEMPERATURE]\r\nCurrentTemperatureSlider=160\r\n"
      "[CIRCLE]\r\nIsIntelCold=1\r\nIsIntelWarm=1\r\nAngle=0\r\nRadiusScale=2\r\n"
      "[NATURECOLOR]\r\nIsNatureColor=3\r\n");
  EXPECT_EQ(library.GetEyeProtectStatus(0), 1);
  EXPECT_EQ(library.GetEyeProtectValue(0), 150);
  EXPECT_EQ(library.GetTemperatureValue(0), 160);
  EXPECT_EQ(library.GetColorTemperatureType(0), 2);
  ColorTemperatureConfig point{};
  EXPECT_EQ(library.GetColorTemperatureConfig(&point), ResultOk);
  EXPECT_EQ(point.x, 160);
  EXPECT_EQ(point.y, 80);
  EXPECT_EQ(library.GetNatureColorStatus(0), 1);
}

TEST_F(Settings, Set3DColorTemperature) {
  library.notebook.FailCall("PlatformSet3DColorTemperature", 2, 23);
  const Color3DInfo info{1, 0.9, 0.8, 255, 0.82};
  EXPECT_EQ(library.Set3DColorTemperature(&info), 0);
  EXPECT_EQ(EntryLine(),
            L"1 colorInfo:r:1, g:0.9, b:0.8, colorBlue:255, protectValue:0.82"
            L"(Set3DColorTemperature)");
  EXPECT_EQ(Stored(L"Printer"), (RegistryValues{{L"r", TextValue(L"1.000000")},
                                                {L"g", TextValue(L"0.900000")},
                                                {L"b", TextValue(L"0.800000")}}));
  EXPECT_EQ(library.Set3DColorTemperature(&info), 23);
}

TEST_F(Settings, Set3DColorTemperature_StoresAheadOfThePlatform) {
  const Color3DInfo info{0.5, 0.5, 0.5, 0, 0};
  library.Set3DColorTemperature(&info);
  const std::vector<std::string> calls = {"RegSetValueExW", "RegSetValueExW", "RegSetValueExW",
                                          "PlatformSet3DColorTemperature"};
  EXPECT_EQ(
      testsupport::CallsOf(library.notebook, {"RegSetValueExW", "PlatformSet3DColorTemperature"}),
      calls);
  library.notebook.ForgetRecords();
  library.notebook.FailCall("RegCreateKeyExW", 0, ERROR_ACCESS_DENIED);
  EXPECT_EQ(library.Set3DColorTemperature(&info), 0);
  EXPECT_EQ(library.notebook.CountCalls("PlatformSet3DColorTemperature"), 1u);
  EXPECT_TRUE(LogIs(
      library.notebook,
      {{1, L"colorInfo:r:0.5, g:0.5, b:0.5, colorBlue:0, protectValue:0(Set3DColorTemperature)"},
       {3, L"RegCreateKeyEx:" + kSettingsTestKey +
               L"\\Printer failed!(RegisterHelper::RegWriteValue)"}}));
}

TEST_F(Settings, Set2DColorTemperature) {
  const Color2DInfo info{150, 255};
  EXPECT_EQ(library.Set2DColorTemperature(&info), 0);
  EXPECT_TRUE(LogIs(library.notebook,
                    {{1, L"colorInfo:temperature:150, colorBlue:255(Set2DColorTemperature)"}}));
  library.notebook.FailCall("PlatformSet2DColorTemperature", 1, 7);
  EXPECT_EQ(library.Set2DColorTemperature(&info), 7);
  EXPECT_EQ(library.notebook.CountCalls("PlatformSet2DColorTemperature"), 2u);
  EXPECT_EQ(Stored(L"Printer"), RegistryValues());
}

}  // namespace
}  // namespace virtualnotebook
