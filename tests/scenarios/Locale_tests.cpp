// A host whose C locale has a decimal comma: what is stored and logged stays as it is.
#include <gtest/gtest.h>

#include <clocale>
#include <cstdio>
#include <string>

#include "support/NotebookTest.h"
#include "support/Registry.h"
#include "virtualnotebook/HostedLibrary.h"

namespace scenarios {
namespace {

using testsupport::ReadKey;
using testsupport::TextValue;

class DecimalComma {
 public:
  DecimalComma() : isSet_(std::setlocale(LC_ALL, "German") != nullptr) {}
  ~DecimalComma() { std::setlocale(LC_ALL, "C"); }
  DecimalComma(const DecimalComma&) = delete;
  DecimalComma& operator=(const DecimalComma&) = delete;

  bool IsSet() const { return isSet_; }

 private:
  bool isSet_;
};

std::string Printed(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%f", value);
  return text;
}

TEST(Locale, ADecimalCommaOfTheHostHasNoInfluence) {
  const testsupport::ScopedKey key(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Norvex\\Velora");
  virtualnotebook::HostedLibrary library;
  const auto& notebook = library.notebook;
  const DecimalComma locale;
  ASSERT_TRUE(locale.IsSet());
  ASSERT_EQ(Printed(0.5), "0,500000") << "the host itself writes commas";

  WhitePointFineTueInfo tuning{.id = {}, .mode = SrgbMode, .r = 0.5, .g = 1234567.25, .b = -0.125};
  EXPECT_EQ(library.SetWhitePointTueValue(&tuning), ResultOk);
  EXPECT_LOGGED(1, L"whitePoint:R:0.5, G:1.23457e+06, B:-0.125(SetWhitePointTueValue)");
  auto stored = ReadKey(HKEY_LOCAL_MACHINE,
                        L"SOFTWARE\\Norvex\\Velora\\ColorField\\WhitePointFineTue\\PresetMode\\"
                        L"SrgbMode");
  EXPECT_EQ(stored[L"R"], TextValue(L"0.500000"));
  EXPECT_EQ(stored[L"G"], TextValue(L"1234567.250000"));
  EXPECT_EQ(stored[L"B"], TextValue(L"-0.125000"));

  WhitePointFineTueInfo read{.id = {}, .mode = SrgbMode, .r = 7.5, .g = 8, .b = 9};
  EXPECT_EQ(library.GetWhitePointTueValue(&read), ResultOk);
  EXPECT_LOGGED(1, L"whitePoint:R:7.5, G:8, B:9(GetWhitePointTueValue)");
  EXPECT_EQ(read.r, 0.5);
  EXPECT_EQ(read.g, 1234567.25);
  EXPECT_EQ(read.b, -0.125);

  EXPECT_EQ(library.SetRhineValue(0.82), ResultOk);
  EXPECT_LOGGED(1, L"rhineValue:0.82(SetRhineValue)");
  EXPECT_EQ(library.GetRhineValue(0.25), 0.82);
  EXPECT_LOGGED(1, L"defaultRhineValue:0.25(GetRhineValue)");
  EXPECT_EQ(library.SetEyeProtectRGB(0.5, 0.25, 0.125), ResultOk);
  EXPECT_LOGGED(1, L"r:0.5, g:0.25, b:0.125(SetEyeProtectRGB)");
  stored = ReadKey(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Norvex\\Velora\\EyeProtect");
  EXPECT_EQ(stored[L"RhineValue"], TextValue(L"0.820000"));
  EXPECT_EQ(stored[L"r"], TextValue(L"0.500000"));
  EXPECT_EQ(stored[L"g"], TextValue(L"0.250000"));
  EXPECT_EQ(stored[L"b"], TextValue(L"0.125000"));

  EXPECT_EQ(library.SetWhitePointStatus(1234567), ResultOk);
  EXPECT_LOGGED(1, L"whitePointEnable:1234567(SetWhitePointStatus)");

  EXPECT_EQ(Printed(0.5), "0,500000") << "the library leaves the host's locale alone";
}

}  // namespace
}  // namespace scenarios
