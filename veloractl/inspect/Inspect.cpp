#include "veloractl/inspect/Inspect.h"

#include <algorithm>

#include "icc/DigestFile.h"
#include "panel/ByteOrder.h"
#include "veloractl/inspect/Edid.h"
#include "veloractl/inspect/FileLayout.h"
#include "veloractl/inspect/IccTags.h"
#include "veloractl/inspect/LutBlocks.h"

namespace veloractl {
namespace {

constexpr KindName kKindNames[] = {
    {FileKind::FirmwareTable, "firmware-table", "firmware table"},
    {FileKind::GoldenFile, "golden", "golden file"},
    {FileKind::LutBinFile, "lut-bin", "LUT bin file"},
    {FileKind::UserLutFile, "user-lut", "user LUT file"},
    {FileKind::Edid, "edid", "EDID"},
    {FileKind::DigestFile, "digest", "digest file"},
    {FileKind::UserProfile, "user-profile", "user profile"},
    {FileKind::PlainProfile, "profile", "ICC profile"},
};

constexpr size_t kProfileSignatureOffset = 36;  // "acsp"
constexpr size_t kVendorOffset = 60;            // in a block header

bool HasTextAt(ByteSpan file, size_t offset, std::string_view text) {
  return file.size() >= offset + text.size() &&
         std::ranges::equal(file.subspan(offset, text.size()), text, {},
                            [](uint8_t byte) { return static_cast<char>(byte); });
}

bool IsEdid(ByteSpan file) {
  const auto begins = [](ByteSpan bytes) {
    return bytes.size() >= kEdidHead.size() &&
           std::ranges::equal(bytes.first(kEdidHead.size()), kEdidHead);
  };
  if (begins(file)) {
    return true;
  }
  const auto text = BytesOfHexText(file);
  return text && begins(*text);
}

// Where a user's profile has its hash, another ends: a cut-off one still has the library's mark.
FileKind ProfileKind(ByteSpan file) {
  const uint32_t size = velora::ReadBe32(file.data());
  const bool isMade = HasTextAt(file, 4, "MSFT") && HasTextAt(file, 80, "MSFT");
  const bool hasHash = file.size() == uint64_t{size} + kHashSize;
  return isMade || hasHash ? FileKind::UserProfile : FileKind::PlainProfile;
}

// "BOE#": three letters and a "#" where a block header has its vendor.
bool HasVendor(ByteSpan file) {
  return file.size() >= kVendorOffset + 4 && file[kVendorOffset + 3] == '#' &&
         std::ranges::all_of(file.subspan(kVendorOffset, 3),
                             [](uint8_t c) { return c >= 'A' && c <= 'Z'; });
}

bool HasLutLength(ByteSpan file) {
  if (file.size() < kLengthOffset + 4) {
    return false;
  }
  const uint32_t length = velora::ReadBe32(&file[kLengthOffset]);
  return length == velora::LutDataLength(velora::k3DEntries) ||
         length == velora::LutDataLength(velora::kGammaEntries);
}

// A user's LUT has nothing ahead of its type byte.
FileKind LutFileKind(ByteSpan file) {
  return file.size() > kTypeOffset && file[kTypeOffset] == kUserLutTypeByte && !HasVendor(file)
             ? FileKind::UserLutFile
             : FileKind::LutBinFile;
}

// Records whose names are text, ended and filled up with zeros.
bool IsDigest(ByteSpan file) {
  const std::vector<DigestEntry> entries = DigestEntries(file);
  return !entries.empty() && std::ranges::all_of(entries, [](const DigestEntry& entry) {
    return entry.name.size() > 4 &&
           std::ranges::all_of(entry.name, [](char c) { return c >= ' ' && c <= '~'; });
  });
}

}  // namespace

std::span<const KindName> KindNames() { return kKindNames; }

const char* NameOf(FileKind kind) {
  const auto* const found = std::ranges::find(kKindNames, kind, &KindName::kind);
  return found == std::end(kKindNames) ? "unknown" : found->name;
}

// What tells a kind beyond doubt comes first, what a damaged file still has behind it.
FileKind RecogniseKind(ByteSpan file) {
  if (IsEdid(file)) {
    return FileKind::Edid;
  }
  if (HasTextAt(file, kProfileSignatureOffset, "acsp")) {
    return ProfileKind(file);
  }
  if (HasTextAt(file, 0, "DLUT") || HasControlHeader(file, kFirmwarePrefixSize)) {
    return FileKind::FirmwareTable;
  }
  if (HasControlHeader(file, 0)) {
    return FileKind::GoldenFile;
  }
  if (HasLutLength(file) || HasVendor(file)) {
    return LutFileKind(file);
  }
  if (IsDigest(file)) {
    return FileKind::DigestFile;
  }
  // By its size alone.
  if (file.size() == velora::k3DBlockSize || file.size() == velora::k3DBlockSize + 1 ||
      file.size() == velora::kGammaBlockSize) {
    return LutFileKind(file);
  }
  return FileKind::Unknown;
}

Inspection Inspect(ByteSpan file, const Surroundings& surroundings, FileKind kind) {
  Inspection out;
  out.kind = kind == FileKind::Unknown ? RecogniseKind(file) : kind;
  out.report["kind"] = NameOf(out.kind);
  out.report["size"] = file.size();
  out.report["verdict"] = nullptr;  // ahead of the rest
  out.report["advice"] = nullptr;
  switch (out.kind) {
    case FileKind::FirmwareTable:
    case FileKind::GoldenFile:
      InspectContainer(file, surroundings, out);
      break;
    case FileKind::LutBinFile:
    case FileKind::UserLutFile:
      InspectLutFile(file, surroundings, out);
      break;
    case FileKind::Edid:
      InspectEdid(file, out);
      break;
    case FileKind::DigestFile:
      InspectDigest(file, surroundings, out);
      break;
    case FileKind::UserProfile:
    case FileKind::PlainProfile:
      InspectProfile(file, surroundings, out);
      break;
    case FileKind::Unknown:
      out.report["what"] = "None of the library's files.";
      out.findings.Fail("kind", file.empty() ? "the file is empty" : "no kind's marks are in it",
                        "If it should be one, name the kind with --as: the fields are then shown "
                        "as far as they are there.");
      break;
  }
  out.report["verdict"] = NameOf(out.findings.Worst());
  if (!out.findings.Advice().empty()) {
    out.report["advice"] = out.findings.Advice();
  }
  out.report["checks"] = out.findings.Rows();
  return out;
}

}  // namespace veloractl
