// What a command found: one JSON value, printed as it is or as a plain table.
#pragma once

#include <cstdio>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>

namespace veloractl {

using Json = nlohmann::ordered_json;

// Exit statuses.
inline constexpr int kDone = 0;
inline constexpr int kRefused = 1;       // the library or the machine refused, or a check failed
inline constexpr int kBadArguments = 2;  // unknown names, values out of range
inline constexpr int kBadFile = 3;       // a file that can't be read, or isn't what it should be
inline constexpr int kUnavailable = 4;   // the library can't be loaded, a file can't be written

// Ends a command: one sentence for the user, without a full stop, and the exit status.
class Failure : public std::runtime_error {
 public:
  Failure(int status, const std::string& sentence)
      : std::runtime_error(sentence), status_(status) {}
  int Status() const { return status_; }

 private:
  int status_;
};

struct Report {
  Json value;
  int status = kDone;
  std::string sentence = {};  // why status isn't kDone, for standard error

  // NOLINTNEXTLINE(google-explicit-constructor): a report reads as its value
  Report(Json v) : value(std::move(v)) {}
  Report(Json v, int s, std::string why)
      : value(std::move(v)), status(s), sentence(std::move(why)) {}
};

// Members become lines "name  value", an array of objects a table with a heading, nested values
// titled sections.
std::string AsTable(const Json& value);

// A text as JSON takes it: UTF-8, made from the system's code page or UTF-16.
std::string ToUtf8(const std::string& text);
std::string ToUtf8(const std::wstring& text);
std::wstring FromUtf8(const std::string& text);
// In the system's code page, as the library takes texts; Failure where a letter has no place in it.
std::string ToCodePage(const std::string& utf8);

}  // namespace veloractl
