#pragma once

#include <cstddef>

// 3 x 3 matrices as nine doubles, row by row; vectors as three. out must be none of the inputs.
namespace velora {

inline void MatMultiply(const double* a, const double* b, double* out) {
  for (size_t row = 0; row < 3; ++row) {
    for (size_t column = 0; column < 3; ++column) {
      out[row * 3 + column] =
          a[row * 3] * b[column] + a[row * 3 + 1] * b[3 + column] + a[row * 3 + 2] * b[6 + column];
    }
  }
}

inline void MatVecMultiply(const double* m, const double* v, double* out) {
  for (size_t row = 0; row < 3; ++row) {
    out[row] = m[row * 3] * v[0] + m[row * 3 + 1] * v[1] + m[row * 3 + 2] * v[2];
  }
}

inline void SetMatColumn(size_t column, const double* v, double* m) {
  for (size_t row = 0; row < 3; ++row) {
    m[row * 3 + column] = v[row];
  }
}

// Multiplies each column by its factor.
inline void ScaleMatColumns(const double* factors, double* m) {
  for (size_t i = 0; i < 9; ++i) {
    m[i] *= factors[i % 3];
  }
}

// By the first row's cofactors.
inline double Determinant(const double* m) {
  return m[0] * (m[4] * m[8] - m[5] * m[7]) - m[1] * (m[3] * m[8] - m[5] * m[6]) +
         m[2] * (m[3] * m[7] - m[4] * m[6]);
}

// The inverse of a matrix with this determinant: the adjugate times its reciprocal.
inline void MatInvertBy(double determinant, const double* m, double* out) {
  const double factor = 1 / determinant;
  const double adjugate[9] = {
      m[4] * m[8] - m[5] * m[7], m[2] * m[7] - m[1] * m[8], m[1] * m[5] - m[2] * m[4],
      m[5] * m[6] - m[3] * m[8], m[0] * m[8] - m[2] * m[6], m[2] * m[3] - m[0] * m[5],
      m[3] * m[7] - m[4] * m[6], m[1] * m[6] - m[0] * m[7], m[0] * m[4] - m[1] * m[3],
  };
  for (size_t i = 0; i < 9; ++i) {
    out[i] = adjugate[i] * factor;
  }
}

}  // namespace velora
