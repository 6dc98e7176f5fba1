#pragma once

#include <cstddef>
#include <cstdint>

#include "panel/BiosHeaderBase.h"

namespace velora {

// Version 1 of the block header. It names no LUT: type and data length are the base's. Nothing
// selects it at present. Bytes 64 to 127:
//
//   offset  size  field
//   64      2     v1Field
//   66      62    v1Reserved
class BiosHeaderV1 : public BiosHeaderBase {
 public:
  BiosHeaderV1();
  ~BiosHeaderV1() override;

  using BiosHeaderBase::Parse;

  // Reads 128 bytes; refuses fewer than 66 and then keeps what it had. Callers give at least 128.
  bool Parse(const uint8_t* buf, size_t bufLen) override;
  bool IsBiosHeaderDataValid(const uint8_t* buf, size_t bufLen) const override;

 private:
  struct Fields {
    uint8_t v1Field[2];
    uint8_t v1Reserved[62];
  };
  static_assert(sizeof(Fields) == 64);

  Fields fields_;
};

}  // namespace velora
