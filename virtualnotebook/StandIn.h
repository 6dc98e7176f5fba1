// The stand-in of one imported function: recorded, made to fail, answered or forwarded.
#pragma once

#include <windows.h>

#include <algorithm>
#include <cstddef>
#include <sstream>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>

#include "virtualnotebook/ImportRedirection.h"
#include "virtualnotebook/Recorder.h"

namespace virtualnotebook {

// A text as a template argument.
template <size_t kSize>
struct FixedText {
  char text[kSize];

  // NOLINTNEXTLINE(google-explicit-constructor): a literal as a template argument becomes one
  consteval FixedText(const char (&literal)[kSize]) { std::copy_n(literal, kSize, text); }
};

std::wstring WideText(const std::string& text);
std::wstring KeyText(HKEY key);

// An argument as the record shows it. Argument: the parameter's declared type; what the callee only
// writes, and records, show as pointers.
template <typename Argument>
std::wstring AsText(const std::remove_reference_t<Argument>& value) {
  using Value = std::remove_cvref_t<Argument>;
  if constexpr (std::is_arithmetic_v<Value>) {
    return std::to_wstring(value);
  } else if constexpr (std::is_enum_v<Value>) {
    return std::to_wstring(static_cast<std::underlying_type_t<Value>>(value));
  } else if constexpr (std::is_same_v<Value, HKEY>) {
    return KeyText(value);
  } else if constexpr (std::is_same_v<Value, const wchar_t*>) {
    return value == nullptr ? L"null" : value;
  } else if constexpr (std::is_same_v<Value, const char*>) {
    return value == nullptr ? L"null" : WideText(value);
  } else if constexpr (std::is_pointer_v<Value>) {
    return value == nullptr ? L"null" : L"pointer";
  } else if constexpr (std::is_same_v<Argument, const std::wstring&>) {
    return value;
  } else if constexpr (std::is_same_v<Argument, const std::string&>) {
    return WideText(value);
  } else if constexpr (std::is_same_v<Argument, std::wstringstream&>) {
    return value.str();
  } else {
    return L"pointer";
  }
}

template <typename Result>
Result Suffer(const Fault& fault) {
  if (fault.exception) {
    throw std::runtime_error(*fault.exception);
  }
  SetLastError(fault.lastError);
  if constexpr (std::is_pointer_v<Result>) {
    return reinterpret_cast<Result>(static_cast<uintptr_t>(fault.result));
  } else if constexpr (std::is_integral_v<Result>) {
    return static_cast<Result>(fault.result);
  } else {
    return Result();
  }
}

// No answer of the notebook's own: the call goes on to the real function.
struct Forward {
  template <typename Result, typename... Parameters, typename... Arguments>
  Result operator()(Notebook&, Result (*original)(Parameters...), Arguments&&... arguments) const {
    return original(std::forward<Arguments>(arguments)...);
  }
};

// kAnswer(notebook, original, arguments...) gives the result of a call for which no fault is due.
template <FixedText kName, typename Function, auto kAnswer>
class StandIn;

template <FixedText kName, typename Result, typename... Arguments, auto kAnswer>
class StandIn<kName, Result(Arguments...), kAnswer> {
 public:
  static Result Call(Arguments... arguments) {
    const DWORD lastError = GetLastError();
    Notebook* const notebook = Recorder::Current();
    if (notebook == nullptr) {  // a pointer to the stand-in outlived the notebook
      return original(std::forward<Arguments>(arguments)...);
    }
    const auto fault = Recorder::Record(*notebook, {kName.text, {AsText<Arguments>(arguments)...}});
    SetLastError(lastError);
    if (fault) {
      return Suffer<Result>(*fault);
    }
    return kAnswer(*notebook, original, std::forward<Arguments>(arguments)...);
  }

  static inline Result (*original)(Arguments...) = nullptr;
};

// A row of the table of imports.
template <FixedText kName, typename Function, auto kAnswer = Forward()>
ImportedFunction Import(const char* library, const char* symbol = nullptr) {
  using ThisStandIn = StandIn<kName, Function, kAnswer>;
  static constexpr auto kFunctionName = kName;
  return {library, symbol == nullptr ? kFunctionName.text : symbol, kFunctionName.text,
          reinterpret_cast<void*>(&ThisStandIn::Call),
          reinterpret_cast<void**>(&ThisStandIn::original)};
}

}  // namespace virtualnotebook
