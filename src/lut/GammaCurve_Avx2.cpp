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
// the first terms of the binomial series. Both are sums of two doubles, so that the product's error
// is far below a double's last place. In units of 2^-62, relatively, with |r| <= 2^-5:
//
//   the table: exponential and power in extended precision, and their product     2.1
//   the series from r^2 on, in double precision                                   0.8
//   the terms left out, from r^12 on, and the sums' own rounding                  0.1
//
// The C library's power has an error of its own before it is rounded to a double. Where all values
// within both errors of the product become the same double, the C library's does too. Where they
// don't, some 2 of a hundred times, it is taken itself.
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

struct alignas(32) Row {
  double reciprocal;  // of some x of the interval; 6 bits
  double high;        // the power of its inverse is high + low
  double low;
  double error;
};

struct PowerTable {
  explicit PowerTable(double exponent);

  std::array<double, 11> coefficients;  // of r to r^11
  std::array<Row, kBinades * kIntervals> rows;
};

PowerTable::PowerTable(double exponent) {
  double coefficient = 1;
  for (size_t k = 0; k < coefficients.size(); ++k) {
    coefficient *= (exponent - static_cast<double>(k)) / static_cast<double>(k + 1);
    coefficients[k] = coefficient;
  }
  std::array<long double, kBinades> binadePowers;
  for (size_t i = 0; i < kBinades; ++i) {
    binadePowers[i] = std::exp2(static_cast<long double>(exponent) * BinadeAt(i));
  }
  for (size_t k = 0; k < kIntervals; ++k) {
    const double middle = 1 + (static_cast<double>(k) + 0.5) / kIntervals;
    const double reciprocal = std::round(64 / middle) / 64;
    const long double inversePower =
        std::pow(static_cast<long double>(reciprocal), -static_cast<long double>(exponent));
    for (size_t i = 0; i < kBinades; ++i) {
      const long double power = inversePower * binadePowers[i];
      const auto high = static_cast<double>(power);
      const double logarithm = exponent * std::max(-BinadeAt(i), 1);  // at most
      rows[i * kIntervals + k] = {
          std::ldexp(reciprocal, -BinadeAt(i)), high, static_cast<double>(power - high),
          high * kErrorUnit * (kProductError + kLibraryError + kLibraryErrorPerBinade * logarithm)};
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

// The powers of x; the bits of the result tell the lanes where it may be another double.
VELORA_AVX2 int Power(__m256d x, const PowerTable& table, __m256d& power) {
  const auto& c = table.coefficients;
  const Columns row = Find(x, table);
  const __m256d r = _mm256_fmsub_pd(x, row.reciprocal, Set(1));
  __m256d sum = Set(c[10]);
  for (size_t k = 10; k-- > 1;) {
    sum = _mm256_fmadd_pd(sum, r, Set(c[k]));
  }
  // (1 + r)^e - 1 as first + firstRest, and times the power from the table as second + secondRest.
  const __m256d linear = _mm256_mul_pd(r, Set(c[0]));
  const __m256d linearRest = _mm256_fmsub_pd(r, Set(c[0]), linear);
  const __m256d higher = _mm256_mul_pd(sum, _mm256_mul_pd(r, r));
  const __m256d first = _mm256_add_pd(linear, higher);
  const __m256d firstRest =
      _mm256_add_pd(_mm256_add_pd(_mm256_sub_pd(linear, first), higher), linearRest);
  const __m256d second = _mm256_mul_pd(row.high, first);
  const __m256d secondRest =
      _mm256_add_pd(_mm256_fmadd_pd(row.high, firstRest, _mm256_fmsub_pd(row.high, first, second)),
                    _mm256_fmadd_pd(row.low, first, row.low));
  const __m256d total = _mm256_add_pd(row.high, second);
  const __m256d totalRest =
      _mm256_add_pd(_mm256_add_pd(_mm256_sub_pd(row.high, total), second), secondRest);
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
