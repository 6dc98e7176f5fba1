#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace velora {

// A block header in which every byte of a text field has a place of its own in the expectations.
inline std::array<uint8_t, 128> MakeTestHeader() {
  constexpr std::string_view common =
      "tag!02"
      "aa00bb11cc22dd33ee44ff55gg66hh77ii88jj99"
      "SN345678"
      "2024"
      "08"
      "NVX#";
  static_assert(common.size() == 64);
  std::array<uint8_t, 128> header{};
  for (size_t i = 0; i < common.size(); ++i) {
    header[i] = static_cast<uint8_t>(common[i]);
  }
  for (size_t i = common.size(); i < header.size(); ++i) {
    header[i] = static_cast<uint8_t>(i);
  }
  return header;
}

}  // namespace velora
