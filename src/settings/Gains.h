#pragma once

#include <windows.h>

#include <string>

#include "settings/RegisterHelper.h"
#include "velora/VeloraCtlApi.h"

namespace velora {

// The gains of one feature, its values "r", "g" and "b", in this order. The first failure ends the
// operation and is the result: the gains ahead of it have been read or written, those behind it
// not.
ResultT ReadGains(const RegisterHelper& registry, HKEY root, const std::wstring& subKey, double* r,
                  double* g, double* b);
ResultT WriteGains(const RegisterHelper& registry, HKEY root, const std::wstring& subKey, double r,
                   double g, double b);

}  // namespace velora
