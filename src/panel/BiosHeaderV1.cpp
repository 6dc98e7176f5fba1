#include "panel/BiosHeaderV1.h"

#include "frame/BoundedCopy.h"
#include "frame/Log.h"

namespace velora {
namespace {

// Ends behind v1Field, although Parse reads the whole header.
constexpr size_t kMinHeaderLength = 66;

}  // namespace

BiosHeaderV1::BiosHeaderV1() { memset_s(&fields_, sizeof fields_, 0, sizeof fields_); }

BiosHeaderV1::~BiosHeaderV1() { memset_s(&fields_, sizeof fields_, 0, sizeof fields_); }

bool BiosHeaderV1::Parse(const uint8_t* buf, size_t bufLen) {
  if (!IsBiosHeaderDataValid(buf, bufLen)) {
    return false;
  }
  uint32_t offset = 0;
  ParseCommonFields(buf, offset);
  CopyData(&fields_, sizeof fields_, buf, offset);
  return true;
}

bool BiosHeaderV1::IsBiosHeaderDataValid(const uint8_t* /*buf*/, size_t bufLen) const {
  constexpr FunctionLog log("BiosHeaderV1::IsBiosHeaderDataValid");
  if (bufLen < kMinHeaderLength) {
    log.Error(L"bufLen:", bufLen, L" is invalid! minHeaderLen is:", kMinHeaderLength,
              L" on V1 version");
    return false;
  }
  return true;
}

}  // namespace velora
