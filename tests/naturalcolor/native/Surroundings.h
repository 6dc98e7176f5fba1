// What natural colour's threaded part finds around it when it runs on this machine: settings,
// platform, helper, session, service and log.
#pragma once

#include <atomic>
#include <cstdint>
#include <vector>

#include "naturalcolor/Replay.h"

namespace surroundings {

// Nothing here orders two threads, which would hide their races from ThreadSanitizer: all atomics
// are used relaxed, and each thread has a record of its own.

// --- Set by the tests, at any time ---

inline std::atomic<bool> isSessionActive = true;
inline std::atomic<bool> isServiceRunning = true;
inline std::atomic<uint32_t> failedDeliveries = 0;  // of 1000, spread by a fixed seed
inline std::atomic<int> naturalColorStatus = 1;     // as the settings have it
inline std::atomic<double> sensorColor = 5000;      // likewise; also written by natural colour

// --- For the tests to watch ---

inline std::atomic<uint32_t> frames = 0;          // done, well or not
inline std::atomic<int> dimmingThread = 0;        // its number in the system
inline std::atomic<uint32_t> looksAtService = 0;  // of the thread that waits for it

// Everything since the last call, in its order. Other threads must be at their ends.
std::vector<testsupport::Event> TakeEvents();

}  // namespace surroundings
