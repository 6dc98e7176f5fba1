// Pictures: gamma LUTs as curves.
#pragma once

#include <string>
#include <vector>

namespace virtualnotebook {

struct GammaCurve {
  std::string label;
  std::vector<double> lut;  // R, G, B by input level, 0 to 4095
};

// An SVG file: one line for each channel of each curve, the first curve thin, later ones thicker.
// std::runtime_error when the file cannot be written.
void WriteCurvePlot(const std::string& path, const std::string& title,
                    const std::vector<GammaCurve>& curves);

}  // namespace virtualnotebook
