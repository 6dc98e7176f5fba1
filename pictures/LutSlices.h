// A 3D LUT in slices.
#pragma once

#include <span>
#include <string>

#include "pictures/Picture.h"

namespace pictures {

// One square for each level of blue, from 0 at the top left; in it red runs to the right and green
// up, and a cell has the colour that the LUT gives. lut: R, G, B of size^3 entries, blue fastest.
Picture LutSlices(const std::string& title, std::span<const double> lut, size_t size,
                  double maximum);

// The same of what differs between two LUTs: white where nothing does, from yellow to dark red
// where the largest difference of a channel is limit or more.
Picture LutDifferenceSlices(const std::string& title, std::span<const double> first,
                            std::span<const double> second, size_t size, double limit);

// Where the cell of an entry has its top left corner.
Point CellOf(size_t red, size_t green, size_t blue, size_t size);

}  // namespace pictures
