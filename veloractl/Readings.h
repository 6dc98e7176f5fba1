// Readings of a light sensor, as CSV: "lux,kelvin,time".
#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "veloractl/Report.h"

namespace veloractl {

struct Reading {
  enum class Kind { kReport, kGone, kBack };  // the last two: the sensor vanished, came back

  double time = 0;  // seconds
  Kind kind = Kind::kReport;
  std::optional<float> lux = {};  // none: not in the report
  std::optional<float> kelvin = {};
};

// Columns in the order of the heading; empty fields are not in the report, "nan" is not a number,
// "gone" and "back" in the first column are the sensor's own coming and going. Failure with
// kBadFile, with the line's number.
std::vector<Reading> ParseReadings(const std::string& text, const std::string& name);
std::string FormatReadings(std::span<const Reading> readings);

struct Trouble {
  const char* name;
  const char* story;
  std::vector<Reading> readings;
};

// Met in the field.
std::span<const Trouble> Troubles();

// A trouble of this name, or else the file's.
std::vector<Reading> ReadingsOf(const std::string& troubleOrFile);

}  // namespace veloractl
