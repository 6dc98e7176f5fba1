#include "fuzz/PlainBlocks.h"

#include <algorithm>

#include "virtualnotebook/Factory.h"

namespace fuzz {
namespace {

constexpr size_t kControlHeader = 52;
constexpr size_t kControlSum = kControlHeader + 14;
constexpr size_t kBlocksAtLeastAt = kControlHeader + 16;
constexpr size_t kTypeByte = 64;
constexpr size_t kDataLength = 66;
constexpr size_t kHash = 32;

uint64_t BigEndian(std::span<const uint8_t> bytes, size_t offset, size_t width) {
  uint64_t value = 0;
  for (const uint8_t byte : bytes.subspan(offset, width)) {
    value = value * 256 + byte;
  }
  return value;
}

uint64_t SumOfControlHeader(std::span<const uint8_t> table) {
  uint64_t sum = 0;
  for (size_t i = kControlHeader; i < kControlSum; ++i) {
    sum += table[i];
  }
  return sum % 65536;
}

// Where the hash of a block stands, if all of it is there.
std::optional<size_t> HashOffset(std::span<const uint8_t> block) {
  if (block.size() < kPlainHeaderSize) {
    return std::nullopt;
  }
  const uint64_t offset = kPlainHeaderSize + BigEndian(block, kDataLength, 4);
  return offset + kHash <= block.size() ? std::optional(static_cast<size_t>(offset)) : std::nullopt;
}

}  // namespace

uint32_t PlainLutType(uint8_t typeByte) {
  switch (typeByte) {
    case 0:
    case 1:
    case 2:
    case 3:
    case 4:
    case 7:
    case 160:
      return typeByte;
    case 255:
      return 161;
    default:
      return 162;
  }
}

PlainTable ReadPlainTable(std::span<const uint8_t> table, uint32_t lutType) {
  if (table.size() < kBlocksAtLeastAt ||
      SumOfControlHeader(table) != BigEndian(table, kControlSum, 2)) {
    return {.block = std::nullopt, .logLines = 1};
  }
  const uint64_t first = kControlHeader + BigEndian(table, kControlHeader + 4, 2);
  const uint64_t count = BigEndian(table, kControlHeader + 6, 2);
  const uint64_t stride = BigEndian(table, kControlHeader + 8, 4);
  if (stride == 0 || first + count * stride > table.size()) {
    return {.block = std::nullopt, .logLines = 1};
  }
  if (stride < kPlainHeaderSize) {
    return {.block = std::nullopt, .logLines = count};
  }
  for (uint64_t i = 0; i < count; ++i) {
    const size_t offset = first + i * stride;
    if (PlainLutType(table[offset + kTypeByte]) == lutType) {
      return {.block = PlainTable::Block{offset, stride}};
    }
  }
  return {};
}

PlainProof ProvePlainBlock(std::span<const uint8_t> block) {
  if (block.size() < kPlainHeaderSize) {
    return PlainProof::HeaderCut;
  }
  const auto offset = HashOffset(block);
  if (!offset) {
    return PlainProof::DataCut;
  }
  return std::ranges::equal(virtualnotebook::Sha256(block.first(*offset)),
                            block.subspan(*offset, kHash))
             ? PlainProof::Good
             : PlainProof::HashWrong;
}

// The bytes of a word are r, gG, Gb... in half bytes: rr ggg bbb, and the extension byte is R's
// high one.
std::vector<double> DecodePlainBlock(std::span<const uint8_t> block, size_t entries) {
  std::vector<double> lut;
  for (size_t i = 0; i < entries; ++i) {
    const auto word = block.subspan(kPlainHeaderSize + 4 * i, 4);
    const uint8_t extension = block[kPlainHeaderSize + 4 * entries + i];
    lut.push_back(extension * 256 + word[0]);
    lut.push_back(word[1] * 16 + word[2] / 16);
    lut.push_back(word[2] % 16 * 256 + word[3]);
  }
  return lut;
}

void RepairTable(Bytes& table) {
  if (table.size() < kBlocksAtLeastAt) {
    return;
  }
  const uint64_t sum = SumOfControlHeader(table);
  table[kControlSum] = static_cast<uint8_t>(sum / 256);
  table[kControlSum + 1] = static_cast<uint8_t>(sum % 256);
  for (const uint32_t type : {0u, 1u, 2u, 4u, 7u, 160u}) {
    if (const auto block = ReadPlainTable(table, type).block) {
      RepairBlock(std::span(table).subspan(block->offset, block->size));
    }
  }
}

void RepairBlock(std::span<uint8_t> block) {
  if (const auto offset = HashOffset(block)) {
    std::ranges::copy(virtualnotebook::Sha256(block.first(*offset)),
                      block.begin() + static_cast<ptrdiff_t>(*offset));
  }
}

}  // namespace fuzz
