#include "veloractl/inspect/LutBlocks.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <stdexcept>

#include "frame/Sha256.h"
#include "lut/GammaCurve.h"
#include "panel/ByteOrder.h"
#include "veloractl/inspect/FileLayout.h"

namespace veloractl {
namespace {

using velora::BiosHeaderV2;
using velora::kBlockHeaderSize;
using velora::kSha256Size;

constexpr LutUse kLutUses[] = {
    {0, "base", "the panel's own, beneath user modes and the e-book mode"},
    {1, "sRGB", "1, 3, 8"},
    {2, "P3", "2, 4, 5, 6, 9"},
    {4, "Adobe", "10"},
    {7, "e-book", "7"},
    {kGammaLutType, "gamma", "all, on machines of way 3"},
};

const char* RepairOf(FileKind file) {
  switch (file) {
    case FileKind::UserLutFile:
      return "Edit and save the user's mode again: that writes the file anew. Until then the mode "
             "cannot be shown.";
    case FileKind::FirmwareTable:
      return "The library does not use this LUT. Read the table again (dump-firmware); if it stays "
             "damaged, the firmware needs an update with the factory's data.";
    case FileKind::GoldenFile:
      return "The library does not use this LUT. Reinstall the product: the golden file comes with "
             "it.";
    default:
      return "Delete the file and switch to one of its modes: the library rebuilds it from the "
             "firmware table. If it is damaged again, check the disk.";
  }
}

std::string Triple(const double* values) {
  return NumberText(values[0]) + ", " + NumberText(values[1]) + ", " + NumberText(values[2]);
}

// The type's name, or what is wrong with the byte.
std::string TypeText(const BiosHeaderV2& header, uint8_t byte) {
  const LutUse* const use = FindLutUse(header.GetLutType());
  if (use != nullptr) {
    return "type " + std::to_string(use->type) + ", " + use->name;
  }
  return byte == kUserLutTypeByte ? "type byte 11, a user's LUT"
                                  : "type byte " + std::to_string(byte) + ", which no mode uses";
}

void CheckType(const BiosHeaderV2& header, uint8_t byte, FileKind file, Findings& findings) {
  const std::string found = TypeText(header, byte);
  if (file == FileKind::UserLutFile) {
    if (byte == kUserLutTypeByte) {
      findings.Holds("type", found);
    } else {
      findings.Warn("type", found, "The library does not look at it: nothing to do.");
    }
    return;
  }
  findings.Expect(FindLutUse(header.GetLutType()) != nullptr, "type", found,
                  "The library passes over a block of this type. If a mode misses its LUT, the "
                  "factory's data are of another generation: ask for a firmware update.");
}

void CheckHash(ByteSpan block, size_t hashed, FileKind file, Findings& findings) {
  std::array<uint8_t, kSha256Size> hash{};
  const ByteSpan stored = block.subspan(hashed, kSha256Size);
  const bool holds =
      velora::Sha256(block.first(hashed), hash.data()) && std::ranges::equal(hash, stored);
  findings.Expect(holds, "hash",
                  holds ? "SHA-256 of the first " + ByteCount(hashed)
                        : "stored " + HexOf(stored) + ", calculated " + HexOf(hash),
                  RepairOf(file));
}

// Whether each channel rises along its own axis: what a sound LUT does.
size_t FallingSteps(const DecodedBlock& block) {
  size_t falls = 0;
  const size_t entries = static_cast<size_t>(block.Entries());
  const size_t step = block.isGamma ? 1 : size_t{17} * 17 + 17 + 1;  // the grey axis
  for (size_t entry = step; entry < entries; entry += step) {
    for (size_t channel = 0; channel < 3; ++channel) {
      falls += block.values[3 * entry + channel] < block.values[3 * (entry - step) + channel];
    }
  }
  return falls;
}

void CheckContents(const DecodedBlock& block, FileKind file, Findings& findings) {
  const double highest = *std::ranges::max_element(block.values);
  findings.Expect(highest <= block.Maximum(), "values",
                  "0 to " + NumberText(highest) + " of " + NumberText(block.Maximum()),
                  "Values beyond the scale: the data were not made for this product.");
  const double* white = &block.values[block.values.size() - 3];
  findings.Expect(
      velora::IsLastTripleLit(block.values.data(), block.Entries()), "white", Triple(white),
      file == FileKind::UserLutFile ? "The library refuses a LUT whose white has a dark channel. "
                                      "Edit and save the mode again."
                                    : "White would have a dark channel: the data are not usable.");
  const size_t falls = FallingSteps(block);
  if (falls == 0) {
    findings.Holds("grey axis", "rises from black to white");
  } else {
    findings.Warn("grey axis", "falls at " + std::to_string(falls) + " steps",
                  "Look at the picture (--png): a falling curve shows as inverted shades.");
  }
}

// As the library compares dates: the leading number of the text.
std::optional<int> LeadingNumber(const std::string& text) {
  try {
    return std::stoi(text);
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

}  // namespace

std::span<const LutUse> LutUses() { return kLutUses; }

const LutUse* FindLutUse(uint32_t type) {
  const auto* const found = std::ranges::find(kLutUses, type, &LutUse::type);
  return found == std::end(kLutUses) ? nullptr : found;
}

std::optional<DecodedBlock> DecodeBlock(ByteSpan block) {
  BiosHeaderV2 header;
  if (block.size() < kBlockHeaderSize || !header.Parse(block.data(), block.size())) {
    return std::nullopt;
  }
  DecodedBlock decoded;
  const uint32_t length = header.GetDataLength();
  decoded.isGamma = length == velora::LutDataLength(velora::kGammaEntries);
  if ((!decoded.isGamma && length != velora::LutDataLength(velora::k3DEntries)) ||
      block.size() < velora::LutBlockSize(decoded.Entries())) {
    return std::nullopt;
  }
  decoded.values.resize(velora::LutValueCount(decoded.Entries()));
  velora::DecodeLut(block, decoded.Entries(), decoded.values.data());
  return decoded;
}

Json HeaderFields(ByteSpan block, size_t base) {
  BiosHeaderV2 header;
  if (block.size() < kBlockHeaderSize || !header.Parse(block.data(), block.size())) {
    return Json::array();
  }
  Json items = Json::array();
  for (size_t item = 0; item < 10; ++item) {
    items.push_back(AsciiOf(header.GetPanelField(item)));
  }
  std::string joined;
  for (const Json& item : items) {
    joined += (joined.empty() ? "" : " ") + item.get<std::string>();
  }
  const ByteSpan reserved = block.subspan(70, 56);
  const bool unused = std::ranges::all_of(reserved, [](uint8_t byte) { return byte == 0; });
  return {Field("tag", base, 4, AsciiOf(header.GetTag())),
          Field("version", base + 4, 2, AsciiOf(header.GetVersionText())),
          Field("panel fields", base + 6, 40, joined),
          Field("serial number", base + 46, 8, AsciiOf(header.GetSerialNumber())),
          Field("year", base + 54, 4, AsciiOf(header.GetYear())),
          Field("week", base + 58, 2, AsciiOf(header.GetWeek())),
          Field("vendor", base + 60, 4, AsciiOf(header.GetVendor())),
          Field("type byte", base + kTypeOffset, 1, block[kTypeOffset]),
          Field("precision", base + kPrecisionOffset, 1, block[kPrecisionOffset]),
          Field("data length", base + kLengthOffset, 4, header.GetDataLength()),
          Field("reserved", base + 70, 56, unused ? "zero" : HexOf(reserved)),
          Field("trailer", base + 126, 2, HexOf(block.subspan(126, 2)))};
}

void CheckBlock(ByteSpan block, FileKind file, Findings& findings) {
  BiosHeaderV2 header;
  if (!findings.Expect(block.size() >= kBlockHeaderSize, "header",
                       OutOf(block.size(), kBlockHeaderSize), RepairOf(file)) ||
      !header.Parse(block.data(), block.size())) {
    return;
  }
  const uint64_t length = header.GetDataLength();
  const bool isGamma = length == velora::LutDataLength(velora::kGammaEntries);
  const bool is3D = length == velora::LutDataLength(velora::k3DEntries);
  findings.Expect(isGamma || is3D, "data length",
                  std::to_string(length) + (isGamma ? ", a gamma LUT's"
                                            : is3D  ? ", a 3D LUT's"
                                                    : ", neither a 3D LUT's 24565 nor a gamma "
                                                      "LUT's 5120"),
                  RepairOf(file));
  CheckType(header, block[kTypeOffset], file, findings);
  if (FindLutUse(header.GetLutType()) != nullptr && (isGamma || is3D) &&
      isGamma != (header.GetLutType() == kGammaLutType)) {
    findings.Fail("type and length", "the type is of one kind of LUT, the length of the other",
                  "The header is wrong: ask for the factory's data of this panel.");
  }
  const uint64_t needed = kBlockHeaderSize + length + kSha256Size;
  if (!findings.Expect(block.size() >= needed, "length", OutOf(block.size(), needed),
                       RepairOf(file))) {
    return;
  }
  CheckHash(block, kBlockHeaderSize + length, file, findings);
  if (const auto decoded = DecodeBlock(block)) {
    CheckContents(*decoded, file, findings);
  }
}

PanelComparison ComparePanel(const BiosHeaderV2& header, const velora::LcdEdidParse& panel) {
  PanelComparison out;
  const auto compare = [&out](const char* name, const std::string& stored, const Json& actual,
                              bool equal) {
    out.rows.push_back(
        {{"field", name}, {"data", AsciiOf(stored)}, {"panel", actual}, {"equal", equal}});
    if (!equal && out.firstDifference.empty()) {
      out.firstDifference = name;
    }
  };
  compare("serial number", header.GetSerialNumber(), AsciiOf(panel.GetSerialNumber()),
          header.GetSerialNumber() == panel.GetSerialNumber());
  compare("vendor", header.GetVendor(), AsciiOf(panel.GetVendor()),
          header.GetVendor() == panel.GetVendor());
  compare("week", header.GetWeek(), panel.GetWeek(),
          LeadingNumber(header.GetWeek()) == panel.GetWeek());
  compare("year", header.GetYear(), panel.GetYear(),
          LeadingNumber(header.GetYear()) == panel.GetYear());
  return out;
}

void CheckPanel(const BiosHeaderV2& header, const Surroundings& surroundings, Findings& findings,
                Json& report) {
  if (!surroundings.panel) {
    findings.NotTested("panel", "no panel to compare with: give one with --edid FILE");
    return;
  }
  const PanelComparison compared = ComparePanel(header, *surroundings.panel);
  report["panel source"] = surroundings.panelSource;
  report["panel"] = compared.rows;
  if (compared.firstDifference.empty()) {
    findings.Holds("panel", "serial number, vendor, week and year are this panel's");
  } else {
    findings.Differs("panel", "the " + compared.firstDifference + " differs first",
                     "These data were measured on another panel, and the library takes the golden "
                     "file's instead. If the panel was replaced, that is as it should be; if not, "
                     "the firmware holds another unit's data: ask for its calibration.");
  }
}

Json Statistics(const DecodedBlock& block) {
  Json channels = Json::array();
  constexpr const char* kNames[] = {"red", "green", "blue"};
  const size_t entries = static_cast<size_t>(block.Entries());
  for (size_t channel = 0; channel < 3; ++channel) {
    double low = block.Maximum();
    double high = 0;
    for (size_t entry = 0; entry < entries; ++entry) {
      const double value = block.values[3 * entry + channel];
      low = std::min(low, value);
      high = std::max(high, value);
    }
    channels.push_back({{"channel", kNames[channel]},
                        {"lowest", low},
                        {"highest", high},
                        {"black", block.values[channel]},
                        {"white", block.values[3 * (entries - 1) + channel]}});
  }
  return channels;
}

LutDifference Compare(const DecodedBlock& first, const DecodedBlock& second) {
  if (first.isGamma != second.isGamma) {
    throw Failure(kBadArguments, "a 3D LUT and a gamma LUT can't be compared");
  }
  LutDifference out;
  constexpr const char* kNames[] = {"red", "green", "blue"};
  const size_t entries = static_cast<size_t>(first.Entries());
  Json channels = Json::array();
  std::vector<bool> differs(entries, false);
  for (size_t channel = 0; channel < 3; ++channel) {
    double sum = 0;
    double most = 0;
    size_t where = 0;
    for (size_t entry = 0; entry < entries; ++entry) {
      const double difference =
          std::fabs(first.values[3 * entry + channel] - second.values[3 * entry + channel]);
      sum += difference;
      differs[entry] = differs[entry] || difference > 0;
      if (difference > most) {
        most = difference;
        where = entry;
      }
    }
    channels.push_back({{"channel", kNames[channel]},
                        {"largest", most},
                        {"at entry", where},
                        {"mean", Rounded(sum / static_cast<double>(entries), 4)}});
    out.largest = std::max(out.largest, most);
  }
  out.report = {{"entries", entries},
                {"entries that differ", std::ranges::count(differs, true)},
                {"largest difference", out.largest},
                {"scale", first.Maximum()},
                {"channels", channels}};
  return out;
}

}  // namespace veloractl
