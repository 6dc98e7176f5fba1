#pragma once

#include <windows.h>

#include <vector>

// The answer of GetDisplayType from what the system told: the active display paths, none where they
// can't be read, and whether a display is on the desktop.
unsigned int ChooseDisplayType(const std::vector<DISPLAYCONFIG_PATH_INFO>& paths, bool onDesktop);
