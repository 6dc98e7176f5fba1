#include "pictures/Image.h"

#include <cstdlib>
#include <fstream>
#include <memory>
#include <stdexcept>

// stb's implementation stands in its header.
#define STB_IMAGE_WRITE_STATIC
#ifdef __clang_analyzer__  // clang-tidy has findings in the implementation, which is not ours
unsigned char* stbi_write_png_to_mem(const unsigned char*, int, int, int, int, int*);
#else
#define STB_IMAGE_WRITE_IMPLEMENTATION
#endif
#include <stb_image_write.h>

namespace pictures {

std::string EncodePng(const Image& image) {
  int length = 0;
  const std::unique_ptr<unsigned char, void (*)(void*)> png{
      stbi_write_png_to_mem(image.pixels.data(), 3 * image.width, image.width, image.height, 3,
                            &length),
      std::free};
  if (!png) {
    throw std::runtime_error("no memory for a picture");
  }
  return {png.get(), png.get() + length};
}

void WriteFile(const std::string& path, const std::string& content) {
  std::ofstream file(path, std::ios::binary);
  file << content;
  if (!file.flush()) {
    throw std::runtime_error("cannot write " + path);
  }
}

}  // namespace pictures
