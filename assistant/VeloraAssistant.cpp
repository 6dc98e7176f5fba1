// VeloraAssistant.exe: shows one colour temperature from within the user's session. A service that
// can't reach the display itself starts it for each frame:
//
//   VeloraAssistant R G B COLORBLUE PROTECT
//
// in the fields and units of Color3DInfo. Exit status: 0 shown, 1 refused by the platform, 2 bad
// arguments.
#include <charconv>
#include <cstdio>
#include <string>
#include <string_view>

#include "velora/VeloraCtlApi.h"

namespace {

constexpr int kShown = 0;
constexpr int kRefused = 1;
constexpr int kBadArguments = 2;

// The whole text is a number; the host's locale has no influence.
template <typename Number>
bool Parse(std::wstring_view text, Number& number) {
  std::string narrow;
  for (const wchar_t c : text) {
    if (c >= 0x80) return false;
    narrow.push_back(static_cast<char>(c));
  }
  const char* const end = narrow.data() + narrow.size();
  const auto [stop, error] = std::from_chars(narrow.data(), end, number);
  return error == std::errc() && stop == end;
}

bool ParseArguments(int count, wchar_t* const* arguments, Color3DInfo& info) {
  return count == 6 && Parse(arguments[1], info.r) && Parse(arguments[2], info.g) &&
         Parse(arguments[3], info.b) && Parse(arguments[4], info.colorBlue) &&
         Parse(arguments[5], info.protectValue);
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
  Color3DInfo info = {};
  if (!ParseArguments(argc, argv, info)) {
    std::fputs("usage: VeloraAssistant R G B COLORBLUE PROTECT\n", stderr);
    return kBadArguments;
  }
  // A platform that is started already, or needs no start, is as good.
  const bool started = Init() == 0;
  const int result = Set3DColorTemperature(&info);
  if (started) {
    Fini();
  }
  if (result != 0) {
    std::fprintf(stderr, "VeloraAssistant: the platform refused the colour, code %d\n", result);
  }
  return result == 0 ? kShown : kRefused;
}
