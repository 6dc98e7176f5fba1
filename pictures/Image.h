#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace pictures {

struct Image {
  int width = 0;
  int height = 0;
  std::vector<uint8_t> pixels;  // R, G, B, row by row from the top
};

// The bytes of a PNG file. std::runtime_error without memory.
std::string EncodePng(const Image& image);

// std::runtime_error for a file that cannot be written.
void WriteFile(const std::string& path, const std::string& content);

}  // namespace pictures
