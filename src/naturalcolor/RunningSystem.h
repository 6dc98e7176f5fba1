#pragma once

#include <string>

// What runs on this machine now.
namespace velora {

// Whether the service "Winmgmt" is running; false where that can't be told.
bool IsServiceRunning();

// How many processes have exactly this image name, its case included; 0 where that can't be told.
int CountProcess(const std::wstring& name);

}  // namespace velora
