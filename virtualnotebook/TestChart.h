// Pictures: a test chart, and PNG files of what a panel shows.
#pragma once

#include <string>

#include "pictures/Image.h"
#include "virtualnotebook/Factory.h"

namespace virtualnotebook {

using pictures::Image;

// 480 x 320: colour bars; a grey ramp, smooth and in steps; ramps of the six full colours from
// black and to white; skin tones; hue sweeps at full, half and quarter saturation.
Image DrawTestChart();

// The pixels are the panel's own code values, and the file's cHRM and gAMA chunks say which panel:
// a viewer with colour management shows the panel's light, any other the bare values.
void WritePng(const std::string& path, const Image& image, const PanelDescription& panel);

}  // namespace virtualnotebook
