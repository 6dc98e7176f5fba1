#include "scenarios/machinehost/MachineHost.h"

#include <windows.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <sstream>
#include <vector>

#include "support/Registry.h"
#include "virtualnotebook/Machine.h"

namespace machinehost {
namespace {

constexpr ColorFieldMode kEbook = 7;
constexpr char kTuned[] = "Mine%1";  // the user's mode among the settings

const virtualnotebook::MachineData& TheMachine() {
  static const virtualnotebook::MachineData machine =
      virtualnotebook::MakeMachine(virtualnotebook::PanelDescription{});
  return machine;
}

WhitePointFineTueInfo Tuning(const char* id, ColorFieldMode mode, double gain) {
  WhitePointFineTueInfo tuning{};
  std::strcpy(tuning.id, id);
  tuning.mode = mode;
  tuning.r = tuning.g = tuning.b = gain;
  return tuning;
}

}  // namespace

Host::Host(Role role) {
  virtualnotebook::SetUpNotebook(notebook);
  notebook.administrator = role == Role::Service;
  notebook.userSid = testsupport::CurrentUserSid();
  notebook.firmwareTable = TheMachine().firmwareTable;
  const virtualnotebook::InstalledFiles files = virtualnotebook::FilesOf();
  ColorFieldInitInfo init{};
  init.setType = 3;
  files.digestFile.copy(init.pIccCheckFilePath, 100);
  files.goldenName.copy(init.goldenFilePath, 100);
  library.InitColorFieldInfo(&init);
  for (const ColorFieldMode mode : {int{SrgbMode}, int{P3Mode}, kEbook}) {
    ColorFieldModeInfo info{};
    info.mode = mode;
    files.Profile(mode == SrgbMode ? virtualnotebook::kSrgbLut : virtualnotebook::kP3Lut)
        .copy(info.iccPath, 100);
    info.gamma = 2.2;
    info.gamut = mode;
    info.temperR = info.temperG = 1;
    info.temperB = 0.9;
    library.AddColorFieldModeInfo(&info);
  }
}

std::string Host::Pipeline() const {
  return DigestOf(notebook.platform.lut3D) + " " + DigestOf(notebook.platform.gammaLut);
}

std::string DigestOf(const std::vector<double>& lut) {
  if (lut.empty()) {
    return "-";
  }
  const virtualnotebook::Bytes hash = virtualnotebook::Sha256(
      {reinterpret_cast<const uint8_t*>(lut.data()), lut.size() * sizeof(double)});
  std::string text;
  for (size_t i = 0; i < 8; ++i) {
    char byte[3];
    std::snprintf(byte, sizeof byte, "%02x", hash[i]);
    text += byte;
  }
  return text;
}

std::string DigestOfMade(int lutType) {
  return DigestOf(virtualnotebook::MakeLut(TheMachine().panel, static_cast<uint8_t>(lutType)));
}

std::string ProfileOf(const std::string& id) {
  return "C:\\Windows\\System32\\spool\\drivers\\color\\" + id + "_usr.icc";
}

UserDesignInfo Design(const std::string& id, int colour) {
  UserDesignInfo info{};
  info.serialNum = colour;
  info.mode = USRDESIGN_MODE;
  id.copy(info.id, sizeof info.id - 1);
  id.copy(info.modeName, id.find('%'));
  info.gamut = colour;
  info.gamma = colour == 1 ? 2.2 : 2.4;
  info.whitePointX = colour == 1 ? 0.3127 : 0.3457;
  info.whitePointY = colour == 1 ? 0.3290 : 0.3585;
  return info;
}

int WriteSettings(virtualnotebook::HostedLibrary& library, int which) {
  int failed = 0;
  const auto count = [&failed](ResultT result) { failed += result != ResultOk; };
  const ColorTemperatureConfig point{10.0 * which, 20.0 * which};
  for (int feature = 0; feature < 7; ++feature) {
    count(library.SetFeatureSupport(feature, which));
    count(library.SetDisplayerCheck(feature, which));
    count(library.SetFirstUseState(feature, which));
  }
  count(library.SetFrameWorkType(which));
  count(library.SetWhitePointStatus(which));
  count(library.SetEyeProtectStatus(which));
  count(library.SetEyeProtectValue(10 * which));
  count(library.SetPSRStatusValue(which));
  count(library.SetRhineValue(0.25 * which));
  count(library.SetEyeProtectHandleType(which));
  count(library.SetEyeProtectRGB(0.25 * which, 0.125 * which, 0.5 * which));
  count(library.SetTemperatureValue(30 * which));
  count(library.SetColorTemperatureType(which));
  count(library.SetColorTemperatureConfig(&point));
  count(library.SetNatureColorStatus(which));
  count(library.SetColorFieldCurrentMode(which));
  count(library.SetColorFieldResetMode(which));
  count(library.SetColorFieldSetType(which));
  for (const ColorFieldMode mode : {P3Mode, USRDESIGN_MODE}) {
    WhitePointFineTueInfo tuning = Tuning(kTuned, mode, 0.9 + 0.03125 * which);
    count(library.SetWhitePointTueValue(&tuning));
  }
  UserDesignInfo design = Design(kTuned, which);
  count(library.EditUserSerialNumReg(&design));
  return failed;
}

std::string ReadSettings(virtualnotebook::HostedLibrary& library) {
  std::ostringstream text;
  for (int feature = 0; feature < 7; ++feature) {
    text << library.IsFeatureSupport(feature) << ' ' << library.IsDisplayerCheck(feature) << ' '
         << library.IsFirstUse(feature) << ' ';
  }
  ColorTemperatureConfig point{-1, -1};
  library.GetColorTemperatureConfig(&point);
  text << library.GetFrameWorkType() << ' ' << library.GetWhitePointStatus(-1) << ' '
       << library.GetEyeProtectStatus(0) << ' ' << library.GetEyeProtectValue(0) << ' '
       << library.GetPSRStatusValue(-1) << ' ' << library.GetRhineValue(-1) << ' '
       << library.GetTemperatureValue(0) << ' ' << library.GetColorTemperatureType(0) << ' '
       << point.x << ' ' << point.y << ' ' << library.GetNatureColorStatus(0) << ' '
       << library.GetColorFieldCurrentMode(-1) << ' ' << library.GetColorFieldResetMode(-1) << ' '
       << library.GetColorFieldSetType(-1);
  for (const ColorFieldMode mode : {P3Mode, USRDESIGN_MODE}) {
    WhitePointFineTueInfo tuning = Tuning(kTuned, mode, -1);
    library.GetWhitePointTueValue(&tuning);
    text << ' ' << tuning.r << ' ' << tuning.g << ' ' << tuning.b;
  }
  return text.str();
}

}  // namespace machinehost
