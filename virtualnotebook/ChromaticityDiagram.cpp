#include "virtualnotebook/ChromaticityDiagram.h"

#include <fstream>
#include <stdexcept>

namespace virtualnotebook {
namespace {

constexpr double kScale = 600;  // units of the picture for 1 of x or y
constexpr double kMargin = 40;
constexpr double kWidth = 0.8;   // of x
constexpr double kHeight = 0.9;  // of y

// The spectral locus from 380 to 700 nm, CIE 1931 2-degree observer.
constexpr Xy kLocus[] = {
    {0.1741, 0.0050}, {0.1738, 0.0049}, {0.1733, 0.0048}, {0.1714, 0.0051}, {0.1644, 0.0109},
    {0.1566, 0.0177}, {0.1440, 0.0297}, {0.1241, 0.0578}, {0.0913, 0.1327}, {0.0687, 0.2007},
    {0.0454, 0.2950}, {0.0235, 0.4127}, {0.0082, 0.5384}, {0.0039, 0.6548}, {0.0139, 0.7502},
    {0.0389, 0.8120}, {0.0743, 0.8338}, {0.1142, 0.8262}, {0.1547, 0.8059}, {0.2296, 0.7543},
    {0.3016, 0.6923}, {0.3731, 0.6245}, {0.4441, 0.5547}, {0.5125, 0.4866}, {0.5752, 0.4242},
    {0.6270, 0.3725}, {0.6658, 0.3340}, {0.6915, 0.3083}, {0.7079, 0.2920}, {0.7190, 0.2809},
    {0.7260, 0.2740}, {0.7347, 0.2653},
};

double X(double x) { return kMargin + kScale * x; }
double Y(double y) { return kMargin + kScale * (kHeight - y); }

void Point(std::ostream& svg, Xy xy) { svg << X(xy.x) << ',' << Y(xy.y) << ' '; }

}  // namespace

void WriteChromaticityDiagram(const std::string& path, const std::vector<DiagramGamut>& gamuts) {
  std::ofstream svg(path);
  svg << "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 " << kScale * kWidth + 2 * kMargin
      << ' ' << kScale * kHeight + 2 * kMargin
      << "\" font-family=\"sans-serif\" font-size=\"13\" fill=\"none\">\n"
      << "<rect width=\"100%\" height=\"100%\" fill=\"white\"/>\n"
      << "<polygon stroke=\"#999\" points=\"";
  for (Xy xy : kLocus) {
    Point(svg, xy);
  }
  svg << "\"/>\n<polyline stroke=\"black\" points=\"";
  for (Xy xy : {Xy{0, kHeight}, Xy{0, 0}, Xy{kWidth, 0}}) {
    Point(svg, xy);
  }
  svg << "\"/>\n<g fill=\"black\">";
  for (int tenth = 0; tenth <= 8; ++tenth) {
    svg << "<text x=\"" << X(tenth / 10.0) - 8 << "\" y=\"" << Y(0) + 18 << "\">" << tenth / 10.0
        << "</text><text x=\"8\" y=\"" << Y(tenth / 10.0) + 4 << "\">" << tenth / 10.0 << "</text>";
  }
  svg << "</g>\n";
  double line = 0;
  for (const DiagramGamut& gamut : gamuts) {
    svg << "<polygon stroke-width=\"2\" stroke=\"" << gamut.colour << "\" points=\"";
    for (Xy xy : {gamut.red, gamut.green, gamut.blue}) {
      Point(svg, xy);
    }
    svg << "\"/><circle r=\"4\" fill=\"" << gamut.colour << "\" cx=\"" << X(gamut.white.x)
        << "\" cy=\"" << Y(gamut.white.y) << "\"/><text fill=\"" << gamut.colour << "\" x=\""
        << X(0.5) << "\" y=\"" << Y(0.85) + 18 * line++ << "\">" << gamut.label << "</text>\n";
  }
  svg << "</svg>\n";
  if (!svg.flush()) {
    throw std::runtime_error("cannot write " + path);
  }
}

}  // namespace virtualnotebook
