#include "virtualnotebook/TestChart.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stb_image.h>

#include <array>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>

namespace virtualnotebook {
namespace {

using testing::Each;
using testing::ElementsAre;

using Pixel = std::array<int, 3>;

Pixel PixelAt(const Image& image, int x, int y) {
  const uint8_t* pixel = &image.pixels[static_cast<size_t>(y * image.width + x) * 3];
  return {pixel[0], pixel[1], pixel[2]};
}

uint32_t BigEndianAt(const Bytes& bytes, size_t offset) {
  uint32_t value = 0;
  for (size_t i = 0; i < 4; ++i) value = value << 8 | bytes[offset + i];
  return value;
}

Bytes WriteAndRead(const Image& image, const PanelDescription& panel) {
  const std::string path = testing::TempDir() + "chart.png";
  WritePng(path, image, panel);
  std::ifstream file(path, std::ios::binary);
  const Bytes png{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  file.close();
  std::filesystem::remove(path);
  return png;
}

TEST(TestChart, DrawTestChart_Size) {
  const Image chart = DrawTestChart();
  EXPECT_EQ(480, chart.width);
  EXPECT_EQ(320, chart.height);
  EXPECT_EQ(480u * 320 * 3, chart.pixels.size());
}

TEST(TestChart, DrawTestChart_BarsRampsAndSweeps) {
  const Image chart = DrawTestChart();
  EXPECT_THAT(PixelAt(chart, 0, 0), Each(255));
  EXPECT_THAT(PixelAt(chart, 479, 0), Each(0));
  EXPECT_THAT(PixelAt(chart, 330, 30), ElementsAre(255, 0, 0));  // the sixth bar
  std::set<int> greys, steps;
  for (int x = 0; x < 480; ++x) {
    const Pixel smooth = PixelAt(chart, x, 60), stepped = PixelAt(chart, x, 80);
    ASSERT_THAT(smooth, Each(smooth[0]));
    ASSERT_THAT(stepped, Each(stepped[0]));
    greys.insert(smooth[0]);
    steps.insert(stepped[0]);
  }
  EXPECT_EQ(256u, greys.size());
  EXPECT_THAT(steps, ElementsAre(0, 26, 51, 77, 102, 128, 153, 179, 204, 230, 255));
  EXPECT_THAT(PixelAt(chart, 0, 100), Each(0));                     // red from black ...
  EXPECT_THAT(PixelAt(chart, 479, 100), Each(255));                 // ... to white
  EXPECT_THAT(PixelAt(chart, 0, 250), ElementsAre(255, 0, 0));      // the sweep starts at red
  EXPECT_THAT(PixelAt(chart, 160, 250)[1], 255);                    // and passes green
  EXPECT_THAT(PixelAt(chart, 0, 319), ElementsAre(255, 191, 191));  // a quarter of red
}

TEST(TestChart, WritePng_KeepsThePixels) {
  const Image chart = DrawTestChart();
  const Bytes png = WriteAndRead(chart, {});
  int width = 0, height = 0, channels = 0;
  uint8_t* read = stbi_load_from_memory(png.data(), static_cast<int>(png.size()), &width, &height,
                                        &channels, 3);
  ASSERT_NE(nullptr, read);
  EXPECT_EQ(480, width);
  EXPECT_EQ(320, height);
  EXPECT_EQ(chart.pixels, std::vector<uint8_t>(read, read + chart.pixels.size()));
  stbi_image_free(read);
}

// A gAMA of 1 / 2.2 is 45455 (PNG's own example), with the CRC that every such file bears.
TEST(TestChart, WritePng_NamesThePanelsColours) {
  const Bytes png = WriteAndRead({1, 1, {1, 2, 3}}, {});
  EXPECT_EQ(4u, BigEndianAt(png, 33));
  EXPECT_EQ(0x67414D41u, BigEndianAt(png, 37));  // gAMA
  EXPECT_EQ(45455u, BigEndianAt(png, 41));
  EXPECT_EQ(0x0BFC6105u, BigEndianAt(png, 45));
  EXPECT_EQ(32u, BigEndianAt(png, 49));
  EXPECT_EQ(0x6348524Du, BigEndianAt(png, 53));  // cHRM
  const uint32_t chromaticities[] = {31270, 32900, 68000, 32000, 26500, 69000, 15000, 6000};
  for (size_t i = 0; i < 8; ++i) EXPECT_EQ(chromaticities[i], BigEndianAt(png, 57 + 4 * i));
}

TEST(TestChart, WritePng_ReportsAFileThatCannotBeWritten) {
  EXPECT_THROW(WritePng(testing::TempDir() + "no\\such\\folder\\a.png", {1, 1, {1, 2, 3}}, {}),
               std::runtime_error);
}

}  // namespace
}  // namespace virtualnotebook
