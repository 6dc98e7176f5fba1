#include <iterator>
#include <string>

#include "CoreKit/CoreKit.h"
#include "common/LogFile.h"

namespace {

constexpr const char* kLevelNames[] = {"DEBUG", "INFO", "WARN", "ERROR"};

std::string LevelName(int level) {
  const bool known = level >= 0 && level < static_cast<int>(std::size(kLevelNames));
  return known ? kLevelNames[level] : std::to_string(level);
}

}  // namespace

void LcdLogMessage(int level, const wchar_t* text) {
  static const closed::LogFile file(L"C:\\ProgramData\\Comms\\NxVelora\\Log\\velora.log");
  file.Append(closed::FormatLogLine(LevelName(level), text ? text : L""));
}
