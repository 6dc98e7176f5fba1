// What tests of the inspectors share: machine data out of the factory, and rows of reports.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "veloractl/inspect/Edid.h"
#include "veloractl/inspect/Inspect.h"
#include "virtualnotebook/Factory.h"

namespace inspecttest {

using veloractl::Json;
using virtualnotebook::Bytes;
using virtualnotebook::PanelDescription;

// The next of a file's lengths to try: each one that ends at the fields in front or at the hash
// behind, and some of the many that end within the LUT, which would take minutes.
inline size_t NextLength(size_t length, size_t whole) {
  constexpr size_t kStep = 97;
  return length > 512 && length + kStep + 64 < whole ? length + kStep : length + 1;
}

inline Bytes BlockOf(const PanelDescription& panel, uint8_t type) {
  return MakeLutBlock(HeaderOf(panel, type), MakeLut(panel, type));
}

inline std::vector<Bytes> FiveBlocks(const PanelDescription& panel) {
  using namespace virtualnotebook;
  return {BlockOf(panel, kBaseLut), BlockOf(panel, kP3Lut), BlockOf(panel, kSrgbLut),
          BlockOf(panel, kEbookLut), BlockOf(panel, kGammaLut)};
}

// A user's LUT file by its layout: zeros, type byte, precision, length, entries, hash.
inline Bytes MakeUserLutFile(const PanelDescription& panel, uint8_t type) {
  Bytes file = BlockOf(panel, type);
  std::fill_n(file.begin(), 64, uint8_t{0});
  file[64] = 0x0B;
  const size_t hashed = file.size() - 32;
  const Bytes hash = virtualnotebook::Sha256({file.data(), hashed});
  std::copy(hash.begin(), hash.end(), file.begin() + static_cast<ptrdiff_t>(hashed));
  return file;
}

// A user's profile by its layout (ICC.1): header, eleven tags with desc first, hash. sRGB's
// primaries, D65 and a gamma of 2.2.
inline Bytes MakeUserProfile(const std::string& name) {
  Bytes file(264, 0);
  const auto put = [&file](size_t offset, uint32_t value) {
    for (size_t i = 0; i < 4; ++i) {
      file[offset + i] = static_cast<uint8_t>(value >> (24 - 8 * i));
    }
  };
  const auto text = [&file](size_t offset, const char* letters) {
    std::copy_n(letters, 4, file.begin() + static_cast<ptrdiff_t>(offset));
  };
  const auto fixed = [](double value) {
    return static_cast<uint32_t>(static_cast<int32_t>(value * 65536 + (value < 0 ? -0.5 : 0.5)));
  };
  size_t tags = 0;
  const auto add = [&](const char* signature, const char* type,
                       const std::vector<uint32_t>& words) {
    const size_t at = file.size();
    file.resize(at + 8 + 4 * words.size(), 0);
    text(132 + 12 * tags, signature);
    put(136 + 12 * tags, static_cast<uint32_t>(at));
    put(140 + 12 * tags, static_cast<uint32_t>(8 + 4 * words.size()));
    ++tags;
    text(at, type);
    for (size_t i = 0; i < words.size(); ++i) {
      put(at + 8 + 4 * i, words[i]);
    }
  };
  // One text, 28 bytes from the tag's start; its size is patched to what the text has.
  add("desc", "mluc", {1, 12, 0x656E5553, static_cast<uint32_t>(2 * name.size()), 28});
  put(140, static_cast<uint32_t>(28 + 2 * name.size()));
  for (const char letter : name) {
    file.push_back(0);
    file.push_back(static_cast<uint8_t>(letter));
  }
  file.resize((file.size() + 3) / 4 * 4, 0);
  // D65 sRGB seen under D50, by Bradford's matrix (IEC 61966-2-1 and ICC.1, Annex E).
  add("cprt", "mluc", {1, 12, 0x656E5553, 0, 28});
  add("wtpt", "XYZ ", {fixed(0.9642), fixed(1.0), fixed(0.8249)});
  add("chad", "sf32",
      {fixed(1.04788), fixed(0.02292), fixed(-0.05022), fixed(0.02959), fixed(0.99048),
       fixed(-0.01707), fixed(-0.00925), fixed(0.01508), fixed(0.75168)});
  add("rXYZ", "XYZ ", {fixed(0.43607), fixed(0.22249), fixed(0.01392)});
  add("gXYZ", "XYZ ", {fixed(0.38515), fixed(0.71687), fixed(0.09708)});
  add("bXYZ", "XYZ ", {fixed(0.14307), fixed(0.06061), fixed(0.71410)});
  add("rTRC", "curv", {1, 0x02330000});  // 563 / 256
  add("gTRC", "curv", {1, 0x02330000});
  add("bTRC", "curv", {1, 0x02330000});
  add("chrm", "chrm", {0x00030000});
  // No byte of the size may be 128 or more.
  while (file.size() % 256 >= 128) {
    file.push_back(0);
  }
  put(0, static_cast<uint32_t>(file.size()));
  text(4, "MSFT");
  text(12, "mntr");
  text(16, "RGB ");
  text(20, "XYZ ");
  text(36, "acsp");
  text(80, "MSFT");
  put(128, static_cast<uint32_t>(tags));
  const Bytes hash = virtualnotebook::Sha256(file);
  file.insert(file.end(), hash.begin(), hash.end());
  return file;
}

// 102 bytes: name, four bytes, hash, three bytes.
inline Bytes MakeDigestRecord(const std::string& name, const Bytes& file) {
  Bytes record(102, 0);
  std::copy(name.begin(), name.end(), record.begin());
  const Bytes hash = virtualnotebook::Sha256(file);
  std::copy(hash.begin(), hash.end(), record.begin() + 67);
  return record;
}

inline veloractl::Surroundings WithPanel(const PanelDescription& panel) {
  veloractl::Surroundings surroundings;
  surroundings.panel = veloractl::ParseEdid(MakeEdid(panel));
  surroundings.panelSource = "the test";
  return surroundings;
}

// "holds", "fails", ... of a check; empty: it was not made.
inline std::string ResultOf(const veloractl::Inspection& inspection, const std::string& check) {
  for (const Json& row : inspection.findings.Rows()) {
    if (row.at("check") == check) {
      return row.at("result");
    }
  }
  return "";
}

inline std::string FoundBy(const veloractl::Inspection& inspection, const std::string& check) {
  for (const Json& row : inspection.findings.Rows()) {
    if (row.at("check") == check) {
      return row.at("found");
    }
  }
  return "";
}

// The value of a field of the report's table.
inline Json ValueOf(const Json& fields, const std::string& field) {
  for (const Json& row : fields) {
    if (row.at("field") == field) {
      return row.at("value");
    }
  }
  return nullptr;
}

// One byte changed and the hash made to fit again.
inline Bytes Resealed(Bytes block, size_t offset, uint8_t value, size_t hashed) {
  block[offset] = value;
  const Bytes hash = virtualnotebook::Sha256({block.data(), hashed});
  std::copy(hash.begin(), hash.end(), block.begin() + static_cast<ptrdiff_t>(hashed));
  return block;
}

}  // namespace inspecttest
