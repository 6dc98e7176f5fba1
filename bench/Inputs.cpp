#include "Inputs.h"

#include <openssl/sha.h>

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "lut/LutBlock.h"

namespace bench {

Lut GamutLut() {
  Lut lut = PlainGenerate({0.81, 0.18, 0.01, 0.04, 0.95, 0.01, 0.02, 0.09, 0.89}, kTargetGamma,
                          kPanelGamma);
  std::ranges::transform(lut, lut.begin(), [](double value) { return std::round(value); });
  return lut;
}

Lut GreyTrackingLut() {
  constexpr std::array<double, 3> kBends = {0.97, 1.0, 1.05};
  Lut lut;
  for (int entry = 0; entry < kGridEntries; ++entry) {
    const std::array<int, 3> points = {entry / (kGridPoints * kGridPoints),
                                       entry / kGridPoints % kGridPoints, entry % kGridPoints};
    for (size_t c = 0; c < 3; ++c) {
      const double code = static_cast<double>(points[c]) / (kGridPoints - 1);
      lut.push_back(std::round(kGridMaximum * std::pow(code, kBends[c])));
    }
  }
  return lut;
}

std::vector<uint8_t> Block(const Lut& lut) {
  const auto entries = static_cast<int>(lut.size() / 3);
  std::vector<uint8_t> block(velora::LutBlockSize(entries));
  velora::EncodeLut(lut.data(), entries, &block[velora::kBlockHeaderSize]);
  const size_t hashed = block.size() - velora::kSha256Size;
  SHA256(block.data(), hashed, &block[hashed]);
  return block;
}

Lut GammaLut() {
  Lut lut;
  for (int level = 0; level < kGammaLevels; ++level) {
    for (const double bend : {0.98, 1.0, 1.03}) {
      const double code = static_cast<double>(level) / (kGammaLevels - 1);
      lut.push_back(std::round(kGammaMaximum * std::pow(code, bend)));
    }
  }
  return lut;
}

// A wide-gamut panel of 310 mm by 174 mm, 1920 x 1080 at 60 Hz.
std::array<uint8_t, 128> Edid() {
  std::array<uint8_t, 128> edid = {
      0x00, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x00,  // header
      0x3A, 0xD8, 0x34, 0x12, 0x01, 0x02, 0x03, 0x04,  // "NVX", product, serial number
      0x08, 0x22, 0x01, 0x04,                          // week 8 of 2024, EDID 1.4
      0xB5, 0x1F, 0x11, 0x78, 0x03,                    // digital, size, gamma 2.2, features
      0xEE, 0x95, 0xA3, 0x54, 0x4C, 0x99, 0x26, 0x0F, 0x50, 0x54,  // chromaticities
      0x00, 0x00, 0x00,                                            // established timings
      0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01,
      0x01,  // standard timings: none
      0x02, 0x3A, 0x80, 0x18, 0x71, 0x38, 0x2D, 0x40, 0x58, 0x2C, 0x45, 0x00, 0x36, 0xAE, 0x10,
      0x00, 0x00, 0x1A,  // detailed timing
      0x00, 0x00, 0x00, 0xFE, 0x00, 'N',  'o',  'r',  'v',  'e',  'x',  '\n', ' ',  ' ',  ' ',
      ' ',  ' ',
      ' ',  // a text
      0x00, 0x00, 0x00, 0xFC, 0x00, 'N',  'V',  'X',  ' ',  'P',  'a',  'n',  'e',  'l',  '\n',
      ' ',  ' ',
      ' ',                      // the name
      0x00, 0x00, 0x00, 0x10};  // an empty descriptor
  uint8_t sum = 0;
  for (size_t i = 0; i + 1 < edid.size(); ++i) {
    sum = static_cast<uint8_t>(sum + edid[i]);
  }
  edid.back() = static_cast<uint8_t>(-sum);
  return edid;
}

}  // namespace bench
