// The settings by name: what each is, and the exports that get and set it.
#pragma once

#include <windows.h>

#include <functional>
#include <span>
#include <string>
#include <vector>

#include "veloractl/Report.h"
#include "veloractl/Session.h"

namespace veloractl {

using Numbers = std::vector<double>;

struct Setting {
  enum class Kind { kWhole, kFraction };

  const char* name;
  const wchar_t* key;   // below SOFTWARE\Norvex\Velora
  FeatureType feature;  // whose hive it is in; -1: the machine's
  Kind kind;
  std::vector<const wchar_t*> values;  // in the registry; as many numbers as the setting has
  double least;
  double most;
  Numbers usual;  // the caller's default
  const char* meaning;
  const wchar_t* iniSection;  // null: no factory default
  const wchar_t* iniKey;
  const char* getter;  // null: the library has none
  const char* setter;
  std::function<Numbers(const virtualnotebook::LoadedLibrary&, const Numbers& usual)> get;
  std::function<ResultT(const virtualnotebook::LoadedLibrary&, const Numbers&)> set;
};

std::span<const Setting> AllSettings();
// Failure with kBadArguments for an unknown name.
const Setting& SettingOf(const std::string& name);

// Where the library keeps it.
struct Hive {
  HKEY root;
  std::wstring prefix;  // ahead of the key: the user's SID in HKEY_USERS
};
Hive HiveOf(Session& session, FeatureType feature);

// The setting as JSON: "setting", "value" (null: none), "source" ("registry", "ini", "default" or
// "none": where the value came from), "key". As any reader's first one, this stores a factory
// default.
Json GetSetting(Session& session, const Setting& setting);

// A number, a list of as many numbers as the setting has; Failure with status for any other, and
// for one out of range. where: how the failure names it.
Numbers NumbersOf(const Setting& setting, const Json& value, int status, const std::string& where);
Json AsJson(const Setting& setting, const Numbers& numbers);

// Failure with kRefused where the library refuses.
void SetSetting(Session& session, const Setting& setting, const Numbers& numbers);

}  // namespace veloractl
