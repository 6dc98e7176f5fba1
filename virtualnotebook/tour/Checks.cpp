#include "virtualnotebook/tour/Checks.h"

#include <algorithm>

namespace tour {

using namespace virtualnotebook;

bool Logged(const Outcome& outcome, const wchar_t* part) {
  return std::any_of(outcome.log.begin(), outcome.log.end(), [part](const LogLine& line) {
    return line.text.find(part) != std::wstring::npos;
  });
}

Check Result(const Outcome& outcome, ResultT expected, const char* name) {
  return {"result " + std::to_string(expected) + ", " + name, outcome.result == expected};
}

Check Profile(Stage& stage, int gamut) { return Profile(stage, PresetProfileName(gamut)); }

Check Profile(Stage& stage, const std::string& name) {
  return {"the system's profile is " + name, stage.DefaultProfile() == name};
}

std::vector<std::wstring> Associated(Stage& stage) {
  std::vector<std::wstring> profiles;
  for (const Call& call : stage.Notebook().calls) {
    if (call.function == "WcsAssociateColorProfileWithDevice") {
      const std::wstring& path = call.arguments.at(1);
      profiles.push_back(path.substr(path.find_last_of(L'\\') + 1));
    }
  }
  return profiles;
}

bool ShowsLut(const Stage& stage, const PanelDescription& panel, uint8_t lutType) {
  const softwarepanel::State shown = stage.Shown();
  return shown.has3DLut != 0 && std::ranges::equal(shown.lut3D, MakeLut(panel, lutType));
}

Check FactoryLut(const Stage& stage) {
  return {"the panel has the firmware's P3 LUT, all 14739 values",
          ShowsLut(stage, stage.Machine().panel, kP3Lut)};
}

Check PanelUntouched(const Stage& stage, uint64_t changes) {
  return {"the panel was not touched", stage.PanelChanges() == changes};
}

}  // namespace tour
