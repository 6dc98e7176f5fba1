#include "settings/PrinterReg.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "settings/SettingsTest.h"

namespace velora {
namespace {

class PrinterRegTest : public SettingsTest<PrinterReg> {
 protected:
  PrinterRegTest() : SettingsTest(L"Printer") {}
};

TEST_F(PrinterRegTest, Ccts_AreTruncatedTowardsZero) {
  struct Row {
    float cct;
    uint32_t stored;
  };
  for (const Row& row : {Row{6500, 6500}, Row{6500.99F, 6500}, Row{0.5F, 0}, Row{-0.5F, 0},
                         Row{-1.75F, 0xFFFFFFFF}}) {
    EXPECT_EQ(settings.SetPrinterCcts(row.cct), ResultOk);
    EXPECT_EQ(Stored(), (RegistryValues{{L"SensorCCT", DwordValue(row.stored)}}));
  }
}

// No such number of kelvin: what the processor's conversion gives.
TEST_F(PrinterRegTest, Ccts_BeyondAnInteger) {
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  for (const float cct : {std::nanf(""), kInfinity, -kInfinity, 2147483648.0F, -2147483904.0F}) {
    SCOPED_TRACE(cct);
    EXPECT_EQ(settings.SetPrinterCcts(5000), ResultOk);
    EXPECT_EQ(settings.SetPrinterCcts(cct), ResultOk);
    EXPECT_EQ(Stored(), (RegistryValues{{L"SensorCCT", DwordValue(0x80000000)}}));
  }
  EXPECT_EQ(settings.SetPrinterCcts(2147483520.0F), ResultOk);  // the largest that fits
  EXPECT_EQ(Stored(), (RegistryValues{{L"SensorCCT", DwordValue(0x7FFFFF80)}}));
}

TEST_F(PrinterRegTest, Ccts_Lines) {
  EXPECT_EQ(settings.SetPrinterCcts(6500.5F), ResultOk);
  notebook.FailCall("RegSetValueExW", 1, ERROR_ACCESS_DENIED);
  EXPECT_EQ(settings.SetPrinterCcts(5000), ResultFailed);
  EXPECT_LOG({1, L"Save SetPrinterCcts = 6500.5 OK(PrinterReg::SetPrinterCcts)"},
             {3, L"Write key:" + key +
                     L", itemName:SensorCCT, value:5000 failed!"
                     L"(RegisterHelper::RegWriteValue)"},
             {3, L"Save Printer SensorCCT fail(PrinterReg::SetPrinterCcts)"});
  EXPECT_EQ(Stored(), (RegistryValues{{L"SensorCCT", DwordValue(6500)}}));
}

TEST_F(PrinterRegTest, Rgb) {
  EXPECT_EQ(settings.SetPrinterRGB(1, 0.5, 0.25), ResultOk);
  EXPECT_EQ(Stored(), (RegistryValues{{L"r", TextValue(L"1.000000")},
                                      {L"g", TextValue(L"0.500000")},
                                      {L"b", TextValue(L"0.250000")}}));
  notebook.FailCall("RegSetValueExW", 2, ERROR_ACCESS_DENIED);
  EXPECT_EQ(settings.SetPrinterRGB(0.1, 0.2, 0.3), ResultFailed);
  EXPECT_EQ(Stored(), (RegistryValues{{L"r", TextValue(L"0.100000")},
                                      {L"g", TextValue(L"0.500000")},
                                      {L"b", TextValue(L"0.250000")}}));
}

// Its values are the machine's, whatever is multi-user.
TEST_F(PrinterRegTest, AsksForNoUser) {
  notebook.administrator = true;
  PrinterReg printer;
  EXPECT_EQ(printer.SetPrinterCcts(1), ResultOk);
  EXPECT_EQ(notebook.CountCalls("CoreKit::IsAdminPrivilege"), 0u);
  EXPECT_EQ(&PrinterReg::GetInstance(), &PrinterReg::GetInstance());
}

}  // namespace
}  // namespace velora
