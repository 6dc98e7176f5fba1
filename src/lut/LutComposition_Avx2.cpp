#include "lut/LutComposition.h"

#include <immintrin.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "frame/Avx2.h"
#include "lut/LutBlock.h"

// The integers of TetrahedralLookup on other roads, so that all results are the same:
//
// - A point's tetrahedron is found by sorting its fractions instead of six tests, for 16 points at
//   once and without a branch. Where two fractions are equal the tests may name another corner than
//   the sorting; that corner's weight is the difference of the two, which is 0.
// - An entry is four 16-bit lanes, so that two multiplications give a point's weighted sum of all
//   components. With values of at most 32767 and weights that add up to 64, no step leaves 32 bits,
//   and there is no sign.
namespace velora {
namespace {

constexpr size_t kEntries = k3DEntries;
constexpr size_t kAtOnce = 16;  // entries

// 16 entries that stand one behind the other, as 16-bit lanes: R0 G0 B0 R1 ..., eight entries to
// the low halves of the three registers and eight to the high ones.
struct Entries {
  __m256i lanes[3];
};

// Truncates, as the plain conversion does, and saturates: what is above 16 bits, or no number,
// comes out as 32767 or as a negative. Adds the bits of the integers to bits.
VELORA_AVX2 __m128i LoadEight(const double* values, __m128i& bits) {
  const __m128i low = _mm256_cvttpd_epi32(_mm256_loadu_pd(values));
  const __m128i high = _mm256_cvttpd_epi32(_mm256_loadu_pd(values + 4));
  bits = _mm_or_si128(bits, _mm_or_si128(low, high));
  return _mm_packs_epi32(low, high);
}

VELORA_AVX2 Entries LoadEntries(const double* lut, __m128i& bits) {
  return {_mm256_setr_m128i(LoadEight(lut, bits), LoadEight(lut + 24, bits)),
          _mm256_setr_m128i(LoadEight(lut + 8, bits), LoadEight(lut + 32, bits)),
          _mm256_setr_m128i(LoadEight(lut + 16, bits), LoadEight(lut + 40, bits))};
}

// A place in a register half for each of its 16-bit lanes.
VELORA_AVX2 __m256i Lanes(char l0, char l1, char l2, char l3, char l4, char l5, char l6, char l7) {
  const auto high = [](char lane) { return static_cast<char>(2 * lane + 1); };
  const auto low = [](char lane) { return static_cast<char>(2 * lane); };
  return _mm256_broadcastsi128_si256(
      _mm_setr_epi8(low(l0), high(l0), low(l1), high(l1), low(l2), high(l2), low(l3), high(l3),
                    low(l4), high(l4), low(l5), high(l5), low(l6), high(l6), low(l7), high(l7)));
}

// --- The second LUT ---

constexpr int kLargestPacked = INT16_MAX;
constexpr size_t kLanes = 4;  // of an entry: R, G, B, and one of no meaning

struct PackedLut {
  alignas(32) int16_t entries[(kEntries + 1) * kLanes];  // entries are read in pairs
};

VELORA_AVX2 void StorePairs(__m256i pairs, int16_t* low, int16_t* high) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(low), _mm256_castsi256_si128(pairs));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(high), _mm256_extracti128_si256(pairs, 1));
}

// False for a value that the lanes don't hold.
VELORA_AVX2 bool Pack(const double* lut, PackedLut& packed) {
  const __m256i fromStart = Lanes(0, 1, 2, 2, 3, 4, 5, 5);
  const __m256i toEnd = Lanes(2, 3, 4, 4, 5, 6, 7, 7);
  __m128i bits = _mm_setzero_si128();
  for (size_t i = 0; i < kEntries; i += kAtOnce) {
    const size_t at = std::min(i, kEntries - kAtOnce);  // the last turn goes over some again
    const auto& [a, b, c] = LoadEntries(lut + 3 * at, bits).lanes;
    int16_t* low = packed.entries + kLanes * at;
    int16_t* high = low + kLanes * 8;
    StorePairs(_mm256_shuffle_epi8(a, fromStart), low, high);
    StorePairs(_mm256_shuffle_epi8(_mm256_alignr_epi8(b, a, 12), fromStart), low + 8, high + 8);
    StorePairs(_mm256_shuffle_epi8(_mm256_alignr_epi8(c, b, 8), fromStart), low + 16, high + 16);
    StorePairs(_mm256_shuffle_epi8(c, toEnd), low + 24, high + 24);
  }
  return _mm_testz_si128(bits, _mm_set1_epi32(~kLargestPacked)) != 0;
}

// --- The points of the first LUT ---

constexpr int kFractionBits = 6;
constexpr int16_t kGridStep = 1 << kFractionBits;
constexpr int16_t kRedStride = kGridSize * kGridSize;
constexpr int16_t kGreenStride = kGridSize;
constexpr int16_t kBlueStride = 1;
constexpr size_t kUpperCorner = kRedStride + kGreenStride + kBlueStride;  // from the lower one

// Fractions are sorted together with their axes' strides, which stand below them.
constexpr int kStrideBits = 9;
static_assert(kRedStride < 1 << kStrideBits && kFractionBits + kStrideBits < 16);

// Where 16 points lie: the entries of the cell's lower corner, and of the two that lead from it to
// the upper one along the largest fraction first; and the weights of the four, in pairs.
struct Places {
  alignas(32) uint16_t lower[kAtOnce];
  alignas(32) uint16_t second[kAtOnce];
  alignas(32) uint16_t third[kAtOnce];
  alignas(32) int32_t weights01[kAtOnce];
  alignas(32) int32_t weights23[kAtOnce];
};

VELORA_AVX2 __m256i KeyOf(__m256i value, int16_t stride) {
  const __m256i fraction = _mm256_and_si256(value, _mm256_set1_epi16(kGridStep - 1));
  return _mm256_or_si256(_mm256_slli_epi16(fraction, kStrideBits), _mm256_set1_epi16(stride));
}

VELORA_AVX2 __m256i FractionOf(__m256i key) { return _mm256_srli_epi16(key, kStrideBits); }

VELORA_AVX2 __m256i StrideOf(__m256i key) {
  return _mm256_and_si256(key, _mm256_set1_epi16((1 << kStrideBits) - 1));
}

VELORA_AVX2 __m256i Times(__m256i coordinate, int16_t stride) {
  return _mm256_mullo_epi16(coordinate, _mm256_set1_epi16(stride));
}

// A value beyond 1023 counts as 1023, and so does what is below 0 or no number.
VELORA_AVX2 __m256i OnGrid(__m256i values) {
  return _mm256_min_epu16(values, _mm256_set1_epi16(k3DMaxValue));
}

VELORA_AVX2 void StorePairs(__m256i a, __m256i b, int32_t* pairs) {
  const __m256i even = _mm256_unpacklo_epi16(a, b);
  const __m256i odd = _mm256_unpackhi_epi16(a, b);
  auto* out = reinterpret_cast<__m256i*>(pairs);
  _mm256_store_si256(out, _mm256_permute2x128_si256(even, odd, 0x20));
  _mm256_store_si256(out + 1, _mm256_permute2x128_si256(even, odd, 0x31));
}

VELORA_AVX2 void Locate(const double* first, Places& places) {
  __m128i unused = _mm_setzero_si128();
  const auto& [v0, v1, v2] = LoadEntries(first, unused).lanes;
  // A component's values stand in every third lane: those of all three registers fill one.
  const __m256i red = _mm256_blend_epi16(_mm256_blend_epi16(v0, v1, 0b10010010), v2, 0b00100100);
  const __m256i green = _mm256_blend_epi16(_mm256_blend_epi16(v0, v1, 0b00100100), v2, 0b01001001);
  const __m256i blue = _mm256_blend_epi16(_mm256_blend_epi16(v0, v1, 0b01001001), v2, 0b10010010);
  const __m256i r = OnGrid(_mm256_shuffle_epi8(red, Lanes(0, 3, 6, 1, 4, 7, 2, 5)));
  const __m256i g = OnGrid(_mm256_shuffle_epi8(green, Lanes(1, 4, 7, 2, 5, 0, 3, 6)));
  const __m256i b = OnGrid(_mm256_shuffle_epi8(blue, Lanes(2, 5, 0, 3, 6, 1, 4, 7)));

  const __m256i redKey = KeyOf(r, kRedStride);
  const __m256i greenKey = KeyOf(g, kGreenStride);
  const __m256i blueKey = KeyOf(b, kBlueStride);
  const __m256i upper = _mm256_max_epi16(redKey, greenKey);
  const __m256i lower = _mm256_min_epi16(redKey, greenKey);
  const __m256i largest = _mm256_max_epi16(upper, blueKey);
  const __m256i middle = _mm256_max_epi16(lower, _mm256_min_epi16(upper, blueKey));
  const __m256i smallest = _mm256_min_epi16(lower, blueKey);

  const __m256i cell =
      _mm256_add_epi16(_mm256_add_epi16(Times(_mm256_srli_epi16(r, kFractionBits), kRedStride),
                                        Times(_mm256_srli_epi16(g, kFractionBits), kGreenStride)),
                       _mm256_srli_epi16(b, kFractionBits));
  const __m256i second = _mm256_add_epi16(cell, StrideOf(largest));
  const __m256i third = _mm256_add_epi16(second, StrideOf(middle));
  _mm256_store_si256(reinterpret_cast<__m256i*>(places.lower), cell);
  _mm256_store_si256(reinterpret_cast<__m256i*>(places.second), second);
  _mm256_store_si256(reinterpret_cast<__m256i*>(places.third), third);

  const __m256i f0 = FractionOf(largest);
  const __m256i f1 = FractionOf(middle);
  const __m256i f2 = FractionOf(smallest);
  StorePairs(_mm256_sub_epi16(_mm256_set1_epi16(kGridStep), f0), _mm256_sub_epi16(f0, f1),
             places.weights01);
  StorePairs(_mm256_sub_epi16(f1, f2), f2, places.weights23);
}

// --- The result ---

VELORA_AVX2 __m128i PairOf(const PackedLut& lut, size_t entry) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(lut.entries + kLanes * entry));
}

// The weighted sum of a point's corners, rounded to nearest, halves up.
VELORA_AVX2 __m128i Interpolate(const PackedLut& lut, const Places& places, size_t point) {
  const size_t lower = places.lower[point];
  const __m128i corners01 =
      _mm_unpacklo_epi16(PairOf(lut, lower), PairOf(lut, places.second[point]));
  const __m128i corners23 =
      _mm_unpacklo_epi16(PairOf(lut, places.third[point]), PairOf(lut, lower + kUpperCorner));
  const __m128i sum =
      _mm_add_epi32(_mm_madd_epi16(corners01, _mm_set1_epi32(places.weights01[point])),
                    _mm_madd_epi16(corners23, _mm_set1_epi32(places.weights23[point])));
  return _mm_srli_epi32(_mm_add_epi32(sum, _mm_set1_epi32(kGridStep / 2)), kFractionBits);
}

// Entries whose places are found before the first is interpolated: places that have just been
// stored hold up who reads them.
constexpr size_t kBlock = 4 * kAtOnce;

VELORA_AVX2 void ComposeBlock(const double* first, const PackedLut& lut, double* result) {
  Places places[kBlock / kAtOnce];
  for (Places& place : places) {
    Locate(first, place);
    first += 3 * kAtOnce;
  }
  // The fourth lane lands where the next entry's red is going to be; the last entry has no next.
  const __m256i rgb = _mm256_setr_epi64x(-1, -1, -1, 0);
  for (size_t i = 0; i < kBlock - 1; ++i) {
    const __m128i entry = Interpolate(lut, places[i / kAtOnce], i % kAtOnce);
    _mm256_storeu_pd(result + 3 * i, _mm256_cvtepi32_pd(entry));
  }
  const __m128i last = Interpolate(lut, places[kBlock / kAtOnce - 1], kAtOnce - 1);
  _mm256_maskstore_pd(result + 3 * (kBlock - 1), rgb, _mm256_cvtepi32_pd(last));
}

}  // namespace

VELORA_AVX2 bool ComposeLutsAvx2(const double* first, const double* second, double* result) {
  PackedLut lut;
  if (!Pack(second, lut)) {
    return false;
  }
  for (size_t i = 0; i < kEntries; i += kBlock) {
    const size_t at = 3 * std::min(i, kEntries - kBlock);
    ComposeBlock(first + at, lut, result + at);
  }
  return true;
}

}  // namespace velora
