// What the shipped library offers to hosts and what it asks of the system, from the file's tables.
#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "virtualnotebook/HostedLibrary.h"

namespace virtualnotebook {
namespace {

// The compiler's names of the text types within the names of C++ functions.
#define STRING "NSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE"
#define WSTRING "NSt7__cxx1112basic_stringIwSt11char_traitsIwESaIwEEE"

using testing::IsSupersetOf;
using testing::UnorderedElementsAreArray;

// A loaded module's tables. Addresses in them are relative to its base.
class ModuleTables {
 public:
  explicit ModuleTables(HMODULE module) : base_(reinterpret_cast<const uint8_t*>(module)) {}

  const IMAGE_DATA_DIRECTORY& Directory(unsigned index) const {
    const auto& header =
        At<IMAGE_NT_HEADERS64>(static_cast<DWORD>(At<IMAGE_DOS_HEADER>(0).e_lfanew));
    return header.OptionalHeader.DataDirectory[index];
  }

  std::vector<std::string> Exports() const {
    const auto& exports =
        At<IMAGE_EXPORT_DIRECTORY>(Directory(IMAGE_DIRECTORY_ENTRY_EXPORT).VirtualAddress);
    EXPECT_EQ(exports.NumberOfFunctions, exports.NumberOfNames) << "an export has no name";
    const DWORD* const names = &At<DWORD>(exports.AddressOfNames);
    std::vector<std::string> texts;
    for (DWORD i = 0; i < exports.NumberOfNames; ++i) {
      texts.emplace_back(&At<char>(names[i]));
    }
    return texts;
  }

  // Function names by DLL, in lower case; an import by number counts as "#".
  std::map<std::string, std::set<std::string>> Imports() const {
    std::map<std::string, std::set<std::string>> imports;
    const auto* library =
        &At<IMAGE_IMPORT_DESCRIPTOR>(Directory(IMAGE_DIRECTORY_ENTRY_IMPORT).VirtualAddress);
    for (; library->Name != 0; ++library) {
      std::string name = &At<char>(library->Name);
      std::ranges::transform(name, name.begin(),
                             [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
      const auto* entry = &At<IMAGE_THUNK_DATA64>(library->OriginalFirstThunk);
      for (; entry->u1.AddressOfData != 0; ++entry) {
        imports[name].insert(
            IMAGE_SNAP_BY_ORDINAL64(entry->u1.Ordinal)
                ? "#"
                : At<IMAGE_IMPORT_BY_NAME>(static_cast<DWORD>(entry->u1.AddressOfData)).Name);
      }
    }
    return imports;
  }

 private:
  template <typename T>
  const T& At(DWORD offset) const {
    return *reinterpret_cast<const T*>(base_ + offset);
  }

  const uint8_t* base_;
};

class TablesTest : public testing::Test {
 protected:
  const LoadedModule module{L"VeloraCtlApi.dll"};
  const ModuleTables tables{module.Handle()};
};

TEST_F(TablesTest, ExportsAreTheseAndNoOthers) {
  const char* const names[] = {
      // Platform
      "Init",
      "Fini",
      "Set2DColorTemperature",
      "Set3DColorTemperature",
      "TransColorTemperatureConfigToRGB",
      "Fusion",
      // Displays
      "SetMonitorExtendMode",
      // Panel
      "GetVendor",
      // Users
      "SwitchUser",
      // White point settings
      "GetWhitePointStatus",
      "SetWhitePointStatus",
      // Eye protection settings
      "GetEyeProtectStatus",
      "SetEyeProtectStatus",
      "GetEyeProtectValue",
      "SetEyeProtectValue",
      "GetPSRStatusValue",
      "SetPSRStatusValue",
      "GetRhineValue",
      "SetRhineValue",
      "GetColorBlueValue",
      "TransEyeProtectSliderValue",
      "SetEyeProtectHandleType",
      "SetEyeProtectRGB",
      // Colour temperature settings
      "GetTemperatureValue",
      "SetTemperatureValue",
      "GetColorTemperatureType",
      "SetColorTemperatureType",
      "GetColorTemperatureConfig",
      "SetColorTemperatureConfig",
      // Natural colour settings
      "GetNatureColorStatus",
      "SetNatureColorStatus",
      "InitNatureColor",
      "FiniNatureColor",
      // Colour mode settings
      "GetColorFieldCurrentMode",
      "SetColorFieldCurrentMode",
      "GetColorFieldResetMode",
      "SetColorFieldResetMode",
      "GetColorFieldSetType",
      "SetColorFieldSetType",
      // User design and fine tuning
      "DeleteUserDesignReg",
      "EditUserSerialNumReg",
      "GetUserRegHkey",
      "GetWhitePointTueValue",
      "SetWhitePointTueValue",
      // Change events
      "InitConfigSyncObject",
      "FiniConfigSyncObject",
      "NotifyConfigChange",
      "WaitConfigChangeSync",
      // Feature flags
      "IsFeatureSupport",
      "IsMultiUser",
      "IsDisplayerCheck",
      "IsFirstUse",
      "SetFeatureSupport",
      "SetMultiUser",
      "SetDisplayerCheck",
      "SetFirstUseState",
      "GetFrameWorkType",
      "SetFrameWorkType",
      // Colour modes
      "InitColorFieldInfo",
      "AddColorFieldModeInfo",
      "AddUsrDesignInfo",
      "SetColorField",
      "SetUserColorField",
      "WhitePointFineTue",
      "SaveUserSelfColor",
      "EditUserColorField",
      "DeleteUserSelfColor",
      "SyncSysColorField",
      "SyncCurrentModeIccFile",
      "ResetColorField",
      // Telemetry
      "OrbviewReportDataSync",
      "OrbviewReportDataAsync",
      // Of the telemetry library's header
      "_ZN7OrbViewaSERKS_",
      "_ZN7OrbViewaSEOS_",
      "_ZN7OrbView15VariadicKVPairsER8OrbEventPKcRK" STRING,
      "_ZN7OrbView15VariadicKVPairsER8OrbEventRK" STRING "S9_",
      "_ZN8OrbEvent11MAX_KEY_LENE",
      "_ZN8OrbEvent13MAX_VALUE_LENE",
      "_ZN8OrbEvent12MAX_PAIR_NUME",
      "_ZN8OrbEvent12MAX_ARR_SIZEE",
      "_ZN8OrbEvent12MAX_PATH_LENE",
      "_ZN8OrbEvent12MAX_FILE_NUME",
      "_ZN8OrbEvent11INVALID_NUME",
      // Of the WMI library's header
      "_ZN5NxSDK8WmiQueryC1E" WSTRING,
      "_ZN5NxSDK8WmiQueryD1Ev",
      "_ZN5NxSDK8WmiQueryD2Ev",
      "_ZN5NxSDK8WmiQuery11ExcuteQueryI" WSTRING "EEiRKS7_S9_RSt6vectorIT_SaISB_EEb",
  };
  EXPECT_THAT(tables.Exports(), UnorderedElementsAreArray(names));
}

// The system and the closed libraries are called by plain imports, each by its name.
TEST_F(TablesTest, ImportsByName) {
  const auto imports = tables.Imports();
  const std::map<std::string, std::vector<std::string>> required = {
      {"advapi32.dll",
       {"RegOpenKeyW", "RegCreateKeyExW", "RegQueryValueExW", "RegSetValueExW", "RegDeleteKeyW",
        "RegCloseKey", "InitializeSecurityDescriptor", "SetSecurityDescriptorDacl",
        "OpenSCManagerW", "OpenServiceW", "QueryServiceStatus", "CloseServiceHandle"}},
      {"kernel32.dll",
       {"GetPrivateProfileStringW", "GetSystemFirmwareTable", "CreateFileA", "ReadFile",
        "WriteFile", "GetFileSizeEx", "CloseHandle", "CreateEventW", "SetEvent",
        "WaitForSingleObject", "GetModuleFileNameW", "CreateToolhelp32Snapshot", "Process32FirstW",
        "Process32NextW"}},
      {"ole32.dll", {"CoInitializeEx", "CoUninitialize", "CoCreateInstance", "PropVariantClear"}},
      {"wtsapi32.dll", {"WTSEnumerateSessionsW", "WTSQuerySessionInformationW", "WTSFreeMemory"}},
      {"user32.dll",
       {"EnumDisplayDevicesW", "EnumDisplayMonitors", "GetMonitorInfoW",
        "GetDisplayConfigBufferSizes", "QueryDisplayConfig", "SetDisplayConfig"}},
      {"dxva2.dll",
       {"GetNumberOfPhysicalMonitorsFromHMONITOR", "GetPhysicalMonitorsFromHMONITOR",
        "SetVCPFeature", "SaveCurrentSettings", "DestroyPhysicalMonitors"}},
      {"mscms.dll",
       {"WcsGetDefaultColorProfile", "WcsAssociateColorProfileWithDevice",
        "WcsDisassociateColorProfileFromDevice", "InstallColorProfileW",
        "GetStandardColorSpaceProfileW", "OpenColorProfileW", "IsColorProfileValid",
        "CreateMultiProfileTransform", "CloseColorProfile"}},
      {"veloraplatform.dll",
       {"PlatformInit", "PlatformFini", "PlatformSet3DLut", "PlatformReset3DLut",
        "PlatformSetPccMatrixInfo"}},
      {"logkit.dll",
       {"_ZN8NxLogger11GetInstanceEv",
        "_ZN8NxLogger3LogE17LOG_MESSAGE_LEVELRNSt7__cxx1118basic_stringstreamIwSt11char_"
        "traitsIwESaIwEEE"}},
      {"corekit.dll",
       {"LcdLogMessage", "_ZN7CoreKit16IsAdminPrivilegeEv", "_ZN7CoreKit17GetLogonSessionIdEv",
        "_ZN7CoreKit14GetDisplayTypeEv",
        "_ZN7CoreKit33LoadUserProcessByServerPriviledgeERK" WSTRING "S7_"}},
      {"wmikit.dll",
       {"_ZN5NxSDK8WmiQuery15ExcuteQueryImplERK" WSTRING "S8_RKSt8functionIFvRK10tagVARIANTEEb",
        "_ZN5NxSDK8WmiQuery9GetResultERK10tagVARIANTR" WSTRING,
        "_ZN5NxSDK7BiosWmi11GetBiosInfoERNS_14WmiInputParamsERNS_15WmiOutputParamsE",
        "_ZN5NxSDK16BiosEventMonitorC1Ev", "_ZN5NxSDK16BiosEventMonitor17StartEventMonitorEPFvjE",
        "_ZN5NxSDK16BiosEventMonitor16StopEventMonitorEv"}},
      {"orbevent.dll",
       {"_ZN8OrbEventC1Ei", "_ZN8OrbEventD1Ev", "_ZN8OrbEvent9PutStringERK" STRING "S7_",
        "_ZN7OrbView6ReportER8OrbEvent"}},
  };
  for (const auto& [library, functions] : required) {
    SCOPED_TRACE(library);
    ASSERT_TRUE(imports.contains(library));
    EXPECT_THAT(imports.at(library), IsSupersetOf(functions));
  }
}

TEST_F(TablesTest, NoImportByNumber) {
  for (const auto& [library, functions] : tables.Imports()) {
    EXPECT_FALSE(functions.contains("#")) << library;
  }
}

// Curves come out of the tool chain's own pow, linked in: the C runtime's may differ by one unit in
// the last place.
TEST_F(TablesTest, PowIsLinkedIn) {
  for (const auto& [library, functions] : tables.Imports()) {
    EXPECT_FALSE(functions.contains("pow")) << library;
    EXPECT_FALSE(functions.contains("powf")) << library;
  }
}

// Beside the closed libraries it needs nothing that a system does not have.
TEST_F(TablesTest, ImportedLibraries) {
  const std::set<std::string> known = {
      "advapi32.dll", "kernel32.dll", "msvcrt.dll",   "user32.dll",         "dxva2.dll",
      "logkit.dll",   "mscms.dll",    "corekit.dll",  "veloraplatform.dll", "wmikit.dll",
      "ole32.dll",    "oleaut32.dll", "wtsapi32.dll", "orbevent.dll"};
  for (const auto& [library, functions] : tables.Imports()) {
    EXPECT_TRUE(known.contains(library)) << library;
  }
}

TEST_F(TablesTest, NothingIsLoadedLater) {
  EXPECT_EQ(tables.Directory(IMAGE_DIRECTORY_ENTRY_DELAY_IMPORT).Size, 0u);
  EXPECT_EQ(tables.Directory(IMAGE_DIRECTORY_ENTRY_DELAY_IMPORT).VirtualAddress, 0u);
}

}  // namespace
}  // namespace virtualnotebook
