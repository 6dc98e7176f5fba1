#include "colormath/UserDesignMath.h"

#include <immintrin.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <span>

#include "frame/Avx2.h"

// Four powers x^e at once, with e = 1 / gamma. x is c (1 + r), where c is the middle of an interval
// of doubles, so its power is c^e, from a table, times (1 + r)^e, the first terms of the binomial
// series. Only the power rounded to single precision goes into the LUT, and its bits have to be
// those of the C library's power, rounded. How far the product may be from the true power,
// relatively, with |r| <= 2^-6 and an exponent from 0 to 1:
//
//   the terms left out, from r^7 on, whose coefficients are 1/7 at most     2^-44.7
//   the table: up to 33 multiplications of powers of the C library          2^-46.9
//   r, the sum and the product, each rounded                                2^-50
//   and the C library's own power, which may be off by one last place       2^-52
//
// So the product and the C library's power are less than 2^-43 apart. Where all doubles within
// 2^-42 of the product become the same float when they are rounded, the C library's power becomes
// that one too. Where they don't, once in 2^17 times, it is taken itself.
namespace velora {
namespace {

constexpr size_t kAtOnce = 4;

constexpr double kLutMaximum = 1023.0;
constexpr double kErrorBound = 0x1p-42;

// Each power of two from 1 down is cut into intervals. An interval's number is the upper bits of
// its doubles; of the bits below, the middle has the highest one.
constexpr int kIntervalBits = 5;
constexpr int kOffsetBits = 52 - kIntervalBits;
constexpr size_t kIntervals = size_t{1} << kIntervalBits;
constexpr size_t kBinades = 32;
constexpr double kLeast = 0x1p-32;  // where the first interval begins
constexpr double kGreatest = 0x1.fffffffffffffp-1;
constexpr int64_t kFirstInterval = (1023 - int64_t{kBinades}) << kIntervalBits;

struct PowerTable {
  explicit PowerTable(double exponent) {
    double coefficient = 1;
    for (size_t k = 0; k < coefficients.size(); ++k) {
      coefficient *= (exponent - static_cast<double>(k)) / static_cast<double>(k + 1);
      coefficients[k] = coefficient;
    }
    const double half = std::pow(0.5, exponent);
    for (size_t i = 0; i < kIntervals; ++i) {
      double power = std::pow(1 + (static_cast<double>(i) + 0.5) / kIntervals, exponent);
      for (size_t binade = kBinades; binade-- > 0;) {
        power *= half;
        powers[binade * kIntervals + i] = power;
      }
    }
  }

  std::array<double, 6> coefficients;                // of r to r^6
  std::array<double, kBinades * kIntervals> powers;  // of the middles
};

// x: kLeast to kGreatest.
VELORA_AVX2 __m256d Power(__m256d x, const PowerTable& table) {
  const __m256i interval = _mm256_srli_epi64(_mm256_castpd_si256(x), kOffsetBits);
  const __m256i number = _mm256_sub_epi64(interval, _mm256_set1_epi64x(kFirstInterval));
  const __m256d power = _mm256_i64gather_pd(table.powers.data(), number, sizeof(double));
  const __m256d middle =
      _mm256_castsi256_pd(_mm256_or_si256(_mm256_slli_epi64(interval, kOffsetBits),
                                          _mm256_set1_epi64x(int64_t{1} << (kOffsetBits - 1))));
  const __m256d r = _mm256_div_pd(_mm256_sub_pd(x, middle), middle);
  const auto& c = table.coefficients;
  __m256d sum = _mm256_fmadd_pd(_mm256_set1_pd(c[5]), r, _mm256_set1_pd(c[4]));
  sum = _mm256_fmadd_pd(sum, r, _mm256_set1_pd(c[3]));
  sum = _mm256_fmadd_pd(sum, r, _mm256_set1_pd(c[2]));
  sum = _mm256_fmadd_pd(sum, r, _mm256_set1_pd(c[1]));
  sum = _mm256_fmadd_pd(sum, r, _mm256_set1_pd(c[0]));
  return _mm256_fmadd_pd(_mm256_mul_pd(sum, r), power, power);
}

// Four linear values to values of the LUT. The bits of the result tell the lanes that are not done.
VELORA_AVX2 int DenormalizeFour(__m256d linear, const PowerTable& table, __m256d& out) {
  // What is above 1 is to become 1, as the last value below it does; what is no number is not done.
  const __m256d x =
      _mm256_max_pd(_mm256_min_pd(linear, _mm256_set1_pd(kGreatest)), _mm256_set1_pd(kLeast));
  const __m256d power = Power(x, table);
  const __m128 low = _mm256_cvtpd_ps(_mm256_fnmadd_pd(power, _mm256_set1_pd(kErrorBound), power));
  const __m128 high = _mm256_cvtpd_ps(_mm256_fmadd_pd(power, _mm256_set1_pd(kErrorBound), power));
  const __m256d value = _mm256_mul_pd(_mm256_cvtps_pd(low), _mm256_set1_pd(kLutMaximum));

  const __m256d isZero = _mm256_cmp_pd(linear, _mm256_set1_pd(kDesignZero), _CMP_LT_OQ);
  const __m256d isOffTable = _mm256_cmp_pd(linear, _mm256_set1_pd(kLeast), _CMP_NGE_UQ);
  out = _mm256_andnot_pd(isZero, value);
  return _mm256_movemask_pd(_mm256_andnot_pd(isZero, isOffTable)) |
         (_mm_movemask_ps(_mm_cmpneq_ps(low, high)) & ~_mm256_movemask_pd(isZero));
}

}  // namespace

VELORA_AVX2 void DenormalizeAvx2(std::span<double> values, double gamma) {
  const PowerTable table(1.0 / gamma);
  double* value = values.data();
  for (double* const end = value + values.size() / kAtOnce * kAtOnce; value < end;
       value += kAtOnce) {
    const __m256d linear = _mm256_loadu_pd(value);
    __m256d out;
    const int rest = DenormalizeFour(linear, table, out);
    _mm256_storeu_pd(value, out);
    if (rest != 0) {
      double four[kAtOnce];
      _mm256_storeu_pd(four, linear);
      DenormalizePlain(four, gamma);
      std::ranges::copy(four, value);
    }
  }
  DenormalizePlain(values.last(values.size() % kAtOnce), gamma);
}

}  // namespace velora
