#include "virtualnotebook/CurvePlot.h"

#include <fstream>
#include <stdexcept>

namespace virtualnotebook {
namespace {

constexpr double kSize = 480;   // of the plot's square
constexpr double kMargin = 40;  // around it
constexpr size_t kStep = 11;    // levels from point to point: 1023 is 93 steps
constexpr double kMaximum = 4095;
constexpr const char* kChannelColours[] = {"#d02020", "#108030", "#2040d0"};

void DrawLine(std::ostream& svg, const std::vector<double>& lut, size_t channel, size_t curve) {
  const size_t levels = lut.size() / 3;
  svg << "<polyline fill=\"none\" stroke=\"" << kChannelColours[channel] << "\" stroke-width=\""
      << 0.8 + 1.2 * static_cast<double>(curve) << "\" points=\"";
  for (size_t level = 0; level < levels; level += kStep) {
    const double x = static_cast<double>(level) / static_cast<double>(levels - 1);
    svg << kMargin + kSize * x << ',' << kMargin + kSize * (1 - lut[3 * level + channel] / kMaximum)
        << ' ';
  }
  svg << "\"/>\n";
}

}  // namespace

void WriteCurvePlot(const std::string& path, const std::string& title,
                    const std::vector<GammaCurve>& curves) {
  std::ofstream svg(path);
  const double whole = kSize + 2 * kMargin;
  svg << "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 " << whole << ' ' << whole
      << "\" font-family=\"sans-serif\" font-size=\"13\">\n"
      << "<rect width=\"100%\" height=\"100%\" fill=\"white\"/>\n"
      << "<rect x=\"" << kMargin << "\" y=\"" << kMargin << "\" width=\"" << kSize << "\" height=\""
      << kSize << "\" fill=\"none\" stroke=\"#888\"/>\n"
      << "<text x=\"" << kMargin << "\" y=\"" << kMargin - 14 << "\">" << title << "</text>\n";
  for (size_t i = 0; i < curves.size(); ++i) {
    svg << "<text x=\"" << kMargin + 12 << "\" y=\"" << kMargin + 22 + 18 * static_cast<double>(i)
        << "\">" << (i == 0 ? "thin: " : "thick: ") << curves[i].label << "</text>\n";
    for (size_t channel = 0; channel < 3 && !curves[i].lut.empty(); ++channel) {
      DrawLine(svg, curves[i].lut, channel, i);
    }
  }
  svg << "</svg>\n";
  if (!svg.flush()) {
    throw std::runtime_error("cannot write " + path);
  }
}

}  // namespace virtualnotebook
