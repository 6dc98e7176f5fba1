#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "lut/ColorField3DLut.h"
#include "support/NotebookTest.h"
#include "virtualnotebook/Factory.h"
#include "virtualnotebook/Machine.h"
#include "virtualnotebook/Notebook.h"

namespace lutmachine {

using virtualnotebook::Bytes;
using virtualnotebook::PanelDescription;

inline const std::string kDataDir = "C:\\ProgramData\\Comms\\NxVelora";
inline constexpr char kGoldenName[] = "\\LutTestGolden.bin";
inline const std::string kGoldenFile = "C:\\Program Files\\Norvex\\NxVelora\\LutTestGolden.bin";

inline const std::string kDeviceId = testsupport::Utf8(virtualnotebook::kPanelDeviceId);
inline const std::string kEdidPath =
    "SYSTEM\\CurrentControlSet\\Enum\\" + kDeviceId + "\\Device Parameters\\";

inline constexpr wchar_t kCimV2[] = L"ROOT\\CIMV2";
inline constexpr wchar_t kAnyMonitor[] =
    L"SELECT PNPDeviceID FROM Win32_DesktopMonitor WHERE PNPDeviceID IS NOT NULL";
inline constexpr wchar_t kBuiltInMonitor[] =
    L"SELECT PNPDeviceID, MonitorManufacturer FROM Win32_DesktopMonitor WHERE MonitorManufacturer "
    L"LIKE 'Norvex Device%'";
inline constexpr wchar_t kCaption[] = L"SELECT Caption FROM Win32_DesktopMonitor";

// Log lines as "level message(function)".
using Lines = std::vector<std::string>;

inline std::string Line(int level, const std::string& method, const std::string& message) {
  return std::to_string(level) + " " + message + "(ColorField3DLut::" + method + ")";
}
inline std::string Debug(const std::string& method, const std::string& message) {
  return Line(0, method, message);
}
inline std::string Info(const std::string& method, const std::string& message) {
  return Line(1, method, message);
}
inline std::string Warn(const std::string& method, const std::string& message) {
  return Line(2, method, message);
}
inline std::string Error(const std::string& method, const std::string& message) {
  return Line(3, method, message);
}

inline Lines operator+(Lines first, const Lines& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

using testsupport::ReadFileBytes;
using testsupport::Utf8;
using testsupport::WriteFileBytes;

inline velora::LutBuffer ToBuffer(const Bytes& bytes) { return {bytes.begin(), bytes.end()}; }
inline Bytes ToBytes(const velora::LutBuffer& buffer) { return {buffer.begin(), buffer.end()}; }

// Bytes from first up to last, last not included.
inline Bytes Part(const Bytes& bytes, size_t first, size_t last) {
  return {bytes.begin() + static_cast<ptrdiff_t>(first),
          bytes.begin() + static_cast<ptrdiff_t>(last)};
}

inline Bytes MakeBlock(const PanelDescription& panel, uint8_t lutType) {
  return virtualnotebook::MakeLutBlock(virtualnotebook::HeaderOf(panel, lutType),
                                       virtualnotebook::MakeLut(panel, lutType));
}

// The hash of a block that was edited, put right.
inline void Rehash(Bytes& block) {
  const Bytes hash = virtualnotebook::Sha256({block.data(), block.size() - 32});
  std::ranges::copy(hash, block.end() - 32);
}

// The machine of the default panel: calculated once.
inline const virtualnotebook::MachineData& DefaultMachine() {
  static const virtualnotebook::MachineData machine =
      virtualnotebook::MakeMachine(PanelDescription{});
  return machine;
}

// "LcdEdidColorGamut:" and the eight coordinates in the EDID's steps of 1/1024.
inline std::string GamutLine(const PanelDescription& panel) {
  std::string text = "1 LcdEdidColorGamut:";
  const double coordinates[] = {panel.red.x,  panel.red.y,  panel.green.x, panel.green.y,
                                panel.blue.x, panel.blue.y, panel.white.x, panel.white.y};
  for (const double& coordinate : coordinates) {
    char digits[32];
    std::snprintf(digits, sizeof digits, "%s%g", &coordinate == coordinates ? "" : ", ",
                  std::round(coordinate * 1024) / 1024);
    text += digits;
  }
  return text + "(LcdEdidParse::ParseEdidWrgb)";
}

// The line of a header that is not the panel's.
inline std::string InvalidLine(const virtualnotebook::BlockHeader& header,
                               const PanelDescription& panel) {
  const auto edid = virtualnotebook::HeaderOf(panel, 0);
  return Info("IsLcdDataValid",
              "LCD Invalid! Bios SN:" + header.serialNumber + "Edid SN:" + edid.serialNumber +
                  "Bios Vendor:" + header.vendor + "Edid Vendor:" + edid.vendor + "Bios Week:" +
                  header.week + "Edid Week:" + std::to_string(panel.week > 53 ? 0 : panel.week) +
                  "Bios Year:" + header.year + "Edid Year:" + std::to_string(panel.year));
}

// A notebook with one built-in panel, its factory data, a golden file of the nominal panel and an
// empty data directory. What the notebook stands beneath are the test program's own imports.
class LutMachine : public testsupport::NotebookTest {
 protected:
  LutMachine() {
    CleanUp();
    std::filesystem::create_directories(kDataDir);
    notebook.firmwareTable = machine.firmwareTable;
    WriteFileBytes(kGoldenFile, machine.goldenFile);
    virtualnotebook::SetUpNotebook(notebook);
    engine.InitColorFieldThreeLutBaseInfo(BaseInfo("", kGoldenName));
    notebook.ForgetRecords();
  }
  ~LutMachine() override {
    notebook.ClearFaults();
    CleanUp();
  }

  // Another panel in the built-in one's place, or none.
  void PlugIn(const Bytes& edid) { panel_->Replace(edid); }
  void Unplug() { panel_.reset(); }

  static ColorFieldInitInfo BaseInfo(const std::string& binDir, const std::string& goldenName) {
    ColorFieldInitInfo info{};
    binDir.copy(info.threeLutBinFilePath, sizeof info.threeLutBinFilePath);
    goldenName.copy(info.goldenFilePath, sizeof info.goldenFilePath);
    return info;
  }

  static ColorFieldModeInfo ModeInfo(int mode, int gamut) {
    ColorFieldModeInfo info{};
    info.mode = mode;
    info.gamut = gamut;
    info.gamma = 2.2;
    info.temperR = info.temperG = info.temperB = 1;
    return info;
  }

  static std::string DataFile(const std::string& name) { return kDataDir + "\\" + name; }

  Bytes Block(uint8_t lutType) const { return MakeBlock(machine.panel, lutType); }
  Bytes GoldenBlock(uint8_t lutType) const { return MakeBlock(nominal, lutType); }

  Lines Log() const {
    Lines lines;
    for (const auto& line : notebook.log) {
      lines.push_back(std::to_string(line.level) + " " + Utf8(line.text));
    }
    return lines;
  }

  // An argument of the function's last call, as text.
  std::string LastArgument(const std::string& function, size_t argument) const {
    for (auto call = notebook.calls.rbegin(); call != notebook.calls.rend(); ++call) {
      if (call->function == function && argument < call->arguments.size()) {
        return Utf8(call->arguments[argument]);
      }
    }
    ADD_FAILURE() << function << " was not called";
    return {};
  }

  // The bin file that a mode is pointed at.
  std::string FileOf(velora::ColorField3DLut& lut, int mode) {
    lut.IsThreeLutBinFileExist(mode);
    return LastArgument("_access", 0);
  }

  const virtualnotebook::MachineData& machine = DefaultMachine();
  const PanelDescription nominal = virtualnotebook::NominalPanel(machine.panel);
  velora::ColorField3DLut engine;

 private:
  static void CleanUp() {
    std::filesystem::remove_all(kDataDir);
    std::filesystem::remove(kGoldenFile);
  }

  std::optional<virtualnotebook::PluggedPanel> panel_{std::in_place, machine.edid};
};

}  // namespace lutmachine
