// A bin file of a preset mode: the proof, the type, the LUT. What is decoded and encoded again is
// what it was; a bent gamma LUT stays on its scale.
#include <cmath>

#include "fuzz/PlainBlocks.h"
#include "fuzz/TableCheck.h"
#include "lut/GammaCurve.h"
#include "lut/LutBlock.h"

namespace {

void CheckRoundTrip(std::span<const uint8_t> file, int entries) {
  std::vector<double> lut(velora::LutValueCount(entries));
  velora::DecodeLut(file, entries, lut.data());
  std::vector<uint8_t> data(velora::LutDataLength(entries));
  velora::EncodeLut(lut.data(), entries, data.data());
  fuzz::Require(std::ranges::equal(data, file.subspan(velora::kBlockHeaderSize, data.size())),
                "what is decoded and encoded again is what it was");
}

void CheckGamma(std::span<const uint8_t> file) {
  constexpr int kEntries = velora::kGammaEntries;
  std::vector<double> lut(velora::LutValueCount(kEntries));
  velora::DecodeLut(file, kEntries, lut.data());
  fuzz::Require(lut == fuzz::DecodePlainBlock(file, kEntries), "the values are the plain form's");
  const size_t last = lut.size() - 3;
  fuzz::Require(velora::IsLastTripleLit(lut.data(), kEntries) ==
                    (lut[last] >= 1 && lut[last + 1] >= 1 && lut[last + 2] >= 1),
                "a dark last triple has a zero");
  const std::vector<double> straight = lut;
  std::vector<double> tuned(lut.size());
  velora::MultiplyGammaLut(lut.data(), {0.9, 0.95, 1}, tuned.data());
  for (size_t i = 0; i < lut.size(); i += 3) {
    fuzz::Require(
        tuned[i] == lut[i] * 0.9 && tuned[i + 1] == lut[i + 1] * 0.95 && tuned[i + 2] == lut[i + 2],
        "a white point is gains, and no more");
  }
  velora::BendGammaLut({1, 0.5, 0}, 1, lut.data());
  for (size_t i = 0; i < lut.size(); i += 3) {
    fuzz::Require(std::fabs(lut[i] - straight[i]) <= 1e-9 * straight[i] &&
                      std::fabs(lut[i + 1] - straight[i + 1] / 2) <= 1e-9 * straight[i + 1] &&
                      lut[i + 2] == 0,
                  "an exponent of 1 leaves the gains alone to act");
  }
}

void CheckFile(const fuzz::Bytes& file) {
  velora::ColorField3DLut engine;
  fuzz::CheckBlock(engine, fuzz::ToBuffer(file));
  const bool hasHeader = file.size() >= fuzz::kPlainHeaderSize;
  const uint32_t type = hasHeader ? fuzz::PlainLutType(file[64]) : 0;
  const auto isOfType = [&](uint32_t wanted) { return hasHeader && type == wanted; };
  const testsupport::LogCapture log;
  fuzz::Require(engine.OneLutTypeIsValid(2, file.data(), file.size()) == isOfType(2), "P3's type");
  fuzz::Require(engine.OneLutTypeIsValidGamma(file.data(), file.size()) == isOfType(160),
                "the gamma LUT's type");
  if (file.size() >= fuzz::kPlain3DBlockSize) {
    CheckRoundTrip(file, velora::k3DEntries);
  }
  if (file.size() >= fuzz::kPlainGammaBlockSize) {
    CheckRoundTrip(file, velora::kGammaEntries);
    CheckGamma(file);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::Bytes file(data, data + size);
  CheckFile(file);
  fuzz::RepairBlock(file);
  CheckFile(file);
  return 0;
}
