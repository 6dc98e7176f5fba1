#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <iostream>
#include <mutex>
#include <stop_token>
#include <thread>

namespace testsupport {

// Ends the program, and says so, when the object lives longer than this: a thread hangs.
class Watchdog {
 public:
  explicit Watchdog(std::chrono::seconds limit)
      : thread_([limit](const std::stop_token& stop) { Watch(stop, limit); }) {}

 private:
  static void Watch(const std::stop_token& stop, std::chrono::seconds limit) {
    std::mutex mutex;
    std::condition_variable_any never;
    std::unique_lock lock(mutex);
    never.wait_for(lock, stop, limit, [] { return false; });
    if (!stop.stop_requested()) {
      std::cerr << "a thread hangs" << std::endl;
      std::abort();
    }
  }

  std::jthread thread_;
};

}  // namespace testsupport
