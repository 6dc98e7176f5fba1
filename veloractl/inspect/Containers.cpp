// Firmware tables and golden files.
#include <algorithm>
#include <numeric>

#include "panel/BiosControlHeader.h"
#include "panel/ByteOrder.h"
#include "veloractl/inspect/FileLayout.h"
#include "veloractl/inspect/LutBlocks.h"

namespace veloractl {
namespace {

using velora::BiosControlHeader;

// The library's limits.
constexpr size_t kLargestTable = 131124;
constexpr size_t kSmallestGoldenFile = BiosControlHeader::kSize + velora::k3DBlockSize;

constexpr size_t kAcpiHeaderSize = 36;  // ACPI 6.5, 5.2.6
constexpr char kTableId[] = "DLUT";

constexpr char kGetFactoryData[] =
    "The library takes no LUT out of it. Read the table again (dump-firmware); if it stays so, the "
    "firmware needs an update with the factory's data.";
constexpr char kReinstallGoldenFile[] =
    "The library takes no LUT out of it. Reinstall the product: the golden file comes with it.";

struct Head {
  BiosControlHeader control;
  size_t offset = 0;  // of the control header
  bool isThere = false;
  bool holds = false;  // its checksum
};

Head HeadOf(ByteSpan file, size_t offset) {
  Head head;
  head.offset = offset;
  head.isThere = file.size() >= offset + BiosControlHeader::kSize;
  if (head.isThere) {
    head.holds = head.control.Parse(file.data() + offset, BiosControlHeader::kSize);
  }
  return head;
}

Json AcpiFields(ByteSpan file) {
  const unsigned sum = std::accumulate(file.begin(), file.end(), 0U) & 0xFF;
  return {Field("table id", 0, 4, AsciiOf(file.first(4))),
          Field("table length", 4, 4, velora::ReadLe32(file.data() + 4)),
          Field("revision", 8, 1, file[8]),
          Field("table checksum", 9, 1, sum == 0 ? "holds" : "does not hold"),
          Field("OEM id", 10, 6, AsciiOf(file.subspan(10, 6))),
          Field("OEM table id", 16, 8, AsciiOf(file.subspan(16, 8)))};
}

Json ControlFields(ByteSpan file, const Head& head) {
  const size_t at = head.offset;
  return {Field("signature", at, 4, AsciiOf(head.control.GetSignature())),
          Field("header length", at + 4, 2, head.control.GetHeaderLength()),
          Field("block count", at + 6, 2, head.control.GetBlockCount()),
          Field("block size", at + 8, 4, head.control.GetBlockSize()),
          Field("control extra", at + 12, 2, HexOf(file.subspan(at + 12, 2))),
          Field("checksum", at + 14, 2, head.control.GetChecksum())};
}

void CheckSize(ByteSpan file, bool isFirmware, Findings& findings) {
  if (isFirmware) {
    findings.Expect(file.size() <= kLargestTable, "size",
                    ByteCount(file.size()) + ", at most " + ByteCount(kLargestTable),
                    "The library refuses so large a table: the firmware needs an update.");
    return;
  }
  findings.Expect(file.size() >= kSmallestGoldenFile && file.size() <= kLargestFile, "size",
                  ByteCount(file.size()) + " of " + std::to_string(kSmallestGoldenFile) + " to " +
                      ByteCount(kLargestFile),
                  kReinstallGoldenFile);
}

// ACPI's own header, which the library does not look at.
void CheckAcpi(ByteSpan file, Findings& findings) {
  constexpr char kNothing[] =
      "The library does not look at it, but the system may: nothing to do "
      "unless blocks fail too.";
  if (AsciiOf(file.first(4)) != kTableId) {
    findings.Warn("table id", AsciiOf(file.first(4)) + " instead of " + kTableId, kNothing);
  }
  const uint32_t length = velora::ReadLe32(file.data() + 4);
  if (length != file.size()) {
    findings.Warn("table length",
                  std::to_string(length) + ", the file has " + ByteCount(file.size()), kNothing);
  }
  if ((std::accumulate(file.begin(), file.end(), 0U) & 0xFF) != 0) {
    findings.Warn("table checksum", "the bytes do not add up to 0", kNothing);
  }
}

// The first block of a type serves all its modes; a later one none.
Json BlockRow(const ContainerBlock& block, size_t number, const Findings& findings,
              const velora::BiosHeaderV2& header, std::vector<uint32_t>& seen,
              const Surroundings& surroundings) {
  const uint32_t type = header.GetLutType();
  const LutUse* const use = FindLutUse(type);
  const bool isFirst = std::ranges::find(seen, type) == seen.end();
  seen.push_back(type);
  Json panel = nullptr;
  if (surroundings.panel) {
    const std::string difference = ComparePanel(header, *surroundings.panel).firstDifference;
    panel = difference.empty() ? "this one" : "another: " + difference;
  }
  return {{"block", number},
          {"offset", block.offset},
          {"bytes", block.bytes.size()},
          {"type", use == nullptr ? Json() : Json(type)},
          {"LUT", use == nullptr ? "-" : use->name},
          {"modes", use == nullptr ? "-"
                    : isFirst      ? use->modes
                                   : "none: an earlier block serves"},
          {"serial", AsciiOf(header.GetSerialNumber())},
          {"year", AsciiOf(header.GetYear())},
          {"week", AsciiOf(header.GetWeek())},
          {"vendor", AsciiOf(header.GetVendor())},
          {"panel", panel},
          {"verdict", NameOf(findings.Worst())}};
}

void InspectBlocks(const Container& container, const Surroundings& surroundings, Inspection& out) {
  Json rows = Json::array();
  std::vector<uint32_t> seen;
  for (size_t i = 0; i < container.blocks.size(); ++i) {
    const ContainerBlock& block = container.blocks[i];
    Findings findings;
    CheckBlock(block.bytes, out.kind, findings);
    velora::BiosHeaderV2 header;
    if (block.bytes.size() >= velora::kBlockHeaderSize) {
      header.Parse(block.bytes.data(), block.bytes.size());
    }
    rows.push_back(BlockRow(block, i + 1, findings, header, seen, surroundings));
    out.findings.Add("block " + std::to_string(i + 1), findings);
  }
  out.report["blocks"] = rows;
  for (const LutUse& use : LutUses()) {
    if (std::ranges::find(seen, use.type) == seen.end()) {
      out.findings.Note(
          std::string("LUT ") + use.name,
          "no block of type " + std::to_string(use.type) + ": nothing for its modes, " + use.modes);
    }
  }
}

// All blocks of a container are of one panel; the golden file's are of the model, not of a unit.
void CheckContainerPanel(const Container& container, const Surroundings& surroundings,
                         Inspection& out) {
  const auto first = std::ranges::find_if(container.blocks, [](const ContainerBlock& block) {
    return block.bytes.size() >= velora::kBlockHeaderSize;
  });
  if (first == container.blocks.end()) {
    return;
  }
  velora::BiosHeaderV2 header;
  header.Parse(first->bytes.data(), first->bytes.size());
  if (container.isFirmwareTable || !surroundings.panel) {
    CheckPanel(header, surroundings, out.findings, out.report);
    return;
  }
  const PanelComparison compared = ComparePanel(header, *surroundings.panel);
  out.report["panel source"] = surroundings.panelSource;
  out.report["panel"] = compared.rows;
  const bool sameVendor = header.GetVendor() == surroundings.panel->GetVendor();
  if (sameVendor) {
    out.findings.Holds("panel",
                       "the vendor is this panel's; the rest is the model's, not a unit's");
  } else {
    out.findings.Differs("panel", "the vendor is another one's",
                         "The library shows these data on any panel that is not the factory's; for "
                         "true colours the product needs this panel's golden file.");
  }
}

}  // namespace

bool HasControlHeader(ByteSpan file, size_t offset) {
  const Head head = HeadOf(file, offset);
  // All bytes zero hold the checksum too.
  return head.holds && head.control.GetBlockSize() >= velora::kBlockHeaderSize &&
         head.control.GetHeaderLength() >= BiosControlHeader::kSize;
}

Container BlocksOf(ByteSpan file, bool isFirmwareTable) {
  Container container;
  container.isFirmwareTable = isFirmwareTable;
  const Head head = HeadOf(file, isFirmwareTable ? kFirmwarePrefixSize : 0);
  const uint64_t size = head.control.GetBlockSize();
  if (!head.isThere || size == 0) {
    return container;
  }
  uint64_t position = head.offset + head.control.GetHeaderLength();
  // A block of a few bytes would make a long list of nothing.
  for (unsigned i = 0; i < head.control.GetBlockCount() && position < file.size() &&
                       size >= velora::kBlockHeaderSize;
       ++i, position += size) {
    container.blocks.push_back(
        {position, file.subspan(position, std::min<uint64_t>(size, file.size() - position))});
  }
  return container;
}

void InspectContainer(ByteSpan file, const Surroundings& surroundings, Inspection& out) {
  const bool isFirmware = out.kind == FileKind::FirmwareTable;
  const char* const repair = isFirmware ? kGetFactoryData : kReinstallGoldenFile;
  out.report["what"] =
      isFirmware ? "The factory's LUTs of this panel, as the firmware keeps them."
                 : "The LUTs of the panel's model, for panels that are not the factory's.";
  const Head head = HeadOf(file, isFirmware ? kFirmwarePrefixSize : 0);
  Json fields = Json::array();
  if (isFirmware && file.size() >= kAcpiHeaderSize) {
    fields = AcpiFields(file);
    CheckAcpi(file, out.findings);
  }
  CheckSize(file, isFirmware, out.findings);
  if (!out.findings.Expect(
          head.isThere, "control header",
          head.isThere ? "at " + std::to_string(head.offset) : "the file ends before it", repair)) {
    out.report["fields"] = fields;
    return;
  }
  for (const Json& row : ControlFields(file, head)) {
    fields.push_back(row);
  }
  out.report["fields"] = fields;
  out.findings.Expect(head.holds, "control checksum",
                      head.holds ? "the sum of the header's first 14 bytes"
                                 : std::to_string(head.control.GetChecksum()) +
                                       " is not the sum of the header's first 14 bytes",
                      repair);
  const uint64_t target = head.offset + uint64_t{head.control.GetHeaderLength()} +
                          uint64_t{head.control.GetBlockCount()} * head.control.GetBlockSize();
  out.findings.Expect(
      head.control.GetBlockSize() != 0 && file.size() >= target, "length",
      OutOf(file.size(), target) + (head.control.GetBlockSize() == 0 ? ", blocks of no bytes" : ""),
      repair);
  if (file.size() > target) {
    out.findings.Warn("rest", ByteCount(file.size() - target) + " behind the last block",
                      "The library does not look at them: nothing to do.");
  }
  const Container container = BlocksOf(file, isFirmware);
  InspectBlocks(container, surroundings, out);
  CheckContainerPanel(container, surroundings, out);
}

}  // namespace veloractl
