/* A host of an MSVC-like linker, without a C library: proof that it can call through the .lib. */
#include <velora/VeloraCtlApi.h>

/* 0 when the rim of the circle gave other gains than the preset ones. */
int HostMain(void) {
  const ColorTemperatureConfig rim = {160, 80};
  ColorTemperatureRgb rgb = {1, 1, 1};
  TransColorTemperatureConfigToRGB(&rim, 80, &rgb);
  return rgb.r == 1 && rgb.g == 1 && rgb.b == 1;
}
