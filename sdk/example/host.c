/* A service's road to a colour mode: start, describe the machine, switch, say what came of it. Ends
 * with 0 when the panel shows the mode, and with 1 otherwise, as on a machine without the panel. */
#include <windows.h>

#include <stdio.h>
#include <velora/VeloraCtlApi.h>

/* A machine that applies its modes by the panel's 3D LUT, and the files that came with it. */
#define FILES "C:\\Program Files\\Norvex\\NxVelora\\"
static const ColorFieldInitInfo machine = {.setType = 1,
                                           .defaultMode = SrgbMode,
                                           .pIccCheckFilePath = FILES "IccDigest.bin",
                                           .goldenFilePath = "\\Golden.bin"};
static const ColorFieldModeInfo presets[] = {
    {SrgbMode, FILES "Icc\\NVX-sRGB.icc", {0}, 2.2, 1, 1, 1, 1},
    {P3Mode, FILES "Icc\\NVX-P3.icc", {0}, 2.2, 2, 1, 1, 1},
};

/* After a log-on, a resume or a docking the displays may not answer yet: try again, but not for
 * ever. A profile that is missing or was changed stays so. */
static ResultT SwitchTo(ColorFieldMode mode) {
  enum { Tries = 3, PauseMs = 500 };
  ResultT result = ResultFailed;
  for (int i = 1; i <= Tries && result != ResultFileNotFound && result != ResultIccError; ++i) {
    char vendor[5] = "";
    if (i > 1) Sleep(PauseMs);
    GetVendor(vendor, sizeof vendor);
    if (vendor[0] == 0) {
      printf("try %d: no panel\n", i);
      continue;
    }
    result = SetColorField(mode);
    printf("try %d: panel %s, SetColorField gave %d\n", i, vendor, (int)result);
    if (result == ResultOk) return result;
  }
  return result;
}

int main(void) {
  ResultT result = Init();
  if (result != ResultOk) return printf("no display platform: %d\n", (int)result), 1;
  result = InitColorFieldInfo(&machine);
  for (size_t i = 0; i < sizeof presets / sizeof *presets && result == ResultOk; ++i)
    result = AddColorFieldModeInfo(&presets[i]);
  if (result == ResultOk) result = SwitchTo(P3Mode);
  /* The library leaves it to the host to remember the mode. */
  if (result == ResultOk) result = SetColorFieldCurrentMode(P3Mode);
  printf(result == ResultOk ? "P3 is on\n" : "P3 is not on: %d\n", (int)result);
  Fini();
  return result == ResultOk ? 0 : 1;
}
