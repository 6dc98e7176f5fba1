#include "CoreKit/DisplayType.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

DISPLAYCONFIG_PATH_INFO Path(DISPLAYCONFIG_VIDEO_OUTPUT_TECHNOLOGY technology) {
  DISPLAYCONFIG_PATH_INFO path{};
  path.targetInfo.outputTechnology = technology;
  return path;
}

const auto kHdmi = Path(DISPLAYCONFIG_OUTPUT_TECHNOLOGY_HDMI);
const auto kLvds = Path(DISPLAYCONFIG_OUTPUT_TECHNOLOGY_LVDS);
const auto kEmbedded = Path(DISPLAYCONFIG_OUTPUT_TECHNOLOGY_DISPLAYPORT_EMBEDDED);

}  // namespace

TEST(DisplayType, ChooseDisplayType_TheFirstInternalDisplay) {
  EXPECT_EQ(ChooseDisplayType({kHdmi, kEmbedded, kLvds}, true), 11u);
  EXPECT_EQ(ChooseDisplayType({kLvds, kEmbedded}, true), 6u);
  EXPECT_EQ(ChooseDisplayType({Path(DISPLAYCONFIG_OUTPUT_TECHNOLOGY_UDI_EMBEDDED)}, true), 13u);
  EXPECT_EQ(ChooseDisplayType({kHdmi, Path(DISPLAYCONFIG_OUTPUT_TECHNOLOGY_INTERNAL)}, true),
            0x80000000u);
}

TEST(DisplayType, ChooseDisplayType_ElseTheFirst) {
  EXPECT_EQ(ChooseDisplayType({kHdmi, Path(DISPLAYCONFIG_OUTPUT_TECHNOLOGY_DVI)}, false), 5u);
}

TEST(DisplayType, ChooseDisplayType_WithoutPathsADisplayOnTheDesktopIsInternal) {
  EXPECT_EQ(ChooseDisplayType({}, true), 0x80000000u);
}

TEST(DisplayType, ChooseDisplayType_WithoutAnyDisplayItCannotBeTold) {
  EXPECT_EQ(ChooseDisplayType({}, false), 0xFFFFFFFFu);
}
