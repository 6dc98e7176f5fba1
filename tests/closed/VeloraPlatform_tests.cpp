#include "VeloraPlatform/VeloraPlatform.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <thread>
#include <vector>

#include "Child.h"
#include "VeloraPlatform/SoftwarePanel.h"

// Written in C (PlatformFromC.c).
extern "C" int SetUpPanelFromC(void);

namespace {

using softwarepanel::SoftwarePanel;
using softwarepanel::State;

constexpr int kEntries3D = 4913;
constexpr int kEntriesGamma = 1024;
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// A viewer beside the DLL, on a panel that begins with its defaults.
class VeloraPlatform : public testing::Test {
 protected:
  VeloraPlatform() {
    viewer_.Update([](State& state) {
      state = State{};
      return true;
    });
  }

  const State& Look() {
    viewer_.Read(*state_);
    return *state_;
  }

  // Whether the call refuses and leaves the panel alone.
  template <typename CallToTry>
  bool Refuses(CallToTry call) {
    const auto before = std::make_unique<State>(Look());
    const uint64_t sequence = viewer_.Sequence();
    return call() != 0 && viewer_.Sequence() == sequence &&
           std::memcmp(before.get(), &Look(), sizeof(State)) == 0;
  }

  SoftwarePanel viewer_;
  std::unique_ptr<State> state_ = std::make_unique<State>();
};

std::vector<double> Ramp(int entries, double maximum) {
  std::vector<double> lut(static_cast<size_t>(entries) * 3);
  for (size_t i = 0; i < lut.size(); ++i) {
    lut[i] = maximum * static_cast<double>(i) / static_cast<double>(lut.size() - 1);
  }
  return lut;
}

}  // namespace

TEST_F(VeloraPlatform, InitFini_Count) {
  EXPECT_EQ(PlatformInit(), 0);
  EXPECT_EQ(PlatformInit(), 0);
  EXPECT_EQ(Look().initCount, 2u);
  EXPECT_EQ(PlatformFini(), 0);
  EXPECT_EQ(PlatformFini(), 0);
  EXPECT_EQ(Look().initCount, 0u);
  EXPECT_TRUE(Refuses([] { return PlatformFini(); }));
}

TEST_F(VeloraPlatform, GetPlatform_GivesTheTypeThatTheViewerSet) {
  PlatformInfo info = {6, 2};
  EXPECT_EQ(GetPlatform(&info), 0);
  EXPECT_EQ(info.platformType, 2u);
  EXPECT_EQ(info.second, 2u);
  viewer_.Update([](State& state) {
    state.platformType = 4;
    state.platformSecond = 7;
    return true;
  });
  EXPECT_EQ(GetPlatform(&info), 0);
  EXPECT_EQ(info.platformType, 4u);
  EXPECT_EQ(info.second, 7u);
  EXPECT_NE(GetPlatform(nullptr), 0);
}

TEST_F(VeloraPlatform, Set3DLut_KeepsEveryValueAndResetTakesItOut) {
  const std::vector<double> lut = Ramp(kEntries3D, 1023);
  EXPECT_EQ(PlatformSet3DLut(lut.data(), kEntries3D), 0);
  EXPECT_EQ(Look().has3DLut, 1u);
  EXPECT_TRUE(std::equal(lut.begin(), lut.end(), Look().lut3D));
  EXPECT_EQ(PlatformReset3DLut(), 0);
  EXPECT_EQ(Look().has3DLut, 0u);
  EXPECT_EQ(PlatformReset3DLut(), 0) << "again";
}

TEST_F(VeloraPlatform, Set3DLut_Refuses) {
  std::vector<double> lut = Ramp(kEntries3D, 1023);
  lut.insert(lut.end(), 3, 0.0);  // one entry more, for the wrong count
  ASSERT_EQ(PlatformSet3DLut(lut.data(), kEntries3D), 0);
  EXPECT_TRUE(Refuses([] { return PlatformSet3DLut(nullptr, kEntries3D); }));
  for (const int count : {kEntries3D - 1, kEntries3D + 1, 0, -1, kEntries3D * 3}) {
    EXPECT_TRUE(Refuses([&] { return PlatformSet3DLut(lut.data(), count); })) << count;
  }
  for (const double bad : {kNan, kInfinity, -kInfinity, -0.001, 1023.001, 4095.0}) {
    for (const size_t place : {size_t{0}, size_t{7000}, size_t{kEntries3D * 3 - 1}}) {
      std::vector<double> broken = lut;
      broken[place] = bad;
      EXPECT_TRUE(Refuses([&] { return PlatformSet3DLut(broken.data(), kEntries3D); }))
          << bad << " at " << place;
    }
  }
}

TEST_F(VeloraPlatform, SetGammaLut_KeepsEveryValue) {
  const std::vector<double> lut = Ramp(kEntriesGamma, 4095);
  EXPECT_EQ(PlatformSetGammaLut(lut.data(), kEntriesGamma), 0);
  EXPECT_EQ(Look().hasGammaLut, 1u);
  EXPECT_TRUE(std::equal(lut.begin(), lut.end(), Look().gammaLut));
}

TEST_F(VeloraPlatform, SetGammaLut_Refuses) {
  std::vector<double> lut = Ramp(kEntriesGamma + 1, 4095);
  EXPECT_TRUE(Refuses([] { return PlatformSetGammaLut(nullptr, kEntriesGamma); }));
  for (const int count : {kEntriesGamma - 1, kEntriesGamma + 1, 0, -1}) {
    EXPECT_TRUE(Refuses([&] { return PlatformSetGammaLut(lut.data(), count); })) << count;
  }
  for (const double bad : {kNan, kInfinity, -0.001, 4095.001}) {
    std::vector<double> broken = lut;
    broken[kEntriesGamma * 3 - 1] = bad;
    EXPECT_TRUE(Refuses([&] { return PlatformSetGammaLut(broken.data(), kEntriesGamma); })) << bad;
  }
}

TEST_F(VeloraPlatform, SetPccMatrixInfo_KeepsAndResets) {
  const PlatformPccMatrix matrix = {{1, -0.25, 0.125, 0, 0.5, 2, -3, 0.75, 1}};
  EXPECT_EQ(PlatformSetPccMatrixInfo(&matrix), 0);
  EXPECT_EQ(Look().hasMatrix, 1u);
  EXPECT_TRUE(std::equal(std::begin(matrix.values), std::end(matrix.values), Look().matrix));
  EXPECT_EQ(PlatformResetPccMatrixInfo(), 0);
  EXPECT_EQ(Look().hasMatrix, 0u);
}

TEST_F(VeloraPlatform, SetPccMatrixInfo_Refuses) {
  EXPECT_TRUE(Refuses([] { return PlatformSetPccMatrixInfo(nullptr); }));
  for (const double bad : {kNan, kInfinity, -kInfinity}) {
    const PlatformPccMatrix matrix = {{1, 0, 0, 0, 1, 0, 0, 0, bad}};
    EXPECT_TRUE(Refuses([&] { return PlatformSetPccMatrixInfo(&matrix); })) << bad;
  }
}

TEST_F(VeloraPlatform, ColorTemperatures_TheLaterReplacesTheEarlier) {
  const Color2DInfo slider = {366, 255};
  EXPECT_EQ(PlatformSet2DColorTemperature(&slider), 0);
  EXPECT_EQ(Look().temperatureKind, softwarepanel::kTemperature2D);
  EXPECT_EQ(Look().temperature2D.temperature, 366u);
  EXPECT_EQ(Look().temperature2D.colorBlue, 255u);
  const Color3DInfo gains = {1.0, 0.875, 0.0, 255, 0.75};
  EXPECT_EQ(PlatformSet3DColorTemperature(&gains), 0);
  EXPECT_EQ(Look().temperatureKind, softwarepanel::kTemperature3D);
  EXPECT_EQ(Look().temperature3D.r, 1.0);
  EXPECT_EQ(Look().temperature3D.g, 0.875);
  EXPECT_EQ(Look().temperature3D.b, 0.0);
  EXPECT_EQ(Look().temperature3D.colorBlue, 255u);
  EXPECT_EQ(Look().temperature3D.protectValue, 0.75);
}

TEST_F(VeloraPlatform, Set2DColorTemperature_Refuses) {
  EXPECT_TRUE(Refuses([] { return PlatformSet2DColorTemperature(nullptr); }));
  for (const Color2DInfo& bad :
       {Color2DInfo{367, 0}, Color2DInfo{0, 256}, Color2DInfo{0xFFFFFFFF, 0}}) {
    EXPECT_TRUE(Refuses([&] { return PlatformSet2DColorTemperature(&bad); }));
  }
}

TEST_F(VeloraPlatform, Set3DColorTemperature_Refuses) {
  EXPECT_TRUE(Refuses([] { return PlatformSet3DColorTemperature(nullptr); }));
  for (const double bad : {kNan, kInfinity, -0.001, 1.001}) {
    for (const Color3DInfo& info : {Color3DInfo{bad, 1, 1, 0, 0}, Color3DInfo{1, bad, 1, 0, 0},
                                    Color3DInfo{1, 1, bad, 0, 0}, Color3DInfo{1, 1, 1, 0, bad}}) {
      EXPECT_TRUE(Refuses([&] { return PlatformSet3DColorTemperature(&info); })) << bad;
    }
  }
  const Color3DInfo blue = {1, 1, 1, 256, 0};
  EXPECT_TRUE(Refuses([&] { return PlatformSet3DColorTemperature(&blue); }));
}

TEST_F(VeloraPlatform, AClientInC) {
  EXPECT_EQ(SetUpPanelFromC(), 0);
  EXPECT_EQ(Look().hasMatrix, 1u);
  EXPECT_EQ(Look().matrix[4], 0.5);
  EXPECT_EQ(Look().temperature3D.protectValue, 0.25);
  EXPECT_EQ(PlatformFini(), 0) << "it has called PlatformInit";
}

TEST_F(VeloraPlatform, AnotherProcessSetsThePanelThatThisOneViews) {
  const closedtests::Child child(L"panel 512.5 1");
  ASSERT_EQ(child.Wait(), 0u);
  EXPECT_EQ(Look().has3DLut, 1u);
  EXPECT_EQ(std::count(std::begin(Look().lut3D), std::end(Look().lut3D), 512.5), kEntries3D * 3);
}

// Two processes and a thread set LUTs of one value each; a viewer must never see a mixture.
TEST_F(VeloraPlatform, AViewerSeesWholeStatesOnly) {
  constexpr int kChanges = 2000;
  const std::vector<double> lut(kEntries3D * 3, 3.0);
  ASSERT_EQ(PlatformSet3DLut(lut.data(), kEntries3D), 0);
  const uint64_t begin = viewer_.Sequence();
  const closedtests::Child one(L"panel 1 " + std::to_wstring(kChanges));
  const closedtests::Child two(L"panel 2 " + std::to_wstring(kChanges));
  std::atomic<bool> threadFailed = false;
  std::thread thread([&] {
    for (int i = 0; i < kChanges; ++i) {
      threadFailed = threadFailed || PlatformSet3DLut(lut.data(), kEntries3D) != 0;
    }
  });
  int views = 0;
  int mixtures = 0;
  uint64_t last = begin;
  bool backwards = false;
  while (!one.HasEnded() || !two.HasEnded() || views == 0) {
    const uint64_t sequence = viewer_.Read(*state_);
    backwards = backwards || sequence < last;
    last = sequence;
    ++views;
    const double* values = state_->lut3D;
    if (std::count(values, values + kEntries3D * 3, values[0]) != kEntries3D * 3) {
      ++mixtures;
    }
  }
  thread.join();
  EXPECT_EQ(one.Wait(), 0u);
  EXPECT_EQ(two.Wait(), 0u);
  EXPECT_FALSE(threadFailed);
  EXPECT_EQ(mixtures, 0) << "of " << views << " views";
  EXPECT_FALSE(backwards);
  EXPECT_EQ(viewer_.Sequence(), begin + 3u * kChanges) << "no change was lost";
}
