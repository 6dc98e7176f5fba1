// Pictures of what is in a file.
#pragma once

#include <optional>

#include "pictures/ChromaticityDiagram.h"
#include "veloractl/inspect/Inspect.h"
#include "veloractl/inspect/LutBlocks.h"

namespace veloractl {

// What the panel shows for values of 0 to 1 of its own; none for primaries that span no space, and
// for black.
std::optional<pictures::Point> LightOf(const velora::LcdEdidParse& panel, const double* rgb);

// The colours that a 3D LUT gives full red, green, blue and white, on this panel.
std::optional<pictures::DiagramGamut> GamutOf(const DecodedBlock& lut,
                                              const velora::LcdEdidParse& panel,
                                              const std::string& label,
                                              const pictures::Colour& colour);

// Of the file as it was recognised: gamma curves, gamuts in the CIE xy diagram, slices of 3D LUTs.
// Failure for a file with nothing to draw.
pictures::Picture DrawFile(ByteSpan file, FileKind kind, const Surroundings& surroundings);

// What differs between two LUTs of one kind.
pictures::Picture DrawDifference(const DecodedBlock& first, const DecodedBlock& second,
                                 const std::string& title);

}  // namespace veloractl
