#include "panel/LcdEdidParse.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <fstream>
#include <string>
#include <vector>

#include "support/GuardedBuffer.h"
#include "support/LogCapture.h"

namespace velora {
namespace {

using testsupport::GuardedBuffer;
using testsupport::Line;
using testsupport::LogCapture;
using Lines = std::vector<Line>;
using Edid = std::array<uint8_t, 35>;
using Wrgb = std::array<uint8_t, 10>;

constexpr int kInfo = 1;
constexpr int kEdidError = 3;

// "ABC", serial number 0A 0B CD EF, week 8 of 2024, gamma 2.2.
Edid MakeTestEdid() {
  Edid edid = {0x00, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x00};
  edid[8] = 0x04, edid[9] = 0x43;
  edid[12] = 0x0A, edid[13] = 0x0B, edid[14] = 0xCD, edid[15] = 0xEF;
  edid[16] = 8, edid[17] = 34;
  edid[23] = 120;
  // Low bits 3 1 2 0 and 0 2 1 3; red 640 + 3, 320 + 1; green 256 + 2, 700; blue 160, 60 + 2;
  // white 320 + 1, 336 + 3.
  edid[25] = 0xD8, edid[26] = 0x27;
  edid[27] = 160, edid[28] = 80, edid[29] = 64, edid[30] = 175;
  edid[31] = 40, edid[32] = 15, edid[33] = 80, edid[34] = 84;
  return edid;
}

struct Fields {
  std::string vendor;
  std::string serialNumber;
  int32_t week = -1;
  int32_t year = -1;
  double gamma = 0;
  std::array<double, 8> coordinates{};

  friend bool operator==(const Fields&, const Fields&) = default;
};

Fields FieldsOf(const LcdEdidParse& edid) {
  return {edid.GetVendor(),
          edid.GetSerialNumber(),
          edid.GetWeek(),
          edid.GetYear(),
          edid.GetGamma(),
          {edid.GetRedX(), edid.GetRedY(), edid.GetGreenX(), edid.GetGreenY(), edid.GetBlueX(),
           edid.GetBlueY(), edid.GetWhiteX(), edid.GetWhiteY()}};
}

const Fields kTestFields = {"ABC#",
                            "0A0BCDEF",
                            8,
                            2024,
                            2.2,
                            {643 / 1024.0, 321 / 1024.0, 258 / 1024.0, 700 / 1024.0, 160 / 1024.0,
                             62 / 1024.0, 321 / 1024.0, 339 / 1024.0}};

TEST(LcdEdidParse, Constructor_IsReset) { EXPECT_EQ(FieldsOf(LcdEdidParse()), Fields{}); }

TEST(LcdEdidParse, ParseEdidData_ReadsAllFieldsOf35Bytes) {
  const LogCapture log;
  const GuardedBuffer buffer(MakeTestEdid());
  LcdEdidParse edid;
  ASSERT_TRUE(edid.ParseEdidData(buffer.data(), 35));
  EXPECT_EQ(FieldsOf(edid), kTestFields);
  EXPECT_EQ(log.Lines(), (Lines{{kInfo,
                                 L"LcdEdidColorGamut:0.62793, 0.313477, 0.251953, 0.683594, "
                                 L"0.15625, 0.0605469, 0.313477, 0.331055"
                                 L"(LcdEdidParse::ParseEdidWrgb)"}}));
}

TEST(LcdEdidParse, ParseEdidData_BytesBehindDoNotCount) {
  const LogCapture log;
  const Edid front = MakeTestEdid();
  std::array<uint8_t, 36> bytes{};
  std::copy(front.begin(), front.end(), bytes.begin());
  bytes[35] = 0xFF;
  LcdEdidParse edid;
  EXPECT_TRUE(edid.ParseEdidData(bytes.data(), 36));
  EXPECT_EQ(FieldsOf(edid), kTestFields);
}

TEST(LcdEdidParse, ParseEdidData_34BytesLeaveTheFields) {
  const LogCapture log;
  const Edid bytes = MakeTestEdid();
  LcdEdidParse edid;
  ASSERT_TRUE(edid.ParseEdidData(bytes.data(), 35));
  const size_t lines = log.Lines().size();
  for (uint32_t length = 0; length < 35; ++length) {
    const GuardedBuffer buffer(Edid{}, length);
    EXPECT_FALSE(edid.ParseEdidData(buffer.data(), length)) << length;
    EXPECT_EQ(FieldsOf(edid), kTestFields);
  }
  EXPECT_EQ(log.Lines().size(), lines);
}

TEST(LcdEdidParse, ParseEdidData_ABadVendorLeavesAllFieldsReset) {
  const LogCapture log;
  Edid bytes = MakeTestEdid();
  LcdEdidParse edid;
  ASSERT_TRUE(edid.ParseEdidData(bytes.data(), 35));
  bytes[8] = bytes[9] = 0;
  EXPECT_FALSE(edid.ParseEdidData(bytes.data(), 35));
  EXPECT_EQ(FieldsOf(edid), Fields{});
}

TEST(LcdEdidParse, ParseEdidData_SerialNumberInTheOrderOfTheBytes) {
  const LogCapture log;
  Edid bytes = MakeTestEdid();
  bytes[12] = 1, bytes[13] = 2, bytes[14] = 3, bytes[15] = 4;
  LcdEdidParse edid;
  ASSERT_TRUE(edid.ParseEdidData(bytes.data(), 35));
  EXPECT_EQ(edid.GetSerialNumber(), "01020304");
}

TEST(LcdEdidParse, ParseEdidData_SerialNumberOfEveryByte) {
  const LogCapture log;
  constexpr char kDigits[] = "0123456789ABCDEF";
  Edid bytes = MakeTestEdid();
  for (size_t value = 0; value < 256; ++value) {
    bytes[12] = bytes[13] = bytes[14] = bytes[15] = static_cast<uint8_t>(value);
    LcdEdidParse edid;
    ASSERT_TRUE(edid.ParseEdidData(bytes.data(), 35));
    const std::string byte = {kDigits[value / 16], kDigits[value % 16]};
    EXPECT_EQ(edid.GetSerialNumber(), byte + byte + byte + byte);
  }
}

TEST(LcdEdidParse, ParseEdidData_WeekOfEveryByte) {
  const LogCapture log;
  Edid bytes = MakeTestEdid();
  for (int value = 0; value < 256; ++value) {
    bytes[16] = static_cast<uint8_t>(value);
    LcdEdidParse edid;
    ASSERT_TRUE(edid.ParseEdidData(bytes.data(), 35));
    EXPECT_EQ(edid.GetWeek(), value <= 53 ? value : 0);
  }
}

TEST(LcdEdidParse, ParseEdidData_YearOfEveryByte) {
  const LogCapture log;
  Edid bytes = MakeTestEdid();
  for (int value = 0; value < 256; ++value) {
    bytes[17] = static_cast<uint8_t>(value);
    LcdEdidParse edid;
    ASSERT_TRUE(edid.ParseEdidData(bytes.data(), 35));
    EXPECT_EQ(edid.GetYear(), 1990 + value);
  }
}

TEST(LcdEdidParse, ParseEdidData_GammaOfEveryByte) {
  const LogCapture log;
  Edid bytes = MakeTestEdid();
  for (int value = 0; value < 256; ++value) {
    bytes[23] = static_cast<uint8_t>(value);
    LcdEdidParse edid;
    ASSERT_TRUE(edid.ParseEdidData(bytes.data(), 35));
    // The double nearest to the two-digit decimal, by way of its text.
    const std::string digits = std::to_string(100 + value);
    const double gamma = std::stod(digits.substr(0, 1) + "." + digits.substr(1));
    EXPECT_EQ(edid.GetGamma(), gamma) << value;
  }
}

TEST(LcdEdidParse, ParseEdidData_GammaOfAByteThatTheStandardReserves) {
  const LogCapture log;
  Edid bytes = MakeTestEdid();
  bytes[23] = 255;
  LcdEdidParse edid;
  ASSERT_TRUE(edid.ParseEdidData(bytes.data(), 35));
  EXPECT_EQ(edid.GetGamma(), 3.55);
}

TEST(LcdEdidParse, ParseEdidVendor_Bit15DoesNotCount) {
  const LogCapture log;
  const uint8_t bytes[] = {0x84, 0x43};
  LcdEdidParse edid;
  EXPECT_TRUE(edid.ParseEdidVendor(bytes, 2));
  EXPECT_EQ(edid.GetVendor(), "ABC#");
  EXPECT_EQ(log.Lines(), Lines{});
}

TEST(LcdEdidParse, ParseEdidVendor_EveryGroupInEveryPlace) {
  for (unsigned place = 0; place < 3; ++place) {  // from the last letter
    for (unsigned group = 0; group < 32; ++group) {
      const LogCapture log;
      constexpr unsigned kXyz = 24 << 10 | 25 << 5 | 26;
      const unsigned value = (kXyz & ~(31u << 5 * place)) | group << 5 * place;
      const GuardedBuffer bytes(
          std::array{static_cast<uint8_t>(value / 256), static_cast<uint8_t>(value % 256)});
      LcdEdidParse edid;
      const bool good = group >= 1 && group <= 26;
      EXPECT_EQ(edid.ParseEdidVendor(bytes.data(), 2), good) << place << ", " << group;
      if (good) {
        std::string vendor = "XYZ#";
        vendor[2 - place] = "?ABCDEFGHIJKLMNOPQRSTUVWXYZ"[group];
        EXPECT_EQ(edid.GetVendor(), vendor);
        EXPECT_EQ(log.Lines(), Lines{});
        continue;
      }
      EXPECT_EQ(edid.GetVendor(), "");
      std::wstring text = L"Vendor data out of boundary,data:";
      if (group != 0) {  // as a character, 0 ends the line
        text += static_cast<wchar_t>(group);
        text += L"(LcdEdidParse::ParseEdidVendor)";
      }
      EXPECT_EQ(log.Lines(), (Lines{{kEdidError, text}}));
    }
  }
}

TEST(LcdEdidParse, ParseEdidVendor_TheLastLetterIsTestedFirst) {
  const LogCapture log;
  const uint8_t bytes[] = {27 << 2 | 28 >> 3, (28 & 7) << 5 | 29};
  LcdEdidParse edid;
  EXPECT_FALSE(edid.ParseEdidVendor(bytes, 2));
  EXPECT_EQ(log.Lines(),
            (Lines{{kEdidError,
                    L"Vendor data out of boundary,data:\x1D(LcdEdidParse::ParseEdidVendor)"}}));
}

TEST(LcdEdidParse, ParseEdidVendor_OtherLengths) {
  const LogCapture log;
  const uint8_t bytes[] = {0x04, 0x43, 0x00};
  LcdEdidParse edid;
  EXPECT_FALSE(edid.ParseEdidVendor(bytes, 1));
  EXPECT_FALSE(edid.ParseEdidVendor(bytes, 3));
  EXPECT_EQ(edid.GetVendor(), "");
  EXPECT_EQ(
      log.Lines(),
      (Lines{{kEdidError, L"Vendor data length error,dataLen:1(LcdEdidParse::ParseEdidVendor)"},
             {kEdidError, L"Vendor data length error,dataLen:3(LcdEdidParse::ParseEdidVendor)"}}));
}

TEST(LcdEdidParse, ParseEdidWrgb_OtherLengths) {
  const LogCapture log;
  const uint8_t bytes[11] = {0xFF, 0xFF, 0xFF};
  LcdEdidParse edid;
  EXPECT_FALSE(edid.ParseEdidWrgb(bytes, 9));
  EXPECT_FALSE(edid.ParseEdidWrgb(bytes, 11));
  EXPECT_EQ(FieldsOf(edid), Fields{});
  EXPECT_EQ(
      log.Lines(),
      (Lines{{kEdidError, L"wrgb data length error,dataLen:9(LcdEdidParse::ParseEdidWrgb)"},
             {kEdidError, L"wrgb data length error,dataLen:11(LcdEdidParse::ParseEdidWrgb)"}}));
}

TEST(LcdEdidParse, ParseEdidWrgb_AllBitsSet) {
  const LogCapture log;
  Wrgb bytes;
  bytes.fill(0xFF);
  LcdEdidParse edid;
  ASSERT_TRUE(edid.ParseEdidWrgb(bytes.data(), 10));
  for (const double coordinate : FieldsOf(edid).coordinates) {
    EXPECT_EQ(coordinate, 0.9990234375);
  }
  EXPECT_EQ(log.Lines(), (Lines{{kInfo,
                                 L"LcdEdidColorGamut:0.999023, 0.999023, 0.999023, 0.999023, "
                                 L"0.999023, 0.999023, 0.999023, 0.999023"
                                 L"(LcdEdidParse::ParseEdidWrgb)"}}));
}

TEST(LcdEdidParse, ParseEdidWrgb_NoBitSet) {
  const LogCapture log;
  LcdEdidParse edid;
  ASSERT_TRUE(edid.ParseEdidWrgb(Wrgb{}.data(), 10));
  EXPECT_EQ(log.Lines(), (Lines{{kInfo,
                                 L"LcdEdidColorGamut:0, 0, 0, 0, 0, 0, 0, 0"
                                 L"(LcdEdidParse::ParseEdidWrgb)"}}));
}

TEST(LcdEdidParse, ParseEdidWrgb_WhiteOfD65) {
  const LogCapture log;
  Wrgb bytes{};
  bytes[8] = 320 / 4;
  LcdEdidParse edid;
  ASSERT_TRUE(edid.ParseEdidWrgb(bytes.data(), 10));
  EXPECT_EQ(edid.GetWhiteX(), 0.3125);
}

// Where the bits of each coordinate stand, highest first, as (byte, bit) of the ten bytes: written
// out as the standard's table has them.
constexpr struct {
  size_t high;          // byte of the high eight bits
  size_t low;           // byte of the low two bits
  unsigned lowBits[2];  // their bits
} kPlaces[8] = {
    {2, 0, {7, 6}},  // red x
    {3, 0, {5, 4}},  // red y
    {4, 0, {3, 2}},  // green x
    {5, 0, {1, 0}},  // green y
    {6, 1, {7, 6}},  // blue x
    {7, 1, {5, 4}},  // blue y
    {8, 1, {3, 2}},  // white x
    {9, 1, {1, 0}},  // white y
};

// Each coordinate takes all 1024 values, while the others' bits are all set or all clear.
TEST(LcdEdidParse, ParseEdidWrgb_EveryValueOfEveryCoordinate) {
  const LogCapture log;
  for (size_t which = 0; which < 8; ++which) {
    for (const uint8_t others : {uint8_t{0x00}, uint8_t{0xFF}}) {
      for (unsigned value = 0; value < 1024; ++value) {
        Wrgb bytes;
        bytes.fill(others);
        const auto setBit = [&bytes](size_t byte, unsigned bit, unsigned to) {
          bytes[byte] = static_cast<uint8_t>((bytes[byte] & ~(1u << bit)) | to << bit);
        };
        double expected = 0;
        for (unsigned bit = 0; bit < 10; ++bit) {
          const unsigned to = value >> bit & 1;
          expected += to * std::pow(2.0, static_cast<int>(bit) - 10);
          if (bit >= 2) {
            setBit(kPlaces[which].high, bit - 2, to);
          } else {
            setBit(kPlaces[which].low, kPlaces[which].lowBits[1 - bit], to);
          }
        }
        LcdEdidParse edid;
        ASSERT_TRUE(edid.ParseEdidWrgb(bytes.data(), 10));
        const auto coordinates = FieldsOf(edid).coordinates;
        for (size_t i = 0; i < 8; ++i) {
          const double other = others == 0 ? 0 : 1023 / 1024.0;
          ASSERT_EQ(coordinates[i], i == which ? expected : other) << which << ", " << value;
        }
      }
    }
  }
}

// --- EDIDs of real panels, where the build found their folder ---

std::vector<uint8_t> ReadHexFile(const std::string& path) {
  std::ifstream file(path);
  std::vector<uint8_t> bytes;
  for (unsigned byte = 0; file >> std::hex >> byte;) {
    bytes.push_back(static_cast<uint8_t>(byte));
  }
  return bytes;
}

struct RealPanel {
  const char* file;
  const char* vendor;
  int week;
  int year;
  int coordinates[8];  // what an independent decoder says, in ten thousandths, cut
};

class LcdEdidParseOfRealPanel : public testing::TestWithParam<RealPanel> {};

TEST_P(LcdEdidParseOfRealPanel, AgreesWithAnotherDecoder) {
  const RealPanel& panel = GetParam();
  const std::vector<uint8_t> bytes = ReadHexFile(std::string(VELORA_EDID_DIR) + "/" + panel.file);
  if (bytes.empty()) {
    GTEST_SKIP() << "there is no " << panel.file << " in VELORA_EDID_DIR";
  }
  const LogCapture log;
  LcdEdidParse edid;
  ASSERT_TRUE(edid.ParseEdidData(bytes.data(), static_cast<uint32_t>(bytes.size())));
  EXPECT_EQ(edid.GetVendor(), panel.vendor);
  EXPECT_EQ(edid.GetSerialNumber(), "00000000");
  EXPECT_EQ(edid.GetWeek(), panel.week);
  EXPECT_EQ(edid.GetYear(), panel.year);
  EXPECT_EQ(edid.GetGamma(), 2.2);
  for (size_t i = 0; i < 8; ++i) {
    EXPECT_EQ(std::floor(FieldsOf(edid).coordinates[i] * 10000), panel.coordinates[i]) << i;
  }
}

INSTANTIATE_TEST_SUITE_P(Notebooks, LcdEdidParseOfRealPanel,
                         testing::Values(RealPanel{"oled-wide-gamut-2880x1800.hex",
                                                   "SDC#",
                                                   35,
                                                   2020,
                                                   {6796, 3203, 2373, 7226, 1396, 498, 3125, 3291}},
                                         RealPanel{
                                             "lcd-narrow-gamut-1366x768.hex",
                                             "BOE#",
                                             1,
                                             2013,
                                             {5722, 3593, 3388, 5849, 1582, 1035, 3125, 3281}}),
                         [](const auto& panel) { return std::string(panel.param.vendor, 3); });

}  // namespace
}  // namespace velora
