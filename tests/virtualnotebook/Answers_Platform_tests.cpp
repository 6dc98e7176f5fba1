#include <gtest/gtest.h>

#include <cstring>
#include <numeric>
#include <vector>

#include "VeloraPlatform/VeloraPlatform.h"
#include "support/NotebookTest.h"

namespace virtualnotebook {
namespace {

constexpr int k3DEntries = 4913;
constexpr int kGammaEntries = 1024;

std::vector<double> Ramp(int entries) {
  std::vector<double> lut(static_cast<size_t>(entries) * 3);
  std::iota(lut.begin(), lut.end(), 0.25);
  return lut;
}

class Platform : public testsupport::NotebookTest {};

TEST_F(Platform, InitFiniAndType) {
  EXPECT_EQ(PlatformInit(), 0);
  EXPECT_TRUE(notebook.platform.initialised);
  notebook.platformType = 3;
  PlatformInfo info{99, 99};
  EXPECT_EQ(GetPlatform(&info), 0);
  EXPECT_EQ(info.platformType, 3U);
  EXPECT_EQ(PlatformFini(), 0);
  EXPECT_FALSE(notebook.platform.initialised);
}

TEST_F(Platform, KeepsTheExactNumbersOfA3DLut) {
  const std::vector<double> lut = Ramp(k3DEntries);
  EXPECT_EQ(PlatformSet3DLut(lut.data(), k3DEntries), 0);
  EXPECT_EQ(notebook.platform.lut3D, lut);
  EXPECT_EQ(PlatformReset3DLut(), 0);
  EXPECT_TRUE(notebook.platform.lut3D.empty());
}

TEST_F(Platform, KeepsTheExactNumbersOfAGammaLut) {
  const std::vector<double> lut = Ramp(kGammaEntries);
  EXPECT_EQ(PlatformSetGammaLut(lut.data(), kGammaEntries), 0);
  EXPECT_EQ(notebook.platform.gammaLut, lut);
}

TEST_F(Platform, KeepsTheMatrix) {
  const PlatformPccMatrix matrix = {{1, 2, 3, 4, 5, 6, 7, 8, 9}};
  EXPECT_EQ(PlatformSetPccMatrixInfo(&matrix), 0);
  EXPECT_EQ(notebook.platform.pccMatrix, (std::array<double, 9>{1, 2, 3, 4, 5, 6, 7, 8, 9}));
  EXPECT_EQ(PlatformResetPccMatrixInfo(), 0);
  EXPECT_FALSE(notebook.platform.pccMatrix);
}

TEST_F(Platform, RefusesLutsThatAreNone) {
  const std::vector<double> lut = Ramp(k3DEntries);
  EXPECT_NE(PlatformSet3DLut(lut.data(), k3DEntries - 1), 0);
  EXPECT_NE(PlatformSet3DLut(nullptr, k3DEntries), 0);
  EXPECT_NE(PlatformSetGammaLut(lut.data(), k3DEntries), 0);
  EXPECT_NE(PlatformSetGammaLut(nullptr, kGammaEntries), 0);
  EXPECT_NE(PlatformSetPccMatrixInfo(nullptr), 0);
  EXPECT_TRUE(notebook.platform.lut3D.empty());
  EXPECT_TRUE(notebook.platform.gammaLut.empty());
  EXPECT_FALSE(notebook.platform.pccMatrix);
}

TEST_F(Platform, AFailedCallLeavesThePipeline) {
  const std::vector<double> lut = Ramp(k3DEntries);
  ASSERT_EQ(PlatformSet3DLut(lut.data(), k3DEntries), 0);
  notebook.FailCall("PlatformSet3DLut", 1, 7);
  EXPECT_EQ(PlatformSet3DLut(Ramp(k3DEntries).data(), k3DEntries), 7);
  notebook.FailCall("PlatformReset3DLut", 1, 7);
  EXPECT_EQ(PlatformReset3DLut(), 7);
  EXPECT_EQ(notebook.platform.lut3D, lut);
}

TEST_F(Platform, KeepsEvery3DColorTemperatureThatWasAccepted) {
  const Color3DInfo warm{1, 0.75, 0.5, 0, 0.25};
  const Color3DInfo neutral{1, 1, 1, 255, 0};
  EXPECT_EQ(PlatformSet3DColorTemperature(&warm), 0);
  notebook.FailCall("PlatformSet3DColorTemperature", 1, 7);
  EXPECT_EQ(PlatformSet3DColorTemperature(&neutral), 7);
  EXPECT_NE(PlatformSet3DColorTemperature(nullptr), 0);
  EXPECT_EQ(PlatformSet3DColorTemperature(&neutral), 0);
  EXPECT_EQ(PlatformSet3DColorTemperature(&warm), 0);
  const auto& kept = notebook.platform.temperatures3D;
  ASSERT_EQ(kept.size(), 3U);
  EXPECT_EQ(std::memcmp(&kept[0], &warm, sizeof warm), 0);
  EXPECT_EQ(std::memcmp(&kept[1], &neutral, sizeof neutral), 0);
  EXPECT_EQ(kept[2].g, 0.75);
}

TEST_F(Platform, GetPlatform_NeedsARecord) { EXPECT_NE(GetPlatform(nullptr), 0); }

// The software panel refuses values that no display takes; the notebook alone takes any.
TEST_F(Platform, ForwardedCallsEndAsThePlatformLibrarySays) {
  std::vector<double> lut(size_t{k3DEntries} * 3, 512.0);
  lut.back() = -1;
  EXPECT_EQ(PlatformSet3DLut(lut.data(), k3DEntries), 0);
  notebook.platform = {};
  notebook.forwardPlatform = true;
  EXPECT_EQ(PlatformInit(), 0);
  EXPECT_NE(PlatformSet3DLut(lut.data(), k3DEntries), 0);
  EXPECT_TRUE(notebook.platform.lut3D.empty());
  lut.back() = 512;
  EXPECT_EQ(PlatformSet3DLut(lut.data(), k3DEntries), 0);
  EXPECT_EQ(notebook.platform.lut3D, lut);
  EXPECT_EQ(PlatformReset3DLut(), 0);
  EXPECT_EQ(PlatformFini(), 0);
}

}  // namespace
}  // namespace virtualnotebook
