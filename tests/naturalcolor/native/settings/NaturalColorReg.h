// Stands in for the settings' header of this name, which needs the registry.
#pragma once

#include "velora/VeloraCtlApi.h"

namespace velora {

class NaturalColorReg {
 public:
  void GetSensorColor(double* value, double defaultValue) const;
  ResultT SetSensorColor(double value);
  ResultT SetNaturalColorRGB(double r, double g, double b);
};

}  // namespace velora
