#pragma once

#include <cstddef>
#include <cstdint>

#include "panel/BiosHeaderBase.h"

namespace velora {

// Version 2 of the block header. Bytes 64 to 127:
//
//   offset  size  field
//   64      1     lutType       mapped by GetLutType
//   65      1     lutPrecision  bits per component
//   66      4     dataLength    big-endian, the payload's length in bytes
//   70      56    reserved
//   126     2     trailer       nothing reads it
class BiosHeaderV2 : public BiosHeaderBase {
 public:
  BiosHeaderV2();
  ~BiosHeaderV2() override;

  using BiosHeaderBase::Parse;

  // Reads 128 bytes; refuses fewer than 123 and then keeps what it had. Callers give at least 128.
  bool Parse(const uint8_t* buf, size_t bufLen) override;
  uint32_t GetLutType() const override;
  uint32_t GetDataLength() const override;
  bool IsBiosHeaderDataValid(const uint8_t* buf, size_t bufLen) const override;

 private:
  struct Fields {
    uint8_t lutType;
    uint8_t lutPrecision;
    uint8_t dataLength[4];
    uint8_t reserved[56];
    uint8_t trailer[2];
  };
  static_assert(sizeof(Fields) == 64);

  Fields fields_;
};

}  // namespace velora
