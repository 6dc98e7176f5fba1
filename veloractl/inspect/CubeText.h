// LUTs as .cube text: what colour programs exchange.
//
//   LUT_3D_SIZE 17      4913 lines of R, G, B from 0 to 1, red fastest; 1 stands for 1023
//   LUT_1D_SIZE 1024    1024 lines of R, G, B; 1 stands for 4095
//
// Grid points are carried over one by one; nothing is calculated between them.
#pragma once

#include <string>
#include <string_view>

#include "veloractl/inspect/LutBlocks.h"

namespace veloractl {

// Seven decimals: enough to give every value back exactly.
std::string CubeOf(const DecodedBlock& lut, const std::string& title);

struct CubeLut {
  DecodedBlock lut;        // integers
  size_t rounded = 0;      // values that lay between two integers
  double mostRounded = 0;  // of an integer step
  std::string title;
};

// Failure with kBadFile, naming the line, for any other text, size, domain or value.
CubeLut ParseCube(std::string_view text);

// The LUT as a file's bytes: header, entries and hash. header: of another block of the kind, 128
// bytes; empty: that of a user's LUT.
std::vector<uint8_t> MakeLutFile(const DecodedBlock& lut, ByteSpan header);

}  // namespace veloractl
