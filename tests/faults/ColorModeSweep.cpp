#include "faults/ColorModeSweep.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <iterator>
#include <map>
#include <ostream>

namespace faults {
namespace {

using virtualnotebook::Notebook;

constexpr double kGamma = 2.4;

std::wstring Wide(const std::string& ascii) { return {ascii.begin(), ascii.end()}; }

bool IsNear(const std::vector<double>& a, const std::vector<double>& b) {
  return std::ranges::equal(a, b, [](double x, double y) { return std::fabs(x - y) < 1e-9; });
}

// The firmware's curve, bent by the gamma of the registered modes.
std::vector<double> Curve(const virtualnotebook::PanelDescription& panel) {
  std::vector<double> lut = virtualnotebook::MakeLut(panel, virtualnotebook::kGammaLut);
  for (double& value : lut) {
    value = 4095.0 * std::pow(value / 4095.0, kGamma / 2.2);
  }
  return lut;
}

bool Fits(const Rule& rule, const Fault& fault) {
  return fault.IsOf(rule.function) && fault.Names(rule.names) && fault.Names(rule.alsoNames) &&
         (rule.nth == 0 || rule.nth == fault.nOfItsKind) && (rule.n == 0 || rule.n == fault.n) &&
         rule.result.value_or(fault.kind.result) == fault.kind.result &&
         rule.lastError.value_or(fault.kind.lastError) == fault.kind.lastError;
}

// The two calls that take most of a run's time: a transform that nobody looks at, and rights for
// all users, which none of these tests asks for.
void AnswerAtOnce(Notebook& notebook) {
  notebook.FailCall("CreateMultiProfileTransform", 0, 1);
  notebook.FailCall("CoreKit::EnableFileUsersPriviledge", 0, 0);
}

testing::AssertionResult LoggedInOrder(const Notebook& notebook,
                                       const std::vector<std::wstring>& errors) {
  auto next = errors.begin();
  for (const virtualnotebook::LogLine& line : notebook.log) {
    if (next != errors.end() && line.level == 3 && line.text == *next) {
      ++next;
    }
  }
  if (next == errors.end()) {
    return testing::AssertionSuccess();
  }
  auto failure = testing::AssertionFailure() << "missing: " << testsupport::Utf8(*next);
  for (const virtualnotebook::LogLine& line : notebook.log) {
    failure << "\n  " << testing::PrintToString(line);
  }
  return failure;
}

}  // namespace

void PrintTo(Shown shown, std::ostream* out) {
  const char* const names[] = {"nothing", "old", "new", "golden", "other"};
  *out << names[static_cast<size_t>(shown)];
}

Rules operator+(Rules first, const Rules& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

const std::wstring ColorModeSweep::kDevice =
    virtualnotebook::MonitorDeviceId(virtualnotebook::kPanelDeviceId);

// --- The machine ---

ColorModeSweep::ColorModeSweep() {
  virtualnotebook::RemoveMachine();
  files_ = virtualnotebook::InstallMachine(Machine());
  RemoveTraces();
  HKEY key = nullptr;  // the system keeps what is above it
  RegOpenKeyExW(HKEY_CLASSES_ROOT, L"none", 0, KEY_READ, &key);
}

ColorModeSweep::~ColorModeSweep() {
  library_.reset();
  RemoveTraces();
  virtualnotebook::RemoveMachine();
}

const virtualnotebook::MachineData& ColorModeSweep::Machine() {
  static const virtualnotebook::MachineData machine =
      virtualnotebook::MakeMachine(virtualnotebook::PanelDescription{});
  return machine;
}

std::string ColorModeSweep::DataFile(const std::string& name) {
  return "C:\\ProgramData\\Comms\\NxVelora\\" + name;
}

void ColorModeSweep::RemoveTraces() {
  for (const char* name : {"sRGB.bin", "P3.bin", "EBOOK.bin", "Gamma.bin", "GoldenP3.bin",
                           "GoldensRGB.bin", "GoldensGamma.bin"}) {
    DeleteFileA(DataFile(name).c_str());
  }
  std::filesystem::remove_all(DataFile("User"));
  for (const char* name : {"NVX-sRGB.icc", "NVX-P3.icc", "Mine%1_usr.icc", "Yours%2_usr.icc"}) {
    DeleteFileA(("C:\\Windows\\System32\\spool\\drivers\\color\\" + std::string(name)).c_str());
  }
  RegDeleteTreeW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Norvex\\Velora");
}

void ColorModeSweep::StartProcess(uint32_t setType) {
  virtualnotebook::ProfileAssociations profiles;
  if (library_) {
    profiles = notebook().profiles;
    library_.reset();
  }
  library_.emplace();
  virtualnotebook::SetUpNotebook(notebook());
  notebook().profiles = profiles;
  notebook().firmwareTable = Machine().firmwareTable;
  ColorFieldInitInfo init{};
  init.setType = setType;
  init.defaultMode = SrgbMode;
  files_.digestFile.copy(init.pIccCheckFilePath, 100);
  files_.goldenName.copy(init.goldenFilePath, 100);
  ASSERT_EQ(library().InitColorFieldInfo(&init), ResultOk);
  for (const int mode : {1, 2, 7}) {
    ColorFieldModeInfo info{};
    info.mode = mode;
    files_.Profile(mode == 1 ? 1 : 2).copy(info.iccPath, 100);
    info.gamma = kGamma;
    info.gamut = mode;
    info.temperR = info.temperG = info.temperB = 1;
    info.PlatformPccMatrix[0] = info.PlatformPccMatrix[4] = info.PlatformPccMatrix[8] = 0.5;
    ASSERT_EQ(library().AddColorFieldModeInfo(&info), ResultOk);
  }
}

void ColorModeSweep::SetProfile(const std::wstring& name) {
  notebook().profiles.clear();
  if (!name.empty()) {
    notebook().profiles[kDevice] = {name};
  }
}

std::wstring ColorModeSweep::Profile() {
  const auto row = notebook().profiles.find(kDevice);
  return row == notebook().profiles.end() || row->second.empty() ? L"" : row->second.front();
}

Shown ColorModeSweep::LutOf(int type) {
  const std::vector<double>& lut = notebook().platform.lut3D;
  const auto of = [type](const virtualnotebook::PanelDescription& panel) {
    return virtualnotebook::MakeLut(panel, static_cast<uint8_t>(type));
  };
  static std::map<int, std::pair<std::vector<double>, std::vector<double>>> known;
  if (!known.contains(type)) {
    known[type] = {of(Machine().panel), of(NominalPanel(Machine().panel))};
  }
  return lut.empty()                 ? Shown::Nothing
         : lut == known[type].first  ? Shown::New
         : lut == known[type].second ? Shown::Golden
                                     : Shown::Other;
}

Shown ColorModeSweep::GammaLut() {
  static const std::vector<double> firmware = Curve(Machine().panel);
  static const std::vector<double> golden = Curve(NominalPanel(Machine().panel));
  const std::vector<double>& lut = notebook().platform.gammaLut;
  return lut.empty()             ? Shown::Nothing
         : IsNear(lut, firmware) ? Shown::New
         : IsNear(lut, golden)   ? Shown::Golden
                                 : Shown::Other;
}

// --- The sweep ---

void ColorModeSweep::Sweep(const Scene& scene, bool byRules) {
  scene.prepare();
  scene.call();  // the system opens things that it keeps, too
  int result = 0;
  std::set<HANDLE> before;
  RunSweep({.name = scene.name,
            .start = [&]() -> Notebook& {
              scene.prepare();
              before = OpenHandles();
              return notebook();
            },
            .call = [&] { result = scene.call(); },
            .check =
                [&](const Fault& fault) {
                  std::set<HANDLE> left;
                  std::ranges::set_difference(OpenHandles(), before,
                                              std::inserter(left, left.end()));
                  if (byRules || fault.function.empty()) {
                    Check(scene, fault, result, left.size());
                  }
                  CheckAlways(scene, result);
                  CloseHandles(left);
                },
            .without = scene.without,
            .answer = AnswerAtOnce});
}

void ColorModeSweep::Check(const Scene& scene, const Fault& fault, int result, size_t handlesLeft) {
  if (fault.function.empty()) {
    CheckEnding(scene, fault, scene.good, result);
    EXPECT_EQ(handlesLeft, 0u);
    return;
  }
  if (fault.n == 0) {
    return;
  }
  const auto rule =
      std::ranges::find_if(scene.rules, [&](const Rule& one) { return Fits(one, fault); });
  if (rule == scene.rules.end()) {
    ADD_FAILURE() << "nothing is told of this fault";
    return;
  }
  CheckEnding(scene, fault, rule->ending, result);
  // What could not be closed stays open.
  const bool isClose = fault.IsOf("CloseHandle") || fault.IsOf("RegCloseKey");
  EXPECT_EQ(handlesLeft, rule->ending.openProfiles + (isClose ? 1U : 0U));
}

Shown ColorModeSweep::ProfileOf(const Scene& scene) {
  const std::wstring profile = Profile();
  const bool isLost = scene.mayLoseProfile && profile.empty();
  return profile == scene.newProfile             ? Shown::New
         : profile == scene.oldProfile || isLost ? Shown::Old
                                                 : Shown::Other;
}

void ColorModeSweep::CheckEnding(const Scene& scene, const Fault& fault, const Ending& ending,
                                 int result) {
  EXPECT_EQ(result, ending.result);
  EXPECT_TRUE(LoggedInOrder(notebook(), ending.errors));
  EXPECT_EQ(ProfileOf(scene), ending.profile);
  EXPECT_EQ(scene.gamma(), ending.gamma);
  EXPECT_EQ(scene.lut(), ending.lut);
  EXPECT_EQ(CountOpenProfiles(fault), ending.openProfiles);
}

// Whatever failed: the result is one that is documented, nobody sees but old or whole new things,
// and the next call repairs everything, in this process and in a new one.
void ColorModeSweep::CheckAlways(const Scene& scene, int result) {
  EXPECT_EQ(std::ranges::count(scene.results, result), 1) << result;
  EXPECT_NE(ProfileOf(scene), Shown::Other);
  EXPECT_NE(scene.gamma(), Shown::Other);
  EXPECT_NE(scene.lut(), Shown::Other);
  scene.check();
  const bool isGood = result == scene.good.result && scene.gamma() == scene.good.gamma &&
                      scene.lut() == scene.good.lut;
  const auto& next = scene.next ? scene.next : scene.call;
  if (scene.lasts()) {
    EXPECT_NE(next(), scene.good.result);
  } else {
    SCOPED_TRACE("the next call");
    notebook().ForgetRecords();
    AnswerAtOnce(notebook());
    EXPECT_EQ(next(), scene.good.result);
    EXPECT_EQ(ProfileOf(scene), scene.good.profile);
    EXPECT_NE(scene.gamma(), Shown::Other);
    EXPECT_NE(scene.lut(), Shown::Other);
  }
  if (scene.restart && !isGood) {
    SCOPED_TRACE("in a new process");
    scene.restart();
    AnswerAtOnce(notebook());
    EXPECT_EQ(next(), scene.good.result);
    EXPECT_EQ(ProfileOf(scene), scene.good.profile);
    EXPECT_EQ(scene.gamma(), scene.good.gamma);
    EXPECT_EQ(scene.lut(), scene.good.lut);
  }
}

unsigned ColorModeSweep::CountOpenProfiles(const Fault& fault) {
  const auto opened =
      std::ranges::count_if(notebook().log, [](const virtualnotebook::LogLine& line) {
        return line.text.starts_with(L"GetProfileHandle OpenColorProfile Success!");
      });
  const auto closed = notebook().CountCalls("CloseColorProfile");
  return static_cast<unsigned>(opened) - static_cast<unsigned>(closed) +
         (fault.IsOf("CloseColorProfile") ? 1 : 0);
}

// --- Rules ---

Rules ColorModeSweep::MonitorRules(const Ending& good, const Ending& failed, unsigned firstDevice) {
  const auto failedBy = [&failed](const std::wstring& error) {
    Ending ending = failed;
    ending.errors.insert(ending.errors.begin(), error + L"(ColorFieldApi::GetDefaultIccFile)");
    return ending;
  };
  // Every monitor then counts as the built-in one, and there is but one.
  Ending withoutWmi = good;
  withoutWmi.errors = {
      L"QueryWmiNamespaceProperty WmiMonitorConnectionParams error."
      L"(ColorFieldApi::GetTargetMonitorNameByWmi)"};
  const Ending noMonitor = failedBy(L"GetTargetMonitorName Failed!");
  const Ending emptyMonitor = failedBy(L"currentMainMonitorName empty!");
  const auto query = [&](const std::wstring& code) {
    return failedBy(L"GetDefaultIccFile Failed! targetMonitorName:" + kDevice + L"errorCode is" +
                    code);
  };
  return {
      {.function = "WmiQuery::ExcuteQueryImpl",
       .names = L"WmiMonitorConnectionParams",
       .ending = withoutWmi},
      {.function = "WmiQuery::GetResult", .names = L"WmiMonitorConnectionParams", .ending = good},
      {.function = "EnumDisplayMonitors", .ending = noMonitor},
      {.function = "GetMonitorInfoW", .ending = noMonitor},
      {.function = "EnumDisplayDevicesW", .n = firstDevice, .ending = emptyMonitor},
      {.function = "EnumDisplayDevicesW", .n = firstDevice + 1, .ending = emptyMonitor},
      // The ends of the lists, and the count of the monitors: one more cannot become fewer than
      // one.
      {.function = "EnumDisplayDevicesW", .ending = good},
      {.function = "WcsGetDefaultColorProfile",
       .lastError = ERROR_ACCESS_DENIED,
       .ending = query(L"5")},
      {.function = "WcsGetDefaultColorProfile", .lastError = 0, .ending = query(L"0")},
      // No profile, which is as good an answer.
      {.function = "WcsGetDefaultColorProfile", .lastError = ERROR_FILE_NOT_FOUND, .ending = good}};
}

Rules ColorModeSweep::PresetProfileRules(const std::string& path, const Ending& good,
                                         const Whole& whole) {
  const std::wstring profile = Wide(path);
  const std::wstring name = profile.substr(profile.rfind(L'\\') + 1);
  const std::wstring digest = L"IccDigest.bin";
  const auto refused = [&](int result, std::vector<std::wstring> errors) {
    errors.push_back(result == ResultFileNotFound
                         ? L"Icc File:" + profile +
                               L" Not Found!(ColorFieldApi::CheckTargetIccFileIsValid)"
                         : L"Icc File Be Modified! fileName:" + profile +
                               L"(ColorFieldApi::CheckTargetIccFileIsValid)");
    errors.push_back(L"Icc Already Associated. iccFileName:" + profile +
                     L"(ColorFieldApi::SetOsIccFileWithCheck)");
    return whole({.result = result, .errors = errors});
  };
  const Ending missing = refused(ResultFileNotFound, {});
  const Ending notHashed =
      refused(ResultIccError, {L"GetSha256Value failed.(IccFileCheck::CompareSha256)"});
  const Ending changed = refused(ResultIccError, {});
  // An empty name occurs in every other one: the profile counts as associated.
  Ending associated = good;
  associated.profile = Shown::Old;
  return Rules{
             {.function = "CoreKit::StringToWString",
              .names = profile,
              .ending = whole({.result = ResultFailed,
                               .errors = {L"SetOsIccFile input prar is empty!"
                                          L"(ColorFieldApi::SetOsIccFile)"}})},
             {.function = "CoreKit::StringToWString", .names = name, .ending = associated},
             {.function = "_access", .names = name, .ending = missing},
             {.function = "_access", .names = digest, .ending = missing},
             {.function = "CoreKit::GetCanonicalizedFilePath",
              .names = name,
              .ending = refused(ResultIccError,
                                {L"IccFilePath error(IccFileCheck::GetSha256Value)",
                                 L"GetSha256Value failed.(IccFileCheck::CompareSha256)"})},
             {.function = "CreateFileA",
              .names = name,
              .ending = refused(
                  ResultIccError,
                  {L"Open iccFile failed!fileName:" + profile + L"(IccFileCheck::GetSha256Value)",
                   L"GetSha256Value failed.(IccFileCheck::CompareSha256)"})},
             {.function = "GetFileSizeEx", .names = name, .ending = notHashed},
             {.function = "ReadFile", .names = name, .ending = notHashed},
             {.function = "CoreKit::GetCanonicalizedFilePath", .names = digest, .ending = changed},
             {.function = "CreateFileA",
              .names = digest,
              .ending = refused(ResultIccError, {L"Open digestFile Failed!digestFileName:" +
                                                 Wide(virtualnotebook::FilesOf().digestFile) +
                                                 L"(IccFileCheck::GetSha256DataFromDigestFile)"})},
             {.function = "ReadFile", .names = digest, .ending = changed},
             {.function = "CloseHandle", .names = name, .ending = good},
             {.function = "CloseHandle", .names = digest, .ending = good}} +
         AssociationRules(profile, good, whole);
}

Rules ColorModeSweep::AssociationRules(const std::wstring& path, const Ending& good,
                                       const Whole& whole) {
  // A profile that could not be installed leaves the handles open that it had.
  const auto notInstalled = [&](std::vector<std::wstring> errors, unsigned openProfiles) {
    errors.push_back(L"InstallIccFile Failed! fileName:" + path + L"(ColorFieldApi::SetOsIccFile)");
    return whole({.result = ResultIccError, .errors = errors, .openProfiles = openProfiles});
  };
  const std::wstring noProfile =
      L"Get CurrentProFileHandle Failed! fileName:" + path + L"(ColorFieldApi::InstallIccFile)";
  const std::wstring noStandard =
      L"Get StandardProfileHandle Failed! fileName:" + path + L"(ColorFieldApi::InstallIccFile)";
  const std::wstring notValid =
      L"GetProfileHandle Profile Not Valid!(ColorFieldApi::GetProfileHandle)";
  Ending oneOpen = good;
  oneOpen.openProfiles = 1;
  return {
      {.function = "OpenColorProfileW",
       .n = 1,
       .ending = notInstalled(
           {L"GetProfileHandle OpenColorProfile Failed!" + path + L", buf size:" +
                std::to_wstring(path.size()) + L", cbDataSize:" +
                std::to_wstring(2 * path.size() + 2) + L"(ColorFieldApi::GetProfileHandle)",
            noProfile},
           0)},
      {.function = "IsColorProfileValid", .n = 1, .ending = notInstalled({notValid, noProfile}, 1)},
      {.function = "GetStandardColorSpaceProfileW", .ending = notInstalled({noStandard}, 1)},
      {.function = "OpenColorProfileW", .n = 2, .ending = notInstalled({noStandard}, 1)},
      {.function = "IsColorProfileValid",
       .n = 2,
       .ending = notInstalled({notValid, noStandard}, 2)},
      {.function = "CreateMultiProfileTransform", .ending = good},
      {.function = "InstallColorProfileW",
       .ending = notInstalled(
           {L"InstallColorProfile Failed! fileName:" + path + L"(ColorFieldApi::InstallIccFile)"},
           2)},
      {.function = "WcsDisassociateColorProfileFromDevice", .ending = good},
      {.function = "WcsAssociateColorProfileWithDevice",
       .ending = whole({.result = ResultColorFieldError,
                        .errors = {L"AssociateIccFile Failed! fileName:" + path +
                                   L"(ColorFieldApi::SetOsIccFile)"}})},
      {.function = "CloseColorProfile", .ending = oneOpen}};
}

Rules ColorModeSweep::EdidRules(const Ending& good, const Ending& unknown,
                                const Ending& otherSerial) {
  const auto unknownBy = [&unknown](std::vector<std::wstring> errors) {
    Ending ending = unknown;
    ending.errors.insert(ending.errors.begin(), errors.begin(), errors.end());
    return ending;
  };
  const std::wstring enumeration = L"SYSTEM\\CurrentControlSet\\Enum\\";
  const std::wstring open = L"RegOpenKeyExA Failed! edidFullPath:" + enumeration;
  const std::wstring opened = L"\\Device Parameters\\(ColorField3DLut::GetLcdEdidData)";
  // The caption takes the id's place, and is none.
  const Ending noId =
      unknownBy({L"QueryCimv2NameSpaceProperty failed, id is "
                 L"(ColorField3DLut::GetPnpDeviceID)",
                 open + L"Generic PnP Monitor" + opened});
  return {{.function = "WmiQuery::ExcuteQueryImpl", .names = L"PNPDeviceID", .ending = noId},
          {.function = "WmiQuery::GetResult", .names = L"PNPDeviceID", .ending = noId},
          {.function = "CoreKit::WStringToString",
           .names = virtualnotebook::kPanelDeviceId,
           .ending = unknownBy({L"GetPnpDeviceID Failed! deviceId is invalid, deviceId is "
                                L"(ColorField3DLut::GetPnpDeviceID)",
                                L"GetPnpDeviceID Failed! edidRegistryPath is empty."
                                L"(ColorField3DLut::GetEdidDataPath)"})},
          {.function = "RegOpenKeyExA",
           .ending = unknownBy({open + virtualnotebook::kPanelDeviceId + opened})},
          {.function = "RegQueryValueExA",
           .n = 1,
           .ending = unknownBy({L"RegQuery max Edid value length Failed, maxValueLength is 0"
                                L"(ColorField3DLut::GetLcdEdidData)"})},
          {.function = "RegQueryValueExA", .n = 2, .ending = unknown},
          {.function = "CoreKit::BytesToHexString", .ending = otherSerial},
          {.function = "RegCloseKey", .names = L"Device Parameters", .ending = good}};
}

}  // namespace faults
