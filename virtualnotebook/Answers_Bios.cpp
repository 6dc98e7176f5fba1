// The firmware behind WmiKit.
#include "virtualnotebook/Answers.h"

#include <algorithm>

#include "virtualnotebook/Recorder.h"

namespace virtualnotebook {

bool Notebook::FireBiosEvent(uint32_t eventId) const {
  BiosEventCallback callback = nullptr;
  Locked([&] { callback = biosEventCallback; });
  if (callback == nullptr) {
    return false;
  }
  callback(eventId);
  return true;
}

namespace answers {

int GetBiosInfo(Notebook& notebook, GetBiosInfoFunction* original, NxSDK::WmiInputParams& input,
                NxSDK::WmiOutputParams& output) {
  {
    const NotebookGuard guard(TheLock());
    BiosQuery query{
        .request = {},
        .outputWasZero = std::ranges::all_of(output.bytes, [](uint8_t byte) { return byte == 0; })};
    std::ranges::copy(input.bytes, query.request.begin());
    notebook.biosQueries.push_back(query);
    if (!notebook.biosAnswer.empty()) {
      std::copy_n(notebook.biosAnswer.begin(),
                  std::min(notebook.biosAnswer.size(), sizeof output.bytes), output.bytes);
      return 0;
    }
  }
  return original(input, output);
}

int StartEventMonitor(Notebook& notebook, StartEventMonitorFunction* original,
                      NxSDK::BiosEventMonitor* self, BiosEventCallback callback) {
  const int result = original(self, callback);
  if (result == 0) {
    const NotebookGuard guard(TheLock());
    notebook.biosEventCallback = callback;
  }
  return result;
}

int StopEventMonitor(Notebook& notebook, StopEventMonitorFunction* original,
                     NxSDK::BiosEventMonitor* self) {
  {
    const NotebookGuard guard(TheLock());
    notebook.biosEventCallback = nullptr;
  }
  return original(self);
}

}  // namespace answers
}  // namespace virtualnotebook
