#include "lut/GammaCurve.h"

#include <immintrin.h>

#include <algorithm>
#include <array>
#include <cfloat>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "frame/Avx2.h"

// Four powers x^e at once, to the last bit of the C library's. x times a short reciprocal is 1 + r,
// without rounding; its power is that of the reciprocal's inverse, from a table, times (1 + r)^e,
// the first terms of the binomial series. What matters is kept as sums of two doubles, so that the
// product's error is far below a double's last place. In units of 2^-62, relatively, |r| <= 2^-5:
//
//   the table: logarithms, their exponentials and products of extended precision, where
//     the x87 is good for the last of 64 bits                                           1.6
//   the series from r^2 on, 2^-11 of the whole, in double precision                     0.6
//   the sums' own rounding, next to 2^-11 of the whole, and the terms from r^12 on      0.5
//
// The C library's power has an error of its own before it is rounded to a double. Where all values
// within both errors of the product become the same double, the C library's does too. Where they
// don't, some 3 of a hundred times, it is taken itself.
namespace velora {
namespace {

static_assert(LDBL_MANT_DIG == 64);

constexpr size_t kAtOnce = 4;

// In units of 2^-62. The tool chain's power for Windows is exp2(e log2(x)) by the x87's
// instructions, each of which is good for the last of its 64 bits: the product's error grows with
// it. glibc's (2.28 and later) is good for a hundredth of a double's last place.
constexpr double kErrorUnit = 0x1p-62;
constexpr double kProductError = 3;
#if defined(_WIN32)
constexpr double kLibraryError = 1;
constexpr double kLibraryErrorPerBinade = 0.6;
#else
constexpr double kLibraryError = 11;
constexpr double kLibraryErrorPerBinade = 0.1;
#endif

// Each power of two is cut into intervals. An interval's number is the upper bits of its doubles.
constexpr int kIntervalBits = 5;
constexpr int kOffsetBits = 52 - kIntervalBits;
constexpr size_t kIntervals = size_t{1} << kIntervalBits;
constexpr int kLeastBinade = -13;  // value 1 of 4095, halved by its gain
constexpr int kGreatestBinade = 0;
constexpr size_t kBinades = kGreatestBinade - kLeastBinade + 1;
constexpr double kLeast = 0x1p-13;
constexpr double kGreatest = 0x1.fffffffffffffp+0;
constexpr int64_t kFirstInterval = int64_t{1023 + kLeastBinade} << kIntervalBits;

int BinadeAt(size_t index) { return kLeastBinade + static_cast<int>(index); }

// What of the table no exponent changes.
struct Intervals {
  Intervals();

  std::array<double, kIntervals> reciprocals;      // of some x of each interval; 6 bits
  std::array<long double, kIntervals> logarithms;  // of their inverses, to base 2
};

Intervals::Intervals() {
  for (size_t k = 0; k < kIntervals; ++k) {
    const double middle = 1 + (static_cast<double>(k) + 0.5) / kIntervals;
    reciprocals[k] = std::round(64 / middle) / 64;
    logarithms[k] = -std::log2(static_cast<long double>(reciprocals[k]));
  }
}

struct alignas(32) Row {
  double reciprocal;  // of some x of the interval; 6 bits
  double high;        // the power of its inverse is high + low
  double low;
  double error;
};

using Coefficients = std::array<double, 11>;  // of r to r^11

struct PowerTable {
  explicit PowerTable(double exponent);

  Coefficients coefficients;
  std::array<Row, kBinades * kIntervals> rows;
};

PowerTable::PowerTable(double exponent) {
  static const Intervals intervals;
  double coefficient = 1;
  for (size_t k = 0; k < coefficients.size(); ++k) {
    coefficient *= (exponent - static_cast<double>(k)) / static_cast<double>(k + 1);
    coefficients[k] = coefficient;
  }
  std::array<long double, kIntervals> intervalPowers;
  for (size_t k = 0; k < kIntervals; ++k) {
    intervalPowers[k] = std::exp2(exponent * intervals.logarithms[k]);
  }
  Row* row = rows.data();
  for (size_t i = 0; i < kBinades; ++i) {
    const double scale = std::ldexp(1.0, -BinadeAt(i));
    const long double binadePower = std::exp2(static_cast<long double>(exponent) * BinadeAt(i));
    const double logarithm = exponent * std::max(-BinadeAt(i), 1);  // at most
    const double error =
        kErrorUnit * (kProductError + kLibraryError + kLibraryErrorPerBinade * logarithm);
    for (size_t k = 0; k < kIntervals; ++k, ++row) {
      const long double power = intervalPowers[k] * binadePower;
      const auto high = static_cast<double>(power);
      *row = {intervals.reciprocals[k] * scale, high, static_cast<double>(power - high),
              high * error};
    }
  }
}

VELORA_AVX2 __m256d Set(double value) { return _mm256_set1_pd(value); }

// The columns of four rows.
struct Columns {
  __m256d reciprocal;
  __m256d high;
  __m256d low;
  __m256d error;
};

VELORA_AVX2 Columns Find(__m256d x, const PowerTable& table) {
  const __m256i number = _mm256_sub_epi64(_mm256_srli_epi64(_mm256_castpd_si256(x), kOffsetBits),
                                          _mm256_set1_epi64x(kFirstInterval));
  alignas(32) std::array<int64_t, kAtOnce> numbers;
  _mm256_store_si256(reinterpret_cast<__m256i*>(numbers.data()), number);
  const auto row = [&](size_t lane) {
    return &table.rows[static_cast<size_t>(numbers[lane])].reciprocal;
  };
  const __m256d row0 = _mm256_load_pd(row(0));
  const __m256d row1 = _mm256_load_pd(row(1));
  const __m256d row2 = _mm256_load_pd(row(2));
  const __m256d row3 = _mm256_load_pd(row(3));
  const __m256d even01 = _mm256_unpacklo_pd(row0, row1);
  const __m256d odd01 = _mm256_unpackhi_pd(row0, row1);
  const __m256d even23 = _mm256_unpacklo_pd(row2, row3);
  const __m256d odd23 = _mm256_unpackhi_pd(row2, row3);
  return {_mm256_permute2f128_pd(even01, even23, 0x20), _mm256_permute2f128_pd(odd01, odd23, 0x20),
          _mm256_permute2f128_pd(even01, even23, 0x31), _mm256_permute2f128_pd(odd01, odd23, 0x31)};
}

VELORA_AVX2 __m256d Pair(const Coefficients& c, size_t k, __m256d r) {
  return _mm256_fmadd_pd(Set(c[k + 1]), r, Set(c[k]));
}

// c[1] + c[2] r + ... + c[10] r^9, in pairs of pairs, which wait less for each other than a chain.
VELORA_AVX2 __m256d HigherTerms(const Coefficients& c, __m256d r) {
  const __m256d r2 = _mm256_mul_pd(r, r);
  const __m256d r4 = _mm256_mul_pd(r2, r2);
  const __m256d first = _mm256_fmadd_pd(Pair(c, 3, r), r2, Pair(c, 1, r));
  const __m256d second = _mm256_fmadd_pd(Pair(c, 7, r), r2, Pair(c, 5, r));
  return _mm256_fmadd_pd(_mm256_fmadd_pd(Pair(c, 9, r), r4, second), r4, first);
}

// The powers of x; the bits of the result tell the lanes where it may be another double.
VELORA_AVX2 int Power(__m256d x, const PowerTable& table, __m256d& power) {
  const auto& c = table.coefficients;
  const Columns row = Find(x, table);
  const __m256d r = _mm256_fmsub_pd(x, row.reciprocal, Set(1));
  // The power is H + L, from the table, times 1 + linear + linearRest + higher. What is not H and
  // not H linear is so small that its rounding does not matter.
  const __m256d linear = _mm256_mul_pd(r, Set(c[0]));
  const __m256d linearRest = _mm256_fmsub_pd(r, Set(c[0]), linear);
  const __m256d higher = _mm256_mul_pd(HigherTerms(c, r), _mm256_mul_pd(r, r));
  const __m256d second = _mm256_mul_pd(row.high, linear);
  const __m256d secondRest = _mm256_fmsub_pd(row.high, linear, second);
  __m256d rest = _mm256_fmadd_pd(row.low, linear, _mm256_add_pd(row.low, secondRest));
  rest = _mm256_fmadd_pd(row.high, linearRest, rest);
  rest = _mm256_fmadd_pd(row.high, higher, rest);
  const __m256d total = _mm256_add_pd(row.high, second);
  const __m256d totalRest =
      _mm256_add_pd(_mm256_add_pd(_mm256_sub_pd(row.high, total), second), rest);
  power = _mm256_add_pd(total, _mm256_sub_pd(totalRest, row.error));
  const __m256d upper = _mm256_add_pd(total, _mm256_add_pd(totalRest, row.error));
  return _mm256_movemask_pd(_mm256_cmp_pd(power, upper, _CMP_NEQ_UQ));
}

VELORA_AVX2 void BendFour(__m256d gains, double exponent, const PowerTable& table, double* lut) {
  const __m256d value =
      _mm256_div_pd(_mm256_mul_pd(_mm256_loadu_pd(lut), gains), Set(kGammaMaxValue));
  // What is no number becomes the greatest here.
  const __m256d x = _mm256_max_pd(_mm256_min_pd(value, Set(kGreatest)), Set(kLeast));
  __m256d power;
  int rest = Power(x, table, power);
  rest |= _mm256_movemask_pd(_mm256_cmp_pd(x, value, _CMP_NEQ_UQ));
  if (rest != 0) {
    alignas(32) std::array<double, kAtOnce> values;
    alignas(32) std::array<double, kAtOnce> powers;
    _mm256_store_pd(values.data(), value);
    _mm256_store_pd(powers.data(), power);
    for (size_t i = 0; i < kAtOnce; ++i) {
      if ((rest >> i & 1) != 0) {
        powers[i] = std::pow(values[i], exponent);
      }
    }
    power = _mm256_load_pd(powers.data());
  }
  _mm256_storeu_pd(lut, _mm256_mul_pd(power, Set(kGammaMaxValue)));
}

}  // namespace

VELORA_AVX2 void BendGammaLutAvx2(const RgbGains& gains, double exponent, double* lut) {
  const PowerTable table(exponent);
  const auto& [r, g, b] = gains;
  for (int i = 0; i < kGammaEntries; i += 4, lut += 12) {
    BendFour(_mm256_setr_pd(r, g, b, r), exponent, table, lut);
    BendFour(_mm256_setr_pd(g, b, r, g), exponent, table, lut + 4);
    BendFour(_mm256_setr_pd(b, r, g, b), exponent, table, lut + 8);
  }
}

}  // namespace velora
