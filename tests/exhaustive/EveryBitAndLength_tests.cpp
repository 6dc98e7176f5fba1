// Each single bit flipped, and each cut, of all that is proved before it is used. What became of it
// is counted by the log line that tells it, and the counts are calculated here, not observed.
#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "icc/ICCProfileOperation.h"
#include "lut/ColorField3DLut.h"
#include "panel/BiosControlHeader.h"
#include "panel/LcdEdidParse.h"
#include "support/GuardedBuffer.h"
#include "support/LogCapture.h"
#include "support/UserProfile.h"
#include "virtualnotebook/Factory.h"

namespace velora {
namespace {

using virtualnotebook::Bytes;

const virtualnotebook::PanelDescription kPanel{};

Bytes Block(uint8_t lutType) {
  return virtualnotebook::MakeLutBlock(virtualnotebook::HeaderOf(kPanel, lutType),
                                       virtualnotebook::MakeLut(kPanel, lutType));
}

// How often each outcome came about.
using Outcomes = std::map<std::string, size_t>;

// Of a try whose refusals are logged: the last line without its function, or the two other words.
constexpr char kTaken[] = "taken";
constexpr char kSilent[] = "refused in silence";

std::string OutcomeOf(const std::function<bool()>& isTaken) {
  const testsupport::LogCapture log;
  const bool taken = isTaken();
  const auto lines = log.Lines();
  if (taken || lines.empty()) {
    return taken && lines.empty() ? kTaken : taken ? "taken, with a line" : kSilent;
  }
  const std::string text(lines.back().text.begin(), lines.back().text.end());
  // Ahead of the first number: one outcome for all lengths.
  return text.substr(0, std::min(text.find('('), text.find_first_of("0123456789:,")));
}

using Try = std::function<std::string(const Bytes&)>;

Outcomes OfEveryBit(Bytes bytes, const Try& outcomeOf) {
  Outcomes outcomes;
  for (uint8_t& byte : bytes) {
    for (int bit = 0; bit < 8; ++bit) {
      byte ^= static_cast<uint8_t>(1 << bit);
      ++outcomes[outcomeOf(bytes)];
      byte ^= static_cast<uint8_t>(1 << bit);
    }
  }
  return outcomes;
}

// All lengths below the whole one.
Outcomes OfEveryCut(const Bytes& bytes, const Try& outcomeOf) {
  Outcomes outcomes;
  for (size_t length = 0; length < bytes.size(); ++length) {
    ++outcomes[outcomeOf(Bytes(bytes.begin(), bytes.begin() + static_cast<ptrdiff_t>(length)))];
  }
  return outcomes;
}

// --- Blocks ---

std::string ProofOf(const Bytes& block) {
  ColorField3DLut engine;
  const LutBuffer buffer(reinterpret_cast<const char*>(block.data()), block.size());
  return OutcomeOf([&] { return engine.IsLutDataValid3D(buffer); });
}

constexpr char kWrongHash[] = "SHA";  // "SHA256 Value is not match, ..."
constexpr char kHeaderCut[] = "";     // "3D Lut data error!"
constexpr char kDataCut[] = "Lut Data Len error!";

// The hash covers header and values, so a flipped bit anywhere is a wrong hash, in the hash as
// well; except that a bit of the data length that was 0 makes the block end beyond its own bytes,
// which is found out first.
void ExpectEveryBitOfABlock(const Bytes& block, uint32_t dataLength) {
  ASSERT_EQ(ProofOf(block), kTaken);
  const size_t zeroBits = 32 - static_cast<size_t>(std::popcount(dataLength));
  EXPECT_EQ(OfEveryBit(block, ProofOf),
            (Outcomes{{kDataCut, zeroBits}, {kWrongHash, 8 * block.size() - zeroBits}}));
}

TEST(EveryBit, Of3DBlock) {
  const Bytes block = Block(virtualnotebook::kP3Lut);
  ASSERT_EQ(block.size(), 24725u);
  ExpectEveryBitOfABlock(block, 24565);
}

TEST(EveryBit, OfGammaBlock) {
  const Bytes block = Block(virtualnotebook::kGammaLut);
  ASSERT_EQ(block.size(), 5280u);
  ExpectEveryBitOfABlock(block, 5120);
}

// In its table a gamma block has the stride of a 3D block, of which the rest is filling: there, a
// longer data length is beyond the end from 24565 on only, and no bit of the filling counts.
TEST(EveryBit, OfGammaBlockInItsStride) {
  constexpr size_t kStride = 24725;
  Bytes block = Block(virtualnotebook::kGammaLut);
  const size_t filling = kStride - block.size();
  block.resize(kStride, 0xFF);
  ASSERT_EQ(ProofOf(block), kTaken);
  // 5120 is 0x1400: adding one of the bits 15 to 31 goes beyond.
  constexpr size_t kBitsBeyond = 17;
  EXPECT_EQ(OfEveryBit(block, ProofOf), (Outcomes{{kDataCut, kBitsBeyond},
                                                  {kWrongHash, 5280 * 8 - kBitsBeyond},
                                                  {kTaken, filling * 8}}));
}

void ExpectEveryCutOfABlock(const Bytes& block) {
  EXPECT_EQ(OfEveryCut(block, ProofOf),
            (Outcomes{{kHeaderCut, 128}, {kDataCut, block.size() - 128}}));
}

TEST(EveryLength, Of3DBlock) { ExpectEveryCutOfABlock(Block(virtualnotebook::kP3Lut)); }
TEST(EveryLength, OfGammaBlock) { ExpectEveryCutOfABlock(Block(virtualnotebook::kGammaLut)); }

// --- The control header ---

std::string ParseControlHeader(const Bytes& bytes) {
  const testsupport::GuardedBuffer buffer(bytes);
  BiosControlHeader header;
  return OutcomeOf([&] { return header.Parse(buffer.data(), buffer.size()); });
}

Bytes MakeControlHeader() {
  const Bytes table = virtualnotebook::MakeGoldenFile({Block(virtualnotebook::kP3Lut)});
  return {table.begin(), table.begin() + BiosControlHeader::kSize};
}

// A flipped bit changes the sum by a power of two below 256, or the sum that is stored.
TEST(EveryBit, OfControlHeader) {
  ASSERT_EQ(ParseControlHeader(MakeControlHeader()), kTaken);
  EXPECT_EQ(OfEveryBit(MakeControlHeader(), ParseControlHeader), (Outcomes{{kSilent, 128}}));
}

TEST(EveryLength, OfControlHeader) {
  EXPECT_EQ(OfEveryCut(MakeControlHeader(), ParseControlHeader), (Outcomes{{"bufLen", 16}}));
}

// --- The EDID ---

// All that the library takes from it.
std::string Contents(const LcdEdidParse& edid) {
  std::string text = edid.GetVendor() + " " + edid.GetSerialNumber() + " " +
                     std::to_string(edid.GetWeek()) + " " + std::to_string(edid.GetYear());
  for (const double number :
       {edid.GetGamma(), edid.GetRedX(), edid.GetRedY(), edid.GetGreenX(), edid.GetGreenY(),
        edid.GetBlueX(), edid.GetBlueY(), edid.GetWhiteX(), edid.GetWhiteY()}) {
    text += " " + std::to_string(number);
  }
  return text;
}

std::string ParseEdid(const Bytes& bytes) {
  static const std::string good = [] {
    LcdEdidParse parse;
    parse.ParseEdidData(virtualnotebook::MakeEdid(kPanel).data(), 128);
    return Contents(parse);
  }();
  const testsupport::GuardedBuffer buffer(bytes);
  const testsupport::LogCapture log;
  LcdEdidParse parse;
  if (!parse.ParseEdidData(buffer.data(), static_cast<uint32_t>(buffer.size()))) {
    return "refused";
  }
  return Contents(parse) == good ? "the same panel" : "another panel";
}

// Nothing looks at the EDID's checksum or at its other fields. What is read makes another panel,
// which has no LUT of the firmware's.
TEST(EveryBit, OfEdid) {
  // "NVX" is 14, 22, 24 in five bits each: 14 + 16, 22 + 8 and 24 + 4 are no letters.
  constexpr size_t kNoLetter = 3;
  constexpr size_t kVendor = 15 - kNoLetter;  // the 16th bit is not read
  constexpr size_t kSerialWeekYearGamma = 32 + 8 + 8 + 8;
  constexpr size_t kChromaticities = 80;
  constexpr size_t kOther = kVendor + kSerialWeekYearGamma + kChromaticities;
  EXPECT_EQ(OfEveryBit(virtualnotebook::MakeEdid(kPanel), ParseEdid),
            (Outcomes{{"refused", kNoLetter},
                      {"another panel", kOther},
                      {"the same panel", 1024 - kOther - kNoLetter}}));
}

TEST(EveryLength, OfEdid) {
  EXPECT_EQ(OfEveryCut(virtualnotebook::MakeEdid(kPanel), ParseEdid),
            (Outcomes{{"refused", 35}, {"the same panel", 128 - 35}}));
}

// --- A user's profile ---

std::string CheckProfile(const Bytes& file) {
  std::array<uint8_t, ICCProfileOperation::kProfileHead> head = {};
  std::copy(file.begin(), file.end(), head.begin());
  return OutcomeOf([&] { return ICCProfileOperation().CheckProfile(head, "Mine"); });
}

constexpr char kAbnormal[] = "Icc file is abnormoal!";
constexpr char kOtherName[] = "File does not match id";
constexpr char kOtherHash[] = "The sha";

TEST(EveryBit, OfUserProfile) {
  const Bytes file = testsupport::MakeUserProfile("Mine");
  ASSERT_EQ(file.size(), 552u + 32u);
  ASSERT_EQ(CheckProfile(file), kTaken);
  // 552 is 00 00 02 28: beyond 1000 are all bits of the first two bytes, those of 4 to 128 in the
  // third and, as sizes of 128 and more in a byte fill all above, the highest of the last.
  constexpr size_t kSizeBits = 8 + 8 + 6 + 1;
  // The text's size is 00 00 00 24: one bit of the last byte makes it 32, so that two letters are
  // left of the name, which match; all others make it too long, and so does the size's sign. Each
  // bit of the four letters is another name.
  constexpr size_t kNameBits = 8 + 8 + 8 + 7 + 4 * 2 * 8;
  EXPECT_EQ(OfEveryBit(file, CheckProfile),
            (Outcomes{{kAbnormal, kSizeBits},
                      {kOtherName, kNameBits},
                      {kOtherHash, 8 * file.size() - kSizeBits - kNameBits}}));
}

// A file that is cut reads as one that ends in zeros: without its letters it has another name,
// without its hash or a part of it another hash. A hash whose last bytes are zero would miss
// nothing.
TEST(EveryLength, OfUserProfile) {
  const Bytes file = testsupport::MakeUserProfile("Mine");
  ASSERT_NE(file.back(), 0);
  constexpr size_t kNameEnd = 292 + 8;
  EXPECT_EQ(OfEveryCut(file, CheckProfile),
            (Outcomes{{kOtherName, kNameEnd}, {kOtherHash, file.size() - kNameEnd}}));
}

}  // namespace
}  // namespace velora
