#include "colormath/UsrDesignAlgo.h"

#include <filesystem>
#include <vector>

#include "colormath/Matrix3x3.h"
#include "colormath/UserDesignMath.h"
#include "lut/LutMachine.h"

namespace lutmachine {
namespace {

class UsrDesignAlgoTest : public LutMachine {
 protected:
  static UserDesignInfo Design(int gamut, double x = 0.3457, double y = 0.3585,
                               double gamma = 2.4) {
    UserDesignInfo info{};
    info.gamut = gamut;
    info.whitePointX = x;
    info.whitePointY = y;
    info.gamma = gamma;
    return info;
  }

  // As the panel's EDID has it: in steps of 1/1024, the gamma in steps of 1/100.
  static velora::ChromaticityGamut GamutOf(const PanelDescription& panel) {
    const auto step = [](double value) { return std::round(value * 1024) / 1024; };
    return {step(panel.white.x), step(panel.white.y), step(panel.red.x),  step(panel.red.y),
            step(panel.green.x), step(panel.green.y), step(panel.blue.x), step(panel.blue.y)};
  }

  struct Luts {
    std::vector<double> lut3D = std::vector<double>(14739, 7.0);
    std::vector<double> gamma = std::vector<double>(3072, 7.0);

    friend bool operator==(const Luts&, const Luts&) = default;
  };

  // The road of the calculation, once more and step by step.
  static Luts Expected(const PanelDescription& panel, const UserDesignInfo& info) {
    using namespace velora;
    const ChromaticityGamut own = GamutOf(panel);
    const ChromaticityGamut* row = FindTargetGamut(info.gamut);
    ChromaticityGamut target = row != nullptr ? *row : own;
    double panelToXyz[9] = {};
    double xyzToPanel[9] = {};
    CalcColorSpaceConversionRgbToXyz(own, panelToXyz);
    InvertDesignMatrix(panelToXyz, xyzToPanel);
    double toXyz[9] = {};
    double toPanel[9];
    Luts luts;
    target.whiteX = own.whiteX;
    target.whiteY = own.whiteY;
    CalcColorSpaceConversionRgbToXyz(target, toXyz);
    MatMultiply(xyzToPanel, toXyz, toPanel);
    FillUser3DLut(toPanel, info.gamma, panel.gamma, luts.lut3D.data());
    target.whiteX = info.whitePointX;
    target.whiteY = info.whitePointY;
    CalcColorSpaceConversionRgbToXyz(target, toXyz);
    MatMultiply(xyzToPanel, toXyz, toPanel);
    FillUserGammaLut(toPanel, panel.gamma, luts.gamma.data());
    return luts;
  }

  Luts Calculate(const UserDesignInfo& info) {
    Luts luts;
    algo.ThreeDLutCal(info, luts.lut3D.data(), 4913);
    algo.GammaLutCal(info, luts.gamma.data(), 1024);
    return luts;
  }

  // The lines of the class itself.
  std::vector<std::string> OwnLog() const {
    std::vector<std::string> lines;
    for (const std::string& line : Log()) {
      if (line.find("(UsrDesignAlgo::") != std::string::npos) lines.push_back(line);
    }
    return lines;
  }

  velora::UsrDesignAlgo algo;
};

TEST_F(UsrDesignAlgoTest, AllGamutsOnThisPanel) {
  for (int gamut : {1, 2, 3, 4, 5, 6, 0, 7, -1}) {
    EXPECT_EQ(Calculate(Design(gamut)), Expected(machine.panel, Design(gamut))) << gamut;
  }
  EXPECT_TRUE(OwnLog().empty());
}

TEST_F(UsrDesignAlgoTest, RealPanels) {
  if (std::string(VELORA_EDID_DIR).empty()) GTEST_SKIP() << "no folder of real EDIDs";
  size_t panels = 0;
  for (const auto& file : std::filesystem::directory_iterator(VELORA_EDID_DIR)) {
    if (file.path().extension() != ".hex") continue;
    const Bytes edid = virtualnotebook::ReadEdidFile(file.path().string());
    PlugIn(edid);
    const PanelDescription panel = virtualnotebook::DescribePanel(edid);
    if (edid.at(23) == 255) continue;  // says nothing of its gamma
    velora::UsrDesignAlgo own;
    Luts luts;
    own.ThreeDLutCal(Design(2), luts.lut3D.data(), 4913);
    own.GammaLutCal(Design(2), luts.gamma.data(), 1024);
    const Luts expected = Expected(panel, Design(2));
    EXPECT_EQ(luts.lut3D, expected.lut3D) << file.path();
    for (size_t i = 0; i < 3072; ++i) {
      // A channel that no panel white reaches is no number in both.
      EXPECT_TRUE(luts.gamma[i] == expected.gamma[i] ||
                  (std::isnan(luts.gamma[i]) && std::isnan(expected.gamma[i])))
          << file.path();
    }
    ++panels;
  }
  EXPECT_GT(panels, 0u);
}

TEST_F(UsrDesignAlgoTest, ThePanelsWhiteGivesTheNeutralGammaLut) {
  const velora::ChromaticityGamut own = GamutOf(machine.panel);
  const Luts luts = Calculate(Design(2, own.whiteX, own.whiteY));
  for (size_t i = 0; i < 3072; ++i) {
    const size_t level = i / 3;
    EXPECT_NEAR(luts.gamma[i], level == 1023 ? 4095.0 : 4.0 * static_cast<double>(level), 1e-9);
  }
}

TEST_F(UsrDesignAlgoTest, ThePanelsGamutAndGammaGiveTheGridBack) {
  const Luts luts = Calculate(Design(7, 0.31, 0.33, machine.panel.gamma));
  EXPECT_EQ(luts.lut3D[0], 0.0);
  EXPECT_NEAR(luts.lut3D[14736], 1023, 1e-3);
  EXPECT_NEAR(luts.lut3D[3 * 9 + 2], 575, 1e-3) << "blue runs fastest";
  EXPECT_NEAR(luts.lut3D[3 * 289], 64, 1e-3) << "red slowest";
}

TEST_F(UsrDesignAlgoTest, NullAndShortBuffers) {
  Luts luts;
  algo.ThreeDLutCal(Design(2), nullptr, 4913);
  algo.ThreeDLutCal(Design(2), luts.lut3D.data(), 4912);
  algo.GammaLutCal(Design(2), nullptr, 1024);
  algo.GammaLutCal(Design(2), luts.gamma.data(), 1023);
  EXPECT_EQ(luts, Luts());
  EXPECT_EQ(Log(), Lines({"3 pLutData3D is wrong!(UsrDesignAlgo::ThreeDLutCal)",
                          "3 pLutData3D is wrong!(UsrDesignAlgo::ThreeDLutCal)",
                          "3 pLutDataGamma is wrong!(UsrDesignAlgo::GammaLutCal)",
                          "3 pLutDataGamma is wrong!(UsrDesignAlgo::GammaLutCal)"}))
      << "ahead of the panel";
}

TEST_F(UsrDesignAlgoTest, GammaOfZero) {
  for (double gamma : {0.0, -2.2, 0.9e-16}) {
    notebook.ForgetRecords();
    EXPECT_EQ(Calculate(Design(2, 0.31, 0.33, gamma)), Luts()) << gamma;
    EXPECT_EQ(OwnLog(), Lines({"3 Gamut Gamma is Zero!(UsrDesignAlgo::ThreeDLutCal)",
                               "3 Gamut Gamma is Zero!(UsrDesignAlgo::GammaLutCal)"}));
  }
}

// The gamma LUT keeps the white of the calculation before.
TEST_F(UsrDesignAlgoTest, WhiteOfZero) {
  const Luts before = Calculate(Design(2));
  notebook.ForgetRecords();
  EXPECT_EQ(Calculate(Design(2, 0.31, 0)), before);
  const std::string zero = "3 Coordinate is Zero!(UsrDesignAlgo::CalcColorSpaceConversionRgbToXyz)";
  EXPECT_EQ(OwnLog(), Lines({zero, zero}));
}

TEST_F(UsrDesignAlgoTest, WhiteOfZeroAtFirst) {
  const Luts luts = Calculate(Design(2, 0.31, 0));
  EXPECT_EQ(luts.gamma, Luts().gamma);
  EXPECT_EQ(OwnLog().back(), "3 Gamma transfer factor is zero!(UsrDesignAlgo::GammaLutCal)");
}

TEST_F(UsrDesignAlgoTest, ThePanelIsLookedAtOnce) {
  const Luts first = Calculate(Design(2));
  PanelDescription other = machine.panel;
  other.red = {0.64, 0.33};
  PlugIn(virtualnotebook::MakeEdid(other));
  notebook.ForgetRecords();
  EXPECT_EQ(Calculate(Design(2)), first);
  EXPECT_EQ(notebook.CountCalls("RegQueryValueExA"), 0u);
  EXPECT_EQ(notebook.CountCalls("WmiQuery::ExcuteQueryImpl"), 0u);
}

TEST_F(UsrDesignAlgoTest, APanelThatCannotBeReadIsNotReadAgain) {
  PlugIn(Bytes(10, 0));
  EXPECT_EQ(Calculate(Design(2)), Luts());
  EXPECT_EQ(OwnLog().back(), "3 Gamut Gamma is Zero!(UsrDesignAlgo::GammaLutCal)");
  PlugIn(machine.edid);
  EXPECT_EQ(Calculate(Design(2)), Luts());
}

}  // namespace
}  // namespace lutmachine
