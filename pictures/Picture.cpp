#include "pictures/Picture.h"

#include <algorithm>
#include <utility>

namespace pictures {
namespace {

void Move(std::vector<Point>& points, Point by) {
  for (Point& point : points) {
    point = {point.x + by.x, point.y + by.y};
  }
}

}  // namespace

Colour ColourOf(int red, int green, int blue) {
  constexpr char kDigits[] = "0123456789abcdef";
  Colour colour = "#";
  for (int value : {red, green, blue}) {
    const int byte = std::clamp(value, 0, 255);
    colour += kDigits[byte >> 4];
    colour += kDigits[byte & 15];
  }
  return colour;
}

void Picture::Line(std::vector<Point> points, Colour colour, double width) {
  shapes_.emplace_back(LineShape{std::move(points), std::move(colour), width, false});
}

void Picture::Outline(std::vector<Point> points, Colour colour, double width) {
  shapes_.emplace_back(LineShape{std::move(points), std::move(colour), width, true});
}

void Picture::Area(Point topLeft, double width, double height, Colour colour) {
  shapes_.emplace_back(AreaShape{topLeft, width, height, std::move(colour)});
}

void Picture::Dot(Point centre, double radius, Colour colour) {
  shapes_.emplace_back(DotShape{centre, radius, std::move(colour)});
}

void Picture::Text(Point at, std::string text, Colour colour, Anchor anchor, double size) {
  shapes_.emplace_back(TextShape{at, std::move(text), std::move(colour), anchor, size});
}

void Picture::Add(const Picture& other, Point topLeft) {
  for (Shape shape : other.shapes_) {
    if (auto* line = std::get_if<LineShape>(&shape)) {
      Move(line->points, topLeft);
    } else if (auto* area = std::get_if<AreaShape>(&shape)) {
      area->topLeft = {area->topLeft.x + topLeft.x, area->topLeft.y + topLeft.y};
    } else if (auto* dot = std::get_if<DotShape>(&shape)) {
      dot->centre = {dot->centre.x + topLeft.x, dot->centre.y + topLeft.y};
    } else if (auto* text = std::get_if<TextShape>(&shape)) {
      text->at = {text->at.x + topLeft.x, text->at.y + topLeft.y};
    }
    shapes_.push_back(std::move(shape));
  }
}

}  // namespace pictures
