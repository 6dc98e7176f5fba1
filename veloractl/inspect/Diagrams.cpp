#include "veloractl/inspect/Diagrams.h"

#include <algorithm>
#include <cmath>

#include "colormath/Matrix3x3.h"
#include "colormath/UserDesignMath.h"
#include "pictures/CurvePlot.h"
#include "pictures/LutSlices.h"
#include "veloractl/inspect/Edid.h"
#include "veloractl/inspect/IccTags.h"

namespace veloractl {
namespace {

using pictures::DiagramGamut;
using pictures::Picture;
using pictures::Point;
using velora::ChromaticityGamut;
using velora::LcdEdidParse;

constexpr size_t kGrid = velora::kGridSize;
// Wide, so that a LUT of the panel's own gamut does not hide it.
constexpr char kPanelColour[] = "#a8a8a8";
constexpr double kPanelLine = 7;
constexpr const char* kLutColours[] = {"#2060c0", "#c04020", "#108030", "#a020a0", "#b08000"};

// Pictures side by side; those below begin at the left again.
class Sheet {
 public:
  void Beside(const Picture& picture) {
    parts_.push_back({picture, {x_, y_}});
    x_ += picture.Width();
    bottom_ = std::max(bottom_, y_ + picture.Height());
    right_ = std::max(right_, x_);
  }
  void Below(const Picture& picture) {
    x_ = 0;
    y_ = bottom_;
    Beside(picture);
  }
  Picture Whole() const {
    Picture whole(right_, bottom_);
    for (const Part& part : parts_) {
      whole.Add(part.picture, part.at);
    }
    return whole;
  }
  bool IsEmpty() const { return parts_.empty(); }

 private:
  struct Part {
    Picture picture;
    Point at;
  };
  std::vector<Part> parts_;
  double x_ = 0;
  double y_ = 0;
  double bottom_ = 0;
  double right_ = 0;
};

DiagramGamut Diagram(const ChromaticityGamut& gamut, const std::string& label,
                     const std::string& colour) {
  return {label,
          colour,
          {gamut.redX, gamut.redY},
          {gamut.greenX, gamut.greenY},
          {gamut.blueX, gamut.blueY},
          {gamut.whiteX, gamut.whiteY}};
}

DiagramGamut PanelDiagram(const LcdEdidParse& panel) {
  DiagramGamut gamut = Diagram(GamutOf(panel), "the panel, by its EDID", kPanelColour);
  gamut.lineWidth = kPanelLine;
  return gamut;
}

std::string NameOfLut(ByteSpan block) {
  velora::BiosHeaderV2 header;
  header.Parse(block.data(), block.size());
  const LutUse* const use = FindLutUse(header.GetLutType());
  return use == nullptr ? "LUT" : std::string("LUT ") + use->name;
}

// The grey axis of a 3D LUT as curves.
std::vector<double> GreyAxis(const DecodedBlock& lut) {
  std::vector<double> axis;
  for (size_t level = 0; level < kGrid; ++level) {
    const size_t entry = (level * kGrid + level) * kGrid + level;
    axis.insert(axis.end(), &lut.values[3 * entry], &lut.values[3 * entry] + 3);
  }
  return axis;
}

// The curves, and what they are off the straight line from 0 to the top.
void DrawGamma(Sheet& sheet, const DecodedBlock& lut, const std::string& name) {
  std::vector<double> bend = lut.values;
  for (size_t i = 0; i < bend.size(); ++i) {
    const size_t entry = i / 3;
    bend[i] -= lut.Maximum() * static_cast<double>(entry) / (lut.Entries() - 1);
  }
  const auto [low, high] = std::ranges::minmax(bend);
  sheet.Beside(pictures::CurvePlot("Output by input level, " + name, lut.Maximum(),
                                   {{"the LUT", lut.values}}));
  sheet.Beside(pictures::DifferencePlot("The same less the straight line",
                                        std::ceil(std::max({-low, high, 1.0})),
                                        {"the LUT's bend", bend}));
}

Picture DrawGrey(const DecodedBlock& lut, const std::string& name) {
  return pictures::CurvePlot("Output by grey level, " + name, lut.Maximum(),
                             {{"the grey axis", GreyAxis(lut)}});
}

Picture DrawSlices(const DecodedBlock& lut, const std::string& name) {
  return pictures::LutSlices("Slices, " + name +
                                 ": blue from slice to slice, red to the right, "
                                 "green up",
                             lut.values, kGrid, lut.Maximum());
}

void DrawLut(Sheet& sheet, const DecodedBlock& lut, const std::string& name,
             const std::optional<LcdEdidParse>& panel) {
  if (lut.isGamma) {
    DrawGamma(sheet, lut, name);
    return;
  }
  sheet.Below(DrawGrey(lut, name));
  if (panel) {
    std::vector<DiagramGamut> gamuts = {PanelDiagram(*panel)};
    if (const auto gamut = GamutOf(lut, *panel, name + ", on this panel", kLutColours[0])) {
      gamuts.push_back(*gamut);
    }
    sheet.Beside(pictures::ChromaticityDiagram(gamuts));
  }
  sheet.Below(DrawSlices(lut, name));
}

// One diagram with the gamuts of all, then what each is.
void DrawContainer(Sheet& sheet, const Container& container,
                   const std::optional<LcdEdidParse>& panel) {
  std::vector<DiagramGamut> gamuts;
  if (panel) {
    gamuts.push_back(PanelDiagram(*panel));
  }
  Sheet slices;
  Sheet curves;
  for (const ContainerBlock& block : container.blocks) {
    const auto lut = DecodeBlock(block.bytes);
    if (!lut) {
      continue;
    }
    const std::string name = NameOfLut(block.bytes);
    if (lut->isGamma) {
      DrawGamma(curves, *lut, name);
      continue;
    }
    slices.Below(DrawSlices(*lut, name));
    const char* const colour = kLutColours[gamuts.size() % std::size(kLutColours)];
    if (panel) {
      if (const auto gamut = GamutOf(*lut, *panel, name + ", on this panel", colour)) {
        gamuts.push_back(*gamut);
      }
    }
  }
  if (!gamuts.empty() && !slices.IsEmpty()) {
    sheet.Beside(pictures::ChromaticityDiagram(gamuts));
  }
  if (!curves.IsEmpty()) {
    sheet.Beside(curves.Whole());
  }
  if (!slices.IsEmpty()) {
    sheet.Below(slices.Whole());
  }
}

void DrawEdid(Sheet& sheet, ByteSpan file) {
  const auto text = BytesOfHexText(file);
  const auto panel = ParseEdid(text ? ByteSpan(*text) : file);
  if (panel) {
    sheet.Below(pictures::ChromaticityDiagram(
        {PanelDiagram(*panel), Diagram(*velora::FindTargetGamut(1), "sRGB", kLutColours[0]),
         Diagram(*velora::FindTargetGamut(2), "P3", kLutColours[1]),
         Diagram(*velora::FindTargetGamut(3), "Adobe RGB", kLutColours[2])}));
  }
}

void DrawProfile(Sheet& sheet, ByteSpan file, const std::optional<LcdEdidParse>& panel) {
  const auto colours = ColoursOf(file);
  if (!colours) {
    return;
  }
  std::vector<DiagramGamut> gamuts;
  if (panel) {
    gamuts.push_back(PanelDiagram(*panel));
  }
  gamuts.push_back(
      Diagram(colours->gamut, DescriptionOf(file).value_or("the profile"), kLutColours[0]));
  sheet.Below(pictures::ChromaticityDiagram(gamuts));
}

}  // namespace

std::optional<Point> LightOf(const LcdEdidParse& panel, const double* rgb) {
  const auto matrix = MatrixOf(GamutOf(panel));
  if (!matrix) {
    return std::nullopt;
  }
  double linear[3];
  for (size_t c = 0; c < 3; ++c) {
    linear[c] = std::pow(rgb[c], panel.GetGamma());
  }
  double xyz[3];
  velora::MatVecMultiply(matrix->data(), linear, xyz);
  const double sum = xyz[0] + xyz[1] + xyz[2];
  if (!(sum > 0)) {
    return std::nullopt;
  }
  return Point{xyz[0] / sum, xyz[1] / sum};
}

std::optional<DiagramGamut> GamutOf(const DecodedBlock& lut, const LcdEdidParse& panel,
                                    const std::string& label, const pictures::Colour& colour) {
  const auto shown = [&](size_t r, size_t g, size_t b) {
    const double* const entry = &lut.values[3 * ((r * kGrid + g) * kGrid + b)];
    const double rgb[3] = {entry[0] / lut.Maximum(), entry[1] / lut.Maximum(),
                           entry[2] / lut.Maximum()};
    return LightOf(panel, rgb);
  };
  constexpr size_t kTop = kGrid - 1;
  const auto red = shown(kTop, 0, 0);
  const auto green = shown(0, kTop, 0);
  const auto blue = shown(0, 0, kTop);
  const auto white = shown(kTop, kTop, kTop);
  if (!red || !green || !blue || !white) {
    return std::nullopt;
  }
  return DiagramGamut{label, colour, *red, *green, *blue, *white};
}

Picture DrawFile(ByteSpan file, FileKind kind, const Surroundings& surroundings) {
  Sheet sheet;
  switch (kind) {
    case FileKind::FirmwareTable:
    case FileKind::GoldenFile:
      DrawContainer(sheet, BlocksOf(file, kind == FileKind::FirmwareTable), surroundings.panel);
      break;
    case FileKind::LutBinFile:
    case FileKind::UserLutFile:
      if (const auto lut = DecodeBlock(file)) {
        DrawLut(sheet, *lut, kind == FileKind::UserLutFile ? "user's LUT" : NameOfLut(file),
                surroundings.panel);
      }
      break;
    case FileKind::Edid:
      DrawEdid(sheet, file);
      break;
    case FileKind::UserProfile:
    case FileKind::PlainProfile:
      DrawProfile(sheet, file, surroundings.panel);
      break;
    case FileKind::DigestFile:
    case FileKind::Unknown:
      break;
  }
  if (sheet.IsEmpty()) {
    throw Failure(kBadFile,
                  std::string("there is nothing to draw in this file (") + NameOf(kind) + ")");
  }
  return sheet.Whole();
}

Picture DrawDifference(const DecodedBlock& first, const DecodedBlock& second,
                       const std::string& title) {
  const LutDifference difference = Compare(first, second);
  Sheet sheet;
  const auto minus = [](std::vector<double> a, const std::vector<double>& b) {
    std::ranges::transform(a, b, a.begin(), std::minus<>());
    return a;
  };
  const double limit = std::max(difference.largest, 1.0);
  const auto curve = [](const DecodedBlock& lut) {
    return lut.isGamma ? lut.values : GreyAxis(lut);
  };
  const std::string axis = first.isGamma ? "input level" : "grey level";
  sheet.Below(pictures::CurvePlot("Output by " + axis, first.Maximum(),
                                  {{"first", curve(first)}, {"second", curve(second)}}));
  sheet.Beside(pictures::DifferencePlot(title, limit,
                                        {"second - first", minus(curve(second), curve(first))}));
  if (!first.isGamma) {
    sheet.Below(pictures::LutDifferenceSlices(
        title + ": white 0, dark red " + NumberText(limit) + " of 1023", first.values,
        second.values, kGrid, limit));
  }
  return sheet.Whole();
}

}  // namespace veloractl
