// What the notebook's state says to calls of the functions of the same names. original is the real
// function.
#pragma once

#include <windows.h>

#include <direct.h>
#include <icm.h>
#include <io.h>
#include <objbase.h>
#include <stdio.h>
#include <tlhelp32.h>
#include <winsvc.h>
#include <wtsapi32.h>

#include <functional>
#include <span>
#include <string>

#include "CoreKit/CoreKit.h"
#include "VeloraPlatform/VeloraPlatform.h"
#include "WmiKit/WmiKit.h"
#include "src/colorfield/MonitorConfiguration.h"
#include "virtualnotebook/Notebook.h"

namespace virtualnotebook {

// The methods of the sensor objects, by name.
std::span<const char* const> SensorMethods();

}  // namespace virtualnotebook

namespace virtualnotebook::answers {

// What a function of the system does when it refuses.
inline BOOL Fail(DWORD error) {
  SetLastError(error);
  return FALSE;
}

// The real function's type beneath a method: its object comes first.
using ExcuteQueryImplFunction = int(NxSDK::WmiQuery*, const std::wstring&, const std::wstring&,
                                    const std::function<void(const VARIANT&)>&, bool);
using GetBiosInfoFunction = int(NxSDK::WmiInputParams&, NxSDK::WmiOutputParams&);
using StartEventMonitorFunction = int(NxSDK::BiosEventMonitor*, BiosEventCallback);
using StopEventMonitorFunction = int(NxSDK::BiosEventMonitor*);

// --- Firmware and displays ---

UINT GetSystemFirmwareTable(Notebook& notebook, decltype(::GetSystemFirmwareTable)* original,
                            DWORD provider, DWORD id, void* buffer, DWORD size);

BOOL EnumDisplayDevicesW(Notebook& notebook, decltype(::EnumDisplayDevicesW)* original,
                         const wchar_t* device, DWORD index, DISPLAY_DEVICEW* out, DWORD flags);

BOOL EnumDisplayMonitors(Notebook& notebook, decltype(::EnumDisplayMonitors)* original, HDC dc,
                         const RECT* clip, MONITORENUMPROC callback, LPARAM data);

BOOL GetMonitorInfoW(Notebook& notebook, decltype(::GetMonitorInfoW)* original, HMONITOR monitor,
                     MONITORINFO* info);

// Null for a handle that is none.
DesktopMonitor* FindDesktopMonitor(Notebook& notebook, HMONITOR handle);

// --- Files and events ---

HANDLE CreateEventW(Notebook& notebook, decltype(::CreateEventW)* original,
                    SECURITY_ATTRIBUTES* security, BOOL manual, BOOL state, const wchar_t* name);

HANDLE CreateFileA(Notebook& notebook, decltype(::CreateFileA)* original, const char* path,
                   DWORD access, DWORD sharing, SECURITY_ATTRIBUTES* security, DWORD disposition,
                   DWORD attributes, HANDLE like);

BOOL CopyFileW(Notebook& notebook, decltype(::CopyFileW)* original, const wchar_t* from,
               const wchar_t* to, BOOL keep);

DWORD GetPrivateProfileStringW(Notebook& notebook, decltype(::GetPrivateProfileStringW)* original,
                               const wchar_t* section, const wchar_t* key, const wchar_t* fallback,
                               wchar_t* text, DWORD size, const wchar_t* file);

// Of the C runtime.
int Access(Notebook& notebook, decltype(::_access)* original, const char* path, int mode);
int MakeDirectory(Notebook& notebook, decltype(::_mkdir)* original, const char* path);
int Remove(Notebook& notebook, decltype(::remove)* original, const char* path);
int Rename(Notebook& notebook, decltype(::rename)* original, const char* from, const char* to);
FILE* OpenStream(Notebook& notebook, decltype(::fopen)* original, const char* path,
                 const char* mode);

int EnableFileUsersPriviledge(Notebook& notebook,
                              decltype(CoreKit::EnableFileUsersPriviledge)* original,
                              const std::string& path);

// --- External monitors ---

BOOL GetNumberOfPhysicalMonitorsFromHMONITOR(
    Notebook& notebook, decltype(::GetNumberOfPhysicalMonitorsFromHMONITOR)* original,
    HMONITOR monitor, DWORD* count);

BOOL GetPhysicalMonitorsFromHMONITOR(Notebook& notebook,
                                     decltype(::GetPhysicalMonitorsFromHMONITOR)* original,
                                     HMONITOR monitor, DWORD count, PHYSICAL_MONITOR* monitors);

BOOL DestroyPhysicalMonitors(Notebook& notebook, decltype(::DestroyPhysicalMonitors)* original,
                             DWORD count, PHYSICAL_MONITOR* monitors);

BOOL SetVCPFeature(Notebook& notebook, decltype(::SetVCPFeature)* original, HANDLE monitor,
                   BYTE code, DWORD value);

BOOL SaveCurrentSettings(Notebook& notebook, decltype(::SaveCurrentSettings)* original,
                         HANDLE monitor);

// --- Topology ---

LONG GetDisplayConfigBufferSizes(Notebook& notebook,
                                 decltype(::GetDisplayConfigBufferSizes)* original, UINT32 flags,
                                 UINT32* pathCount, UINT32* modeCount);

LONG QueryDisplayConfig(Notebook& notebook, decltype(::QueryDisplayConfig)* original, UINT32 flags,
                        UINT32* pathCount, DISPLAYCONFIG_PATH_INFO* paths, UINT32* modeCount,
                        DISPLAYCONFIG_MODE_INFO* modes, DISPLAYCONFIG_TOPOLOGY_ID* id);

LONG SetDisplayConfig(Notebook& notebook, decltype(::SetDisplayConfig)* original, UINT32 pathCount,
                      DISPLAYCONFIG_PATH_INFO* paths, UINT32 modeCount,
                      DISPLAYCONFIG_MODE_INFO* modes, UINT32 flags);

void Sleep(Notebook& notebook, decltype(::Sleep)* original, DWORD milliseconds);

// --- Colour system ---

BOOL WcsGetDefaultColorProfile(Notebook& notebook, decltype(::WcsGetDefaultColorProfile)* original,
                               WCS_PROFILE_MANAGEMENT_SCOPE scope, const wchar_t* device,
                               COLORPROFILETYPE type, COLORPROFILESUBTYPE subType, DWORD profileId,
                               DWORD size, wchar_t* name);

BOOL WcsEnumColorProfilesSize(Notebook& notebook, decltype(::WcsEnumColorProfilesSize)* original,
                              WCS_PROFILE_MANAGEMENT_SCOPE scope, ENUMTYPEW* wanted, DWORD* size);

BOOL WcsEnumColorProfiles(Notebook& notebook, decltype(::WcsEnumColorProfiles)* original,
                          WCS_PROFILE_MANAGEMENT_SCOPE scope, ENUMTYPEW* wanted, BYTE* buffer,
                          DWORD size, DWORD* count);

BOOL WcsGetUsePerUserProfiles(Notebook& notebook, decltype(::WcsGetUsePerUserProfiles)* original,
                              const wchar_t* device, DWORD deviceClass, BOOL* perUser);

BOOL WcsAssociateColorProfileWithDevice(Notebook& notebook,
                                        decltype(::WcsAssociateColorProfileWithDevice)* original,
                                        WCS_PROFILE_MANAGEMENT_SCOPE scope, const wchar_t* profile,
                                        const wchar_t* device);

BOOL WcsDisassociateColorProfileFromDevice(
    Notebook& notebook, decltype(::WcsDisassociateColorProfileFromDevice)* original,
    WCS_PROFILE_MANAGEMENT_SCOPE scope, const wchar_t* profile, const wchar_t* device);

BOOL InstallColorProfileW(Notebook& notebook, decltype(::InstallColorProfileW)* original,
                          const wchar_t* machine, const wchar_t* profile);

HPROFILE OpenColorProfileW(Notebook& notebook, decltype(::OpenColorProfileW)* original,
                           PROFILE* profile, DWORD access, DWORD sharing, DWORD creation);

// --- CoreKit, WmiKit ---

void LcdLogMessage(Notebook& notebook, decltype(::LcdLogMessage)* original, int level,
                   const wchar_t* text);

int IsAdminPrivilege(Notebook& notebook, decltype(CoreKit::IsAdminPrivilege)* original);

unsigned int GetLogonSessionId(Notebook& notebook, decltype(CoreKit::GetLogonSessionId)* original);

ResultT GetUserSIDBySessionId(Notebook& notebook,
                              decltype(CoreKit::GetUserSIDBySessionId)* original,
                              unsigned int sessionId, std::wstring& sid);

unsigned int GetDisplayType(Notebook& notebook, decltype(CoreKit::GetDisplayType)* original);

int ExcuteQueryImpl(Notebook& notebook, ExcuteQueryImplFunction* original, NxSDK::WmiQuery* self,
                    const std::wstring& query, const std::wstring& property,
                    const std::function<void(const VARIANT&)>& onValue, bool flag);

int GetBiosInfo(Notebook& notebook, GetBiosInfoFunction* original, NxSDK::WmiInputParams& input,
                NxSDK::WmiOutputParams& output);

int StartEventMonitor(Notebook& notebook, StartEventMonitorFunction* original,
                      NxSDK::BiosEventMonitor* self, BiosEventCallback callback);

int StopEventMonitor(Notebook& notebook, StopEventMonitorFunction* original,
                     NxSDK::BiosEventMonitor* self);

// --- Sessions ---

BOOL WTSEnumerateSessionsW(Notebook& notebook, decltype(::WTSEnumerateSessionsW)* original,
                           HANDLE server, DWORD reserved, DWORD version,
                           WTS_SESSION_INFOW** sessions, DWORD* count);

BOOL WTSQuerySessionInformationW(Notebook& notebook,
                                 decltype(::WTSQuerySessionInformationW)* original, HANDLE server,
                                 DWORD id, WTS_INFO_CLASS infoClass, wchar_t** buffer, DWORD* size);

void WTSFreeMemory(Notebook& notebook, decltype(::WTSFreeMemory)* original, void* memory);

// --- Services and processes ---

SC_HANDLE OpenSCManagerW(Notebook& notebook, decltype(::OpenSCManagerW)* original,
                         const wchar_t* machine, const wchar_t* database, DWORD access);

SC_HANDLE OpenServiceW(Notebook& notebook, decltype(::OpenServiceW)* original, SC_HANDLE manager,
                       const wchar_t* name, DWORD access);

BOOL QueryServiceStatus(Notebook& notebook, decltype(::QueryServiceStatus)* original,
                        SC_HANDLE service, SERVICE_STATUS* status);

BOOL CloseServiceHandle(Notebook& notebook, decltype(::CloseServiceHandle)* original,
                        SC_HANDLE handle);

HANDLE CreateToolhelp32Snapshot(Notebook& notebook, decltype(::CreateToolhelp32Snapshot)* original,
                                DWORD flags, DWORD process);

BOOL Process32FirstW(Notebook& notebook, decltype(::Process32FirstW)* original, HANDLE snapshot,
                     PROCESSENTRY32W* entry);

BOOL Process32NextW(Notebook& notebook, decltype(::Process32NextW)* original, HANDLE snapshot,
                    PROCESSENTRY32W* entry);

BOOL CloseHandle(Notebook& notebook, decltype(::CloseHandle)* original, HANDLE handle);

DWORD GetModuleFileNameW(Notebook& notebook, decltype(::GetModuleFileNameW)* original,
                         HMODULE module, wchar_t* path, DWORD size);

ResultT LoadUserProcessByServerPriviledge(
    Notebook& notebook, decltype(CoreKit::LoadUserProcessByServerPriviledge)* original,
    const std::wstring& path, const std::wstring& commandLine);

// --- Light sensors ---

HRESULT CoCreateInstance(Notebook& notebook, decltype(::CoCreateInstance)* original,
                         REFCLSID classId, IUnknown* outer, DWORD context, REFIID id,
                         void** object);

HRESULT PropVariantClear(Notebook& notebook, decltype(::PropVariantClear)* original,
                         PROPVARIANT* value);

// --- Platform ---

int PlatformInit(Notebook& notebook, decltype(::PlatformInit)* original);
int PlatformFini(Notebook& notebook, decltype(::PlatformFini)* original);
int GetPlatform(Notebook& notebook, decltype(::GetPlatform)* original, PlatformInfo* info);
int PlatformSet3DLut(Notebook& notebook, decltype(::PlatformSet3DLut)* original, const double* lut,
                     int count);
int PlatformReset3DLut(Notebook& notebook, decltype(::PlatformReset3DLut)* original);
int PlatformSetGammaLut(Notebook& notebook, decltype(::PlatformSetGammaLut)* original,
                        const double* lut, int count);
int PlatformSetPccMatrixInfo(Notebook& notebook, decltype(::PlatformSetPccMatrixInfo)* original,
                             const PlatformPccMatrix* matrix);
int PlatformResetPccMatrixInfo(Notebook& notebook,
                               decltype(::PlatformResetPccMatrixInfo)* original);
int PlatformSet2DColorTemperature(Notebook& notebook,
                                  decltype(::PlatformSet2DColorTemperature)* original,
                                  const Color2DInfo* info);
int PlatformSet3DColorTemperature(Notebook& notebook,
                                  decltype(::PlatformSet3DColorTemperature)* original,
                                  const Color3DInfo* info);

}  // namespace virtualnotebook::answers
