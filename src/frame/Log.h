#pragma once

#include <concepts>
#include <sstream>
#include <string>
#include <string_view>

namespace velora {

// Levels of CoreKit's LcdLogMessage.
enum LogLevel : int {
  LogDebug = 0,  // detail on paths and table contents
  LogInfo = 1,   // the entry line of an export, notes
  LogWarn = 2,   // a failure that the operation survives
  LogError = 3,  // a failure that changes the result
};

// The log of one function. Every line has one shape: message + "(" + qualified function name + ")".
//
//   constexpr FunctionLog log("ColorFieldApi::SetColorField");
//   log.Error(L"SetOsIccFile Failed, ret is", result);
//
// The parts of a message are streamed one after the other: wide texts as they are, narrow texts
// widened one char at a time, numbers in the stream's default format (a double shows six
// significant digits), pointers as the stream prints them. The host's C locale has no influence.
// Lines may be composed on any thread.
class FunctionLog {
 public:
  explicit constexpr FunctionLog(std::string_view function) : function_(function) {}

  template <typename... Parts>
  void Debug(const Parts&... parts) const {
    Write(LogDebug, parts...);
  }
  template <typename... Parts>
  void Info(const Parts&... parts) const {
    Write(LogInfo, parts...);
  }
  template <typename... Parts>
  void Warn(const Parts&... parts) const {
    Write(LogWarn, parts...);
  }
  template <typename... Parts>
  void Error(const Parts&... parts) const {
    Write(LogError, parts...);
  }

  // For the few functions whose level is a parameter.
  template <typename... Parts>
  void Write(LogLevel level, const Parts&... parts) const {
    std::wostringstream line;
    line.imbue(std::locale::classic());
    (Append(line, parts), ...);
    Send(level, line);
  }

 private:
  template <typename Part>
  static void Append(std::wostringstream& line, const Part& part) {
    if constexpr (std::convertible_to<const Part&, std::string_view>) {
      AppendNarrow(line, part);
    } else if constexpr (std::floating_point<Part>) {
      AppendDouble(line, part);
    } else {
      line << part;
    }
  }

  static void AppendNarrow(std::wostringstream& line, std::string_view text);
  static void AppendDouble(std::wostringstream& line, double value);
  void Send(LogLevel level, std::wostringstream& line) const;

  std::string_view function_;
};

}  // namespace velora
