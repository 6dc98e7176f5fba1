// A whole machine's data, and its files where a host keeps them.
#include "virtualnotebook/Factory.h"

#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace virtualnotebook {
namespace {

namespace fs = std::filesystem;

constexpr int kGamuts[] = {kSrgbLut, kP3Lut, kAdobeLut};

// Where InstallColorProfileW puts its copies.
constexpr char kSystemProfileDir[] = "C:\\Windows\\System32\\spool\\drivers\\color";

// The library's caches in the data directory.
constexpr const char* kBinFiles[] = {"sRGB.bin",     "P3.bin",          "Adobe.bin",
                                     "EBOOK.bin",    "Gamma.bin",       "GoldensRGB.bin",
                                     "GoldenP3.bin", "GoldenAdobe.bin", "GoldensGamma.bin"};

std::vector<Bytes> MakeBlocks(const PanelDescription& panel, const std::vector<uint8_t>& lutTypes) {
  std::vector<Bytes> blocks;
  blocks.reserve(lutTypes.size());
  for (uint8_t lutType : lutTypes) {
    blocks.push_back(MakeLutBlock(HeaderOf(panel, lutType), MakeLut(panel, lutType)));
  }
  return blocks;
}

Bytes ProfileOf(int gamut, bool real) {
  const Bytes profile = real ? RealPresetProfile(gamut) : Bytes();
  return profile.empty() ? MakePresetProfile(gamut) : profile;
}

void WriteFile(const std::string& path, const Bytes& content) {
  fs::create_directories(fs::path(path).parent_path());
  std::ofstream file(path, std::ios::binary);
  file.write(reinterpret_cast<const char*>(content.data()),
             static_cast<std::streamsize>(content.size()));
  if (!file.flush()) {
    throw std::runtime_error("cannot write " + path);
  }
}

}  // namespace

MachineData MakeMachine(const Bytes& edid, const MachineOptions& options) {
  MachineData machine;
  machine.panel = DescribePanel(edid);
  machine.edid = edid;
  machine.firmwareTable = MakeFirmwareTable(MakeBlocks(machine.panel, options.firmwareTypes));
  machine.goldenFile = MakeGoldenFile(MakeBlocks(NominalPanel(machine.panel), options.goldenTypes));
  for (int gamut : kGamuts) {
    machine.profiles[PresetProfileName(gamut)] = ProfileOf(gamut, options.realProfiles);
  }
  machine.digestFile = MakeDigestFile(machine.profiles);
  return machine;
}

MachineData MakeMachine(const PanelDescription& panel, const MachineOptions& options) {
  return MakeMachine(MakeEdid(panel), options);
}

InstalledFiles FilesOf(const MachineDirs& dirs) {
  InstalledFiles files;
  files.goldenFile = dirs.program + files.goldenName;
  files.digestFile = dirs.program + "\\IccDigest.bin";
  files.profileDir = dirs.program + "\\Icc";
  return files;
}

InstalledFiles InstallMachine(const MachineData& machine, const MachineDirs& dirs) {
  InstalledFiles files = FilesOf(dirs);
  fs::create_directories(dirs.data);
  WriteFile(files.goldenFile, machine.goldenFile);
  WriteFile(files.digestFile, machine.digestFile);
  for (const auto& [name, content] : machine.profiles) {
    WriteFile(files.profileDir + "\\" + name, content);
  }
  return files;
}

void RemoveMachine(const MachineDirs& dirs) {
  const InstalledFiles files = FilesOf(dirs);
  fs::remove(files.goldenFile);
  fs::remove(files.digestFile);
  for (int gamut : kGamuts) {
    fs::remove(files.Profile(gamut));
    fs::remove(std::string(kSystemProfileDir) + "\\" + PresetProfileName(gamut));
  }
  for (const char* name : kBinFiles) {
    fs::remove(dirs.data + "\\" + name);
  }
}

}  // namespace virtualnotebook
