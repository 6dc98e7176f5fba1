#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "naturalcolor/AdjustTest.h"
#include "settings/EyeProtectReg.h"
#include "settings/WhitePointReg.h"

namespace velora {
namespace {

using testsupport::DwordValue;
using testsupport::LoggedWithin;
using virtualnotebook::Call;
using virtualnotebook::Session;
using virtualnotebook::StartedProcess;

// This program's directory, with the last backslash.
std::wstring OwnDirectory() {
  wchar_t path[MAX_PATH] = {};
  GetModuleFileNameW(nullptr, path, MAX_PATH);
  std::wstring directory(path);
  directory.resize(directory.rfind(L'\\') + 1);
  return directory;
}

// The arguments of the function's calls, one call a line, parted by blanks.
std::vector<std::wstring> ArgumentsOf(const virtualnotebook::Notebook& notebook,
                                      const std::string& function) {
  std::vector<std::wstring> lines;
  for (const Call& call : notebook.CallsNow()) {
    if (call.function == function) {
      std::wstring line;
      for (const std::wstring& argument : call.arguments) {
        line += (line.empty() ? L"" : L" ") + argument;
      }
      lines.push_back(line);
    }
  }
  return lines;
}

class DeliveryTest : public AdjustTest {
 protected:
  int Reading(float cct) { return algorithm.StartCctDimming(cct, 300.0F); }

  // One frame to the reading, and the line of it.
  void Deliver(float cct) {
    const size_t lines = CountLines(L"frameIndex_ = ");
    Reading(cct);
    ASSERT_TRUE(WaitForFrameLines(lines + 1));
  }
};

// --- Sessions ---

class ActiveSessionTest : public DeliveryTest {
 protected:
  ActiveSessionTest() { dataIn.frameCount = -1; }  // the first frame is the last

  // Whether a frame was tried.
  bool IsFound() {
    Start();
    Deliver(6000.0F);
    return notebook.CountCalls("PlatformSet3DColorTemperature") == 1;
  }
};

TEST_F(ActiveSessionTest, TheFirst) {
  notebook.sessions = {{3, WTSActive}, {4, WTSActive}};
  EXPECT_TRUE(IsFound());
  EXPECT_EQ(ArgumentsOf(notebook, "WTSEnumerateSessionsW"),
            std::vector<std::wstring>{L"null 0 1 pointer pointer"});
  EXPECT_EQ(ArgumentsOf(notebook, "WTSQuerySessionInformationW"),
            std::vector<std::wstring>{L"null 3 8 pointer pointer"})
      << "nobody is asked behind it";
}

TEST_F(ActiveSessionTest, EachIsAskedInOrder) {
  notebook.sessions = {{0, WTSDisconnected}, {7, WTSConnected}, {2, WTSActive}, {5, WTSListen}};
  EXPECT_TRUE(IsFound());
  EXPECT_EQ(ArgumentsOf(notebook, "WTSQuerySessionInformationW"),
            (std::vector<std::wstring>{L"null 0 8 pointer pointer", L"null 7 8 pointer pointer",
                                       L"null 2 8 pointer pointer"}));
  EXPECT_EQ(notebook.CountCalls("WTSFreeMemory"), 3u);
}

TEST_F(ActiveSessionTest, NotOneIsActive) {
  notebook.sessions = {{0, WTSConnected},    {1, WTSConnectQuery}, {2, WTSShadow},
                       {3, WTSDisconnected}, {4, WTSIdle},         {5, WTSListen},
                       {6, WTSReset},        {7, WTSDown},         {8, WTSInit}};
  EXPECT_FALSE(IsFound());
  EXPECT_LOGGED(3,
                L"can not FoundActiveSession(NaturalColorAdjustAlgorithm::IsFoundActiveSession)");
}

TEST_F(ActiveSessionTest, None) {
  notebook.sessions = {};
  EXPECT_FALSE(IsFound());
  EXPECT_LOGGED(3,
                L"can not FoundActiveSession(NaturalColorAdjustAlgorithm::IsFoundActiveSession)");
}

TEST_F(ActiveSessionTest, CannotBeListed) {
  notebook.FailCall("WTSEnumerateSessionsW", 1, FALSE, ERROR_ACCESS_DENIED);
  EXPECT_FALSE(IsFound());
  EXPECT_LOGGED(3, L"enumerateSessions error(NaturalColorAdjustAlgorithm::IsFoundActiveSession)");
  EXPECT_NOT_LOGGED(L"can not FoundActiveSession");
  EXPECT_EQ(notebook.CountCalls("WTSQuerySessionInformationW"), 0u);
}

TEST_F(ActiveSessionTest, OneThatDoesNotAnswerIsPassedOver) {
  notebook.sessions = {{1, WTSActive}, {2, WTSActive}};
  notebook.FailCall("WTSQuerySessionInformationW", 1, FALSE, ERROR_ACCESS_DENIED);
  EXPECT_TRUE(IsFound());
  EXPECT_EQ(notebook.CountCalls("WTSFreeMemory"), 1u);
}

TEST_F(ActiveSessionTest, NotOneAnswers) {
  notebook.sessions = {{1, WTSActive}, {2, WTSActive}};
  notebook.FailCall("WTSQuerySessionInformationW", 0, FALSE, ERROR_ACCESS_DENIED);
  EXPECT_FALSE(IsFound());
  EXPECT_LOGGED(3,
                L"can not FoundActiveSession(NaturalColorAdjustAlgorithm::IsFoundActiveSession)");
}

// The states come back; the list never does, one at each frame.
TEST_F(ActiveSessionTest, TheListIsLeftToTheProcess) {
  dataIn.frameCount = 9;
  Start();
  Reading(6000.0F);
  ASSERT_TRUE(WaitForFrameLines(10));
  notebook.Locked([&] { notebook.sessions = {{1, WTSIdle}}; });
  Deliver(7000.0F);
  EXPECT_EQ(notebook.CountOpen("WTSEnumerateSessionsW"), 11u);
  EXPECT_EQ(notebook.CountOpen("WTSQuerySessionInformationW"), 0u);
}

// --- This process ---

TEST_F(DeliveryTest, Platform_TheRecordGoesThroughTheExport) {
  dataIn.frameCount = -1;
  Start();
  Deliver(7048.0F);  // 0.75, 0.625
  EXPECT_LOGGED(
      1, L"colorInfo:r:1, g:0.75, b:0.625, colorBlue:0, protectValue:0(Set3DColorTemperature)");
  EXPECT_EQ(Printer(), (testsupport::RegistryValues{{L"SensorCCT", DwordValue(7048)},
                                                    {L"r", Number(1)},
                                                    {L"g", Number(0.75)},
                                                    {L"b", Number(0.625)}}));
}

TEST_F(DeliveryTest, Platform_RefusesWithItsCode) {
  dataIn.frameCount = -1;
  Start();
  notebook.FailCall("PlatformSet3DColorTemperature", 1, static_cast<uint64_t>(-3));
  Deliver(6000.0F);
  EXPECT_LOGGED(3,
                L"Set3DColorTemperature error: -3("
                L"NaturalColorAdjustAlgorithm::SetColorTemperByPlatform)");
  EXPECT_EQ(notebook.CountCalls("CoreKit::LoadUserProcessByServerPriviledge"), 0u);
}

// --- The helper ---

constexpr wchar_t kAssistantCount[] =
    L"VeloraAssistant.exe process count =%(NaturalColorAdjustAlgorithm::"
    L"SetColorTemperByVeloraAssistant)";

std::wstring CountLine(int count) {
  std::wstring line = kAssistantCount;
  return line.replace(line.find(L'%'), 1, std::to_wstring(count));
}

class AssistantTest : public DeliveryTest {
 protected:
  AssistantTest() {
    dataIn.executionType = 0;
    dataIn.frameCount = -1;
  }

  std::vector<StartedProcess> Started() const {
    std::vector<StartedProcess> started;
    notebook.Locked([&] { started = notebook.startedProcesses; });
    return started;
  }

  // Whether the one frame started the helper.
  bool DeliverOne() {
    Start();
    Deliver(6024.0F);
    return Started().size() == 1;
  }
};

TEST_F(AssistantTest, EachFrameStartsIt) {
  dataIn.frameCount = 4;
  Start();
  Reading(9096.0F);
  ASSERT_TRUE(WaitForFrameLines(5));
  const std::wstring path = OwnDirectory() + L"VeloraAssistant.exe";
  EXPECT_EQ(Started(),
            (std::vector<StartedProcess>{{path, L"nouse 1.000000 0.875000 0.812500 0 0.000000"},
                                         {path, L"nouse 1.000000 0.750000 0.625000 0 0.000000"},
                                         {path, L"nouse 1.000000 0.625000 0.437500 0 0.000000"},
                                         {path, L"nouse 1.000000 0.500000 0.250000 0 0.000000"},
                                         {path, L"nouse 1.000000 0.500000 0.250000 0 0.000000"}}));
  EXPECT_EQ(notebook.CountCalls("PlatformSet3DColorTemperature"), 0u);
  EXPECT_LOGGED(1, CountLine(0));
}

TEST_F(AssistantTest, AnyOtherExecutionTypeTakesIt) {
  dataIn.executionType = 2;
  EXPECT_TRUE(DeliverOne());
}

// The fused record in its order, six decimals, rounded.
TEST_F(AssistantTest, CommandLine_TheWholeRecord) {
  SetFeatureSupport(FEATURE_TYPE_TEMPERATURE, 1);
  SetFeatureSupport(FEATURE_TYPE_EYE_PROTECT, 1);
  SetEyeProtectStatus(1);
  SetEyeProtectValue(180);
  SetRhineValue(0.7654321);
  const ColorTemperatureConfig centre = {80, 80};
  SetColorTemperatureConfig(&centre);
  curve = {{904.0F, 0.1234567, 0.7654321, 1}, {9096.0F, 0.1234567, 0.7654321, 1}};
  ASSERT_TRUE(DeliverOne());
  EXPECT_EQ(Started()[0].commandLine, L"nouse 0.123457 0.765432 1.000000 255 0.765432");
}

// 1023 characters are taken, 1024 are one too many for the terminator. Numbers as long as settings
// can be bring it there.
TEST_F(AssistantTest, CommandLine_Limit) {
  SetFeatureSupport(FEATURE_TYPE_WHITEPOINT, 1);
  SetWhitePointStatus(1);
  WhitePointReg().SetWhitePointRGB(1.5e250, 1.5e250, 1.5e250);
  SetFeatureSupport(FEATURE_TYPE_TEMPERATURE, 1);
  SetFeatureSupport(FEATURE_TYPE_EYE_PROTECT, 1);
  const ColorTemperatureConfig centre = {80, 80};
  SetColorTemperatureConfig(&centre);
  SetEyeProtectValue(180);
  SetRhineValue(1.5e230);
  curve = {{904.0F, 1, 1, 1}, {9096.0F, 1, 1, 1}};
  // "nouse ", three gains of 251 digits, ".000000" and a blank each, "0 ", 231 digits, ".000000".
  ASSERT_TRUE(DeliverOne());
  EXPECT_EQ(Started()[0].commandLine.size(), 1023u);
  SetRhineValue(1.5e231);
  notebook.ForgetRecords();
  Deliver(7000.0F);
  EXPECT_EQ(Started().size(), 1u);
  EXPECT_LOGGED(3,
                L"swprintf_s error(NaturalColorAdjustAlgorithm::SetColorTemperByVeloraAssistant)");
  EXPECT_EQ(notebook.CountCalls("OpenSCManagerW"), 0u) << "ahead of the service";
}

TEST_F(AssistantTest, Path_IsTheHosts) {
  ASSERT_TRUE(DeliverOne());
  EXPECT_EQ(ArgumentsOf(notebook, "GetModuleFileNameW"),
            std::vector<std::wstring>{L"null pointer 1024"});
}

TEST_F(AssistantTest, Path_NoDirectory) {
  notebook.FailCall("GetModuleFileNameW", 0, 0, ERROR_NOT_ENOUGH_MEMORY);
  EXPECT_FALSE(DeliverOne());
  EXPECT_NOT_LOGGED(L"SetColorTemperByVeloraAssistant");
  EXPECT_EQ(notebook.CountCalls("OpenSCManagerW"), 0u);
  EXPECT_EQ(CountLines(L"frameIndex_ = 0, frameCount_ = -1, previousCct_ = 5000,"), 1u);
}

TEST_F(AssistantTest, TenAreRunning_AnEleventhIsStarted) {
  notebook.processes.assign(10, L"VeloraAssistant.exe");
  EXPECT_TRUE(DeliverOne());
  EXPECT_LOGGED(1, CountLine(10));
}

TEST_F(AssistantTest, ElevenAreRunning_TheFrameFails) {
  notebook.processes.assign(11, L"VeloraAssistant.exe");
  EXPECT_FALSE(DeliverOne());
  EXPECT_LOGGED(1, CountLine(11));
  EXPECT_LOGGED(2,
                L"VeloraAssistant.exe process count >10 no start veloraassistand.exe("
                L"NaturalColorAdjustAlgorithm::SetColorTemperByVeloraAssistant)");
  EXPECT_EQ(Natural()[L"SensorColor"], Number(5000)) << "put back";
  notebook.Locked([&] { notebook.processes.pop_back(); });
  Deliver(6025.0F);
  EXPECT_EQ(Started().size(), 1u) << "the next reading tries again";
}

TEST_F(AssistantTest, OtherProcessesAreNotCounted) {
  notebook.processes.assign(11, L"veloraassistant.exe");
  notebook.processes.insert(notebook.processes.end(), 11, L"VELORAASSISTANT.EXE");
  notebook.processes.insert(notebook.processes.end(), 11, L"VeloraAssistant.ex");
  notebook.processes.insert(notebook.processes.end(), 11, L"VeloraAssistant.exe2");
  notebook.processes.push_back(L"VeloraAssistant.exe");
  EXPECT_TRUE(DeliverOne());
  EXPECT_LOGGED(1, CountLine(1));
}

TEST_F(AssistantTest, ProcessesCannotBeListed_NoneCounts) {
  notebook.processes.assign(11, L"VeloraAssistant.exe");
  notebook.FailCall("CreateToolhelp32Snapshot", 1,
                    static_cast<uint64_t>(reinterpret_cast<uintptr_t>(INVALID_HANDLE_VALUE)));
  EXPECT_TRUE(DeliverOne());
  EXPECT_LOGGED(1, CountLine(0));
  EXPECT_EQ(notebook.CountCalls("Process32FirstW"), 0u);
}

TEST_F(AssistantTest, ProcessesAreListedByASnapshotThatIsClosed) {
  notebook.processes.assign(3, L"VeloraAssistant.exe");
  EXPECT_TRUE(DeliverOne());
  EXPECT_EQ(ArgumentsOf(notebook, "CreateToolhelp32Snapshot"), std::vector<std::wstring>{L"2 0"});
  EXPECT_EQ(notebook.CountOpen("CreateToolhelp32Snapshot"), 0u);
}

TEST_F(AssistantTest, CannotBeStarted) {
  notebook.FailCall("CoreKit::LoadUserProcessByServerPriviledge", 1, 1);
  EXPECT_FALSE(DeliverOne());
  EXPECT_LOGGED(3,
                L"LoadUserProcessByServerPriviledge error("
                L"NaturalColorAdjustAlgorithm::SetColorTemperByVeloraAssistant)");
  EXPECT_EQ(CountLines(L"frameIndex_ = 0, frameCount_ = -1, previousCct_ = 5000,"), 1u);
}

// --- The service ---

TEST_F(AssistantTest, Service_IsAskedAsTold) {
  ASSERT_TRUE(DeliverOne());
  EXPECT_EQ(ArgumentsOf(notebook, "OpenSCManagerW"),
            std::vector<std::wstring>{L"null null 983103"});  // 0xF003F
  EXPECT_EQ(ArgumentsOf(notebook, "OpenServiceW"),
            std::vector<std::wstring>{L"pointer Winmgmt 12"});
  EXPECT_EQ(notebook.CountOpen("OpenSCManagerW"), 0u);
  EXPECT_EQ(notebook.CountOpen("OpenServiceW"), 0u);
}

// Each counts as a service that is down; nothing stays open and nothing is logged.
TEST_F(AssistantTest, Service_CannotBeAsked) {
  for (const char* const function : {"OpenSCManagerW", "OpenServiceW", "QueryServiceStatus"}) {
    SCOPED_TRACE(function);
    notebook.FailCall(function, 1, 0, ERROR_ACCESS_DENIED);
    EXPECT_FALSE(DeliverOne());
    EXPECT_EQ(notebook.CountOpen("OpenSCManagerW"), 0u);
    EXPECT_EQ(notebook.CountOpen("OpenServiceW"), 0u);
    EXPECT_NOT_LOGGED(L"SetColorTemperByVeloraAssistant");
    Stop();
    notebook.ClearFaults();
    Store(kNaturalColorKey, L"SensorColor", Number(5000));
  }
}

TEST_F(AssistantTest, Service_OnlyRunningCounts) {
  const DWORD states[] = {SERVICE_STOPPED,          SERVICE_START_PENDING, SERVICE_STOP_PENDING,
                          SERVICE_CONTINUE_PENDING, SERVICE_PAUSE_PENDING, SERVICE_PAUSED};
  for (const DWORD state : states) {
    notebook.services[L"Winmgmt"] = state;
    EXPECT_FALSE(DeliverOne()) << state;
    Stop();
  }
  notebook.services.erase(L"Winmgmt");
  EXPECT_FALSE(DeliverOne());
}

class WaitWinmgmtTest : public AssistantTest {
 protected:
  WaitWinmgmtTest() { dataIn.frameCount = 4; }

  void SetService(DWORD state) {
    notebook.Locked([&] { notebook.services[L"Winmgmt"] = state; });
  }
  size_t Looks() const { return notebook.CountCalls("OpenSCManagerW"); }
  void WaitForLooks(size_t count) const {
    ASSERT_TRUE(testsupport::WaitUntil([&] { return Looks() >= count; }));
  }
};

// A look each two seconds; the dimming goes on to its target by steps of its own.
TEST_F(WaitWinmgmtTest, ResumesWhenTheServiceIsThere) {
  SetService(SERVICE_STOPPED);
  Start();
  const uint64_t start = GetTickCount64();
  Deliver(9096.0F);
  EXPECT_EQ(Looks(), 1u);
  EXPECT_EQ(CountLines(L"frameIndex_ = 0, frameCount_ = 4, previousCct_ = 5000, tempTargetCct = "
                       L"9096, cctVal_ = 6024, step_ = 1024, isSetColorFail_ = 1("),
            1u);
  WaitForLooks(2);
  EXPECT_GE(GetTickCount64() - start, 1900u);
  EXPECT_EQ(Started().size(), 0u);
  SetService(SERVICE_RUNNING);
  WaitForLooks(3);
  EXPECT_GE(GetTickCount64() - start, 3900u);
  ASSERT_TRUE(WaitForFrameLines(6));
  EXPECT_EQ(Started().size(), 5u);
  EXPECT_EQ(Started().back().commandLine, L"nouse 1.000000 0.500000 0.250000 0 0.000000");
}

// In the middle of a dimming: from where it stopped.
TEST_F(WaitWinmgmtTest, ServiceStopsInTheMiddle) {
  Start();
  int frames = 0;
  notebook.onCall = [&](const Call& call) {
    if (call.function == "WTSEnumerateSessionsW" && ++frames == 3) {
      SetService(SERVICE_STOPPED);
    }
  };
  Reading(9096.0F);
  ASSERT_TRUE(WaitForFrameLines(3));
  EXPECT_EQ(Started().size(), 2u);
  EXPECT_EQ(Natural()[L"SensorColor"], Number(7048));
  SetService(SERVICE_RUNNING);
  ASSERT_TRUE(WaitForFrameLines(8));
  EXPECT_EQ(Started().size(), 7u);
  EXPECT_EQ(Started()[2].commandLine, L"nouse 1.000000 0.687500 0.531250 0 0.000000")
      << "7048 + 512";
}

// Natural colour was switched off meanwhile: the wait ends and nothing moves.
TEST_F(WaitWinmgmtTest, WhileOffNothingMoves) {
  SetService(SERVICE_STOPPED);
  Start();
  Deliver(9096.0F);
  algorithm.SyncNatureColorStatus(0);
  ASSERT_TRUE(WaitForFrameLines(2));
  EXPECT_EQ(Looks(), 2u) << "the frame of switching off failed as well";
  SetService(SERVICE_RUNNING);
  WaitForLooks(3);
  // Its end shows in the next failure: it begins a wait anew.
  SetService(SERVICE_STOPPED);
  algorithm.SyncNatureColorStatus(0);
  ASSERT_TRUE(WaitForFrameLines(3));
  EXPECT_EQ(CountLines(L"frameIndex_ = "), 3u);
  EXPECT_EQ(Started().size(), 0u);
}

// One wait at a time; behind its end a new one begins.
TEST_F(WaitWinmgmtTest, OneThreadAtATime) {
  std::set<DWORD> threads;
  notebook.onCall = [&](const Call& call) {
    if (call.function == "OpenSCManagerW") {
      notebook.Locked([&] { threads.insert(GetCurrentThreadId()); });
    }
  };
  SetService(SERVICE_STOPPED);
  Start();
  Deliver(9096.0F);
  Deliver(9000.0F);
  Deliver(8900.0F);
  WaitForLooks(4);  // three frames and the wait
  EXPECT_EQ(threads.size(), 2u) << "the dimming thread and one that waits";
  SetService(SERVICE_RUNNING);
  WaitForLooks(5);
  ASSERT_TRUE(WaitForFrameLines(3 + 5));
  SetService(SERVICE_STOPPED);
  const size_t looks = Looks();
  Deliver(5000.0F);
  WaitForLooks(looks + 2);
  EXPECT_EQ(threads.size(), 3u) << "another one";
}

// A frame that finds the service ends the wait.
TEST_F(WaitWinmgmtTest, AFrameThatFindsTheServiceEndsTheWait) {
  SetService(SERVICE_STOPPED);
  Start();
  Deliver(9096.0F);
  SetService(SERVICE_RUNNING);
  const uint64_t start = GetTickCount64();
  Reading(9000.0F);
  ASSERT_TRUE(WaitForFrameLines(6));
  EXPECT_EQ(Started().size(), 5u);
  EXPECT_LT(GetTickCount64() - start, 1500u) << "without waiting for its look";
  SetService(SERVICE_STOPPED);
  Deliver(5000.0F);
  Stop();
  EXPECT_LT(GetTickCount64() - start, 1900u) << "neither the new wait nor the stop waits for it";
}

TEST_F(WaitWinmgmtTest, StopEndsTheWait) {
  SetService(SERVICE_STOPPED);
  Start();
  Deliver(9096.0F);
  const uint64_t start = GetTickCount64();
  Stop();
  EXPECT_LT(GetTickCount64() - start, 2500u) << "a look at most";
  const size_t looks = Looks();
  EXPECT_EQ(looks, 1u);
}

}  // namespace
}  // namespace velora
