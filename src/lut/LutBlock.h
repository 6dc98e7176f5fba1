#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

// The one byte layout that all LUT data shares: firmware table, golden file, bin files, user files.
//
//   offset        size  contents
//   0             128   block header (BiosHeaderV2)
//   128           4n    n packed words, big-endian
//   128 + 4n      n     n extension bytes, in the same order
//   128 + 5n      32    SHA-256 of all bytes before it
//
// An entry is a word W and an extension byte E: B is bits 0 to 11 of W, G bits 12 to 23, and R is
// bits 24 to 31 with E above them.
//
// A decoded LUT is a flat array of doubles, R, G, B per entry, unscaled. A 3D LUT (values 0 to
// 1023) is in grid order, entry = r * 289 + g * 17 + b: blue runs fastest. A gamma LUT (values 0 to
// 4095) is indexed by the input level.
namespace velora {

inline constexpr size_t kBlockHeaderSize = 128;
inline constexpr size_t kSha256Size = 32;

inline constexpr int kGridSize = 17;  // points on each axis of a 3D LUT
inline constexpr int k3DEntries = kGridSize * kGridSize * kGridSize;
inline constexpr int kGammaEntries = 1024;
inline constexpr int32_t k3DMaxValue = 1023;  // of a component of a 3D LUT

// Words and extension bytes of a LUT with this many entries: the header's data length.
constexpr size_t LutDataLength(int entries) { return static_cast<size_t>(entries) * 5; }
constexpr size_t LutBlockSize(int entries) {
  return kBlockHeaderSize + LutDataLength(entries) + kSha256Size;
}
constexpr size_t LutValueCount(int entries) { return static_cast<size_t>(entries) * 3; }

inline constexpr size_t k3DBlockSize = LutBlockSize(k3DEntries);
inline constexpr size_t kGammaBlockSize = LutBlockSize(kGammaEntries);
static_assert(k3DEntries == 4913 && k3DBlockSize == 24725 && kGammaBlockSize == 5280);

// Decodes the block's entries into out, LutValueCount(entries) doubles.
// block: at least LutBlockSize(entries) bytes; header and hash are not looked at.
void DecodeLut(std::span<const uint8_t> block, int entries, double* out);

// The two ways of it, with the same results. The second needs a processor with AVX2.
inline constexpr int kLeastForAvx2 = 8;  // entries
void DecodeLutPlain(std::span<const uint8_t> block, int entries, double* out);
void DecodeLutAvx2(std::span<const uint8_t> block, int entries, double* out);

// Encodes entries (truncated towards zero) as words and extension bytes into data,
// LutDataLength(entries) bytes. Values above their field run into the field above, as in
// DecodeLut's layout; R's high bits are the extension byte.
void EncodeLut(const double* lut, int entries, uint8_t* data);

}  // namespace velora
