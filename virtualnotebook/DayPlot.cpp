#include "virtualnotebook/DayPlot.h"

#include <fstream>
#include <ostream>
#include <stdexcept>

namespace virtualnotebook {
namespace {

constexpr double kDay = 24;
constexpr double kLeft = 60;
constexpr double kWidth = 960;  // of the axes
constexpr double kPictureWidth = 1040;
constexpr double kPictureHeight = 640;

double X(double hour) { return kLeft + kWidth * hour / kDay; }

// One of the two diagrams: where it stands, and what its axis shows.
struct Axes {
  double top;
  double height;
  double low;
  double high;
  double tick;
  const char* unit;

  double Y(double value) const { return top + height * (high - value) / (high - low); }
};

constexpr Axes kTemperatures = {
    .top = 70, .height = 310, .low = 2000, .high = 7500, .tick = 1000, .unit = "K"};
constexpr Axes kGains = {
    .top = 430, .height = 160, .low = 0.5, .high = 1.1, .tick = 0.1, .unit = "gain"};

struct Line {
  const char* label;
  const char* style;  // attributes of the line
  double (*value)(const DaySample& sample);
};

// Drawn in this order: the thin ones lie on top.
constexpr Line kTemperatureLines[] = {
    {"on the panel", "stroke=\"#7aa7e0\" stroke-width=\"5\"",
     [](const DaySample& sample) { return sample.delivered; }},
    {"the room", "stroke=\"#c06010\" stroke-width=\"1.2\"",
     [](const DaySample& sample) { return sample.ambient; }},
    {"target", "stroke=\"black\" stroke-width=\"1.2\" stroke-dasharray=\"5 3\"",
     [](const DaySample& sample) { return sample.target; }},
};
constexpr Line kGainLines[] = {
    {"red", "stroke=\"#d02020\" stroke-width=\"2\"",
     [](const DaySample& sample) { return sample.gains[0]; }},
    {"green", "stroke=\"#108030\" stroke-width=\"2\"",
     [](const DaySample& sample) { return sample.gains[1]; }},
    {"blue", "stroke=\"#2040d0\" stroke-width=\"2\"",
     [](const DaySample& sample) { return sample.gains[2]; }},
};

void DrawAxes(std::ostream& svg, const Axes& axes) {
  const double bottom = axes.top + axes.height;
  svg << "<g stroke=\"#ddd\">";
  for (int hour = 0; hour <= kDay; hour += 3) {
    svg << "<path d=\"M" << X(hour) << ' ' << axes.top << 'V' << bottom << "\"/>";
  }
  const auto forEachTick = [&](auto&& draw) {
    // By number, so that the steps' rounding does not add up.
    for (int i = 1; axes.low + i * axes.tick < axes.high; ++i) {
      draw(axes.low + i * axes.tick);
    }
  };
  forEachTick([&](double value) {
    svg << "<path d=\"M" << kLeft << ' ' << axes.Y(value) << 'H' << kLeft + kWidth << "\"/>";
  });
  svg << "</g>\n<rect x=\"" << kLeft << "\" y=\"" << axes.top << "\" width=\"" << kWidth
      << "\" height=\"" << axes.height << "\" stroke=\"#888\"/>\n<g fill=\"black\">";
  for (int hour = 0; hour <= kDay; hour += 3) {
    svg << "<text text-anchor=\"middle\" x=\"" << X(hour) << "\" y=\"" << bottom + 18 << "\">"
        << hour << ":00</text>";
  }
  forEachTick([&](double value) {
    svg << "<text text-anchor=\"end\" x=\"" << kLeft - 6 << "\" y=\"" << axes.Y(value) + 4 << "\">"
        << value << "</text>";
  });
  svg << "<text text-anchor=\"end\" x=\"" << kLeft - 6 << "\" y=\"" << axes.top + 6 << "\">"
      << axes.unit << "</text></g>\n";
}

// Steps: a value holds until the next sample.
void DrawLine(std::ostream& svg, const Axes& axes, const Line& line,
              const std::vector<DaySample>& samples) {
  svg << "<polyline stroke-linejoin=\"round\" " << line.style << " points=\"";
  for (size_t i = 0; i < samples.size(); ++i) {
    const double y = axes.Y(line.value(samples[i]));
    const double until = i + 1 < samples.size() ? samples[i + 1].hour : kDay;
    svg << X(samples[i].hour) << ',' << y << ' ' << X(until) << ',' << y << ' ';
  }
  svg << "\"/>\n";
}

template <size_t count>
void Draw(std::ostream& svg, const Axes& axes, const Line (&lines)[count],
          const std::vector<DaySample>& samples) {
  constexpr double kSwatch = 34;
  constexpr double kEntry = 150;
  DrawAxes(svg, axes);
  double x = kLeft + kWidth - kEntry * count;
  for (const Line& line : lines) {
    DrawLine(svg, axes, line, samples);
    svg << "<path " << line.style << " d=\"M" << x << ' ' << axes.top - 14 << 'h' << kSwatch
        << "\"/><text fill=\"black\" x=\"" << x + kSwatch + 8 << "\" y=\"" << axes.top - 10 << "\">"
        << line.label << "</text>\n";
    x += kEntry;
  }
}

void DrawEvent(std::ostream& svg, const DayEvent& event) {
  for (const Axes& axes : {kTemperatures, kGains}) {
    svg << "<rect fill=\"#f0ead0\" x=\"" << X(event.from) << "\" y=\"" << axes.top << "\" width=\""
        << X(event.to) - X(event.from) << "\" height=\"" << axes.height << "\"/>";
  }
  svg << "<text fill=\"#605010\" text-anchor=\"middle\" x=\"" << X((event.from + event.to) / 2)
      << "\" y=\"" << kTemperatures.top + 18 << "\">" << event.label << "</text>\n";
}

}  // namespace

void WriteDayPlot(const std::string& path, const std::vector<DaySample>& samples,
                  const std::vector<DayEvent>& events) {
  std::ofstream svg(path);
  svg << "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 " << kPictureWidth << ' '
      << kPictureHeight << "\" font-family=\"sans-serif\" font-size=\"13\" fill=\"none\">\n"
      << "<rect width=\"100%\" height=\"100%\" fill=\"white\"/>\n<text fill=\"black\" x=\"" << kLeft
      << "\" y=\"30\" font-size=\"16\">Natural colour over a day</text>\n";
  for (const DayEvent& event : events) {
    DrawEvent(svg, event);
  }
  Draw(svg, kTemperatures, kTemperatureLines, samples);
  Draw(svg, kGains, kGainLines, samples);
  svg << "</svg>\n";
  if (!svg.flush()) {
    throw std::runtime_error("cannot write " + path);
  }
}

}  // namespace virtualnotebook
