// WmiKit.dll: the maker's WMI access. This header is the binding interface; the reference build
// beside it stands in for the closed one.
//
// Members marked WMIKIT_CLIENT_EMITS come with the header: every client has them as symbols of its
// own, used or not, and may export them. The same goes for instantiations of ExcuteQuery.
#pragma once

#include <windows.h>

#include <oaidl.h>

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#if defined(WMIKIT_BUILD)
#define WMIKIT_API __declspec(dllexport)
#else
#define WMIKIT_API __declspec(dllimport)
#endif

#define WMIKIT_CLIENT_EMITS [[gnu::used]]

namespace NxSDK {

// Queries one WMI namespace, such as "ROOT\CIMV2". Any thread, whether it has joined COM or not; a
// thread that had not is left that way.
class WmiQuery {
 public:
  static constexpr int kNoResult = -15;

  WMIKIT_CLIENT_EMITS explicit WmiQuery(std::wstring nameSpace)
      : nameSpace_(std::move(nameSpace)) {}
  WMIKIT_CLIENT_EMITS ~WmiQuery() {}

  // Fills results with the property of each row. 0 on success, kNoResult when there was no row,
  // otherwise what the implementation gave; results then holds the rows that came before.
  template <typename T>
  int ExcuteQuery(const std::wstring& query, const std::wstring& property, std::vector<T>& results,
                  bool flag) {
    results.clear();
    const auto store = [&results](const VARIANT& value) {
      T result;
      GetResult(value, result);
      results.push_back(std::move(result));
    };
    const int status = ExcuteQueryImpl(query, property, store, flag);
    return status == 0 && results.empty() ? kNoResult : status;
  }

  // Runs the WQL text and calls back with the property of each row, in order; the value is
  // WmiKit's and lives for the call. 0 on success, otherwise the HRESULT of the step that failed; a
  // row without the property is a failure. Blocks until the last row. An exception of the callback
  // reaches the caller. The reference build does not read flag.
  WMIKIT_API int ExcuteQueryImpl(const std::wstring& query, const std::wstring& property,
                                 const std::function<void(const VARIANT&)>& onValue, bool flag);

  // The value as text: texts as they are, numbers in decimal, truth values as "True" and "False",
  // whatever the user's language. Empty for none, and for what has no text, such as an array.
  WMIKIT_API static void GetResult(const VARIANT& value, std::wstring& text);

 private:
  std::wstring nameSpace_;
};

// Records exchanged with the firmware: their bytes are the interface.
struct WmiInputParams {
  uint8_t bytes[64];
};
struct WmiOutputParams {
  uint8_t bytes[256];
};
static_assert(sizeof(WmiInputParams) == 64 && sizeof(WmiOutputParams) == 256);

class BiosWmi {
 public:
  // Asks the firmware; 0 on success. The firmware's side is not public: the reference build answers
  // "not available" (WBEM_E_NOT_AVAILABLE) and leaves output as it is.
  WMIKIT_API static int GetBiosInfo(WmiInputParams& input, WmiOutputParams& output);
};

// Firmware events; the callback comes on a thread of WmiKit's. The reference build starts and
// stops, and never fires.
class BiosEventMonitor {
 public:
  WMIKIT_API BiosEventMonitor();
  WMIKIT_API ~BiosEventMonitor();

  // Both give 0 on success. A null callback is refused; a stop without a start does nothing.
  WMIKIT_API int StartEventMonitor(void (*callback)(uint32_t eventId));
  WMIKIT_API int StopEventMonitor();
};

}  // namespace NxSDK
