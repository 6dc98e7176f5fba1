// Switching between preset modes by the 3D LUT, and everything that can be wrong with their data.
#include "virtualnotebook/tour/Checks.h"

namespace tour {
namespace {

using namespace virtualnotebook;

// Where the acts do their damage: within the words of a block, within the curves of a profile.
constexpr size_t kDamagedBlockByte = 5000;
constexpr size_t kDamagedProfileByte = 300;

constexpr int kPanelsRefusal = 5;

Bytes P3Block(const Stage& stage) {
  const PanelDescription& panel = stage.Machine().panel;
  return MakeLutBlock(HeaderOf(panel, kP3Lut), MakeLut(panel, kP3Lut));
}

// A file that holds other bytes for as long as the object lives.
class Damage {
 public:
  Damage(std::string path, size_t offset, uint8_t bits)
      : path_(std::move(path)), original_(ReadBytes(path_)) {
    Bytes damaged = original_;
    damaged.at(offset) ^= bits;
    WriteBytes(path_, damaged);
  }
  ~Damage() { WriteBytes(path_, original_); }
  Damage(const Damage&) = delete;
  Damage& operator=(const Damage&) = delete;

 private:
  std::string path_;
  Bytes original_;
};

Report FirstSwitch(Stage& stage) {
  stage.StartHost();
  const Outcome outcome = stage.SetColorField(P3Mode);
  return {outcome,
          {Result(outcome, ResultOk, "ResultOk"),
           FactoryLut(stage),
           Profile(stage, kP3Lut),
           {"P3.bin holds the firmware's block",
            ReadBytes(stage.BinFile("P3.bin")) == P3Block(stage)}}};
}

Report SecondSwitch(Stage& stage) {
  const Outcome outcome = stage.SetColorField(P3Mode);
  return {outcome,
          {Result(outcome, ResultOk, "ResultOk"),
           FactoryLut(stage),
           {"the firmware is not read again",
            stage.Notebook().CountCalls("GetSystemFirmwareTable") == 0}}};
}

Report FlippedBit(Stage& stage) {
  const std::string path = stage.BinFile("P3.bin");
  const Bytes good = ReadBytes(path);
  Bytes damaged = good;
  damaged.at(kDamagedBlockByte) ^= 1;
  WriteBytes(path, damaged);
  stage.StartHost();
  const Outcome outcome = stage.SetColorField(P3Mode);
  return {outcome,
          {Result(outcome, ResultOk, "ResultOk"),
           {"the hash gives the damage away", Logged(outcome, L"SHA256 Value is not match")},
           {"P3.bin is whole again", ReadBytes(path) == good},
           FactoryLut(stage)}};
}

Report ReplacedPanel(Stage& stage) {
  PanelDescription other = stage.Machine().panel;
  for (uint8_t& byte : other.serial) {
    byte = static_cast<uint8_t>(~byte);
  }
  stage.PlugPanel(MakeEdid(other));
  stage.StartHost();
  const Outcome outcome = stage.SetColorField(P3Mode);
  stage.PlugPanel(stage.Machine().edid);
  return {outcome,
          {Result(outcome, ResultOk, "ResultOk"),
           {"the library sees the other panel", Logged(outcome, L"LCD Invalid!")},
           {"the panel has the golden P3 LUT, all 14739 values",
            ShowsLut(stage, NominalPanel(stage.Machine().panel), kP3Lut)}}};
}

Report ChangedProfile(Stage& stage) {
  stage.StartHost();
  const Damage damage(stage.Files().Profile(kSrgbLut), kDamagedProfileByte, 0xFF);
  const uint64_t changes = stage.PanelChanges();
  const Outcome outcome = stage.SetColorField(SrgbMode);
  return {outcome,
          {Result(outcome, ResultIccError, "ResultIccError"), Profile(stage, kP3Lut),
           PanelUntouched(stage, changes)}};
}

Report RefusingPanel(Stage& stage) {
  stage.Notebook().FailCall("PlatformSet3DLut", 1, kPanelsRefusal);
  const uint64_t changes = stage.PanelChanges();
  const Outcome outcome = stage.SetColorField(SrgbMode);
  stage.Notebook().ClearFaults();
  return {outcome,
          {Result(outcome, ResultColorFieldError, "ResultColorFieldError"),
           {"NVX-sRGB.icc was set, then NVX-P3.icc put back",
            Associated(stage) == std::vector<std::wstring>{L"NVX-sRGB.icc", L"NVX-P3.icc"}},
           Profile(stage, kP3Lut),
           PanelUntouched(stage, changes)}};
}

Report ModeZero(Stage& stage) {
  const Outcome outcome = stage.SetColorField(0);
  return {outcome,
          {Result(outcome, ResultOk, "ResultOk"),
           {"the panel has no 3D LUT", stage.Shown().has3DLut == 0},
           Profile(stage, kP3Lut)}};
}

constexpr Act kPresetActs[] = {
    {"SetColorField(2), cold",
     "Nothing is cached: the P3 LUT comes out of the firmware table, is checked by its SHA-256 "
     "and\n"
     "against the panel's EDID, and is kept as P3.bin. Profile and panel switch together.",
     FirstSwitch, "chart-1-p3.png"},
    {"SetColorField(2), warm", "The same again in the same process: one look-up, one call.",
     SecondSwitch, nullptr},
    {"One flipped bit in P3.bin",
     "The host starts anew. The damaged file is found by its hash and rebuilt from the firmware.",
     FlippedBit, nullptr},
    {"Another panel",
     "The panel was replaced: its EDID is not the one that the firmware's LUTs were made for. The\n"
     "library falls back to the golden file, made for the model.",
     ReplacedPanel, "chart-2-golden-p3.png"},
    {"SetColorField(1) with one changed byte in the profile",
     "The old panel is back. The sRGB profile does not match its digest: nothing is switched.",
     ChangedProfile, nullptr},
    {"SetColorField(1) on a panel that refuses the LUT",
     "The profile is whole again, but the display refuses: the old profile is put back.",
     RefusingPanel, nullptr},
    {"SetColorField(0)",
     "The 3D LUT is taken out. No profile belongs to mode 0: the library says so and leaves the\n"
     "system's as it is.",
     ModeZero, "chart-3-mode-0.png"},
};

}  // namespace

std::span<const Act> PresetActs() { return kPresetActs; }

}  // namespace tour
