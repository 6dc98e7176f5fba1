/* VeloraPlatform.h and VeloraCtlApi.h as a host in C sees them. */
#include "VeloraPlatform/VeloraPlatform.h"

int SetUpPanelFromC(void);

int SetUpPanelFromC(void) {
  const PlatformPccMatrix matrix = {{1, 0, 0, 0, 0.5, 0, 0, 0, 1}};
  const Color3DInfo gains = {.r = 1, .g = 1, .b = 1, .colorBlue = 0, .protectValue = 0.25};
  int result = PlatformInit();
  result |= PlatformSetPccMatrixInfo(&matrix);
  result |= PlatformSet3DColorTemperature(&gains);
  return result;
}
