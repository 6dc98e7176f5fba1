// ICC profiles: a user mode's, which carries its own proof, and presets'.
#include <algorithm>
#include <array>
#include <cmath>

#include "colormath/Matrix3x3.h"
#include "frame/Sha256.h"
#include "icc/DigestFile.h"
#include "icc/ICCProfileOperation.h"
#include "panel/ByteOrder.h"
#include "veloractl/inspect/FileLayout.h"
#include "veloractl/inspect/IccTags.h"
#include "veloractl/inspect/Inspect.h"

namespace veloractl {
namespace {

using velora::ICCProfileOperation;

constexpr uint32_t kLargestProfile = 1000;  // that the library takes for a user's
constexpr uint32_t kUserProfileTags = 11;

constexpr char kSaveAgain[] =
    "Edit and save the user's mode again: that makes its profile anew. Until then the mode is "
    "refused with result 16.";

std::string SignatureAt(ByteSpan file, size_t offset) { return AsciiOf(file.subspan(offset, 4)); }

Json ProfileFields(ByteSpan file) {
  Json fields = {Field("profile size", 0, 4, velora::ReadBe32(file.data())),
                 Field("preferred CMM", 4, 4, SignatureAt(file, 4)),
                 Field("version", 8, 2,
                       std::to_string(file[8]) + "." + std::to_string(file[9] >> 4) + "." +
                           std::to_string(file[9] & 15)),
                 Field("class", 12, 4, SignatureAt(file, 12)),
                 Field("colour space", 16, 4, SignatureAt(file, 16)),
                 Field("connection space", 20, 4, SignatureAt(file, 20)),
                 Field("file signature", 36, 4, SignatureAt(file, 36)),
                 Field("creator", 80, 4, SignatureAt(file, 80))};
  if (file.size() >= kTagTable + 4) {
    fields.push_back(Field("tag count", kTagTable, 4, velora::ReadBe32(&file[kTagTable])));
  }
  return fields;
}

Json TagRows(ByteSpan file) {
  Json rows = Json::array();
  for (const IccTag& tag : TagsOf(file)) {
    rows.push_back({{"tag", AsciiOf(tag.signature)},
                    {"offset", tag.offset},
                    {"size", tag.size},
                    {"within the file", tag.isWhole}});
  }
  return rows;
}

void ReportColours(ByteSpan file, Json& report) {
  const auto colours = ColoursOf(file);
  if (!colours) {
    return;
  }
  const auto xy = [](double x, double y) {
    return NumberText(Rounded(x, 4)) + ", " + NumberText(Rounded(y, 4));
  };
  const velora::ChromaticityGamut& gamut = colours->gamut;
  report["colours"] = {{"red", xy(gamut.redX, gamut.redY)},
                       {"green", xy(gamut.greenX, gamut.greenY)},
                       {"blue", xy(gamut.blueX, gamut.blueY)},
                       {"white", xy(gamut.whiteX, gamut.whiteY)},
                       {"gamma", colours->gamma ? Json(Rounded(*colours->gamma, 4)) : Json()}};
}

void CheckMaker(ByteSpan file, Findings& findings) {
  if (SignatureAt(file, 4) != "MSFT" || SignatureAt(file, 80) != "MSFT") {
    findings.Warn("maker", SignatureAt(file, 4) + " and " + SignatureAt(file, 80),
                  "The library writes MSFT into both: another program made or changed the file.");
  }
  const uint32_t tags = file.size() >= kTagTable + 4 ? velora::ReadBe32(&file[kTagTable]) : 0;
  const auto list = TagsOf(file);
  if (tags != kUserProfileTags || list.empty() || list.front().signature != "desc") {
    findings.Warn("tags",
                  std::to_string(tags) + " tags, the first " +
                      (list.empty() ? "-" : AsciiOf(list.front().signature)),
                  "The library makes eleven, desc first, and reads the name at a fixed place: "
                  "another program made or changed the file.");
  } else {
    findings.Holds("tags", "11, desc first");
  }
}

// The first kProfileHead bytes as the library's check takes them.
std::array<uint8_t, ICCProfileOperation::kProfileHead> HeadOf(ByteSpan file) {
  std::array<uint8_t, ICCProfileOperation::kProfileHead> head{};
  std::copy_n(file.begin(), std::min(file.size(), head.size()), head.begin());
  return head;
}

void CheckUserProfile(ByteSpan file, const Surroundings& surroundings, Findings& findings) {
  const auto head = HeadOf(file);
  const uint32_t size = velora::ReadBe32(file.data());
  const bool hasHighByte =
      std::ranges::any_of(file.first(4), [](uint8_t byte) { return byte >= 0x80; });
  findings.Expect(size <= kLargestProfile && !hasHighByte, "size",
                  ByteCount(size) + " of at most " + std::to_string(kLargestProfile) +
                      (hasHighByte ? ", with a byte of 128 or more" : ""),
                  "The library refuses the profile as it is, hash or not: give the mode another "
                  "name, which changes the size, and save it again.");
  findings.Expect(file.size() >= uint64_t{size} + kHashSize, "length",
                  OutOf(file.size(), uint64_t{size} + kHashSize), kSaveAgain);
  const std::string stored = DescriptionOf(file).value_or("");
  const std::string name = surroundings.modeName.value_or(stored);
  const ICCProfileOperation profile;
  const bool isNamed = profile.IsfileMatchId(head, name);
  findings.Expect(isNamed, "mode name",
                  AsciiOf(stored) + (surroundings.modeName ? ", asked for " + AsciiOf(name) : ""),
                  surroundings.modeName
                      ? "The profile is another mode's: save the mode again."
                      : "A name of 50 letters or more, or one beyond ASCII, never passes: give the "
                        "mode another name.");
  if (file.size() >= uint64_t{size} + kHashSize) {
    std::array<uint8_t, kHashSize> hash{};
    const ByteSpan behind = file.subspan(size, kHashSize);
    const bool holds =
        velora::Sha256(file.first(size), hash.data()) && std::ranges::equal(hash, behind);
    findings.Expect(holds, "hash",
                    holds ? "SHA-256 of the profile"
                          : "stored " + HexOf(behind) + ", calculated " + HexOf(hash),
                    kSaveAgain);
    if (file.size() > uint64_t{size} + kHashSize) {
      findings.Warn("rest", ByteCount(file.size() - size - kHashSize) + " behind the hash",
                    "The library does not look at them: nothing to do.");
    }
  }
  // The library's own verdict, all steps together.
  findings.Expect(profile.CheckProfile(head, name), "the library's check", "of size, name and hash",
                  kSaveAgain);
}

void CheckPreset(ByteSpan file, const Surroundings& surroundings, Findings& findings) {
  constexpr char kReinstallBoth[] =
      "The library refuses the profile with result 16: reinstall the product's profiles and digest "
      "file together.";
  const uint32_t size = velora::ReadBe32(file.data());
  if (size != file.size()) {
    findings.Warn("size", std::to_string(size) + ", the file has " + ByteCount(file.size()),
                  "The profile's own size is wrong: the file is cut off or has grown.");
  }
  if (surroundings.digest.empty()) {
    findings.NotTested("digest", "no digest file to look it up in: give one with --digest FILE");
    return;
  }
  std::array<uint8_t, kHashSize> hash{};
  velora::Sha256(file, hash.data());
  const std::vector<DigestEntry> entries = DigestEntries(surroundings.digest);
  const auto number = FindDigest(entries, surroundings.fileName);
  if (!findings.Expect(
          number.has_value(), "digest record",
          number ? AsciiOf(entries[*number].name) : "none for " + AsciiOf(surroundings.fileName),
          kReinstallBoth)) {
    return;
  }
  const DigestEntry& record = entries[*number];
  findings.Expect(hash == record.hash, "digest",
                  "calculated " + HexOf(hash) + ", recorded " + HexOf(record.hash), kReinstallBoth);
}

}  // namespace

void InspectProfile(ByteSpan file, const Surroundings& surroundings, Inspection& out) {
  const bool isUsers = out.kind == FileKind::UserProfile;
  out.report["what"] = isUsers ? "The ICC profile of a mode that the user designed; it carries its "
                                 "own hash."
                               : "An ICC profile without a hash of its own: a preset's, which the "
                                 "digest file speaks for, or a foreign one.";
  constexpr char kTooShort[] = "This is a piece of a profile: make or install it again.";
  if (!out.findings.Expect(file.size() >= kTagTable, "header", OutOf(file.size(), kTagTable),
                           kTooShort)) {
    return;
  }
  out.findings.Expect(SignatureAt(file, 36) == "acsp", "file signature", SignatureAt(file, 36),
                      "This is no ICC profile: make or install it again.");
  out.report["fields"] = ProfileFields(file);
  if (const auto name = DescriptionOf(file)) {
    out.report["description"] = *name;
  }
  out.report["tags"] = TagRows(file);
  ReportColours(file, out.report);
  if (isUsers) {
    CheckMaker(file, out.findings);
    CheckUserProfile(file, surroundings, out.findings);
  } else {
    CheckPreset(file, surroundings, out.findings);
  }
}

}  // namespace veloractl
