#include "veloractl/inspect/IccTags.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "colormath/Matrix3x3.h"
#include "icc/DigestFile.h"
#include "panel/ByteOrder.h"
#include "veloractl/inspect/FileLayout.h"

namespace veloractl {
namespace {

using velora::ReadBe16;
using velora::ReadBe32;

constexpr size_t kTagEntry = 12;
constexpr size_t kMostTags = 100;  // of one report

// A tag's bytes; none for one that is absent or not all there.
std::optional<ByteSpan> FindTag(ByteSpan profile, const char* signature, size_t atLeast) {
  for (const IccTag& tag : TagsOf(profile)) {
    if (tag.signature == signature) {
      return tag.isWhole && tag.size >= atLeast
                 ? std::optional(profile.subspan(tag.offset, tag.size))
                 : std::nullopt;
    }
  }
  return std::nullopt;
}

double Fixed(const uint8_t* bytes) {  // s15Fixed16Number
  return static_cast<int32_t>(ReadBe32(bytes)) / 65536.0;
}

struct Xyz {
  double value[3];
};

std::optional<Xyz> XyzOf(ByteSpan profile, const char* signature) {
  const auto tag = FindTag(profile, signature, 20);
  if (!tag) {
    return std::nullopt;
  }
  return Xyz{{Fixed(&(*tag)[8]), Fixed(&(*tag)[12]), Fixed(&(*tag)[16])}};
}

// From D50, which all of a profile's colours are seen under, back to its own white. false: a matrix
// that has no way back.
bool UndoAdaptation(ByteSpan profile, double* out) {
  double adaptation[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
  if (const auto tag = FindTag(profile, "chad", 44)) {
    for (size_t i = 0; i < 9; ++i) {
      adaptation[i] = Fixed(&(*tag)[8 + 4 * i]);
    }
  }
  const double determinant = velora::Determinant(adaptation);
  if (std::fabs(determinant) < 1e-6) {
    return false;
  }
  velora::MatInvertBy(determinant, adaptation, out);
  return true;
}

bool ToChromaticity(const double* matrix, const Xyz& xyz, double& x, double& y) {
  double own[3];
  velora::MatVecMultiply(matrix, xyz.value, own);
  const double sum = own[0] + own[1] + own[2];
  x = own[0] / sum;
  y = own[1] / sum;
  return sum > 0;
}

std::optional<double> GammaOf(ByteSpan profile) {
  const auto curve = FindTag(profile, "rTRC", 14);
  if (!curve) {
    return std::nullopt;
  }
  const std::string type(reinterpret_cast<const char*>(curve->data()), 4);
  if (type == "curv" && ReadBe32(&(*curve)[8]) == 1) {
    return ReadBe16(&(*curve)[12]) / 256.0;  // u8Fixed8Number
  }
  if (type == "para" && ReadBe16(&(*curve)[8]) == 0 && curve->size() >= 16) {
    return Fixed(&(*curve)[12]);
  }
  return std::nullopt;
}

// A UTF-16 text, big-endian, as UTF-8; what is no character is "?".
std::string Utf8Of(ByteSpan text) {
  std::string utf8;
  for (size_t i = 0; i + 1 < text.size(); i += 2) {
    uint32_t c = ReadBe16(&text[i]);
    if (c >= 0xD800 && c < 0xDC00 && i + 3 < text.size()) {
      const uint32_t low = ReadBe16(&text[i + 2]);
      if (low >= 0xDC00 && low < 0xE000) {
        c = 0x10000 + ((c - 0xD800) << 10) + (low - 0xDC00);
        i += 2;
      }
    }
    if ((c >= 0xD800 && c < 0xE000) || c < ' ') {
      c = '?';
    }
    if (c < 0x80) {
      utf8 += static_cast<char>(c);
    } else if (c < 0x800) {
      utf8 += static_cast<char>(0xC0 | c >> 6);
      utf8 += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
      utf8 += static_cast<char>(0xE0 | c >> 12);
      utf8 += static_cast<char>(0x80 | (c >> 6 & 0x3F));
      utf8 += static_cast<char>(0x80 | (c & 0x3F));
    } else {
      utf8 += static_cast<char>(0xF0 | c >> 18);
      utf8 += static_cast<char>(0x80 | (c >> 12 & 0x3F));
      utf8 += static_cast<char>(0x80 | (c >> 6 & 0x3F));
      utf8 += static_cast<char>(0x80 | (c & 0x3F));
    }
  }
  return utf8;
}

}  // namespace

std::vector<IccTag> TagsOf(ByteSpan profile) {
  std::vector<IccTag> tags;
  if (profile.size() < kTagTable + 4) {
    return tags;
  }
  const uint32_t count = ReadBe32(&profile[kTagTable]);
  size_t at = kTagTable + 4;
  for (uint32_t i = 0; i < count && tags.size() < kMostTags && at + kTagEntry <= profile.size();
       ++i, at += kTagEntry) {
    const uint8_t* const entry = &profile[at];
    const uint32_t offset = ReadBe32(entry + 4);
    const uint32_t size = ReadBe32(entry + 8);
    tags.push_back({std::string(reinterpret_cast<const char*>(entry), 4), offset, size,
                    uint64_t{offset} + size <= profile.size()});
  }
  return tags;
}

std::optional<std::string> DescriptionOf(ByteSpan profile) {
  const auto tag = FindTag(profile, "desc", 28);
  if (!tag || std::memcmp(tag->data(), "mluc", 4) != 0) {
    return std::nullopt;
  }
  const uint32_t length = ReadBe32(&(*tag)[20]);
  const uint32_t offset = ReadBe32(&(*tag)[24]);
  if (uint64_t{offset} + length > tag->size()) {
    return std::nullopt;
  }
  return Utf8Of(tag->subspan(offset, length));
}

std::optional<IccColours> ColoursOf(ByteSpan profile) {
  const auto red = XyzOf(profile, "rXYZ");
  const auto green = XyzOf(profile, "gXYZ");
  const auto blue = XyzOf(profile, "bXYZ");
  double undo[9];
  if (!red || !green || !blue || !UndoAdaptation(profile, undo)) {
    return std::nullopt;
  }
  // White is what all three give together.
  Xyz white;
  for (size_t i = 0; i < 3; ++i) {
    white.value[i] = red->value[i] + green->value[i] + blue->value[i];
  }
  IccColours colours{};
  velora::ChromaticityGamut& gamut = colours.gamut;
  if (!ToChromaticity(undo, *red, gamut.redX, gamut.redY) ||
      !ToChromaticity(undo, *green, gamut.greenX, gamut.greenY) ||
      !ToChromaticity(undo, *blue, gamut.blueX, gamut.blueY) ||
      !ToChromaticity(undo, white, gamut.whiteX, gamut.whiteY)) {
    return std::nullopt;
  }
  colours.gamma = GammaOf(profile);
  return colours;
}

std::vector<DigestEntry> DigestEntries(ByteSpan file) {
  std::vector<DigestEntry> entries;
  for (size_t at = 0; at + sizeof(velora::DigestRecord) <= file.size();
       at += sizeof(velora::DigestRecord)) {
    velora::DigestRecord record;
    std::memcpy(&record, &file[at], sizeof record);
    DigestEntry entry;
    record.fileName[sizeof record.fileName - 1] = 0;
    entry.name = reinterpret_cast<const char*>(record.fileName);
    std::ranges::copy(record.sha256, entry.hash.begin());
    entries.push_back(std::move(entry));
  }
  return entries;
}

std::optional<size_t> FindDigest(const std::vector<DigestEntry>& entries, const std::string& name) {
  for (size_t i = 0; i < entries.size(); ++i) {
    velora::DigestRecord record{};
    std::ranges::copy(entries[i].name, record.fileName);
    if (velora::HoldsName(record, name)) {
      return i;
    }
  }
  return std::nullopt;
}

}  // namespace veloractl
