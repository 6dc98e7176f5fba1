#include "lut/LutBlock.h"

#include "frame/Avx2.h"
#include "frame/IntegerCast.h"
#include "panel/ByteOrder.h"

namespace velora {
namespace {

// A calculated LUT may hold any value.
uint32_t Truncate(double value) { return static_cast<uint32_t>(TruncateToInt32(value)); }

}  // namespace

void DecodeLut(std::span<const uint8_t> block, int entries, double* out) {
  (HasAvx2() && entries >= kLeastForAvx2 ? DecodeLutAvx2 : DecodeLutPlain)(block, entries, out);
}

void DecodeLutPlain(std::span<const uint8_t> block, int entries, double* out) {
  const auto count = static_cast<size_t>(entries);
  const uint8_t* word = block.data() + kBlockHeaderSize;
  const uint8_t* extension = word + 4 * count;
  for (size_t i = 0; i < count; ++i, word += 4, out += 3) {
    const uint32_t bits = ReadBe32(word);
    out[0] = static_cast<double>(bits >> 24 | uint32_t{extension[i]} << 8);
    out[1] = static_cast<double>(bits >> 12 & 0xFFF);
    out[2] = static_cast<double>(bits & 0xFFF);
  }
}

void EncodeLut(const double* lut, int entries, uint8_t* data) {
  const auto count = static_cast<size_t>(entries);
  uint8_t* extension = data + 4 * count;
  for (size_t i = 0; i < count; ++i, lut += 3, data += 4) {
    const uint32_t r = Truncate(lut[0]);
    const uint32_t g = Truncate(lut[1]);
    const uint32_t b = Truncate(lut[2]);
    WriteBe32(r << 24 | g << 12 | b, data);
    extension[i] = static_cast<uint8_t>(r >> 8);
  }
}

}  // namespace velora
