// Gamuts and white points in the CIE 1931 xy diagram.
#pragma once

#include <string>
#include <vector>

#include "pictures/Picture.h"

namespace pictures {

struct DiagramGamut {
  std::string label;
  Colour colour;
  Point red;  // x and y of CIE 1931
  Point green;
  Point blue;
  Point white;
  double lineWidth = 2;
};

// Where x and y stand in the diagram.
Point InDiagram(Point xy);

// The spectral locus, each gamut as a triangle with its white point.
Picture ChromaticityDiagram(const std::vector<DiagramGamut>& gamuts);

}  // namespace pictures
