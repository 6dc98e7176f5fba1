#pragma once

#include <cstdint>

// Tetrahedral look-up in, and composition of, 3D LUTs in the integer domain 0 to 1023.
namespace velora {

using RgbTriple = int32_t[3];

// Looks rgb (each 0 to 1023) up in lut, k3DEntries triples in grid order, and rounds to nearest,
// halves up. A value v is grid coordinate v >> 6 and fraction v & 63. Nothing guards against values
// beyond 1023: they index beyond the grid.
void TetrahedralLookup(const int32_t rgb[3], const RgbTriple* lut, int32_t out[3]);

// The LUT of second(first(x)), as a new array of LutValueCount(k3DEntries) doubles that the caller
// releases with delete[]; null when there is no memory. Inputs are truncated towards zero; values
// of first beyond 1023 count as 1023.
double* ComposeLuts(const double* first, const double* second);

}  // namespace velora
