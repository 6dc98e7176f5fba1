#include "colormath/UsrDesignAlgo.h"

#include "colormath/Matrix3x3.h"
#include "colormath/UserDesignMath.h"
#include "frame/Log.h"
#include "lut/LutBlock.h"

namespace velora {

void UsrDesignAlgo::ThreeDLutCal(const UserDesignInfo& info, double* pLutData3D, uint32_t count) {
  constexpr FunctionLog log("UsrDesignAlgo::ThreeDLutCal");
  if (pLutData3D == nullptr || count < k3DEntries) {
    log.Error(L"pLutData3D is wrong!");
    return;
  }
  if (!Prepare(info, log)) {
    return;
  }
  double targetToPanel[9];
  MatMultiply(xyzToPanelRgb_, targetToXyzPanelWhite_, targetToPanel);
  FillUser3DLut(targetToPanel, targetGamma_, panelGamma_, pLutData3D);
}

// The target's gamma is in the 3D LUT only.
void UsrDesignAlgo::GammaLutCal(const UserDesignInfo& info, double* pLutDataGamma, uint32_t count) {
  constexpr FunctionLog log("UsrDesignAlgo::GammaLutCal");
  if (pLutDataGamma == nullptr || count < kGammaEntries) {
    log.Error(L"pLutDataGamma is wrong!");
    return;
  }
  if (!Prepare(info, log)) {
    return;
  }
  double targetToPanel[9];
  MatMultiply(xyzToPanelRgb_, targetToXyzUserWhite_, targetToPanel);
  FillUserGammaLut(targetToPanel, panelGamma_, pLutDataGamma);
}

bool UsrDesignAlgo::Prepare(const UserDesignInfo& info, const FunctionLog& log) {
  InitPanelInfo();
  SetTargetGamut(info);
  if (panelGamma_ < kDesignZero || targetGamma_ < kDesignZero) {
    log.Error(L"Gamut Gamma is Zero!");
    return false;
  }
  return true;
}

void UsrDesignAlgo::InitPanelInfo() {
  if (isPanelInfoInit_) {
    return;
  }
  edid_ = lut3d_.GetEdidCopy();
  panelGamut_ = {edid_.GetWhiteX(), edid_.GetWhiteY(), edid_.GetRedX(),  edid_.GetRedY(),
                 edid_.GetGreenX(), edid_.GetGreenY(), edid_.GetBlueX(), edid_.GetBlueY()};
  panelGamma_ = edid_.GetGamma();
  double rgbToXyz[9] = {};
  CalcColorSpaceConversionRgbToXyz(panelGamut_, rgbToXyz);
  InvertDesignMatrix(rgbToXyz, xyzToPanelRgb_);
  isPanelInfoInit_ = true;
}

// Any number that is no gamut's stands for the panel's own. A matrix that can't be calculated stays
// the one of the calculation before.
void UsrDesignAlgo::SetTargetGamut(const UserDesignInfo& info) {
  const ChromaticityGamut* row = FindTargetGamut(info.gamut);
  ChromaticityGamut gamut = row != nullptr ? *row : panelGamut_;
  targetGamma_ = info.gamma;
  gamut.whiteX = panelGamut_.whiteX;
  gamut.whiteY = panelGamut_.whiteY;
  CalcColorSpaceConversionRgbToXyz(gamut, targetToXyzPanelWhite_);
  gamut.whiteX = info.whitePointX;
  gamut.whiteY = info.whitePointY;
  CalcColorSpaceConversionRgbToXyz(gamut, targetToXyzUserWhite_);
}

}  // namespace velora
