// EDIDs, and what a panel's primaries mean for user modes.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "colormath/TargetGamuts.h"
#include "panel/LcdEdidParse.h"
#include "veloractl/inspect/Findings.h"

namespace veloractl {

inline constexpr size_t kEdidBlockSize = 128;
inline constexpr std::array<uint8_t, 8> kEdidHead = {0x00, 0xFF, 0xFF, 0xFF,
                                                     0xFF, 0xFF, 0xFF, 0x00};

// The bytes of hexadecimal text with white space; none for other text.
std::optional<std::vector<uint8_t>> BytesOfHexText(ByteSpan text);

// As the library reads it; none for bytes that it refuses.
std::optional<velora::LcdEdidParse> ParseEdid(ByteSpan edid);

velora::ChromaticityGamut GamutOf(const velora::LcdEdidParse& panel);

// Warnings for what EDIDs of real machines have, and the checks of the bytes themselves.
void CheckEdid(ByteSpan edid, Findings& findings);

// All fields of the base block as rows of a table, as far as the bytes go.
Json EdidFields(ByteSpan edid);

// Linear RGB of the panel to XYZ, row by row; none where the primaries give none.
std::optional<std::array<double, 9>> MatrixOf(const velora::ChromaticityGamut& gamut);

// How much of the 3D LUT of a user mode with this gamut, gamma 2.2 and the panel's white the panel
// cannot show and the library cuts off.
struct Clipping {
  size_t entries;    // of 4913 that lose something
  double mostAbove;  // the largest linear value beyond 1; 0: none
  double mostBelow;  // the same below 0, as a positive number
};
std::optional<Clipping> ClippingOf(const velora::ChromaticityGamut& target,
                                   const velora::ChromaticityGamut& panel);

// Matrix, white and clipping of the six gamuts that a user can choose, as a report.
Json PanelColours(const velora::LcdEdidParse& panel);

}  // namespace veloractl
