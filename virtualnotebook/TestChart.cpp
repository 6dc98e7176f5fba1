#include "virtualnotebook/TestChart.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace virtualnotebook {
namespace {

using Rgb = std::array<double, 3>;  // 0 to 1

constexpr int kWidth = 480;
constexpr int kHeight = 320;

constexpr Rgb kBlack = {0, 0, 0};
constexpr Rgb kWhite = {1, 1, 1};
constexpr Rgb kBars[] = {kWhite,    {1, 1, 0}, {0, 1, 1}, {0, 1, 0},
                         {1, 0, 1}, {1, 0, 0}, {0, 0, 1}, kBlack};
constexpr Rgb kFullColours[] = {{1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {0, 1, 1}, {0, 0, 1}, {1, 0, 1}};
// From light to dark, chosen by eye.
constexpr Rgb kSkins[] = {{0.98, 0.86, 0.78}, {0.93, 0.76, 0.65}, {0.88, 0.67, 0.54},
                          {0.78, 0.57, 0.44}, {0.66, 0.46, 0.34}, {0.54, 0.36, 0.26},
                          {0.41, 0.27, 0.20}, {0.28, 0.18, 0.14}};
constexpr double kSaturations[] = {1.0, 0.5, 0.25};

Rgb Mix(const Rgb& from, const Rgb& to, double part) {
  Rgb out;
  for (size_t c = 0; c < 3; ++c) {
    out[c] = from[c] + (to[c] - from[c]) * part;
  }
  return out;
}

// A pure hue, 0 to 1 once round the circle from red: each channel is a trapezium.
Rgb Hue(double turn) {
  Rgb out;
  for (size_t c = 0; c < 3; ++c) {
    const double distance = std::abs(std::remainder(turn - static_cast<double>(c) / 3, 1.0)) * 6;
    out[c] = std::clamp(2 - distance, 0.0, 1.0);
  }
  return out;
}

// Fills bands of the chart from the top down; colour(x) with x from 0 at the left to 1 at the
// right.
class Chart {
 public:
  template <typename Colour>
  void Band(int height, Colour colour) {
    for (int row = 0; row < height; ++row) {
      for (int column = 0; column < kWidth; ++column) {
        for (double value : colour(column / (kWidth - 1.0))) {
          image_.pixels.push_back(static_cast<uint8_t>(std::lround(value * 255)));
        }
      }
    }
    image_.height += height;
  }

  template <size_t count>
  void Patches(int height, const Rgb (&colours)[count]) {
    Band(height,
         [&](double x) { return colours[std::min(static_cast<size_t>(x * count), count - 1)]; });
  }

  Image Take() { return std::move(image_); }

 private:
  Image image_{kWidth, 0, {}};
};

// --- PNG (ISO/IEC 15948) ---

using Text = std::string;  // bytes of a file

void AppendBigEndian(Text& out, uint32_t value) {
  for (int shift = 24; shift >= 0; shift -= 8) {
    out += static_cast<char>(value >> shift & 0xFF);
  }
}

uint32_t Crc(const Text& bytes) {
  uint32_t crc = 0xFFFFFFFF;
  for (char byte : bytes) {
    crc ^= static_cast<uint8_t>(byte);
    for (int bit = 0; bit < 8; ++bit) {
      crc = crc >> 1 ^ ((crc & 1) != 0 ? 0xEDB88320U : 0);
    }
  }
  return ~crc;
}

Text PngChunk(const Text& type, const std::vector<double>& values) {
  Text content = type;
  for (double value : values) {  // fixed point, 1/100000
    AppendBigEndian(content, static_cast<uint32_t>(std::lround(value * 100000)));
  }
  Text chunk;
  AppendBigEndian(chunk, static_cast<uint32_t>(content.size() - type.size()));
  chunk += content;
  AppendBigEndian(chunk, Crc(content));
  return chunk;
}

}  // namespace

Image DrawTestChart() {
  Chart chart;
  chart.Patches(56, kBars);
  chart.Band(20, [](double x) { return Mix(kBlack, kWhite, x); });
  chart.Band(20,
             [](double x) { return Mix(kBlack, kWhite, std::min(std::floor(x * 11), 10.0) / 10); });
  for (const Rgb& colour : kFullColours) {
    chart.Band(16, [&](double x) {
      return x < 0.5 ? Mix(kBlack, colour, 2 * x) : Mix(colour, kWhite, 2 * x - 1);
    });
  }
  chart.Patches(56, kSkins);
  for (double saturation : kSaturations) {
    chart.Band(24, [&](double x) { return Mix(kWhite, Hue(x), saturation); });
  }
  return chart.Take();
}

void WritePng(const std::string& path, const Image& image, const PanelDescription& panel) {
  const Text png = EncodePng(image);
  // The signature and the header chunk take 33 bytes; what describes the colours follows.
  constexpr size_t kHead = 8 + 25;
  Text file = png.substr(0, kHead);
  file += PngChunk("gAMA", {1 / panel.gamma});
  file += PngChunk("cHRM", {panel.white.x, panel.white.y, panel.red.x, panel.red.y, panel.green.x,
                            panel.green.y, panel.blue.x, panel.blue.y});
  file += png.substr(kHead);
  pictures::WriteFile(path, file);
}

}  // namespace virtualnotebook
