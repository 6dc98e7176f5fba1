#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>

#include "naturalcolor/CctCurve.h"
#include "naturalcolor/DimmingFrames.h"
#include "velora/VeloraCtlApi.h"

namespace velora {

// Walks the display's colour temperature after the room's: takes readings and changes of the
// status, and delivers the frames of a dimming on a thread of its own.
//
// Threads: StartCctDimming and SyncNatureColorStatus may be called from any; start and stop come
// from one. cctMutex_ guards all dimming state and is held for a whole frame, with its delivery:
// a slow one delays readings and loses none. The atomic flags are also set without it.
//
// Sources by topic:
//   NaturalColorAdjustAlgorithm.cpp               start, stop, readings, status
//   NaturalColorAdjustAlgorithm_Dimming.cpp       the dimming thread, one colour temperature shown
//   NaturalColorAdjustAlgorithm_WaitWinmgmt.cpp   the wait for the service that the helper needs
//   NaturalColorAdjustAlgorithm_Delivery.cpp      the two ways to the panel
class NaturalColorAdjustAlgorithm : private DimmingFrames {
 public:
  // Takes over the record and starts the dimming thread. A second start without a stop ends the
  // process.
  void InitNaturalColorAdjustAlgorithm(const NatureColorDataIn* dataIn);

  // Waits for the frame under way, at most. Members keep their values for the next start.
  void StopNaturalColorAdjustAlgorithm();

  // A reading: the room's colour temperature in kelvin and its illuminance in lux. 1 where there is
  // no curve to follow, else 0.
  int StartCctDimming(float targetCct, float sensorLight);

  // Natural colour was switched: the display goes to where the new status has it.
  void SyncNatureColorStatus(uint32_t status);

 private:
  // --- Dimming ---

  void IsFlushTemper();
  int CctDimming();
  void DeliverFrame();
  void StopCctThread();

  // Shows this colour temperature: the curve's gains for a status that is not 0, else neutral ones,
  // fused with the other features. False when it was not delivered; the settings keep it all the
  // same.
  bool SetColorTemper(float cct, uint32_t status);
  void SetPreviousCct(float cct);

  // --- Delivery ---

  // Whether anybody could see the frame.
  bool IsFoundActiveSession() const;

  bool SetColorTemperByPlatform(const Color3DInfo* info) const;

  // True when the helper was started, whatever it then does.
  bool SetColorTemperByVeloraAssistant(const Color3DInfo* info);

  // Whether the service that the helper's start leans on is there. Where it is not, a thread waits
  // for it and resumes the dimming.
  bool IsWinmgmtThere();
  int WaitWinmgmtLoop();
  void StopWaitThread();

  // --- Members ---

  // executionType_: this process reaches the display itself. With any other value the helper in the
  // user's session does.
  static constexpr int32_t kByPlatform = 1;

  int32_t msPerFrame_ = 100;
  bool isNewMethod_ = false;
  float dimmingCct_ = 0.0F;  // the curve's neutral point; 0: it has none
  CctCurve cctMappingCurve_;
  std::atomic<uint32_t> naturalColorStatus_ = 0;
  float sensorLight_ = 300.0F;   // of the reading that set the target
  bool isSetColorFail_ = false;  // the last delivery failed
  float previousCct_ = kDefaultCct;
  int32_t executionType_ = 0;

  std::mutex cctMutex_;
  std::condition_variable cctCond_;
  std::thread cctThread_;
  std::atomic<bool> isRunning_ = true;
  std::atomic<bool> isCctThreadAtEnd_ = false;

  std::mutex waitMutex_;
  std::condition_variable waitCond_;
  std::thread waitThread_;
  std::atomic<bool> isWaitWinmgmt_ = false;
  const int32_t waitSeconds_ = 2;  // between two looks at the service

  const std::wstring processName_ = L"VeloraAssistant.exe";
  const int32_t maxProcessCount_ = 10;  // at this many one more is started
};

}  // namespace velora
