#pragma once

#include <span>

#include "colormath/TargetGamuts.h"

// The arithmetic of a user-designed mode: what UsrDesignAlgo calculates from the panel, without the
// panel. Log lines carry that class's name. Every test for zero compares with 1e-16.
namespace velora {

inline constexpr double kDesignZero = 1e-16;

// Linear RGB to CIE XYZ, row by row. Leaves matrix as it is when a coordinate is zero; all zeros
// come out when the primaries span no colour space.
void CalcColorSpaceConversionRgbToXyz(const ChromaticityGamut& gamut, double* matrix);

// out stays as it is for a determinant of zero.
void InvertDesignMatrix(const double* in, double* out);

// Values of 0 to 1023 to linear ones, in place; rounded to single precision.
void RgbNormalization(double* rgb, double gamma);

// Linear values to 0 to 1023, rounded to single precision ahead of the scale; what lies out of
// gamut is cut off. Clears the negative channels of rgb.
void RgbDenormalization(double* rgb, double gamma, double* out);

// RgbDenormalization of any number of values, in place, by a gamma above 0. The two ways have the
// same results; the second needs a processor with AVX2, and a gamma within its bounds, as each
// panel's is that is known.
void DenormalizePlain(std::span<double> values, double gamma);
void DenormalizeAvx2(std::span<double> values, double gamma);
inline constexpr double kLeastGammaForAvx2 = 1;
inline constexpr double kGreatestGammaForAvx2 = 16;

// The 3D LUT, 4913 triples in grid order, that takes target RGB to panel RGB by this matrix of
// linear values. Both gammas are above 0.
void FillUser3DLut(const double* targetToPanel, double targetGamma, double panelGamma, double* lut);

// The gamma LUT, 1024 triples: straight lines on a 12-bit scale whose slopes are the target's white
// in panel RGB. False, and lut stays, for a white without light.
bool FillUserGammaLut(const double* targetToPanel, double panelGamma, double* lut);

}  // namespace velora
