// The panel's EDID.
#include "Jobs.h"

#include "Harness.h"
#include "Inputs.h"
#include "panel/LcdEdidParse.h"

namespace bench {
namespace {

double OffBy(const velora::LcdEdidParse& parsed, const PlainEdid& plain) {
  const std::array<double, 11> ours = {
      parsed.GetRedX(),  parsed.GetRedY(),       parsed.GetGreenX(),    parsed.GetGreenY(),
      parsed.GetBlueX(), parsed.GetBlueY(),      parsed.GetWhiteX(),    parsed.GetWhiteY(),
      parsed.GetGamma(), 1.0 * parsed.GetWeek(), 1.0 * parsed.GetYear()};
  std::array<double, 11> expected = {};
  std::copy(plain.chromaticities.begin(), plain.chromaticities.end(), expected.begin());
  expected[8] = plain.gamma;
  expected[9] = plain.week;
  expected[10] = plain.year;
  return LargestDifference(ours, expected);
}

}  // namespace

// With the line that it logs, which goes nowhere here.
void AddPanelRows() {
  const auto ours = [edid = Edid()] {
    velora::LcdEdidParse parsed;
    parsed.ParseEdidData(edid.data(), static_cast<uint32_t>(edid.size()));
    return parsed;
  };
  const auto plain = [edid = Edid()] {
    PlainEdid parsed = PlainParseEdid(edid);
    benchmark::DoNotOptimize(parsed);
    return parsed;
  };
  AddRow(kEdid, kOurs, OffBy(ours(), plain()), ours);
  AddRow(kEdid, kPlainForm, 0, plain);
}

}  // namespace bench
