// A picture as pixels: each shape covers a pixel by a part of 0 to 1, which its colour takes.
#include "pictures/Picture.h"

#include <stb_easy_font.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace pictures {
namespace {

constexpr double kFontAscent = 7;   // of the bitmap font, in its units
constexpr double kFontHeight = 10;  // what a font size is the height of

double DistanceToSegment(Point p, Point a, Point b) {
  const double dx = b.x - a.x;
  const double dy = b.y - a.y;
  const double length = dx * dx + dy * dy;
  const double t =
      length > 0 ? std::clamp(((p.x - a.x) * dx + (p.y - a.y) * dy) / length, 0.0, 1.0) : 0;
  return std::hypot(p.x - a.x - t * dx, p.y - a.y - t * dy);
}

// The length of what is common to [i, i + 1] and [from, to].
double Overlap(int i, double from, double to) {
  return std::clamp(std::min(i + 1.0, to) - std::max(double(i), from), 0.0, 1.0);
}

}  // namespace

class Canvas {
 public:
  explicit Canvas(const Picture& picture) : picture_(picture) {
    image_.width = static_cast<int>(std::lround(picture.width_));
    image_.height = static_cast<int>(std::lround(picture.height_));
    image_.pixels.assign(size_t{3} * PixelCount(), 0xFF);
  }

  Image Draw() {
    for (const Picture::Shape& shape : picture_.shapes_) {
      std::visit([this](const auto& one) { Put(one); }, shape);
    }
    return std::move(image_);
  }

 private:
  size_t PixelCount() const {
    return static_cast<size_t>(image_.width) * static_cast<size_t>(image_.height);
  }

  size_t IndexOf(int x, int y) const {
    return static_cast<size_t>(y) * static_cast<size_t>(image_.width) + static_cast<size_t>(x);
  }

  // Calls cover(x, y) for each pixel of the picture that the box touches.
  template <typename Cover>
  void ForBox(double left, double top, double right, double bottom, Cover cover) const {
    const auto bound = [](double value, int limit) {
      return static_cast<int>(std::clamp(value, 0.0, static_cast<double>(limit)));
    };
    const int endX = bound(std::ceil(right), image_.width);
    const int endY = bound(std::ceil(bottom), image_.height);
    for (int y = bound(std::floor(top), image_.height); y < endY; ++y) {
      for (int x = bound(std::floor(left), image_.width); x < endX; ++x) {
        cover(x, y);
      }
    }
  }

  void Blend(int x, int y, const Colour& colour, double part) {
    const long rgb = std::strtol(colour.c_str() + 1, nullptr, 16);
    for (int c = 0; c < 3; ++c) {
      uint8_t& value = image_.pixels[3 * IndexOf(x, y) + static_cast<size_t>(c)];
      const double wanted = static_cast<double>(rgb >> (16 - 8 * c) & 0xFF);
      value = static_cast<uint8_t>(std::lround(value + (wanted - value) * part));
    }
  }

  // A line's pieces overlap where they meet: the larger part counts.
  void Put(const Picture::LineShape& line) {
    std::vector<float> parts(PixelCount(), 0.0F);
    const double reach = line.width / 2 + 0.5;
    const size_t count = line.points.size();
    for (size_t i = line.closed ? 0 : 1; i < count; ++i) {
      const Point a = line.points[(i + count - 1) % count];
      const Point b = line.points[i];
      ForBox(std::min(a.x, b.x) - reach, std::min(a.y, b.y) - reach, std::max(a.x, b.x) + reach,
             std::max(a.y, b.y) + reach, [&](int x, int y) {
               const double part =
                   std::clamp(reach - DistanceToSegment({x + 0.5, y + 0.5}, a, b), 0.0, 1.0) *
                   std::min(line.width, 1.0);
               float& most = parts[IndexOf(x, y)];
               most = std::max(most, static_cast<float>(part));
             });
    }
    ForBox(0, 0, image_.width, image_.height, [&](int x, int y) {
      if (parts[IndexOf(x, y)] > 0) {
        Blend(x, y, line.colour, static_cast<double>(parts[IndexOf(x, y)]));
      }
    });
  }

  void Put(const Picture::AreaShape& area) {
    FillBox(area.topLeft, area.width, area.height, area.colour);
  }

  void Put(const Picture::DotShape& dot) {
    const double reach = dot.radius + 0.5;
    ForBox(dot.centre.x - reach, dot.centre.y - reach, dot.centre.x + reach, dot.centre.y + reach,
           [&](int x, int y) {
             const double distance = std::hypot(x + 0.5 - dot.centre.x, y + 0.5 - dot.centre.y);
             Blend(x, y, dot.colour, std::clamp(reach - distance, 0.0, 1.0));
           });
  }

  void Put(const Picture::TextShape& text) {
    struct Vertex {
      float x, y, z;
      unsigned char colour[4];
    };
    constexpr size_t kVerticesPerCharacter = 80;
    std::string ascii = text.text;
    std::ranges::replace_if(
        ascii, [](char c) { return c < ' ' || c > '~'; }, '?');
    std::vector<Vertex> vertices(4 + kVerticesPerCharacter * ascii.size());
    const int quads = stb_easy_font_print(0, 0, ascii.data(), nullptr, vertices.data(),
                                          static_cast<int>(vertices.size() * sizeof(Vertex)));
    const double scale = text.size / kFontHeight;
    const double width = scale * stb_easy_font_width(ascii.data());
    const double shift = text.anchor == Anchor::Start    ? 0
                         : text.anchor == Anchor::Middle ? width / 2
                                                         : width;
    for (size_t quad = 0; quad < static_cast<size_t>(quads); ++quad) {
      const Vertex& from = vertices[4 * quad];
      const Vertex& to = vertices[4 * quad + 2];
      const Point topLeft = {text.at.x - shift + scale * static_cast<double>(from.x),
                             text.at.y + scale * (static_cast<double>(from.y) - kFontAscent)};
      FillBox(topLeft, scale * static_cast<double>(to.x - from.x),
              scale * static_cast<double>(to.y - from.y), text.colour);
    }
  }

  void FillBox(Point topLeft, double width, double height, const Colour& colour) {
    const Point end = {topLeft.x + width, topLeft.y + height};
    ForBox(topLeft.x, topLeft.y, end.x, end.y, [&](int x, int y) {
      Blend(x, y, colour, Overlap(x, topLeft.x, end.x) * Overlap(y, topLeft.y, end.y));
    });
  }

  const Picture& picture_;
  Image image_;
};

Image Picture::Render() const { return Canvas(*this).Draw(); }

}  // namespace pictures
