#include "veloractl/Modes.h"

#include <windows.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iterator>

#include "veloractl/DescribedJson.h"
#include "veloractl/Features.h"
#include "veloractl/Registry.h"
#include "veloractl/VirtualMachine.h"

namespace veloractl {
namespace {

using virtualnotebook::InstalledFiles;

// What ColorFieldModeInfo::gamut takes for each firmware LUT.
struct FirmwareGamut {
  const char* name;
  int number;
};
constexpr FirmwareGamut kFirmwareGamuts[] = {{"srgb", 1}, {"p3", 2}, {"ebook", 7}, {"adobe", 10}};

constexpr double kUsualGamma = 2.2;
constexpr double kUsualMatrix[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};

// Of the virtual notebook.
struct UsualMode {
  ColorFieldMode mode;
  int gamut;
};
constexpr UsualMode kUsualModes[] = {{SrgbMode, 1},    {P3Mode, 2},    {WebMode, 1},
                                     {DigitalMode, 2}, {PhotoMode, 2}, {DesignMode, 2},
                                     {7, 7},           {HdtvMode, 1},  {DigitalD65Mode, 2}};
constexpr double kVirtualMatrix[9] = {0.92, 0.06, 0.02, 0.03, 0.94, 0.03, 0.01, 0.05, 0.94};

template <size_t size>
void SetText(char (&field)[size], const std::string& text) {
  std::memcpy(field, text.data(), std::min(text.size(), size));
}

MachineModes VirtualModes(const VirtualMachine& machine) {
  const InstalledFiles files = virtualnotebook::FilesOf();
  MachineModes modes;
  modes.source = "virtual notebook";
  modes.init.setType = machine.SetType();
  modes.init.defaultMode = SrgbMode;
  SetText(modes.init.pIccCheckFilePath, files.digestFile);
  SetText(modes.init.goldenFilePath, files.goldenName);
  for (const UsualMode& usual : kUsualModes) {
    ColorFieldModeInfo info = {};
    info.mode = usual.mode;
    info.gamut = usual.gamut;
    SetText(info.iccPath,
            files.Profile(usual.gamut == 2 ? virtualnotebook::kP3Lut : virtualnotebook::kSrgbLut));
    std::ranges::copy(kVirtualMatrix, info.PlatformPccMatrix);
    info.gamma = kUsualGamma;
    info.temperR = info.temperG = info.temperB = 1;
    modes.presets.push_back(info);
  }
  return modes;
}

// A text of the file into a field; its own Refuse names the place.
template <size_t size>
void ReadText(DescribedJson& object, const std::string& name, char (&field)[size]) {
  const std::string text = ToCodePage(object.Text(name, ""));
  if (text.size() > size) {
    object.Refuse(name, "has more than " + std::to_string(size) + " bytes");
  }
  SetText(field, text);
}

ColorFieldModeInfo ReadMode(DescribedJson& object) {
  ColorFieldModeInfo info = {};
  try {
    info.mode = ModeOf(object.Text("mode", ""));
  } catch (const Failure& failure) {
    object.Refuse("mode", std::string("is none: ") + failure.what());
  }
  if (info.mode == USRDESIGN_MODE) {
    object.Refuse("mode", "is \"user\": user modes are stored, not described");
  }
  ReadText(object, "profile", info.iccPath);
  const std::string gamut = object.Text("gamut", "srgb");
  const auto* const known = std::ranges::find(kFirmwareGamuts, gamut, &FirmwareGamut::name);
  if (known == std::end(kFirmwareGamuts)) {
    object.Refuse("gamut", "is none of srgb, p3, ebook, adobe");
  }
  info.gamut = known->number;
  info.gamma = object.Number("gamma", kUsualGamma, 0, 10);
  const std::vector<double> gains = object.Numbers("gains", {1, 1, 1});
  info.temperR = gains[0];
  info.temperG = gains[1];
  info.temperB = gains[2];
  const std::vector<double> matrix =
      object.Numbers("matrix", {std::begin(kUsualMatrix), std::end(kUsualMatrix)});
  std::ranges::copy(matrix, info.PlatformPccMatrix);
  object.RefuseOthers();
  return info;
}

MachineModes ReadModes(const std::string& file) {
  DescribedJson object = DescribedJson::FromFile(file);
  MachineModes modes;
  modes.source = file;
  modes.init.setType = static_cast<ColorFieldSetType>(object.Integer("setType", 1, 0, 3));
  try {
    modes.init.defaultMode = ModeOf(object.Text("defaultMode", "srgb"));
  } catch (const Failure& failure) {
    object.Refuse("defaultMode", std::string("is none: ") + failure.what());
  }
  ReadText(object, "digestFile", modes.init.pIccCheckFilePath);
  ReadText(object, "lutFolder", modes.init.threeLutBinFilePath);
  ReadText(object, "goldenFile", modes.init.goldenFilePath);
  for (DescribedJson& mode : object.Objects("modes")) {
    modes.presets.push_back(ReadMode(mode));
  }
  object.RefuseOthers();
  return modes;
}

std::string UsualFile() {
  wchar_t program[MAX_PATH] = L"";
  GetModuleFileNameW(nullptr, program, MAX_PATH);
  const std::wstring path = program;
  return ToUtf8(path.substr(0, path.find_last_of(L'\\') + 1)) + "modes.json";
}

double NumberOf(const Json& value) {
  return value.is_string()   ? std::strtod(value.get<std::string>().c_str(), nullptr)
         : value.is_number() ? value.get<double>()
                             : 0;
}

// "1 HKEY_CURRENT_USER, 2 HKEY_LOCAL_MACHINE, 3 HKEY_USERS".
HKEY UserModesRoot(Session& session) {
  switch (session.Library().GetUserRegHkey()) {
    case 1:
      return HKEY_CURRENT_USER;
    case 2:
      return HKEY_LOCAL_MACHINE;
    default:
      return HKEY_USERS;
  }
}

}  // namespace

MachineModes LoadModes(Session& session) {
  const std::string& file = session.Chosen().modes;
  if (!file.empty()) {
    return ReadModes(file);
  }
  if (const VirtualMachine* const machine = session.Virtual()) {
    return VirtualModes(*machine);
  }
  const std::string usual = UsualFile();
  if (GetFileAttributesW(FromUtf8(usual).c_str()) == INVALID_FILE_ATTRIBUTES) {
    throw Failure(kBadFile, "no file describes this machine's modes: " + usual +
                                " doesn't exist, and --modes FILE names none");
  }
  return ReadModes(usual);
}

std::vector<UserDesignInfo> StoredUserModes(Session& session) {
  const HKEY root = UserModesRoot(session);
  const std::wstring path = std::wstring(kVeloraKey) + L"\\ColorField\\UserDesign";
  std::vector<UserDesignInfo> modes;
  for (const std::wstring& id : SubKeys(root, path)) {
    const auto value = [&](const wchar_t* name) {
      return ReadRegistry(root, Below(path, id), name);
    };
    const auto text = [&](const wchar_t* name, char* field, size_t size) {
      const Json stored = value(name);
      const std::string narrow = ToCodePage(stored.is_string() ? stored.get<std::string>() : "");
      narrow.copy(field, size - 1);
    };
    UserDesignInfo info = {};
    info.serialNum = NumberOf(value(L"SerialNum"));
    info.mode = USRDESIGN_MODE;
    info.gamut = static_cast<int32_t>(NumberOf(value(L"Gammut")));
    info.whitePointMode = static_cast<int32_t>(NumberOf(value(L"WhitePointMode")));
    info.whitePointX = NumberOf(value(L"WhitePointX"));
    info.whitePointY = NumberOf(value(L"WhitePointY"));
    info.gammaMode = static_cast<int32_t>(NumberOf(value(L"GammaMode")));
    info.gamma = NumberOf(value(L"Gamma"));
    text(L"Id", info.id, sizeof info.id);
    text(L"ModeName", info.modeName, sizeof info.modeName);
    text(L"Description", info.description, sizeof info.description);
    text(L"WhitePointXStr", info.whitePointXStr, sizeof info.whitePointXStr);
    text(L"WhitePointYStr", info.whitePointYStr, sizeof info.whitePointYStr);
    text(L"GammaStr", info.gammaStr, sizeof info.gammaStr);
    text(L"IccPath", info.iccPath, sizeof info.iccPath);
    text(L"ThreeDLutPath", info.threeDLutPath, sizeof info.threeDLutPath);
    text(L"GammaPath", info.gammaPath, sizeof info.gammaPath);
    modes.push_back(info);
  }
  return modes;
}

void SetField(char* field, size_t size, const std::string& utf8, const std::string& what) {
  const std::string text = ToCodePage(utf8);
  if (text.size() >= size) {
    throw Failure(kBadArguments,
                  "the " + what + " has more than " + std::to_string(size - 1) + " bytes");
  }
  std::memcpy(field, text.c_str(), text.size() + 1);
}

std::string FieldOf(const char* field, size_t size) {
  return ToUtf8(std::string(field, strnlen(field, size)));
}

}  // namespace veloractl
