#include "panel/BiosControlHeader.h"

#include <concepts>
#include <type_traits>

#include "frame/BoundedCopy.h"
#include "frame/Log.h"
#include "panel/ByteOrder.h"

namespace velora {
namespace {

// The checksum, at the header's end, covers all bytes before it.
constexpr uint32_t kChecksumOffset = 14;

uint16_t SumBytes(const uint8_t* buf) {
  uint16_t sum = 0;
  for (uint32_t i = 0; i < kChecksumOffset; ++i) {
    sum = static_cast<uint16_t>(sum + buf[i]);
  }
  return sum;
}

}  // namespace

static_assert(sizeof(BiosControlHeader) == BiosControlHeader::kSize);
static_assert(std::is_trivially_copyable_v<BiosControlHeader>);

BiosControlHeader::BiosControlHeader() { memset_s(this, sizeof *this, 0, sizeof *this); }

bool BiosControlHeader::Parse(const uint8_t* buf, size_t bufLen) {
  constexpr FunctionLog log("BiosControlHeader::Parse");
  if (!IsBiosControlDataValid(buf, bufLen)) {
    return false;
  }
  memset_s(this, sizeof *this, 0, sizeof *this);
  uint32_t offset = 0;
  if (!CopyData(signature, sizeof signature, buf, offset) ||
      !ParseBinaryData(buf, offset, headerLength) || !ParseBinaryData(buf, offset, blockCount) ||
      !ParseBinaryData(buf, offset, blockSize) ||
      !CopyData(controlExtra, sizeof controlExtra, buf, offset) ||
      !ParseBinaryData(buf, offset, checksum)) {
    log.Error(L"Parse data failed!");
    return false;
  }
  return SumBytes(buf) == checksum;  // the caller logs a mismatch
}

bool BiosControlHeader::IsBiosControlDataValid(const uint8_t* buf, size_t bufLen) const {
  constexpr FunctionLog log("BiosControlHeader::IsBiosControlDataValid");
  if (buf == nullptr) {
    log.Error(L"buf is nullptr!");
    return false;
  }
  if (bufLen < kSize) {
    log.Error(L"bufLen:", bufLen, L" is invalid! minHeaderLen is:", kSize,
              L" for Bios control header.");
    return false;
  }
  return true;
}

template <typename Number>
bool BiosControlHeader::ParseBinaryData(const uint8_t* buf, uint32_t& offset, Number& value) const {
  constexpr FunctionLog log("BiosControlHeader::ParseBinaryData");
  if (buf == nullptr) {
    log.Error(L"buf is nullptr!");
    return false;
  }
  if (offset + uint64_t{sizeof value} > kSize) {
    log.Error(L"Copy out of range.current offset:", offset, L", dataLen:", sizeof value);
    return false;
  }
  if constexpr (std::same_as<Number, uint16_t>) {
    value = ReadBe16(buf + offset);
  } else {
    value = ReadBe32(buf + offset);
  }
  offset += static_cast<uint32_t>(sizeof value);
  return true;
}

template bool BiosControlHeader::ParseBinaryData(const uint8_t*, uint32_t&, uint16_t&) const;
template bool BiosControlHeader::ParseBinaryData(const uint8_t*, uint32_t&, uint32_t&) const;

bool BiosControlHeader::CopyData(void* dst, uint32_t copyLen, const uint8_t* buf,
                                 uint32_t& offset) const {
  constexpr FunctionLog log("BiosControlHeader::CopyData");
  if (buf == nullptr || dst == nullptr) {
    log.Error(L"buf or dst is nullptr!");
    return false;
  }
  // Ahead of the length: an empty copy behind the end is out of range.
  if (uint64_t{offset} + copyLen > kSize) {
    log.Error(L"Copy out of range.current offset:", offset, L", copyLen:", copyLen);
    return false;
  }
  if (copyLen < 1) {
    log.Error(L"copyLen error!copyLen:", copyLen);
    return false;
  }
  if (memcpy_s(dst, copyLen, buf + offset, copyLen) != 0) {
    log.Error(L"memcpy_s failed!");
    return false;
  }
  offset += copyLen;
  return true;
}

std::string BiosControlHeader::GetSignature() const { return {signature, sizeof signature}; }

}  // namespace velora
