// The formats of tables and blocks once more, in their plainest form: what the fuzzers compare the
// library with. Shares no code with it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "fuzz/Fuzz.h"

namespace fuzz {

inline constexpr size_t kPlainHeaderSize = 128;
inline constexpr size_t kPlain3DBlockSize = 24725;
inline constexpr size_t kPlainGammaBlockSize = 5280;

// The LUT type of a block's type byte, 162 for one that names none.
uint32_t PlainLutType(uint8_t typeByte);

struct PlainTable {
  struct Block {
    size_t offset;
    size_t size;
  };
  std::optional<Block> block;  // the first of the type
  size_t logLines = 0;         // that the search writes
};
PlainTable ReadPlainTable(std::span<const uint8_t> table, uint32_t lutType);

enum class PlainProof { HeaderCut, DataCut, HashWrong, Good };
PlainProof ProvePlainBlock(std::span<const uint8_t> block);

// R, G, B per entry.
std::vector<double> DecodePlainBlock(std::span<const uint8_t> block, size_t entries);

inline std::string ToBuffer(std::span<const uint8_t> bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

// Put sums and hashes right, where there is room for them: so fuzzers come past them.
void RepairTable(Bytes& table);
void RepairBlock(std::span<uint8_t> block);

}  // namespace fuzz
