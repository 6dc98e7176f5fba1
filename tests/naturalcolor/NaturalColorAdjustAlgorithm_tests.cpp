#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <limits>
#include <ostream>
#include <string>
#include <vector>

#include "naturalcolor/AdjustTest.h"

namespace velora {

void PrintTo(const Gains& gains, std::ostream* out) {
  *out << gains.r << ", " << gains.g << ", " << gains.b;
}

namespace {

using testsupport::DwordValue;
using testsupport::LoggedWithin;
using testsupport::RegistryValues;
using virtualnotebook::Call;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

class NaturalColorAdjustAlgorithmTest : public AdjustTest {
 protected:
  // A reading in a lit room.
  int Reading(float cct) { return algorithm.StartCctDimming(cct, 300.0F); }

  // Runs action in the pause behind the n-th frame, on the dimming thread, which holds nothing
  // then. Gives the frames a pause of their own length.
  void BehindFrame(size_t n, std::function<void()> action) {
    notebook.onCall = [=, this](const Call& call) {
      const bool isPause = call.function == "WaitForSingleObject" &&
                           call.arguments[1] == std::to_wstring(dataIn.frameTime);
      if (isPause && !isActionDone && CountLines(L"frameIndex_ = ") == n) {
        isActionDone = true;
        action();
      }
    };
  }

  std::atomic<bool> isActionDone = false;
};

// --- Start ---

TEST_F(NaturalColorAdjustAlgorithmTest, Start_Log) {
  dataIn.dimmingThreshold = 99.5F;
  dataIn.minLuma = 4100.25F;
  dataIn.luminanceThreshold = 12.5F;
  dataIn.frameTime = 7;
  curve[1].r = 0.875;
  StartAndKeepRecords();
  const std::wstring name = L"(NaturalColorAdjustAlgorithm::InitNaturalColorAdjustAlgorithm)";
  EXPECT_LOG({1, L"InitNaturalColorAdjustAlgorithm In" + name},
             {1,
              L"InitNaturalColorAdjustAlgorithm frameCount_=4,msPerFrame_=7,dimmingThresh_=99.5,"
              L"isNewMethod_=1,ctLowLuma_=4100.25,luminanceThresh_=12.5,executionType_=1" +
                  name},
             {1, L"cctMappingCurve_ index=0,cct=904,r=0.5,g=0.25,b=0.75" + name},
             {1, L"cctMappingCurve_ index=1,cct=5000,r=0.875,g=1,b=1" + name},
             {1, L"cctMappingCurve_ index=2,cct=9096,r=1,g=0.5,b=0.25" + name},
             {1, L"defaultStatus:0(GetNatureColorStatus)"},
             {1, L"Save SetPrinterCcts = 5000 OK(PrinterReg::SetPrinterCcts)"},
             {3, L"itemName:SensorColor not exist in subKey:" + std::wstring(kNaturalColorKey) +
                     L"(RegisterHelper::RegReadValue)"});
}

TEST_F(NaturalColorAdjustAlgorithmTest, Start_OffGoesToTheNeutralPoint) {
  SetStatus(0);
  StartAndKeepRecords();
  EXPECT_EQ(Frames(), (std::vector<Gains>{{1, 1, 1}}));
  EXPECT_EQ(Natural(), (RegistryValues{{L"IsEnable", DwordValue(0)},
                                       {L"SensorColor", Number(5000)},
                                       {L"r", Number(1)},
                                       {L"g", Number(1)},
                                       {L"b", Number(1)}}));
  EXPECT_LOGGED(1,
                L"dimmingCct_ parsing succeeded. dimmingCct_ value:5000("
                L"NaturalColorAdjustAlgorithm::IsFlushTemper)");
  EXPECT_LOGGED(1, L"NaturalColorReset Success(NaturalColorAdjustAlgorithm::IsFlushTemper)");
}

// Its gains are neutral whatever fractions the curve has there.
TEST_F(NaturalColorAdjustAlgorithmTest, Start_NeutralPointWithFractions) {
  SetStatus(0);
  curve[1] = {5100.0F, 1.7, 1.2, 1.999};
  StartAndKeepRecords();
  EXPECT_EQ(Frames(), (std::vector<Gains>{{1, 1, 1}}));
  EXPECT_EQ(Natural()[L"SensorColor"], Number(5100));
}

TEST_F(NaturalColorAdjustAlgorithmTest, Start_OnDeliversNothing) {
  StartAndKeepRecords();
  Stop();
  EXPECT_EQ(Frames().size(), 0u);
  EXPECT_LOGGED(1,
                L"dimmingCct_ parsing succeeded. dimmingCct_ value:5000("
                L"NaturalColorAdjustAlgorithm::IsFlushTemper)");
  EXPECT_NOT_LOGGED(L"NaturalColorReset Success");
}

TEST_F(NaturalColorAdjustAlgorithmTest, Start_NoNeutralPointDeliversNothing) {
  SetStatus(0);
  curve[1].b = 0.999999;
  StartAndKeepRecords();
  Stop();
  EXPECT_EQ(Frames().size(), 0u);
  EXPECT_NOT_LOGGED(L"dimmingCct_ parsing succeeded");
}

TEST_F(NaturalColorAdjustAlgorithmTest, Start_NeutralPointNotDelivered) {
  SetStatus(0);
  notebook.FailCall("PlatformSet3DColorTemperature", 1, 7);
  StartAndKeepRecords();
  EXPECT_LOGGED(3,
                L"Set3DColorTemperature error: 7("
                L"NaturalColorAdjustAlgorithm::SetColorTemperByPlatform)");
  EXPECT_NOT_LOGGED(L"NaturalColorReset Success");
  EXPECT_EQ(notebook.CountCalls("PlatformInit"), 1u) << "the start goes on";
}

// Ahead of the platform's start, and whether or not anybody sits there.
TEST_F(NaturalColorAdjustAlgorithmTest, Start_NeutralPointComesFirst) {
  SetStatus(0);
  notebook.sessions.clear();
  StartAndKeepRecords();
  EXPECT_EQ(testsupport::CallsOf(notebook, {"WTSEnumerateSessionsW",
                                            "PlatformSet3DColorTemperature", "PlatformInit"}),
            (std::vector<std::string>{"PlatformSet3DColorTemperature", "PlatformInit"}));
}

TEST_F(NaturalColorAdjustAlgorithmTest, Start_OtherWaysLeaveThePlatformAlone) {
  for (const int32_t way : {0, 2, -1}) {
    notebook.ForgetRecords();
    dataIn.executionType = way;
    StartAndKeepRecords();
    Stop();
    EXPECT_EQ(notebook.CountCalls("PlatformInit"), 0u) << way;
    EXPECT_EQ(notebook.CountCalls("PlatformFini"), 0u) << way;
  }
}

TEST_F(NaturalColorAdjustAlgorithmTest, Start_StatusOfTheIniFile) {
  RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, kNaturalColorKey, L"IsEnable");
  ini.Write("[NATURECOLOR]\r\nIsNatureColor=1\r\n");
  Start();
  Reading(6000.0F);
  EXPECT_EQ(WaitForFrames(5).size(), 5u);
}

TEST_F(NaturalColorAdjustAlgorithmTest, Start_PrinterLearnsTheDefault) {
  Store(kPrinterKey, L"SensorCCT", DwordValue(1234));
  Start();
  EXPECT_EQ(Printer()[L"SensorCCT"], DwordValue(5000));
}

// What the last run left on the display, in single precision.
TEST_F(NaturalColorAdjustAlgorithmTest, Start_FromTheStoredColourTemperature) {
  Store(kNaturalColorKey, L"SensorColor", testsupport::TextValue(L"4321.123456789"));
  Start();
  Reading(6000.0F);
  ASSERT_EQ(WaitForFrames(5).size(), 5u);
  ASSERT_TRUE(WaitForFrameLines(5));
  // (6000 - 4321.12) / 4 = 419
  EXPECT_LOGGED(1,
                L"frameIndex_ = 1, frameCount_ = 4, previousCct_ = 4740.12, tempTargetCct = 6000, "
                L"cctVal_ = 4740.12, step_ = 419, isSetColorFail_ = 0("
                L"NaturalColorAdjustAlgorithm::CctDimming)");
}

TEST_F(NaturalColorAdjustAlgorithmTest, Start_NewCurveInPlaceOfTheOld) {
  Start();
  Stop();
  curve = {{904.0F, 0.125, 0.125, 0.125}, {9096.0F, 0.125, 0.125, 0.125}};
  Start();
  Reading(6000.0F);
  EXPECT_EQ(WaitForFrames(5), (std::vector<Gains>(5, {0.125, 0.125, 0.125})));
}

// --- Readings ---

TEST_F(NaturalColorAdjustAlgorithmTest, Reading_EmptyCurveIsRefused) {
  curve.clear();
  Start();
  EXPECT_EQ(Reading(6000.0F), 1);
  EXPECT_EQ(algorithm.StartCctDimming(6000.0F, 0.0F), 1);
  EXPECT_LOG();
}

// An empty curve leaves the gains neutral.
TEST_F(NaturalColorAdjustAlgorithmTest, Reading_EmptyCurveShowsNeutralGains) {
  curve.clear();
  Start();
  algorithm.SyncNatureColorStatus(1);
  EXPECT_EQ(Frames(), (std::vector<Gains>{{1, 1, 1}}));
  EXPECT_EQ(Natural()[L"SensorColor"], Number(5000));
}

TEST_F(NaturalColorAdjustAlgorithmTest, Reading_Log) {
  Start();
  EXPECT_EQ(algorithm.StartCctDimming(5050.5F, 75.25F), 0);
  EXPECT_LOG({1,
              L"StartCct:isEnableCctDimming = 0,previousAmbientCct_ = 5000,targetCct = 5050.5,"
              L"dimmingThresh_ = 100,sensorLight = 75.25,naturalColorStatus_ = 1("
              L"NaturalColorAdjustAlgorithm::StartCctDimming)"});
}

// Each frame's colour temperature and gains are stored by the time that the platform gets it.
TEST_F(NaturalColorAdjustAlgorithmTest, Reading_FiftyFramesAndTheTarget) {
  dataIn.frameCount = 50;
  Start();
  std::vector<RegistryValues> stored;
  notebook.onCall = [&](const Call& call) {
    if (call.function == "PlatformSet3DColorTemperature") {
      stored.push_back(Natural());
    }
  };
  EXPECT_EQ(Reading(6025.0F), 0);
  ASSERT_TRUE(WaitForFrameLines(51));
  Stop();
  std::vector<double> ccts;
  for (int i = 1; i <= 50; ++i) {
    ccts.push_back(5000 + 20 * i);  // 1025 / 50 is 20
  }
  ccts.push_back(6025);
  EXPECT_EQ(Frames(), At(ccts));
  ASSERT_EQ(stored.size(), 51u);
  for (size_t i = 0; i < 51; ++i) {
    const Gains gains = At(ccts[i]);
    EXPECT_EQ(stored[i], (RegistryValues{{L"IsEnable", DwordValue(1)},
                                         {L"SensorColor", Number(ccts[i])},
                                         {L"r", Number(gains.r)},
                                         {L"g", Number(gains.g)},
                                         {L"b", Number(gains.b)}}));
  }
  EXPECT_EQ(Printer()[L"SensorCCT"], DwordValue(6025));
}

TEST_F(NaturalColorAdjustAlgorithmTest, Reading_FrameLines) {
  dataIn.frameCount = 2;
  Start();
  Reading(5203.0F);
  ASSERT_TRUE(WaitForFrameLines(3));
  const std::wstring name = L"(NaturalColorAdjustAlgorithm::CctDimming)";
  EXPECT_LOGGED(1,
                L"frameIndex_ = 1, frameCount_ = 2, previousCct_ = 5101, tempTargetCct = 5203, "
                L"cctVal_ = 5101, step_ = 101, isSetColorFail_ = 0" +
                    name);
  EXPECT_LOGGED(1,
                L"frameIndex_ = 2, frameCount_ = 2, previousCct_ = 5202, tempTargetCct = 5203, "
                L"cctVal_ = 5202, step_ = 101, isSetColorFail_ = 0" +
                    name);
  EXPECT_LOGGED(1,
                L"frameIndex_ = 0, frameCount_ = 2, previousCct_ = 5203, tempTargetCct = 5203, "
                L"cctVal_ = 5203, step_ = 101, isSetColorFail_ = 0" +
                    name);
  EXPECT_LOGGED(1,
                L"NaturalColor sensor change dimming.Number of frames:2("
                L"NaturalColorAdjustAlgorithm::GetStepValue)");
}

TEST_F(NaturalColorAdjustAlgorithmTest, Reading_NoFramesCountAsFifty) {
  dataIn.frameCount = 0;
  Start();
  Reading(6000.0F);
  EXPECT_EQ(WaitForFrames(51).size(), 51u);
  ASSERT_TRUE(WaitForFrameLines(51));
  EXPECT_LOGGED(1,
                L"NaturalColor sensor change dimming.Number of frames:50("
                L"NaturalColorAdjustAlgorithm::GetStepValue)");
}

TEST_F(NaturalColorAdjustAlgorithmTest, Reading_ThresholdIsStrict) {
  Start();
  Reading(5100.0F);
  Reading(4900.0F);
  Reading(5100.5F);
  ASSERT_TRUE(WaitForFrameLines(5));
  Stop();
  EXPECT_EQ(Frames(), At({5025, 5050, 5075, 5100, 5100.5}));
  EXPECT_EQ(Printer()[L"SensorCCT"], DwordValue(5100));
}

// The reference is the last reading that was followed, not the last one.
TEST_F(NaturalColorAdjustAlgorithmTest, Reading_SmallChangesDoNotAddUp) {
  Start();
  Reading(5060.0F);
  Reading(5090.0F);
  EXPECT_EQ(CountLines(L"StartCct:isEnableCctDimming = 0,previousAmbientCct_ = 5000,"), 2u);
  Reading(5140.0F);
  EXPECT_EQ(CountLines(L"StartCct:isEnableCctDimming = 1,previousAmbientCct_ = 5000,"), 1u);
  Reading(5200.0F);
  EXPECT_EQ(CountLines(L"StartCct:isEnableCctDimming = 0,previousAmbientCct_ = 5140,"), 1u);
}

TEST_F(NaturalColorAdjustAlgorithmTest, Reading_InTheDarkIsLowLuma) {
  Start();
  algorithm.StartCctDimming(8000.0F, 49.999F);
  ASSERT_TRUE(WaitForFrameLines(5));
  EXPECT_EQ(Frames(), At({4750, 4500, 4250, 4000, 4000}));
  EXPECT_EQ(Printer()[L"SensorCCT"], DwordValue(4000));
  algorithm.StartCctDimming(3000.0F, 0.0F);
  EXPECT_EQ(CountLines(L"StartCct:isEnableCctDimming = 0,previousAmbientCct_ = 4000,"
                       L"targetCct = 4000,"),
            1u)
      << "the dark again";
  algorithm.StartCctDimming(8000.0F, 50.0F);
  ASSERT_TRUE(WaitForFrameLines(10));
  EXPECT_EQ(Frames().back(), At(8000)) << "the threshold is light";
}

TEST_F(NaturalColorAdjustAlgorithmTest, Reading_BeyondTheCurveIsRememberedUnclamped) {
  Start();
  Reading(20000.0F);
  ASSERT_TRUE(WaitForFrameLines(5));
  EXPECT_EQ(Frames().back(), At(9096));
  EXPECT_EQ(Natural()[L"SensorColor"], Number(9096));
  EXPECT_EQ(Printer()[L"SensorCCT"], DwordValue(9096));
  Reading(19950.0F);
  EXPECT_EQ(CountLines(L"StartCct:isEnableCctDimming = 0,previousAmbientCct_ = 20000,"), 1u);
  Reading(100.0F);
  ASSERT_TRUE(WaitForFrameLines(10));
  EXPECT_EQ(Frames().back(), At(904));
  EXPECT_EQ(Printer()[L"SensorCCT"], DwordValue(904));
}

TEST_F(NaturalColorAdjustAlgorithmTest, Reading_SmallerThanTheFrameCount) {
  dataIn.frameCount = 50;
  dataIn.dimmingThreshold = 5.0F;
  Start();
  Reading(4990.0F);
  ASSERT_TRUE(WaitForFrameLines(51));
  std::vector<Gains> expected(50, At(5000));
  expected.push_back(At(4990));
  EXPECT_EQ(Frames(), expected);
}

// No number and numbers without end: nothing moves, or the display goes to the end of the curve.
TEST_F(NaturalColorAdjustAlgorithmTest, Reading_NoColourTemperature) {
  Start();
  EXPECT_EQ(Reading(kNan), 0);
  EXPECT_EQ(CountLines(L"StartCct:isEnableCctDimming = 0"), 1u);
  EXPECT_EQ(Reading(-1e30F), 0);
  ASSERT_TRUE(WaitForFrameLines(5));
  EXPECT_EQ(Frames().back(), At(904));
  EXPECT_EQ(Reading(kInfinity), 0);
  ASSERT_TRUE(WaitForFrameLines(10));
  EXPECT_EQ(Frames().back(), At(9096));
  EXPECT_EQ(Reading(kInfinity), 0);
  EXPECT_EQ(CountLines(L"StartCct:isEnableCctDimming = 0"), 2u);
  EXPECT_EQ(Reading(5000.0F), 0) << "a reading follows even that";
  ASSERT_TRUE(WaitForFrameLines(15));
  EXPECT_EQ(Frames().back(), At(5000));
}

TEST_F(NaturalColorAdjustAlgorithmTest, Reading_NoIlluminance) {
  Start();
  EXPECT_EQ(algorithm.StartCctDimming(6000.0F, kNan), 0);
  ASSERT_TRUE(WaitForFrameLines(5));
  EXPECT_EQ(Frames().back(), At(6000)) << "not below the threshold";
  EXPECT_EQ(algorithm.StartCctDimming(6000.0F, -1e30F), 0);
  ASSERT_TRUE(WaitForFrameLines(10));
  EXPECT_EQ(Frames().back(), At(4000));
}

// From the colour temperature reached, by a step of its own.
TEST_F(NaturalColorAdjustAlgorithmTest, Reading_InTheMiddleOfADimming) {
  dataIn.frameCount = 10;
  dataIn.frameTime = 3;
  Start();
  BehindFrame(3, [this] { Reading(4000.0F); });
  Reading(6000.0F);
  ASSERT_TRUE(WaitForFrameLines(14));
  Stop();
  EXPECT_EQ(Frames(), At({5100, 5200, 5300, 5170, 5040, 4910, 4780, 4650, 4520, 4390, 4260, 4130,
                          4000, 4000}));
}

// Below the threshold it changes nothing of the one under way.
TEST_F(NaturalColorAdjustAlgorithmTest, Reading_SmallInTheMiddleOfADimming) {
  dataIn.frameTime = 3;
  Start();
  BehindFrame(2, [this] { Reading(6099.0F); });
  Reading(6000.0F);
  ASSERT_TRUE(WaitForFrameLines(5));
  Stop();
  EXPECT_EQ(Frames(), At({5250, 5500, 5750, 6000, 6000}));
}

// Recorded, and nothing moves.
TEST_F(NaturalColorAdjustAlgorithmTest, Reading_WhileOff) {
  SetStatus(0);
  Start();
  Reading(6000.0F);
  EXPECT_EQ(CountLines(L"StartCct:isEnableCctDimming = 1,previousAmbientCct_ = 5000,"), 1u);
  Reading(6050.0F);
  EXPECT_EQ(CountLines(L"StartCct:isEnableCctDimming = 0,previousAmbientCct_ = 6000,"), 1u);
  EXPECT_EQ(Printer()[L"SensorCCT"], DwordValue(5000));
  algorithm.SyncNatureColorStatus(1);
  ASSERT_TRUE(WaitForFrameLines(1));
  EXPECT_EQ(Frames(), At(std::vector<double>{5000})) << "the first that moves the display";
}

// A reading that comes too late for a switch ends the dimming where it stands.
TEST_F(NaturalColorAdjustAlgorithmTest, Reading_InTheMiddleOfSwitchingOff) {
  dataIn.frameCount = 50;
  dataIn.frameTime = 3;
  Start();
  Reading(5250.0F);
  ASSERT_TRUE(WaitForFrameLines(51));
  BehindFrame(51 + 5, [this] { Reading(5250.0F); });
  algorithm.SyncNatureColorStatus(0);
  ASSERT_TRUE(WaitForFrameLines(51 + 5));
  algorithm.SyncNatureColorStatus(1);
  ASSERT_TRUE(WaitForFrameLines(51 + 5 + 26));
  const auto frames = Frames();
  EXPECT_EQ(frames[51 + 4], At(5200));
  EXPECT_EQ(frames[51 + 5], At(5192)) << "by steps of 8 from 5200 on";
}

// --- Status ---

TEST_F(NaturalColorAdjustAlgorithmTest, Status_SwitchingOnAimsAtTheDefaultNotAtTheRoom) {
  dataIn.frameCount = 50;
  Start();
  Reading(6000.0F);
  ASSERT_TRUE(WaitForFrameLines(51));
  algorithm.SyncNatureColorStatus(1);
  ASSERT_TRUE(WaitForFrameLines(51 + 26));
  Stop();
  auto frames = Frames();
  frames.erase(frames.begin(), frames.begin() + 51);
  std::vector<double> ccts;
  for (int i = 1; i <= 25; ++i) {
    ccts.push_back(6000 - 40 * i);
  }
  ccts.push_back(5000);
  EXPECT_EQ(frames, At(ccts));
  EXPECT_LOGGED(1,
                L"NaturalColor open/close dimming.Number of frames:25("
                L"NaturalColorAdjustAlgorithm::GetStepValue)");
  EXPECT_LOGGED(1,
                L"SyncNatureColorStatus:1,dimmingCct_ value:5000("
                L"NaturalColorAdjustAlgorithm::SyncNatureColorStatus)");
}

// Through the curve, like any other; so the gains that arrive are the curve's to the end.
TEST_F(NaturalColorAdjustAlgorithmTest, Status_SwitchingOffGoesThroughTheCurve) {
  dataIn.frameCount = 27;
  curve[1] = {5000.0F, 1.5, 1, 1};  // neutral, yet not 1
  Start();
  Reading(9096.0F);
  ASSERT_TRUE(WaitForFrameLines(28));
  algorithm.SyncNatureColorStatus(0);
  ASSERT_TRUE(WaitForFrameLines(28 + 3));
  Stop();
  const auto frames = Frames();
  ASSERT_EQ(frames.size(), 31u);
  EXPECT_EQ(Natural()[L"SensorColor"], Number(5000));
  EXPECT_EQ(frames.back(), (Gains{1.5, 1, 1}));
}

TEST_F(NaturalColorAdjustAlgorithmTest, Status_OtherValuesAimAtTheNeutralPoint) {
  curve[1].cct = 4744.0F;
  Start();
  algorithm.SyncNatureColorStatus(2);
  ASSERT_TRUE(WaitForFrameLines(1));
  EXPECT_EQ(Natural()[L"SensorColor"], Number(4744));
  algorithm.SyncNatureColorStatus(1);
  ASSERT_TRUE(WaitForFrameLines(2));
  EXPECT_EQ(Natural()[L"SensorColor"], Number(5000));
}

// Few frames: the first is the target already.
TEST_F(NaturalColorAdjustAlgorithmTest, Status_WithTwentyFiveFramesOrFewer) {
  dataIn.frameCount = 25;
  Start();
  Reading(6000.0F);
  ASSERT_TRUE(WaitForFrameLines(26));
  algorithm.SyncNatureColorStatus(0);
  ASSERT_TRUE(WaitForFrameLines(27));
  algorithm.SyncNatureColorStatus(1);
  ASSERT_TRUE(WaitForFrameLines(28));
  Stop();
  EXPECT_EQ(Frames().size(), 28u);
  EXPECT_EQ(Frames().back(), At(5000));
}

// Each repeats the short dimming, though nothing changed.
TEST_F(NaturalColorAdjustAlgorithmTest, Status_AgainRunsAgain) {
  dataIn.frameCount = 26;
  Start();
  for (size_t i = 1; i <= 3; ++i) {
    algorithm.SyncNatureColorStatus(1);
    ASSERT_TRUE(WaitForFrameLines(2 * i));
  }
  Stop();
  EXPECT_EQ(Frames(), At({5000, 5000, 5000, 5000, 5000, 5000}));
}

// At once, on this thread, to nobody too, and with no dimming; neutral gains while off.
TEST_F(NaturalColorAdjustAlgorithmTest, Status_WithoutANeutralPoint) {
  curve[1] = {5000.0F, 0.75, 0.75, 0.75};
  Start();
  notebook.sessions.clear();
  algorithm.SyncNatureColorStatus(1);
  EXPECT_EQ(Frames(), (std::vector<Gains>{{0.75, 0.75, 0.75}}));
  EXPECT_EQ(Natural()[L"SensorColor"], Number(5000));
  algorithm.SyncNatureColorStatus(0);
  Stop();
  EXPECT_EQ(Frames(), (std::vector<Gains>{{0.75, 0.75, 0.75}, {1, 1, 1}}));
  EXPECT_EQ(CountLines(L"frameIndex_"), 0u);
  EXPECT_EQ(notebook.CountCalls("WTSEnumerateSessionsW"), 0u);
  EXPECT_LOGGED(1,
                L"SyncNatureColorStatus:0,dimmingCct_ value:0("
                L"NaturalColorAdjustAlgorithm::SyncNatureColorStatus)");
}

TEST_F(NaturalColorAdjustAlgorithmTest, Status_WithoutANeutralPointEndsADimming) {
  curve[1].r = 0.5;
  dataIn.frameTime = 3;
  dataIn.frameCount = 1000;
  Start();
  BehindFrame(3, [this] { algorithm.SyncNatureColorStatus(1); });
  Reading(9000.0F);
  ASSERT_TRUE(WaitForLines(L"SyncNatureColorStatus:1", 1));
  Reading(9001.0F);
  Stop();
  EXPECT_EQ(Frames().size(), 4u);
}

// --- Failures ---

TEST_F(NaturalColorAdjustAlgorithmTest, Failure_EndsTheDimmingAndPutsBack) {
  Start();
  notebook.FailCall("PlatformSet3DColorTemperature", 3, 5);
  Reading(6000.0F);
  ASSERT_TRUE(WaitForFrameLines(3));
  EXPECT_LOGGED(3,
                L"Set3DColorTemperature error: 5("
                L"NaturalColorAdjustAlgorithm::SetColorTemperByPlatform)");
  EXPECT_LOGGED(1,
                L"frameIndex_ = 0, frameCount_ = 4, previousCct_ = 5500, tempTargetCct = 6000, "
                L"cctVal_ = 5750, step_ = 250, isSetColorFail_ = 1("
                L"NaturalColorAdjustAlgorithm::CctDimming)");
  EXPECT_EQ(Natural()[L"SensorColor"], Number(5500));
  EXPECT_EQ(Natural()[L"g"], Number(At(5750).g)) << "the gains are not put back";
  Stop();
  EXPECT_EQ(Frames(), At({5250, 5500}));
}

// The next reading need not be over the threshold; it leaves the reference and "SensorCCT".
TEST_F(NaturalColorAdjustAlgorithmTest, Failure_AnyReadingTriesAgain) {
  Start();
  notebook.FailCall("PlatformSet3DColorTemperature", 3, 5);
  Reading(6000.0F);
  ASSERT_TRUE(WaitForFrameLines(3));
  Reading(6020.0F);
  ASSERT_TRUE(WaitForFrameLines(8));
  Stop();
  EXPECT_EQ(Frames(), At({5250, 5500, 5630, 5760, 5890, 6020, 6020}));
  EXPECT_EQ(Printer()[L"SensorCCT"], DwordValue(6000));
  EXPECT_EQ(CountLines(L"StartCct:isEnableCctDimming = 0,previousAmbientCct_ = 6000,"), 1u);
  Start();
  Reading(6100.0F);
  EXPECT_EQ(CountLines(L"StartCct:isEnableCctDimming = 0,previousAmbientCct_ = 6000,"), 1u);
}

// A retry in the dark, and one beyond the curve, are clamped like any other.
TEST_F(NaturalColorAdjustAlgorithmTest, Failure_RetryIsClamped) {
  Start();
  notebook.FailCall("PlatformSet3DColorTemperature", 1, 5);
  Reading(30000.0F);
  ASSERT_TRUE(WaitForFrameLines(1));
  Reading(30001.0F);
  ASSERT_TRUE(WaitForFrameLines(6));
  EXPECT_EQ(Frames().back(), At(9096));
}

TEST_F(NaturalColorAdjustAlgorithmTest, Failure_SuccessForgetsIt) {
  Start();
  notebook.FailCall("PlatformSet3DColorTemperature", 1, 5);
  Reading(6000.0F);
  ASSERT_TRUE(WaitForFrameLines(1));
  Reading(6000.0F);
  ASSERT_TRUE(WaitForFrameLines(6));
  Reading(6000.0F);
  Reading(7000.0F);
  ASSERT_TRUE(WaitForFrameLines(11));
  Stop();
  EXPECT_EQ(Frames().size(), 10u) << "none for the repeated reading";
}

// Not even tried.
TEST_F(NaturalColorAdjustAlgorithmTest, Failure_NobodyThere) {
  notebook.sessions = {{1, WTSDisconnected}};
  Start();
  Reading(6000.0F);
  ASSERT_TRUE(WaitForFrameLines(1));
  EXPECT_EQ(notebook.CountCalls("PlatformSet3DColorTemperature"), 0u);
  EXPECT_EQ(Natural()[L"SensorColor"], Number(5000));
  EXPECT_FALSE(Natural().contains(L"r"));
  EXPECT_LOGGED(1,
                L"frameIndex_ = 0, frameCount_ = 4, previousCct_ = 5000, tempTargetCct = 6000, "
                L"cctVal_ = 5250, step_ = 250, isSetColorFail_ = 1("
                L"NaturalColorAdjustAlgorithm::CctDimming)");
  notebook.Locked([&] { notebook.sessions = {{1, WTSActive}}; });
  Reading(6001.0F);
  ASSERT_TRUE(WaitForFrameLines(6));
  EXPECT_EQ(Frames().back(), At(6001));
}

// The settings' failures change nothing of what is shown.
TEST_F(NaturalColorAdjustAlgorithmTest, Failure_OfTheRegistry) {
  Start();
  notebook.FailCall("RegCreateKeyExW", 0, ERROR_ACCESS_DENIED);
  Reading(6000.0F);
  ASSERT_TRUE(WaitForFrameLines(5));
  EXPECT_EQ(Frames(), At({5250, 5500, 5750, 6000, 6000}));
}

// A colour temperature that is no number, from a curve that has one, is stored as the lowest.
TEST_F(NaturalColorAdjustAlgorithmTest, Failure_CurveWithoutNumbers) {
  curve[0].cct = kNan;
  curve[2].cct = kNan;
  dataIn.minLuma = kNan;
  Start();
  EXPECT_EQ(algorithm.StartCctDimming(kNan, 0.0F), 0);
  EXPECT_EQ(CountLines(L"StartCct:isEnableCctDimming = 0"), 1u);
  EXPECT_EQ(Reading(6000.0F), 0);
  ASSERT_TRUE(WaitForFrameLines(5));
}

// --- Stop ---

// Also where the thread has not come to wait yet, which it then says.
TEST_F(NaturalColorAdjustAlgorithmTest, Stop_Idle) {
  Start();
  Stop();
  auto log = notebook.LogNow();
  std::erase(log,
             testsupport::LogLine{1, L"CctDimming quit2(NaturalColorAdjustAlgorithm::CctDimming)"});
  EXPECT_EQ(log, (std::vector<testsupport::LogLine>{
                     {1,
                      L"StopNaturalColorAdjustAlgorithm Success("
                      L"NaturalColorAdjustAlgorithm::StopNaturalColorAdjustAlgorithm)"}}));
  EXPECT_EQ(notebook.CountCalls("PlatformFini"), 1u);
  EXPECT_FALSE(notebook.platform.initialised);
}

TEST_F(NaturalColorAdjustAlgorithmTest, Stop_InTheMiddleOfADimming) {
  dataIn.frameCount = 1000000;
  dataIn.frameTime = 1;
  Start();
  Reading(6000.0F);
  ASSERT_TRUE(WaitForFrameLines(2));
  Stop();
  EXPECT_LOGGED(1, L"CctDimming quit2(NaturalColorAdjustAlgorithm::CctDimming)");
  EXPECT_LOGGED(1,
                L"StopNaturalColorAdjustAlgorithm Success("
                L"NaturalColorAdjustAlgorithm::StopNaturalColorAdjustAlgorithm)");
  const size_t frames = Frames().size();
  Reading(8000.0F);
  EXPECT_EQ(Frames().size(), frames) << "nobody is there to deliver";
}

TEST_F(NaturalColorAdjustAlgorithmTest, Stop_WithoutAStart) {
  algorithm.StopNaturalColorAdjustAlgorithm();
  EXPECT_LOG({1,
              L"StopNaturalColorAdjustAlgorithm Success("
              L"NaturalColorAdjustAlgorithm::StopNaturalColorAdjustAlgorithm)"});
  EXPECT_EQ(notebook.CountCalls("PlatformFini"), 0u);
}

TEST_F(NaturalColorAdjustAlgorithmTest, Stop_Exception) {
  Start();
  notebook.ThrowFrom("PlatformFini", 1, "no panel");
  Stop();
  EXPECT_LOGGED(3,
                L"StopNaturalColorAdjustAlgorithm Exception.("
                L"NaturalColorAdjustAlgorithm::StopNaturalColorAdjustAlgorithm)");
  EXPECT_LOGGED(1,
                L"StopNaturalColorAdjustAlgorithm Success("
                L"NaturalColorAdjustAlgorithm::StopNaturalColorAdjustAlgorithm)");
}

// What the record does not set stays: the reference, and a dimming that was under way.
TEST_F(NaturalColorAdjustAlgorithmTest, Restart_KeepsItsMembers) {
  dataIn.frameCount = 1000000;
  dataIn.frameTime = 1;
  Start();
  Reading(6000.0F);
  ASSERT_TRUE(WaitForFrameLines(1));
  Stop();
  dataIn.frameCount = 4;
  Start();
  ASSERT_TRUE(LoggedWithin(notebook, 1,
                           L"frameIndex_ = 0, frameCount_ = 4, previousCct_ = 6000, tempTargetCct "
                           L"= 6000, cctVal_ = 6000, step_ = 0, isSetColorFail_ = 0("
                           L"NaturalColorAdjustAlgorithm::CctDimming)"))
      << "goes on to its target";
  Reading(6100.0F);
  EXPECT_EQ(CountLines(L"StartCct:isEnableCctDimming = 0,previousAmbientCct_ = 6000,"), 1u);
}

TEST_F(NaturalColorAdjustAlgorithmTest, Restart_WhileOffDeliversTheNeutralPointAgain) {
  SetStatus(0);
  StartAndKeepRecords();
  Stop();
  StartAndKeepRecords();
  EXPECT_EQ(Frames(), At({5000, 5000}));
}

}  // namespace
}  // namespace velora
