#include "virtualnotebook/Imports.h"

#include <windows.h>

#include <direct.h>
#include <icm.h>
#include <io.h>
#include <objbase.h>
#include <process.h>
#include <stdio.h>
#include <tlhelp32.h>
#include <winsvc.h>
#include <wtsapi32.h>

#include <string>

#include "CoreKit/CoreKit.h"
#include "LogKit/LogKit.h"
#include "VeloraPlatform/VeloraPlatform.h"
#include "WmiKit/WmiKit.h"
#include "virtualnotebook/Answers.h"
#include "virtualnotebook/StandIn.h"

class OrbEvent;  // its header would have this library bind to its DLL

namespace virtualnotebook {
namespace {

// The compiler's names of the text types within the names of C++ functions.
#define STRING "NSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE"
#define WSTRING "NSt7__cxx1112basic_stringIwSt11char_traitsIwESaIwEEE"
#define WSTRINGSTREAM "NSt7__cxx1118basic_stringstreamIwSt11char_traitsIwESaIwEEE"

// A function with a plain name: passed on, or answered by what the notebook knows.
#define FORWARDED(library, function) Import<#function, decltype(function)>(library)
#define ANSWERED(library, function) \
  Import<#function, decltype(::function), &answers::function>(library)

// Methods as plain functions: their object comes first. Results by reference are pointers.
using WmiGetResult = void(const VARIANT&, std::wstring&);
using LoggerGetInstance = NxLogger*();
using LoggerLog = void(NxLogger*, LOG_MESSAGE_LEVEL, std::wstringstream&);
using MonitorLife = void(NxSDK::BiosEventMonitor*);
using EventStart = void(OrbEvent*, int);
using EventPutString = void(OrbEvent*, const std::string&, const std::string&);
using EventOther = void(OrbEvent*);

const ImportedFunction kImports[] = {
    FORWARDED("advapi32.dll", RegOpenKeyW),
    FORWARDED("advapi32.dll", RegCreateKeyExW),
    FORWARDED("advapi32.dll", RegQueryValueExW),
    FORWARDED("advapi32.dll", RegSetValueExW),
    FORWARDED("advapi32.dll", RegDeleteKeyW),
    FORWARDED("advapi32.dll", RegCloseKey),
    FORWARDED("advapi32.dll", RegOpenKeyExA),
    FORWARDED("advapi32.dll", RegQueryValueExA),
    FORWARDED("advapi32.dll", InitializeSecurityDescriptor),
    FORWARDED("advapi32.dll", SetSecurityDescriptorDacl),
    ANSWERED("advapi32.dll", OpenSCManagerW),
    ANSWERED("advapi32.dll", OpenServiceW),
    ANSWERED("advapi32.dll", QueryServiceStatus),
    ANSWERED("advapi32.dll", CloseServiceHandle),

    ANSWERED("kernel32.dll", GetPrivateProfileStringW),
    ANSWERED("kernel32.dll", CreateEventW),
    FORWARDED("kernel32.dll", SetEvent),
    FORWARDED("kernel32.dll", WaitForSingleObject),
    ANSWERED("kernel32.dll", CreateFileA),
    FORWARDED("kernel32.dll", GetFileSizeEx),
    FORWARDED("kernel32.dll", ReadFile),
    FORWARDED("kernel32.dll", WriteFile),
    ANSWERED("kernel32.dll", CloseHandle),
    ANSWERED("kernel32.dll", GetModuleFileNameW),
    ANSWERED("kernel32.dll", GetSystemFirmwareTable),
    ANSWERED("kernel32.dll", Sleep),
    ANSWERED("kernel32.dll", CopyFileW),
    ANSWERED("kernel32.dll", CreateToolhelp32Snapshot),
    ANSWERED("kernel32.dll", Process32FirstW),
    ANSWERED("kernel32.dll", Process32NextW),
    Import<"_access", decltype(::_access), &answers::Access>("msvcrt.dll"),
    FORWARDED("msvcrt.dll", _beginthreadex),
    Import<"_mkdir", decltype(::_mkdir), &answers::MakeDirectory>("msvcrt.dll"),
    Import<"fopen", decltype(::fopen), &answers::OpenStream>("msvcrt.dll"),
    Import<"remove", decltype(::remove), &answers::Remove>("msvcrt.dll"),
    Import<"rename", decltype(::rename), &answers::Rename>("msvcrt.dll"),

    ANSWERED("user32.dll", EnumDisplayDevicesW),
    ANSWERED("user32.dll", EnumDisplayMonitors),
    ANSWERED("user32.dll", GetMonitorInfoW),
    ANSWERED("user32.dll", GetDisplayConfigBufferSizes),
    ANSWERED("user32.dll", QueryDisplayConfig),
    ANSWERED("user32.dll", SetDisplayConfig),

    ANSWERED("dxva2.dll", GetNumberOfPhysicalMonitorsFromHMONITOR),
    ANSWERED("dxva2.dll", GetPhysicalMonitorsFromHMONITOR),
    ANSWERED("dxva2.dll", DestroyPhysicalMonitors),
    ANSWERED("dxva2.dll", SetVCPFeature),
    ANSWERED("dxva2.dll", SaveCurrentSettings),

    ANSWERED("mscms.dll", WcsGetDefaultColorProfile),
    ANSWERED("mscms.dll", WcsEnumColorProfilesSize),
    ANSWERED("mscms.dll", WcsEnumColorProfiles),
    ANSWERED("mscms.dll", WcsGetUsePerUserProfiles),
    ANSWERED("mscms.dll", WcsAssociateColorProfileWithDevice),
    ANSWERED("mscms.dll", WcsDisassociateColorProfileFromDevice),
    ANSWERED("mscms.dll", InstallColorProfileW),
    FORWARDED("mscms.dll", GetStandardColorSpaceProfileW),
    ANSWERED("mscms.dll", OpenColorProfileW),
    FORWARDED("mscms.dll", IsColorProfileValid),
    FORWARDED("mscms.dll", CreateMultiProfileTransform),
    FORWARDED("mscms.dll", CloseColorProfile),

    ANSWERED("wtsapi32.dll", WTSEnumerateSessionsW),
    ANSWERED("wtsapi32.dll", WTSQuerySessionInformationW),
    ANSWERED("wtsapi32.dll", WTSFreeMemory),

    FORWARDED("ole32.dll", CoInitializeEx),
    FORWARDED("ole32.dll", CoUninitialize),
    ANSWERED("ole32.dll", CoCreateInstance),
    ANSWERED("ole32.dll", PropVariantClear),

    ANSWERED("VeloraPlatform.dll", PlatformInit),
    ANSWERED("VeloraPlatform.dll", PlatformFini),
    ANSWERED("VeloraPlatform.dll", GetPlatform),
    ANSWERED("VeloraPlatform.dll", PlatformSet3DLut),
    ANSWERED("VeloraPlatform.dll", PlatformReset3DLut),
    ANSWERED("VeloraPlatform.dll", PlatformSetGammaLut),
    ANSWERED("VeloraPlatform.dll", PlatformSetPccMatrixInfo),
    ANSWERED("VeloraPlatform.dll", PlatformResetPccMatrixInfo),
    ANSWERED("VeloraPlatform.dll", PlatformSet2DColorTemperature),
    ANSWERED("VeloraPlatform.dll", PlatformSet3DColorTemperature),

    ANSWERED("CoreKit.dll", LcdLogMessage),
    Import<"CoreKit::IsAdminPrivilege", decltype(CoreKit::IsAdminPrivilege),
           &answers::IsAdminPrivilege>("CoreKit.dll", "_ZN7CoreKit16IsAdminPrivilegeEv"),
    Import<"CoreKit::GetLogonSessionId", decltype(CoreKit::GetLogonSessionId),
           &answers::GetLogonSessionId>("CoreKit.dll", "_ZN7CoreKit17GetLogonSessionIdEv"),
    Import<"CoreKit::GetUserSIDBySessionId", decltype(CoreKit::GetUserSIDBySessionId),
           &answers::GetUserSIDBySessionId>("CoreKit.dll",
                                            "_ZN7CoreKit21GetUserSIDBySessionIdEjR" WSTRING),
    Import<"CoreKit::GetDisplayType", decltype(CoreKit::GetDisplayType), &answers::GetDisplayType>(
        "CoreKit.dll", "_ZN7CoreKit14GetDisplayTypeEv"),
    Import<"CoreKit::BytesToHexString", decltype(CoreKit::BytesToHexString)>(
        "CoreKit.dll", "_ZN7CoreKit16BytesToHexStringB5cxx11EPKhy"),
    Import<"CoreKit::StringToWString", decltype(CoreKit::StringToWString)>(
        "CoreKit.dll", "_ZN7CoreKit15StringToWStringERK" STRING),
    Import<"CoreKit::WStringToString", decltype(CoreKit::WStringToString)>(
        "CoreKit.dll", "_ZN7CoreKit15WStringToStringERK" WSTRING),
    Import<"CoreKit::GetCanonicalizedFilePath", decltype(CoreKit::GetCanonicalizedFilePath)>(
        "CoreKit.dll", "_ZN7CoreKit24GetCanonicalizedFilePathERK" STRING),
    Import<"CoreKit::EnableFileUsersPriviledge", decltype(CoreKit::EnableFileUsersPriviledge),
           &answers::EnableFileUsersPriviledge>("CoreKit.dll",
                                                "_ZN7CoreKit25EnableFileUsersPriviledgeERK" STRING),
    Import<"CoreKit::LoadUserProcessByServerPriviledge",
           decltype(CoreKit::LoadUserProcessByServerPriviledge),
           &answers::LoadUserProcessByServerPriviledge>(
        "CoreKit.dll", "_ZN7CoreKit33LoadUserProcessByServerPriviledgeERK" WSTRING "S7_"),

    Import<"NxLogger::GetInstance", LoggerGetInstance>("LogKit.dll", "_ZN8NxLogger11GetInstanceEv"),
    Import<"NxLogger::Log", LoggerLog>("LogKit.dll",
                                       "_ZN8NxLogger3LogE17LOG_MESSAGE_LEVELR" WSTRINGSTREAM),

    Import<"WmiQuery::ExcuteQueryImpl", answers::ExcuteQueryImplFunction,
           &answers::ExcuteQueryImpl>("WmiKit.dll", "_ZN5NxSDK8WmiQuery15ExcuteQueryImplERK" WSTRING
                                                    "S8_RKSt8functionIFvRK10tagVARIANTEEb"),
    Import<"WmiQuery::GetResult", WmiGetResult>(
        "WmiKit.dll", "_ZN5NxSDK8WmiQuery9GetResultERK10tagVARIANTR" WSTRING),
    Import<"BiosWmi::GetBiosInfo", answers::GetBiosInfoFunction, &answers::GetBiosInfo>(
        "WmiKit.dll", "_ZN5NxSDK7BiosWmi11GetBiosInfoERNS_14WmiInputParamsERNS_15WmiOutputParamsE"),
    Import<"BiosEventMonitor::BiosEventMonitor", MonitorLife>("WmiKit.dll",
                                                              "_ZN5NxSDK16BiosEventMonitorC1Ev"),
    Import<"BiosEventMonitor::~BiosEventMonitor", MonitorLife>("WmiKit.dll",
                                                               "_ZN5NxSDK16BiosEventMonitorD1Ev"),
    Import<"BiosEventMonitor::StartEventMonitor", answers::StartEventMonitorFunction,
           &answers::StartEventMonitor>("WmiKit.dll",
                                        "_ZN5NxSDK16BiosEventMonitor17StartEventMonitorEPFvjE"),
    Import<"BiosEventMonitor::StopEventMonitor", answers::StopEventMonitorFunction,
           &answers::StopEventMonitor>("WmiKit.dll",
                                       "_ZN5NxSDK16BiosEventMonitor16StopEventMonitorEv"),

    Import<"OrbEvent::OrbEvent", EventStart>("orbevent.dll", "_ZN8OrbEventC1Ei"),
    Import<"OrbEvent::~OrbEvent", EventOther>("orbevent.dll", "_ZN8OrbEventD1Ev"),
    Import<"OrbEvent::PutString", EventPutString>("orbevent.dll",
                                                  "_ZN8OrbEvent9PutStringERK" STRING "S7_"),
    Import<"OrbView::Report", EventOther>("orbevent.dll", "_ZN7OrbView6ReportER8OrbEvent"),
};

}  // namespace

std::span<const ImportedFunction> Imports() { return kImports; }

}  // namespace virtualnotebook
