#include "veloractl/Readings.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <sstream>

#include "veloractl/DescribedJson.h"

namespace veloractl {
namespace {

constexpr size_t kMostReadings = 100000;
constexpr float kNotANumber = std::numeric_limits<float>::quiet_NaN();

std::vector<std::string> Fields(const std::string& line) {
  std::vector<std::string> fields(1);
  for (const char c : line) {
    if (c == ',') {
      fields.emplace_back();
    } else if (c != ' ' && c != '\t' && c != '\r') {
      fields.back() += c;
    }
  }
  return fields;
}

class Parser {
 public:
  explicit Parser(std::string name) : name_(std::move(name)) {}

  void Take(const std::string& line) {
    ++number_;
    const std::vector<std::string> fields = Fields(line);
    if ((fields.size() == 1 && fields[0].empty()) || fields[0].starts_with('#')) {
      return;
    }
    if (fields.size() != columns_.size()) {
      Refuse("it has " + std::to_string(fields.size()) + " fields instead of 3");
    }
    if (readings_.empty() && TakeHeading(fields)) {
      return;
    }
    readings_.push_back(ReadingOf(fields));
    if (readings_.size() > kMostReadings) {
      Refuse("a file has at most 100000 readings");
    }
  }

  std::vector<Reading> Readings() && {
    if (readings_.empty()) {
      throw Failure(kBadFile, name_ + " holds no reading");
    }
    return std::move(readings_);
  }

 private:
  [[noreturn]] void Refuse(const std::string& why) const {
    throw Failure(kBadFile, name_ + ", line " + std::to_string(number_) + ": " + why);
  }

  bool TakeHeading(const std::vector<std::string>& fields) {
    std::vector<std::string> sorted = fields;
    std::ranges::sort(sorted);
    if (sorted != std::vector<std::string>{"kelvin", "lux", "time"}) {
      return false;
    }
    columns_ = fields;
    return true;
  }

  const std::string& FieldOf(const std::vector<std::string>& fields, const char* column) const {
    return fields[static_cast<size_t>(std::ranges::find(columns_, column) - columns_.begin())];
  }

  std::optional<float> Number(const std::string& field) const {
    if (field.empty()) {
      return std::nullopt;
    }
    if (field == "nan") {
      return kNotANumber;
    }
    char* end = nullptr;
    const double number = std::strtod(field.c_str(), &end);
    if (*end != '\0' || !std::isfinite(number) ||
        std::abs(number) > std::numeric_limits<float>::max()) {
      Refuse("\"" + field.substr(0, 40) + "\" is no number");
    }
    return static_cast<float>(number);
  }

  Reading ReadingOf(const std::vector<std::string>& fields) const {
    Reading reading;
    const std::optional<float> time = Number(FieldOf(fields, "time"));
    if (!time || !(*time >= 0)) {
      Refuse("it has no time");
    }
    reading.time = *time;
    if (fields[0] == "gone" || fields[0] == "back") {
      reading.kind = fields[0] == "gone" ? Reading::Kind::kGone : Reading::Kind::kBack;
      return reading;
    }
    reading.lux = Number(FieldOf(fields, "lux"));
    reading.kelvin = Number(FieldOf(fields, "kelvin"));
    return reading;
  }

  std::string name_;
  size_t number_ = 0;
  std::vector<std::string> columns_ = {"lux", "kelvin", "time"};
  std::vector<Reading> readings_;
};

std::string Format(const std::optional<float>& number) {
  if (!number) {
    return "";
  }
  if (std::isnan(*number)) {
    return "nan";
  }
  char text[40];
  std::snprintf(text, sizeof text, "%.9g", static_cast<double>(*number));
  return text;
}

Reading Light(double time, float lux, float kelvin) {
  return {.time = time, .lux = lux, .kelvin = kelvin};
}

// One reading a second, of 300 lux.
std::vector<Reading> EachSecond(std::span<const float> kelvins) {
  std::vector<Reading> readings;
  for (const float kelvin : kelvins) {
    readings.push_back(Light(static_cast<double>(readings.size()), 300, kelvin));
  }
  return readings;
}

}  // namespace

std::vector<Reading> ParseReadings(const std::string& text, const std::string& name) {
  Parser parser(name);
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    parser.Take(line);
  }
  return std::move(parser).Readings();
}

std::string FormatReadings(std::span<const Reading> readings) {
  std::string text = "lux,kelvin,time\n";
  for (const Reading& reading : readings) {
    char time[40];
    std::snprintf(time, sizeof time, "%.3f", reading.time);
    text += reading.kind == Reading::Kind::kGone ? "gone,"
            : reading.kind == Reading::Kind::kBack
                ? "back,"
                : Format(reading.lux) + "," + Format(reading.kelvin);
    text += "," + std::string(time) + "\n";
  }
  return text;
}

std::span<const Trouble> Troubles() {
  using Kind = Reading::Kind;
  static const std::vector<Trouble> troubles = {
      {"oscillation", "lamp light that swings round the threshold: each reading starts a dimming",
       EachSecond(std::vector<float>{4000, 4101, 4000, 4101, 4000, 4101, 4000, 4101})},
      {"flicker", "the same within the threshold: nothing may move behind the first dimming",
       EachSecond(std::vector<float>{4000, 4099, 4000, 4099, 4000, 4099, 4000, 4099})},
      {"zeros",
       "behind a resume from sleep the sensor tells zeros until it is awake",
       {Light(0, 300, 4800), Light(1, 0, 0), Light(2, 0, 0), Light(3, 0, 0), Light(4, 300, 4800)}},
      {"nan",
       "a driver that divides by zero in the dark",
       {Light(0, 300, 4800), Light(1, 0, kNotANumber), Light(2, kNotANumber, 4800),
        Light(3, kNotANumber, kNotANumber), Light(4, 300, 6000)}},
      {"vanish",
       "the sensor's driver is updated: it vanishes and comes back",
       {Light(0, 300, 4800),
        {.time = 1, .kind = Kind::kGone},
        {.time = 5, .kind = Kind::kBack},
        Light(6, 300, 6000)}},
      {"no-kelvin",
       "a sensor without a colour temperature: its reports move nothing",
       {{.time = 0, .lux = 300.0F}, {.time = 1, .lux = 20.0F}, {.time = 2, .lux = 300.0F}}},
  };
  return troubles;
}

std::vector<Reading> ReadingsOf(const std::string& troubleOrFile) {
  const auto found = std::ranges::find(Troubles(), troubleOrFile, &Trouble::name);
  return found != Troubles().end() ? found->readings
                                   : ParseReadings(ReadTextFile(troubleOrFile), troubleOrFile);
}

}  // namespace veloractl
