#include "periphery/Telemetry.h"

#include <windows.h>

#include <process.h>

#include <memory>
#include <string>
#include <system_error>

#include "orbevent/orbevent.h"

namespace velora {
namespace {

struct ReportTask {
  int eventId;
  std::string key;
  std::string value;
};

// An exception has nowhere to go: it ends the process.
unsigned __stdcall RunTask(void* owned) noexcept {
  const std::unique_ptr<const ReportTask> task(static_cast<ReportTask*>(owned));
  Telemetry::ReportSync(task->eventId, task->key.c_str(), task->value.c_str());
  return 0;
}

}  // namespace

void Telemetry::ReportSync(int eventId, const char* key, const char* value) {
  OrbEvent event(eventId);
  event.PutString(key, value);
  OrbView::Report(event);
}

// Nothing waits for the thread: it ends by itself after its one event. It is no detached
// std::thread, because winpthreads, beneath it, may give a thread that ends while it is being
// detached back twice: later threads then share one record and run without their argument.
void Telemetry::ReportAsync(int eventId, const char* key, const char* value) {
  auto task = std::make_unique<ReportTask>(ReportTask{eventId, key, value});
  const auto thread =
      reinterpret_cast<HANDLE>(_beginthreadex(nullptr, 0, RunTask, task.get(), 0, nullptr));
  if (thread == nullptr) {
    throw std::system_error(std::make_error_code(std::errc::resource_unavailable_try_again));
  }
  static_cast<void>(task.release());  // the thread's from here on
  CloseHandle(thread);
}

}  // namespace velora
