// Change events forward at once, without an entry line.
#include "settings/ConfigSyncObject.h"
#include "velora/VeloraCtlApi.h"

using velora::ConfigSyncObject;

ResultT InitConfigSyncObject(int type) { return ConfigSyncObject::InitConfigSyncObject(type); }

ResultT FiniConfigSyncObject(int type) { return ConfigSyncObject::FiniConfigSyncObject(type); }

ResultT NotifyConfigChange(int type) { return ConfigSyncObject::NotifyConfigChange(type); }

ResultT WaitConfigChangeSync(int type, uint32_t timeout) {
  return ConfigSyncObject::WaitConfigChangeSync(type, timeout);
}
