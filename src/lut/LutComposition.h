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

// The two ways of it, with the same results, into the caller's array. The plain one takes any
// values; false without memory. The other needs a processor with AVX2; false, with a result of no
// meaning, where a value of second is not within 0 to 32767, as only extension bytes of more than a
// LUT's 10 bits make it.
bool ComposeLutsPlain(const double* first, const double* second, double* result);
bool ComposeLutsAvx2(const double* first, const double* second, double* result);

}  // namespace velora
