#include "Host.h"

#include <filesystem>

namespace bench {
namespace {

constexpr char kDataDir[] = "C:\\ProgramData\\Comms\\NxVelora";

virtualnotebook::InstalledFiles Install(const virtualnotebook::MachineData& data) {
  virtualnotebook::RemoveMachine();
  RegDeleteTreeW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Norvex\\Velora");
  std::filesystem::create_directories(std::string(kDataDir) + "\\User\\3dlut");
  std::filesystem::create_directories(std::string(kDataDir) + "\\User\\gammalut");
  std::filesystem::create_directories(std::string(kDataDir) + "\\User\\temp");
  return virtualnotebook::InstallMachine(data);
}

}  // namespace

Machine::Machine()
    : data(virtualnotebook::MakeMachine(virtualnotebook::PanelDescription{})),
      files(Install(data)),
      panel_(data.edid) {}

Machine::~Machine() { virtualnotebook::RemoveMachine(); }

void Machine::RemoveBinFiles() const {
  for (const auto& entry : std::filesystem::directory_iterator(kDataDir)) {
    if (entry.path().extension() == ".bin") {
      std::filesystem::remove(entry.path());
    }
  }
}

Host::Host(const Machine& machine) : stopwatch(GetModuleHandleW(L"VeloraCtlApi.dll")) {
  virtualnotebook::SetUpNotebook(notebook);
  notebook.platformType = 1;
  notebook.firmwareTable = machine.data.firmwareTable;
  ColorFieldInitInfo init = {};
  init.setType = 1;
  init.defaultMode = SrgbMode;
  machine.files.digestFile.copy(init.pIccCheckFilePath, sizeof init.pIccCheckFilePath);
  machine.files.goldenName.copy(init.goldenFilePath, sizeof init.goldenFilePath);
  library.InitColorFieldInfo(&init);
  AddMode(machine, SrgbMode, virtualnotebook::kSrgbLut);
  AddMode(machine, P3Mode, virtualnotebook::kP3Lut);
  notebook.ForgetRecords();
}

void Host::AddMode(const Machine& machine, ColorFieldMode mode, int gamut) {
  ColorFieldModeInfo info = {};
  info.mode = mode;
  machine.files.Profile(gamut).copy(info.iccPath, sizeof info.iccPath);
  info.gamma = 2.2;
  info.gamut = gamut;
  info.temperR = info.temperG = info.temperB = 1;
  library.AddColorFieldModeInfo(&info);
}

}  // namespace bench
