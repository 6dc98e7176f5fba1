#include "naturalcolor/NaturalColorAdjustAlgorithm.h"

#include <chrono>

#include "naturalcolor/RunningSystem.h"

namespace velora {

bool NaturalColorAdjustAlgorithm::IsWinmgmtThere() {
  if (!IsServiceRunning()) {
    if (!isWaitWinmgmt_) {
      StopWaitThread();  // one that has come to its end
      isWaitWinmgmt_ = true;
      waitThread_ = std::thread(&NaturalColorAdjustAlgorithm::WaitWinmgmtLoop, this);
    }
    return false;
  }
  if (isWaitWinmgmt_) {
    isWaitWinmgmt_ = false;
    waitCond_.notify_one();
  }
  return true;
}

// Resumes the dimming with a frame that the dimming thread starts anew. cctMutex_ is not taken:
// the dimming thread may hold it while it joins this one.
int NaturalColorAdjustAlgorithm::WaitWinmgmtLoop() {
  while (isWaitWinmgmt_) {
    std::unique_lock lock(waitMutex_);
    waitCond_.wait_for(lock, std::chrono::seconds(waitSeconds_));
    if (!isWaitWinmgmt_) {
      break;
    }
    if (IsServiceRunning()) {
      if (naturalColorStatus_ != 0) {
        isDimming_ = true;
        cctCond_.notify_one();
      }
      isWaitWinmgmt_ = false;
    }
  }
  return 0;
}

// A signal that the thread misses costs a look at the service.
void NaturalColorAdjustAlgorithm::StopWaitThread() {
  isWaitWinmgmt_ = false;
  if (waitThread_.joinable()) {
    waitCond_.notify_one();
    waitThread_.join();
  }
}

}  // namespace velora
