// VeloraAssistant.exe, run for real: by hand, and by the library.
#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "VeloraPlatform/SoftwarePanel.h"
#include "support/NotebookTest.h"
#include "support/StartProcess.h"
#include "virtualnotebook/HostedLibrary.h"
#include "virtualnotebook/tour/HelpersInTurn.h"

namespace scenarios {
namespace {

using ::testing::ElementsAre;

constexpr DWORD kShown = 0;
constexpr DWORD kRefused = 1;
constexpr DWORD kBadArguments = 2;

struct Ended {
  DWORD status;
  std::string output;  // of both streams
};

// Runs the helper with these arguments, up to its end.
Ended RunAssistant(const std::wstring& arguments) {
  SECURITY_ATTRIBUTES inherited{sizeof(inherited), nullptr, TRUE};
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  startup.dwFlags = STARTF_USESTDHANDLES;
  HANDLE output = nullptr;
  if (!CreatePipe(&output, &startup.hStdError, &inherited, 0) ||
      !SetHandleInformation(output, HANDLE_FLAG_INHERIT, 0)) {
    throw std::runtime_error("no pipe");
  }
  startup.hStdOutput = startup.hStdError;
  PROCESS_INFORMATION process{};
  const bool started =
      testsupport::StartProcess(L"VeloraAssistant.exe " + arguments, startup, process);
  CloseHandle(startup.hStdError);
  Ended ended{.status = STILL_ACTIVE, .output = {}};
  if (started) {
    char c = 0;
    for (DWORD read = 0; ReadFile(output, &c, 1, &read, nullptr) && read == 1;) {
      ended.output += c;
    }
    WaitForSingleObject(process.hProcess, INFINITE);
    GetExitCodeProcess(process.hProcess, &ended.status);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
  }
  CloseHandle(output);
  if (!started) {
    throw std::runtime_error("VeloraAssistant.exe can't be started");
  }
  return ended;
}

bool IsOneLine(const std::string& text) {
  return text.size() > 2 && std::ranges::count(text, '\n') == 1 && text.back() == '\n';
}

class Assistant : public ::testing::Test {
 protected:
  // Nothing else is on the panel at the end, for other tests.
  Assistant() { Clear(); }
  ~Assistant() override { Clear(); }

  softwarepanel::State Panel() const {
    const auto state = std::make_unique<softwarepanel::State>();
    panel_.Read(*state);
    return *state;
  }

  uint64_t Changes() const { return panel_.Sequence(); }

 private:
  void Clear() {
    panel_.Update([](softwarepanel::State& state) {
      state = {};
      return true;
    });
  }

  softwarepanel::SoftwarePanel panel_;
};

void ExpectColour(const Color3DInfo& shown, const Color3DInfo& expected) {
  EXPECT_EQ(shown.r, expected.r);
  EXPECT_EQ(shown.g, expected.g);
  EXPECT_EQ(shown.b, expected.b);
  EXPECT_EQ(shown.colorBlue, expected.colorBlue);
  EXPECT_EQ(shown.protectValue, expected.protectValue);
}

TEST_F(Assistant, ShowsTheFiveNumbers) {
  const struct {
    const wchar_t* arguments;
    Color3DInfo expected;
  } cases[] = {
      {L"1.000000 0.930000 0.870000 128 0.820000", {1, 0.93, 0.87, 128, 0.82}},
      {L"0 0 0 0 0", {0, 0, 0, 0, 0}},
      {L"1 1 1 255 1", {1, 1, 1, 255, 1}},
      {L"1e0 5e-1 .25 7 0.125", {1, 0.5, 0.25, 7, 0.125}},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(testsupport::Utf8(row.arguments));
    const Ended ended = RunAssistant(row.arguments);
    EXPECT_EQ(ended.status, kShown);
    EXPECT_EQ(ended.output, "");
    const softwarepanel::State panel = Panel();
    EXPECT_EQ(panel.temperatureKind, uint32_t{softwarepanel::kTemperature3D});
    ExpectColour(panel.temperature3D, row.expected);
    EXPECT_EQ(panel.initCount, 0u) << "the platform was not stopped";
  }
}

TEST_F(Assistant, LeavesThePanelToOthers) {
  ASSERT_EQ(RunAssistant(L"1 0.9 0.8 0 0").status, kShown);
  ASSERT_EQ(RunAssistant(L"0.5 0.6 0.7 0 0").status, kShown);
  ExpectColour(Panel().temperature3D, {0.5, 0.6, 0.7, 0, 0});
  EXPECT_EQ(Panel().has3DLut, 0u);
  EXPECT_EQ(Panel().hasGammaLut, 0u);
  EXPECT_EQ(Panel().hasMatrix, 0u);
}

TEST_F(Assistant, BadArgumentsTouchNothing) {
  const uint64_t changes = Changes();
  const wchar_t* const cases[] = {
      L"",
      L"1",
      L"1 1 1 0",
      L"1 1 1 0 0 0",
      L"one 1 1 0 0",
      L"1 1 1 zero 0",
      L"1x 1 1 0 0",
      L"1 0.9. 1 0 0",
      L"1 1 1 0x 0",
      L"1 1 1 0 0.5%",
      L"1 0,9 1 0 0",
      L"\"\" 1 1 0 0",
      L"\" 1\" 1 1 0 0",
      L"\"1 \" 1 1 0 0",
      L"+1 1 1 0 0",
      L"0x1 1 1 0 0",
      L"1 1 1 -1 0",
      L"1 1 1 0.5 0",
      L"1 1 1 4294967296 0",
      L"1e999 1 1 0 0",
      L"1 1 1 0 1e999",
      L"\xFF11 1 1 0 0",  // a digit, but a full-width one
  };
  for (const wchar_t* arguments : cases) {
    SCOPED_TRACE(testsupport::Utf8(arguments));
    const Ended ended = RunAssistant(arguments);
    EXPECT_EQ(ended.status, kBadArguments);
    EXPECT_TRUE(IsOneLine(ended.output)) << ended.output;
    EXPECT_TRUE(ended.output.starts_with("usage: VeloraAssistant ")) << ended.output;
  }
  EXPECT_EQ(Changes(), changes);
}

TEST_F(Assistant, ColoursThatThePlatformRefuses) {
  ASSERT_EQ(RunAssistant(L"1 0.9 0.8 5 0.5").status, kShown);
  const wchar_t* const cases[] = {
      L"1.000001 1 1 0 0", L"1 2 1 0 0",          L"1 1 1e300 0 0", L"-0.1 1 1 0 0",
      L"1 -1 1 0 0",       L"nan 1 1 0 0",        L"1 inf 1 0 0",   L"1 1 -inf 0 0",
      L"1 1 1 256 0",      L"1 1 1 4294967295 0", L"1 1 1 0 1.5",   L"1 1 1 0 nan",
  };
  for (const wchar_t* arguments : cases) {
    SCOPED_TRACE(testsupport::Utf8(arguments));
    const Ended ended = RunAssistant(arguments);
    EXPECT_EQ(ended.status, kRefused);
    EXPECT_TRUE(IsOneLine(ended.output)) << ended.output;
    EXPECT_TRUE(ended.output.starts_with("VeloraAssistant: the platform refused")) << ended.output;
    ExpectColour(Panel().temperature3D, {1, 0.9, 0.8, 5, 0.5});
    EXPECT_EQ(Panel().initCount, 0u);
  }
}

// --- By the library ---

class AssistantByLibrary : public Assistant {
 protected:
  // From 4000 K up to the neutral point, in numbers for a calculation by hand: 100 K more are 0.01
  // more of green and 0.02 more of blue.
  static constexpr CctAlgoInfo kCurve[] = {{.cct = 4000, .r = 1, .g = 0.8, .b = 0.6},
                                           {.cct = 6000, .r = 1, .g = 1, .b = 1}};
  static constexpr NatureColorDataIn kDataIn = {.frameCount = 4,
                                                .frameTime = 0,
                                                .dimmingThreshold = 100,
                                                .methodVersion = 1,
                                                .minLuma = 4200,
                                                .luminanceThreshold = 50,
                                                .monitorType = 0,
                                                .executionType = 0,
                                                .algoInfo = kCurve,
                                                .algoInfoCnt = 2};

  // What each frame, so far, had to show of green and blue; red is 1.
  void ExpectFrames(const std::vector<std::array<double, 2>>& expected) {
    const auto& shown = helpers_.Shown();
    ASSERT_EQ(shown.size(), expected.size());
    for (size_t i = 0; i < expected.size(); ++i) {
      SCOPED_TRACE("frame " + std::to_string(i + 1));
      EXPECT_EQ(shown[i][0], 1);
      EXPECT_EQ(shown[i][1], expected[i][0]);
      EXPECT_EQ(shown[i][2], expected[i][1]);
    }
    const Color3DInfo last = Panel().temperature3D;
    EXPECT_EQ(last.g, expected.back()[0]);
    EXPECT_EQ(last.b, expected.back()[1]);
  }

  void Report(float kelvin, size_t frames) {
    const size_t before = CountFrames();
    library.notebook.ReportLight(
        {virtualnotebook::SensorFloat(300), virtualnotebook::SensorFloat(kelvin)});
    EXPECT_TRUE(testsupport::WaitUntil([&] { return CountFrames() >= before + frames; }, 60000));
  }

  std::vector<std::wstring> CommandLines() const {
    std::vector<std::wstring> lines;
    library.notebook.Locked([&] {
      for (const auto& process : library.notebook.startedProcesses) {
        lines.push_back(process.commandLine);
      }
    });
    return lines;
  }

  virtualnotebook::HostedLibrary library;

 private:
  size_t CountFrames() const {
    const auto log = library.notebook.LogNow();
    return static_cast<size_t>(std::ranges::count_if(
        log, [](const auto& line) { return line.text.starts_with(L"frameIndex_ = "); }));
  }

  testsupport::ScopedKey settings_{HKEY_LOCAL_MACHINE, L"SOFTWARE\\Norvex\\Velora"};
  tour::HelpersInTurn helpers_{library.notebook, false};
};

TEST_F(AssistantByLibrary, EachFrameIsShownByAHelperOfItsOwn) {
  library.SetNatureColorStatus(1);
  library.InitNatureColor(&kDataIn);
  Report(5400, 5);  // from 5000 K, four times 100 K, and the target
  library.FiniNatureColor();
  EXPECT_THAT(CommandLines(), ElementsAre(L"nouse 1.000000 0.910000 0.820000 0 0.000000",
                                          L"nouse 1.000000 0.920000 0.840000 0 0.000000",
                                          L"nouse 1.000000 0.930000 0.860000 0 0.000000",
                                          L"nouse 1.000000 0.940000 0.880000 0 0.000000",
                                          L"nouse 1.000000 0.940000 0.880000 0 0.000000"));
  ExpectFrames({{0.91, 0.82}, {0.92, 0.84}, {0.93, 0.86}, {0.94, 0.88}, {0.94, 0.88}});
  EXPECT_TRUE(library.notebook.platform.temperatures3D.empty()) << "not by this process";
}

TEST_F(AssistantByLibrary, SwitchedOffAtTheStartTheNeutralPointIsShown) {
  library.SetNatureColorStatus(0);
  library.InitNatureColor(&kDataIn);
  library.FiniNatureColor();
  EXPECT_THAT(CommandLines(), ElementsAre(L"nouse 1.000000 1.000000 1.000000 0 0.000000"));
  ExpectFrames({{1, 1}});
}

TEST_F(AssistantByLibrary, AFrameThatTheHelperIsNotStartedForLeavesThePanel) {
  library.SetNatureColorStatus(1);
  library.InitNatureColor(&kDataIn);
  library.notebook.FailCall("CoreKit::LoadUserProcessByServerPriviledge", 3, 1);
  Report(5400, 3);
  ExpectFrames({{0.91, 0.82}, {0.92, 0.84}});
  Report(5400, 5);  // no change: the attempt is made again, from 5200 K by 50 K
  library.FiniNatureColor();
  ExpectFrames({{0.91, 0.82},
                {0.92, 0.84},
                {0.925, 0.85},
                {0.93, 0.86},
                {0.935, 0.87},
                {0.94, 0.88},
                {0.94, 0.88}});
}

}  // namespace
}  // namespace scenarios
