// The digest file of the preset profiles.
#include <algorithm>
#include <array>

#include "frame/Sha256.h"
#include "icc/DigestFile.h"
#include "veloractl/inspect/IccTags.h"
#include "veloractl/inspect/Inspect.h"

namespace veloractl {
namespace {

constexpr size_t kRecordSize = sizeof(velora::DigestRecord);
constexpr char kReinstallProfiles[] = "Reinstall the product's profiles and digest file together.";

std::string ProfileState(const DigestEntry& entry, const Surroundings& surroundings, size_t number,
                         Findings& findings) {
  if (!surroundings.profile) {
    return "not tested";
  }
  const std::string check = "record " + std::to_string(number) + ": profile";
  const auto file = surroundings.profile(entry.name);
  if (!file) {
    findings.Warn(check, AsciiOf(entry.name) + " is not there",
                  "A mode with this profile is refused with result 15: reinstall the profiles.");
    return "missing";
  }
  std::array<uint8_t, velora::kDigestHashSize> hash{};
  velora::Sha256(*file, hash.data());
  if (findings.Expect(std::ranges::equal(hash, entry.hash), check, AsciiOf(entry.name),
                      "The profile was changed, and a mode with it is refused with result 16. " +
                          std::string(kReinstallProfiles))) {
    return "unchanged";
  }
  return "changed";
}

}  // namespace

void InspectDigest(ByteSpan file, const Surroundings& surroundings, Inspection& out) {
  out.report["what"] = "The hashes that the preset ICC profiles must have.";
  const std::vector<DigestEntry> entries = DigestEntries(file);
  out.findings.Expect(!entries.empty(), "records",
                      std::to_string(entries.size()) + " of " + ByteCount(kRecordSize) + " each",
                      "Every preset is refused with result 16. " + std::string(kReinstallProfiles));
  const size_t rest = file.size() % kRecordSize;
  if (rest != 0) {
    out.findings.Fail("length", ByteCount(rest) + " behind the last record",
                      "A record is cut off, and the profile that it speaks for is refused. " +
                          std::string(kReinstallProfiles));
  } else {
    out.findings.Holds("length", ByteCount(file.size()));
  }
  Json rows = Json::array();
  for (size_t i = 0; i < entries.size(); ++i) {
    const DigestEntry& entry = entries[i];
    const std::string number = std::to_string(i + 1);
    const bool isText = !entry.name.empty() && std::ranges::all_of(entry.name, [](char c) {
      return c >= ' ' && c <= '~';
    });
    if (!isText) {
      out.findings.Warn("record " + number + ": name", AsciiOf(entry.name),
                        "No profile has such a name. " + std::string(kReinstallProfiles));
    } else if (const size_t speaker = FindDigest(entries, entry.name).value_or(i); speaker != i) {
      out.findings.Warn("record " + number + ": name",
                        AsciiOf(entry.name) + " is part of record " + std::to_string(speaker + 1),
                        "The library takes the first record that holds a profile's name, so that "
                        "this one never counts: put it ahead of the other.");
    }
    rows.push_back({{"record", i + 1},
                    {"offset", i * kRecordSize},
                    {"name", AsciiOf(entry.name)},
                    {"SHA-256", HexOf(entry.hash)},
                    {"profile", ProfileState(entry, surroundings, i + 1, out.findings)}});
  }
  out.report["records"] = rows;
}

}  // namespace veloractl
