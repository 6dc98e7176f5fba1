// The proof of a user's profile, over bytes that lcms2 never made: see
// ICCProfileOperation_tests.cpp for its own.
#include "icc/ICCProfileOperation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>

#include "support/GuardedBuffer.h"
#include "support/LogCapture.h"
#include "support/UserProfile.h"

namespace velora {
namespace {

using testsupport::Line;
using virtualnotebook::Bytes;

constexpr size_t kHead = ICCProfileOperation::kProfileHead;
constexpr size_t kText = 292;

const Line kIdsDiffer = {3, L"IDs are different(ICCProfileOperation::IsfileMatchId)"};
Line CheckLine(const std::wstring& text) {
  return {3, text + L"(ICCProfileOperation::ICCProfileSha256Check)"};
}
using Lines = std::vector<Line>;
const Lines kGood = {};
const Lines kAbnormal = {CheckLine(L"Icc file is abnormoal!")};
const Lines kOtherName = {kIdsDiffer, CheckLine(L"File does not match id")};
const Lines kOtherHash = {CheckLine(L"The sha256 values after and before are different")};

// A profile of this size and text, with its hash; all else is zero.
Bytes Profile(uint32_t size, const Bytes& text) {
  Bytes file(kHead + 1000);
  for (size_t i = 0; i < 4; ++i) {
    file[i] = static_cast<uint8_t>(size >> (24 - 8 * i));
  }
  file[143] = static_cast<uint8_t>(28 + text.size());
  std::copy(text.begin(), text.end(), file.begin() + kText);
  const Bytes hash = virtualnotebook::Sha256({file.data(), size});
  std::copy(hash.begin(), hash.end(), file.begin() + size);
  return file;
}

// What the check writes; it gives true when that is nothing. The head's last byte is the last of a
// page.
Lines Check(const Bytes& file, const std::string& name) {
  const testsupport::LogCapture log;
  Bytes head(kHead);
  std::copy_n(file.begin(), std::min(file.size(), kHead), head.begin());
  const testsupport::GuardedBuffer guarded(head);
  const std::span<const uint8_t, kHead> bytes(guarded.data(), kHead);
  const bool isGood = ICCProfileOperation().CheckProfile(bytes, name);
  EXPECT_EQ(isGood, log.Lines().empty());
  return log.Lines();
}

TEST(ICCProfileOperation_Check, Good) {
  for (const size_t length : {1u, 2u, 3u, 45u, 46u}) {
    const std::string name(length, 'n');
    EXPECT_EQ(Check(testsupport::MakeUserProfile(name), name), kGood) << length;
  }
}

TEST(ICCProfileOperation_Check, OnlyWhatIsStoredIsCompared) {
  const Bytes file = testsupport::MakeUserProfile("Mine");
  EXPECT_EQ(Check(file, "Mine and more"), kGood);
  for (const char* name : {"mine", "Min", "", "Nine", "Mind"}) {
    EXPECT_EQ(Check(file, name), kOtherName) << name;
  }
}

TEST(ICCProfileOperation_Check, NoNameIsEverybodys) {
  EXPECT_EQ(Check(Profile(600, {}), ""), kGood);
  EXPECT_EQ(Check(Profile(600, {}), "Mine"), kGood);
}

TEST(ICCProfileOperation_Check, BytesOfEachUnitAreInOrder) {
  EXPECT_EQ(Check(Profile(600, {0, 'a'}), "a"), kGood);
  EXPECT_EQ(Check(Profile(600, {'a', 0}), "a"), kOtherName);
  EXPECT_EQ(Check(Profile(600, {1, 'a'}), "a"), kOtherName);
}

// Each char is a signed number of 16 bits.
TEST(ICCProfileOperation_Check, NameBeyondAscii) {
  EXPECT_EQ(Check(Profile(600, {0, 0xE9}), "\xE9"), kOtherName) << "as UTF-16 has it";
  EXPECT_EQ(Check(Profile(600, {0xFF, 0xE9}), "\xE9"), kGood);
}

// The second byte of a cut pair counts as 0: no letter has that.
TEST(ICCProfileOperation_Check, OddLength) {
  EXPECT_EQ(Check(Profile(600, {0, 'a', 0}), "ab"), kOtherName);
  EXPECT_EQ(Check(Profile(600, {0, 'a', 0}), std::string("a\0", 2)), kGood);
}

// The longest text has 99 bytes: one more makes a tag of 128, whose size counts as negative.
TEST(ICCProfileOperation_Check, LongestText) {
  Bytes text;
  for (int i = 0; i < 50; ++i) {
    text.push_back(0);
    text.push_back('n');
  }
  const std::string name(50, 'n');
  EXPECT_EQ(Check(Profile(600, text), name), kOtherName);
  text.resize(98);
  EXPECT_EQ(Check(Profile(600, text), name), kGood);
  text.push_back(0);
  EXPECT_EQ(Check(Profile(600, text), std::string(49, 'n') + std::string(1, '\0')), kGood);
}

TEST(ICCProfileOperation_Check, TextSizeBelowItsHeading) {
  Bytes file = Profile(600, {});
  file[143] = 27;
  EXPECT_EQ(Check(file, "Mine"), kOtherName);
}

TEST(ICCProfileOperation_Check, TextSizeUsesAllItsBytes) {
  for (const size_t byte : {140u, 141u, 142u}) {
    Bytes file = Profile(600, {0, 'n'});
    file[byte] = 1;
    EXPECT_EQ(Check(file, std::string(1000, 'n')), kOtherName) << byte;
  }
}

// A size of 1000 is 03 E8, whose last byte counts as negative, so 895 is the largest that passes.
TEST(ICCProfileOperation_Check, Sizes) {
  EXPECT_EQ(Check(Profile(0x37F, {0, 'n'}), "n"), kGood);
  for (const uint32_t size : {0x380u, 1000u, 1001u, 0x401u}) {
    EXPECT_EQ(Check(Profile(size, {0, 'n'}), "n"), kAbnormal) << size;
  }
  Bytes file = Profile(600, {0, 'n'});
  for (const size_t byte : {0u, 1u}) {
    Bytes huge = file;
    huge[byte] = 1;
    EXPECT_EQ(Check(huge, "n"), kAbnormal) << byte;
  }
}

TEST(ICCProfileOperation_Check, HashOfAllBytesAheadOfIt) {
  for (const size_t byte : {200u, 599u, 600u, 631u}) {
    Bytes file = Profile(600, {0, 'n'});
    file[byte] ^= 1;
    EXPECT_EQ(Check(file, "n"), kOtherHash) << byte;
  }
  Bytes file = Profile(600, {0, 'n'});
  file[632] ^= 1;
  EXPECT_EQ(Check(file, "n"), kGood) << "behind the hash";
}

// The size is looked at first, then the name.
TEST(ICCProfileOperation_Check, Order) {
  Bytes file = Profile(600, {0, 'n'});
  file[640 - 40] ^= 1;
  EXPECT_EQ(Check(file, "m"), kOtherName);
  file[0] = 1;
  EXPECT_EQ(Check(file, "m"), kAbnormal);
}

}  // namespace
}  // namespace velora
