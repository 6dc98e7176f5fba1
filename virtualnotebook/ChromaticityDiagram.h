// Pictures: gamuts and white points in the CIE 1931 xy diagram.
#pragma once

#include <string>
#include <vector>

#include "virtualnotebook/Factory.h"

namespace virtualnotebook {

struct DiagramGamut {
  std::string label;
  std::string colour;  // as SVG has it
  Xy red;
  Xy green;
  Xy blue;
  Xy white;
};

// An SVG file: the spectral locus, each gamut as a triangle with its white point.
// std::runtime_error when the file cannot be written.
void WriteChromaticityDiagram(const std::string& path, const std::vector<DiagramGamut>& gamuts);

}  // namespace virtualnotebook
