// LUTs: composed, generated, read from a block, bent.
#include "Jobs.h"

#include <cstring>
#include <memory>

#include "Harness.h"
#include "Inputs.h"
#include "PlainForms.h"
#include "colormath/UserDesignMath.h"
#include "frame/Sha256.h"
#include "lut/GammaCurve.h"
#include "lut/LutBlock.h"
#include "lut/LutComposition.h"

namespace bench {
namespace {

constexpr double kBendExponent = 2.4 / velora::kFirmwareGamma;
constexpr std::array<double, 3> kBendGains = {1.0, 0.97, 0.93};

void AddCompose() {
  const auto ours = [first = GamutLut(), second = GreyTrackingLut()] {
    return std::unique_ptr<double[]>(velora::ComposeLuts(first.data(), second.data()));
  };
  const auto plain = [first = GamutLut(), second = GreyTrackingLut()] {
    return PlainCompose(first, second);
  };
  const Lut expected = plain();
  AddRow(kCompose, kOurs, LargestDifference(expected, {ours().get(), expected.size()}), ours);
  AddRow(kCompose, kPlainForm, 0, plain);
}

void AddGenerate() {
  const auto ours = [lut = Lut(3 * kGridEntries)]() mutable -> const Lut& {
    velora::FillUser3DLut(kTargetToPanel.data(), kTargetGamma, kPanelGamma, lut.data());
    return lut;
  };
  const auto plain = [] { return PlainGenerate(kTargetToPanel, kTargetGamma, kPanelGamma); };
  AddRow(kGenerate, kOurs, LargestDifference(plain(), ResultOf(ours)), ours);
  AddRow(kGenerate, kPlainForm, 0, plain);
}

// As for a bin file: its hash, then its entries.
void AddVerifyAndDecode() {
  const std::vector<uint8_t> block = Block(GamutLut());
  constexpr size_t kHashed = velora::k3DBlockSize - velora::kSha256Size;
  const auto hashMatches = [block] {
    std::array<uint8_t, velora::kSha256Size> hash;
    velora::Sha256(std::span(block).first(kHashed), hash.data());
    return std::memcmp(hash.data(), &block[kHashed], hash.size()) == 0;
  };
  const auto decode = [block, lut = Lut(3 * kGridEntries)]() mutable -> const Lut& {
    velora::DecodeLut(block, kGridEntries, lut.data());
    return lut;
  };
  const double offBy = LargestDifference(PlainDecode(block, kGridEntries), ResultOf(decode));
  AddRow(kVerifyAndDecode, kOurs, offBy, [hashMatches, decode = decode]() mutable {
    if (hashMatches()) {
      decode();
    }
  });
  AddRow(kVerifyAndDecode, "the hash alone", std::nullopt,
         [hashMatches] { benchmark::DoNotOptimize(hashMatches()); });
  AddRow(kDecode, kOurs, offBy, decode);
  AddRow(kDecode, kPlainForm, 0, [block] { return PlainDecode(block, kGridEntries); });
}

// With the copy of the decoded LUT that it bends.
void AddBend() {
  const auto ours = [curve = GammaLut(), lut = Lut()]() mutable -> const Lut& {
    lut = curve;
    velora::BendGammaLut({kBendGains[0], kBendGains[1], kBendGains[2]}, kBendExponent, lut.data());
    return lut;
  };
  const auto plain = [curve = GammaLut()] { return PlainBend(curve, kBendGains, kBendExponent); };
  AddRow(kBend, kOurs, LargestDifference(plain(), ResultOf(ours)), ours);
  AddRow(kBend, kPlainForm, 0, plain);
}

}  // namespace

void AddLutRows() {
  AddCompose();
  AddGenerate();
  AddVerifyAndDecode();
  AddBend();
}

}  // namespace bench
