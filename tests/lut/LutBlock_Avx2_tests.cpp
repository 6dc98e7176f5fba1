// The fast way of decoding against the plain one, which LutBlock_tests.cpp proves.
#include "lut/LutBlock.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <vector>

#include "frame/Avx2.h"
#include "support/GuardedBuffer.h"

namespace velora {
namespace {

using testsupport::GuardedBuffer;
using Bytes = std::vector<uint8_t>;

class LutBlockAvx2 : public testing::Test {
 protected:
  void SetUp() override {
    if (!HasAvx2()) {
      GTEST_SKIP() << "a processor without AVX2";
    }
  }

  // A block of zeros, words and extension bytes; the same blocks in each run.
  Bytes RandomBlock(int entries) {
    Bytes block(kBlockHeaderSize + LutDataLength(entries));
    for (size_t i = kBlockHeaderSize; i < block.size(); ++i) {
      if (bits_ <= 0xFF) {
        bits_ = random_() | uint64_t{1} << 63;
      }
      block[i] = static_cast<uint8_t>(bits_);
      bits_ >>= 8;
    }
    return block;
  }

  std::mt19937_64 random_;
  uint64_t bits_ = 0;
};

// The block's last extension byte and the last value each end at a page without access.
void ExpectPlain(const Bytes& block, int entries) {
  const GuardedBuffer buffer(block);
  std::vector<double> plain(LutValueCount(entries), -1);
  DecodeLutPlain(buffer.Bytes(), entries, plain.data());
  const GuardedBuffer out(Bytes(plain.size() * sizeof(double), 0xFF));
  auto* values = reinterpret_cast<double*>(out.data());
  DecodeLutAvx2(buffer.Bytes(), entries, values);
  ASSERT_EQ(std::vector<double>(values, values + plain.size()), plain) << entries;
}

TEST_F(LutBlockAvx2, TenMillionRandomEntries) {
  for (int entry = 0; entry < 10'000'000; entry += k3DEntries) {
    ExpectPlain(RandomBlock(k3DEntries), k3DEntries);
  }
}

TEST_F(LutBlockAvx2, EveryBitInEveryPlace) {
  for (size_t bit = 0; bit < 16 * 5 * 8; ++bit) {
    Bytes block(kBlockHeaderSize + LutDataLength(16));
    block[kBlockHeaderSize + bit / 8] = static_cast<uint8_t>(1 << bit % 8);
    ExpectPlain(block, 16);
    for (size_t i = kBlockHeaderSize; i < block.size(); ++i) {
      block[i] = static_cast<uint8_t>(~block[i]);
    }
    ExpectPlain(block, 16);
  }
}

TEST_F(LutBlockAvx2, EveryCountOfEntries) {
  for (int entries = kLeastForAvx2; entries < 70; ++entries) {
    ExpectPlain(RandomBlock(entries), entries);
  }
  ExpectPlain(RandomBlock(kGammaEntries), kGammaEntries);
}

}  // namespace
}  // namespace velora
