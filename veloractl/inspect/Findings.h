// What an inspection found, line by line.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "veloractl/Report.h"

namespace veloractl {

using ByteSpan = std::span<const uint8_t>;

// How a file or a panel came out; the later, the worse.
enum class Verdict { Good, Noteworthy, OtherPanel, Damaged };
const char* NameOf(Verdict verdict);

// The checks in the order in which they were made.
class Findings {
 public:
  void Holds(const std::string& check, const std::string& found);
  // Worth knowing, and no matter.
  void Note(const std::string& check, const std::string& found);
  // Nothing to compare with.
  void NotTested(const std::string& check, const std::string& why);
  // The library lives with it.
  void Warn(const std::string& check, const std::string& found, const std::string& advice);
  // The panel is another one than the data's.
  void Differs(const std::string& check, const std::string& found, const std::string& advice);
  void Fail(const std::string& check, const std::string& found, const std::string& advice);
  // A check by its outcome.
  bool Expect(bool holds, const std::string& check, const std::string& found,
              const std::string& advice);
  // Those of a part, under its name.
  void Add(const std::string& part, const Findings& findings);

  Verdict Worst() const { return worst_; }
  // What to do about the first of the worst checks; empty: nothing.
  const std::string& Advice() const { return advice_; }
  const Json& Rows() const { return rows_; }

 private:
  void Put(const std::string& check, const char* result, const std::string& found,
           const std::string& advice);
  void Rate(Verdict verdict, const std::string& advice);

  Verdict worst_ = Verdict::Good;
  std::string advice_;
  Json rows_ = Json::array();
};

// --- Texts of bytes ---

std::string HexOf(ByteSpan bytes);  // upper case
// Printable ASCII as it is, every other byte as "\xNN".
std::string AsciiOf(ByteSpan bytes);
std::string AsciiOf(const std::string& bytes);
std::string ByteCount(uint64_t count);  // "24725 bytes"
// What is there of what is needed: "128 bytes", "12 of 128 bytes".
std::string OutOf(uint64_t there, uint64_t needed);
// At most six significant digits.
std::string NumberText(double value);
// The value as a report shows it.
double Rounded(double value, int digits);

// A row of a table of fields.
Json Field(const char* name, size_t offset, size_t size, const Json& value);

}  // namespace veloractl
