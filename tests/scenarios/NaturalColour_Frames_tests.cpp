// Whole fades in the shipped library: each frame that leaves it, and what is stored when it does.
// All numbers are calculated by hand on the curve of the fixture:
//
//   kelvin   3000  5000   6500  8000
//   green    0.75  0.875  1     0.875
//   blue     0.5   0.75   1     1
//   red      1     1      1     0.75
#include "scenarios/NaturalColour.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <mutex>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace scenarios {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using virtualnotebook::Call;

constexpr float kBright = 300;  // lux
constexpr float kDark = 49;     // below the threshold of 50

// The temperature and the gains that are stored, and the colour temperature kept for the printer,
// when a frame leaves the library.
struct Frame {
  double sensorColor;
  double r;
  double g;
  double b;
  uint32_t sensorCct;

  friend bool operator==(const Frame&, const Frame&) = default;
  friend std::ostream& operator<<(std::ostream& stream, const Frame& frame) {
    return stream << frame.sensorColor << " K: " << frame.r << ", " << frame.g << ", " << frame.b
                  << "; printer " << frame.sensorCct << " K";
  }
};

class NaturalColourFrames : public NaturalColourTest {
 protected:
  void StartOn() {
    SwitchOn();
    StartWatched();
  }
  void StartWatched() {
    notebook.onCall = [this](const Call& call) {
      if (call.function == "PlatformSet3DColorTemperature" ||
          call.function == "CoreKit::LoadUserProcessByServerPriviledge") {
        const Frame frame{SensorColor(), Gain(L"r"), Gain(L"g"), Gain(L"b"), SensorCct()};
        const std::lock_guard lock(mutex_);
        frames_.push_back(frame);
      }
    };
    Start();
  }

  void Report(float kelvin, float lux, size_t frames) {
    EXPECT_EQ(notebook.ReportLight(Reading(kelvin, lux)), S_OK);
    ExpectFrames(frames);
  }

  // Until so many dimming frames have been told of since the last time.
  void ExpectFrames(size_t count) {
    told_ += count;
    EXPECT_TRUE(testsupport::WaitUntil([&] { return CountLogged(L"frameIndex_ = ") >= told_; }));
  }

  // Since the last time.
  std::vector<Frame> Take() {
    const std::lock_guard lock(mutex_);
    return std::exchange(frames_, {});
  }

  std::vector<std::wstring> CommandLines() const {
    std::vector<std::wstring> lines;
    notebook.Locked([&] {
      for (const auto& process : notebook.startedProcesses) {
        lines.push_back(process.commandLine);
      }
    });
    return lines;
  }

 private:
  std::mutex mutex_;
  std::vector<Frame> frames_;
  size_t told_ = 0;
};

// 1500 K in four frames and the target.
TEST_F(NaturalColourFrames, AReading) {
  StartOn();
  EXPECT_THAT(Take(), IsEmpty());
  Report(6500, kBright, 5);
  EXPECT_THAT(Take(), ElementsAre(Frame{5375, 1, 0.90625, 0.8125, 6500},  //
                                  Frame{5750, 1, 0.9375, 0.875, 6500},
                                  Frame{6125, 1, 0.96875, 0.9375, 6500}, Frame{6500, 1, 1, 1, 6500},
                                  Frame{6500, 1, 1, 1, 6500}));
  const std::vector<Color3DInfo> frames = Frames();
  ASSERT_EQ(frames.size(), 5U);
  EXPECT_EQ(frames[0].g, 0.90625);
  EXPECT_EQ(frames[0].b, 0.8125);
  EXPECT_EQ(frames[2].g, 0.96875);
  EXPECT_EQ(frames[4].r, 1);
  EXPECT_EQ(frames[4].b, 1);
}

// -6 K: each step is cut to -1, and the last frame makes up for it. The threshold is strict.
TEST_F(NaturalColourFrames, ASmallChangeDownwards) {
  dataIn.dimmingThreshold = 6;
  StartOn();
  Report(4994, kBright, 0);
  dataIn.dimmingThreshold = 5;
  Stop();
  StartOn();
  Report(4994, kBright, 5);
  const std::vector<Frame> frames = Take();
  ASSERT_EQ(frames.size(), 5U);
  const double temperatures[] = {4999, 4998, 4997, 4996, 4994};
  for (size_t i = 0; i < frames.size(); ++i) {
    EXPECT_EQ(frames[i].sensorColor, temperatures[i]);
    EXPECT_EQ(frames[i].sensorCct, 4994U);
  }
}

// The fixture's room is dark below 50 lux and counts as 4000 K there.
TEST_F(NaturalColourFrames, TheDarkAndBackAndBeyondTheCurve) {
  StartOn();
  Report(8000, kDark, 5);
  EXPECT_THAT(
      Take(),
      ElementsAre(Frame{4750, 1, 0.859375, 0.71875, 4000}, Frame{4500, 1, 0.84375, 0.6875, 4000},
                  Frame{4250, 1, 0.828125, 0.65625, 4000}, Frame{4000, 1, 0.8125, 0.625, 4000},
                  Frame{4000, 1, 0.8125, 0.625, 4000}));
  Report(12000, kBright, 5);
  EXPECT_THAT(
      Take(),
      ElementsAre(Frame{5000, 1, 0.875, 0.75, 8000}, Frame{6000, 1, 0.958333, 0.916667, 8000},
                  Frame{7000, 0.916667, 0.958333, 1, 8000}, Frame{8000, 0.75, 0.875, 1, 8000},
                  Frame{8000, 0.75, 0.875, 1, 8000}));
  // 12000 is what was remembered: 100 K less is no change, and 101 is one, to where it stands.
  Report(11900, kBright, 0);
  Report(11899, kBright, 5);
  EXPECT_EQ(Take().size(), 5U);
}

// Off: 28 - 25 frames of a step for 25, to the neutral point through the curve, and then the
// target. On: back, to 5000 K and not to the room, which the next reading is compared with.
TEST_F(NaturalColourFrames, SwitchedOffAndOn) {
  dataIn.frameCount = 28;
  StartOn();
  Report(3000, kBright, 29);
  Take();
  SwitchOff();
  Ring();
  ExpectFrames(4);
  EXPECT_THAT(
      Take(),
      ElementsAre(Frame{3140, 1, 0.75875, 0.5175, 3000}, Frame{3280, 1, 0.7675, 0.535, 3000},
                  Frame{3420, 1, 0.77625, 0.5525, 3000}, Frame{6500, 1, 1, 1, 3000}));
  SwitchOn();
  Ring();
  ExpectFrames(4);
  EXPECT_THAT(Take(),
              ElementsAre(Frame{6440, 1, 0.995, 0.99, 3000}, Frame{6380, 1, 0.99, 0.98, 3000},
                          Frame{6320, 1, 0.985, 0.97, 3000}, Frame{5000, 1, 0.875, 0.75, 3000}));
  Report(3100, kBright, 0);
  EXPECT_EQ(SensorColor(), 5000);
}

// The second frame fails: "SensorColor" goes back to the first, whose gains were shown. A reading
// below the threshold tries again, from there, and leaves "SensorCCT".
TEST_F(NaturalColourFrames, AFrameThatFails) {
  StartOn();
  notebook.FailCall("PlatformSet3DColorTemperature", 2, 9);
  Report(6500, kBright, 2);
  EXPECT_THAT(Take(), ElementsAre(Frame{5375, 1, 0.90625, 0.8125, 6500},
                                  Frame{5750, 1, 0.9375, 0.875, 6500}));
  EXPECT_EQ(SensorColor(), 5375);
  EXPECT_EQ(Gain(L"g"), 0.9375);  // of the frame that failed
  EXPECT_EQ(Frames().size(), 1U);
  EXPECT_EQ(CountLogged(L"Set3DColorTemperature error: 9"), 1U);

  Report(6420, kBright, 5);  // a step of 261.25 K, cut
  EXPECT_THAT(
      Take(),
      ElementsAre(Frame{5636, 1, 0.928, 0.856, 6500}, Frame{5897, 1, 0.94975, 0.8995, 6500},
                  Frame{6158, 1, 0.9715, 0.943, 6500}, Frame{6419, 1, 0.99325, 0.9865, 6500},
                  Frame{6420, 1, 0.993333, 0.986667, 6500}));
  EXPECT_EQ(SensorColor(), 6420);
}

TEST_F(NaturalColourFrames, ByTheHelper) {
  dataIn.executionType = 0;
  StartOn();
  Report(6500, kBright, 5);
  EXPECT_THAT(Take(), ElementsAre(Frame{5375, 1, 0.90625, 0.8125, 6500},  //
                                  Frame{5750, 1, 0.9375, 0.875, 6500},
                                  Frame{6125, 1, 0.96875, 0.9375, 6500}, Frame{6500, 1, 1, 1, 6500},
                                  Frame{6500, 1, 1, 1, 6500}));
  EXPECT_THAT(CommandLines(), ElementsAre(L"nouse 1.000000 0.906250 0.812500 0 0.000000",
                                          L"nouse 1.000000 0.937500 0.875000 0 0.000000",
                                          L"nouse 1.000000 0.968750 0.937500 0 0.000000",
                                          L"nouse 1.000000 1.000000 1.000000 0 0.000000",
                                          L"nouse 1.000000 1.000000 1.000000 0 0.000000"));
  EXPECT_THAT(Frames(), IsEmpty());
}

// Without the service no helper is started; when it is there again the fade goes on by itself, from
// where the panel stands. An eleventh helper is started, a twelfth is not.
TEST_F(NaturalColourFrames, ByTheHelper_ServiceAndHelpersInTheWay) {
  dataIn.executionType = 0;
  StartOn();
  notebook.Locked([&] { notebook.services[L"Winmgmt"] = SERVICE_STOPPED; });
  Report(6500, kBright, 1);
  EXPECT_THAT(Take(), IsEmpty());
  EXPECT_EQ(SensorColor(), 5000);
  notebook.Locked([&] {
    notebook.processes.assign(10, L"VeloraAssistant.exe");
    notebook.services[L"Winmgmt"] = SERVICE_RUNNING;
  });
  ExpectFrames(5);  // within two seconds
  EXPECT_EQ(Take().size(), 5U);
  EXPECT_EQ(SensorColor(), 6500);

  notebook.Locked([&] { notebook.processes.push_back(L"VeloraAssistant.exe"); });
  Report(5000, kBright, 1);
  EXPECT_THAT(Take(), IsEmpty());
  EXPECT_EQ(SensorColor(), 6500);
  EXPECT_EQ(CountLogged(L"VeloraAssistant.exe process count >10 no start veloraassistand.exe"), 1U);
}

// The panel goes to the neutral point during the start, ahead of the platform's own and without a
// look at the sessions.
TEST_F(NaturalColourFrames, StartedWhileOff) {
  notebook.sessions.clear();
  SwitchOff();
  StartWatched();
  EXPECT_THAT(Take(), ElementsAre(Frame{6500, 1, 1, 1, 0}));
  EXPECT_EQ(SensorCct(), 5000U);
  EXPECT_EQ(Frames().size(), 1U);
}

// What was shown last is where the next start begins.
TEST_F(NaturalColourFrames, RestartInTheMiddle) {
  StartOn();
  Report(6500, kBright, 5);
  Stop();
  Take();
  StartOn();
  EXPECT_THAT(Take(), IsEmpty());
  EXPECT_EQ(SensorCct(), 5000U);
  Report(6100, kBright, 5);
  EXPECT_THAT(Take(), ElementsAre(Frame{6400, 1, 0.991667, 0.983333, 6100},
                                  Frame{6300, 1, 0.983333, 0.966667, 6100},
                                  Frame{6200, 1, 0.975, 0.95, 6100},
                                  Frame{6100, 1, 0.966667, 0.933333, 6100},
                                  Frame{6100, 1, 0.966667, 0.933333, 6100}));
}

}  // namespace
}  // namespace scenarios
