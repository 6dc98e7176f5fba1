#pragma once

namespace velora {

// Passes one telemetry event, a number with one key and one value, to the maker's library. That
// library keeps the limits of an event and sends it; nothing of it can be seen here.
class Telemetry {
 public:
  // Reports on the calling thread.
  static void ReportSync(int eventId, const char* key, const char* value);

  // Reports on a thread of its own and returns at once. The texts are copied first, so they need
  // not outlive the call. std::system_error when the thread can't be started.
  static void ReportAsync(int eventId, const char* key, const char* value);
};

}  // namespace velora
