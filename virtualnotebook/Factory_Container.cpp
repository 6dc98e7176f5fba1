// LUT blocks, and the tables and files that hold them. Numbers are big-endian, except in the ACPI
// header.
#include "virtualnotebook/Factory.h"

#include <openssl/sha.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <stdexcept>

namespace virtualnotebook {
namespace {

constexpr size_t kBlockHeaderSize = 128;
constexpr size_t kPanelItems = 10;
constexpr size_t kControlHeaderSize = 16;
constexpr size_t kAcpiHeaderSize = 36;  // ACPI 6.5, 5.2.6
constexpr size_t kTableHeadSize = 52;
constexpr uint8_t kStrideFilling = 0xFF;

void Append(Bytes& out, std::string_view text) {
  for (char c : text) {
    out.push_back(static_cast<uint8_t>(c));
  }
}
void Append(Bytes& out, const Bytes& bytes) { out.insert(out.end(), bytes.begin(), bytes.end()); }

void AppendBigEndian(Bytes& out, uint32_t value, int width) {
  for (int shift = 8 * (width - 1); shift >= 0; shift -= 8) {
    out.push_back(static_cast<uint8_t>(value >> shift & 0xFF));
  }
}

void AppendLittleEndian(Bytes& out, uint32_t value, int width) {
  for (int i = 0; i < width; ++i) {
    out.push_back(static_cast<uint8_t>(value >> 8 * i & 0xFF));
  }
}

void AppendField(Bytes& out, const std::string& text, size_t width) {
  if (text.size() != width) {
    throw std::invalid_argument("a block header's field of " + std::to_string(width) +
                                " characters cannot hold \"" + text + "\"");
  }
  Append(out, text);
}

Bytes BlockHeaderBytes(const BlockHeader& header, size_t dataLength) {
  Bytes out;
  Append(out, "NLUT02");
  for (size_t i = 0; i < kPanelItems; ++i) {
    Append(out, "0000");
  }
  AppendField(out, header.serialNumber, 8);
  AppendField(out, header.year, 4);
  AppendField(out, header.week, 2);
  AppendField(out, header.vendor, 4);
  out.push_back(header.typeByte);
  out.push_back(header.precision);
  AppendBigEndian(out, static_cast<uint32_t>(dataLength), 4);
  out.resize(kBlockHeaderSize, 0);
  return out;
}

uint32_t Component(double value) {
  if (!(value >= 0 && value <= 4095) || value != std::floor(value)) {
    throw std::invalid_argument("a LUT holds integers of 0 to 4095");
  }
  return static_cast<uint32_t>(value);
}

uint32_t StrideOf(const std::vector<Bytes>& blocks, uint32_t wanted) {
  size_t largest = 0;
  for (const Bytes& block : blocks) {
    largest = std::max(largest, block.size());
  }
  if (wanted == 0) {
    return static_cast<uint32_t>(largest);
  }
  if (wanted < largest) {
    throw std::invalid_argument("a block is longer than the stride");
  }
  return wanted;
}

// The sum of the bytes before it, modulo 65536, ends the control header.
Bytes ControlHeader(size_t blockCount, uint32_t stride) {
  Bytes out;
  Append(out, "NXVL");
  AppendBigEndian(out, kControlHeaderSize, 2);
  AppendBigEndian(out, static_cast<uint32_t>(blockCount), 2);
  AppendBigEndian(out, stride, 4);
  AppendBigEndian(out, 0, 2);
  uint32_t sum = 0;
  for (uint8_t byte : out) {
    sum += byte;
  }
  AppendBigEndian(out, sum & 0xFFFF, 2);
  return out;
}

}  // namespace

Bytes Sha256(std::span<const uint8_t> data) {
  Bytes digest(SHA256_DIGEST_LENGTH);
  SHA256(data.data(), data.size(), digest.data());
  return digest;
}

BlockHeader HeaderOf(const PanelDescription& panel, uint8_t typeByte) {
  char serial[9];
  char year[5];
  char week[3];
  std::snprintf(serial, sizeof serial, "%02X%02X%02X%02X", panel.serial[0], panel.serial[1],
                panel.serial[2], panel.serial[3]);
  std::snprintf(year, sizeof year, "%04u", static_cast<unsigned>(panel.year) % 10000u);
  std::snprintf(week, sizeof week, "%02u", panel.week > 53 ? 0u : panel.week % 100u);
  return {serial, year, week, panel.vendor + "#", typeByte, 12};
}

Bytes MakeLutBlock(const BlockHeader& header, const std::vector<double>& lut) {
  if (lut.size() % 3 != 0) {
    throw std::invalid_argument("a LUT holds R, G, B per entry");
  }
  const size_t entries = lut.size() / 3;
  Bytes block = BlockHeaderBytes(header, entries * 5);
  Bytes extension;
  for (size_t i = 0; i < entries; ++i) {
    const uint32_t r = Component(lut[3 * i]);
    const uint32_t g = Component(lut[3 * i + 1]);
    const uint32_t b = Component(lut[3 * i + 2]);
    AppendBigEndian(block, (r & 0xFF) << 24 | g << 12 | b, 4);
    extension.push_back(static_cast<uint8_t>(r >> 8));
  }
  Append(block, extension);
  Append(block, Sha256(block));
  return block;
}

Bytes MakeGoldenFile(const std::vector<Bytes>& blocks, uint32_t stride) {
  stride = StrideOf(blocks, stride);
  Bytes file = ControlHeader(blocks.size(), stride);
  for (const Bytes& block : blocks) {
    Append(file, block);
    file.resize(file.size() + stride - block.size(), kStrideFilling);
  }
  return file;
}

Bytes MakeFirmwareTable(const std::vector<Bytes>& blocks, uint32_t stride) {
  const Bytes content = MakeGoldenFile(blocks, stride);
  Bytes table;
  Append(table, "DLUT");
  AppendLittleEndian(table, static_cast<uint32_t>(kTableHeadSize + content.size()), 4);
  table.push_back(1);  // revision
  table.push_back(0);  // the checksum's place
  Append(table, "NORVEX");
  Append(table, "NXVELORA");
  AppendLittleEndian(table, 1, 4);
  Append(table, "NVX ");
  AppendLittleEndian(table, 1, 4);
  static_assert(kAcpiHeaderSize == 4 + 4 + 1 + 1 + 6 + 8 + 4 + 4 + 4);
  table.resize(kTableHeadSize, 0);
  Append(table, content);
  // All bytes of an ACPI table add up to 0.
  uint8_t sum = 0;
  for (uint8_t byte : table) {
    sum = static_cast<uint8_t>(sum + byte);
  }
  table[9] = static_cast<uint8_t>(0 - sum);
  return table;
}

}  // namespace virtualnotebook
