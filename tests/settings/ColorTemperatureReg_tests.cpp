#include "settings/ColorTemperatureReg.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <string>

#include "settings/SettingsTest.h"

namespace velora {
namespace {

class ColorTemperatureRegTest : public SettingsTest<ColorTemperatureReg> {
 protected:
  ColorTemperatureRegTest() : SettingsTest(L"ColorTemperature") {}

  void WriteCircle(const std::string& lines) { ini.Write("[CIRCLE]\r\n" + lines); }

  // The point of an INI file's angle and scale, on an empty registry.
  ColorTemperatureConfig PointOf(const std::string& angle, const std::string& scale) {
    const testsupport::ScopedKey clean(HKEY_LOCAL_MACHINE, key);
    WriteCircle("Angle=" + angle + "\r\nRadiusScale=" + scale + "\r\n");
    ColorTemperatureConfig point{-1, -1};
    EXPECT_EQ(settings.GetColorTemperatureConfig(&point), ResultOk);
    return point;
  }
};

// --- Slider ---

TEST_F(ColorTemperatureRegTest, Value_StoredIsGivenWhateverItIs) {
  ini.Write("[TEMPERATURE]\r\nCurrentTemperatureSlider=150\r\n");
  for (const uint32_t value : {0u, 366u, 400u, 0xFFFFFFFFu}) {
    Store(L"TemperatureValue", DwordValue(value));
    EXPECT_EQ(settings.GetTemperatureValue(100), static_cast<int>(value));
    EXPECT_EQ(Stored(), (RegistryValues{{L"TemperatureValue", DwordValue(value)}}));
  }
  EXPECT_LOG();
}

TEST_F(ColorTemperatureRegTest, Value_SeededFromTheIniFile) {
  ini.Write("[TEMPERATURE]\r\nCurrentTemperatureSlider=150\r\n");
  EXPECT_EQ(settings.GetTemperatureValue(100), 150);
  EXPECT_EQ(Stored(), (RegistryValues{{L"TemperatureValue", DwordValue(150)}}));
  EXPECT_LOG();
}

TEST_F(ColorTemperatureRegTest, Value_SeededFromTheDefault) {
  EXPECT_EQ(settings.GetTemperatureValue(100), 100);
  EXPECT_EQ(Stored(), (RegistryValues{{L"TemperatureValue", DwordValue(100)}}));
  EXPECT_LOG(IniLine(L"TEMPERATURE", L"CurrentTemperatureSlider"));
}

TEST_F(ColorTemperatureRegTest, Value_RefusedSeedIsReturned) {
  ini.Write("[TEMPERATURE]\r\nCurrentTemperatureSlider=400\r\n");
  EXPECT_EQ(settings.GetTemperatureValue(100), 400);
  EXPECT_EQ(Stored(), RegistryValues());
  EXPECT_LOG({3,
              L"exceed temperatureValue:400, valid range:[0, 366]"
              L"(ColorTemperatureReg::SetTemperatureValue)"});
}

TEST_F(ColorTemperatureRegTest, Value_IsReturnedThoughItCannotBeStored) {
  notebook.FailCall("RegCreateKeyExW", 1, ERROR_ACCESS_DENIED);
  EXPECT_EQ(settings.GetTemperatureValue(100), 100);
  EXPECT_LOG(IniLine(L"TEMPERATURE", L"CurrentTemperatureSlider"), NotCreatedLine());
  EXPECT_EQ(Stored(), RegistryValues());
  EXPECT_EQ(settings.GetTemperatureValue(90), 90) << "seeded again";
  EXPECT_EQ(Stored(), (RegistryValues{{L"TemperatureValue", DwordValue(90)}}));
}

TEST_F(ColorTemperatureRegTest, SetValue_Range) {
  for (const int value : {0, 1, 365, 366}) {
    EXPECT_EQ(settings.SetTemperatureValue(value), ResultOk);
    EXPECT_EQ(Stored(),
              (RegistryValues{{L"TemperatureValue", DwordValue(static_cast<uint32_t>(value))}}));
  }
  EXPECT_LOG();
  for (const int value : {-1, 367, INT_MIN, INT_MAX}) {
    notebook.ForgetRecords();
    EXPECT_EQ(settings.SetTemperatureValue(value), ResultOutOfRange);
    EXPECT_EQ(Stored(), (RegistryValues{{L"TemperatureValue", DwordValue(366)}}));
    EXPECT_LOG({3, L"exceed temperatureValue:" + std::to_wstring(value) +
                       L", valid range:[0, 366](ColorTemperatureReg::SetTemperatureValue)"});
  }
}

// --- Type ---

TEST_F(ColorTemperatureRegTest, Type_Stored) {
  WriteCircle("IsIntelCold=1\r\n");
  Store(L"TemperatureType", DwordValue(77));
  EXPECT_EQ(settings.GetColorTemperatureType(0), 77);
  EXPECT_LOG();
}

TEST_F(ColorTemperatureRegTest, Type_OfTheIniFilesFlags) {
  for (int flags = 0; flags < 8; ++flags) {
    const bool isDefault = (flags & 1) != 0;
    const bool isCold = (flags & 2) != 0;
    const bool isWarm = (flags & 4) != 0;
    SCOPED_TRACE(flags);
    const testsupport::ScopedKey clean(HKEY_LOCAL_MACHINE, key);
    WriteCircle(std::string("IsIntelDefault=") + (isDefault ? "1" : "0") + "\r\nIsIntelCold=" +
                (isCold ? "2" : "0") + "\r\nIsIntelWarm=" + (isWarm ? "3" : "0") + "\r\n");
    const int expected[8] = {255, 0, 2, 0, 1, 0, 2, 0};
    EXPECT_EQ(settings.GetColorTemperatureType(5), expected[flags]);
    EXPECT_EQ(
        Stored(),
        (RegistryValues{{L"TemperatureType", DwordValue(static_cast<uint32_t>(expected[flags]))}}));
  }
}

// All three are looked up, whatever the first says.
TEST_F(ColorTemperatureRegTest, Type_OnlyOneFlagInTheIniFile) {
  WriteCircle("IsIntelCold=1\r\n");
  EXPECT_EQ(settings.GetColorTemperatureType(0), 2);
  EXPECT_EQ(Stored(), (RegistryValues{{L"TemperatureType", DwordValue(2)}}));
  EXPECT_LOG(IniLine(L"CIRCLE", L"IsIntelDefault"), IniLine(L"CIRCLE", L"IsIntelWarm"));
  Delete(L"TemperatureType");
  WriteCircle("IsIntelDefault=1\r\n");
  notebook.ForgetRecords();
  EXPECT_EQ(settings.GetColorTemperatureType(2), 0);
  EXPECT_LOG(IniLine(L"CIRCLE", L"IsIntelCold"), IniLine(L"CIRCLE", L"IsIntelWarm"));
}

TEST_F(ColorTemperatureRegTest, Type_WithoutFlagsIsUnknown) {
  EXPECT_EQ(settings.GetColorTemperatureType(1), 255) << "the default plays no part";
  EXPECT_EQ(Stored(), (RegistryValues{{L"TemperatureType", DwordValue(255)}}));
}

TEST_F(ColorTemperatureRegTest, SetType_TakesAnyNumber) {
  EXPECT_EQ(settings.SetColorTemperatureType(-4), ResultOk);
  EXPECT_EQ(settings.GetColorTemperatureType(0), -4);
  notebook.FailCall("RegSetValueExW", 1, ERROR_ACCESS_DENIED);
  EXPECT_EQ(settings.SetColorTemperatureType(1), ResultFailed);
  EXPECT_LOG({3, L"Write key:" + key +
                     L", itemName:TemperatureType, value:1 failed!"
                     L"(RegisterHelper::RegWriteValue)"});
}

// --- Point of the circle ---

TEST_F(ColorTemperatureRegTest, Config_Stored) {
  WriteCircle("Angle=1\r\nRadiusScale=1\r\n");
  const ColorTemperatureConfig stored{12.5, -300};
  EXPECT_EQ(settings.SetColorTemperatureConfig(&stored), ResultOk) << "there is no range";
  EXPECT_EQ(Stored(),
            (RegistryValues{{L"X", TextValue(L"12.500000")}, {L"Y", TextValue(L"-300.000000")}}));
  ColorTemperatureConfig point{};
  EXPECT_EQ(settings.GetColorTemperatureConfig(&point), ResultOk);
  EXPECT_EQ(point.x, 12.5);
  EXPECT_EQ(point.y, -300);
  EXPECT_LOG();
}

TEST_F(ColorTemperatureRegTest, Config_SeededFromTheIniFile) {
  WriteCircle("Angle=0\r\nRadiusScale=0.5\r\n");
  ColorTemperatureConfig point{};
  EXPECT_EQ(settings.GetColorTemperatureConfig(&point), ResultOk);
  EXPECT_EQ(point.x, 120);
  EXPECT_EQ(point.y, 80);
  EXPECT_EQ(Stored(),
            (RegistryValues{{L"X", TextValue(L"120.000000")}, {L"Y", TextValue(L"80.000000")}}));
  EXPECT_LOG(NoKeyLine(L"Reg key:"));
}

TEST_F(ColorTemperatureRegTest, Config_PointsOfTheIniFile) {
  struct Row {
    const char* angle;
    const char* scale;
    double x;
    double y;
  };
  const Row rows[] = {
      {"0", "0", 80, 80},
      {"1.5", "0", 80, 80},
      {"2", "0.005", 80, 80},
      {"2", "-0.005", 80, 80},
      {"0", "1", 160, 80},
      {"0", "2", 160, 80},
      {"0", "1e400", 160, 80},
      {"0", "-1", 0, 80},
      {"0", "-2", -80, 80},
      {"1.5707963267948966", "1", 80, 0},  // up is towards 0
      {"3.141592653589793", "1", 0, 80},
      {"0.7853981633974483", "0.5", 80 + 40 * std::sqrt(0.5), 80 - 40 * std::sqrt(0.5)},
      {"0", "abc", 80, 80},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(std::string(row.angle) + " " + row.scale);
    const ColorTemperatureConfig point = PointOf(row.angle, row.scale);
    EXPECT_NEAR(point.x, row.x, 1e-12);
    EXPECT_NEAR(point.y, row.y, 1e-12);
  }
}

// The least scale is the single-precision 0.01, and the comparison strict.
TEST_F(ColorTemperatureRegTest, Config_LeastScale) {
  EXPECT_EQ(PointOf("0", "0.009999999776482582").x, 80);
  EXPECT_EQ(PointOf("0", "0.009999999776482584").x, 80 * 0.009999999776482584 + 80);
  EXPECT_EQ(PointOf("0", "0.01").x, 80.8);
}

TEST_F(ColorTemperatureRegTest, Config_WithoutIniFileTheRecordStays) {
  ColorTemperatureConfig point{7, 8};
  EXPECT_EQ(settings.GetColorTemperatureConfig(&point), ResultFailed);
  EXPECT_EQ(point.x, 7);
  EXPECT_EQ(point.y, 8);
  EXPECT_LOG(NoKeyLine(L"Reg key:"), IniLine(L"CIRCLE", L"Angle"),
             IniLine(L"CIRCLE", L"RadiusScale"));
  EXPECT_EQ(Stored(), RegistryValues());
}

TEST_F(ColorTemperatureRegTest, Config_HalfAnIniFileIsNone) {
  for (const char* line : {"Angle=1\r\n", "RadiusScale=1\r\n"}) {
    WriteCircle(line);
    ColorTemperatureConfig point{7, 8};
    EXPECT_EQ(settings.GetColorTemperatureConfig(&point), ResultFailed);
    EXPECT_EQ(point.x, 7);
    EXPECT_EQ(point.y, 8);
  }
  EXPECT_EQ(Stored(), RegistryValues());
}

TEST_F(ColorTemperatureRegTest, Config_HalfAStoredPointIsNone) {
  Store(L"X", TextValue(L"1.000000"));
  ColorTemperatureConfig point{7, 8};
  EXPECT_EQ(settings.GetColorTemperatureConfig(&point), ResultFailed);
  EXPECT_EQ(point.x, 7) << "the stored half is not handed out";
  EXPECT_LOG(NoValueLine(L"Y"), IniLine(L"CIRCLE", L"Angle"), IniLine(L"CIRCLE", L"RadiusScale"));

  WriteCircle("Angle=0\r\nRadiusScale=0\r\n");
  EXPECT_EQ(settings.GetColorTemperatureConfig(&point), ResultOk);
  EXPECT_EQ(Stored(),
            (RegistryValues{{L"X", TextValue(L"80.000000")}, {L"Y", TextValue(L"80.000000")}}));
}

TEST_F(ColorTemperatureRegTest, Config_StoredTextThatIsNoNumber) {
  Store(L"X", TextValue(L"abc"));
  Store(L"Y", TextValue(L"1.000000"));
  ColorTemperatureConfig point{7, 8};
  EXPECT_EQ(settings.GetColorTemperatureConfig(&point), ResultFailed);
  EXPECT_LOG(NoNumberLine(), IniLine(L"CIRCLE", L"Angle"), IniLine(L"CIRCLE", L"RadiusScale"));
  EXPECT_EQ(Stored()[L"X"], TextValue(L"abc"));
  WriteCircle("Angle=0\r\nRadiusScale=0\r\n");
  EXPECT_EQ(settings.GetColorTemperatureConfig(&point), ResultOk);
  EXPECT_EQ(Stored()[L"X"], TextValue(L"80.000000")) << "overwritten by the file's";
}

TEST_F(ColorTemperatureRegTest, Config_IsReturnedThoughItCannotBeStored) {
  WriteCircle("Angle=0\r\nRadiusScale=0\r\n");
  notebook.FailCall("RegCreateKeyExW", 0, ERROR_ACCESS_DENIED);
  ColorTemperatureConfig point{};
  EXPECT_EQ(settings.GetColorTemperatureConfig(&point), ResultOk);
  EXPECT_EQ(point.x, 80);
  EXPECT_LOG(NoKeyLine(L"Reg key:"), NotCreatedLine());
}

TEST_F(ColorTemperatureRegTest, SetConfig_EndsAtTheFirstFailure) {
  const ColorTemperatureConfig point{1, 2};
  notebook.FailCall("RegSetValueExW", 1, ERROR_ACCESS_DENIED);
  EXPECT_EQ(settings.SetColorTemperatureConfig(&point), ResultFailed);
  EXPECT_EQ(Stored(), RegistryValues());
  notebook.FailCall("RegSetValueExW", 2, ERROR_ACCESS_DENIED);
  EXPECT_EQ(settings.SetColorTemperatureConfig(&point), ResultFailed);
  EXPECT_EQ(Stored(), (RegistryValues{{L"X", TextValue(L"1.000000")}}));
}

}  // namespace
}  // namespace velora
