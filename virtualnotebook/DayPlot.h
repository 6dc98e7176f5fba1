// Pictures: natural colour over a day.
#pragma once

#include <array>
#include <string>
#include <vector>

namespace virtualnotebook {

// Colour temperatures in kelvin, from this hour to the next sample's.
struct DaySample {
  double hour;
  double ambient;
  double target;
  double delivered;
  std::array<double, 3> gains;  // of R, G and B on the panel
};

// What else went on in the meantime.
struct DayEvent {
  double from;  // hours
  double to;
  std::string label;
};

// An SVG file: the colour temperatures above, the gains below, over 24 hours; the events as bands
// behind both. std::runtime_error when the file cannot be written.
void WriteDayPlot(const std::string& path, const std::vector<DaySample>& samples,
                  const std::vector<DayEvent>& events);

}  // namespace virtualnotebook
