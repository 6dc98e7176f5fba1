// Windows' low-level monitor configuration functions (DDC/CI), of which the compiler's headers have
// the enumeration alone.
#pragma once

#include <windows.h>

#include <physicalmonitorenumerationapi.h>

extern "C" {

// Both work on a handle of a PHYSICAL_MONITOR and give 1 on success.
__declspec(dllimport) BOOL WINAPI SetVCPFeature(HANDLE monitor, BYTE code, DWORD value);
__declspec(dllimport) BOOL WINAPI SaveCurrentSettings(HANDLE monitor);

}  // extern "C"
