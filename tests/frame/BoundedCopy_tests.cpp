#include "frame/BoundedCopy.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>

namespace velora {
namespace {

using testing::Each;
using testing::ElementsAre;

constexpr uint8_t kGuard = 0xbd;
constexpr size_t kNegative = static_cast<size_t>(-1);

// An array of n elements with guards behind it.
template <typename T, size_t n>
struct Guarded {
  Guarded() { std::memset(all, kGuard, sizeof(all)); }
  bool AreGuardsWhole() const {
    std::array<uint8_t, sizeof(T) * n> expected;
    expected.fill(kGuard);
    return std::memcmp(all + n, expected.data(), expected.size()) == 0;
  }
  T all[2 * n];
};

// The smallest size that can only be a negative number.
TEST(BoundedCopy, LeastRefusedSize) {
  constexpr size_t kTooLarge = std::numeric_limits<size_t>::max() / 2 + 1;
  const uint8_t source[] = {1};
  uint8_t byte = 7;
  char text[] = "a";
  wchar_t wide[] = L"a";
  EXPECT_NE(memcpy_s(&byte, kTooLarge, source, 1), 0);
  EXPECT_NE(memset_s(&byte, kTooLarge, 1, 1), 0);
  EXPECT_NE(strcpy_s(text, kTooLarge, "b"), 0);
  EXPECT_NE(wcsncpy_s(wide, kTooLarge, L"b", 1), 0);
  EXPECT_EQ(byte, 7);
  EXPECT_STREQ(text, "a");
  EXPECT_STREQ(wide, L"a");
}

// --- memcpy_s ---

TEST(BoundedCopy, memcpy_s_CopiesWhatFits) {
  const uint8_t source[] = {1, 2, 3, 4};
  for (size_t count = 0; count <= 4; ++count) {
    Guarded<uint8_t, 4> buffer;
    EXPECT_EQ(memcpy_s(buffer.all, 4, source, count), 0);
    for (size_t i = 0; i < 4; ++i) {
      EXPECT_EQ(buffer.all[i], i < count ? source[i] : kGuard);
    }
    EXPECT_TRUE(buffer.AreGuardsWhole());
  }
}

TEST(BoundedCopy, memcpy_s_OneByteTooManyClearsTheDestination) {
  const uint8_t source[] = {1, 2, 3, 4, 5};
  Guarded<uint8_t, 4> buffer;
  EXPECT_NE(memcpy_s(buffer.all, 4, source, 5), 0);
  EXPECT_THAT(std::vector<uint8_t>(buffer.all, buffer.all + 4), Each(0));
  EXPECT_TRUE(buffer.AreGuardsWhole());
}

TEST(BoundedCopy, memcpy_s_HundredBytesFitAHundredAndOneDoNot) {
  const std::string path(101, 'p');
  char field[100] = {};
  EXPECT_EQ(memcpy_s(field, sizeof field, path.data(), 100), 0);
  EXPECT_EQ(std::string(field, 100), path.substr(0, 100));
  EXPECT_NE(memcpy_s(field, sizeof field, path.data(), 101), 0);
  EXPECT_EQ(std::string(field, 100), std::string(100, '\0'));
}

TEST(BoundedCopy, memcpy_s_NullSourceClearsTheDestination) {
  Guarded<uint8_t, 4> buffer;
  EXPECT_NE(memcpy_s(buffer.all, 4, nullptr, 1), 0);
  EXPECT_THAT(std::vector<uint8_t>(buffer.all, buffer.all + 4), Each(0));
  EXPECT_TRUE(buffer.AreGuardsWhole());
}

TEST(BoundedCopy, memcpy_s_NullDestination) {
  const uint8_t source[] = {1};
  EXPECT_NE(memcpy_s(nullptr, 1, source, 1), 0);
}

TEST(BoundedCopy, memcpy_s_NegativeSizes) {
  const uint8_t source[] = {1, 2, 3, 4};
  Guarded<uint8_t, 4> buffer;
  EXPECT_NE(memcpy_s(buffer.all, kNegative, source, 1), 0);
  EXPECT_EQ(buffer.all[0], kGuard);
  EXPECT_NE(memcpy_s(buffer.all, 4, source, kNegative), 0);
  EXPECT_EQ(buffer.all[0], 0);
  EXPECT_TRUE(buffer.AreGuardsWhole());
}

TEST(BoundedCopy, memcpy_s_OverlapIsRefused) {
  uint8_t bytes[] = {1, 2, 3, 4, 5, 6};
  EXPECT_NE(memcpy_s(bytes, 3, bytes + 2, 3), 0);
  EXPECT_THAT(bytes, ElementsAre(0, 0, 0, 4, 5, 6));
}

TEST(BoundedCopy, memcpy_s_NeighboursDoNotOverlap) {
  uint8_t bytes[] = {1, 2, 3, 4, 5, 6};
  EXPECT_EQ(memcpy_s(bytes, 3, bytes + 3, 3), 0);
  EXPECT_THAT(bytes, ElementsAre(4, 5, 6, 4, 5, 6));
  EXPECT_EQ(memcpy_s(bytes + 3, 3, bytes, 3), 0);
  EXPECT_THAT(bytes, ElementsAre(4, 5, 6, 4, 5, 6));
}

// --- memset_s ---

TEST(BoundedCopy, memset_s_FillsWhatFits) {
  Guarded<uint8_t, 4> buffer;
  EXPECT_EQ(memset_s(buffer.all, 4, 7, 3), 0);
  EXPECT_THAT(std::vector<uint8_t>(buffer.all, buffer.all + 4), ElementsAre(7, 7, 7, kGuard));
  EXPECT_EQ(memset_s(buffer.all, 4, 8, 4), 0);
  EXPECT_THAT(std::vector<uint8_t>(buffer.all, buffer.all + 4), Each(8));
  EXPECT_TRUE(buffer.AreGuardsWhole());
}

TEST(BoundedCopy, memset_s_TooManyFillsTheDestinationOnly) {
  Guarded<uint8_t, 4> buffer;
  EXPECT_NE(memset_s(buffer.all, 4, 7, 5), 0);
  EXPECT_THAT(std::vector<uint8_t>(buffer.all, buffer.all + 4), Each(7));
  EXPECT_TRUE(buffer.AreGuardsWhole());
}

TEST(BoundedCopy, memset_s_NullAndNegative) {
  Guarded<uint8_t, 4> buffer;
  EXPECT_NE(memset_s(nullptr, 4, 0, 4), 0);
  EXPECT_NE(memset_s(buffer.all, kNegative, 0, 4), 0);
  EXPECT_EQ(buffer.all[0], kGuard);
}

// --- strcpy_s ---

TEST(BoundedCopy, strcpy_s_TheTerminatorMustFit) {
  Guarded<char, 5> buffer;
  EXPECT_EQ(strcpy_s(buffer.all, 5, "BOE#"), 0);
  EXPECT_STREQ(buffer.all, "BOE#");
  EXPECT_TRUE(buffer.AreGuardsWhole());
  EXPECT_NE(strcpy_s(buffer.all, 4, "BOE#"), 0);
  EXPECT_STREQ(buffer.all, "");
  EXPECT_EQ(strcpy_s(buffer.all, 1, ""), 0);
}

TEST(BoundedCopy, strcpy_s_NothingIsWrittenBehindTheTerminator) {
  Guarded<char, 4> buffer;
  EXPECT_EQ(strcpy_s(buffer.all, 4, "a"), 0);
  EXPECT_EQ(static_cast<uint8_t>(buffer.all[2]), kGuard);
}

TEST(BoundedCopy, strcpy_s_NullSourceClearsTheText) {
  char text[] = "abc";
  EXPECT_NE(strcpy_s(text, sizeof text, nullptr), 0);
  EXPECT_STREQ(text, "");
}

TEST(BoundedCopy, strcpy_s_NoRoomOrNegativeSize) {
  Guarded<char, 4> buffer;
  EXPECT_NE(strcpy_s(nullptr, 4, "a"), 0);
  EXPECT_NE(strcpy_s(buffer.all, 0, ""), 0);
  EXPECT_NE(strcpy_s(buffer.all, kNegative, "a"), 0);
  EXPECT_EQ(static_cast<uint8_t>(buffer.all[0]), kGuard);
}

// --- wcsncpy_s ---

TEST(BoundedCopy, wcsncpy_s_CutsAtTheCount) {
  Guarded<wchar_t, 8> buffer;
  EXPECT_EQ(wcsncpy_s(buffer.all, 8, L"BOE05EF9", 7), 0);
  EXPECT_STREQ(buffer.all, L"BOE05EF");
  EXPECT_TRUE(buffer.AreGuardsWhole());
}

TEST(BoundedCopy, wcsncpy_s_EndsAtTheSourcesTerminator) {
  Guarded<wchar_t, 8> buffer;
  EXPECT_EQ(wcsncpy_s(buffer.all, 8, L"BOE", 7), 0);
  EXPECT_STREQ(buffer.all, L"BOE");
  EXPECT_EQ(wcsncpy_s(buffer.all, 8, L"BOE", kNegative), 0);
  EXPECT_STREQ(buffer.all, L"BOE");
  EXPECT_EQ(wcsncpy_s(buffer.all, 8, L"BOE", 0), 0);
  EXPECT_STREQ(buffer.all, L"");
}

TEST(BoundedCopy, wcsncpy_s_TheTerminatorMustFit) {
  Guarded<wchar_t, 4> buffer;
  EXPECT_EQ(wcsncpy_s(buffer.all, 4, L"abc", 4), 0);
  EXPECT_STREQ(buffer.all, L"abc");
  EXPECT_NE(wcsncpy_s(buffer.all, 4, L"abcd", 4), 0);
  EXPECT_STREQ(buffer.all, L"");
  EXPECT_TRUE(buffer.AreGuardsWhole());
}

TEST(BoundedCopy, wcsncpy_s_ReadsNoMoreThanTheCount) {
  const wchar_t unterminated[] = {L'a', L'b'};
  Guarded<wchar_t, 4> buffer;
  EXPECT_EQ(wcsncpy_s(buffer.all, 4, unterminated, 2), 0);
  EXPECT_STREQ(buffer.all, L"ab");
}

TEST(BoundedCopy, wcsncpy_s_NullAndNegative) {
  wchar_t text[] = L"abc";
  EXPECT_NE(wcsncpy_s(nullptr, 4, L"a", 1), 0);
  EXPECT_NE(wcsncpy_s(text, 0, L"a", 1), 0);
  EXPECT_NE(wcsncpy_s(text, kNegative, L"a", 1), 0);
  EXPECT_STREQ(text, L"abc");
  EXPECT_NE(wcsncpy_s(text, 4, nullptr, 1), 0);
  EXPECT_STREQ(text, L"");
}

}  // namespace
}  // namespace velora
