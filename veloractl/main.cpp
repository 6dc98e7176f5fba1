// veloractl.exe: a host of VeloraCtlApi for people and scripts. See docs/veloractl.md.
#include <windows.h>

#include <cstdio>

#include "veloractl/Application.h"

namespace {

// Wine's answer to a call of a function that it lacks: names of library and function.
constexpr DWORD kMissingFunction = 0x80000100;

// What the system or a closed library breaks off with: a sentence, and no window.
LONG WINAPI EndWithSentence(EXCEPTION_POINTERS* pointers) {
  const EXCEPTION_RECORD& exception = *pointers->ExceptionRecord;
  constexpr ULONG_PTR kFirstAddress = 0x10000;  // below it: a function's number
  if (exception.ExceptionCode == kMissingFunction && exception.NumberParameters == 2 &&
      exception.ExceptionInformation[1] >= kFirstAddress) {
    std::fprintf(stderr, "veloractl: this system's %s has no %s\n",
                 reinterpret_cast<const char*>(exception.ExceptionInformation[0]),
                 reinterpret_cast<const char*>(exception.ExceptionInformation[1]));
  } else {
    std::fprintf(stderr, "veloractl: a library broke off with exception %08lX\n",
                 exception.ExceptionCode);
  }
  TerminateProcess(GetCurrentProcess(), veloractl::kUnavailable);
  return EXCEPTION_EXECUTE_HANDLER;
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
  using namespace veloractl;
  SetUnhandledExceptionFilter(EndWithSentence);
  SetConsoleOutputCP(CP_UTF8);
  std::vector<std::string> arguments;
  for (int i = 1; i < argc; ++i) {
    arguments.push_back(ToUtf8(std::wstring(argv[i])));
  }
  Options options;
  const Outcome outcome = Execute(arguments, nullptr, &options);
  Print(outcome.text);
  if (outcome.report) {
    Print(options.json ? outcome.report->dump(2, ' ', false, Json::error_handler_t::replace) + "\n"
                       : AsTable(*outcome.report));
  }
  if (!outcome.error.empty()) {
    PrintError(outcome.error);
  }
  return outcome.status;
}
