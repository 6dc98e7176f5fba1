#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

#include "support/NotebookTest.h"

namespace virtualnotebook {
namespace {

using ::testing::ElementsAre;

// Two paths with three modes, as long as nobody extends the desktop.
class Topology : public testsupport::NotebookTest {
 protected:
  Topology() {
    notebook.topology.paths = {Path(1), Path(2)};
    notebook.topology.modes.resize(3);
  }

  static DISPLAYCONFIG_PATH_INFO Path(UINT32 id) {
    DISPLAYCONFIG_PATH_INFO path{};
    path.sourceInfo.id = id;
    return path;
  }
  std::vector<UINT32> PathIds() const {
    std::vector<UINT32> ids;
    for (const auto& path : notebook.topology.paths) ids.push_back(path.sourceInfo.id);
    return ids;
  }

  LONG AskSizes(UINT32 flags) {
    return GetDisplayConfigBufferSizes(flags, &pathCount_, &modeCount_);
  }
  LONG Query(UINT32 paths, UINT32 modes) {
    pathCount_ = paths;
    modeCount_ = modes;
    paths_.assign(paths, Path(99));
    modes_.resize(modes);
    return QueryDisplayConfig(QDC_ONLY_ACTIVE_PATHS, &pathCount_, paths_.data(), &modeCount_,
                              modes_.data(), nullptr);
  }

  UINT32 pathCount_ = 0;
  UINT32 modeCount_ = 0;
  std::vector<DISPLAYCONFIG_PATH_INFO> paths_;
  std::vector<DISPLAYCONFIG_MODE_INFO> modes_;
};

TEST_F(Topology, Sizes) {
  EXPECT_EQ(AskSizes(QDC_ONLY_ACTIVE_PATHS), ERROR_SUCCESS);
  EXPECT_EQ(pathCount_, 2u);
  EXPECT_EQ(modeCount_, 3u);
  notebook.topologySlack = 4;
  EXPECT_EQ(AskSizes(QDC_ONLY_ACTIVE_PATHS | 0x40), ERROR_SUCCESS);
  EXPECT_EQ(pathCount_, 6u);
  EXPECT_EQ(modeCount_, 7u);
  EXPECT_EQ(AskSizes(0), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(AskSizes(QDC_ONLY_ACTIVE_PATHS | QDC_ALL_PATHS), ERROR_INVALID_PARAMETER);
}

TEST_F(Topology, QueryTellsWhatThereIs) {
  EXPECT_EQ(Query(4, 4), ERROR_SUCCESS);
  EXPECT_EQ(pathCount_, 2u);
  EXPECT_EQ(modeCount_, 3u);
  EXPECT_EQ(paths_[1].sourceInfo.id, 2u);
  EXPECT_EQ(paths_[2].sourceInfo.id, 99u) << "not written";
  EXPECT_EQ(Query(1, 4), ERROR_INSUFFICIENT_BUFFER);
  EXPECT_EQ(Query(4, 2), ERROR_INSUFFICIENT_BUFFER);
  DISPLAYCONFIG_TOPOLOGY_ID id{};
  EXPECT_EQ(QueryDisplayConfig(QDC_ONLY_ACTIVE_PATHS, &pathCount_, paths_.data(), &modeCount_,
                               modes_.data(), &id),
            ERROR_INVALID_PARAMETER);
}

TEST_F(Topology, Extending) {
  EXPECT_EQ(SetDisplayConfig(0, nullptr, 0, nullptr, SDC_APPLY | SDC_TOPOLOGY_EXTEND),
            ERROR_SUCCESS);
  EXPECT_THAT(PathIds(), ElementsAre(1, 2)) << "extended already";
  notebook.extendedTopology = {{Path(3)}, {}};
  EXPECT_EQ(SetDisplayConfig(0, nullptr, 0, nullptr, SDC_TOPOLOGY_EXTEND), ERROR_INVALID_PARAMETER);
  EXPECT_THAT(PathIds(), ElementsAre(1, 2)) << "not applied";
  EXPECT_EQ(SetDisplayConfig(0, nullptr, 0, nullptr, SDC_APPLY | SDC_TOPOLOGY_EXTEND),
            ERROR_SUCCESS);
  EXPECT_THAT(PathIds(), ElementsAre(3));
}

TEST_F(Topology, AnArrangementOfTheCallers) {
  DISPLAYCONFIG_PATH_INFO path = Path(7);
  DISPLAYCONFIG_MODE_INFO mode{};
  EXPECT_EQ(SetDisplayConfig(1, &path, 1, &mode, SDC_APPLY | SDC_USE_SUPPLIED_DISPLAY_CONFIG),
            ERROR_SUCCESS);
  EXPECT_THAT(PathIds(), ElementsAre(7));
  EXPECT_EQ(notebook.topology.modes.size(), 1u);
  EXPECT_EQ(SetDisplayConfig(0, nullptr, 0, nullptr, SDC_APPLY | SDC_USE_SUPPLIED_DISPLAY_CONFIG),
            ERROR_INVALID_PARAMETER);
  EXPECT_EQ(SetDisplayConfig(1, &path, 1, &mode, SDC_APPLY | SDC_TOPOLOGY_EXTEND),
            ERROR_INVALID_PARAMETER);
}

TEST_F(Topology, SleepTakesItsTimeUnlessTold) {
  const ULONGLONG start = GetTickCount64();
  Sleep(60);
  EXPECT_GE(GetTickCount64() - start, 40u);
  notebook.sleeps = false;
  const ULONGLONG untimed = GetTickCount64();
  Sleep(60000);
  EXPECT_LT(GetTickCount64() - untimed, 30000u);
  EXPECT_EQ(notebook.CountCalls("Sleep"), 2u);
}

}  // namespace
}  // namespace virtualnotebook
