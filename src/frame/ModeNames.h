#pragma once

#include "velora/VeloraCtlApi.h"

namespace velora {

// Two modes that the public header gives no name.
inline constexpr ColorFieldMode kNoMode = 0;
inline constexpr ColorFieldMode kEbookMode = 7;

// The name of a preset mode, "SrgbMode" to "AdobeMode". std::out_of_range for any other mode, 0,
// the e-book mode and the user modes among them.
const wchar_t* ModeName(ColorFieldMode mode);

}  // namespace velora
