// The tour that tools/demo plays, act by act.
#include <windows.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "virtualnotebook/tour/Acts.h"

namespace tour {
namespace {

void ExpectEveryActAsAnnounced(const Bytes& edid) {
  Stage stage(edid);
  for (const Act& act : AllActs()) {
    SCOPED_TRACE(act.title);
    const Report report = act.play(stage);
    EXPECT_FALSE(report.outcome.log.empty());
    EXPECT_FALSE(report.checks.empty());
    for (const Check& check : report.checks) EXPECT_TRUE(check.held) << check.announced;
  }
}

TEST(Tour, EveryActEndsAsAnnounced) { ExpectEveryActAsAnnounced(virtualnotebook::MakeEdid({})); }

TEST(Tour, EveryActEndsAsAnnouncedOnRealPanels) {
  const std::string folder = VELORA_EDID_DIR;
  if (folder.empty()) GTEST_SKIP() << "VELORA_EDID_DIR names no folder of real EDIDs";
  for (const auto& file : std::filesystem::directory_iterator(folder)) {
    if (file.path().extension() != ".hex") continue;
    SCOPED_TRACE(file.path().string());
    ExpectEveryActAsAnnounced(virtualnotebook::ReadEdidFile(file.path().string()));
  }
}

TEST(Tour, TakesItsMachineAway) {
  std::string profile;
  {
    Stage stage(virtualnotebook::MakeEdid({}));
    profile = stage.Files().Profile(virtualnotebook::kP3Lut);
    EXPECT_TRUE(std::filesystem::exists(profile));
  }
  EXPECT_FALSE(std::filesystem::exists(profile));
}

}  // namespace
}  // namespace tour
