// LUT blocks, alone in a file or in a container.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "lut/LutBlock.h"
#include "panel/BiosHeaderV2.h"
#include "veloractl/inspect/Inspect.h"

namespace veloractl {

// What the library uses a LUT for, by its firmware type.
struct LutUse {
  uint32_t type;
  const char* name;
  const char* modes;  // the modes that it serves, by the usual registration
};
const LutUse* FindLutUse(uint32_t type);  // null for a type that no mode asks for
std::span<const LutUse> LutUses();

inline constexpr uint32_t kGammaLutType = 160;
inline constexpr uint8_t kUserLutTypeByte = 0x0B;

// A block that decodes: its header says which LUT, and all its entries are there.
struct DecodedBlock {
  bool isGamma = false;
  std::vector<double> values;  // R, G, B by entry

  int Entries() const { return isGamma ? velora::kGammaEntries : velora::k3DEntries; }
  double Maximum() const { return isGamma ? 4095 : velora::k3DMaxValue; }
};

// Of the block at the start of the bytes; none where they are too few. The hash is not looked at.
std::optional<DecodedBlock> DecodeBlock(ByteSpan block);

// The header's fields as rows of a table; offsets are from base on.
Json HeaderFields(ByteSpan block, size_t base);

// Length, type, hash and contents of the block at the start of the bytes. file: what it stands in;
// a user's LUT has a type of its own.
void CheckBlock(ByteSpan block, FileKind file, Findings& findings);

// The panel's identity beside the header's, in the order in which the library compares them; the
// rows, and the first that differs (empty: none).
struct PanelComparison {
  Json rows = Json::array();
  std::string firstDifference;
};
PanelComparison ComparePanel(const velora::BiosHeaderV2& header, const velora::LcdEdidParse& panel);
void CheckPanel(const velora::BiosHeaderV2& header, const Surroundings& surroundings,
                Findings& findings, Json& report);

// What stands in a LUT, as numbers.
Json Statistics(const DecodedBlock& block);

// How two LUTs of one kind differ. Failure when they are of two kinds.
// NOLINTNEXTLINE(bugprone-exception-escape): the check suspects the moving of JSON values
struct LutDifference {
  Json report;
  double largest = 0;
};
LutDifference Compare(const DecodedBlock& first, const DecodedBlock& second);

// The files that the library keeps in its data folder.
std::vector<const char*> BinFileNames();

// --- Containers ---

struct ContainerBlock {
  size_t offset;  // in the file
  ByteSpan bytes;
};

// The blocks that the control header announces and that begin within the file.
struct Container {
  bool isFirmwareTable = false;
  std::vector<ContainerBlock> blocks;
};
Container BlocksOf(ByteSpan file, bool isFirmwareTable);

// A valid control header of blocks that can be LUTs, at this offset.
bool HasControlHeader(ByteSpan file, size_t offset);
inline constexpr size_t kFirmwarePrefixSize = 52;  // what stands ahead of it in a firmware table

}  // namespace veloractl
