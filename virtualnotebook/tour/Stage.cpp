#include "virtualnotebook/tour/Stage.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "virtualnotebook/tour/Pipeline.h"

namespace tour {
namespace {

using namespace virtualnotebook;

constexpr wchar_t kExternalDeviceId[] = L"DISPLAY\\NVX2701\\5&2b3c4d&0&UID256";

// What the host stores; another tour's fine tuning would show in the acts.
constexpr wchar_t kSettingsKey[] = L"SOFTWARE\\Norvex\\Velora";

// The machine, and what the library stored and the user designed on it.
void RemoveTraces() {
  RemoveMachine();
  RegDeleteTreeW(HKEY_LOCAL_MACHINE, kSettingsKey);
  std::filesystem::remove_all(MachineDirs().data + "\\User");
  for (const char* id : kUserModeIds) {
    std::filesystem::remove(std::string("C:\\Windows\\System32\\spool\\drivers\\color\\") + id +
                            "_usr.icc");
  }
}

// Bin files of an earlier tour would make its first act a warm one.
InstalledFiles InstallAnew(const MachineData& machine, const Place& place) {
  if (!place.IsApart()) {
    RemoveTraces();
  }
  return InstallMachine(machine, place.dirs);
}

std::wstring DeviceIdOf(const PanelDescription& panel) {
  wchar_t id[64];
  std::swprintf(id, std::size(id), L"DISPLAY\\%hs%04X\\4&1a2b3c&0&UID0", panel.vendor.c_str(),
                panel.product);
  return id;
}

template <size_t size>
void CopyText(char (&field)[size], const std::string& text) {
  if (text.size() >= size) {
    throw std::invalid_argument("too long a path: " + text);
  }
  std::memcpy(field, text.c_str(), text.size() + 1);
}

ColorFieldInitInfo InitInfoOf(const InstalledFiles& files, ColorFieldSetType way) {
  ColorFieldInitInfo info = {};
  info.setType = way;
  info.defaultMode = SrgbMode;
  CopyText(info.pIccCheckFilePath, files.digestFile);
  CopyText(info.goldenFilePath, files.goldenName);
  return info;
}

ColorFieldModeInfo ModeInfoOf(const InstalledFiles& files, ColorFieldMode mode, int gamut) {
  ColorFieldModeInfo info = {};
  info.mode = mode;
  CopyText(info.iccPath, files.Profile(gamut));
  std::ranges::copy(kPccMatrix, info.PlatformPccMatrix);
  info.gamma = 2.2;
  info.gamut = gamut;
  info.temperR = info.temperG = info.temperB = 1;
  return info;
}

bool IsSame(const softwarepanel::State& a, const softwarepanel::State& b) {
  const Color3DInfo& x = a.temperature3D;
  const Color3DInfo& y = b.temperature3D;
  return a.has3DLut == b.has3DLut && a.hasGammaLut == b.hasGammaLut && a.hasMatrix == b.hasMatrix &&
         a.temperatureKind == b.temperatureKind && x.r == y.r && x.g == y.g && x.b == y.b &&
         x.colorBlue == y.colorBlue && x.protectValue == y.protectValue &&
         std::ranges::equal(a.matrix, b.matrix) && std::ranges::equal(a.gammaLut, b.gammaLut) &&
         std::ranges::equal(a.lut3D, b.lut3D);
}

// Neither log files nor telemetry go out.
void KeepWithin(virtualnotebook::Notebook& notebook) {
  notebook.FailCall("NxLogger::Log", 0, 0);
  notebook.FailCall("OrbView::Report", 0, 0);
}

void Expect(ResultT result, const char* call) {
  if (result != ResultOk) {
    throw std::runtime_error(std::string(call) + " gave " + std::to_string(result));
  }
}

}  // namespace

Stage::Stage(const Bytes& edid, Place place)
    : place_(std::move(place)),
      machine_(MakeMachine(edid, {.realProfiles = true})),
      files_(InstallAnew(machine_, place_)),
      deviceId_(DeviceIdOf(machine_.panel)),
      panel_(edid, deviceId_) {
  if (!viewer_.IsOn()) {
    throw std::runtime_error("the software panel cannot be switched on");
  }
}

Stage::~Stage() {
  library_.reset();
  if (!IsApart()) {
    RemoveTraces();
  }
}

std::string Stage::BinFile(const std::string& name) const { return place_.dirs.data + "\\" + name; }

std::string Stage::Path(const std::string& machinePath) const {
  return library_->notebook.Moved(machinePath);
}

void Stage::StartHost(ColorFieldSetType way) {
  ProfileAssociations profiles;
  PlatformState panel;
  if (library_) {
    Refresh();
    profiles = library_->notebook.profiles;
    panel = library_->notebook.platform;
    panel.temperatures3D.clear();
  }
  library_.reset();
  library_ = std::make_unique<virtualnotebook::HostedLibrary>();

  virtualnotebook::Notebook& notebook = library_->notebook;
  SetUpNotebook(notebook, deviceId_);
  notebook.firmwareTable = machine_.firmwareTable;
  notebook.profiles = profiles;
  notebook.forwardPlatform = !IsApart();
  notebook.movedFolders = place_.movedFolders;
  notebook.eventPrefix = place_.eventPrefix;
  if (IsApart()) {
    notebook.platform = panel;
    KeepWithin(notebook);
  }

  const InstalledFiles files = FilesOf();
  const ColorFieldInitInfo info = InitInfoOf(files, way);
  const ColorFieldModeInfo srgb = ModeInfoOf(files, SrgbMode, kSrgbLut);
  const ColorFieldModeInfo p3 = ModeInfoOf(files, P3Mode, kP3Lut);
  Expect(library_->Init(), "Init");
  Expect(library_->InitColorFieldInfo(&info), "InitColorFieldInfo");
  Expect(library_->AddColorFieldModeInfo(&srgb), "AddColorFieldModeInfo");
  Expect(library_->AddColorFieldModeInfo(&p3), "AddColorFieldModeInfo");
  notebook.ForgetRecords();
}

Outcome Stage::Do(const std::function<ResultT(HostedLibrary&)>& call) {
  using Clock = std::chrono::steady_clock;
  library_->notebook.ForgetRecords();
  const Clock::time_point start = Clock::now();
  const ResultT result = call(*library_);
  const std::chrono::duration<double, std::milli> time = Clock::now() - start;
  own_->initCount += static_cast<uint32_t>(library_->notebook.CountCalls("PlatformInit") -
                                           library_->notebook.CountCalls("PlatformFini"));
  return {result, time.count(), library_->notebook.log, 0};
}

Outcome Stage::SetColorField(int mode) {
  return Do([mode](HostedLibrary& library) { return library.SetColorField(mode); });
}

void Stage::ClearPanel() {
  *own_ = {};
  if (library_ && IsApart()) {
    library_->notebook.platform = {};
  }
  viewer_.Update([](softwarepanel::State& state) {
    state = {};
    return true;
  });
}

std::string Stage::DefaultProfile() { return DefaultProfileOf(deviceId_); }

std::string Stage::DefaultProfileOf(const std::wstring& deviceId) {
  const std::vector<std::wstring>& associated =
      library_->notebook.profiles[MonitorDeviceId(deviceId)];
  if (associated.empty()) {
    return {};
  }
  return std::string(associated.front().begin(), associated.front().end());
}

void Stage::ChooseProfile(const std::string& name) {
  library_->notebook.profiles[MonitorDeviceId(deviceId_)] = {
      std::wstring(name.begin(), name.end())};
}

void Stage::DockWithTheLidClosed() {
  virtualnotebook::Notebook& notebook = library_->notebook;
  notebook.desktop.clear();
  notebook.adapters.clear();
  PlugInMonitor(notebook, kExternalDeviceId, L"NVX Studio 27");
}

PhysicalMonitor& Stage::ExternalMonitor() {
  return library_->notebook.desktop.back().physicalMonitors.front();
}

std::string Stage::ExternalProfile() { return DefaultProfileOf(kExternalDeviceId); }

// What the notebook's platform has by now.
void Stage::Refresh() const {
  auto next = std::make_unique<softwarepanel::State>(*own_);
  TakePipeline(library_->notebook, *next);
  if (!IsSame(*next, *own_)) {
    own_ = std::move(next);
    ++ownSequence_;
  }
}

uint64_t Stage::PanelChanges() const {
  if (!IsApart()) {
    return viewer_.Sequence();
  }
  if (library_) {
    Refresh();
  }
  return ownSequence_;
}

softwarepanel::State Stage::Shown() const {
  if (IsApart()) {
    if (library_) {
      Refresh();
    }
    return *own_;
  }
  softwarepanel::State state;
  viewer_.Read(state);
  return state;
}

Image Stage::ShowOnPanel(const Image& image) const {
  Image shown = image;
  softwarepanel::Render(Shown(), image.pixels, shown.pixels);
  return shown;
}

Bytes ReadBytes(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return Bytes(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

void WriteBytes(const std::string& path, const Bytes& content) {
  std::ofstream file(path, std::ios::binary);
  file.write(reinterpret_cast<const char*>(content.data()),
             static_cast<std::streamsize>(content.size()));
  if (!file.flush()) {
    throw std::runtime_error("cannot write " + path);
  }
}

}  // namespace tour
