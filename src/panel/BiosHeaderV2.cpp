#include "panel/BiosHeaderV2.h"

#include "frame/BoundedCopy.h"
#include "frame/Log.h"
#include "panel/ByteOrder.h"

namespace velora {
namespace {

// Lies within reserved, although Parse reads the whole header.
constexpr size_t kMinHeaderLength = 123;

constexpr struct {
  uint8_t typeByte;
  uint32_t lutType;
} kLutTypes[] = {
    {0, 0},      // the panel's base LUT
    {1, 1},      // sRGB
    {2, 2},      // P3
    {3, 3},      // not in use
    {4, 4},      // Adobe RGB
    {7, 7},      // e-book
    {160, 160},  // gamma
    {255, 161},  // not in use
};

}  // namespace

BiosHeaderV2::BiosHeaderV2() { memset_s(&fields_, sizeof fields_, 0, sizeof fields_); }

BiosHeaderV2::~BiosHeaderV2() { memset_s(&fields_, sizeof fields_, 0, sizeof fields_); }

bool BiosHeaderV2::Parse(const uint8_t* buf, size_t bufLen) {
  if (!IsBiosHeaderDataValid(buf, bufLen)) {
    return false;
  }
  uint32_t offset = 0;
  ParseCommonFields(buf, offset);
  CopyData(&fields_, sizeof fields_, buf, offset);
  return true;
}

uint32_t BiosHeaderV2::GetLutType() const {
  for (const auto& row : kLutTypes) {
    if (row.typeByte == fields_.lutType) {
      return row.lutType;
    }
  }
  return kNoLutType;
}

uint32_t BiosHeaderV2::GetDataLength() const { return ReadBe32(fields_.dataLength); }

bool BiosHeaderV2::IsBiosHeaderDataValid(const uint8_t* /*buf*/, size_t bufLen) const {
  constexpr FunctionLog log("BiosHeaderV2::IsBiosHeaderDataValid");
  if (bufLen < kMinHeaderLength) {
    log.Error(L"bufLen:", bufLen, L" is invalid! minHeaderLen is:", kMinHeaderLength,
              L" on V2 version");
    return false;
  }
  return true;
}

}  // namespace velora
