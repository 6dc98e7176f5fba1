// The dimming, told a second time and plainly: takes what a run left in its order, and finds every
// step that does not follow from the ones before.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "velora/VeloraCtlApi.h"

namespace testsupport {

// What is seen of natural colour from outside.
enum class What {
  LogLine,
  StatusRead,    // by a start, from the settings
  SensorColor,   // stored
  PrinterCct,    // stored
  Delivered,     // value is red
  Refused,       // likewise
  ServiceFound,  // by the thread that waits for it
};

struct Event {
  uint64_t order;  // among all threads
  What what;
  double value;
  std::wstring text;  // of a log line
};

class Replay {
 public:
  explicit Replay(const NatureColorDataIn& settings) : settings_(settings) {}

  // May be called again with what came next.
  void Follow(const std::vector<Event>& events);

  // How many there were.
  struct Counts {
    uint32_t starts = 0;
    uint32_t readings = 0;
    uint32_t switches = 0;
    uint32_t frames = 0;
    uint32_t failedFrames = 0;
    uint32_t dimmings = 0;  // first frames
    uint32_t ends = 0;      // last frames
    uint32_t resumed = 0;   // by the wait for the service
  };
  const Counts& Count() const { return counts_; }
  float Shown() const { return shown_; }

 private:
  void OnStartsPrinterCct(double cct);
  void OnReading(const std::wstring& line);
  void OnSwitch(const std::wstring& line);
  void OnFrame(const std::wstring& line);
  void ExpectShown(float cct, const std::wstring& line);
  float Clamped(float cct) const;
  void Begin(float target);

  const NatureColorDataIn settings_;
  Counts counts_;

  float target_ = 5000;
  float shown_ = 5000;
  float reference_ = 5000;
  bool isDimming_ = false;
  bool isShort_ = false;
  bool hasFailed_ = false;
  int32_t step_ = 0;
  int32_t index_ = 0;
  uint32_t status_ = 0;
  bool isStarting_ = false;
  bool mayResume_ = false;  // the service was found

  double stored_ = 5000;  // "SensorColor"
  std::optional<Event> delivery_;
};

}  // namespace testsupport
