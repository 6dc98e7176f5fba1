// OpenColorIO at the same jobs, by its processor's own choice of optimisations and in floats, its
// native format.
#include <OpenColorIO/OpenColorIO.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "Harness.h"
#include "Inputs.h"
#include "Jobs.h"

namespace ocio = OCIO_NAMESPACE;

namespace bench {
namespace {

// Codes run to 1023, and the grid to the code 1024.
constexpr double kGridEnd = 1024;

using Points = std::vector<float>;

ocio::ConstCPUProcessorRcPtr ProcessorOf(const ocio::ConstTransformRcPtr& transform) {
  static const ocio::ConstConfigRcPtr config = ocio::Config::CreateRaw();
  return config->getProcessor(transform)->getDefaultCPUProcessor();
}

void Apply(const ocio::ConstCPUProcessorRcPtr& processor, Points& points) {
  ocio::PackedImageDesc image(points.data(), static_cast<long>(points.size() / 3), 1, 3);
  processor->apply(image);
}

Points PointsOf(const Lut& lut, double end) {
  Points points;
  std::ranges::transform(lut, std::back_inserter(points),
                         [end](double value) { return static_cast<float>(value / end); });
  return points;
}

Lut CodesOf(const Points& points) {
  Lut codes;
  std::ranges::transform(points, std::back_inserter(codes), [](float point) {
    return std::round(static_cast<double>(point) * kGridEnd);
  });
  return codes;
}

ocio::ConstCPUProcessorRcPtr LookUp(const Lut& lut) {
  const auto transform = ocio::Lut3DTransform::Create(kGridPoints);
  transform->setInterpolation(ocio::INTERP_TETRAHEDRAL);
  const Points values = PointsOf(lut, kGridEnd);
  for (unsigned long r = 0, i = 0; r < kGridPoints; ++r) {
    for (unsigned long g = 0; g < kGridPoints; ++g) {
      for (unsigned long b = 0; b < kGridPoints; ++b, i += 3) {
        transform->setValue(r, g, b, values[i], values[i + 1], values[i + 2]);
      }
    }
  }
  return ProcessorOf(transform);
}

void AddCompose() {
  const Lut first = GamutLut();
  const Lut second = GreyTrackingLut();
  const auto readyMade = [points = PointsOf(first, kGridEnd), processor = LookUp(second),
                          result = Points()]() mutable -> const Points& {
    result = points;
    Apply(processor, result);
    return result;
  };
  const auto withSetUp = [first, second] {
    Points points = PointsOf(first, kGridEnd);
    Apply(LookUp(second), points);
    return CodesOf(points);
  };
  const Lut plain = PlainCompose(first, second);
  AddRow(kCompose, "OpenColorIO, ready-made",
         LargestDifference(plain, CodesOf(ResultOf(readyMade))), readyMade);
  AddRow(kCompose, "OpenColorIO with set-up", LargestDifference(plain, withSetUp()), withSetUp);
}

ocio::TransformRcPtr Power(double exponent) {
  const auto transform = ocio::ExponentTransform::Create();
  const double values[4] = {exponent, exponent, exponent, 1};
  transform->setValue(values);
  return transform;
}

ocio::TransformRcPtr Matrix() {
  const auto transform = ocio::MatrixTransform::Create();
  const auto& m = kTargetToPanel;
  const double values[16] = {m[0], m[1], m[2], 0, m[3], m[4], m[5], 0,
                             m[6], m[7], m[8], 0, 0,    0,    0,    1};
  transform->setMatrix(values);
  return transform;
}

// The grid's codes, 0 to 1.
Points GridCodes() {
  Points codes;
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
  const auto group = ocio::GroupTransform::Create();
  group->appendTransform(Power(kTargetGamma));
  group->appendTransform(Matrix());
  group->appendTransform(Power(1 / kPanelGamma));
  const auto run = [codes = GridCodes(), processor = ProcessorOf(group),
                    result = Points()]() mutable -> const Points& {
    result = codes;
    Apply(processor, result);
    return result;
  };
  Lut lut;
  for (const float code : ResultOf(run)) {
    lut.push_back(std::clamp(static_cast<double>(code), 0.0, 1.0) * kGridMaximum);
  }
  AddRow(kGenerate, "OpenColorIO, ready-made, float",
         LargestDifference(PlainGenerate(kTargetToPanel, kTargetGamma, kPanelGamma), lut), run);
}

void AddBend() {
  constexpr double kExponent = 2.4 / 2.2;
  const auto run = [codes = PointsOf(GammaLut(), kGammaMaximum),
                    processor = ProcessorOf(Power(kExponent)),
                    result = Points()]() mutable -> const Points& {
    result = codes;
    Apply(processor, result);
    return result;
  };
  Lut lut;
  for (const float code : ResultOf(run)) {
    lut.push_back(static_cast<double>(code) * kGammaMaximum);
  }
  AddRow(kBend, "OpenColorIO, ready-made, float",
         LargestDifference(PlainBend(GammaLut(), {1, 1, 1}, kExponent), lut), run);
}

}  // namespace

void AddOpenColorIORows() {
  AddCompose();
  AddGenerate();
  AddBend();
}

}  // namespace bench
