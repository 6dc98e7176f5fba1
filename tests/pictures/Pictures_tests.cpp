#include <gtest/gtest.h>

#include <array>
#include <string>

#include "pictures/ChromaticityDiagram.h"
#include "pictures/CurvePlot.h"
#include "pictures/LutSlices.h"
#include "pictures/Picture.h"

namespace pictures {
namespace {

size_t CountOf(const std::string& text, const std::string& part) {
  size_t count = 0;
  for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

std::array<int, 3> PixelOf(const Image& image, int x, int y) {
  const auto* pixel = &image.pixels[3 * (static_cast<size_t>(y) * static_cast<size_t>(image.width) +
                                         static_cast<size_t>(x))];
  return {pixel[0], pixel[1], pixel[2]};
}

constexpr std::array<int, 3> kWhite = {255, 255, 255};

TEST(Picture, ColourOf_HexadecimalAndWithinTheScale) {
  EXPECT_EQ(ColourOf(0, 128, 255), "#0080ff");
  EXPECT_EQ(ColourOf(-1, 15, 300), "#000fff");
}

TEST(Picture, Svg_ShapesInTheirOrder) {
  Picture picture(30, 20);
  picture.Line({{1, 2}, {3.5, 4}}, "#ff0000", 2);
  picture.Outline({{0, 0}, {10, 0}, {0, 10}}, "#00ff00", 1);
  picture.Area({5, 6}, 7, 8, "#0000ff");
  picture.Dot({9, 8}, 4, "#123456");
  picture.Text({2, 18}, "a<b & c>d", "#000000", Anchor::End, 10);
  EXPECT_EQ(
      picture.Svg(),
      "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 30 20\" "
      "font-family=\"sans-serif\">\n"
      "<rect width=\"100%\" height=\"100%\" fill=\"white\"/>\n"
      "<polyline fill=\"none\" stroke-linejoin=\"round\" stroke=\"#ff0000\" stroke-width=\"2\" "
      "points=\"1,2 3.5,4 \"/>\n"
      "<polygon fill=\"none\" stroke-linejoin=\"round\" stroke=\"#00ff00\" stroke-width=\"1\" "
      "points=\"0,0 10,0 0,10 \"/>\n"
      "<rect x=\"5\" y=\"6\" width=\"7\" height=\"8\" fill=\"#0000ff\"/>\n"
      "<circle r=\"4\" cx=\"9\" cy=\"8\" fill=\"#123456\"/>\n"
      "<text x=\"2\" y=\"18\" font-size=\"10\" fill=\"#000000\" text-anchor=\"end\">"
      "a&lt;b &amp; c&gt;d</text>\n"
      "</svg>\n");
}

TEST(Picture, Render_AreasCoverTheirPixels) {
  Picture picture(10, 6);
  picture.Area({2, 1}, 3, 2, "#102030");
  picture.Area({7.5, 4}, 1, 1, "#000000");  // half of two pixels
  const Image image = picture.Render();
  ASSERT_EQ(image.width, 10);
  ASSERT_EQ(image.height, 6);
  EXPECT_EQ(PixelOf(image, 2, 1), (std::array<int, 3>{0x10, 0x20, 0x30}));
  EXPECT_EQ(PixelOf(image, 4, 2), (std::array<int, 3>{0x10, 0x20, 0x30}));
  EXPECT_EQ(PixelOf(image, 5, 2), kWhite);
  EXPECT_EQ(PixelOf(image, 4, 3), kWhite);
  EXPECT_EQ(PixelOf(image, 7, 4), (std::array<int, 3>{128, 128, 128}));
  EXPECT_EQ(PixelOf(image, 8, 4), (std::array<int, 3>{128, 128, 128}));
}

TEST(Picture, Render_LinesAndDots) {
  Picture picture(20, 20);
  picture.Line({{0, 5}, {20, 5}}, "#000000", 2);  // rows 4 and 5 whole
  picture.Dot({10, 14}, 3, "#ff0000");
  const Image image = picture.Render();
  EXPECT_EQ(PixelOf(image, 10, 4), (std::array<int, 3>{0, 0, 0}));
  EXPECT_EQ(PixelOf(image, 10, 5), (std::array<int, 3>{0, 0, 0}));
  EXPECT_EQ(PixelOf(image, 10, 3), kWhite);
  EXPECT_EQ(PixelOf(image, 10, 6), kWhite);
  EXPECT_EQ(PixelOf(image, 10, 14), (std::array<int, 3>{255, 0, 0}));
  EXPECT_EQ(PixelOf(image, 14, 14), kWhite);
}

TEST(Picture, Render_WhatLiesOutsideIsCutOff) {
  Picture picture(4, 4);
  picture.Area({-10, -10}, 12, 12, "#000000");
  picture.Line({{-100, 3.5}, {1e9, 3.5}}, "#000000", 1);
  picture.Text({1e6, -1e6}, "far away", "#000000");
  const Image image = picture.Render();
  EXPECT_EQ(PixelOf(image, 1, 1), (std::array<int, 3>{0, 0, 0}));
  EXPECT_EQ(PixelOf(image, 2, 2), kWhite);
  EXPECT_EQ(PixelOf(image, 3, 3), (std::array<int, 3>{0, 0, 0}));
}

// Where the dark pixels of a text lie, from left to right.
std::pair<int, int> Extent(const Picture& picture) {
  const Image image = picture.Render();
  int left = image.width;
  int right = -1;
  for (int y = 0; y < image.height; ++y) {
    for (int x = 0; x < image.width; ++x) {
      if (PixelOf(image, x, y) != kWhite) {
        left = std::min(left, x);
        right = std::max(right, x);
      }
    }
  }
  return {left, right};
}

TEST(Picture, Render_TextsAtTheirAnchors) {
  const auto extent = [](Anchor anchor) {
    Picture picture(200, 20);
    picture.Text({100, 14}, "HIHI", "#000000", anchor, 10);
    return Extent(picture);
  };
  const auto [startLeft, startRight] = extent(Anchor::Start);
  const auto [middleLeft, middleRight] = extent(Anchor::Middle);
  const auto [endLeft, endRight] = extent(Anchor::End);
  EXPECT_NEAR(startLeft, 100, 1);
  EXPECT_NEAR((middleLeft + middleRight) / 2.0, 100, 2);
  EXPECT_NEAR(endRight, 100, 4);  // the gap to a next letter
  EXPECT_EQ(startRight - startLeft, endRight - endLeft);
}

TEST(Picture, Render_OtherLettersThanAscii) {
  Picture strange(60, 20);
  strange.Text({1, 14}, "\xC3\xA4\n", "#000000");
  Picture marks(60, 20);
  marks.Text({1, 14}, "???", "#000000");
  EXPECT_EQ(strange.Render().pixels, marks.Render().pixels);
}

TEST(Picture, Add_MovesEveryShape) {
  Picture small(10, 10);
  small.Line({{1, 1}, {2, 2}}, "#000000", 1);
  small.Area({3, 3}, 1, 1, "#000000");
  small.Dot({5, 5}, 1, "#000000");
  small.Text({6, 6}, "t", "#000000");
  Picture whole(100, 100);
  whole.Add(small, {10, 20});
  const std::string svg = whole.Svg();
  EXPECT_NE(svg.find("points=\"11,21 12,22 \""), std::string::npos);
  EXPECT_NE(svg.find("x=\"13\" y=\"23\""), std::string::npos);
  EXPECT_NE(svg.find("cx=\"15\" cy=\"25\""), std::string::npos);
  EXPECT_NE(svg.find("x=\"16\" y=\"26\""), std::string::npos);
}

TEST(CurvePlot, OneLineForEachChannelOfEachCurve) {
  std::vector<double> lut(3072, 0.0);
  lut[0] = 4095;
  const std::string svg =
      CurvePlot("Title", 4095, {{"first", lut}, {"second", lut}, {"none", {}}}).Svg();
  EXPECT_EQ(CountOf(svg, "<polyline"), 6u);
  EXPECT_EQ(CountOf(svg, "Title"), 1u);
  EXPECT_NE(svg.find("points=\"40,40 "), std::string::npos) << "red begins at the top left";
  EXPECT_NE(svg.find("520,520 \"/>"), std::string::npos) << "all end at the bottom right";
  EXPECT_EQ(CountOf(svg, ">thin: first<"), 1u);
  EXPECT_EQ(CountOf(svg, ">thick: second<"), 1u);
}

TEST(CurvePlot, AFewLevels) {
  // 17 levels of a straight line: level 8 in the middle, 40 + 480 / 2.
  std::vector<double> lut;
  for (int level = 0; level < 17; ++level) {
    lut.insert(lut.end(), 3, 1023.0 * level / 16);
  }
  const std::string svg = CurvePlot("", 1023, {{"only", lut}}).Svg();
  EXPECT_EQ(CountOf(svg, " 280,280 "), 3u);
  EXPECT_EQ(CountOf(svg, "520,40 \"/>"), 3u);
  EXPECT_EQ(CountOf(svg, ">only<"), 1u);
}

TEST(DifferencePlot, FromMinusToPlus) {
  const std::string svg = DifferencePlot("", 10, {"d", {-10, 0, 10, 10, 0, -10}}).Svg();
  EXPECT_EQ(CountOf(svg, "points=\"40,520 520,40 \""), 1u) << "red";
  EXPECT_EQ(CountOf(svg, "points=\"40,280 520,280 \""), 2u) << "green, and the zero line";
  EXPECT_EQ(CountOf(svg, "points=\"40,40 520,520 \""), 1u) << "blue";
  EXPECT_EQ(CountOf(svg, ">-10<"), 1u);
}

TEST(ChromaticityDiagram, TrianglesAndWhitePoints) {
  const std::string svg =
      ChromaticityDiagram(
          {{"panel", "#000000", {0.68, 0.32}, {0.265, 0.69}, {0.15, 0.06}, {0.3127, 0.329}}})
          .Svg();
  EXPECT_EQ(CountOf(svg, "<polygon"), 2u) << "the locus and the panel";
  EXPECT_EQ(CountOf(svg, "<circle"), 1u);
  // By hand: 40 + 600 x, 40 + 600 (0.9 - y).
  EXPECT_NE(svg.find("points=\"448,388 199,166 130,544 \""), std::string::npos);
  EXPECT_NE(svg.find("cx=\"227.62\" cy=\"382.6\""), std::string::npos);
}

TEST(ChromaticityDiagram, PixelsWhereTheNumbersSay) {
  const Image image =
      ChromaticityDiagram(
          {{"panel", "#ff0000", {0.68, 0.32}, {0.265, 0.69}, {0.15, 0.06}, {0.3127, 0.329}}})
          .Render();
  EXPECT_EQ(image.width, 560);
  EXPECT_EQ(image.height, 620);
  EXPECT_EQ(PixelOf(image, 227, 382), (std::array<int, 3>{255, 0, 0})) << "the white point";
  // Half way from blue to red: 289, 466.
  EXPECT_EQ(PixelOf(image, 289, 465)[1], 0);
  EXPECT_EQ(PixelOf(image, 289, 440), kWhite) << "inside";
}

TEST(LutSlices, CellsHaveTheLutsColours) {
  // 2 points on each axis: entry (r, g, b) is 10 r, 10 g, 10 b, of 10.
  std::vector<double> lut;
  for (int entry = 0; entry < 8; ++entry) {
    lut.insert(lut.end(), {10.0 * (entry >> 2), 10.0 * (entry >> 1 & 1), 10.0 * (entry & 1)});
  }
  const Image image = LutSlices("", lut, 2, 10).Render();
  // By hand: 40, and 7 a cell; the second slice 14 + 14 further; green up.
  EXPECT_EQ(CellOf(0, 0, 0, 2), (Point{40, 47}));
  EXPECT_EQ(CellOf(1, 1, 1, 2), (Point{75, 40}));
  const auto colour = [&](size_t r, size_t g, size_t b) {
    const Point at = CellOf(r, g, b, 2);
    return PixelOf(image, static_cast<int>(at.x) + 3, static_cast<int>(at.y) + 3);
  };
  EXPECT_EQ(colour(0, 0, 0), (std::array<int, 3>{0, 0, 0}));
  EXPECT_EQ(colour(1, 0, 0), (std::array<int, 3>{255, 0, 0}));
  EXPECT_EQ(colour(0, 1, 0), (std::array<int, 3>{0, 255, 0}));
  EXPECT_EQ(colour(1, 0, 1), (std::array<int, 3>{255, 0, 255}));
  EXPECT_EQ(colour(1, 1, 1), kWhite);
}

TEST(LutSlices, SeventeenPointsInTwoRows) {
  // By hand: a slice takes 17 * 7 + 14 = 133; nine in a row, the tenth below the first.
  EXPECT_EQ(CellOf(0, 16, 8, 17), (Point{40 + 8 * 133, 40}));
  EXPECT_EQ(CellOf(0, 16, 9, 17), (Point{40, 173}));
  const Picture picture = LutSlices("", std::vector<double>(3 * 4913), 17, 1023);
  EXPECT_EQ(picture.Width(), 80 - 14 + 9 * 133);
  EXPECT_EQ(picture.Height(), 80 - 14 + 2 * 133);
}

TEST(LutDifferenceSlices, WhiteWhereNothingDiffers) {
  const std::vector<double> first(24, 5.0);
  std::vector<double> second = first;
  second[3 * 4 + 1] = 15;  // entry 4: red 1, green 0, blue 0
  second[3 * 7 + 2] = 10;  // entry 7, half of it
  const Image image = LutDifferenceSlices("", first, second, 2, 10).Render();
  const auto colour = [&](size_t r, size_t g, size_t b) {
    const Point at = CellOf(r, g, b, 2);
    return PixelOf(image, static_cast<int>(at.x) + 3, static_cast<int>(at.y) + 3);
  };
  EXPECT_EQ(colour(0, 0, 0), kWhite);
  EXPECT_EQ(colour(1, 0, 0), (std::array<int, 3>{110, 0, 0}));
  EXPECT_EQ(colour(1, 1, 1), (std::array<int, 3>{255, 110, 20}));
}

TEST(WriteFile, AFileThatCannotBeWritten) {
  EXPECT_THROW(WriteFile("/no/such/folder/x.svg", ""), std::runtime_error);
}

}  // namespace
}  // namespace pictures
