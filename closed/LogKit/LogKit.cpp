#include "LogKit/LogKit.h"

#include <string>

#include "common/LogFile.h"

namespace {

std::string LevelName(LOG_MESSAGE_LEVEL level) {
  switch (level) {
    case LOG_MESSAGE_INFO:
      return "INFO";
    case LOG_MESSAGE_ERROR:
      return "ERROR";
  }
  return std::to_string(level);
}

}  // namespace

NxLogger& NxLogger::GetInstance() {
  static NxLogger instance;
  return instance;
}

void NxLogger::Log(LOG_MESSAGE_LEVEL level, std::wstringstream& text) {
  static const closed::LogFile file(L"C:\\ProgramData\\Comms\\NxVelora\\Log\\nxlogger.log");
  file.Append(closed::FormatLogLine(LevelName(level), text.str()));
}
