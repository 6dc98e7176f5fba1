// orbevent.dll: the maker's telemetry. This header is the binding interface; the reference build
// beside it stands in for the closed one.
//
// Members marked ORBEVENT_CLIENT_EMITS come with the header: every client has them as symbols of
// its own, used or not, and may export them.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#if defined(ORBEVENT_BUILD)
#define ORBEVENT_API __declspec(dllexport)
#else
#define ORBEVENT_API __declspec(dllimport)
#endif

#define ORBEVENT_CLIENT_EMITS [[gnu::used]]

// One event: its number, and keys with values. For one thread at a time.
class OrbEvent {
 public:
  // Limits of one event; lengths in bytes, without a terminator.
  ORBEVENT_CLIENT_EMITS static constexpr uint64_t MAX_KEY_LEN = 32;
  ORBEVENT_CLIENT_EMITS static constexpr uint64_t MAX_VALUE_LEN = 1024;
  ORBEVENT_CLIENT_EMITS static constexpr uint64_t MAX_PAIR_NUM = 256;
  ORBEVENT_CLIENT_EMITS static constexpr uint64_t MAX_ARR_SIZE = 100;  // no arrays here
  ORBEVENT_CLIENT_EMITS static constexpr uint64_t MAX_PATH_LEN = 256;  // no files here
  ORBEVENT_CLIENT_EMITS static constexpr uint64_t MAX_FILE_NUM = 10;
  ORBEVENT_CLIENT_EMITS static constexpr int32_t INVALID_NUM = -1;  // no number

  ORBEVENT_API explicit OrbEvent(int eventId);
  ORBEVENT_API ~OrbEvent();
  OrbEvent(const OrbEvent&) = delete;
  OrbEvent& operator=(const OrbEvent&) = delete;

  // Adds a pair; a key that is there already takes the new value. Texts are in the system code
  // page. A pair that breaks a limit, or whose key is empty, is left out whole and silently: a cut
  // key or value would be another one.
  ORBEVENT_API void PutString(const std::string& key, const std::string& value);

 private:
  friend class OrbView;

  int eventId_;
  std::vector<std::pair<std::string, std::string>> pairs_;
};

// Reports events. Has no state; all of it may be called from any thread.
class OrbView {
 public:
  OrbView() = default;
  OrbView(const OrbView&) = default;
  ORBEVENT_CLIENT_EMITS OrbView& operator=(const OrbView&) { return *this; }
  ORBEVENT_CLIENT_EMITS OrbView& operator=(OrbView&&) noexcept { return *this; }

  // Sends the event. A failure is silent.
  //
  // The reference build sends nothing: it appends one line to the local file
  // "C:\ProgramData\Comms\NxVelora\Log\orbevent.jsonl", a JSON object
  // {"time":"2024-02-29T23:59:59.999Z","process":4711,"event":705,"data":{"key":"value",...}}.
  ORBEVENT_API static void Report(OrbEvent& event);

  // Reports an event of any number of keys, each with its value behind it.
  template <typename... KeysAndValues>
  static void ReportKVPairs(int eventId, const KeysAndValues&... keysAndValues) {
    static_assert(sizeof...(keysAndValues) % 2 == 0, "each key takes a value");
    OrbEvent event(eventId);
    AddKVPairs(event, keysAndValues...);
    Report(event);
  }

  // Add one pair of such an event.
  ORBEVENT_CLIENT_EMITS static void VariadicKVPairs(OrbEvent& event, const char* key,
                                                    const std::string& value) {
    event.PutString(key, value);
  }
  ORBEVENT_CLIENT_EMITS static void VariadicKVPairs(OrbEvent& event, const std::string& key,
                                                    const std::string& value) {
    event.PutString(key, value);
  }

 private:
  static void AddKVPairs(OrbEvent&) {}

  template <typename Key, typename Value, typename... Rest>
  static void AddKVPairs(OrbEvent& event, const Key& key, const Value& value, const Rest&... rest) {
    VariadicKVPairs(event, key, value);
    AddKVPairs(event, rest...);
  }
};
