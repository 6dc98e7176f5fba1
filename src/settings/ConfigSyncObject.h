#pragma once

#include <cstdint>

#include "velora/VeloraCtlApi.h"

namespace velora {

// The doorbell between processes that share settings: a global named event for each of the features
// 0 to 6. It carries no data; who is woken reads the registry. A ring wakes one waiter, stays
// pending until there is one, and several rings ahead of a wait count once.
//
// A process has each event open from its Init to its Fini or until the library is unloaded. Types
// without an event are refused like a closed one, and by Init with ResultCreateFailed.
//
// Threads: rings and waits from any; no lock guards Init and Fini of one type, nor a Fini while
// another thread waits.
class ConfigSyncObject {
 public:
  ConfigSyncObject() = delete;

  static ResultT InitConfigSyncObject(int type);
  static ResultT FiniConfigSyncObject(int type);
  static ResultT NotifyConfigChange(int type);
  // timeout in milliseconds; 0: no limit.
  static ResultT WaitConfigChangeSync(int type, uint32_t timeout);
};

}  // namespace velora
