// Log lines, composed and thrown away: who takes them is another library.
#include "Jobs.h"

#include <cwchar>
#include <iterator>
#include <sstream>
#include <string>

#include "Harness.h"
#include "Inputs.h"
#include "PlainForms.h"
#include "frame/Log.h"

namespace bench {
namespace {

constexpr velora::FunctionLog kLog("LcdEdidParse::ParseEdidWrgb");

// What a stream makes of the same parts; it is the plain form of a line.
template <typename... Parts>
std::wstring Streamed(const Parts&... parts) {
  std::wostringstream line;
  (line << ... << parts);
  return std::move(line).str();
}

template <typename... Arguments>
void Print(const wchar_t* format, Arguments... arguments) {
  wchar_t line[256];
  benchmark::DoNotOptimize(std::swprintf(line, std::size(line), format, arguments...));
}

}  // namespace

void AddLogRows() {
  AddRow(kNumberLine, kOurs, std::nullopt, [] { kLog.Info(L"mode:", 2); });
  AddRow(kNumberLine, kPlainForm, std::nullopt,
         [] { return Streamed(L"mode:", 2, L"(LcdEdidParse::ParseEdidWrgb)"); });
  AddRow(kNumberLine, "swprintf", std::nullopt,
         [] { Print(L"mode:%d(LcdEdidParse::ParseEdidWrgb)", 2); });
  // As parsing the EDID logs it.
  const auto xy = PlainParseEdid(Edid()).chromaticities;
  AddRow(kDoublesLine, kOurs, std::nullopt, [xy] {
    kLog.Info(L"LcdEdidColorGamut:", xy[0], L", ", xy[1], L", ", xy[2], L", ", xy[3], L", ", xy[4],
              L", ", xy[5], L", ", xy[6], L", ", xy[7]);
  });
  AddRow(kDoublesLine, kPlainForm, std::nullopt, [xy] {
    return Streamed(L"LcdEdidColorGamut:", xy[0], L", ", xy[1], L", ", xy[2], L", ", xy[3], L", ",
                    xy[4], L", ", xy[5], L", ", xy[6], L", ", xy[7],
                    L"(LcdEdidParse::ParseEdidWrgb)");
  });
  AddRow(kDoublesLine, "swprintf", std::nullopt, [xy] {
    Print(L"LcdEdidColorGamut:%g, %g, %g, %g, %g, %g, %g, %g(LcdEdidParse::ParseEdidWrgb)", xy[0],
          xy[1], xy[2], xy[3], xy[4], xy[5], xy[6], xy[7]);
  });
}

}  // namespace bench
