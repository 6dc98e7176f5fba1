// A user's LUT file, on its way out and in. Values that a calculation may give, whatever they are,
// make a file; the file is read, and composed with a base LUT. The plain composition sorts the
// fractions instead of telling tetrahedra apart.
#include <algorithm>
#include <array>
#include <cmath>
#include <memory>

#include "fuzz/PlainBlocks.h"
#include "fuzz/TableCheck.h"
#include "lut/LutBlock.h"
#include "lut/LutComposition.h"
#include "virtualnotebook/Factory.h"

namespace {

using Rgb = std::array<double, 3>;
constexpr int kEntries = velora::k3DEntries;

// Towards zero, and the lowest number for what has no place in 32 bits.
uint32_t PlainTruncate(double value) {
  const double whole = std::trunc(value);
  if (!(whole >= -2147483648.0 && whole <= 2147483647.0)) {
    return 0x80000000;
  }
  return static_cast<uint32_t>(static_cast<int64_t>(whole));
}

// The input's values over and over.
std::vector<double> LutOfInput(fuzz::Input input) {
  std::vector<double> values;
  while (!input.IsEmpty() && values.size() < 3 * kEntries) {
    values.push_back(input.Take<double>());
  }
  std::vector<double> lut(velora::LutValueCount(kEntries));
  for (size_t i = 0; i < lut.size() && !values.empty(); ++i) {
    lut[i] = values[i % values.size()];
  }
  return lut;
}

void CheckEncoding(const std::vector<double>& lut) {
  std::vector<uint8_t> data(velora::LutDataLength(kEntries));
  velora::EncodeLut(lut.data(), kEntries, data.data());
  for (size_t i = 0; i < static_cast<size_t>(kEntries); ++i) {
    const uint32_t r = PlainTruncate(lut[3 * i]);
    const uint32_t word =
        r << 24 | PlainTruncate(lut[3 * i + 1]) << 12 | PlainTruncate(lut[3 * i + 2]);
    const uint8_t* bytes = &data[4 * i];
    fuzz::Require(bytes[0] == word >> 24 && bytes[1] == (word >> 16 & 255) &&
                      bytes[2] == (word >> 8 & 255) && bytes[3] == (word & 255) &&
                      data[4 * kEntries + i] == (r >> 8 & 255),
                  "each entry is the plain form's");
  }
}

// Through the cell's corners along the axes, the one of the largest fraction first.
Rgb PlainLookup(const double* entry, const std::vector<double>& lut) {
  std::array<int, 3> cell;
  std::array<int, 3> fraction;
  for (size_t axis = 0; axis < 3; ++axis) {
    const int value = std::min(static_cast<int>(entry[axis]), 1023);
    cell[axis] = value / 64;
    fraction[axis] = value % 64;
  }
  std::array<size_t, 3> order = {0, 1, 2};
  std::ranges::stable_sort(order, std::greater<>(), [&](size_t axis) { return fraction[axis]; });
  const auto corner = [&] {
    return &lut[3 * static_cast<size_t>(cell[0] * 289 + cell[1] * 17 + cell[2])];
  };
  std::array<int64_t, 3> sum;
  const double* from = corner();
  for (size_t c = 0; c < 3; ++c) {
    sum[c] = 64 * static_cast<int64_t>(from[c]);
  }
  for (const size_t axis : order) {
    ++cell[axis];
    const double* to = corner();
    for (size_t c = 0; c < 3; ++c) {
      sum[c] += fraction[axis] * static_cast<int64_t>(to[c] - from[c]);
    }
    from = to;
  }
  Rgb out;
  for (size_t c = 0; c < 3; ++c) {
    out[c] = static_cast<double>((sum[c] + 32) / 64);
  }
  return out;
}

void CheckComposition(const std::vector<double>& first, const std::vector<double>& second) {
  const std::unique_ptr<double[]> composed(velora::ComposeLuts(first.data(), second.data()));
  fuzz::Require(composed != nullptr, "there is memory");
  for (size_t i = 0; i < first.size(); i += 3) {
    const Rgb plain = PlainLookup(&first[i], second);
    fuzz::Require(std::equal(plain.begin(), plain.end(), &composed[i]),
                  "the composition is the plain form's");
  }
}

// Near the identity: the base LUT of a panel.
const std::vector<double>& BaseLut() {
  static const std::vector<double> lut = virtualnotebook::MakeLut({}, virtualnotebook::kBaseLut);
  return lut;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  CheckEncoding(LutOfInput({data, size}));
  fuzz::Bytes file(data, data + size);
  fuzz::RepairBlock(file);
  velora::ColorField3DLut engine;
  fuzz::CheckBlock(engine, fuzz::ToBuffer(file));
  if (file.size() >= fuzz::kPlain3DBlockSize) {
    const std::vector<double> user = fuzz::DecodePlainBlock(file, kEntries);
    CheckComposition(user, BaseLut());
    CheckComposition(BaseLut(), user);
  }
  return 0;
}
