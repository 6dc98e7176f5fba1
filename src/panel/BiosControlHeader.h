#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace velora {

// The control header of the firmware's LUT table: 16 bytes, big-endian numbers.
//
//   offset  size  field
//   0       4     signature     copied, not compared with anything
//   4       2     headerLength  from this header's first byte to the first block
//   6       2     blockCount
//   8       4     blockSize     stride of the blocks in bytes
//   12      2     controlExtra  copied, nothing reads it
//   14      2     checksum      sum of the bytes 0 to 13, modulo 65536
class BiosControlHeader {
 public:
  static constexpr uint32_t kSize = 16;

  BiosControlHeader();

  // False for a null or short buffer and for a wrong checksum; the object may then be partly
  // filled.
  bool Parse(const uint8_t* buf, size_t bufLen);
  bool IsBiosControlDataValid(const uint8_t* buf, size_t bufLen) const;

  // One big-endian number (uint16_t or uint32_t) at offset, which moves behind it.
  template <typename Number>
  bool ParseBinaryData(const uint8_t* buf, uint32_t& offset, Number& value) const;
  bool CopyData(void* dst, uint32_t copyLen, const uint8_t* buf, uint32_t& offset) const;

  std::string GetSignature() const;
  uint16_t GetHeaderLength() const { return headerLength; }
  uint16_t GetBlockCount() const { return blockCount; }
  uint32_t GetBlockSize() const { return blockSize; }
  uint16_t GetChecksum() const { return checksum; }

 private:
  char signature[4];
  uint16_t headerLength;
  uint16_t blockCount;
  uint32_t blockSize;
  uint8_t controlExtra[2];
  uint16_t checksum;
};

}  // namespace velora
