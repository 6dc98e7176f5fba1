#include "periphery/MonitorExtendMode.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "support/NotebookTest.h"

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using virtualnotebook::DisplayTopology;

namespace {

constexpr wchar_t kEntered[] =
    L"3 enter SetMonitorExtendMode!(MonitorExtendMode::SetMonitorExtendMode)";
constexpr wchar_t kSucceeded[] =
    L"3 SetMonitorExtendMode success!(MonitorExtendMode::SetMonitorExtendMode)";

// Elements are told apart by their ids: first, first + 1, ...
DisplayTopology Topology(UINT32 pathCount, UINT32 modeCount, UINT32 first) {
  DisplayTopology topology;
  for (UINT32 i = 0; i < pathCount; ++i) {
    DISPLAYCONFIG_PATH_INFO path{};
    path.sourceInfo.id = first + i;
    path.targetInfo.id = first + i + 50;
    path.flags = DISPLAYCONFIG_PATH_ACTIVE;
    topology.paths.push_back(path);
  }
  for (UINT32 i = 0; i < modeCount; ++i) {
    DISPLAYCONFIG_MODE_INFO mode{};
    mode.id = first + i;
    topology.modes.push_back(mode);
  }
  return topology;
}

class MonitorExtendModeTest : public testsupport::NotebookTest {
 protected:
  MonitorExtendModeTest() { notebook.sleeps = false; }

  void Arrange(const DisplayTopology& before, const DisplayTopology& after) {
    notebook.topology = before;
    notebook.extendedTopology = after;
  }

  // The second logger's lines: level and text.
  std::vector<std::wstring> Lines() const {
    std::vector<std::wstring> lines;
    for (const auto& call : notebook.calls) {
      if (call.function == "NxLogger::Log") {
        lines.push_back(call.arguments[1] + L" " + call.arguments[2]);
      }
    }
    return lines;
  }
  static std::vector<std::wstring> SizeLines(const wchar_t* paths, const wchar_t* pathsNew,
                                             const wchar_t* modes, const wchar_t* modesNew) {
    const auto line = [](const std::wstring& list, const wchar_t* size) {
      return L"3 " + list + L".size()" + size + L"(MonitorExtendMode::SetMonitorExtendMode)";
    };
    return {kEntered, line(L"dispPathInfos", paths), line(L"dispPathInfosNew", pathsNew),
            line(L"dispModeInfos", modes), line(L"dispModeInfosNew", modesNew)};
  }

  std::vector<std::string> SystemCalls() const {
    std::vector<std::string> texts;
    for (const auto& call : notebook.calls) {
      if (call.function.find("DisplayConfig") != call.function.npos || call.function == "Sleep") {
        texts.push_back(testing::PrintToString(call));
      }
    }
    return texts;
  }

  std::vector<UINT32> PathIds() const {
    std::vector<UINT32> ids;
    for (const auto& path : notebook.topology.paths) ids.push_back(path.sourceInfo.id);
    return ids;
  }
  std::vector<UINT32> ModeIds() const {
    std::vector<UINT32> ids;
    for (const auto& mode : notebook.topology.modes) ids.push_back(mode.id);
    return ids;
  }

  const velora::MonitorExtendMode extend{};
};

TEST_F(MonitorExtendModeTest, SetMonitorExtendMode_TheFormerFirstPathIsWrittenBack) {
  Arrange(Topology(2, 4, 10), Topology(2, 4, 20));
  EXPECT_TRUE(extend.SetMonitorExtendMode());
  EXPECT_THAT(PathIds(), ElementsAre(10, 21));
  EXPECT_THAT(ModeIds(), ElementsAre(20, 21, 22, 23));
  EXPECT_THAT(Lines(), ElementsAre(kEntered, kSucceeded));
  EXPECT_LOG();
}

TEST_F(MonitorExtendModeTest, SetMonitorExtendMode_TheFirstPathIsCopiedWhole) {
  DisplayTopology before = Topology(2, 4, 10);
  DISPLAYCONFIG_PATH_INFO& first = before.paths.front();
  for (size_t i = 0; i < sizeof first; ++i) {
    reinterpret_cast<unsigned char*>(&first)[i] = static_cast<unsigned char>(i + 1);
  }
  Arrange(before, Topology(2, 4, 20));
  EXPECT_TRUE(extend.SetMonitorExtendMode());
  EXPECT_EQ(memcmp(&notebook.topology.paths.front(), &first, sizeof first), 0);
}

TEST_F(MonitorExtendModeTest, SetMonitorExtendMode_TheCallsInTheirOrder) {
  Arrange(Topology(3, 5, 10), Topology(3, 5, 20));
  EXPECT_TRUE(extend.SetMonitorExtendMode());
  const std::vector<std::string> expected = {
      "GetDisplayConfigBufferSizes(66, pointer, pointer)",
      "QueryDisplayConfig(66, pointer, pointer, pointer, pointer, null)",
      "SetDisplayConfig(0, null, 0, null, 132)",
      "Sleep(3000)",
      "GetDisplayConfigBufferSizes(66, pointer, pointer)",
      "QueryDisplayConfig(66, pointer, pointer, pointer, pointer, null)",
      "SetDisplayConfig(3, pointer, 5, pointer, 132768)"};
  EXPECT_THAT(SystemCalls(), ElementsAreArray(expected));
}

TEST_F(MonitorExtendModeTest, SetMonitorExtendMode_TheSmallestListsThatAreWrittenBack) {
  Arrange(Topology(2, 3, 10), Topology(2, 3, 20));
  EXPECT_TRUE(extend.SetMonitorExtendMode());
}

TEST_F(MonitorExtendModeTest, SetMonitorExtendMode_OnePath) {
  Arrange(Topology(1, 4, 10), Topology(1, 4, 20));
  EXPECT_FALSE(extend.SetMonitorExtendMode());
  EXPECT_THAT(Lines(), ElementsAreArray(SizeLines(L"1", L"1", L"4", L"4")));
  EXPECT_EQ(notebook.CountCalls("QueryDisplayConfig"), 2u) << "the new arrangement is read";
  EXPECT_EQ(notebook.CountCalls("SetDisplayConfig"), 1u);
  EXPECT_THAT(PathIds(), ElementsAre(20)) << "the switch stays";
}

TEST_F(MonitorExtendModeTest, SetMonitorExtendMode_TwoModes) {
  Arrange(Topology(2, 2, 10), Topology(2, 2, 20));
  EXPECT_FALSE(extend.SetMonitorExtendMode());
  EXPECT_THAT(Lines(), ElementsAreArray(SizeLines(L"2", L"2", L"2", L"2")));
  EXPECT_EQ(notebook.CountCalls("SetDisplayConfig"), 1u);
}

TEST_F(MonitorExtendModeTest, SetMonitorExtendMode_AnotherNumberOfPaths) {
  for (const UINT32 after : {2u, 4u}) {
    notebook.ForgetRecords();
    Arrange(Topology(3, 6, 10), Topology(after, 6, 20));
    EXPECT_FALSE(extend.SetMonitorExtendMode());
    EXPECT_THAT(Lines(),
                ElementsAreArray(SizeLines(L"3", std::to_wstring(after).c_str(), L"6", L"6")));
  }
}

TEST_F(MonitorExtendModeTest, SetMonitorExtendMode_AnotherNumberOfModes) {
  for (const UINT32 after : {3u, 5u}) {
    notebook.ForgetRecords();
    Arrange(Topology(2, 4, 10), Topology(2, after, 20));
    EXPECT_FALSE(extend.SetMonitorExtendMode());
    EXPECT_THAT(Lines(),
                ElementsAreArray(SizeLines(L"2", L"2", L"4", std::to_wstring(after).c_str())));
  }
}

TEST_F(MonitorExtendModeTest, SetMonitorExtendMode_NothingIsConnected) {
  Arrange({}, {});
  EXPECT_FALSE(extend.SetMonitorExtendMode());
  EXPECT_THAT(Lines(), ElementsAreArray(SizeLines(L"0", L"0", L"0", L"0")));
}

// The lists keep what the size query said, and so does what is written back.
TEST_F(MonitorExtendModeTest, SetMonitorExtendMode_FewerElementsThanAnnounced) {
  notebook.topologySlack = 2;
  Arrange(Topology(1, 2, 10), Topology(1, 2, 20));
  EXPECT_TRUE(extend.SetMonitorExtendMode());
  EXPECT_THAT(PathIds(), ElementsAre(10, 0, 0));
  EXPECT_THAT(ModeIds(), ElementsAre(20, 21, 0, 0));
}

TEST_F(MonitorExtendModeTest, SetMonitorExtendMode_AFailedFirstReadChangesNothing) {
  for (const char* function : {"GetDisplayConfigBufferSizes", "QueryDisplayConfig"}) {
    notebook.ForgetRecords();
    notebook.ClearFaults();
    Arrange(Topology(2, 4, 10), Topology(2, 4, 20));
    notebook.FailCall(function, 1, ERROR_GEN_FAILURE);
    EXPECT_FALSE(extend.SetMonitorExtendMode());
    EXPECT_THAT(
        Lines(),
        ElementsAre(kEntered,
                    L"4 " + std::wstring(function, function + strlen(function)) +
                        L" failed!31(MonitorExtendMode::GetDisplayConfigData)",
                    L"3 GetDisplayConfigDataOld failed!(MonitorExtendMode::SetMonitorExtendMode)"));
    EXPECT_THAT(PathIds(), ElementsAre(10, 11));
    EXPECT_EQ(notebook.CountCalls("SetDisplayConfig"), 0u);
    EXPECT_EQ(notebook.CountCalls("Sleep"), 0u);
  }
}

TEST_F(MonitorExtendModeTest, SetMonitorExtendMode_AFailedSecondReadLeavesTheSwitch) {
  for (const char* function : {"GetDisplayConfigBufferSizes", "QueryDisplayConfig"}) {
    notebook.ForgetRecords();
    notebook.ClearFaults();
    Arrange(Topology(2, 4, 10), Topology(2, 4, 20));
    notebook.FailCall(function, 2, ERROR_ACCESS_DENIED);
    EXPECT_FALSE(extend.SetMonitorExtendMode());
    EXPECT_THAT(
        Lines(),
        ElementsAre(kEntered,
                    L"4 " + std::wstring(function, function + strlen(function)) +
                        L" failed!5(MonitorExtendMode::GetDisplayConfigData)",
                    L"3 GetDisplayConfigDataNew failed!(MonitorExtendMode::SetMonitorExtendMode)"));
    EXPECT_THAT(PathIds(), ElementsAre(20, 21));
    EXPECT_EQ(notebook.CountCalls("SetDisplayConfig"), 1u);
  }
}

TEST_F(MonitorExtendModeTest, SetMonitorExtendMode_TheSwitchsResultIsNotLookedAt) {
  Arrange(Topology(2, 4, 10), Topology(2, 4, 20));
  notebook.FailCall("SetDisplayConfig", 1, ERROR_GEN_FAILURE);
  EXPECT_TRUE(extend.SetMonitorExtendMode());
  EXPECT_THAT(PathIds(), ElementsAre(10, 11));
  EXPECT_THAT(Lines(), ElementsAre(kEntered, kSucceeded));
}

TEST_F(MonitorExtendModeTest, SetMonitorExtendMode_AFailedWriteBackIsSilent) {
  Arrange(Topology(2, 4, 10), Topology(2, 4, 20));
  notebook.FailCall("SetDisplayConfig", 2, ERROR_GEN_FAILURE);
  EXPECT_FALSE(extend.SetMonitorExtendMode());
  EXPECT_THAT(PathIds(), ElementsAre(20, 21));
  EXPECT_THAT(Lines(), ElementsAre(kEntered));
}

TEST_F(MonitorExtendModeTest, GetDisplayConfigData_EmptiesTheListsFirst) {
  auto [paths, modes] = Topology(3, 3, 10);
  notebook.FailCall("GetDisplayConfigBufferSizes", 1, ERROR_GEN_FAILURE);
  EXPECT_FALSE(extend.GetDisplayConfigData(paths, modes));
  EXPECT_EQ(paths.size(), 0u);
  EXPECT_EQ(modes.size(), 0u);

  std::tie(paths, modes) = std::tuple(Topology(3, 3, 10).paths, Topology(3, 3, 10).modes);
  notebook.topology = Topology(1, 2, 30);
  EXPECT_TRUE(extend.GetDisplayConfigData(paths, modes));
  ASSERT_EQ(paths.size(), 1u);
  ASSERT_EQ(modes.size(), 2u);
  EXPECT_EQ(paths[0].sourceInfo.id, 30u);
  EXPECT_EQ(modes[1].id, 31u);
}

TEST_F(MonitorExtendModeTest, GetDisplayConfigData_AFailedQueryLeavesListsOfTheAnnouncedSize) {
  auto [paths, modes] = Topology(0, 0, 0);
  notebook.topology = Topology(2, 4, 30);
  notebook.FailCall("QueryDisplayConfig", 1, ERROR_INSUFFICIENT_BUFFER);
  EXPECT_FALSE(extend.GetDisplayConfigData(paths, modes));
  EXPECT_EQ(paths.size(), 2u);
  EXPECT_EQ(modes.size(), 4u);
  EXPECT_THAT(Lines(), ElementsAre(L"4 QueryDisplayConfig failed!122"
                                   L"(MonitorExtendMode::GetDisplayConfigData)"));
}

}  // namespace
