// LUT bin files and user LUT files.
#include <algorithm>

#include "veloractl/inspect/FileLayout.h"
#include "veloractl/inspect/LutBlocks.h"

namespace veloractl {
namespace {

// The e-book mode's file carries a mark behind its hash once it is composed with the panel's own
// LUT.
constexpr size_t kEbookMarkOffset = velora::k3DBlockSize;
constexpr uint8_t kEbookMark = 127;

// The LUT type that the library looks for in a file of this name.
struct FileUse {
  const char* name;
  uint32_t type;
};
constexpr FileUse kFileUses[] = {
    {"sRGB.bin", 1},
    {"P3.bin", 2},
    {"Adobe.bin", 4},
    {"EBOOK.bin", 7},
    {"Gamma.bin", kGammaLutType},
    {"GoldensRGB.bin", 1},
    {"GoldenP3.bin", 2},
    {"GoldenAdobe.bin", 4},
    {"GoldensGamma.bin", kGammaLutType},
};

bool SameName(const std::string& a, const char* b) {
  const std::string other = b;
  return std::ranges::equal(a, other, [](char left, char right) {
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
    return lower(left) == lower(right);
  });
}

void CheckFileName(const std::string& fileName, const velora::BiosHeaderV2& header,
                   Findings& findings) {
  const auto* const use = std::ranges::find_if(
      kFileUses, [&](const FileUse& row) { return SameName(fileName, row.name); });
  if (use == std::end(kFileUses)) {
    findings.NotTested("type for the name", "the library keeps no file of this name");
    return;
  }
  findings.Expect(header.GetLutType() == use->type, "type for the name",
                  std::string(use->name) + " is to hold type " + std::to_string(use->type),
                  "The library takes the file for damaged and rebuilds it when a mode next needs "
                  "it. Somebody has copied or renamed it.");
}

void CheckBinFile(ByteSpan file, const Surroundings& surroundings, Inspection& out) {
  velora::BiosHeaderV2 header;
  header.Parse(file.data(), file.size());
  CheckFileName(surroundings.fileName, header, out.findings);
  if (file.size() > kEbookMarkOffset) {
    out.report["e-book mark"] =
        file[kEbookMarkOffset] == kEbookMark && file.size() == kEbookMarkOffset + 1;
  }
  if (surroundings.fileName.starts_with("Golden")) {
    out.findings.NotTested("panel", "a golden file's LUT belongs to the model, not to a unit");
  } else {
    CheckPanel(header, surroundings, out.findings, out.report);
  }
}

void CheckUserFile(ByteSpan file, Findings& findings) {
  // What a user's LUT has no use for is zero.
  const ByteSpan head = file.first(64);
  if (std::ranges::any_of(head, [](uint8_t byte) { return byte != 0; })) {
    findings.Warn("header", "not zero ahead of the type byte",
                  "The library does not look at it: nothing to do.");
  }
  findings.NotTested("panel", "a user's LUT belongs to no panel");
}

}  // namespace

std::vector<const char*> BinFileNames() {
  std::vector<const char*> names;
  for (const FileUse& use : kFileUses) {
    names.push_back(use.name);
  }
  return names;
}

void InspectLutFile(ByteSpan file, const Surroundings& surroundings, Inspection& out) {
  const bool isUserFile = out.kind == FileKind::UserLutFile;
  out.report["what"] = isUserFile
                           ? "A LUT of a colour mode that the user designed."
                           : "One LUT out of the firmware table or the golden file: a cache, which "
                             "the library rebuilds when it is missing or damaged.";
  out.report["fields"] = HeaderFields(file, 0);
  out.findings.Expect(file.size() <= kLargestFile, "size",
                      ByteCount(file.size()) + ", at most " + ByteCount(kLargestFile),
                      "The library reads no larger file: delete it, it is no LUT's.");
  CheckBlock(file, out.kind, out.findings);
  if (file.size() < velora::kBlockHeaderSize) {
    return;
  }
  if (isUserFile) {
    CheckUserFile(file, out.findings);
  } else {
    CheckBinFile(file, surroundings, out);
  }
  if (const auto decoded = DecodeBlock(file)) {
    out.report["channels"] = Statistics(*decoded);
  }
}

}  // namespace veloractl
