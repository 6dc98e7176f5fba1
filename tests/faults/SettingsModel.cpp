#include "faults/SettingsModel.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <cwchar>
#include <numbers>

namespace faults {
namespace {

using testsupport::DwordValue;
using testsupport::RegistryValue;
using testsupport::TextValue;

constexpr wchar_t kRoot[] = L"SOFTWARE\\Norvex\\Velora";
constexpr char kReadName[] = "RegisterHelper::RegReadValue";
constexpr char kWriteName[] = "RegisterHelper::RegWriteValue";

const std::array<const wchar_t*, 9> kFeatureKeys = {L"WhitePoint",
                                                    L"EyeProtect",
                                                    L"ColorTemperature",
                                                    L"ColorField",
                                                    L"NaturalColor",
                                                    L"DpInOut",
                                                    L"Esd",
                                                    L"ColorField\\UserDesign",
                                                    L"ColorField\\WhitePointFineTue"};
const std::array<const wchar_t*, 7> kFlagNames = {L"WhitePoint", L"EyeProtect",   L"Temperature",
                                                  L"ColorField", L"NaturalColor", L"DpInOut",
                                                  L"Esd"};

// Modes 1 to 10; 0 and 7 have no name.
const std::array<const wchar_t*, 11> kModeNames = {
    nullptr,       L"SrgbMode", L"P3Mode",   L"WebMode",        L"DigitalMode", L"PhotoMode",
    L"DesignMode", nullptr,     L"HdtvMode", L"DigitalD65Mode", L"AdobeMode"};

constexpr int kColorTemperature = 2;
constexpr int kUserDesign = 7;
constexpr int kFineTuning = 8;

std::wstring Decimals(double value) {
  wchar_t text[64];
  swprintf(text, std::size(text), L"%f", value);
  return text;
}

std::wstring Ascii(const std::string& text) { return {text.begin(), text.end()}; }

}  // namespace

void SettingsModel::Begin(const Fault& next) {
  fault = next;
  log.clear();
  calls.clear();
  counts_.clear();
}

bool SettingsModel::Calls(const std::string& function) {
  calls.push_back(function);
  const unsigned n = ++counts_[function];
  return function != fault.function || (fault.n != 0 && fault.n != n);
}

int SettingsModel::ResultOf(const std::string& function) {
  return Calls(function) ? 0 : static_cast<int>(fault.kind.result);
}

std::wstring SettingsModel::Wide(const std::string& text) {
  return Calls("CoreKit::StringToWString") ? Ascii(text) : std::wstring();
}

// --- The registry and the INI file ---

std::wstring SettingsModel::KeyOf(const Place& place) const {
  // The user's hive under HKEY_USERS.
  return place.ofService && !sid.empty() && place.path.starts_with(sid + L"\\")
             ? place.path.substr(sid.size() + 1)
             : place.path;
}

ResultT SettingsModel::Read(const Place& place, const std::wstring& name, DWORD size,
                            std::vector<uint8_t>& bytes, const wchar_t* keyLabel, bool logged) {
  const RegistryTree& tree = TreeOf(place);
  const auto key = tree.find(KeyOf(place));
  const bool isHive = !place.ofService || place.path != KeyOf(place);
  if (!Calls("RegOpenKeyW") || key == tree.end() || !isHive) {
    if (logged) {
      Line(3, kReadName, keyLabel, place.path, L" not exists!");
    }
    return ResultKeyNotFound;
  }
  const auto value = key->second.find(name);
  const bool good =
      Calls("RegQueryValueExW") && value != key->second.end() && value->second.bytes.size() <= size;
  Calls("RegCloseKey");
  if (!good) {
    if (logged) {
      Line(3, kReadName, L"itemName:", name, L" not exist in subKey:", place.path);
    }
    return ResultFailed;
  }
  bytes = value->second.bytes;
  return ResultOk;
}

ResultT SettingsModel::ReadNumber(const Place& place, const std::wstring& name, uint32_t& value,
                                  bool logged) {
  std::vector<uint8_t> bytes;
  const ResultT result = Read(place, name, sizeof value, bytes, L"Open key:", logged);
  if (result == ResultOk) {
    value = 0;
    std::memcpy(&value, bytes.data(), bytes.size());
  }
  return result;
}

ResultT SettingsModel::ReadDouble(const Place& place, const std::wstring& name, double& value) {
  std::vector<uint8_t> bytes;
  const ResultT result = Read(place, name, 520, bytes, L"Reg key:", true);
  if (result == ResultOk) {
    value = std::wcstod(reinterpret_cast<const wchar_t*>(bytes.data()), nullptr);
  }
  return result;
}

ResultT SettingsModel::Write(const Place& place, const std::wstring& name,
                             const RegistryValue& value, const std::wstring& shown) {
  const bool isHive = !place.ofService || place.path != KeyOf(place);
  if (!Calls("RegCreateKeyExW") || !isHive) {
    Line(3, kWriteName, L"RegCreateKeyEx:", place.path, L" failed!");
    return ResultFailed;
  }
  // The keys above it come into being too.
  RegistryTree& tree = TreeOf(place);
  const std::wstring key = KeyOf(place);
  for (size_t end = std::wcslen(kRoot); end != std::wstring::npos;) {
    tree[key.substr(0, end)];
    end = end == key.size() ? std::wstring::npos : std::min(key.find(L'\\', end + 1), key.size());
  }
  const bool good = Calls("RegSetValueExW");
  Calls("RegCloseKey");
  if (!good) {
    Line(3, kWriteName, L"Write key:", place.path, L", itemName:", name, L", value:", shown,
         L" failed!");
    return ResultFailed;
  }
  tree[key][name] = value;
  return ResultOk;
}

ResultT SettingsModel::WriteNumber(const Place& place, const std::wstring& name, int value) {
  const auto number = static_cast<uint32_t>(value);
  return Write(place, name, DwordValue(number), std::to_wstring(number));
}

ResultT SettingsModel::WriteText(const Place& place, const std::wstring& name,
                                 const std::wstring& text) {
  return Write(place, name, TextValue(text), text);
}

ResultT SettingsModel::WriteDouble(const Place& place, const std::wstring& name, double value) {
  return WriteText(place, name, Decimals(value));
}

ResultT SettingsModel::WriteGains(const Place& place, const Gains& gains) {
  const wchar_t* const names[] = {L"r", L"g", L"b"};
  for (size_t i = 0; i < 3; ++i) {
    if (const ResultT result = WriteDouble(place, names[i], gains[i]); result != ResultOk) {
      return result;
    }
  }
  return ResultOk;
}

ResultT SettingsModel::ReadGains(const Place& place, Gains& gains) {
  const wchar_t* const names[] = {L"r", L"g", L"b"};
  for (size_t i = 0; i < 3; ++i) {
    if (const ResultT result = ReadDouble(place, names[i], gains[i]); result != ResultOk) {
      return result;
    }
  }
  return ResultOk;
}

bool SettingsModel::KeyExists(const Place& place) {
  const bool exists = Calls("RegOpenKeyW") && TreeOf(place).contains(KeyOf(place));
  if (exists) {
    Calls("RegCloseKey");
  }
  return exists;
}

ResultT SettingsModel::DeleteKey(const Place& parent, const std::wstring& name) {
  if (!Calls("RegOpenKeyW") || !TreeOf(parent).contains(parent.path)) {
    Line(3, "RegisterHelper::RegDeleteKeyW", L"Open key:", parent.path, L" not exists!");
    return ResultKeyNotFound;
  }
  const bool good = Calls("RegDeleteKeyW") && TreeOf(parent).erase(parent.path + L"\\" + name) == 1;
  Calls("RegCloseKey");
  return good ? ResultOk : ResultFailed;
}

template <typename T>
bool SettingsModel::ReadIni(const wchar_t* section, const wchar_t* key, T& value) {
  const auto row = ini.find(std::wstring(section) + L"\\" + key);
  if (!Calls("GetPrivateProfileStringW") || row == ini.end()) {
    Line(1, "IniHelper::GetValue", L"get key:", key, L" from section:", section,
         L" failed in file:C:\\ProgramData\\Comms\\NxVelora\\SetColor.ini");
    return false;
  }
  std::wistringstream(row->second) >> value;
  return true;
}

// --- The classes ---

void SettingsModel::ResolveUser(Place& place) {
  place.ofUser = place.ofService = true;
  const bool isSession = Calls("CoreKit::GetLogonSessionId");
  // The session that the fault gives has no user.
  if (Calls("CoreKit::GetUserSIDBySessionId") && isSession && !sid.empty()) {
    place.path = sid + L"\\";
  }
}

SettingsModel::Place& SettingsModel::PlaceOf(int feature) {
  const auto known = places_.find(feature);
  if (known != places_.end()) {
    return known->second;
  }
  Place& place = places_[feature];
  place.multiUser = IsMultiUser(feature) != 0;
  constexpr char kName[] = "MultiUserReg::MultiUserReg";
  if (place.multiUser) {
    const bool isAdministrator = Calls("CoreKit::IsAdminPrivilege") && administrator;
    if (isAdministrator) {
      ResolveUser(place);
    } else {
      place.ofUser = true;
    }
  }
  Line(1, kName, L"FeatureType ", feature,
       place.multiUser ? L" is multi user!" : L" is single user!");
  place.path += std::wstring(kRoot) + L"\\" + kFeatureKeys[static_cast<size_t>(feature)];
  Line(1, kName, L"reg path:", place.path);
  return place;
}

void SettingsModel::SwitchUser() {
  Line(1, "SwitchUser");
  Place& place = PlaceOf(0);
  if (place.multiUser && place.ofService) {
    ResolveUser(place);
    Line(1, "MultiUserReg::SwitchUser", L"reg path:", place.path);
  }
}

int SettingsModel::PlainGet(int feature, const wchar_t* name, int value) {
  auto number = static_cast<uint32_t>(value);
  ReadNumber(PlaceOf(feature), name, number);
  return static_cast<int>(number);
}

int SettingsModel::GetWhitePointStatus(int value) {
  Line(1, "GetWhitePointStatus", "defaultWhitePointEnable:", value);
  return PlainGet(0, L"IsEnable", value);
}

ResultT SettingsModel::SetWhitePointStatus(int value) {
  Line(1, "SetWhitePointStatus", "whitePointEnable:", value);
  return WriteNumber(PlaceOf(0), L"IsEnable", value);
}

int SettingsModel::GetEyeProtectStatus(int value) {
  Line(1, "GetEyeProtectStatus", "defaultEyeProtectEnable:", value);
  const Place& place = PlaceOf(1);
  uint32_t status = 0;
  if (ReadNumber(place, L"IsEnable", status) == ResultOk) {
    return static_cast<int>(status);
  }
  status = static_cast<uint32_t>(value);
  ReadIni(L"EYEPROTECT", L"IsEnableEyeProtect", status);
  WriteNumber(place, L"IsEnable", static_cast<int>(status));
  return static_cast<int>(status);
}

ResultT SettingsModel::SetEyeProtectStatus(int value) {
  Line(1, "SetEyeProtectStatus", "eyeProtectEnable:", value);
  return WriteNumber(PlaceOf(1), L"IsEnable", value);
}

int SettingsModel::GetEyeProtectValue(int value) {
  Line(1, "GetEyeProtectValue", "defaultSliderValue:", value);
  const Place& place = PlaceOf(1);
  auto slider = static_cast<uint32_t>(value);
  bool toWrite = false;
  if (ReadNumber(place, L"ProtectValue", slider) != ResultOk) {
    int gate = 0;
    ReadIni(L"BLUEPROTECT", L"CurrentBlueProtect", gate);
    if (gate != 0) {
      ReadIni(L"BLUEPROTECT", L"CurrentBlueProtectSlider", slider);
    }
    toWrite = true;
  }
  if (static_cast<int>(slider) < 0 || static_cast<int>(slider) > 366) {
    slider = static_cast<uint32_t>(value);
    toWrite = true;
  }
  if (toWrite) {
    const auto written = static_cast<int>(slider);
    if (written < 0 || written > 366) {
      Line(3, "EyeProtectReg::SetEyeProtectValue", "exceed eyeProtectSliderValue:", written,
           ", valid range:[0, 366]");
    } else {
      WriteNumber(place, L"ProtectValue", written);
    }
  }
  return static_cast<int>(slider);
}

ResultT SettingsModel::SetEyeProtectValue(int value) {
  Line(1, "SetEyeProtectValue", "eyeProtectValue:", value);
  return WriteNumber(PlaceOf(1), L"ProtectValue", value);
}

int SettingsModel::GetPSRStatusValue(int value) {
  Line(1, "GetPSRStatusValue", "defaultPSREnable:", value);
  return PlainGet(1, L"PSRIsEnable", value);
}

ResultT SettingsModel::SetPSRStatusValue(int value) {
  Line(1, "SetPSRStatusValue", "PSREnable:", value);
  return WriteNumber(PlaceOf(1), L"PSRIsEnable", value);
}

double SettingsModel::GetRhineValue(double value) {
  Line(1, "GetRhineValue", "defaultRhineValue:", value);
  ReadDouble(PlaceOf(1), L"RhineValue", value);
  return value;
}

ResultT SettingsModel::SetRhineValue(double value) {
  Line(1, "SetRhineValue", "rhineValue:", value);
  return WriteDouble(PlaceOf(1), L"RhineValue", value);
}

int SettingsModel::GetColorBlueValue(int value) {
  Line(1, "GetColorBlueValue", "value:", value);
  PlaceOf(1);
  return value == 1 ? 255 : 0;
}

double SettingsModel::TransEyeProtectSliderValue(int slider) {
  Line(1, "TransEyeProtectSliderValue", "sliderValue:", slider);
  double rhine = double{0.82F};
  ReadDouble(PlaceOf(1), L"RhineValue", rhine);
  if (IsFeatureSupport(1) == 0 || (slider >= 180 && slider <= 195)) {
    return rhine;
  }
  if (slider > 195) {
    return rhine - (slider - 195) * (rhine * double{0.1F}) / 171;
  }
  const double rise = (1 - rhine) * double{0.65F};
  return rhine + rise - slider * rise / 180;
}

ResultT SettingsModel::SetEyeProtectHandleType(int value) {
  Line(1, "SetEyeProtectHandleType", "handleType:", value);
  return WriteNumber(PlaceOf(1), L"HandleType", value);
}

ResultT SettingsModel::SetEyeProtectRGB(double r, double g, double b) {
  Line(1, "SetEyeProtectRGB", "r:", r, ", g:", g, ", b:", b);
  return WriteGains(PlaceOf(1), {r, g, b});
}

int SettingsModel::GetTemperatureValue(int value) {
  Line(1, "GetTemperatureValue", "defaultTemperatureValue:", value);
  const Place& place = PlaceOf(kColorTemperature);
  auto slider = static_cast<uint32_t>(value);
  if (ReadNumber(place, L"TemperatureValue", slider) != ResultOk) {
    ReadIni(L"TEMPERATURE", L"CurrentTemperatureSlider", slider);
    WriteNumber(place, L"TemperatureValue", static_cast<int>(slider));
  }
  return static_cast<int>(slider);
}

ResultT SettingsModel::SetTemperatureValue(int value) {
  Line(1, "SetTemperatureValue", "temperaturValue:", value);
  return WriteNumber(PlaceOf(kColorTemperature), L"TemperatureValue", value);
}

int SettingsModel::GetColorTemperatureType(int value) {
  Line(1, "GetColorTemperatureType", "defaultColorType:", value);
  const Place& place = PlaceOf(kColorTemperature);
  uint32_t type = 0;
  if (ReadNumber(place, L"TemperatureType", type) == ResultOk) {
    return static_cast<int>(type);
  }
  unsigned isDefault = 0;
  unsigned isCold = 0;
  unsigned isWarm = 0;
  ReadIni(L"CIRCLE", L"IsIntelDefault", isDefault);
  ReadIni(L"CIRCLE", L"IsIntelCold", isCold);
  ReadIni(L"CIRCLE", L"IsIntelWarm", isWarm);
  const int seeded = isDefault != 0 ? 0 : isCold != 0 ? 2 : isWarm != 0 ? 1 : 255;
  WriteNumber(place, L"TemperatureType", seeded);
  return seeded;
}

ResultT SettingsModel::SetColorTemperatureType(int value) {
  Line(1, "SetColorTemperatureType", "colorType:", value);
  return WriteNumber(PlaceOf(kColorTemperature), L"TemperatureType", value);
}

ResultT SettingsModel::GetColorTemperatureConfig(ColorTemperatureConfig* point) {
  Line(1, "GetColorTemperatureConfig", "colorConfig:x:", point->x, ", y:", point->y);
  const Place& place = PlaceOf(kColorTemperature);
  ColorTemperatureConfig stored{};
  if (ReadDouble(place, L"X", stored.x) == ResultOk &&
      ReadDouble(place, L"Y", stored.y) == ResultOk) {
    *point = stored;
    return ResultOk;
  }
  double angle = 0;
  double scale = 0;
  const bool hasAngle = ReadIni(L"CIRCLE", L"Angle", angle);
  if (!ReadIni(L"CIRCLE", L"RadiusScale", scale) || !hasAngle) {
    return ResultFailed;
  }
  scale = std::min(scale, 1.0);
  *point = {80, 80};
  if (std::fabs(scale) > double{0.01F}) {
    *point = {80.0 * scale * std::cos(angle) + 80.0, 80.0 - 80.0 * scale * std::sin(angle)};
  }
  if (WriteDouble(place, L"X", point->x) == ResultOk) {
    WriteDouble(place, L"Y", point->y);
  }
  return ResultOk;
}

ResultT SettingsModel::SetColorTemperatureConfig(const ColorTemperatureConfig* point) {
  Line(1, "SetColorTemperatureConfig", "colorConfig:x:", point->x, ", y:", point->y);
  const Place& place = PlaceOf(kColorTemperature);
  const ResultT result = WriteDouble(place, L"X", point->x);
  return result != ResultOk ? result : WriteDouble(place, L"Y", point->y);
}

int SettingsModel::GetNatureColorStatus(int value) {
  Line(1, "GetNatureColorStatus", "defaultStatus:", value);
  const Place& place = PlaceOf(4);
  auto status = static_cast<uint32_t>(value);
  if (ReadNumber(place, L"IsEnable", status, true) != ResultOk) {
    ReadIni(L"NATURECOLOR", L"IsNatureColor", status);
    status = status != 0 ? 1 : 0;
    WriteNumber(place, L"IsEnable", static_cast<int>(status));
  }
  return static_cast<int>(status);
}

ResultT SettingsModel::SetNatureColorStatus(int value) {
  Line(1, "SetNatureColorStatus", "status:", value);
  return WriteNumber(PlaceOf(4), L"IsEnable", value);
}

int SettingsModel::GetColorFieldCurrentMode(int value) {
  Line(1, "GetColorFieldCurrentMode", "defaultMode:", value);
  return PlainGet(3, L"CurrentMode", value);
}

ResultT SettingsModel::SetColorFieldCurrentMode(int value) {
  Line(1, "SetColorFieldCurrentMode", "mode:", value);
  return WriteNumber(PlaceOf(3), L"CurrentMode", value);
}

int SettingsModel::GetColorFieldResetMode(int value) {
  Line(1, "GetColorFieldResetMode", "defaultMode:", value);
  return PlainGet(3, L"ResetMode", value);
}

ResultT SettingsModel::SetColorFieldResetMode(int value) {
  Line(1, "SetColorFieldResetMode", "config:", value);
  return WriteNumber(PlaceOf(3), L"ResetMode", value);
}

int SettingsModel::GetColorFieldSetType(int value) {
  Line(1, "GetColorFieldSetType", "defaultType:", value);
  return PlainGet(3, L"SetType", value);
}

ResultT SettingsModel::SetColorFieldSetType(int value) {
  Line(1, "SetColorFieldSetType", "setType:", value);
  return WriteNumber(PlaceOf(3), L"SetType", value);
}

// --- User modes and fine tuning ---

SettingsModel::Place SettingsModel::FineTuning(Place place, int mode, const std::string& id) {
  if (mode == USRDESIGN_MODE) {
    place.path += L"\\UserDesignMode\\" + Wide(id);
  } else {
    place.path += std::wstring(L"\\PresetMode\\") + kModeNames[static_cast<size_t>(mode)];
  }
  return place;
}

ResultT SettingsModel::GetWhitePointTueValue(WhitePointFineTueInfo* info) {
  Line(1, "GetWhitePointTueValue", "whitePoint:R:", info->r, ", G:", info->g, ", B:", info->b);
  constexpr char kName[] = "WhitePointFineTueReg::GetWhitePointTueValue";
  const Place place = FineTuning(PlaceOf(kFineTuning), info->mode, info->id);
  if (ReadDouble(place, L"R", info->r) != ResultOk) {
    Line(3, kName, "Read reg whitePoint R value fail, mode: ", info->mode, ", id: ", info->id);
    return ResultFailed;
  }
  if (ReadDouble(place, L"G", info->g) != ResultOk) {
    Line(3, kName, "Read reg whitePoint G value fail, mode: ", info->mode, ", id: ", info->id);
    return ResultFailed;
  }
  if (ReadDouble(place, L"B", info->b) != ResultOk) {
    Line(3, kName, "Read reg whitePoint B value fail, mode: ", info->mode, "id: ", info->id);
    return ResultFailed;
  }
  return ResultOk;
}

ResultT SettingsModel::SetWhitePointTueValue(const WhitePointFineTueInfo* info) {
  Line(1, "SetWhitePointTueValue", "whitePoint:R:", info->r, ", G:", info->g, ", B:", info->b);
  constexpr char kName[] = "WhitePointFineTueReg::SetWhitePointTueValue";
  const Place place = FineTuning(PlaceOf(kFineTuning), info->mode, info->id);
  if (WriteText(place, L"Id", Wide(info->id)) != ResultOk) {
    Line(3, kName, "Write id to reg fail, id: ", info->id);
    return ResultFailed;
  }
  if (WriteNumber(place, L"Mode", info->mode) != ResultOk) {
    Line(3, kName, "Write mode to reg fail, mode: ", info->mode);
    return ResultFailed;
  }
  if (WriteDouble(place, L"R", info->r) != ResultOk) {
    Line(3, kName, "Write whitePoint r fail, r: ", info->r);
    return ResultFailed;
  }
  if (WriteDouble(place, L"G", info->g) != ResultOk) {
    Line(3, kName, "Write whitePoint g fail, g: ", info->r);
    return ResultFailed;
  }
  if (WriteDouble(place, L"B", info->b) != ResultOk) {
    Line(3, kName, "Write whitePoint b fail, b: ", info->r);
    return ResultFailed;
  }
  return ResultOk;
}

ResultT SettingsModel::EditUserSerialNumReg(const UserDesignInfo* info) {
  Line(1, "EditUserSerialNumReg", "userDesignInfo:", static_cast<const void*>(info));
  constexpr char kName[] = "UserDesignReg::EditUserSerialNumReg";
  Place place = PlaceOf(kUserDesign);
  PlaceOf(kFineTuning);
  place.path += L"\\" + Ascii(info->id);
  if (WriteDouble(place, L"SerialNum", info->serialNum) != ResultOk) {
    Line(3, kName, "Edit user design serial num failed, id: ", info->id);
    return ResultFailed;
  }
  return ResultOk;
}

ResultT SettingsModel::DeleteUserDesignReg(const UserDesignInfo* info) {
  Line(1, "DeleteUserDesignReg", "userDesignInfo:", static_cast<const void*>(info));
  constexpr char kName[] = "UserDesignReg::DeleteUserDesignReg";
  const Place parent = PlaceOf(kUserDesign);
  Place place = parent;
  const std::wstring id = Ascii(info->id);
  place.path += L"\\" + id;
  if (!KeyExists(place)) {
    Line(1, kName, "IsRegKeyExists false, path", place.path);
    return ResultOk;
  }
  if (const ResultT result = DeleteKey(parent, id); result != ResultOk) {
    Line(3, kName, "RegDeleteKey Error, path", place.path);
    return result;
  }
  Place tuningParent = PlaceOf(kFineTuning);
  tuningParent.path += L"\\UserDesignMode";
  Place tuning = tuningParent;
  tuning.path += L"\\" + id;
  if (KeyExists(tuning) && DeleteKey(tuningParent, id) != ResultOk) {
    Line(3, "WhitePointFineTueReg::DeleteUsrModeWhitePoint",
         "Delete usr design mode white point fine tue value fail, id: ", id);
  }
  return ResultOk;
}

int SettingsModel::GetUserRegHkey() {
  Line(1, "GetUserRegHkey");
  PlaceOf(kUserDesign);
  PlaceOf(kFineTuning);
  Line(1, "UserDesignReg::GetUserRegHkey", "hkey is HKEY_LOCAL_MACHINE");
  return 2;
}

// --- Feature flags ---

void SettingsModel::LoadFlags() {
  const auto flag = [this](bool ofUser, const wchar_t* key, const wchar_t* name,
                           uint32_t value) -> uint32_t {
    Place place;
    place.ofUser = ofUser;
    place.path = std::wstring(kRoot) + L"\\FeatureInfo\\" + key;
    return ReadNumber(place, name, value) == ResultOk ? value != 0 : value;
  };
  for (size_t i = 0; i < kFlagNames.size(); ++i) {
    support_[i] = flag(false, L"Support", kFlagNames[i], 0);
    multiUser_[i] = flag(false, L"MultiUser", kFlagNames[i], 0);
    lcdCheck_[i] = flag(false, L"LcdCheck", kFlagNames[i], 0);
    firstUse_[i] = flag(multiUser_[i] == 1, L"FirstUse", kFlagNames[i], 1);
  }
  areFlagsLoaded_ = true;
}

int SettingsModel::IsFeature(int type, const Flags& flags) {
  if (!areFlagsLoaded_) {
    LoadFlags();
  }
  return static_cast<int>(flags[static_cast<size_t>(type)]);
}

ResultT SettingsModel::SetFeature(bool ofUser, int type, int value, Flags& flags,
                                  const wchar_t* key) {
  const auto index = static_cast<size_t>(type);
  Place place;
  place.ofUser = ofUser;
  place.path = std::wstring(kRoot) + L"\\FeatureInfo\\" + key;
  const ResultT result = WriteNumber(place, kFlagNames[index], value);
  if (result == ResultOk) {
    flags[index] = static_cast<uint32_t>(value);
  }
  return result;
}

ResultT SettingsModel::SetFirstUseState(int type, int value) {
  const bool ofUser = multiUser_[static_cast<size_t>(type)] == 1;
  return SetFeature(ofUser, type, value, firstUse_, L"FirstUse");
}

int SettingsModel::GetFrameWorkType() {
  Place place;
  place.path = std::wstring(kRoot) + L"\\FeatureInfo";
  uint32_t value = 0;
  ReadNumber(place, L"FrameWorkType", value);
  return static_cast<int>(value);
}

ResultT SettingsModel::SetFrameWorkType(int value) {
  Place place;
  place.path = std::wstring(kRoot) + L"\\FeatureInfo";
  return WriteNumber(place, L"FrameWorkType", value);
}

// --- Colour mathematics ---

void SettingsModel::TransColorTemperatureConfigToRGB(const ColorTemperatureConfig* point,
                                                     double radius, ColorTemperatureRgb* rgb) {
  Line(1, "TransColorTemperatureConfigToRGB", "config:x:", point->x, ", y:", point->y,
       ", radius:", radius, ", rgb:r:", rgb->r, ", g:", rgb->g, ", b:", rgb->b);
  PlaceOf(kColorTemperature);
  if (!areAlphasLoaded_) {
    uint32_t type = 6;
    if (ResultOf("GetPlatform") == 0) {
      type = platformType;
    } else {
      Line(3, "ColorTemperatureTrans::InitAlphaInfo", "GetPlatform failed!");
    }
    if (type == 0) {
      alphas_ = {0.95F, 0.94F, 0.82F, 0.93F, 0.94F, 0.90F};
    }
    areAlphasLoaded_ = true;
  }
  const double dx = point->x - radius;
  const double dy = point->y - radius;
  const double distance = std::sqrt(dx * dx + dy * dy);
  if (distance <= 1e-6) {
    return;
  }
  double angle = std::asin(dx / distance);
  if (dy > 0) {
    angle = angle < 0 ? 2 * std::numbers::pi + angle : angle;
  } else {
    angle = std::numbers::pi - angle;
  }
  const double sectors = angle / std::numbers::pi * 180 / 60;
  const double rho = std::min(distance / radius, 1.0);
  const auto sector = static_cast<size_t>(sectors);
  const double frac = sectors - static_cast<double>(sector);
  const auto& [red, green, blue, cyan, magenta, yellow] = alphas_;
  const std::array<Gains, 7> wheel = {{{cyan, 1, 1},
                                       {blue, blue, 1},
                                       {1, magenta, 1},
                                       {1, red, red},
                                       {1, 1, yellow},
                                       {green, 1, green},
                                       {cyan, 1, 1}}};
  const auto gain = [&](size_t channel) {
    const double rim = wheel[sector][channel] * (1 - frac) + wheel[sector + 1][channel] * frac;
    return 1.0 * (1 - rho) + rim * rho;
  };
  *rgb = {gain(0), gain(1), gain(2)};
}

bool SettingsModel::IsFusionNeeded(int feature) {
  if (ResultOf("GetPlatform") != 0) {
    Line(3, "FusionAlgorithm::IsNeedFusion",
         "GetPlatform failed! No need to fusion feature:", feature);
    return false;
  }
  return true;  // of the types that are used here
}

bool SettingsModel::EyeProtectGain(uint32_t colorBlue, Gains& gains) {
  gains = {1, 1, 1};
  if (colorBlue == 0 || PlainGet(1, L"HandleType", 0) == 0) {
    return false;
  }
  return ReadGains(PlaceOf(1), gains) == ResultOk;
}

namespace {

void Merge(const std::array<double, 3>& gains, Color3DInfo& output) {
  output.r *= gains[0];
  output.g *= gains[1];
  output.b *= gains[2];
}

}  // namespace

void SettingsModel::MergeColorTemperature(Color3DInfo& output) {
  if (IsFeatureSupport(2) == 0) {
    return;
  }
  int slider = GetEyeProtectValue(-1);
  if (slider == -1) {
    slider = 185;
    Line(2, "FusionAlgorithm::GetProtectValue", "Set slider value to default value 185");
  }
  output.protectValue = TransEyeProtectSliderValue(slider);
  output.colorBlue = static_cast<uint32_t>(GetColorBlueValue(GetEyeProtectStatus(0)));
  ColorTemperatureConfig point{};
  if (GetColorTemperatureConfig(&point) != ResultOk) {
    Line(3, "FusionAlgorithm::GetColorTemperatureInfo",
         "GetColorTemperatureConfig failed when feature fusion!");
    return;
  }
  ColorTemperatureRgb rgb = {1, 1, 1};
  TransColorTemperatureConfigToRGB(&point, 80, &rgb);
  Color3DInfo info = {rgb.r, rgb.g, rgb.b, 0, 0};
  Gains gains{};
  if (EyeProtectGain(output.colorBlue, gains)) {
    Merge(gains, info);
    output.colorBlue = 0;
  }
  Merge({info.r, info.g, info.b}, output);
}

void SettingsModel::MergeWhitePoint(uint32_t status, Color3DInfo& output) {
  if (IsFeatureSupport(0) == 0 || status != 1) {
    return;
  }
  Gains gains = {1, 1, 1};
  if (ReadGains(PlaceOf(0), gains) == ResultOk) {
    Merge(gains, output);
  }
}

void SettingsModel::MergeNaturalColor(uint32_t status, Color3DInfo& output) {
  if (IsFeatureSupport(4) == 0 || status != 1) {
    return;
  }
  Gains gains = {1, 1, 1};
  if (ReadGains(PlaceOf(4), gains) == ResultOk) {
    Merge(gains, output);
  }
}

void SettingsModel::Fusion(uint32_t feature, const FusionInfo* input, Color3DInfo* output) {
  *output = {1, 1, 1, 0, 0};
  if (feature == 0) {
    if (!IsFusionNeeded(0)) {
      return;
    }
    MergeWhitePoint(input->status, *output);
    MergeColorTemperature(*output);
    if (GetNatureColorStatus(0) == 1) {
      MergeNaturalColor(1, *output);
    }
  } else if (feature == 2) {
    *output = input->colorInfo;
    if (!IsFusionNeeded(2)) {
      return;
    }
    Gains gains{};
    if (EyeProtectGain(input->colorInfo.colorBlue, gains)) {
      Merge(gains, *output);
      output->colorBlue = 0;
    }
    if (GetWhitePointStatus(0) == 1) {
      MergeWhitePoint(1, *output);
    }
    if (GetNatureColorStatus(0) == 1) {
      MergeNaturalColor(1, *output);
    }
  } else {
    *output = {input->colorInfo.r, input->colorInfo.g, input->colorInfo.b, 0, 0};
    MergeColorTemperature(*output);
    if (IsFusionNeeded(4) && GetWhitePointStatus(0) == 1) {
      MergeWhitePoint(1, *output);
    }
  }
}

int SettingsModel::Set2DColorTemperature(const Color2DInfo* info) {
  Line(1, "Set2DColorTemperature", "colorInfo:temperature:", info->temperature,
       ", colorBlue:", info->colorBlue);
  return ResultOf("PlatformSet2DColorTemperature");
}

int SettingsModel::Set3DColorTemperature(const Color3DInfo* info) {
  Line(1, "Set3DColorTemperature", "colorInfo:r:", info->r, ", g:", info->g, ", b:", info->b,
       ", colorBlue:", info->colorBlue, ", protectValue:", info->protectValue);
  Place printer;
  printer.path = std::wstring(kRoot) + L"\\Printer";
  WriteGains(printer, {info->r, info->g, info->b});
  return ResultOf("PlatformSet3DColorTemperature");
}

}  // namespace faults
