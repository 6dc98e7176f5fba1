// probe.dll: a module to put a notebook beneath, with imports and C++ runtime of its own.
#pragma once

#include <windows.h>

#if defined(PROBE_BUILD)
#define PROBE_API extern "C" __declspec(dllexport)
#else
#define PROBE_API extern "C"
#endif

// The result of a RegOpenKeyW on HKEY_CURRENT_USER.
PROBE_API LSTATUS ProbeOpenKey(const wchar_t* path);

// The same; what a std::exception says goes to what, and the result is -1.
PROBE_API LSTATUS ProbeOpenKeyGuarded(const wchar_t* path, char* what, int size);
