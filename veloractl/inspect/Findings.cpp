#include "veloractl/inspect/Findings.h"

#include <array>
#include <charconv>
#include <cmath>

namespace veloractl {

const char* NameOf(Verdict verdict) {
  constexpr const char* kNames[] = {"good", "good, with warnings", "of another panel", "damaged"};
  return kNames[static_cast<size_t>(verdict)];
}

void Findings::Put(const std::string& check, const char* result, const std::string& found,
                   const std::string& advice) {
  rows_.push_back({{"check", check}, {"result", result}, {"found", found}, {"advice", advice}});
}

void Findings::Rate(Verdict verdict, const std::string& advice) {
  if (verdict > worst_) {
    worst_ = verdict;
    advice_ = advice;
  }
}

void Findings::Holds(const std::string& check, const std::string& found) {
  Put(check, "holds", found, "");
}

void Findings::Note(const std::string& check, const std::string& found) {
  Put(check, "note", found, "");
}

void Findings::NotTested(const std::string& check, const std::string& why) {
  Put(check, "not tested", why, "");
}

void Findings::Warn(const std::string& check, const std::string& found, const std::string& advice) {
  Put(check, "warning", found, advice);
  Rate(Verdict::Noteworthy, advice);
}

void Findings::Differs(const std::string& check, const std::string& found,
                       const std::string& advice) {
  Put(check, "differs", found, advice);
  Rate(Verdict::OtherPanel, advice);
}

void Findings::Fail(const std::string& check, const std::string& found, const std::string& advice) {
  Put(check, "fails", found, advice);
  Rate(Verdict::Damaged, advice);
}

bool Findings::Expect(bool holds, const std::string& check, const std::string& found,
                      const std::string& advice) {
  if (holds) {
    Holds(check, found);
  } else {
    Fail(check, found, advice);
  }
  return holds;
}

void Findings::Add(const std::string& part, const Findings& findings) {
  for (Json row : findings.rows_) {
    row["check"] = part + ": " + row["check"].get<std::string>();
    rows_.push_back(std::move(row));
  }
  Rate(findings.worst_, part + ": " + findings.advice_);
}

std::string HexOf(ByteSpan bytes) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  for (uint8_t byte : bytes) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 15];
  }
  return text;
}

std::string AsciiOf(ByteSpan bytes) {
  std::string text;
  for (uint8_t byte : bytes) {
    if (byte >= ' ' && byte <= '~') {
      text += static_cast<char>(byte);
    } else {
      text += "\\x" + HexOf({&byte, 1});
    }
  }
  return text;
}

std::string AsciiOf(const std::string& bytes) {
  return AsciiOf(ByteSpan(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()));
}

std::string ByteCount(uint64_t count) {
  return std::to_string(count) + (count == 1 ? " byte" : " bytes");
}

std::string OutOf(uint64_t there, uint64_t needed) {
  return there >= needed ? ByteCount(needed) : std::to_string(there) + " of " + ByteCount(needed);
}

std::string NumberText(double value) {
  std::array<char, 32> digits;
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value,
                                 std::chars_format::general, 6);
  return {digits.data(), end.ptr};
}

double Rounded(double value, int digits) {
  const double scale = std::pow(10.0, digits);
  return std::round(value * scale) / scale;
}

Json Field(const char* name, size_t offset, size_t size, const Json& value) {
  return {{"field", name}, {"offset", offset}, {"size", size}, {"value", value}};
}

}  // namespace veloractl
