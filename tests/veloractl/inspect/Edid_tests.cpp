#include "veloractl/inspect/Edid.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <iterator>

#include "veloractl/inspect/InspectTest.h"

namespace veloractl {
namespace {

using namespace inspecttest;
using namespace virtualnotebook;

Inspection InspectPanel(const PanelDescription& panel) { return Inspect(MakeEdid(panel), {}); }

Bytes WithChecksum(Bytes edid) {
  uint8_t sum = 0;
  for (size_t i = 0; i < 127; ++i) {
    sum = static_cast<uint8_t>(sum + edid[i]);
  }
  edid[127] = static_cast<uint8_t>(0 - sum);
  return edid;
}

TEST(InspectEdid, AGoodOne) {
  const Inspection good = InspectPanel({});
  EXPECT_EQ(good.report.at("verdict"), "good");
  const Json& fields = good.report.at("fields");
  EXPECT_EQ(ValueOf(fields, "vendor"), "NVX#");
  EXPECT_EQ(ValueOf(fields, "product"), "1234");
  EXPECT_EQ(ValueOf(fields, "serial number"), "01020304");
  EXPECT_EQ(ValueOf(fields, "gamma"), 2.2);
  EXPECT_EQ(ValueOf(fields, "red"), "0.6797, 0.3203");  // 696 and 328 of 1024
}

TEST(InspectEdid, SerialZero) {
  PanelDescription panel;
  panel.serial = {0, 0, 0, 0};
  EXPECT_EQ(ResultOf(InspectPanel(panel), "serial number"), "warning");
  panel.serial = {0, 0, 0, 1};
  EXPECT_EQ(ResultOf(InspectPanel(panel), "serial number"), "holds");
}

TEST(InspectEdid, WeeksThatAreNone) {
  PanelDescription panel;
  const auto week = [&](uint8_t value) {
    panel.week = value;
    return InspectPanel(panel);
  };
  EXPECT_EQ(FoundBy(week(255), "week"), "255: the year is the model's");
  EXPECT_EQ(ResultOf(week(255), "week"), "warning");
  EXPECT_EQ(FoundBy(week(54), "week"), "54 is no week");
  EXPECT_EQ(ResultOf(week(53), "week"), "holds");
  EXPECT_EQ(ResultOf(week(0), "week"), "holds");
}

TEST(InspectEdid, GammaByte255) {
  Bytes edid = MakeEdid({});
  edid[23] = 255;
  const Inspection found = Inspect(WithChecksum(edid), {});
  EXPECT_EQ(ResultOf(found, "gamma"), "warning");
  EXPECT_EQ(FoundBy(found, "gamma"), "byte 255: an extension block tells it");
  edid[23] = 170;  // 2.7
  EXPECT_EQ(FoundBy(Inspect(WithChecksum(edid), {}), "gamma"), "2.7");
  EXPECT_EQ(ResultOf(Inspect(WithChecksum(edid), {}), "gamma"), "warning");
}

TEST(InspectEdid, ABadChecksum) {
  Bytes edid = MakeEdid({});
  edid[127] ^= 1;
  const Inspection found = Inspect(edid, {});
  EXPECT_EQ(ResultOf(found, "checksum"), "warning");
  EXPECT_EQ(found.report.at("verdict"), "good, with warnings") << "the library does not test it";
}

TEST(InspectEdid, SwappedPrimaries) {
  PanelDescription panel;
  std::swap(panel.red, panel.green);
  const Inspection found = InspectPanel(panel);
  EXPECT_EQ(ResultOf(found, "primaries"), "warning");
  EXPECT_NE(FoundBy(found, "primaries").find("swapped"), std::string::npos);
}

TEST(InspectEdid, ImplausiblePrimaries) {
  PanelDescription panel;
  panel.red = {0.34, 0.33};
  panel.green = {0.31, 0.35};
  panel.blue = {0.30, 0.30};
  EXPECT_NE(FoundBy(InspectPanel(panel), "primaries").find("small"), std::string::npos);
  panel = {};
  panel.white = {0.6, 0.2};
  EXPECT_EQ(ResultOf(InspectPanel(panel), "white point"), "warning");
  panel = {};
  panel.blue = {0.15, 0};
  EXPECT_NE(FoundBy(InspectPanel(panel), "primaries").find("zero"), std::string::npos);
  EXPECT_EQ(InspectPanel(panel).report.at("colours").at("matrix"), "the primaries give none");
  panel = {};
  panel.red = {0.7, 0.4};
  EXPECT_NE(FoundBy(InspectPanel(panel), "primaries").find("more than 1"), std::string::npos);
}

TEST(InspectEdid, AVendorThatIsNone) {
  Bytes edid = MakeEdid({});
  edid[8] = edid[9] = 0;
  const Inspection bad = Inspect(WithChecksum(edid), {});
  EXPECT_EQ(bad.report.at("verdict"), "damaged");
  EXPECT_EQ(ResultOf(bad, "vendor"), "fails");
}

TEST(InspectEdid, Lengths) {
  const Bytes edid = MakeEdid({});
  const auto cut = [&](size_t size) {
    return Inspect(ByteSpan(edid).first(size), {}, FileKind::Edid);
  };
  EXPECT_EQ(ResultOf(cut(34), "vendor"), "fails");
  EXPECT_EQ(FoundBy(cut(34), "vendor"), "34 of 35 bytes");
  EXPECT_EQ(ResultOf(cut(35), "vendor"), "holds");
  EXPECT_EQ(ResultOf(cut(127), "length"), "warning");
  Bytes large = edid;
  large.resize(2559);
  EXPECT_EQ(ResultOf(Inspect(large, {}), "vendor"), "holds");
  large.resize(2560);
  EXPECT_EQ(ResultOf(Inspect(large, {}), "vendor"), "fails");
}

TEST(MatrixOf, SrgbsOwn) {
  // IEC 61966-2-1, Annex F, to four decimals.
  const auto matrix = MatrixOf(*velora::FindTargetGamut(1));
  ASSERT_TRUE(matrix);
  constexpr double kWanted[9] = {0.4124, 0.3576, 0.1805, 0.2126, 0.7152,
                                 0.0722, 0.0193, 0.1192, 0.9505};
  for (size_t i = 0; i < 9; ++i) {
    EXPECT_NEAR((*matrix)[i], kWanted[i], 2e-4) << i;
  }
}

TEST(ClippingOf, TheOwnGamutLosesNothing) {
  velora::ChromaticityGamut panel = *velora::FindTargetGamut(2);
  const auto clipping = ClippingOf(*velora::FindTargetGamut(2), panel);
  ASSERT_TRUE(clipping);
  EXPECT_EQ(clipping->entries, 0u);
  EXPECT_EQ(clipping->mostAbove, 0);
  EXPECT_EQ(clipping->mostBelow, 0);
}

TEST(ClippingOf, ASmallerGamutFitsIntoALargerOne) {
  // With one white: sRGB within BT.2020.
  EXPECT_EQ(ClippingOf(*velora::FindTargetGamut(1), *velora::FindTargetGamut(4))->entries, 0u);
  EXPECT_GT(ClippingOf(*velora::FindTargetGamut(4), *velora::FindTargetGamut(1))->entries, 2000u);
}

// BT.2020 on an sRGB panel: full green is (-0.5876, 1.1329, -0.1006) of the panel's, full red
// (1.6605, -0.1246, -0.0182) (ITU-R BT.2087-0, the inverse of its matrix).
TEST(ClippingOf, AsMuchAsThePrimariesLieOutside) {
  const auto clipping = ClippingOf(*velora::FindTargetGamut(4), *velora::FindTargetGamut(1));
  EXPECT_NEAR(clipping->mostAbove, 0.6605, 0.001);
  EXPECT_NEAR(clipping->mostBelow, 0.5876 + 0.0729, 0.001) << "cyan: green and blue together";
}

TEST(ClippingOf, NoPanel) { EXPECT_FALSE(ClippingOf(*velora::FindTargetGamut(1), {})); }

TEST(BytesOfHexText, WholeBytesOnly) {
  const auto parse = [](const std::string& text) {
    return BytesOfHexText(ByteSpan(reinterpret_cast<const uint8_t*>(text.data()), text.size()));
  };
  EXPECT_EQ(parse("00 Ff\r\n7a"), (Bytes{0, 255, 0x7A}));
  EXPECT_EQ(parse("00FF"), (Bytes{0, 255}));
  EXPECT_FALSE(parse("0"));
  EXPECT_FALSE(parse("0 0"));
  EXPECT_FALSE(parse("00 fg"));
  EXPECT_FALSE(parse(""));
  EXPECT_FALSE(parse(" \n"));
}

// What edid-decode says of them is in the folder's README.
TEST(InspectEdid, RealPanels) {
  const std::string folder = VELORA_EDID_DIR;
  if (folder.empty()) {
    GTEST_SKIP() << "no EDIDs of real panels";
  }
  const auto read = [&](const char* name) {
    std::ifstream file(folder + "/" + name, std::ios::binary);
    const Bytes text{std::istreambuf_iterator<char>(file), {}};
    return Inspect(text, {});
  };
  const Inspection lcd = read("lcd-narrow-gamut-1366x768.hex");
  EXPECT_EQ(lcd.report.at("kind"), "EDID");
  EXPECT_EQ(ValueOf(lcd.report.at("fields"), "vendor"), "BOE#");
  EXPECT_EQ(ValueOf(lcd.report.at("fields"), "week"), 1);
  EXPECT_EQ(ValueOf(lcd.report.at("fields"), "year"), 2013);
  EXPECT_EQ(ValueOf(lcd.report.at("fields"), "blue"), "0.1582, 0.1035");
  EXPECT_EQ(ResultOf(lcd, "serial number"), "warning");
  EXPECT_EQ(ResultOf(lcd, "primaries"), "holds");
  const Inspection oled = read("oled-wide-gamut-2880x1800.hex");
  EXPECT_EQ(ValueOf(oled.report.at("fields"), "vendor"), "SDC#");
  EXPECT_EQ(ValueOf(oled.report.at("fields"), "extensions"), 1);
  EXPECT_EQ(ResultOf(oled, "checksum of extension 1"), "holds");
  // The wide panel shows all of sRGB but for rounding; the narrow one loses most.
  const auto lost = [](const Inspection& panel) {
    return panel.report.at("colours").at("user LUT clipping")[0].at("per cent").get<double>();
  };
  EXPECT_LT(lost(oled), 1);
  EXPECT_GT(lost(lcd), 50);
}

}  // namespace
}  // namespace veloractl
