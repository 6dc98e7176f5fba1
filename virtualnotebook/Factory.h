// The factory: consistent machine data of one panel.
//
// It knows the formats by itself and shares no code with the library: it is the oracle of the
// library's decoders. The same description gives the same bytes, always.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "pictures/Picture.h"

namespace virtualnotebook {

using Xy = pictures::Point;  // of the CIE 1931 diagram

// A panel as its EDID describes it.
struct PanelDescription {
  std::string vendor = "NVX";  // three PNP letters
  uint16_t product = 0x1234;
  std::array<uint8_t, 4> serial = {1, 2, 3, 4};  // EDID bytes 12 to 15, in their order
  uint8_t week = 8;                              // above 53: unknown (255 marks a model year)
  int year = 2024;                               // 1990 to 2245
  double gamma = 2.2;                            // 1.00 to 3.54
  Xy red = {0.680, 0.320};
  Xy green = {0.265, 0.690};
  Xy blue = {0.150, 0.060};
  Xy white = {0.3127, 0.3290};

  friend bool operator==(const PanelDescription&, const PanelDescription&) = default;
};

using Bytes = std::vector<uint8_t>;

Bytes Sha256(std::span<const uint8_t> data);  // 32 bytes

// All of these throw std::invalid_argument for what cannot be made, std::runtime_error for a file
// that cannot be read or written.

// --- The panel ---------------------------------------------------------------------------------

// A complete 128-byte EDID 1.4 base block with its checksum. Chromaticities are rounded to 1/1024,
// the gamma to 1/100.
Bytes MakeEdid(const PanelDescription& panel);

// The description that an EDID of at least 128 bytes gives. A gamma byte of 255 says nothing: 2.2.
PanelDescription DescribePanel(const Bytes& edid);

// An EDID file: hexadecimal text (white space between the bytes), or the bytes themselves.
Bytes ReadEdidFile(const std::string& path);

// The panel as its model is meant to be, without this unit's deviations: serial 0, week 0,
// chromaticities rounded to two decimals. Golden data are calculated for it.
PanelDescription NominalPanel(const PanelDescription& panel);

// The chromaticity of the panel's light for code values, full scale being 1.
Xy LightOf(const PanelDescription& panel, const std::array<double, 3>& rgb);

// --- LUTs ----------------------------------------------------------------------------------------

inline constexpr uint8_t kBaseLut = 0;
inline constexpr uint8_t kSrgbLut = 1;
inline constexpr uint8_t kP3Lut = 2;
inline constexpr uint8_t kAdobeLut = 4;
inline constexpr uint8_t kEbookLut = 7;
inline constexpr uint8_t kGammaLut = 160;

// A LUT by its firmware type, R, G, B per entry, integers: 4913 entries of 0 to 1023 in grid order
// (blue fastest), or 1024 entries of 0 to 4095 for kGammaLut. Never falling along the grey axis.
//   base    the unit's grey tracking only: near the identity, and never the identity
//   sRGB, P3, Adobe   target colours on this panel, clipped to its gamut
//   e-book  desaturated, on warm paper
//   gamma   close to a straight line, each channel with its own bend
std::vector<double> MakeLut(const PanelDescription& panel, uint8_t lutType);

// Entry (r, g, b) is 64r, 64g, 64b, at most 1023.
std::vector<double> MakeIdentityLut();

// --- LUT blocks and their containers -------------------------------------------------------------

// The fields of a block header that identify a panel, and its LUT.
struct BlockHeader {
  std::string serialNumber;  // 8 characters
  std::string year;          // 4
  std::string week;          // 2
  std::string vendor;        // 4
  uint8_t typeByte = 0;
  uint8_t precision = 12;  // bits
};
// A week above 53 is written as 00.
BlockHeader HeaderOf(const PanelDescription& panel, uint8_t typeByte);

// One LUT block: header, words, extension bytes, SHA-256. lut holds R, G, B per entry, integers of
// 0 to 4095; any number of entries.
Bytes MakeLutBlock(const BlockHeader& header, const std::vector<double>& lut);

// A golden file: control header and blocks at one stride (the largest block, or the one given).
Bytes MakeGoldenFile(const std::vector<Bytes>& blocks, uint32_t stride = 0);
// A firmware table: ACPI header and table data, 52 bytes, ahead of the same.
Bytes MakeFirmwareTable(const std::vector<Bytes>& blocks, uint32_t stride = 0);

// --- Profiles ------------------------------------------------------------------------------------

// gamut: kSrgbLut, kP3Lut or kAdobeLut. "NVX-sRGB.icc", "NVX-P3.icc", "NVX-Adobe.icc".
std::string PresetProfileName(int gamut);

// A preset ICC profile of an RGB space: v4 matrix and tone curves, made by lcms2.
Bytes MakePresetProfile(int gamut);

// The profile of Debian's package icc-profiles-free for the gamut, as seen from Wine; empty where
// it is not installed or has none (there is none for P3).
Bytes RealPresetProfile(int gamut);

// The digest file: one 102-byte record for each file, in the order of the names.
Bytes MakeDigestFile(const std::map<std::string, Bytes>& files);

// --- The machine ---------------------------------------------------------------------------------

// What the containers hold, in their order. A table of six LUTs cannot exist: all blocks stand at
// one stride, so that each takes the 24725 bytes of a 3D LUT, and
//   five   52 + 16 + 5 * 24725 = 123693, a golden file 123641
//   six    52 + 16 + 6 * 24725 = 148418
// while a firmware table has at most 131124 bytes and a golden file 131072. A machine with an Adobe
// mode leaves out another.
struct MachineOptions {
  std::vector<uint8_t> firmwareTypes = {kBaseLut, kP3Lut, kSrgbLut, kEbookLut, kGammaLut};
  std::vector<uint8_t> goldenTypes = {kBaseLut, kP3Lut, kSrgbLut, kEbookLut, kGammaLut};
  bool realProfiles = false;  // RealPresetProfile where there is one
};

// All of a machine's data, consistent with one panel.
struct MachineData {
  PanelDescription panel;
  Bytes edid;
  Bytes firmwareTable;
  Bytes goldenFile;                       // of the nominal panel
  std::map<std::string, Bytes> profiles;  // by file name
  Bytes digestFile;
};
MachineData MakeMachine(const PanelDescription& panel, const MachineOptions& options = {});
// The same with the panel's own EDID bytes.
MachineData MakeMachine(const Bytes& edid, const MachineOptions& options = {});

// Where a host keeps the product and its data.
struct MachineDirs {
  std::string program = "C:\\Program Files\\Norvex\\NxVelora";
  std::string data = "C:\\ProgramData\\Comms\\NxVelora";
};

// The files of an installed machine.
struct InstalledFiles {
  std::string goldenName = "\\Golden.bin";  // below the program directory, as the library takes it
  std::string goldenFile;
  std::string digestFile;
  std::string profileDir;  // ends without a backslash

  std::string Profile(int gamut) const { return profileDir + "\\" + PresetProfileName(gamut); }
};

InstalledFiles FilesOf(const MachineDirs& dirs = {});

// Makes the directories and writes golden file, profiles and digest file; nothing else.
InstalledFiles InstallMachine(const MachineData& machine, const MachineDirs& dirs = {});

// Removes those, the library's bin files, and the copies of the preset profiles that the colour
// system keeps.
void RemoveMachine(const MachineDirs& dirs = {});

}  // namespace virtualnotebook
