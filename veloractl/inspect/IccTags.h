// What an ICC profile says (ICC.1:2022), and a digest file's records.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "colormath/TargetGamuts.h"
#include "veloractl/inspect/Findings.h"

namespace veloractl {

struct IccTag {
  std::string signature;
  uint32_t offset;
  uint32_t size;
  bool isWhole;  // within the file
};

// As far as the table is within the file.
std::vector<IccTag> TagsOf(ByteSpan profile);

// The description's first text as UTF-8; none without a whole one.
std::optional<std::string> DescriptionOf(ByteSpan profile);

// Primaries and white of a matrix profile, as they are and not as seen under D50; none for another
// profile. gamma: of the red curve, where it is one number.
struct IccColours {
  velora::ChromaticityGamut gamut;
  std::optional<double> gamma;
};
std::optional<IccColours> ColoursOf(ByteSpan profile);

// --- Digest files ---

struct DigestEntry {
  std::string name;  // as the library reads it: at most 62 characters
  std::array<uint8_t, 32> hash;
};
std::vector<DigestEntry> DigestEntries(ByteSpan file);

// The number, from 0, of the record that speaks for the profile of this name: the first that holds
// it.
std::optional<size_t> FindDigest(const std::vector<DigestEntry>& entries, const std::string& name);

}  // namespace veloractl
