#include "virtualnotebook/Factory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <numeric>

namespace virtualnotebook {
namespace {

using testing::ElementsAre;

unsigned SumOf(const Bytes& bytes) { return std::accumulate(bytes.begin(), bytes.end(), 0u); }

Bytes Slice(const Bytes& bytes, size_t offset, size_t size) {
  const auto from = bytes.begin() + static_cast<ptrdiff_t>(offset);
  return Bytes(from, from + static_cast<ptrdiff_t>(size));
}

std::string WriteTemporary(const std::string& content) {
  const std::string path = testing::TempDir() + "factory_edid.tmp";
  std::ofstream(path, std::ios::binary) << content;
  return path;
}

TEST(Factory, MakeEdid_IsACompleteBaseBlock) {
  const Bytes edid = MakeEdid({});
  ASSERT_EQ(128u, edid.size());
  EXPECT_THAT(Slice(edid, 0, 8), ElementsAre(0, 255, 255, 255, 255, 255, 255, 0));
  EXPECT_EQ(0u, SumOf(edid) % 256);
  EXPECT_EQ(1, edid[18]);
  EXPECT_EQ(4, edid[19]);
  EXPECT_EQ(0, edid[126]);  // no extension
}

TEST(Factory, MakeEdid_PutsEachFieldInItsPlace) {
  PanelDescription panel;
  panel.vendor = "ABC";
  panel.product = 0x1234;
  panel.serial = {1, 2, 3, 4};
  panel.week = 53;
  panel.year = 2024;
  panel.gamma = 2.2;
  const Bytes edid = MakeEdid(panel);
  EXPECT_THAT(Slice(edid, 8, 10), ElementsAre(0x04, 0x43, 0x34, 0x12, 1, 2, 3, 4, 53, 34));
  EXPECT_EQ(120, edid[23]);
}

// By hand: 0.680 * 1024 = 696.32 -> 696 = 174 * 4 + 0; 0.320 -> 328 = 82 * 4 + 0;
// 0.265 -> 271 = 67 * 4 + 3; 0.690 -> 707 = 176 * 4 + 3; 0.150 -> 154 = 38 * 4 + 2;
// 0.060 -> 61 = 15 * 4 + 1; 0.3127 -> 320 = 80 * 4 + 0; 0.3290 -> 337 = 84 * 4 + 1.
TEST(Factory, MakeEdid_PacksTheChromaticities) {
  EXPECT_THAT(Slice(MakeEdid({}), 25, 10),
              ElementsAre(0b00001111, 0b10010001, 174, 82, 67, 176, 38, 15, 80, 84));
}

TEST(Factory, MakeEdid_RefusesWhatAnEdidCannotSay) {
  const auto with = [](auto change) {
    PanelDescription panel;
    change(panel);
    return panel;
  };
  EXPECT_THROW(MakeEdid(with([](auto& p) { p.vendor = "AB"; })), std::invalid_argument);
  EXPECT_THROW(MakeEdid(with([](auto& p) { p.vendor = "ABc"; })), std::invalid_argument);
  EXPECT_THROW(MakeEdid(with([](auto& p) { p.year = 1989; })), std::invalid_argument);
  EXPECT_NO_THROW(MakeEdid(with([](auto& p) { p.year = 2245; })));
  EXPECT_THROW(MakeEdid(with([](auto& p) { p.year = 2246; })), std::invalid_argument);
  EXPECT_THROW(MakeEdid(with([](auto& p) { p.gamma = 0.99; })), std::invalid_argument);
  EXPECT_NO_THROW(MakeEdid(with([](auto& p) { p.gamma = 3.54; })));
  EXPECT_THROW(MakeEdid(with([](auto& p) { p.gamma = 3.55; })), std::invalid_argument);
  EXPECT_THROW(MakeEdid(with([](auto& p) { p.red.x = 1.0; })), std::invalid_argument);
}

TEST(Factory, DescribePanel_UndoesMakeEdid) {
  PanelDescription panel;
  panel.vendor = "QZA";
  panel.product = 0xBEEF;
  panel.serial = {0xFF, 0, 0x80, 0x7F};
  panel.week = 255;
  panel.year = 1990;
  panel.gamma = 3.54;
  panel.red = {1023 / 1024.0, 1 / 1024.0};
  panel.green = {2 / 1024.0, 1022 / 1024.0};
  panel.blue = {3 / 1024.0, 5 / 1024.0};
  panel.white = {341 / 1024.0, 342 / 1024.0};
  EXPECT_EQ(panel, DescribePanel(MakeEdid(panel)));
}

TEST(Factory, DescribePanel_AnUnknownGammaIsTheUsualOne) {
  Bytes edid = MakeEdid({});
  edid[23] = 255;
  EXPECT_EQ(2.2, DescribePanel(edid).gamma);
}

TEST(Factory, DescribePanel_RefusesOtherBytes) {
  Bytes edid = MakeEdid({});
  edid.pop_back();
  EXPECT_THROW(DescribePanel(edid), std::invalid_argument);
  edid = MakeEdid({});
  edid[7] = 1;
  EXPECT_THROW(DescribePanel(edid), std::invalid_argument);
  edid = MakeEdid({});
  edid[8] = edid[9] = 0;
  EXPECT_THROW(DescribePanel(edid), std::invalid_argument);
}

TEST(Factory, ReadEdidFile_TakesTextAndBytes) {
  const Bytes edid = MakeEdid({});
  std::string text;
  for (size_t i = 0; i < edid.size(); ++i) {
    char digits[4];
    std::snprintf(digits, sizeof digits, i % 2 != 0 ? "%02X" : "%02x", edid[i]);
    text += digits;
    text += i % 16 == 15 ? "\r\n" : " ";
  }
  EXPECT_EQ(edid, ReadEdidFile(WriteTemporary(text)));
  EXPECT_EQ(edid, ReadEdidFile(WriteTemporary({edid.begin(), edid.end()})));
}

TEST(Factory, ReadEdidFile_RefusesOtherFiles) {
  EXPECT_THROW(ReadEdidFile(WriteTemporary("00 FF x")), std::invalid_argument);
  EXPECT_THROW(ReadEdidFile(WriteTemporary("00 F")), std::invalid_argument);
  EXPECT_THROW(ReadEdidFile(WriteTemporary("")), std::runtime_error);
  EXPECT_THROW(ReadEdidFile(testing::TempDir() + "no such file"), std::runtime_error);
}

TEST(Factory, NominalPanel_IsTheModelWithoutTheUnit) {
  PanelDescription panel;
  panel.red = {0.6796875, 0.3203125};
  const PanelDescription nominal = NominalPanel(panel);
  EXPECT_EQ("NVX", nominal.vendor);
  EXPECT_EQ(panel.year, nominal.year);
  EXPECT_EQ(0, nominal.week);
  EXPECT_THAT(nominal.serial, ElementsAre(0, 0, 0, 0));
  EXPECT_EQ((Xy{0.68, 0.32}), nominal.red);
  EXPECT_EQ((Xy{0.31, 0.33}), nominal.white);
}

// EDIDs of two real panels; the figures are those that edid-decode gives.
struct RealPanel {
  const char* file;
  const char* vendor;
  int week, year;
  Xy red, green, blue, white;
};
const RealPanel kRealPanels[] = {
    {"oled-wide-gamut-2880x1800.hex",
     "SDC",
     35,
     2020,
     {0.6796, 0.3203},
     {0.2373, 0.7226},
     {0.1396, 0.0498},
     {0.3125, 0.3291}},
    {"lcd-narrow-gamut-1366x768.hex",
     "BOE",
     1,
     2013,
     {0.5722, 0.3593},
     {0.3388, 0.5849},
     {0.1582, 0.1035},
     {0.3125, 0.3281}},
};

TEST(Factory, DescribePanel_ReadsRealEdids) {
  const std::string folder = VELORA_EDID_DIR;
  if (folder.empty()) {
    GTEST_SKIP() << "no folder of real EDIDs";
  }
  const auto expect_near = [](Xy expected, Xy actual) {
    EXPECT_NEAR(expected.x, actual.x, 1e-4);
    EXPECT_NEAR(expected.y, actual.y, 1e-4);
  };
  for (const RealPanel& real : kRealPanels) {
    SCOPED_TRACE(real.file);
    const Bytes edid = ReadEdidFile(folder + "/" + real.file);
    EXPECT_EQ(0u, edid.size() % 128);
    const PanelDescription panel = DescribePanel(edid);
    EXPECT_EQ(real.vendor, panel.vendor);
    EXPECT_EQ(real.week, panel.week);
    EXPECT_EQ(real.year, panel.year);
    EXPECT_EQ(2.2, panel.gamma);
    expect_near(real.red, panel.red);
    expect_near(real.green, panel.green);
    expect_near(real.blue, panel.blue);
    expect_near(real.white, panel.white);
    const MachineData machine = MakeMachine(edid);
    EXPECT_EQ(edid, machine.edid);
    EXPECT_EQ(panel, machine.panel);
  }
}

}  // namespace
}  // namespace virtualnotebook
