#include "frame/Log.h"

#include <array>
#include <charconv>

#include "CoreKit/CoreKit.h"

namespace velora {

void FunctionLog::AppendNarrow(std::wostringstream& line, std::string_view text) {
  for (const char c : text) {
    line.put(static_cast<wchar_t>(static_cast<unsigned char>(c)));
  }
}

// The stream's own conversion switches the C locale of the whole process while it formats, when a
// host has set one; to_chars gives the same six significant digits and touches nothing.
void FunctionLog::AppendDouble(std::wostringstream& line, double value) {
  std::array<char, 32> digits;  // "-1.23457e+308" is the longest
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value,
                                 std::chars_format::general, 6);
  AppendNarrow(line, {digits.data(), static_cast<size_t>(end.ptr - digits.data())});
}

void FunctionLog::Send(LogLevel level, std::wostringstream& line) const {
  line.put(L'(');
  AppendNarrow(line, function_);
  line.put(L')');
  LcdLogMessage(level, line.str().c_str());
}

}  // namespace velora
