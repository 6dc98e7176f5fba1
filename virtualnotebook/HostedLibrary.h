// The shipped VeloraCtlApi.dll as a host loads it, on a virtual notebook.
#pragma once

#include <windows.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "velora/VeloraCtlApi.h"
#include "virtualnotebook/ImportRedirection.h"
#include "virtualnotebook/Notebook.h"

namespace virtualnotebook {

// A DLL that is loaded for as long as the object lives.
class LoadedModule {
 public:
  explicit LoadedModule(const wchar_t* name);
  ~LoadedModule();
  LoadedModule(const LoadedModule&) = delete;
  LoadedModule& operator=(const LoadedModule&) = delete;

  HMODULE Handle() const { return handle_; }

  // The export of this name; std::runtime_error when there is none.
  template <typename Function>
  Function* Find(const char* name) const {
    return reinterpret_cast<Function*>(FindAddress(name));
  }

 private:
  void* FindAddress(const char* name) const;

  HMODULE handle_;
};

// A loaded library's exports, called by their names: library.SetColorField(2).
class LoadedLibrary {
 public:
  explicit LoadedLibrary(const wchar_t* name = L"VeloraCtlApi.dll") : module_(name) {}

  HMODULE Handle() const { return module_.Handle(); }

 private:
  LoadedModule module_;  // ahead of what is found in it

 public:
// A pointer to the export of the same name, of the type in the public header.
#define HOSTED_EXPORT(name) decltype(::name)* const name = module_.Find<decltype(::name)>(#name)
  HOSTED_EXPORT(Init);
  HOSTED_EXPORT(Fini);
  HOSTED_EXPORT(Set2DColorTemperature);
  HOSTED_EXPORT(Set3DColorTemperature);
  HOSTED_EXPORT(TransColorTemperatureConfigToRGB);
  HOSTED_EXPORT(Fusion);
  HOSTED_EXPORT(SetMonitorExtendMode);
  HOSTED_EXPORT(GetVendor);
  HOSTED_EXPORT(SwitchUser);
  HOSTED_EXPORT(GetWhitePointStatus);
  HOSTED_EXPORT(SetWhitePointStatus);
  HOSTED_EXPORT(DeleteUserDesignReg);
  HOSTED_EXPORT(EditUserSerialNumReg);
  HOSTED_EXPORT(GetUserRegHkey);
  HOSTED_EXPORT(GetWhitePointTueValue);
  HOSTED_EXPORT(SetWhitePointTueValue);
  HOSTED_EXPORT(InitConfigSyncObject);
  HOSTED_EXPORT(FiniConfigSyncObject);
  HOSTED_EXPORT(NotifyConfigChange);
  HOSTED_EXPORT(WaitConfigChangeSync);
  HOSTED_EXPORT(GetEyeProtectStatus);
  HOSTED_EXPORT(SetEyeProtectStatus);
  HOSTED_EXPORT(GetEyeProtectValue);
  HOSTED_EXPORT(SetEyeProtectValue);
  HOSTED_EXPORT(GetPSRStatusValue);
  HOSTED_EXPORT(SetPSRStatusValue);
  HOSTED_EXPORT(GetRhineValue);
  HOSTED_EXPORT(SetRhineValue);
  HOSTED_EXPORT(GetColorBlueValue);
  HOSTED_EXPORT(TransEyeProtectSliderValue);
  HOSTED_EXPORT(SetEyeProtectHandleType);
  HOSTED_EXPORT(SetEyeProtectRGB);
  HOSTED_EXPORT(GetTemperatureValue);
  HOSTED_EXPORT(SetTemperatureValue);
  HOSTED_EXPORT(GetColorTemperatureType);
  HOSTED_EXPORT(SetColorTemperatureType);
  HOSTED_EXPORT(GetColorTemperatureConfig);
  HOSTED_EXPORT(SetColorTemperatureConfig);
  HOSTED_EXPORT(GetNatureColorStatus);
  HOSTED_EXPORT(SetNatureColorStatus);
  HOSTED_EXPORT(InitNatureColor);
  HOSTED_EXPORT(FiniNatureColor);
  HOSTED_EXPORT(GetColorFieldCurrentMode);
  HOSTED_EXPORT(SetColorFieldCurrentMode);
  HOSTED_EXPORT(GetColorFieldResetMode);
  HOSTED_EXPORT(SetColorFieldResetMode);
  HOSTED_EXPORT(GetColorFieldSetType);
  HOSTED_EXPORT(SetColorFieldSetType);
  HOSTED_EXPORT(IsFeatureSupport);
  HOSTED_EXPORT(IsMultiUser);
  HOSTED_EXPORT(IsDisplayerCheck);
  HOSTED_EXPORT(IsFirstUse);
  HOSTED_EXPORT(SetFeatureSupport);
  HOSTED_EXPORT(SetMultiUser);
  HOSTED_EXPORT(SetDisplayerCheck);
  HOSTED_EXPORT(SetFirstUseState);
  HOSTED_EXPORT(GetFrameWorkType);
  HOSTED_EXPORT(SetFrameWorkType);
  HOSTED_EXPORT(InitColorFieldInfo);
  HOSTED_EXPORT(AddColorFieldModeInfo);
  HOSTED_EXPORT(AddUsrDesignInfo);
  HOSTED_EXPORT(SetColorField);
  HOSTED_EXPORT(SetUserColorField);
  HOSTED_EXPORT(WhitePointFineTue);
  HOSTED_EXPORT(SaveUserSelfColor);
  HOSTED_EXPORT(EditUserColorField);
  HOSTED_EXPORT(DeleteUserSelfColor);
  HOSTED_EXPORT(SyncSysColorField);
  HOSTED_EXPORT(SyncCurrentModeIccFile);
  HOSTED_EXPORT(ResetColorField);
  HOSTED_EXPORT(OrbviewReportDataSync);
  HOSTED_EXPORT(OrbviewReportDataAsync);
#undef HOSTED_EXPORT
};

// The thread-local slots that a library has allocated, given back at the end: the C++ runtime that
// is linked into it leaves one behind, and a process has but a thousand for all the lives of a
// library.
class ThreadLocalSlots {
 public:
  ThreadLocalSlots();
  ~ThreadLocalSlots();
  ThreadLocalSlots(const ThreadLocalSlots&) = delete;
  ThreadLocalSlots& operator=(const ThreadLocalSlots&) = delete;

  // From now on the module's calls of TlsAlloc are noted.
  static ImportRedirection NoteThoseOf(HMODULE module);

 private:
  static DWORD WINAPI NotingTlsAlloc();

  std::vector<DWORD> slots_;
};

// Loads the library from the program path, puts a notebook beneath it and frees it again, so that
// each object starts with new singletons. One at a time.
class HostedLibrary : private ThreadLocalSlots, public LoadedLibrary {
 public:
  HostedLibrary();

  virtualnotebook::Notebook notebook;  // leaves ahead of the library

 private:
  const ImportRedirection notedSlots_;
};

}  // namespace virtualnotebook
