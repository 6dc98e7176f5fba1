// LogKit.dll: the maker's second logger. This header is the binding interface; the reference build
// beside it stands in for the closed one.
#pragma once

#include <sstream>

#if defined(LOGKIT_BUILD)
#define LOGKIT_API __declspec(dllexport)
#else
#define LOGKIT_API __declspec(dllimport)
#endif

// Its scale differs from LcdLogMessage's; only these two values are in use.
enum LOG_MESSAGE_LEVEL : int {
  LOG_MESSAGE_INFO = 3,
  LOG_MESSAGE_ERROR = 4,
};

class NxLogger {
 public:
  // The one logger of the process.
  LOGKIT_API static NxLogger& GetInstance();

  NxLogger(const NxLogger&) = delete;
  NxLogger& operator=(const NxLogger&) = delete;

  // Appends the stream's text as one line; the stream is only read. Any thread.
  //
  // The reference build: lines like those of LcdLogMessage, in
  // "C:\ProgramData\Comms\NxVelora\Log\nxlogger.log". A level of neither name stands as its number.
  LOGKIT_API void Log(LOG_MESSAGE_LEVEL level, std::wstringstream& text);

 private:
  NxLogger() = default;
};
