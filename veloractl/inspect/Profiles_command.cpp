// profiles: what the system associates with each display, what the library believes, and at which
// step a mode's profile fails.
#include <windows.h>

#include <icm.h>

#include <algorithm>
#include <functional>

#include "veloractl/Features.h"
#include "veloractl/Modes.h"
#include "veloractl/inspect/Inspect_commands.h"
#include "veloractl/inspect/Listening.h"

namespace veloractl {
namespace {

constexpr DWORD kMonitorClass = 0x6D6E7472;  // CLASS_MONITOR, "mntr"

struct Scope {
  WCS_PROFILE_MANAGEMENT_SCOPE scope;
  const char* name;
};
constexpr Scope kScopes[] = {{WCS_PROFILE_MANAGEMENT_SCOPE_CURRENT_USER, "current user"},
                             {WCS_PROFILE_MANAGEMENT_SCOPE_SYSTEM_WIDE, "all users"}};

// The question that the library asks.
Json DefaultProfile(const Scope& scope, const wchar_t* device) {
  wchar_t name[MAX_PATH] = L"";
  if (!WcsGetDefaultColorProfile(scope.scope, device, CPT_ICC, CPST_RGB_WORKING_SPACE, 0,
                                 sizeof name, name)) {
    const DWORD error = GetLastError();
    return error == ERROR_FILE_NOT_FOUND ? Json() : Json("error " + std::to_string(error));
  }
  return ToUtf8(std::wstring(name));
}

Json AssociatedProfiles(const Scope& scope, const wchar_t* device) {
  ENUMTYPEW wanted{};
  wanted.dwSize = sizeof wanted;
  wanted.dwVersion = ENUM_TYPE_VERSION;
  wanted.dwFields = ET_DEVICENAME;
  wanted.pDeviceName = device;
  DWORD size = 0;
  DWORD count = 0;
  Json profiles = Json::array();
  if (!WcsEnumColorProfilesSize(scope.scope, &wanted, &size)) {
    return profiles;
  }
  std::vector<wchar_t> texts(size / sizeof(wchar_t) + 2);
  if (!WcsEnumColorProfiles(scope.scope, &wanted, reinterpret_cast<BYTE*>(texts.data()), size,
                            &count)) {
    return profiles;
  }
  const wchar_t* text = texts.data();
  for (DWORD i = 0; i < count && *text != L'\0'; ++i) {
    const std::wstring profile = text;
    profiles.push_back(ToUtf8(profile));
    text += profile.size() + 1;
  }
  return profiles;
}

// Which of the two scopes the system takes for the display.
bool UsesPerUser(const wchar_t* device) {
  BOOL perUser = FALSE;
  return WcsGetUsePerUserProfiles(device, kMonitorClass, &perUser) && perUser;
}

void AddDisplay(const DISPLAY_DEVICEW& display, const std::wstring& target, Json& rows) {
  for (const Scope& scope : kScopes) {
    const bool isUsers = scope.scope == WCS_PROFILE_MANAGEMENT_SCOPE_CURRENT_USER;
    rows.push_back({{"display", ToUtf8(std::wstring(display.DeviceName))},
                    {"text", ToUtf8(std::wstring(display.DeviceString))},
                    {"device", ToUtf8(std::wstring(display.DeviceID))},
                    {"target", display.DeviceID == target},
                    {"scope", scope.name},
                    {"in force", UsesPerUser(display.DeviceID) == isUsers},
                    {"default", DefaultProfile(scope, display.DeviceID)},
                    {"profiles", AssociatedProfiles(scope, display.DeviceID)}});
  }
}

Json Associations(const std::wstring& target) {
  Json rows = Json::array();
  DISPLAY_DEVICEW adapter{};
  for (DWORD i = 0; adapter.cb = sizeof adapter, EnumDisplayDevicesW(nullptr, i, &adapter, 0);
       ++i) {
    DISPLAY_DEVICEW display{};
    for (DWORD k = 0;
         display.cb = sizeof display, EnumDisplayDevicesW(adapter.DeviceName, k, &display, 0);
         ++k) {
      AddDisplay(display, target, rows);
    }
  }
  return rows;
}

std::string FileNameOf(const std::string& path) { return path.substr(path.rfind('\\') + 1); }

// An error's own words, the innermost: the first of the chain.
std::string FirstError(const Heard& heard) {
  constexpr int kError = 3;
  const auto found = std::ranges::find(heard.log, kError, &Heard::Line::level);
  return found == heard.log.end() ? "" : ToUtf8(found->text);
}

const char* AdviceFor(ResultT result) {
  switch (result) {
    case ResultFileNotFound:
      return "install the profile and the digest file again";
    case ResultIccError:
      return "the file was changed or is no profile: \"veloractl inspect\" tells more; install it "
             "again";
    default:
      return "\"veloractl panel\" and docs/log-lines.md tell what the line means";
  }
}

// Has the library go through a mode's profile up to its association, which is refused: all that is
// asked before it, and nothing changed.
Json TryProfile(HMODULE library, const std::string& path, const std::string& current,
                const std::function<ResultT()>& set, bool& failed) {
  const std::string name = FileNameOf(path);
  Json row = {{"profile", path}};
  // Without a file name the library takes any profile for the mode's and goes on to the panel.
  if (name.empty()) {
    row["state"] = "without a profile";
    return row;
  }
  row["associated"] = !current.empty() && current.find(name) != std::string::npos;
  Listener listener(library, ProfileAnswer::Another);
  const ResultT result = set();
  if (listener.heard.reachedAssociation) {
    row["state"] = "good";
    return row;
  }
  failed = true;
  row["state"] = NameOfResult(result);
  row["fails at"] = FirstError(listener.heard);
  row["advice"] = AdviceFor(result);
  return row;
}

template <size_t size>
std::string TextOf(const char (&field)[size]) {
  return FieldOf(field, size);
}

Json Belief(const Heard& heard) {
  Json belief = {{"target display", ToUtf8(heard.profileDevice)},
                 {"profile", heard.profileName.empty() ? Json() : Json(ToUtf8(heard.profileName))}};
  if (heard.profileError && *heard.profileError != ERROR_FILE_NOT_FOUND) {
    belief["error"] = *heard.profileError;
  }
  for (const Heard::Query& query : heard.queries) {
    belief["panel by WMI"] = query.rows.empty() ? Json() : Json(ToUtf8(query.rows.front()));
  }
  const std::string error = heard.profileDevice.empty() ? FirstError(heard) : "";
  if (!error.empty()) {
    belief["fails at"] = error;
  }
  return belief;
}

// The modes as they are registered; without a description of them there is only the rest to tell.
// NOLINTNEXTLINE(bugprone-exception-escape): the check suspects the moving of JSON values
struct KnownModes {
  std::vector<ColorFieldModeInfo> presets;
  std::vector<UserDesignInfo> users;
  Json missing;  // why there are none
};

KnownModes ModesOf(Session& session) {
  KnownModes modes;
  try {
    session.LibraryWithModes();
    modes.presets = LoadModes(session).presets;
    modes.users = StoredUserModes(session);
  } catch (const Failure& failure) {
    modes.missing = failure.what();
  }
  return modes;
}

Report Profiles(Session& session) {
  const KnownModes modes = ModesOf(session);
  const virtualnotebook::LoadedLibrary& library = session.Library();
  Heard heard;
  {
    Listener listener(library.Handle(), ProfileAnswer::Refused);
    library.SyncCurrentModeIccFile();  // stops at the question for the profile
    heard = std::move(listener.heard);
  }
  const std::string current = ToUtf8(heard.profileName);
  bool failed = heard.profileDevice.empty();
  Json presets = Json::array();
  for (const ColorFieldModeInfo& preset : modes.presets) {
    Json row = {{"mode", NameOfMode(preset.mode)}};
    row.update(TryProfile(
        library.Handle(), TextOf(preset.iccPath), current,
        [&] { return library.SetColorField(preset.mode); }, failed));
    presets.push_back(row);
  }
  Json users = Json::array();
  for (const UserDesignInfo& mode : modes.users) {
    Json row = {{"id", TextOf(mode.id)}};
    row.update(TryProfile(
        library.Handle(), TextOf(mode.iccPath), current,
        [&] { return library.SetUserColorField(mode.id); }, failed));
    users.push_back(row);
  }
  const Json report = {{"library", Belief(heard)},
                       {"associations", Associations(heard.profileDevice)},
                       {"modes", modes.missing.is_null() ? Json("registered") : modes.missing},
                       {"presets", presets},
                       {"user modes", users}};
  if (failed) {
    return {report, kRefused,
            heard.profileDevice.empty()
                ? "the library finds no display to associate profiles with"
                : "not every mode's profile could be set, see \"fails at\""};
  }
  return report;
}

}  // namespace

void AddProfilesCommand(const CommandSet& commands) {
  commands.Add("profiles",
               "The displays' profiles in both scopes, what the library believes, and at which "
               "step a mode's profile fails",
               [](CLI::App& app) -> Action {
                 app.footer(
                     "It changes nothing: the library goes through each mode's checks and is "
                     "stopped ahead of the association.\n\n"
                     "  veloractl profiles\n"
                     "  veloractl --modes modes.json profiles");
                 return Profiles;
               });
}

}  // namespace veloractl
