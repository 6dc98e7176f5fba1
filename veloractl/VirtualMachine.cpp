#include "veloractl/VirtualMachine.h"

#include <icm.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <iterator>

#include "frame/Constants.h"

namespace veloractl {
namespace {

using namespace virtualnotebook;

constexpr wchar_t kRegistryFolder[] = L"Software\\veloractl";

struct MovedKey {
  HKEY key;
  const wchar_t* name;
};
const MovedKey kMovedKeys[] = {{HKEY_CLASSES_ROOT, L"HKEY_CLASSES_ROOT"},
                               {HKEY_LOCAL_MACHINE, L"HKEY_LOCAL_MACHINE"},
                               {HKEY_USERS, L"HKEY_USERS"},
                               {HKEY_CURRENT_USER, L"HKEY_CURRENT_USER"}};

constexpr int kFlaggedFeatures = FEATURE_TYPE_ESD + 1;

// In the order of FeatureType; as the commands have them.
constexpr const char* kFeatureNames[kFlaggedFeatures] = {
    "white-point",   "eye-protection", "temperature", "color-mode",
    "natural-color", "dp-in-out",      "esd"};

struct NamedLut {
  const char* name;
  uint8_t type;
};
constexpr NamedLut kLuts[] = {{"base", kBaseLut},   {"srgb", kSrgbLut},   {"p3", kP3Lut},
                              {"adobe", kAdobeLut}, {"ebook", kEbookLut}, {"gamma", kGammaLut}};

// The factory defaults of the usual notebook.
constexpr const char* kUsualIni =
    "[EYEPROTECT]\r\nIsEnableEyeProtect=0\r\n"
    "[BLUEPROTECT]\r\nCurrentBlueProtect=1\r\nCurrentBlueProtectSlider=90\r\n"
    "[TEMPERATURE]\r\nCurrentTemperatureSlider=183\r\n"
    "[CIRCLE]\r\nIsIntelDefault=1\r\nAngle=0\r\nRadiusScale=0\r\n"
    "[NATURECOLOR]\r\nIsNatureColor=0\r\n";

std::wstring Widen(const std::string& text) { return FromUtf8(ToUtf8(text)); }

Xy XyOf(DescribedJson& object, const std::string& name, Xy fallback) {
  const std::vector<double> xy = object.Numbers(name, {fallback.x, fallback.y});
  return {xy[0], xy[1]};
}

std::vector<uint8_t> LutTypes(DescribedJson& object, const std::string& name,
                              const std::vector<uint8_t>& fallback) {
  if (!object.Has(name)) {
    return fallback;
  }
  std::vector<uint8_t> types;
  for (const std::string& text : object.Texts(name, {})) {
    const auto* const lut = std::ranges::find(kLuts, text, &NamedLut::name);
    if (lut == std::end(kLuts)) {
      object.Refuse(name, "names no LUT by \"" + text +
                              "\"; there are base, srgb, p3, adobe, ebook and gamma");
    }
    types.push_back(lut->type);
  }
  return types;
}

std::wstring DeviceIdOf(const PanelDescription& panel) {
  wchar_t id[64];
  std::swprintf(id, std::size(id), L"DISPLAY\\%hs%04X\\4&1a2b3c&0&UID0", panel.vendor.c_str(),
                panel.product);
  return id;
}

}  // namespace

MovedRegistry::MovedRegistry()
    : path_(std::wstring(kRegistryFolder) + L"\\" + std::to_wstring(GetCurrentProcessId())) {
  RegDeleteTreeW(HKEY_CURRENT_USER, path_.c_str());
  // The user's hive last: the others are made in it.
  for (const MovedKey& moved : kMovedKeys) {
    HKEY key = nullptr;
    if (RegCreateKeyExW(HKEY_CURRENT_USER, (path_ + L"\\" + moved.name).c_str(), 0, nullptr, 0,
                        KEY_ALL_ACCESS, nullptr, &key, nullptr) != ERROR_SUCCESS ||
        RegOverridePredefKey(moved.key, key) != ERROR_SUCCESS) {
      throw Failure(kUnavailable, "the virtual notebook's registry can't be made");
    }
    RegCloseKey(key);
  }
}

MovedRegistry::~MovedRegistry() {
  for (const MovedKey& moved : kMovedKeys) {
    RegOverridePredefKey(moved.key, nullptr);
  }
  RegDeleteTreeW(HKEY_CURRENT_USER, path_.c_str());
  RegDeleteKeyW(HKEY_CURRENT_USER, kRegistryFolder);  // unless another process has its own in it
}

ScratchFolder::ScratchFolder() {
  char temporary[MAX_PATH];
  const DWORD length = GetTempPathA(MAX_PATH, temporary);
  path_ = std::string(temporary, length) + "veloractl-" + std::to_string(GetCurrentProcessId());
  std::error_code error;
  std::filesystem::remove_all(path_, error);
  std::filesystem::create_directories(path_, error);
  if (error) {
    throw Failure(kUnavailable, "the folder " + ToUtf8(path_) + " can't be made");
  }
}

ScratchFolder::~ScratchFolder() {
  std::error_code error;
  std::filesystem::remove_all(path_, error);
}

MachineDirs DirsBelow(const std::string& scratch) {
  return {.program = scratch + "\\Program Files", .data = scratch + "\\ProgramData"};
}

std::map<std::wstring, std::wstring> FoldersBelow(const std::string& scratch) {
  const MachineDirs machine;
  const MachineDirs moved = DirsBelow(scratch);
  return {{Widen(machine.program), Widen(moved.program)},
          {Widen(machine.data), Widen(moved.data)},
          {Widen(velora::colorProfileDir), Widen(scratch + "\\color")}};
}

void MakeProfileFolder(const std::string& scratch) {
  std::filesystem::create_directories(scratch + "\\color");
  const std::wstring folder = Widen(scratch + "\\color");
  wchar_t path[MAX_PATH] = L"";
  DWORD size = sizeof path;
  if (GetStandardColorSpaceProfileW(nullptr, 0x73524742 /* LCS_sRGB */, path, &size)) {
    const std::wstring name = path;
    CopyFileExW(path, (folder + name.substr(name.find_last_of(L'\\'))).c_str(), nullptr, nullptr,
                nullptr, 0);
  }
}

std::wstring OwnEventPrefix() {
  return L"Local\\veloractl-" + std::to_wstring(GetCurrentProcessId()) + L"-";
}

VirtualMachine::VirtualMachine(const std::string& descriptionFile) {
  DescribedJson description = descriptionFile.empty() ? DescribedJson(Json::object(), "")
                                                      : DescribedJson::FromFile(descriptionFile);
  try {
    Describe(description);
  } catch (const std::invalid_argument& error) {
    throw Failure(kBadFile, "the factory can't make this notebook: " + std::string(error.what()));
  }
}

void VirtualMachine::Describe(DescribedJson& description) {
  DescribedJson panel = description.Object("panel");
  DescribePanel(panel);
  const std::wstring deviceId = DeviceIdOf(data_.panel);

  library_ = std::make_unique<HostedLibrary>();
  virtualnotebook::Notebook& notebook = library_->notebook;
  notebook.AlsoBeneath(GetModuleHandleW(nullptr));
  notebook.movedFolders = FoldersBelow(folder_.Path());
  notebook.eventPrefix = OwnEventPrefix();
  // Nothing goes out: neither to log files nor to the telemetry of the machine.
  notebook.FailCall("NxLogger::Log", 0, 0);
  notebook.FailCall("OrbView::Report", 0, 0);
  SetUpNotebook(notebook, deviceId);
  notebook.firmwareTable = data_.firmwareTable;
  PlugMonitors(description);

  InstallMachine(data_, DirsBelow(folder_.Path()));
  MakeProfileFolder(folder_.Path());
  DescribedJson ini = description.Object("ini");
  WriteIni(ini);
  panel_.emplace(data_.edid, deviceId);

  setType_ = static_cast<ColorFieldSetType>(description.Integer("setType", 1, 0, 3));
  notebook.platformType = static_cast<uint32_t>(description.Integer("platformType", 2, 0, 255));
  notebook.lightSensors = static_cast<size_t>(description.Integer("lightSensors", 1, 0, 8));
  notebook.administrator = description.Flag("administrator", false);
  notebook.userSid = FromUtf8(description.Text("userSid", "S-1-5-21-1-2-3-1001"));
  if (!description.Flag("winmgmt", true)) {
    notebook.services[L"Winmgmt"] = SERVICE_STOPPED;
  }
  // One path and two modes a display.
  notebook.topology.paths.resize(notebook.desktop.size());
  notebook.topology.modes.resize(2 * notebook.desktop.size());
  const std::string profile = description.Text("profile", "");
  if (!profile.empty()) {
    notebook.profiles[MonitorDeviceId(deviceId)] = {FromUtf8(profile)};
  }
  DescribedJson features = description.Object("features");
  SetFlags(features);
  description.RefuseOthers();
}

void VirtualMachine::DescribePanel(DescribedJson& panel) {
  MachineOptions options;
  options.firmwareTypes = LutTypes(panel, "firmwareLuts", options.firmwareTypes);
  options.goldenTypes = LutTypes(panel, "goldenLuts", options.goldenTypes);
  options.realProfiles = false;
  if (panel.Has("edid")) {
    const std::string file = panel.Text("edid", "");
    panel.RefuseOthers();
    try {
      data_ = MakeMachine(ReadEdidFile(ToCodePage(file)), options);
    } catch (const Failure&) {
      throw;
    } catch (const std::exception& error) {
      panel.Refuse("edid", "names no EDID file: " + std::string(error.what()));
    }
    return;
  }
  PanelDescription made;
  made.vendor = panel.Text("vendor", made.vendor);
  made.product = static_cast<uint16_t>(panel.Integer("product", made.product, 0, 0xFFFF));
  const std::vector<double> serial = panel.Numbers("serial", {1, 2, 3, 4});
  for (size_t i = 0; i < made.serial.size(); ++i) {
    if (!(serial[i] >= 0 && serial[i] <= 255)) {
      panel.Refuse("serial", "is not 4 bytes of 0 to 255");
    }
    made.serial[i] = static_cast<uint8_t>(serial[i]);
  }
  made.week = static_cast<uint8_t>(panel.Integer("week", made.week, 0, 255));
  made.year = panel.Integer("year", made.year, 1990, 2245);
  made.gamma = panel.Number("gamma", made.gamma, 1, 3.54);
  made.red = XyOf(panel, "red", made.red);
  made.green = XyOf(panel, "green", made.green);
  made.blue = XyOf(panel, "blue", made.blue);
  made.white = XyOf(panel, "white", made.white);
  panel.RefuseOthers();
  data_ = MakeMachine(made, options);
}

// Without a word about them there is one of the maker's.
void VirtualMachine::PlugMonitors(DescribedJson& description) {
  std::vector<DescribedJson> monitors = description.Objects("monitors");
  if (!description.Has("monitors")) {
    monitors.emplace_back(Json{{"name", "NVX Studio 27"}}, "");
  }
  int number = 0;
  for (DescribedJson& monitor : monitors) {
    const std::string name = monitor.Text("name", "Generic PnP Monitor");
    const std::string model = monitor.Text("model", "NVX2701");
    virtualnotebook::Notebook& notebook = library_->notebook;
    PlugInMonitor(
        notebook,
        L"DISPLAY\\" + FromUtf8(model) + L"\\5&2b3c4d&0&UID" + std::to_wstring(256 + number++),
        FromUtf8(name));
    PhysicalMonitor& plugged = notebook.desktop.back().physicalMonitors.front();
    plugged.answersDdcci = monitor.Flag("ddcci", true);
    plugged.hasHandle = monitor.Flag("handle", true);
    monitor.RefuseOthers();
  }
}

void VirtualMachine::WriteIni(DescribedJson& ini) const {
  const std::string path = DirsBelow(folder_.Path()).data + "\\SetColor.ini";
  std::string text;
  for (const std::string& section : ini.Names()) {
    text += "[" + section + "]\r\n";
    DescribedJson values = ini.Object(section);
    for (const std::string& key : values.Names()) {
      text += key + "=" + values.Text(key, "") + "\r\n";
    }
  }
  WriteFile(ToUtf8(path), text.empty() ? kUsualIni : text);
}

// Multi-user first: a feature's settings ask for it at their first use.
void VirtualMachine::SetFlags(DescribedJson& features) {
  int feature = 0;
  for (const char* const name : kFeatureNames) {
    DescribedJson flags = features.Object(name);
    library_->SetMultiUser(feature, flags.Flag("multiUser", false) ? 1 : 0);
    library_->SetFeatureSupport(feature, flags.Flag("supported", true) ? 1 : 0);
    flags.RefuseOthers();
    ++feature;
  }
  features.RefuseOthers();
  library_->notebook.ForgetRecords();
}

}  // namespace veloractl
