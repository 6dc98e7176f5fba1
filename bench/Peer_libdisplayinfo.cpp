// libdisplay-info at the base block: it reads all of its 128 bytes.
#include "Harness.h"
#include "Inputs.h"
#include "Jobs.h"
#include "PlainForms.h"

extern "C" {
#include <libdisplay-info/edid.h>
#include <libdisplay-info/info.h>
}

namespace bench {
namespace {

double OffBy() {
  const auto bytes = Edid();
  const PlainEdid plain = PlainParseEdid(bytes);
  di_info* const info = di_info_parse_edid(bytes.data(), bytes.size());
  const di_edid* const edid = di_info_get_edid(info);
  const di_edid_chromaticity_coords* const xy = di_edid_get_chromaticity_coords(edid);
  const std::array<double, 9> theirs = {xy->red_x,   xy->red_y,   xy->green_x,
                                        xy->green_y, xy->blue_x,  xy->blue_y,
                                        xy->white_x, xy->white_y, di_edid_get_basic_gamma(edid)};
  std::array<double, 9> ours = {};
  std::copy(plain.chromaticities.begin(), plain.chromaticities.end(), ours.begin());
  ours[8] = plain.gamma;
  di_info_destroy(info);
  return LargestDifference(ours, theirs);
}

}  // namespace

void AddDisplayInfoRows() {
  AddRow(kEdid, "libdisplay-info", OffBy(), [edid = Edid()] {
    di_info* const info = di_info_parse_edid(edid.data(), edid.size());
    benchmark::DoNotOptimize(info);
    di_info_destroy(info);
  });
}

}  // namespace bench
