#include "lut/LutBlock.h"

#include "panel/ByteOrder.h"

namespace velora {

void DecodeLut(std::span<const uint8_t> block, int entries, double* out) {
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
    const auto r = static_cast<uint32_t>(static_cast<int32_t>(lut[0]));
    const auto g = static_cast<uint32_t>(static_cast<int32_t>(lut[1]));
    const auto b = static_cast<uint32_t>(static_cast<int32_t>(lut[2]));
    WriteBe32(r << 24 | g << 12 | b, data);
    extension[i] = static_cast<uint8_t>(r >> 8);
  }
}

}  // namespace velora
