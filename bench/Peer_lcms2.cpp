// Little CMS at the same jobs, in the fastest of the ways that it offers: a device link, and all
// points in one call.
#include <lcms2.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <vector>

#include "Harness.h"
#include "Inputs.h"
#include "Jobs.h"

namespace bench {
namespace {

constexpr double kTop16 = 65535;

// Codes run to 1023, and the grid to the code 1024.
constexpr double kGridEnd = 1024;

struct TransformDeleter {
  void operator()(void* transform) const { cmsDeleteTransform(transform); }
};
using Transform = std::unique_ptr<void, TransformDeleter>;

// Takes the pipeline.
Transform LinkOf(cmsPipeline* pipeline, cmsUInt32Number format, cmsUInt32Number flags) {
  const cmsHPROFILE link = cmsCreateProfilePlaceholder(nullptr);
  cmsSetProfileVersion(link, 4.3);
  cmsSetDeviceClass(link, cmsSigLinkClass);
  cmsSetColorSpace(link, cmsSigRgbData);
  cmsSetPCS(link, cmsSigRgbData);
  cmsWriteTag(link, cmsSigAToB0Tag, pipeline);
  cmsPipelineFree(pipeline);
  cmsHPROFILE profiles[] = {link};
  Transform transform(cmsCreateMultiprofileTransform(profiles, 1, format, format, INTENT_PERCEPTUAL,
                                                     flags | cmsFLAGS_NOCACHE));
  cmsCloseProfile(link);
  return transform;
}

uint16_t To16(double value, double end) {
  return static_cast<uint16_t>(std::lround(std::min(value, end) * kTop16 / end));
}

std::vector<uint16_t> Points16(const Lut& lut) {
  std::vector<uint16_t> points;
  std::ranges::transform(lut, std::back_inserter(points),
                         [](double value) { return To16(value, kGridEnd); });
  return points;
}

// What comes out is the fastest to look up where it may prepare the table, and the fastest to make
// where it may not.
constexpr cmsUInt32Number kPrepared = cmsFLAGS_GRIDPOINTS(kGridPoints);
constexpr cmsUInt32Number kAsItIs = cmsFLAGS_NOOPTIMIZE;

Transform LookUp16(const Lut& lut, cmsUInt32Number flags) {
  const std::vector<uint16_t> table = Points16(lut);
  cmsPipeline* const pipeline = cmsPipelineAlloc(nullptr, 3, 3);
  cmsPipelineInsertStage(pipeline, cmsAT_END,
                         cmsStageAllocCLut16bit(nullptr, kGridPoints, 3, 3, table.data()));
  return LinkOf(pipeline, TYPE_RGB_16, flags);
}

std::vector<uint16_t> LookUp(const Transform& transform, const std::vector<uint16_t>& points) {
  std::vector<uint16_t> result(points.size());
  cmsDoTransform(transform.get(), points.data(), result.data(), kGridEntries);
  return result;
}

Lut Codes(const std::vector<uint16_t>& points) {
  Lut codes;
  std::ranges::transform(points, std::back_inserter(codes),
                         [](uint16_t point) { return std::round(point * kGridEnd / kTop16); });
  return codes;
}

void AddCompose() {
  const Lut first = GamutLut();
  const Lut second = GreyTrackingLut();
  const std::vector<uint16_t> points = Points16(first);
  const std::shared_ptr<void> shared = LookUp16(second, kPrepared);
  const auto readyMade = [points, shared,
                          result = points]() mutable -> const std::vector<uint16_t>& {
    cmsDoTransform(shared.get(), points.data(), result.data(), kGridEntries);
    return result;
  };
  const auto withSetUp = [first, second] {
    return Codes(LookUp(LookUp16(second, kAsItIs), Points16(first)));
  };
  const Lut plain = PlainCompose(first, second);
  AddRow(kCompose, "lcms2, ready-made, 16 bit",
         LargestDifference(plain, Codes(ResultOf(readyMade))), readyMade);
  AddRow(kCompose, "lcms2 with set-up", LargestDifference(plain, withSetUp()), withSetUp);
}

struct CurveDeleter {
  void operator()(cmsToneCurve* curve) const { cmsFreeToneCurve(curve); }
};
using Curve = std::unique_ptr<cmsToneCurve, CurveDeleter>;

cmsStage* Power(double gamma) {
  const Curve curve(cmsBuildGamma(nullptr, gamma));
  cmsToneCurve* curves[3] = {curve.get(), curve.get(), curve.get()};
  return cmsStageAllocToneCurves(nullptr, 3, curves);
}

// Codes of the grid points, 0 to 1, and as the library has them.
std::vector<float> GridCodes() {
  std::vector<float> codes;
  for (int entry = 0; entry < kGridEntries; ++entry) {
    for (const int point : {entry / (kGridPoints * kGridPoints), entry / kGridPoints % kGridPoints,
                            entry % kGridPoints}) {
      codes.push_back(
          static_cast<float>(std::round(kGridMaximum * point / (kGridPoints - 1)) / kGridMaximum));
    }
  }
  return codes;
}

void AddGenerate() {
  cmsPipeline* const pipeline = cmsPipelineAlloc(nullptr, 3, 3);
  cmsPipelineInsertStage(pipeline, cmsAT_END, Power(kTargetGamma));
  cmsPipelineInsertStage(pipeline, cmsAT_END,
                         cmsStageAllocMatrix(nullptr, 3, 3, kTargetToPanel.data(), nullptr));
  cmsPipelineInsertStage(pipeline, cmsAT_END, Power(1 / kPanelGamma));
  const std::shared_ptr<void> transform = LinkOf(pipeline, TYPE_RGB_FLT, cmsFLAGS_NOOPTIMIZE);
  const auto run = [codes = GridCodes(), transform,
                    result = GridCodes()]() mutable -> const std::vector<float>& {
    cmsDoTransform(transform.get(), codes.data(), result.data(), kGridEntries);
    return result;
  };
  Lut lut;
  for (const float code : ResultOf(run)) {
    lut.push_back(std::clamp(code, 0.0F, 1.0F) * kGridMaximum);
  }
  AddRow(kGenerate, "lcms2, ready-made, float",
         LargestDifference(PlainGenerate(kTargetToPanel, kTargetGamma, kPanelGamma), lut), run);
}

void AddBend() {
  constexpr double kExponent = 2.4 / 2.2;
  const std::shared_ptr<cmsToneCurve> curve(cmsBuildGamma(nullptr, kExponent), CurveDeleter());
  const auto run = [curve, lut = GammaLut()] {
    Lut result;
    result.reserve(lut.size());
    for (const double value : lut) {
      result.push_back(kGammaMaximum *
                       static_cast<double>(cmsEvalToneCurveFloat(
                           curve.get(), static_cast<float>(value / kGammaMaximum))));
    }
    return result;
  };
  AddRow(kBend, "lcms2, ready-made, float",
         LargestDifference(PlainBend(GammaLut(), {1, 1, 1}, kExponent), run()), run);
}

cmsHPROFILE NewProfile() {
  const Curve curve(cmsBuildGamma(nullptr, 2.2));
  cmsToneCurve* curves[3] = {curve.get(), curve.get(), curve.get()};
  const cmsCIExyY white = {0.3127, 0.3290, 1};
  const cmsCIExyYTRIPLE primaries = {{0.64, 0.33, 1}, {0.30, 0.60, 1}, {0.15, 0.06, 1}};
  const cmsHPROFILE profile = cmsCreateRGBProfile(&white, &primaries, curves);
  cmsMLU* const text = cmsMLUalloc(nullptr, 1);
  cmsMLUsetWide(text, "en", "US", L"Benchmark");
  cmsWriteTag(profile, cmsSigProfileDescriptionTag, text);
  cmsWriteTag(profile, cmsSigCopyrightTag, text);
  cmsMLUfree(text);
  return profile;
}

void AddProfile() {
  AddRow(kProfile, "lcms2 to memory", std::nullopt, [bytes = std::vector<uint8_t>(4096)]() mutable {
    const cmsHPROFILE profile = NewProfile();
    auto size = static_cast<cmsUInt32Number>(bytes.size());
    benchmark::DoNotOptimize(cmsSaveProfileToMem(profile, bytes.data(), &size));
    cmsCloseProfile(profile);
  });
  AddRow(kProfile, "lcms2 to a file", std::nullopt, [] {
    const cmsHPROFILE profile = NewProfile();
    benchmark::DoNotOptimize(cmsSaveProfileToFile(profile, "bench-lcms2.icc"));
    cmsCloseProfile(profile);
  });
}

}  // namespace

void AddLcms2Rows() {
  AddCompose();
  AddGenerate();
  AddBend();
  AddProfile();
}

}  // namespace bench
