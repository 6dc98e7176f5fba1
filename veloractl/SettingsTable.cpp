#include "veloractl/SettingsTable.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "CoreKit/CoreKit.h"
#include "frame/Constants.h"
#include "veloractl/Features.h"
#include "veloractl/Registry.h"

namespace veloractl {
namespace {

using virtualnotebook::LoadedLibrary;
using Kind = Setting::Kind;

constexpr FeatureType kMachine = -1;
constexpr double kSliderEnd = 366;
constexpr double kLargest = INT32_MAX;

int Whole(const Numbers& numbers) { return static_cast<int>(numbers.front()); }

// The pair of exports of a whole number.
#define WHOLE(Name)                                                       \
  "Get" #Name, "Set" #Name,                                               \
      [](const LoadedLibrary& library, const Numbers& usual) -> Numbers { \
        return {static_cast<double>(library.Get##Name(Whole(usual)))};    \
      },                                                                  \
      [](const LoadedLibrary& library, const Numbers& numbers) {          \
        return library.Set##Name(Whole(numbers));                         \
      }

const std::vector<Setting>& Table() {
  static const std::vector<Setting> table = {
      {"white-point.status",
       L"WhitePoint",
       FEATURE_TYPE_WHITEPOINT,
       Kind::kWhole,
       {L"IsEnable"},
       0,
       1,
       {0},
       "correction of the white point: 1 on, 0 off",
       nullptr,
       nullptr,
       WHOLE(WhitePointStatus)},
      {"eye-protection.status",
       L"EyeProtect",
       FEATURE_TYPE_EYE_PROTECT,
       Kind::kWhole,
       {L"IsEnable"},
       0,
       1,
       {0},
       "less blue light: 1 on, 0 off",
       L"EYEPROTECT",
       L"IsEnableEyeProtect",
       WHOLE(EyeProtectStatus)},
      {"eye-protection.value",
       L"EyeProtect",
       FEATURE_TYPE_EYE_PROTECT,
       Kind::kWhole,
       {L"ProtectValue"},
       0,
       kSliderEnd,
       {0},
       "position of its slider",
       L"BLUEPROTECT",
       L"CurrentBlueProtectSlider",
       WHOLE(EyeProtectValue)},
      {"eye-protection.psr",
       L"EyeProtect",
       FEATURE_TYPE_EYE_PROTECT,
       Kind::kWhole,
       {L"PSRIsEnable"},
       -kLargest,
       kLargest,
       {0},
       "the PSR setting, which the library only stores",
       nullptr,
       nullptr,
       WHOLE(PSRStatusValue)},
      {"eye-protection.rhine",
       L"EyeProtect",
       FEATURE_TYPE_EYE_PROTECT,
       Kind::kFraction,
       {L"RhineValue"},
       0,
       1,
       {0.82},
       "base of the slider's strength",
       nullptr,
       nullptr,
       "GetRhineValue",
       "SetRhineValue",
       [](const LoadedLibrary& library, const Numbers& usual) -> Numbers {
         return {library.GetRhineValue(usual.front())};
       },
       [](const LoadedLibrary& library, const Numbers& numbers) {
         return library.SetRhineValue(numbers.front());
       }},
      {"eye-protection.handle-type",
       L"EyeProtect",
       FEATURE_TYPE_EYE_PROTECT,
       Kind::kWhole,
       {L"HandleType"},
       -kLargest,
       kLargest,
       {0},
       "who applies it: 0 the platform, any other number Fusion",
       nullptr,
       nullptr,
       nullptr,
       "SetEyeProtectHandleType",
       nullptr,
       [](const LoadedLibrary& library, const Numbers& numbers) {
         return library.SetEyeProtectHandleType(Whole(numbers));
       }},
      {"eye-protection.gains",
       L"EyeProtect",
       FEATURE_TYPE_EYE_PROTECT,
       Kind::kFraction,
       {L"r", L"g", L"b"},
       0,
       1,
       {1, 1, 1},
       "gains of red, green and blue, where Fusion applies it",
       nullptr,
       nullptr,
       nullptr,
       "SetEyeProtectRGB",
       nullptr,
       [](const LoadedLibrary& library, const Numbers& numbers) {
         return library.SetEyeProtectRGB(numbers[0], numbers[1], numbers[2]);
       }},
      {"temperature.value",
       L"ColorTemperature",
       FEATURE_TYPE_TEMPERATURE,
       Kind::kWhole,
       {L"TemperatureValue"},
       0,
       kSliderEnd,
       {183},
       "position of the colour temperature's slider",
       L"TEMPERATURE",
       L"CurrentTemperatureSlider",
       WHOLE(TemperatureValue)},
      {"temperature.type",
       L"ColorTemperature",
       FEATURE_TYPE_TEMPERATURE,
       Kind::kWhole,
       {L"TemperatureType"},
       0,
       255,
       {255},
       "0 default, 1 warm, 2 cold, 255 unknown",
       L"CIRCLE",
       L"IsIntelDefault",
       WHOLE(ColorTemperatureType)},
      {"temperature.point",
       L"ColorTemperature",
       FEATURE_TYPE_TEMPERATURE,
       Kind::kFraction,
       {L"X", L"Y"},
       0,
       160,
       {80, 80},
       "x and y on the colour temperature circle, whose centre is 80 80",
       L"CIRCLE",
       L"Angle",
       "GetColorTemperatureConfig",
       "SetColorTemperatureConfig",
       [](const LoadedLibrary& library, const Numbers& usual) -> Numbers {
         ColorTemperatureConfig point = {.x = usual[0], .y = usual[1]};
         return library.GetColorTemperatureConfig(&point) == ResultOk ? Numbers{point.x, point.y}
                                                                      : Numbers{};
       },
       [](const LoadedLibrary& library, const Numbers& numbers) {
         const ColorTemperatureConfig point = {.x = numbers[0], .y = numbers[1]};
         return library.SetColorTemperatureConfig(&point);
       }},
      {"color-mode.current",
       L"ColorField",
       FEATURE_TYPE_COLOR_FIELD,
       Kind::kWhole,
       {L"CurrentMode"},
       -1,
       USRDESIGN_MODE,
       {-1},
       "the mode in force, which the host stores; -1 none",
       nullptr,
       nullptr,
       WHOLE(ColorFieldCurrentMode)},
      {"color-mode.reset",
       L"ColorField",
       FEATURE_TYPE_COLOR_FIELD,
       Kind::kWhole,
       {L"ResetMode"},
       -1,
       USRDESIGN_MODE,
       {-1},
       "the mode to return to on reset; -1 none",
       nullptr,
       nullptr,
       WHOLE(ColorFieldResetMode)},
      {"color-mode.set-type",
       L"ColorField",
       FEATURE_TYPE_COLOR_FIELD,
       Kind::kWhole,
       {L"SetType"},
       0,
       4,
       {4},
       "the way of reset: 0 DDC/CI, 1 3D LUT, 2 matrix, 3 gamma and 3D LUT, 4 none",
       nullptr,
       nullptr,
       WHOLE(ColorFieldSetType)},
      {"natural-color.status",
       L"NaturalColor",
       FEATURE_TYPE_NATURAL_COLOR,
       Kind::kWhole,
       {L"IsEnable"},
       0,
       1,
       {0},
       "the panel follows the room's light: 1 on, 0 off",
       L"NATURECOLOR",
       L"IsNatureColor",
       WHOLE(NatureColorStatus)},
      {"frame-work-type",
       L"FeatureInfo",
       kMachine,
       Kind::kWhole,
       {L"FrameWorkType"},
       -kLargest,
       kLargest,
       {0},
       "a number that the library only stores",
       nullptr,
       nullptr,
       "GetFrameWorkType",
       "SetFrameWorkType",
       [](const LoadedLibrary& library, const Numbers&) -> Numbers {
         return {static_cast<double>(library.GetFrameWorkType())};
       },
       [](const LoadedLibrary& library, const Numbers& numbers) {
         return library.SetFrameWorkType(Whole(numbers));
       }},
  };
  return table;
}
#undef WHOLE

bool IsInIni(const Setting& setting) {
  wchar_t text[256];
  return setting.iniSection != nullptr &&
         GetPrivateProfileStringW(setting.iniSection, setting.iniKey, L"", text, 256,
                                  velora::kIniFilePath) != 0;
}

std::wstring PathOf(const Setting& setting, const Hive& hive) {
  return hive.prefix + kVeloraKey + L"\\" + setting.key;
}

// What the registry holds, value by value; empty where one is missing or no number.
Numbers Stored(const Setting& setting, const Hive& hive) {
  Numbers numbers;
  for (const wchar_t* value : setting.values) {
    const Json stored = ReadRegistry(hive.root, PathOf(setting, hive), value);
    if (stored.is_number()) {
      numbers.push_back(stored.get<double>());
    } else if (stored.is_string()) {
      const std::string text = stored.get<std::string>();
      char* end = nullptr;
      const double number = std::strtod(text.c_str(), &end);
      if (end != text.c_str()) {
        numbers.push_back(number);
      }
    }
  }
  return numbers.size() == setting.values.size() ? numbers : Numbers{};
}

std::string Range(const Setting& setting) {
  return AsJson(setting, {setting.least}).dump() + " to " + AsJson(setting, {setting.most}).dump();
}

}  // namespace

std::span<const Setting> AllSettings() { return Table(); }

const Setting& SettingOf(const std::string& name) {
  const auto found = std::ranges::find(Table(), name, &Setting::name);
  if (found == Table().end()) {
    throw Failure(kBadArguments,
                  "there is no setting \"" + name + "\"; \"veloractl get --all\" lists them");
  }
  return *found;
}

// As each feature's settings choose it at their first use.
Hive HiveOf(Session& session, FeatureType feature) {
  if (feature == kMachine || session.Library().IsMultiUser(feature) == 0) {
    return {HKEY_LOCAL_MACHINE, {}};
  }
  if (static_cast<unsigned char>(CoreKit::IsAdminPrivilege()) == 0) {
    return {HKEY_CURRENT_USER, {}};
  }
  std::wstring sid;
  CoreKit::GetUserSIDBySessionId(CoreKit::GetLogonSessionId(), sid);
  return {HKEY_USERS, sid + L"\\"};
}

Json GetSetting(Session& session, const Setting& setting) {
  const Hive hive = HiveOf(session, setting.feature);
  Numbers numbers = Stored(setting, hive);
  const char* source = "registry";
  if (numbers.empty()) {
    source = setting.get == nullptr ? "none" : IsInIni(setting) ? "ini" : "default";
  }
  if (setting.get != nullptr) {
    numbers = setting.get(session.Library(), setting.usual);
    source = numbers.empty() ? "none" : source;
  }
  return {{"setting", setting.name},
          {"value", numbers.empty() ? Json() : AsJson(setting, numbers)},
          {"source", source},
          {"key", NameOfKey(hive.root, PathOf(setting, hive))}};
}

Numbers NumbersOf(const Setting& setting, const Json& value, int status, const std::string& where) {
  Numbers numbers;
  for (const Json& item : value.is_array() ? value : Json::array({value})) {
    if (!item.is_number()) {
      throw Failure(status, where + ": " +
                                item.dump(-1, ' ', false, Json::error_handler_t::replace) +
                                " is no number");
    }
    numbers.push_back(item.get<double>());
  }
  if (numbers.size() != setting.values.size()) {
    throw Failure(status, where + " takes " + std::to_string(setting.values.size()) +
                              (setting.values.size() == 1 ? " number" : " numbers"));
  }
  for (const double number : numbers) {
    if (!(number >= setting.least && number <= setting.most) ||
        (setting.kind == Kind::kWhole && number != std::trunc(number))) {
      throw Failure(status, where + " takes " +
                                (setting.kind == Kind::kWhole ? "whole numbers" : "numbers") +
                                " from " + Range(setting));
    }
  }
  return numbers;
}

Json AsJson(const Setting& setting, const Numbers& numbers) {
  Json list = Json::array();
  for (const double number : numbers) {
    list.push_back(setting.kind == Kind::kWhole ? Json(static_cast<int64_t>(number))
                                                : Json(number));
  }
  return list.size() == 1 ? list.front() : list;
}

void SetSetting(Session& session, const Setting& setting, const Numbers& numbers) {
  Expect(setting.set(session.Library(), numbers), setting.setter);
}

}  // namespace veloractl
