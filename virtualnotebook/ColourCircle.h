// Pictures: the colour temperature circle.
#pragma once

#include <array>
#include <functional>

#include "virtualnotebook/TestChart.h"

namespace virtualnotebook {

// Gains of a point of the circle with centre (80, 80) and radius 80.
using CircleGains = std::function<std::array<double, 3>(double x, double y)>;

// 320 x 320: white as each point of the circle tints it, on black. The gains are close to 1, so the
// picture shows their distance from 1 four times as large.
Image DrawColourCircle(const CircleGains& gains);

}  // namespace virtualnotebook
