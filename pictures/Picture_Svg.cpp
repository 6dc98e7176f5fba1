// A picture as SVG 1.1.
#include "pictures/Picture.h"

#include <sstream>

namespace pictures {

class SvgWriter {
 public:
  explicit SvgWriter(const Picture& picture) : picture_(picture) {
    svg_.imbue(std::locale::classic());
  }

  std::string Write() {
    svg_ << "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 " << picture_.width_ << ' '
         << picture_.height_
         << "\" font-family=\"sans-serif\">\n<rect width=\"100%\" height=\"100%\" "
            "fill=\"white\"/>\n";
    for (const Picture::Shape& shape : picture_.shapes_) {
      std::visit([this](const auto& one) { Put(one); }, shape);
    }
    svg_ << "</svg>\n";
    return svg_.str();
  }

 private:
  void Put(const Picture::LineShape& line) {
    svg_ << (line.closed ? "<polygon" : "<polyline") << " fill=\"none\" stroke-linejoin=\"round\""
         << " stroke=\"" << line.colour << "\" stroke-width=\"" << line.width << "\" points=\"";
    for (const Point& point : line.points) {
      svg_ << point.x << ',' << point.y << ' ';
    }
    svg_ << "\"/>\n";
  }

  void Put(const Picture::AreaShape& area) {
    svg_ << "<rect x=\"" << area.topLeft.x << "\" y=\"" << area.topLeft.y << "\" width=\""
         << area.width << "\" height=\"" << area.height << "\" fill=\"" << area.colour << "\"/>\n";
  }

  void Put(const Picture::DotShape& dot) {
    svg_ << "<circle r=\"" << dot.radius << "\" cx=\"" << dot.centre.x << "\" cy=\"" << dot.centre.y
         << "\" fill=\"" << dot.colour << "\"/>\n";
  }

  void Put(const Picture::TextShape& text) {
    constexpr const char* kAnchors[] = {"start", "middle", "end"};
    svg_ << "<text x=\"" << text.at.x << "\" y=\"" << text.at.y << "\" font-size=\"" << text.size
         << "\" fill=\"" << text.colour << "\" text-anchor=\""
         << kAnchors[static_cast<size_t>(text.anchor)] << "\">";
    for (char c : text.text) {
      PutEscaped(c);
    }
    svg_ << "</text>\n";
  }

  void PutEscaped(char c) {
    switch (c) {
      case '&':
        svg_ << "&amp;";
        break;
      case '<':
        svg_ << "&lt;";
        break;
      case '>':
        svg_ << "&gt;";
        break;
      default:
        svg_ << c;
    }
  }

  const Picture& picture_;
  std::ostringstream svg_;
};

std::string Picture::Svg() const { return SvgWriter(*this).Write(); }

}  // namespace pictures
