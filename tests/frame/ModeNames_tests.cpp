#include "frame/ModeNames.h"

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>

namespace velora {
namespace {

TEST(ModeNames, ModeName_OfEachPresetMode) {
  EXPECT_STREQ(ModeName(1), L"SrgbMode");
  EXPECT_STREQ(ModeName(2), L"P3Mode");
  EXPECT_STREQ(ModeName(3), L"WebMode");
  EXPECT_STREQ(ModeName(4), L"DigitalMode");
  EXPECT_STREQ(ModeName(5), L"PhotoMode");
  EXPECT_STREQ(ModeName(6), L"DesignMode");
  EXPECT_STREQ(ModeName(8), L"HdtvMode");
  EXPECT_STREQ(ModeName(9), L"DigitalD65Mode");
  EXPECT_STREQ(ModeName(10), L"AdobeMode");
}

TEST(ModeNames, ModeName_OfAnyOtherThrows) {
  for (const ColorFieldMode mode : {-1, 0, 7, 11, 12, 1000, std::numeric_limits<int32_t>::min(),
                                    std::numeric_limits<int32_t>::max()}) {
    SCOPED_TRACE(mode);
    try {
      ModeName(mode);
      ADD_FAILURE() << "nothing thrown";
    } catch (const std::out_of_range& error) {
      EXPECT_STREQ(error.what(), "invalid map<K, T> key");
    }
  }
}

}  // namespace
}  // namespace velora
