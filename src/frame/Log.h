#pragma once

#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <memory_resource>
#include <string>
#include <string_view>
#include <type_traits>

namespace velora {

// Levels of CoreKit's LcdLogMessage.
enum LogLevel : int {
  LogDebug = 0,  // detail on paths and table contents
  LogInfo = 1,   // the entry line of an export, notes
  LogWarn = 2,   // a failure that the operation survives
  LogError = 3,  // a failure that changes the result
};

// A line in the making. One of usual length takes nothing from the heap: each export writes one,
// and a stream would be the dearest of what the library itself does on the way to the registry.
class LogLine {
 public:
  LogLine() { text_.reserve(kUsualLength); }

  template <typename Part>
  void Append(const Part& part) {
    if constexpr (std::convertible_to<const Part&, std::wstring_view>) {
      text_ += std::wstring_view(part);
    } else if constexpr (std::convertible_to<const Part&, std::string_view>) {
      AppendNarrow(part);
    } else if constexpr (std::same_as<Part, wchar_t>) {
      text_ += part;
    } else if constexpr (std::same_as<Part, char>) {
      AppendNarrow({&part, 1});
    } else if constexpr (std::floating_point<Part>) {
      AppendDouble(part);
    } else if constexpr (std::is_pointer_v<Part>) {
      AppendPointer(part);
    } else if constexpr (std::is_signed_v<decltype(+part)>) {
      AppendSigned(+part);
    } else {
      AppendUnsigned(+part);
    }
  }

  void Send(LogLevel level) const;

 private:
  static constexpr size_t kUsualLength = 255;  // characters

  void AppendNarrow(std::string_view text);
  void AppendDouble(double value);
  void AppendPointer(const void* pointer);
  void AppendSigned(int64_t number);
  void AppendUnsigned(uint64_t number, int base = 10);

  std::array<wchar_t, kUsualLength + 1> usual_;
  std::pmr::monotonic_buffer_resource memory_{usual_.data(), sizeof usual_};
  std::pmr::wstring text_{&memory_};
};

// The log of one function. Every line has one shape: message + "(" + qualified function name + ")".
//
//   constexpr FunctionLog log("ColorFieldApi::SetColorField");
//   log.Error(L"SetOsIccFile Failed, ret is", result);
//
// The parts of a message stand one behind the other: wide texts as they are, narrow texts widened
// one char at a time, numbers as a stream has them by default (a double shows six significant
// digits), pointers in hexadecimal. The host's C locale has no influence. Lines may be composed on
// any thread.
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
    LogLine line;
    (line.Append(parts), ...);
    line.Append(L'(');
    line.Append(function_);
    line.Append(L')');
    line.Send(level);
  }

 private:
  std::string_view function_;
};

}  // namespace velora
