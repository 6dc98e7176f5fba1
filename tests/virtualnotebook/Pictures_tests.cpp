#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "support/NotebookTest.h"
#include "virtualnotebook/ColourCircle.h"
#include "virtualnotebook/DayPlot.h"

namespace virtualnotebook {
namespace {

std::string ReadText(const std::string& path) {
  const std::vector<uint8_t> bytes = testsupport::ReadFileBytes(path);
  return {bytes.begin(), bytes.end()};
}

size_t CountOf(const std::string& text, const std::string& part) {
  size_t count = 0;
  for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

TEST(DayPlot, StepsOfThreeTemperaturesAndThreeGains) {
  const testsupport::ScratchDirectory directory;
  WriteDayPlot(
      directory.Path("day.svg"),
      {{.hour = 0, .ambient = 3000, .target = 4000, .delivered = 2000, .gains = {1, 0.9, 0.6}},
       {.hour = 12, .ambient = 7500, .target = 4000, .delivered = 2000, .gains = {1, 1, 1}}},
      {{6, 9, "event"}});
  const std::string svg = ReadText(directory.Path("day.svg"));
  EXPECT_EQ(CountOf(svg, "<polyline"), 6u);
  EXPECT_EQ(CountOf(svg, ">event<"), 1u);
  // By hand: 60 + 40 an hour; 70 + 310 / 5500 a kelvin below 7500; 430 + 160 / 0.6 for 1 below 1.1.
  EXPECT_EQ(CountOf(svg, "points=\"60,380 540,380 540,380 1020,380 \""), 1u) << "2000 K";
  EXPECT_EQ(CountOf(svg, "points=\"60,323.636 540,323.636 540,70 1020,70 \""), 1u) << "the room";
  EXPECT_EQ(CountOf(svg, "points=\"60,563.333 540,563.333 540,456.667 1020,456.667 \""), 1u)
      << "blue";
  EXPECT_EQ(CountOf(svg, "x=\"300\" y=\"70\" width=\"120\" height=\"310\""), 1u) << "the event";
}

TEST(DayPlot, FileThatCannotBeWritten) {
  EXPECT_THROW(WriteDayPlot("Q:\\no\\such.svg", {}, {}), std::runtime_error);
}

TEST(ColourCircle, TintsTheInsideOnly) {
  const Image image = DrawColourCircle([](double x, double) {
    return std::array<double, 3>{1.0, x < 80 ? 0.9 : 1.0, 1.0};
  });
  ASSERT_EQ(image.pixels.size(), 320u * 320 * 3);
  const auto pixel = [&](size_t x, size_t y) {
    const uint8_t* p = &image.pixels[3 * (320 * y + x)];
    return std::array<int, 3>{p[0], p[1], p[2]};
  };
  EXPECT_EQ(pixel(0, 0), (std::array<int, 3>{0, 0, 0}));
  EXPECT_EQ(pixel(200, 160), (std::array<int, 3>{255, 255, 255}));
  EXPECT_EQ(pixel(100, 160), (std::array<int, 3>{255, 153, 255})) << "1 - 4 * 0.1 of 255";
}

}  // namespace
}  // namespace virtualnotebook
