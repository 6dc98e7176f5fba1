#pragma once

#include <cstdint>

#include "colormath/TargetGamuts.h"
#include "frame/Log.h"
#include "lut/ColorField3DLut.h"
#include "velora/VeloraCtlApi.h"

namespace velora {

// Turns a user's choice of gamut, white point and gamma into the two LUTs of a mode, by the panel's
// EDID alone. The panel is looked at once in the life of the object; one thread at a time. A
// failure is logged and leaves the caller's LUT untouched.
class UsrDesignAlgo {
 public:
  // A 3D LUT, R, G, B of 0 to 1023 in grid order, blue fastest, that maps the target gamut into the
  // panel's. count: triples in pLutData3D, at least 4913.
  void ThreeDLutCal(const UserDesignInfo& info, double* pLutData3D, uint32_t count);

  // A gamma LUT, R, G, B of 0 to 4095 by input level, that sets the white point. count: triples in
  // pLutDataGamma, at least 1024.
  void GammaLutCal(const UserDesignInfo& info, double* pLutDataGamma, uint32_t count);

 private:
  // The matrices and gammas of a design; false, with a line of the caller's, for a gamma of zero.
  bool Prepare(const UserDesignInfo& info, const FunctionLog& log);
  void InitPanelInfo();
  void SetTargetGamut(const UserDesignInfo& info);

  double panelGamma_ = 0;
  double targetGamma_ = 0;
  ChromaticityGamut panelGamut_ = {};
  double xyzToPanelRgb_[9] = {};
  double targetToXyzUserWhite_[9] = {};   // linear target RGB
  double targetToXyzPanelWhite_[9] = {};  // the same
  bool isPanelInfoInit_ = false;          // also after a panel that could not be read
  ColorField3DLut lut3d_;                 // for the EDID only
  LcdEdidParse edid_;
};

}  // namespace velora
