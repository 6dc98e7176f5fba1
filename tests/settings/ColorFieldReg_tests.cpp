#include "settings/ColorFieldReg.h"

#include <gtest/gtest.h>

#include "settings/SettingsTest.h"

namespace velora {
namespace {

class ColorFieldRegTest : public SettingsTest<ColorFieldReg> {
 protected:
  ColorFieldRegTest() : SettingsTest(L"ColorField") {}
};

TEST_F(ColorFieldRegTest, GettersGiveTheDefaultAndStoreNothing) {
  EXPECT_EQ(settings.GetColorFieldCurrentMode(-1), -1);
  EXPECT_EQ(settings.GetColorFieldResetMode(2), 2);
  EXPECT_EQ(settings.GetColorFieldSetType(4), 4);
  EXPECT_EQ(Stored(), RegistryValues());
  EXPECT_EQ(notebook.CountCalls("GetPrivateProfileStringW"), 0u);
  EXPECT_LOG();
}

TEST_F(ColorFieldRegTest, EachHasItsValue) {
  EXPECT_EQ(settings.SetColorFieldCurrentMode(10), ResultOk);
  EXPECT_EQ(settings.SetColorFieldResetMode(-1), ResultOk);
  EXPECT_EQ(settings.SetColorFieldSetType(3), ResultOk);
  EXPECT_EQ(Stored(), (RegistryValues{{L"CurrentMode", DwordValue(10)},
                                      {L"ResetMode", DwordValue(0xFFFFFFFF)},
                                      {L"SetType", DwordValue(3)}}));
  EXPECT_EQ(settings.GetColorFieldCurrentMode(0), 10);
  EXPECT_EQ(settings.GetColorFieldResetMode(0), -1);
  EXPECT_EQ(settings.GetColorFieldSetType(0), 3);
  EXPECT_LOG();
}

TEST_F(ColorFieldRegTest, FailedWrites) {
  notebook.FailCall("RegCreateKeyExW", 0, ERROR_ACCESS_DENIED);
  EXPECT_EQ(settings.SetColorFieldCurrentMode(1), ResultFailed);
  EXPECT_EQ(settings.SetColorFieldResetMode(1), ResultFailed);
  EXPECT_EQ(settings.SetColorFieldSetType(1), ResultFailed);
  EXPECT_LOG(NotCreatedLine(), NotCreatedLine(), NotCreatedLine());
}

}  // namespace
}  // namespace velora
