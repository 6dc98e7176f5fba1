// A mode of the user's own: design, edit, rename, a profile changed elsewhere, deletion.
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "pictures/ChromaticityDiagram.h"
#include "virtualnotebook/tour/Checks.h"

namespace tour {
namespace {

using namespace virtualnotebook;

constexpr Xy kD50 = {0.3457, 0.3585};
constexpr Xy kWarm = {0.3805, 0.3768};  // daylight of 4000 K, about
constexpr double kGamma = 2.2;
constexpr int kSrgbGamut = 1;
constexpr char kColorDir[] = "C:\\Windows\\System32\\spool\\drivers\\color";

// How near the panel's light must come to the design: the firmware's base LUT corrects the unit's
// grey tracking on top of it.
constexpr double kWhiteTolerance = 0.004;

constexpr const char* kFirstId = kUserModeIds[0];
constexpr const char* kSecondId = kUserModeIds[1];

template <size_t size>
void SetText(char (&field)[size], const char* text) {
  std::snprintf(field, size, "%s", text);
}

UserDesignInfo Design(const char* id, const char* name, Xy white, double gamma) {
  UserDesignInfo info = {};
  info.serialNum = 1;
  info.mode = USRDESIGN_MODE;
  SetText(info.id, id);
  SetText(info.modeName, name);
  info.gamut = kSrgbGamut;
  info.whitePointX = white.x;
  info.whitePointY = white.y;
  info.gamma = gamma;
  return info;
}

// The chromaticity of the panel's light where a picture is white.
Xy ShownWhite(const Stage& stage) {
  const Image white = stage.ShowOnPanel({.width = 1, .height = 1, .pixels = {255, 255, 255}});
  return LightOf(stage.Machine().panel,
                 {white.pixels[0] / 255.0, white.pixels[1] / 255.0, white.pixels[2] / 255.0});
}

Check WhiteIs(const Stage& stage, const char* name, Xy white) {
  const Xy shown = ShownWhite(stage);
  char text[80];
  std::snprintf(text, sizeof text, "the panel's white is %s: %.4f %.4f", name, shown.x, shown.y);
  return {text, std::hypot(shown.x - white.x, shown.y - white.y) < kWhiteTolerance};
}

std::string ProfileOf(const char* id) { return std::string(id) + "_usr.icc"; }

struct UserFiles {
  std::string profile;
  std::string lut3D;
  std::string gammaLut;
};

UserFiles UserFilesOf(const Stage& stage, const char* id) {
  const std::string user = MachineDirs().data + "\\User\\";
  return {stage.Path(std::string(kColorDir) + "\\" + ProfileOf(id)),
          stage.Path(user + "3dlut\\" + id + ".bin"),
          stage.Path(user + "gammalut\\" + id + ".bin")};
}

bool Exist(const UserFiles& files) {
  namespace fs = std::filesystem;
  return fs::exists(files.profile) && fs::exists(files.lut3D) && fs::exists(files.gammaLut);
}

bool NoneExists(const UserFiles& files) {
  namespace fs = std::filesystem;
  return !fs::exists(files.profile) && !fs::exists(files.lut3D) && !fs::exists(files.gammaLut);
}

Report DesignAMode(Stage& stage) {
  stage.ClearPanel();
  stage.StartHost();
  const UserDesignInfo design = Design(kFirstId, "Reading", kD50, kGamma);
  const Outcome outcome =
      stage.Do([&](HostedLibrary& library) { return library.SaveUserSelfColor(&design); });
  return {outcome,
          {Result(outcome, ResultOk, "ResultOk"),
           {"profile, 3D LUT and gamma LUT are on the disk", Exist(UserFilesOf(stage, kFirstId))},
           Profile(stage, ProfileOf(kFirstId)),
           WhiteIs(stage, "D50", kD50)}};
}

std::string DrawDesign(Stage& stage, const std::string& directory) {
  constexpr char kName[] = "design-cie-xy.svg";
  const PanelDescription& panel = stage.Machine().panel;
  pictures::WriteFile(
      directory + "/" + kName,
      pictures::ChromaticityDiagram(
          {{"this panel", "#202020", panel.red, panel.green, panel.blue, panel.white},
           {"the design", "#2060c0", {0.64, 0.33}, {0.30, 0.60}, {0.15, 0.06}, kD50}})
          .Svg());
  return kName;
}

Report EditTheColours(Stage& stage) {
  const UserDesignInfo design = Design(kFirstId, "Reading", kWarm, kGamma);
  const Outcome outcome = stage.Do(
      [&](HostedLibrary& library) { return library.EditUserColorField(&design, kFirstId); });
  return {outcome,
          {Result(outcome, ResultOk, "ResultOk"), Profile(stage, ProfileOf(kFirstId)),
           WhiteIs(stage, "4000 K", kWarm)}};
}

Report Rename(Stage& stage) {
  const UserFiles before = UserFilesOf(stage, kFirstId);
  const UserFiles after = UserFilesOf(stage, kSecondId);
  const Bytes lut3D = ReadBytes(before.lut3D);
  const Bytes gammaLut = ReadBytes(before.gammaLut);
  const UserDesignInfo design = Design(kSecondId, "Proof", kWarm, kGamma);
  const Outcome outcome = stage.Do(
      [&](HostedLibrary& library) { return library.EditUserColorField(&design, kFirstId); });
  return {outcome,
          {Result(outcome, ResultOk, "ResultOk"),
           {"the files of the old name are gone", NoneExists(before)},
           {"the LUTs were not calculated again",
            ReadBytes(after.lut3D) == lut3D && ReadBytes(after.gammaLut) == gammaLut},
           Profile(stage, ProfileOf(kSecondId)),
           WhiteIs(stage, "4000 K", kWarm)}};
}

Report ProfileChangedElsewhere(Stage& stage) {
  stage.Do([](HostedLibrary& library) { return library.SetColorFieldCurrentMode(USRDESIGN_MODE); });
  stage.ChooseProfile(PresetProfileName(kSrgbLut));
  const Outcome outcome = stage.Do(
      [](HostedLibrary& library) { return static_cast<ResultT>(library.SyncSysColorField()); });
  return {
      outcome,
      {{"the mode is 1, sRGB", outcome.result == SrgbMode},
       {"the panel has the firmware's sRGB LUT", ShowsLut(stage, stage.Machine().panel, kSrgbLut)},
       Profile(stage, kSrgbLut)}};
}

Report DeleteTheMode(Stage& stage) {
  const Outcome outcome = stage.Do([](HostedLibrary& library) {
    const ResultT deleted = library.DeleteUserSelfColor(kSecondId);
    UserDesignInfo record = Design(kSecondId, "Proof", kWarm, kGamma);
    return deleted != ResultOk ? deleted : library.DeleteUserDesignReg(&record);
  });
  const Outcome again =
      stage.Do([](HostedLibrary& library) { return library.SetUserColorField(kSecondId); });
  return {outcome,
          {Result(outcome, ResultOk, "ResultOk"),
           {"the mode can no longer be chosen", again.result != ResultOk},
           Profile(stage, kSrgbLut)}};
}

constexpr Act kUserModeActs[] = {
    {"SaveUserSelfColor, a mode of the user's own",
     "The sRGB gamut on a D50 white: two LUTs are calculated from the panel's EDID, a profile is\n"
     "made, all three are saved, and the mode is switched on.",
     DesignAMode, "chart-6-user-d50.png", DrawDesign},
    {"EditUserColorField, another white", "The colours changed: all three files are made anew.",
     EditTheColours, "chart-7-user-4000k.png"},
    {"EditUserColorField, another name",
     "Only the name changed: the LUTs are renamed, the profile is made anew, as the name is in it.",
     Rename, nullptr},
    {"SyncSysColorField",
     "Somebody chose the sRGB profile in the system's settings: the output follows.",
     ProfileChangedElsewhere, "chart-8-followed.png"},
    {"DeleteUserSelfColor", "The mode leaves the table and the store. Its files stay.",
     DeleteTheMode, nullptr},
};

}  // namespace

std::span<const Act> UserModeActs() { return kUserModeActs; }

}  // namespace tour
