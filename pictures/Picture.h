// Drawings of lines, areas and short texts, as an SVG file and as pixels.
#pragma once

#include <string>
#include <variant>
#include <vector>

#include "pictures/Image.h"

namespace pictures {

struct Point {
  double x;
  double y;

  friend bool operator==(const Point&, const Point&) = default;
};

// "#rrggbb"
using Colour = std::string;
Colour ColourOf(int red, int green, int blue);  // each 0 to 255

enum class Anchor { Start, Middle, End };

// Shapes in the order in which they were added, the later ones on top. Units are pixels at the
// scale 1, y runs down, the ground is white.
class Picture {
 public:
  Picture(double width, double height) : width_(width), height_(height) {}

  double Width() const { return width_; }
  double Height() const { return height_; }

  void Line(std::vector<Point> points, Colour colour, double width);
  void Outline(std::vector<Point> points, Colour colour, double width);  // closed
  void Area(Point topLeft, double width, double height, Colour colour);
  void Dot(Point centre, double radius, Colour colour);
  // From the baseline's start, middle or end. ASCII: other characters are "?" in pixels.
  void Text(Point at, std::string text, Colour colour, Anchor anchor = Anchor::Start,
            double size = 13);
  // All of another picture, with its top left corner there.
  void Add(const Picture& other, Point topLeft);

  std::string Svg() const;
  Image Render() const;

 private:
  struct LineShape {
    std::vector<Point> points;
    Colour colour;
    double width;
    bool closed;
  };
  struct AreaShape {
    Point topLeft;
    double width;
    double height;
    Colour colour;
  };
  struct DotShape {
    Point centre;
    double radius;
    Colour colour;
  };
  struct TextShape {
    Point at;
    std::string text;
    Colour colour;
    Anchor anchor;
    double size;
  };
  using Shape = std::variant<LineShape, AreaShape, DotShape, TextShape>;

  double width_;
  double height_;
  std::vector<Shape> shapes_;

  friend class SvgWriter;
  friend class Canvas;
};

}  // namespace pictures
