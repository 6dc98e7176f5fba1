#include "veloractl/Shown.h"

#include "veloractl/VirtualMachine.h"

namespace veloractl {
namespace {

Json ProfileOf(const virtualnotebook::Notebook& notebook) {
  for (const auto& [device, profiles] : notebook.profiles) {
    if (!profiles.empty()) {
      return ToUtf8(profiles.front());
    }
  }
  return nullptr;
}

Json ShownBy(const virtualnotebook::Notebook& notebook) {
  const virtualnotebook::PlatformState& platform = notebook.platform;
  Json shown = {{"lut3D", !platform.lut3D.empty()},
                {"gammaLut", !platform.gammaLut.empty()},
                {"matrix", platform.pccMatrix.has_value()},
                {"gains", nullptr},
                {"profile", ProfileOf(notebook)}};
  if (!platform.temperatures3D.empty()) {
    const Color3DInfo& last = platform.temperatures3D.back();
    shown["gains"] = {last.r, last.g, last.b};
  }
  return shown;
}

}  // namespace

Json WithShown(Session& session, Json report) {
  if (VirtualMachine* const machine = session.Virtual()) {
    report["panel"] = ShownBy(machine->Notebook());
  }
  return report;
}

}  // namespace veloractl
