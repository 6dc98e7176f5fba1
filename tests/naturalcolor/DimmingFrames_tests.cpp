#include "naturalcolor/DimmingFrames.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "support/LogCapture.h"

namespace velora {
namespace {

constexpr float kNoTemperature = std::numeric_limits<float>::quiet_NaN();
constexpr float kBeyond = std::numeric_limits<float>::infinity();
constexpr int32_t kLowest = std::numeric_limits<int32_t>::min();

// The thread's work without the thread: every frame is delivered.
class Dimming : public DimmingFrames {
 public:
  using DimmingFrames::cctVal_;
  using DimmingFrames::CheckLastFrame;
  using DimmingFrames::ctLowLuma_;
  using DimmingFrames::dimmingThresh_;
  using DimmingFrames::frameCount_;
  using DimmingFrames::frameIndex_;
  using DimmingFrames::GetStepValue;
  using DimmingFrames::isDimming_;
  using DimmingFrames::IsEnableCctDimming;
  using DimmingFrames::isSwitchDimming_;
  using DimmingFrames::luminanceThresh_;
  using DimmingFrames::NextFrame;
  using DimmingFrames::previousAmbientCct_;
  using DimmingFrames::StartDimming;
  using DimmingFrames::step_;
  using DimmingFrames::StopDimming;
  using DimmingFrames::targetCct_;
  using DimmingFrames::TargetOf;

  float shown = 5000.0F;

  float Frame() {
    NextFrame(targetCct_, shown);
    shown = cctVal_;
    CheckLastFrame();
    return shown;
  }

  std::vector<float> FramesTo(float target) {
    StartDimming(target);
    std::vector<float> frames;
    while (isDimming_ && frames.size() < 1000) {
      frames.push_back(Frame());
    }
    return frames;
  }
};

// steps frames of one step each, then the target.
std::vector<float> Walk(float from, int steps, float step, float target) {
  std::vector<float> frames;
  for (int i = 1; i <= steps; ++i) {
    frames.push_back(from + static_cast<float>(i) * step);
  }
  frames.push_back(target);
  return frames;
}

class DimmingFramesTest : public testing::Test {
 protected:
  testsupport::LogCapture log;
  Dimming dimming;
};

TEST_F(DimmingFramesTest, AtFirst) {
  EXPECT_EQ(dimming.frameCount_, 50);
  EXPECT_EQ(dimming.ctLowLuma_, 4000.0F);
  EXPECT_EQ(dimming.luminanceThresh_, 50.0F);
  EXPECT_EQ(dimming.dimmingThresh_, 100.0F);
  EXPECT_EQ(dimming.targetCct_, 5000.0F);
  EXPECT_FALSE(dimming.isDimming_);
  EXPECT_FALSE(dimming.isSwitchDimming_);
  EXPECT_EQ(dimming.previousAmbientCct_, 5000.0F);
  EXPECT_EQ(dimming.step_, 0);
  EXPECT_EQ(dimming.cctVal_, 5000.0F);
  EXPECT_EQ(dimming.frameIndex_, 0);
}

TEST_F(DimmingFramesTest, TargetOf_TheDarkCountsAsLowLuma) {
  EXPECT_EQ(dimming.TargetOf(6500.0F, 49.99F), 4000.0F);
  EXPECT_EQ(dimming.TargetOf(6500.0F, 50.0F), 6500.0F) << "the limit is light";
  EXPECT_EQ(dimming.TargetOf(6500.0F, -1.0F), 4000.0F);
  EXPECT_EQ(dimming.TargetOf(6500.0F, kNoTemperature), 6500.0F) << "no number is not below";
}

TEST_F(DimmingFramesTest, IsEnableCctDimming_MoreThanTheThreshold) {
  EXPECT_FALSE(dimming.IsEnableCctDimming(5100.0F)) << "the threshold itself";
  EXPECT_FALSE(dimming.IsEnableCctDimming(4900.0F));
  EXPECT_TRUE(dimming.IsEnableCctDimming(5100.001F));
  EXPECT_TRUE(dimming.IsEnableCctDimming(4899.999F));
  EXPECT_FALSE(dimming.IsEnableCctDimming(kNoTemperature));
  EXPECT_TRUE(dimming.IsEnableCctDimming(kBeyond));
  dimming.previousAmbientCct_ = kBeyond;
  EXPECT_FALSE(dimming.IsEnableCctDimming(kBeyond)) << "their difference is no number";
  EXPECT_TRUE(dimming.IsEnableCctDimming(5000.0F));
}

TEST_F(DimmingFramesTest, Default_FiftyFramesAndTheTarget) {
  const auto frames = dimming.FramesTo(6000.0F);
  EXPECT_EQ(frames, Walk(5000.0F, 50, 20.0F, 6000.0F));
  EXPECT_EQ(frames.size(), 51u);
  EXPECT_FALSE(dimming.isDimming_);
  EXPECT_EQ(dimming.frameIndex_, 0);
}

TEST_F(DimmingFramesTest, TheLastFrameMakesUpForTheFractions) {
  EXPECT_EQ(dimming.FramesTo(5999.5F), Walk(5000.0F, 50, 19.0F, 5999.5F));
}

TEST_F(DimmingFramesTest, Downwards_StepsAreCutTowardsZero) {
  EXPECT_EQ(dimming.FramesTo(4001.0F), Walk(5000.0F, 50, -19.0F, 4001.0F));
}

TEST_F(DimmingFramesTest, LessThanAFrameEach_TheWholeChangeInTheLast) {
  EXPECT_EQ(dimming.FramesTo(4990.0F), Walk(5000.0F, 50, 0.0F, 4990.0F));
  EXPECT_EQ(dimming.step_, 0);
}

TEST_F(DimmingFramesTest, OneFrame) {
  dimming.frameCount_ = 1;
  EXPECT_EQ(dimming.FramesTo(6000.0F), (std::vector<float>{6000.0F, 6000.0F}));
}

TEST_F(DimmingFramesTest, NoFrames_CountsAsFifty) {
  dimming.frameCount_ = 0;
  EXPECT_EQ(dimming.FramesTo(6000.0F), Walk(5000.0F, 50, 20.0F, 6000.0F));
  EXPECT_EQ(dimming.frameCount_, 50);
}

// The first frame is the last.
TEST_F(DimmingFramesTest, NegativeFrames_TheTargetAtOnce) {
  for (const int32_t count : {-1, -50, kLowest}) {
    dimming.frameCount_ = count;
    EXPECT_EQ(dimming.FramesTo(6000.0F), std::vector<float>{6000.0F}) << count;
    dimming.shown = 5000.0F;
  }
}

TEST_F(DimmingFramesTest, Switch_TwentyFiveFramesOfTheDefault) {
  dimming.isSwitchDimming_ = true;
  EXPECT_EQ(dimming.FramesTo(6000.0F), Walk(5000.0F, 25, 40.0F, 6000.0F));
  EXPECT_FALSE(dimming.isSwitchDimming_);
  EXPECT_EQ(dimming.FramesTo(7000.0F).size(), 51u) << "the next one is whole again";
}

// Steps made for 25 frames, but fewer or more of them.
TEST_F(DimmingFramesTest, Switch_OtherFrameCounts) {
  const std::pair<int32_t, int> cases[] = {{30, 5}, {26, 1}, {60, 35}};
  for (const auto& [count, frames] : cases) {
    dimming.frameCount_ = count;
    dimming.isSwitchDimming_ = true;
    dimming.shown = 5000.0F;
    EXPECT_EQ(dimming.FramesTo(6000.0F), Walk(5000.0F, frames, 40.0F, 6000.0F)) << count;
  }
}

TEST_F(DimmingFramesTest, Switch_TwentyFiveFramesOrFewer_TheTargetAtOnce) {
  for (const int32_t count : {25, 24, 1, -1, kLowest}) {
    dimming.frameCount_ = count;
    dimming.isSwitchDimming_ = true;
    dimming.shown = 5000.0F;
    EXPECT_EQ(dimming.FramesTo(6000.0F), std::vector<float>{6000.0F}) << count;
  }
}

TEST_F(DimmingFramesTest, Switch_NoFrames_CountsAsFifty) {
  dimming.frameCount_ = 0;
  dimming.isSwitchDimming_ = true;
  EXPECT_EQ(dimming.FramesTo(6000.0F), Walk(5000.0F, 25, 40.0F, 6000.0F));
}

// From the frame reached, with a step of its own.
TEST_F(DimmingFramesTest, RestartInTheMiddle) {
  dimming.StartDimming(6000.0F);
  for (int i = 0; i < 10; ++i) {
    dimming.Frame();
  }
  EXPECT_EQ(dimming.shown, 5200.0F);
  EXPECT_EQ(dimming.FramesTo(4200.0F), Walk(5200.0F, 50, -20.0F, 4200.0F));
}

TEST_F(DimmingFramesTest, StopInTheMiddle) {
  dimming.StartDimming(6000.0F);
  dimming.Frame();
  dimming.StopDimming();
  EXPECT_FALSE(dimming.isDimming_);
  EXPECT_EQ(dimming.frameIndex_, 0);
  EXPECT_EQ(dimming.targetCct_, 6000.0F) << "a resumed dimming goes there";
}

TEST_F(DimmingFramesTest, GetStepValue_WithoutFractions) {
  EXPECT_EQ(dimming.GetStepValue(5099.9F, 5000.0F), 1);
  EXPECT_EQ(dimming.GetStepValue(5049.9F, 5000.0F), 0);
  EXPECT_EQ(dimming.GetStepValue(4900.1F, 5000.0F), -1) << "-99 by 50";
  dimming.frameCount_ = 0;
  EXPECT_EQ(dimming.GetStepValue(5100.0F, 5000.0F), 2);
}

// As the processor converts them: to the lowest number.
TEST_F(DimmingFramesTest, GetStepValue_NoNumberOrTooFar) {
  for (const float target : {kNoTemperature, kBeyond, -kBeyond, 3e38F}) {
    EXPECT_EQ(dimming.GetStepValue(target, 5000.0F), kLowest / 50);
  }
  dimming.frameCount_ = -1;
  EXPECT_EQ(dimming.GetStepValue(kNoTemperature, 5000.0F), kLowest)
      << "its quotient does not exist";
}

TEST_F(DimmingFramesTest, GetStepValue_SwitchMovesTheIndex) {
  dimming.isSwitchDimming_ = true;
  dimming.frameIndex_ = 3;
  EXPECT_EQ(dimming.GetStepValue(5050.0F, 5000.0F), 2);
  EXPECT_EQ(dimming.frameIndex_, 28);
  EXPECT_FALSE(dimming.isSwitchDimming_);
}

TEST_F(DimmingFramesTest, GetStepValue_Log) {
  dimming.frameCount_ = 40;
  dimming.GetStepValue(5050.0F, 5000.0F);
  dimming.isSwitchDimming_ = true;
  dimming.GetStepValue(5050.0F, 5000.0F);
  ASSERT_EQ(log.Lines().size(), 2u);
  EXPECT_EQ(log.Lines()[0].level, 1);
  EXPECT_EQ(log.Lines()[0].text,
            L"NaturalColor sensor change dimming.Number of frames:40("
            L"NaturalColorAdjustAlgorithm::GetStepValue)");
  EXPECT_EQ(log.Lines()[1].level, 1);
  EXPECT_EQ(log.Lines()[1].text,
            L"NaturalColor open/close dimming.Number of frames:25("
            L"NaturalColorAdjustAlgorithm::GetStepValue)");
}

}  // namespace
}  // namespace velora
