#include "settings/NaturalColorReg.h"

#include <gtest/gtest.h>

#include "settings/SettingsTest.h"

namespace velora {
namespace {

class NaturalColorRegTest : public SettingsTest<NaturalColorReg> {
 protected:
  NaturalColorRegTest() : SettingsTest(L"NaturalColor") {}
};

TEST_F(NaturalColorRegTest, Status_StoredIsGivenAsItIs) {
  ini.Write("[NATURECOLOR]\r\nIsNatureColor=1\r\n");
  Store(L"IsEnable", DwordValue(7));
  EXPECT_EQ(settings.GetNatureColorStatus(0), 7);
  EXPECT_EQ(Stored(), (RegistryValues{{L"IsEnable", DwordValue(7)}}));
  EXPECT_LOG();
}

TEST_F(NaturalColorRegTest, Status_SeededFromTheIniFileAsZeroOrOne) {
  struct Row {
    const char* text;
    int status;
  };
  for (const Row& row : {Row{"0", 0}, Row{"1", 1}, Row{"5", 1}, Row{"-1", 1}, Row{"abc", 0}}) {
    SCOPED_TRACE(row.text);
    const testsupport::ScopedKey clean(HKEY_LOCAL_MACHINE, key);
    ini.Write(std::string("[NATURECOLOR]\r\nIsNatureColor=") + row.text + "\r\n");
    EXPECT_EQ(settings.GetNatureColorStatus(9), row.status);
    EXPECT_EQ(Stored(),
              (RegistryValues{{L"IsEnable", DwordValue(static_cast<uint32_t>(row.status))}}));
  }
}

// Of the settings, this one logs what is missing on its first read.
TEST_F(NaturalColorRegTest, Status_SeededFromTheDefaultAsZeroOrOne) {
  EXPECT_EQ(settings.GetNatureColorStatus(-5), 1);
  EXPECT_EQ(Stored(), (RegistryValues{{L"IsEnable", DwordValue(1)}}));
  EXPECT_LOG(NoKeyLine(L"Open key:"), IniLine(L"NATURECOLOR", L"IsNatureColor"));
  Delete(L"IsEnable");
  notebook.ForgetRecords();
  EXPECT_EQ(settings.GetNatureColorStatus(0), 0);
  EXPECT_EQ(Stored(), (RegistryValues{{L"IsEnable", DwordValue(0)}}));
  EXPECT_LOG(NoValueLine(L"IsEnable"), IniLine(L"NATURECOLOR", L"IsNatureColor"));
}

TEST_F(NaturalColorRegTest, Status_IsReturnedThoughItCannotBeStored) {
  notebook.FailCall("RegCreateKeyExW", 0, ERROR_ACCESS_DENIED);
  EXPECT_EQ(settings.GetNatureColorStatus(2), 1);
  EXPECT_LOG(NoKeyLine(L"Open key:"), IniLine(L"NATURECOLOR", L"IsNatureColor"), NotCreatedLine());
}

TEST_F(NaturalColorRegTest, SetStatus_StoresAnyNumber) {
  EXPECT_EQ(settings.SetNatureColorStatus(-2), ResultOk);
  EXPECT_EQ(Stored(), (RegistryValues{{L"IsEnable", DwordValue(0xFFFFFFFE)}}));
  EXPECT_EQ(settings.GetNatureColorStatus(0), -2);
}

TEST_F(NaturalColorRegTest, SensorColor) {
  double value = 1;
  settings.GetSensorColor(&value, 6500);
  EXPECT_EQ(value, 6500);
  EXPECT_EQ(Stored(), RegistryValues()) << "nothing is seeded";
  EXPECT_LOG(NoKeyLine(L"Reg key:"));
  EXPECT_EQ(settings.SetSensorColor(4321.25), ResultOk);
  EXPECT_EQ(Stored(), (RegistryValues{{L"SensorColor", TextValue(L"4321.250000")}}));
  settings.GetSensorColor(&value, 6500);
  EXPECT_EQ(value, 4321.25);
  Store(L"SensorColor", TextValue(L"abc"));
  notebook.ForgetRecords();
  settings.GetSensorColor(&value, 5000);
  EXPECT_EQ(value, 5000);
  EXPECT_LOG(NoNumberLine());
}

TEST_F(NaturalColorRegTest, Rgb) {
  EXPECT_EQ(settings.SetNaturalColorRGB(1, 0.9, 0.8), ResultOk);
  EXPECT_EQ(Stored(), (RegistryValues{{L"r", TextValue(L"1.000000")},
                                      {L"g", TextValue(L"0.900000")},
                                      {L"b", TextValue(L"0.800000")}}));
  double r = 0;
  double g = 0;
  double b = 0;
  EXPECT_EQ(settings.GetNaturalColorRGB(&r, &g, &b), ResultOk);
  EXPECT_EQ(r, 1);
  EXPECT_EQ(g, 0.9);
  EXPECT_EQ(b, 0.8);
  notebook.FailCall("RegSetValueExW", 3, ERROR_ACCESS_DENIED);
  EXPECT_EQ(settings.SetNaturalColorRGB(0.1, 0.2, 0.3), ResultFailed);
  EXPECT_EQ(Stored(), (RegistryValues{{L"r", TextValue(L"0.100000")},
                                      {L"g", TextValue(L"0.200000")},
                                      {L"b", TextValue(L"0.800000")}}));
}

}  // namespace
}  // namespace velora
