// doctor: a walk over everything that the library depends on. Changes nothing.
#include "veloractl/Doctor.h"

#include <windows.h>

#include <icm.h>
#include <winsvc.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <set>

#include "CoreKit/CoreKit.h"
#include "frame/Constants.h"
#include "frame/Sha256.h"
#include "panel/LcdEdidParse.h"
#include "veloractl/Application.h"
#include "veloractl/Commands.h"
#include "veloractl/DescribedJson.h"
#include "veloractl/Features.h"
#include "veloractl/LightSensor.h"
#include "veloractl/Modes.h"
#include "veloractl/Registry.h"
#include "veloractl/System.h"
#include "veloractl/VirtualMachine.h"
#include "veloractl/inspect/Inspect.h"
#include "veloractl/inspect/Machine.h"

namespace veloractl {
namespace {

namespace fs = std::filesystem;

constexpr char kInstaller[] = "install the product again";

// The walk. Each step looks at one thing, and goes on whatever it finds.
class Walk {
 public:
  Walk(Session& session, Json& facts) : session_(session), facts_(facts) {}

  Findings Make() {
    const struct {
      const char* what;
      void (Walk::*look)();
    } kSteps[] = {{"library", &Walk::LookAtLibrary},         {"rights", &Walk::LookAtRights},
                  {"registry", &Walk::LookAtRegistry},       {"INI file", &Walk::LookAtIni},
                  {"folders", &Walk::LookAtFolders},         {"panel", &Walk::LookAtPanel},
                  {"firmware table", &Walk::LookAtFirmware}, {"profiles", &Walk::LookAtProfiles},
                  {"data files", &Walk::LookAtDataFiles},    {"monitors", &Walk::LookAtMonitors},
                  {"platform", &Walk::LookAtPlatform},       {"sensor", &Walk::LookAtSensor},
                  {"service", &Walk::LookAtService}};
    for (const auto& step : kSteps) {
      PrintProgress(std::string("looking at: ") + step.what);
      try {
        (this->*step.look)();
      } catch (const std::exception& error) {
        findings_.Fail(step.what, error.what(), "see the sentence");
      }
    }
    return findings_;
  }

 private:
  void LookAtLibrary() {
    session_.Library();
    const Json versions = ModuleVersions();
    facts_["modules"] = versions;
    for (const Json& module : versions) {
      const std::string name = module["module"].get<std::string>();
      findings_.Expect(module["path"].is_string(), name,
                       module["version"].is_string()
                           ? "version " + module["version"].get<std::string>()
                           : "not loaded",
                       kInstaller);
    }
  }

  void LookAtRights() {
    const bool isAdmin = static_cast<unsigned char>(CoreKit::IsAdminPrivilege()) != 0;
    findings_.Note("rights", isAdmin ? "an administrator's: settings of multi-user features go to "
                                       "the console user's hive"
                                     : "a user's");
    HKEY key = nullptr;
    const LSTATUS status = RegOpenKeyExW(HKEY_LOCAL_MACHINE, kVeloraKey, 0, KEY_SET_VALUE, &key);
    if (status == ERROR_SUCCESS) {
      RegCloseKey(key);
      findings_.Holds("writing machine settings", "allowed");
    } else if (status == ERROR_ACCESS_DENIED) {
      findings_.Warn("writing machine settings", "refused",
                     "run the host as an administrator, or have the installer set the key's "
                     "access list");
    } else {
      findings_.NotTested("writing machine settings", "the key isn't there yet");
    }
  }

  void LookAtRegistry() {
    Json tree = ReadTree(HKEY_LOCAL_MACHINE, kVeloraKey);
    facts_["registry"] = {
        {NameOfKey(HKEY_LOCAL_MACHINE, kVeloraKey), tree},
        {NameOfKey(HKEY_CURRENT_USER, kVeloraKey), ReadTree(HKEY_CURRENT_USER, kVeloraKey)}};
    const bool hasFlags = tree.is_object() && tree.contains("FeatureInfo");
    if (hasFlags) {
      findings_.Holds("feature flags", "stored");
    } else {
      findings_.Warn("feature flags", "none are stored: no feature counts as supported",
                     "the service stores them at installation: start it");
    }
    const Json command = ReadRegistry(HKEY_CLASSES_ROOT, velora::kShellCommandKey, L"");
    findings_.Note("shell key", command.is_string() ? command.get<std::string>()
                                                    : "names no program: the golden file is looked "
                                                      "for in the other places");
  }

  void LookAtIni() {
    const std::wstring path =
        FromUtf8(ToUtf8(session_.Path(ToCodePage(ToUtf8(std::wstring(velora::kIniFilePath))))));
    if (!fs::exists(path)) {
      findings_.Warn("INI file", "not there: settings begin with the hosts' own defaults",
                     kInstaller);
      return;
    }
    wchar_t sections[512];
    GetPrivateProfileSectionNamesW(sections, 512, path.c_str());
    std::string names;
    for (const wchar_t* name = sections; *name != L'\0'; name += std::wcslen(name) + 1) {
      names += (names.empty() ? "" : ", ") + ToUtf8(std::wstring(name));
    }
    if (names.empty()) {
      findings_.Fail("INI file", "it has no section", kInstaller);
    } else {
      findings_.Holds("INI file", "sections " + names);
    }
  }

  void LookAtFolders() {
    LookAtFolder("data folder", velora::kDataDir, true);
    LookAtFolder("program folder", velora::kInstallDir, false);
    LookAtFolder("profiles' folder", velora::colorProfileDir, false);
    if (fs::exists(session_.Path(velora::userRootDir))) {
      LookAtFolder("users' 3D LUTs", velora::user3DLutDir, true);
      LookAtFolder("users' gamma LUTs", velora::userGammaLutDir, true);
    } else {
      findings_.Note("users' LUTs", "none yet: the first user mode makes the folder");
    }
  }

  // Opened for a new file, without making one.
  void LookAtFolder(const char* what, const std::string& machinePath, bool isWritten) {
    std::string path = session_.Path(machinePath);
    const bool exists = fs::is_directory(path);
    if (!findings_.Expect(exists, what, exists ? ToUtf8(machinePath) : "not there", kInstaller) ||
        !isWritten) {
      return;
    }
    const HANDLE folder = CreateFileW(FromUtf8(ToUtf8(path)).c_str(), FILE_ADD_FILE,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                      nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (folder == INVALID_HANDLE_VALUE) {
      findings_.Warn(std::string(what) + ", writing", "refused",
                     "give all users write access to it, as the installer does");
    } else {
      CloseHandle(folder);
    }
  }

  void LookAtPanel() {
    const Heard& heard = HearPanel(session_);
    edid_ = heard.edid;
    facts_["edid"] = HexOf(edid_);
    if (edid_.empty()) {
      findings_.Fail("panel", "the library found no EDID",
                     "\"veloractl panel\" tells which row of WMI was chosen and why");
      return;
    }
    Inspection inspection = Inspect(edid_, {}, FileKind::Edid);
    velora::LcdEdidParse parse;
    if (parse.ParseEdidData(edid_.data(), static_cast<uint32_t>(edid_.size()))) {
      surroundings_.panel = parse;
      surroundings_.panelSource = "this machine";
    }
    Summarise("EDID", inspection);
  }

  void LookAtFirmware() {
    const std::vector<uint8_t> table = ReadFirmwareTable(session_);
    if (table.empty()) {
      findings_.Fail("firmware table", "the machine has no table DLUT",
                     "without it LUTs come from the golden file: update the firmware");
      return;
    }
    NoteFile("firmware table DLUT", table);
    Summarise("firmware table", Inspect(table, surroundings_, FileKind::FirmwareTable));
  }

  void LookAtProfiles() {
    MachineModes modes;
    try {
      modes = LoadModes(session_);
    } catch (const Failure& failure) {
      findings_.NotTested("profiles", failure.what());
      return;
    }
    const std::string digestPath =
        FieldOf(modes.init.pIccCheckFilePath, sizeof modes.init.pIccCheckFilePath);
    const auto digest = ReadIfThere(digestPath);
    if (findings_.Expect(digest.has_value(), "digest file",
                         digestPath + (digest ? "" : " is not there"), kInstaller)) {
      NoteFile(digestPath, *digest);
      surroundings_.digest = *digest;
      Summarise("digests", Inspect(*digest, surroundings_, FileKind::DigestFile));
    }
    std::set<std::string> paths;
    for (const ColorFieldModeInfo& preset : modes.presets) {
      paths.insert(FieldOf(preset.iccPath, sizeof preset.iccPath));
    }
    for (const std::string& path : paths) {
      LookAtProfile(path);
    }
    golden_ = ToUtf8(std::string(velora::kInstallDir)) +
              FieldOf(modes.init.goldenFilePath, sizeof modes.init.goldenFilePath);
  }

  void LookAtProfile(const std::string& path) {
    if (path.empty()) {
      return;
    }
    const auto profile = ReadIfThere(path);
    if (!findings_.Expect(profile.has_value(), "profile", path + (profile ? "" : " is not there"),
                          kInstaller)) {
      return;
    }
    NoteFile(path, *profile);
    Surroundings around = surroundings_;
    around.fileName = path.substr(path.find_last_of('\\') + 1);
    Summarise("profile " + around.fileName, Inspect(*profile, around));
  }

  void LookAtDataFiles() {
    if (!golden_.empty()) {
      const auto golden = ReadIfThere(golden_);
      if (golden) {
        NoteFile(golden_, *golden);
        Summarise("golden file", Inspect(*golden, {}, FileKind::GoldenFile));
      } else {
        findings_.Warn(
            "golden file", golden_ + " is not there",
            "after a change of the panel there is no LUT for it: " + std::string(kInstaller));
      }
    }
    size_t count = 0;
    std::error_code error;
    for (const fs::directory_entry& entry :
         fs::recursive_directory_iterator(session_.Path(velora::kDataDir), error)) {
      if (entry.is_regular_file(error) && entry.path().extension() == L".bin") {
        ++count;
        LookAtBinFile(entry.path());
      }
    }
    if (count == 0) {
      findings_.Note("LUT files", "none yet: the first switch to a mode makes them");
    }
  }

  void LookAtBinFile(const fs::path& path) {
    const std::string name = ToUtf8(path.filename().wstring());
    const std::vector<uint8_t> bytes = ReadBinaryFile(ToUtf8(path.wstring()));
    NoteFile(name, bytes);
    Surroundings around = surroundings_;
    around.fileName = name;
    Summarise(name, Inspect(bytes, around));
  }

  void LookAtMonitors() {
    Json associations = Json::array();
    size_t makers = 0;
    DISPLAY_DEVICEW adapter = {};
    adapter.cb = sizeof adapter;
    for (DWORD a = 0; EnumDisplayDevicesW(nullptr, a, &adapter, 0); ++a) {
      DISPLAY_DEVICEW monitor = {};
      monitor.cb = sizeof monitor;
      for (DWORD m = 0; EnumDisplayDevicesW(adapter.DeviceName, m, &monitor, 0); ++m) {
        const std::wstring id = monitor.DeviceID;
        makers += std::wstring(monitor.DeviceString).find(L"NVX") != std::wstring::npos ? 1U : 0U;
        wchar_t profile[MAX_PATH] = L"";
        const bool has = CanAskForProfiles() &&
                         WcsGetDefaultColorProfile(WCS_PROFILE_MANAGEMENT_SCOPE_CURRENT_USER,
                                                   id.c_str(), CPT_ICC, CPST_RGB_WORKING_SPACE, 0,
                                                   sizeof profile, profile) != FALSE;
        associations.push_back({{"monitor", ToUtf8(id)},
                                {"name", ToUtf8(std::wstring(monitor.DeviceString))},
                                {"profile", has ? Json(ToUtf8(std::wstring(profile))) : Json()}});
      }
    }
    facts_["associations"] = associations;
    if (associations.empty()) {
      findings_.Fail("monitors", "the system shows none",
                     "colour modes need the session of the user who sits before the panel");
    } else {
      findings_.Holds("monitors", std::to_string(associations.size()) + ", of them " +
                                      std::to_string(makers) + " external ones of the maker's");
    }
  }

  // Wine ends a program that asks for one.
  bool CanAskForProfiles() {
    return session_.Virtual() != nullptr ||
           GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") == nullptr;
  }

  void LookAtPlatform() {
    const auto& library = session_.Library();
    const int result = library.Init();
    if (findings_.Expect(result == 0, "platform library",
                         result == 0 ? "starts" : "its start gave " + std::to_string(result),
                         "the display driver doesn't match VeloraPlatform.dll: update both")) {
      library.Fini();
    }
  }

  void LookAtSensor() {
    const auto sensors = CountLightSensors();
    if (!sensors) {
      findings_.Warn("light sensor", "the Sensor API is not there",
                     "natural colour needs the system's sensor service");
    } else if (*sensors == 0) {
      findings_.Warn("light sensor", "there is none",
                     "natural colour doesn't move: look at the sensor's driver");
    } else {
      findings_.Holds("light sensor", std::to_string(*sensors));
    }
  }

  void LookAtService() {
    const SC_HANDLE manager = OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT);
    const SC_HANDLE service =
        manager == nullptr ? nullptr : OpenServiceW(manager, L"Winmgmt", SERVICE_QUERY_STATUS);
    SERVICE_STATUS status = {};
    const bool runs = service != nullptr && QueryServiceStatus(service, &status) &&
                      status.dwCurrentState == SERVICE_RUNNING;
    if (service != nullptr) {
      CloseServiceHandle(service);
    }
    if (manager != nullptr) {
      CloseServiceHandle(manager);
    }
    findings_.Expect(runs, "service Winmgmt", runs ? "runs" : "does not run",
                     "natural colour waits for it: start the service");
  }

  std::optional<std::vector<uint8_t>> ReadIfThere(const std::string& utf8MachinePath) {
    const std::string path = session_.Path(ToCodePage(utf8MachinePath));
    return fs::is_regular_file(path) ? std::optional(ReadBinaryFile(ToUtf8(path))) : std::nullopt;
  }

  // One line for what is as it should be, and else those that are not.
  void Summarise(const std::string& what, const Inspection& inspection) {
    const Json& rows = inspection.findings.Rows();
    Findings wrong;
    for (const Json& row : rows) {
      const auto text = [&](const char* name) { return row[name].get<std::string>(); };
      if (text("result") == "fails") {
        wrong.Fail(text("check"), text("found"), text("advice"));
      } else if (text("result") == "differs") {
        wrong.Differs(text("check"), text("found"), text("advice"));
      } else if (text("result") == "warning") {
        wrong.Warn(text("check"), text("found"), text("advice"));
      }
    }
    if (wrong.Rows().empty()) {
      findings_.Holds(what, std::string(NameOf(inspection.kind)) + ", " +
                                std::to_string(rows.size()) + " checks");
    } else {
      findings_.Add(what, wrong);
    }
  }

  void NoteFile(const std::string& name, ByteSpan bytes) {
    uint8_t hash[32] = {};
    velora::Sha256(bytes, hash);
    facts_["files"].push_back({{"file", name}, {"bytes", bytes.size()}, {"sha256", HexOf(hash)}});
  }

  Session& session_;
  Json& facts_;
  Findings findings_;
  std::vector<uint8_t> edid_;
  Surroundings surroundings_;
  std::string golden_;
};

// --- Masking ---

void ReplaceAll(std::string& text, const std::string& secret) {
  const auto same = [](char a, char b) {
    return std::tolower(static_cast<unsigned char>(a)) ==
           std::tolower(static_cast<unsigned char>(b));
  };
  if (secret.empty() || std::ranges::all_of(secret, [](char c) { return c == '0'; })) {
    return;
  }
  auto at = text.begin();
  while ((at = std::search(at, text.end(), secret.begin(), secret.end(), same)) != text.end()) {
    at = std::fill_n(at, secret.size(), '*');
  }
}

// The texts by which the machine and its user could be told: the panel's serial number, as number
// and as text, and the user's SID.
std::vector<std::string> Secrets(const Json& facts) {
  std::vector<std::string> secrets;
  const std::string edid = facts.value("edid", "");
  constexpr size_t kSerial = size_t{12} * 2;  // in hexadecimal digits
  if (edid.size() >= kSerial + 8) {
    secrets.push_back(edid.substr(kSerial, 8));
  }
  constexpr size_t kDescriptors = 54;
  constexpr size_t kDescriptorSize = 18;
  for (size_t at = kDescriptors * 2; at + kDescriptorSize * 2 <= std::min<size_t>(edid.size(), 252);
       at += kDescriptorSize * 2) {
    if (edid.substr(at, 10) == "000000FF00") {
      secrets.push_back(edid.substr(at + 10, 26));
    }
  }
  std::wstring sid;
  if (CoreKit::GetUserSIDBySessionId(CoreKit::GetLogonSessionId(), sid) == 0) {
    secrets.push_back(ToUtf8(sid));
  }
  wchar_t user[256];
  DWORD length = 256;
  if (GetUserNameW(user, &length)) {
    secrets.push_back("\\\\Users\\\\" + ToUtf8(std::wstring(user)) + "\\\\");
  }
  return secrets;
}

struct DoctorArguments {
  std::string report;
  bool mask = false;
};

Report Doctor(const DoctorArguments& arguments, Session& session) {
  Json facts = {{"files", Json::array()}};
  const Findings findings = Examine(session, facts);
  Json report = {{"verdict", NameOf(findings.Worst())},
                 {"advice", findings.Advice()},
                 {"checks", findings.Rows()}};
  if (!arguments.report.empty()) {
    Json bug = {{"format", "veloractl bug report 1"}, {"veloractl", VELORA_VERSION}};
    bug.update(report);
    bug.update(facts);
    bug["log"] = LastLogLines(session, 200, 0);
    std::string text = bug.dump(2, ' ', false, Json::error_handler_t::replace);
    for (const std::string& secret : arguments.mask ? Secrets(facts) : std::vector<std::string>{}) {
      ReplaceAll(text, secret);
    }
    WriteFile(arguments.report, text + "\n");
    report["report"] = arguments.report;
  }
  const bool good = findings.Worst() <= Verdict::Noteworthy;
  return {report, good ? kDone : kRefused, good ? "" : findings.Advice()};
}

}  // namespace

Findings Examine(Session& session, Json& facts) { return Walk(session, facts).Make(); }

void AddDoctorCommand(const CommandSet& commands) {
  commands.Add(
      "doctor", "Looks at everything the library depends on; changes nothing",
      [](CLI::App& app) -> Action {
        const auto arguments = std::make_shared<DoctorArguments>();
        app.add_option("--report", arguments->report,
                       "Written for a bug report: versions, hashes of all data files, "
                       "registry, EDID, associations, last log lines, all checks")
            ->type_name("FILE");
        app.add_flag("--mask", arguments->mask,
                     "Stars for serial numbers, the user's name and SID in that file");
        app.footer(
            "Each line: what was looked at, what was found, what to do. The exit status is\n"
            "1 when something is wrong.\n"
            "  veloractl doctor --report bug.json --mask");
        return [arguments](Session& session) { return Doctor(*arguments, session); };
      });
}

}  // namespace veloractl
