// What each export takes of the heap, and what the library takes of a process.
#include "Exports.h"

#include <windows.h>

#include <psapi.h>

#include <cstdio>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "HeapMeter.h"

namespace bench {
namespace {

struct NamedCall {
  const char* name;
  std::function<void()> call;
};

// Every export that a host without threads of its own can call twice.
std::vector<NamedCall> CallsOf(virtualnotebook::HostedLibrary& library) {
  static ColorTemperatureConfig point = {100, 60};
  static ColorTemperatureRgb rgb = {1, 1, 1};
  static WhitePointFineTueInfo tuning = {.id = {}, .mode = P3Mode, .r = 1, .g = 0.95, .b = 0.9};
  static UserDesignInfo design = {};
  design.mode = USRDESIGN_MODE;
  std::strcpy(design.id, "Memory");
  std::strcpy(design.modeName, "Memory");
  design.gamut = 1;
  design.gamma = 2.2;
  design.whitePointX = 0.3457;
  design.whitePointY = 0.3585;
  static Color3DInfo info3D = {1, 1, 1, 0, 0};
  static Color2DInfo info2D = {183, 0};
  static FusionInfo fusion = {.status = 1, .colorInfo = {1, 1, 1, 0, 0}};
  static char vendor[16];
  return {
      {"Init", [&] { library.Init(); }},
      {"Set2DColorTemperature", [&] { library.Set2DColorTemperature(&info2D); }},
      {"Set3DColorTemperature", [&] { library.Set3DColorTemperature(&info3D); }},
      {"TransColorTemperatureConfigToRGB",
       [&] { library.TransColorTemperatureConfigToRGB(&point, 80, &rgb); }},
      {"Fusion", [&] { library.Fusion(FEATURE_TYPE_TEMPERATURE, &fusion, &info3D); }},
      {"GetVendor", [&] { library.GetVendor(vendor, sizeof vendor); }},
      {"SwitchUser", [&] { library.SwitchUser(); }},
      {"GetWhitePointStatus", [&] { library.GetWhitePointStatus(0); }},
      {"SetWhitePointStatus", [&] { library.SetWhitePointStatus(1); }},
      {"GetEyeProtectStatus", [&] { library.GetEyeProtectStatus(0); }},
      {"SetEyeProtectStatus", [&] { library.SetEyeProtectStatus(1); }},
      {"GetEyeProtectValue", [&] { library.GetEyeProtectValue(185); }},
      {"SetEyeProtectValue", [&] { library.SetEyeProtectValue(185); }},
      {"GetPSRStatusValue", [&] { library.GetPSRStatusValue(0); }},
      {"SetPSRStatusValue", [&] { library.SetPSRStatusValue(1); }},
      {"GetRhineValue", [&] { library.GetRhineValue(0.8); }},
      {"SetRhineValue", [&] { library.SetRhineValue(0.8); }},
      {"GetColorBlueValue", [&] { library.GetColorBlueValue(1); }},
      {"TransEyeProtectSliderValue", [&] { library.TransEyeProtectSliderValue(200); }},
      {"SetEyeProtectHandleType", [&] { library.SetEyeProtectHandleType(0); }},
      {"SetEyeProtectRGB", [&] { library.SetEyeProtectRGB(1, 0.9, 0.8); }},
      {"GetTemperatureValue", [&] { library.GetTemperatureValue(183); }},
      {"SetTemperatureValue", [&] { library.SetTemperatureValue(183); }},
      {"GetColorTemperatureType", [&] { library.GetColorTemperatureType(0); }},
      {"SetColorTemperatureType", [&] { library.SetColorTemperatureType(0); }},
      {"SetColorTemperatureConfig", [&] { library.SetColorTemperatureConfig(&point); }},
      {"GetColorTemperatureConfig", [&] { library.GetColorTemperatureConfig(&point); }},
      {"GetNatureColorStatus", [&] { library.GetNatureColorStatus(0); }},
      {"SetNatureColorStatus", [&] { library.SetNatureColorStatus(0); }},
      {"SetColorFieldCurrentMode", [&] { library.SetColorFieldCurrentMode(P3Mode); }},
      {"GetColorFieldCurrentMode", [&] { library.GetColorFieldCurrentMode(SrgbMode); }},
      {"SetColorFieldResetMode", [&] { library.SetColorFieldResetMode(P3Mode); }},
      {"GetColorFieldResetMode", [&] { library.GetColorFieldResetMode(SrgbMode); }},
      {"SetColorFieldSetType", [&] { library.SetColorFieldSetType(1); }},
      {"GetColorFieldSetType", [&] { library.GetColorFieldSetType(1); }},
      {"SetWhitePointTueValue", [&] { library.SetWhitePointTueValue(&tuning); }},
      {"GetWhitePointTueValue", [&] { library.GetWhitePointTueValue(&tuning); }},
      {"IsFeatureSupport", [&] { library.IsFeatureSupport(FEATURE_TYPE_TEMPERATURE); }},
      {"IsMultiUser", [&] { library.IsMultiUser(FEATURE_TYPE_TEMPERATURE); }},
      {"IsDisplayerCheck", [&] { library.IsDisplayerCheck(FEATURE_TYPE_TEMPERATURE); }},
      {"IsFirstUse", [&] { library.IsFirstUse(FEATURE_TYPE_TEMPERATURE); }},
      {"SetFeatureSupport", [&] { library.SetFeatureSupport(FEATURE_TYPE_TEMPERATURE, 1); }},
      {"SetMultiUser", [&] { library.SetMultiUser(FEATURE_TYPE_TEMPERATURE, 0); }},
      {"SetDisplayerCheck", [&] { library.SetDisplayerCheck(FEATURE_TYPE_TEMPERATURE, 1); }},
      {"SetFirstUseState", [&] { library.SetFirstUseState(FEATURE_TYPE_TEMPERATURE, 0); }},
      {"GetFrameWorkType", [&] { library.GetFrameWorkType(); }},
      {"SetFrameWorkType", [&] { library.SetFrameWorkType(1); }},
      {"InitConfigSyncObject", [&] { library.InitConfigSyncObject(FEATURE_TYPE_TEMPERATURE); }},
      {"NotifyConfigChange", [&] { library.NotifyConfigChange(FEATURE_TYPE_TEMPERATURE); }},
      {"WaitConfigChangeSync",
       [&] {
         library.NotifyConfigChange(FEATURE_TYPE_TEMPERATURE);
         library.WaitConfigChangeSync(FEATURE_TYPE_TEMPERATURE, 1000);
       }},
      {"SetColorField", [&] { library.SetColorField(P3Mode); }},
      {"SaveUserSelfColor", [&] { library.SaveUserSelfColor(&design); }},
      {"SetUserColorField", [&] { library.SetUserColorField("Memory"); }},
      {"EditUserColorField", [&] { library.EditUserColorField(&design, "Memory"); }},
      {"WhitePointFineTue", [&] { library.WhitePointFineTue(&tuning); }},
      {"SyncSysColorField", [&] { library.SyncSysColorField(); }},
      {"SyncCurrentModeIccFile", [&] { library.SyncCurrentModeIccFile(); }},
      {"ResetColorField", [&] { library.ResetColorField(); }},
      {"DeleteUserSelfColor", [&] { library.DeleteUserSelfColor("Memory"); }},
      {"OrbviewReportDataSync", [&] { library.OrbviewReportDataSync(1, "key", "value"); }},
  };
}

struct Heap {
  int64_t peak;
  int64_t kept;
};

Heap Measure(const HeapMeter& meter, const std::function<void()>& call) {
  meter.Reset();
  call();
  return {meter.Peak(), meter.Kept()};
}

size_t ResidentBytes() {
  PROCESS_MEMORY_COUNTERS counters = {};
  counters.cb = sizeof counters;
  K32GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
  return counters.WorkingSetSize;
}

}  // namespace

void PrintMemory(const Machine& machine) {
  // The closed libraries first, so that what is added is the library's own.
  for (const wchar_t* name : {L"CoreKit.dll", L"LogKit.dll", L"VeloraPlatform.dll", L"WmiKit.dll",
                              L"orbevent.dll", L"mscms.dll", L"dxva2.dll", L"wtsapi32.dll"}) {
    LoadLibraryW(name);
  }
  const size_t before = ResidentBytes();
  const HMODULE module = LoadLibraryW(L"VeloraCtlApi.dll");
  const size_t loaded = ResidentBytes();
  std::printf("{\n  \"resident when loaded\": %zu,\n", loaded - before);
  Host host(machine);
  const HeapMeter meter(module);
  std::printf("  \"exports\": {");
  const char* separator = "\n";
  for (const auto& [name, call] : CallsOf(host.library)) {
    const Heap first = Measure(meter, call);
    const Heap second = Measure(meter, call);
    std::printf("%s    \"%s\": [%lld, %lld, %lld, %lld]", separator, name, first.peak, first.kept,
                second.peak, second.kept);
    separator = ",\n";
  }
  std::printf("\n  },\n  \"resident when used\": %zu\n}\n", ResidentBytes() - before);
  FreeLibrary(module);
}

}  // namespace bench
