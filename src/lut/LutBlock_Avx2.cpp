#include "lut/LutBlock.h"

#include <immintrin.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "frame/Avx2.h"

// The integers of DecodeLutPlain, shuffled into place eight entries at a time. Their conversion to
// double is exact, as all are below 2^16.
namespace velora {
namespace {

constexpr size_t kAtOnce = 8;              // entries
constexpr size_t kHalf = 3 * kAtOnce / 2;  // values of the entries in one half of a register

enum Component { kRed, kGreen, kBlue };

// What makes four values that stand one behind the other of the four words and the four extension
// bytes in each half of a register, both 32 bits apart.
struct Steps {
  alignas(32) std::array<int8_t, 32> wordBytes;
  alignas(32) std::array<int8_t, 32> extensionBytes;
  alignas(32) std::array<int32_t, 8> shifts;  // to the right
  alignas(32) std::array<int32_t, 8> masks;
};

// The most significant byte of a word is its first. R is that byte below the extension byte, G is
// bytes 1 and 2 less 4 bits at the lower end, B is bytes 2 and 3 less 4 bits at the upper one.
constexpr Steps StepsFrom(size_t firstValue) {
  Steps steps{};
  steps.wordBytes.fill(-1);  // a byte of zero
  steps.extensionBytes.fill(-1);
  for (size_t i = 0; i < 8; ++i) {
    const size_t value = firstValue + i % 4;
    const auto entry = static_cast<int8_t>(value / 3 * 4);
    const auto set = [&](int high, int low, int shift, int mask) {
      steps.wordBytes[4 * i] = static_cast<int8_t>(entry + low);
      if (high >= 0) {
        steps.wordBytes[4 * i + 1] = static_cast<int8_t>(entry + high);
      }
      steps.shifts[i] = shift;
      steps.masks[i] = mask;
    };
    switch (value % 3) {
      case kRed:
        set(-1, 0, 0, 0xFFFF);
        steps.extensionBytes[4 * i + 1] = entry;
        break;
      case kGreen:
        set(1, 2, 4, 0xFFF);
        break;
      default:
        set(2, 3, 0, 0xFFF);
    }
  }
  return steps;
}
constexpr Steps kSteps[] = {StepsFrom(0), StepsFrom(4), StepsFrom(8)};

template <typename Constants>
VELORA_AVX2 __m256i Load(const Constants& constants) {
  return _mm256_load_si256(reinterpret_cast<const __m256i*>(constants.data()));
}

VELORA_AVX2 void DecodeFourOfEach(__m256i words, __m256i extension, const Steps& steps,
                                  double* out) {
  const __m256i bytes = _mm256_or_si256(_mm256_shuffle_epi8(words, Load(steps.wordBytes)),
                                        _mm256_shuffle_epi8(extension, Load(steps.extensionBytes)));
  const __m256i values =
      _mm256_and_si256(_mm256_srlv_epi32(bytes, Load(steps.shifts)), Load(steps.masks));
  _mm256_storeu_pd(out, _mm256_cvtepi32_pd(_mm256_castsi256_si128(values)));
  _mm256_storeu_pd(out + kHalf, _mm256_cvtepi32_pd(_mm256_extracti128_si256(values, 1)));
}

VELORA_AVX2 void DecodeEight(const uint8_t* words, const uint8_t* extension, double* out) {
  const __m256i word = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(words));
  const __m256i high =
      _mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(extension)));
  DecodeFourOfEach(word, high, kSteps[0], out);
  DecodeFourOfEach(word, high, kSteps[1], out + 4);
  DecodeFourOfEach(word, high, kSteps[2], out + 8);
}

}  // namespace

VELORA_AVX2 void DecodeLutAvx2(std::span<const uint8_t> block, int entries, double* out) {
  const auto count = static_cast<size_t>(entries);
  const uint8_t* words = block.data() + kBlockHeaderSize;
  const uint8_t* extension = words + 4 * count;
  for (size_t i = 0; i < count; i += kAtOnce) {
    const size_t at = std::min(i, count - kAtOnce);  // the last turn goes over some again
    DecodeEight(words + 4 * at, extension + at, out + 3 * at);
  }
}

}  // namespace velora
