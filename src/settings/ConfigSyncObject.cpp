#include "settings/ConfigSyncObject.h"

#include <windows.h>

#include <iterator>

#include "frame/Log.h"

namespace velora {
namespace {

// A named event that this process may have open; closed with the object.
class SyncEvent {
 public:
  explicit constexpr SyncEvent(const wchar_t* name) : name_(name) {}
  SyncEvent(const SyncEvent&) = delete;
  SyncEvent& operator=(const SyncEvent&) = delete;
  ~SyncEvent() {
    if (IsOpen()) {
      Close();
    }
  }

  const wchar_t* Name() const { return name_; }
  bool IsOpen() const { return handle_ != nullptr; }
  HANDLE Handle() const { return handle_; }

  // Makes the event, or opens the one that another process made.
  bool Open() {
    SECURITY_DESCRIPTOR anyUser{};
    InitializeSecurityDescriptor(&anyUser, SECURITY_DESCRIPTOR_REVISION);
    ACL* const allowAll = nullptr;
    SetSecurityDescriptorDacl(&anyUser, TRUE, allowAll, FALSE);
    SECURITY_ATTRIBUTES attributes{
        .nLength = sizeof(attributes), .lpSecurityDescriptor = &anyUser, .bInheritHandle = FALSE};
    constexpr BOOL manualReset = FALSE;
    constexpr BOOL signalled = FALSE;
    handle_ = CreateEventW(&attributes, manualReset, signalled, name_);
    return IsOpen();
  }

  // False when the system refuses: the event stays open.
  bool Close() {
    if (CloseHandle(handle_) != TRUE) {
      return false;
    }
    handle_ = nullptr;
    return true;
  }

 private:
  const wchar_t* name_;
  HANDLE handle_ = nullptr;
};

// Indexed by FeatureType.
constinit SyncEvent events[] = {
    SyncEvent(L"Global\\FEATURE_TYPE_WHITEPOINT_EVENT_OBJECT"),
    SyncEvent(L"Global\\FEATURE_TYPE_EYE_PROTECT_EVENT_OBJECT"),
    SyncEvent(L"Global\\FEATURE_TYPE_TEMPERATURE_EVENT_OBJECT"),
    SyncEvent(L"Global\\FEATURE_TYPE_COLOR_FIELD_EVENT_OBJECT"),
    SyncEvent(L"Global\\FEATURE_TYPE_NATURAL_COLOR_EVENT_OBJECT"),
    SyncEvent(L"Global\\FEATURE_TYPE_DP_IN_OUT_EVENT_OBJECT"),
    SyncEvent(L"Global\\FEATURE_TYPE_ESD_EVENT_OBJECT"),
};

// Null for a type without an event.
SyncEvent* FindEvent(int type) {
  return type >= 0 && type < std::ssize(events) ? &events[type] : nullptr;
}

// A line about the type and its event; one without has an empty name.
void LogFailure(const FunctionLog& log, const wchar_t* what, int type, const SyncEvent* event) {
  log.Error(what, L"type:", type, L", obj name:", event != nullptr ? event->Name() : L"");
}

// Null, and a line in the log, for a type whose event is not open.
SyncEvent* FindOpenEvent(const FunctionLog& log, int type) {
  SyncEvent* const event = FindEvent(type);
  if (event == nullptr || !event->IsOpen()) {
    LogFailure(log, L"ConfigSyncObject not created!", type, event);
    return nullptr;
  }
  return event;
}

}  // namespace

ResultT ConfigSyncObject::InitConfigSyncObject(int type) {
  constexpr FunctionLog log("ConfigSyncObject::InitConfigSyncObject");
  SyncEvent* const event = FindEvent(type);
  if (event != nullptr && event->IsOpen()) {
    LogFailure(log, L"ConfigSyncObject has beed init!", type, event);
    return ResultAlreadyInit;
  }
  if (event == nullptr || !event->Open()) {
    LogFailure(log, L"Create ConfigSyncObject failed! ", type, event);
    return ResultCreateFailed;
  }
  return ResultOk;
}

ResultT ConfigSyncObject::FiniConfigSyncObject(int type) {
  constexpr FunctionLog log("ConfigSyncObject::FiniConfigSyncObject");
  SyncEvent* const event = FindOpenEvent(log, type);
  if (event == nullptr) {
    return ResultNotCreated;
  }
  if (!event->Close()) {
    LogFailure(log, L"FiniConfigSyncObject failed! ", type, event);
    return ResultFailed;
  }
  return ResultOk;
}

ResultT ConfigSyncObject::NotifyConfigChange(int type) {
  constexpr FunctionLog log("ConfigSyncObject::NotifyConfigChange");
  const SyncEvent* const event = FindOpenEvent(log, type);
  if (event == nullptr) {
    return ResultNotCreated;
  }
  if (SetEvent(event->Handle()) != TRUE) {
    LogFailure(log, L"NotifyConfigChange failed! ", type, event);
    return ResultFailed;
  }
  return ResultOk;
}

ResultT ConfigSyncObject::WaitConfigChangeSync(int type, uint32_t timeout) {
  constexpr FunctionLog log("ConfigSyncObject::WaitConfigChangeSync");
  const SyncEvent* const event = FindOpenEvent(log, type);
  if (event == nullptr) {
    return ResultNotCreated;
  }
  switch (WaitForSingleObject(event->Handle(), timeout == 0 ? INFINITE : timeout)) {
    case WAIT_OBJECT_0:
      return ResultOk;
    case WAIT_TIMEOUT:
      return ResultTimeout;
    default:
      return ResultFailed;
  }
}

}  // namespace velora
