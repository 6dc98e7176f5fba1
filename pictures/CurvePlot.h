// What LUTs make of the input levels of each channel.
#pragma once

#include <string>
#include <vector>

#include "pictures/Picture.h"

namespace pictures {

struct Curve {
  std::string label;
  std::vector<double> values;  // R, G, B by input level, evenly from the lowest to the highest
};

// One line for each channel of each curve, the first of several thin, later ones thicker. maximum:
// the value at the top.
Picture CurvePlot(const std::string& title, double maximum, const std::vector<Curve>& curves);

// The same with a scale from -limit to limit: differences.
Picture DifferencePlot(const std::string& title, double limit, const Curve& difference);

}  // namespace pictures
