// One installed machine whose data a test breaks, and one switch of the colour mode on it.
#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "virtualnotebook/Factory.h"
#include "virtualnotebook/HostedLibrary.h"
#include "virtualnotebook/Machine.h"

namespace scenarios {

using virtualnotebook::Bytes;
using Lines = std::vector<std::string>;  // "<level> <text>(<function>)"

Lines operator+(Lines first, const Lines& second);

// The line of a method of ColorField3DLut.
std::string LutLine(int level, const std::string& text, const std::string& method);

// What one SetColorField did.
struct Outcome {
  ResultT result = 0;
  Lines log;                              // all of it
  Lines lutLog;                           // what the LUT engine and the panel's data said
  std::vector<std::vector<double>> sent;  // what PlatformSet3DLut received, call by call
  size_t firmwareReads = 0;
  std::vector<std::wstring> profiles;  // associated with the panel
};

// Byte and bit of a flipped bit.
void FlipBit(Bytes& bytes, size_t byte, size_t bit);

// The control header's bytes 0 to 13 were edited: its checksum is put right.
void SealControlHeader(Bytes& bytes, size_t offset);

class BrokenMachine : public testing::Test {
 protected:
  BrokenMachine();
  ~BrokenMachine() override;

  // Loads the library, registers the P3 mode, switches to it and frees the library again. The mode
  // has the way of 3D LUTs and, for withProfile, the preset profile.
  Outcome SetP3Mode(bool withProfile = false);

  // The mode was switched with these LUTs, and the bin file holds their block.
  void ExpectFirmwareLut(const Outcome& outcome) const;
  void ExpectGoldenLut(const Outcome& outcome) const;
  // The mode was refused; the platform received nothing, and no bin file was written.
  void ExpectRefused(const Outcome& outcome) const;

  // The log of a switch from the firmware or the bin file, with these lines before the file is
  // read; and of one that leaves the firmware for the golden file for the first reasons.
  Lines FirmwareLog(const Lines& reasons) const;
  Lines GoldenLog(const Lines& reasons, const Lines& goldenReasons = {}) const;
  Lines RefusedLog(const Lines& reasons, const Lines& goldenReasons) const;

  static std::string DataFile(const std::string& name);
  static const Bytes& P3Block();        // as the firmware has it
  static const Bytes& GoldenP3Block();  // as the golden file has it
  void RemoveBinFiles() const;

  // What the machine consists of, to be broken.
  Bytes firmwareTable;
  std::optional<UINT> reportedFirmwareSize;
  std::wstring deviceId = virtualnotebook::kPanelDeviceId;
  virtualnotebook::InstalledFiles files;
  virtualnotebook::PluggedPanel panel;
  std::vector<std::wstring> profilesBefore;
};

const virtualnotebook::MachineData& WholeMachine();

// Where the P3 block stands.
inline constexpr size_t kTableControlHeader = 52;
inline constexpr size_t kBlockSize = 24725;
inline constexpr size_t kP3InGolden = 16 + kBlockSize;
inline constexpr size_t kP3InTable = 52 + kP3InGolden;
inline constexpr size_t kTableSize = 52 + 16 + 5 * kBlockSize;
inline constexpr size_t kPayloadAndHeader = 24693;

// Bytes all over a block: its header is a denser sample, and the limits of its parts are in it.
// Each costs a loading of the library, and with it a thread-local slot that the C++ runtime keeps:
// a process has 1088.
std::vector<size_t> SampledBytesOfBlock();

}  // namespace scenarios
