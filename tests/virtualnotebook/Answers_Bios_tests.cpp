#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "WmiKit/WmiKit.h"
#include "support/NotebookTest.h"

namespace virtualnotebook {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

// BIOS events that came to Hear.
std::vector<uint32_t> heard;
void Hear(uint32_t eventId) { heard.push_back(eventId); }

class Bios : public testsupport::NotebookTest {
 protected:
  Bios() { heard.clear(); }

  int Ask() { return NxSDK::BiosWmi::GetBiosInfo(input_, output_); }

  NxSDK::WmiInputParams input_{};
  NxSDK::WmiOutputParams output_{};
  NxSDK::BiosEventMonitor monitor_;
};

TEST_F(Bios, AnswersTheFirstBytesAndLeavesTheOthers) {
  notebook.biosAnswer = {0, 0x64, 0x19};
  std::ranges::fill(output_.bytes, uint8_t{0xBD});
  EXPECT_EQ(Ask(), 0);
  EXPECT_THAT(std::vector<uint8_t>(output_.bytes, output_.bytes + 4),
              ElementsAre(0, 0x64, 0x19, 0xBD));
}

TEST_F(Bios, AnAnswerEndsWithTheRecord) {
  notebook.biosAnswer = std::vector<uint8_t>(300, 7);
  EXPECT_EQ(Ask(), 0);
  EXPECT_THAT(output_.bytes, Each(7));
}

TEST_F(Bios, WithoutAnAnswerWmiKitIsAsked) {
  std::ranges::fill(output_.bytes, uint8_t{0xBD});
  EXPECT_NE(Ask(), 0);
  EXPECT_THAT(output_.bytes, Each(0xBD));
}

TEST_F(Bios, QuestionsAreKept) {
  input_.bytes[0] = 6;
  input_.bytes[63] = 0x3F;
  Ask();
  output_.bytes[255] = 1;
  notebook.biosAnswer = {0};
  Ask();
  ASSERT_EQ(notebook.biosQueries.size(), 2U);
  EXPECT_EQ(notebook.biosQueries[0].request[0], 6);
  EXPECT_EQ(notebook.biosQueries[0].request[1], 0);
  EXPECT_EQ(notebook.biosQueries[0].request[63], 0x3F);
  EXPECT_TRUE(notebook.biosQueries[0].outputWasZero);
  EXPECT_FALSE(notebook.biosQueries[1].outputWasZero);
  EXPECT_EQ(notebook.CountCalls("BiosWmi::GetBiosInfo"), 2U);
  EXPECT_THAT(notebook.calls.back().arguments, ElementsAre(L"pointer", L"pointer"));
}

TEST_F(Bios, AFailedQuestionIsNone) {
  notebook.biosAnswer = {9};
  notebook.FailCall("BiosWmi::GetBiosInfo", 1, 5);
  EXPECT_EQ(Ask(), 5);
  EXPECT_EQ(output_.bytes[0], 0);
  EXPECT_THAT(notebook.biosQueries, IsEmpty());
}

TEST_F(Bios, EventsComeWhileTheMonitorIsStarted) {
  EXPECT_FALSE(notebook.FireBiosEvent(705));
  EXPECT_EQ(monitor_.StartEventMonitor(Hear), 0);
  EXPECT_TRUE(notebook.FireBiosEvent(705));
  EXPECT_TRUE(notebook.FireBiosEvent(12));
  EXPECT_EQ(monitor_.StopEventMonitor(), 0);
  EXPECT_FALSE(notebook.FireBiosEvent(705));
  EXPECT_THAT(heard, ElementsAre(705, 12));
}

TEST_F(Bios, AMonitorThatFailedToStartHearsNothing) {
  notebook.FailCall("BiosEventMonitor::StartEventMonitor", 1, 8);
  EXPECT_EQ(monitor_.StartEventMonitor(Hear), 8);
  EXPECT_FALSE(notebook.FireBiosEvent(705));
  EXPECT_NE(monitor_.StartEventMonitor(nullptr), 0);
  EXPECT_FALSE(notebook.FireBiosEvent(705));
}

TEST_F(Bios, AMonitorThatFailedToStopGoesOn) {
  monitor_.StartEventMonitor(Hear);
  notebook.FailCall("BiosEventMonitor::StopEventMonitor", 1, 8);
  EXPECT_EQ(monitor_.StopEventMonitor(), 8);
  EXPECT_TRUE(notebook.FireBiosEvent(1));
  EXPECT_THAT(notebook.calls.back().arguments, ElementsAre(L"pointer"));
}

}  // namespace
}  // namespace virtualnotebook
