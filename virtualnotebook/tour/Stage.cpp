#include "virtualnotebook/tour/Stage.h"

#include <chrono>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace tour {
namespace {

using namespace virtualnotebook;

constexpr ColorFieldSetType k3DLutWay = 1;

// Bin files of an earlier tour would make its first act a warm one.
InstalledFiles InstallAnew(const MachineData& machine) {
  RemoveMachine();
  return InstallMachine(machine);
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

ColorFieldInitInfo InitInfoOf(const InstalledFiles& files) {
  ColorFieldInitInfo info = {};
  info.setType = k3DLutWay;
  info.defaultMode = SrgbMode;
  CopyText(info.pIccCheckFilePath, files.digestFile);
  CopyText(info.goldenFilePath, files.goldenName);
  return info;
}

ColorFieldModeInfo ModeInfoOf(const InstalledFiles& files, ColorFieldMode mode, int gamut) {
  ColorFieldModeInfo info = {};
  info.mode = mode;
  CopyText(info.iccPath, files.Profile(gamut));
  info.gamma = 2.2;
  info.gamut = gamut;
  info.temperR = info.temperG = info.temperB = 1;
  return info;
}

void Expect(ResultT result, const char* call) {
  if (result != ResultOk) {
    throw std::runtime_error(std::string(call) + " gave " + std::to_string(result));
  }
}

}  // namespace

Stage::Stage(const Bytes& edid)
    : machine_(MakeMachine(edid, {.realProfiles = true})),
      files_(InstallAnew(machine_)),
      deviceId_(DeviceIdOf(machine_.panel)),
      panel_(edid, deviceId_) {
  if (!viewer_.IsOn()) {
    throw std::runtime_error("the software panel cannot be switched on");
  }
}

Stage::~Stage() {
  library_.reset();
  RemoveMachine();
}

std::string Stage::BinFile(const std::string& name) const {
  return MachineDirs().data + "\\" + name;
}

void Stage::StartHost() {
  ProfileAssociations profiles;
  if (library_) {
    profiles = library_->notebook.profiles;
  }
  library_.reset();
  library_ = std::make_unique<virtualnotebook::HostedLibrary>();

  virtualnotebook::Notebook& notebook = library_->notebook;
  SetUpNotebook(notebook, deviceId_);
  notebook.firmwareTable = machine_.firmwareTable;
  notebook.profiles = profiles;
  notebook.forwardPlatform = true;

  const ColorFieldInitInfo info = InitInfoOf(files_);
  const ColorFieldModeInfo srgb = ModeInfoOf(files_, SrgbMode, kSrgbLut);
  const ColorFieldModeInfo p3 = ModeInfoOf(files_, P3Mode, kP3Lut);
  Expect(library_->Init(), "Init");
  Expect(library_->InitColorFieldInfo(&info), "InitColorFieldInfo");
  Expect(library_->AddColorFieldModeInfo(&srgb), "AddColorFieldModeInfo");
  Expect(library_->AddColorFieldModeInfo(&p3), "AddColorFieldModeInfo");
  notebook.ForgetRecords();
}

Outcome Stage::SetColorField(int mode) {
  using Clock = std::chrono::steady_clock;
  library_->notebook.ForgetRecords();
  const Clock::time_point start = Clock::now();
  const ResultT result = library_->SetColorField(mode);
  const std::chrono::duration<double, std::milli> time = Clock::now() - start;
  return {result, time.count(), library_->notebook.log};
}

std::string Stage::DefaultProfile() {
  const std::vector<std::wstring>& associated =
      library_->notebook.profiles[MonitorDeviceId(deviceId_)];
  if (associated.empty()) {
    return {};
  }
  return std::string(associated.front().begin(), associated.front().end());
}

softwarepanel::State Stage::Shown() const {
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
