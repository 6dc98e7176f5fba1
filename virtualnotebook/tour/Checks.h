// What the acts of the tour can look for.
#pragma once

#include <string>
#include <vector>

#include "virtualnotebook/tour/Acts.h"

namespace tour {

bool Logged(const Outcome& outcome, const wchar_t* part);
Check Result(const Outcome& outcome, ResultT expected, const char* name);

// The profile that the system has for the panel: of a preset gamut, or of this name.
Check Profile(Stage& stage, int gamut);
Check Profile(Stage& stage, const std::string& name);
// The profiles that the library associated, in their order.
std::vector<std::wstring> Associated(Stage& stage);

// The panel has the LUT that the factory calculates for this description, value by value.
bool ShowsLut(const Stage& stage, const virtualnotebook::PanelDescription& panel, uint8_t lutType);
Check FactoryLut(const Stage& stage);
// Nothing was sent to the panel since it showed this many changes.
Check PanelUntouched(const Stage& stage, uint64_t changes);

}  // namespace tour
