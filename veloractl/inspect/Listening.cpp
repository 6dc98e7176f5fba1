#include "veloractl/inspect/Listening.h"

#include <icm.h>

#include <algorithm>
#include <functional>

#include "CoreKit/CoreKit.h"
#include "VeloraPlatform/VeloraPlatform.h"
#include "WmiKit/WmiKit.h"

namespace veloractl {
namespace {

using virtualnotebook::ImportedFunction;

Listener* listening = nullptr;
std::vector<Heard::Line>* ownLines = nullptr;

constexpr int kRefusedByListener = -1;  // of a platform call: any number but 0 is a failure

// In which no profile's file name is contained.
constexpr wchar_t kAnotherProfile[] = L"?";

// A method as the import table has it: its object comes first.
using ExcuteQueryImplFunction = int(NxSDK::WmiQuery*, const std::wstring&, const std::wstring&,
                                    const std::function<void(const VARIANT&)>&, bool);

// The real functions.
ExcuteQueryImplFunction* excuteQueryImpl = nullptr;
decltype(EnumDisplayDevicesW)* enumDisplayDevices = nullptr;
decltype(RegOpenKeyExA)* regOpenKeyEx = nullptr;
decltype(RegQueryValueExA)* regQueryValueEx = nullptr;
decltype(WcsGetDefaultColorProfile)* getDefaultProfile = nullptr;
void* unused = nullptr;  // of those that are never called

}  // namespace

struct Ears {
  static Heard& Notes() { return listening->heard; }

  static int ExcuteQueryImpl(NxSDK::WmiQuery* self, const std::wstring& query,
                             const std::wstring& property,
                             const std::function<void(const VARIANT&)>& onValue, bool flag) {
    Heard::Query note{query, property, {}, 0};
    note.status = excuteQueryImpl(
        self, query, property,
        [&](const VARIANT& value) {
          std::wstring text;
          NxSDK::WmiQuery::GetResult(value, text);
          note.rows.push_back(text);
          onValue(value);
        },
        flag);
    const int status = note.status;
    Notes().queries.push_back(std::move(note));
    return status;
  }

  static BOOL WINAPI EnumDisplayDevicesW(const wchar_t* device, DWORD index, DISPLAY_DEVICEW* out,
                                         DWORD flags) {
    const BOOL given = enumDisplayDevices(device, index, out, flags);
    if (given) {
      Notes().displays.push_back(
          {device == nullptr ? L"" : device, out->DeviceName, out->DeviceString, out->DeviceID});
    }
    return given;
  }

  static LSTATUS WINAPI RegOpenKeyExA(HKEY root, const char* path, DWORD options, REGSAM access,
                                      HKEY* key) {
    const LSTATUS status = regOpenKeyEx(root, path, options, access, key);
    Notes().keyPath = path;
    Notes().keyStatus = status;
    return status;
  }

  static LSTATUS WINAPI RegQueryValueExA(HKEY key, const char* name, DWORD* reserved, DWORD* type,
                                         BYTE* data, DWORD* size) {
    const LSTATUS status = regQueryValueEx(key, name, reserved, type, data, size);
    Notes().edidStatus = status;
    if (status == ERROR_SUCCESS && data != nullptr && size != nullptr) {
      Notes().edid.assign(data, data + *size);
    }
    return status;
  }

  static BOOL WINAPI WcsGetDefaultColorProfile(WCS_PROFILE_MANAGEMENT_SCOPE scope,
                                               const wchar_t* device, COLORPROFILETYPE type,
                                               COLORPROFILESUBTYPE subType, DWORD id, DWORD size,
                                               wchar_t* name) {
    const BOOL given = getDefaultProfile(scope, device, type, subType, id, size, name);
    Heard& notes = Notes();
    notes.profileDevice = device == nullptr ? L"" : device;
    if (given) {
      notes.profileName = name;
    } else {
      notes.profileError = GetLastError();
    }
    if (listening->answer_ == ProfileAnswer::Another && size >= sizeof kAnotherProfile) {
      std::ranges::copy(kAnotherProfile, name);
      return TRUE;
    }
    return Refuse();
  }

  static BOOL Refuse() {
    SetLastError(ERROR_CANCELLED);
    return FALSE;
  }

  // --- What would change the machine ---

  static BOOL WINAPI InstallColorProfileW(const wchar_t*, const wchar_t*) { return TRUE; }
  static BOOL WINAPI Disassociate(WCS_PROFILE_MANAGEMENT_SCOPE, const wchar_t*, const wchar_t*) {
    return Refuse();
  }
  // The last step of a profile: who gets here has passed the others.
  static BOOL WINAPI Associate(WCS_PROFILE_MANAGEMENT_SCOPE, const wchar_t*, const wchar_t*) {
    Notes().reachedAssociation = true;
    return Refuse();
  }
  static int SetLut(const double*, int) { return kRefusedByListener; }
  static int ResetLut() { return kRefusedByListener; }
  static int SetMatrix(const PlatformPccMatrix*) { return kRefusedByListener; }
  static BOOL WINAPI SetVcp(HANDLE, BYTE, DWORD) { return FALSE; }
  static LSTATUS WINAPI CreateKey(HKEY, const wchar_t*, DWORD, wchar_t*, DWORD, REGSAM,
                                  const SECURITY_ATTRIBUTES*, HKEY*, DWORD*) {
    return ERROR_ACCESS_DENIED;
  }
  static LSTATUS WINAPI SetValue(HKEY, const wchar_t*, DWORD, DWORD, const BYTE*, DWORD) {
    return ERROR_ACCESS_DENIED;
  }

  static void LcdLogMessage(int level, const wchar_t* text) {
    Notes().log.push_back({level, text == nullptr ? L"" : text});
  }
  static void OwnLogMessage(int level, const wchar_t* text) {
    if (ownLines != nullptr) {
      ownLines->push_back({level, text == nullptr ? L"" : text});
    }
  }
};

namespace {

template <typename Function>
void* Address(Function* function) {
  return reinterpret_cast<void*>(function);
}

template <typename Function>
void** Slot(Function** original) {
  return reinterpret_cast<void**>(original);
}

ImportedFunction Heeded(const char* library, const char* symbol, void* standIn, void** original) {
  return {library, symbol, symbol, standIn, original};
}

// The compiler's name of the wide text type within the names of C++ functions.
#define WSTRING "NSt7__cxx1112basic_stringIwSt11char_traitsIwESaIwEEE"

std::vector<ImportedFunction> Imports() {
  return {
      Heeded("WmiKit.dll",
             "_ZN5NxSDK8WmiQuery15ExcuteQueryImplERK" WSTRING
             "S8_RKSt8functionIFvRK10tagVARIANTEEb",
             Address(&Ears::ExcuteQueryImpl), Slot(&excuteQueryImpl)),
      Heeded("user32.dll", "EnumDisplayDevicesW", Address(&Ears::EnumDisplayDevicesW),
             Slot(&enumDisplayDevices)),
      Heeded("advapi32.dll", "RegOpenKeyExA", Address(&Ears::RegOpenKeyExA), Slot(&regOpenKeyEx)),
      Heeded("advapi32.dll", "RegQueryValueExA", Address(&Ears::RegQueryValueExA),
             Slot(&regQueryValueEx)),
      Heeded("advapi32.dll", "RegCreateKeyExW", Address(&Ears::CreateKey), &unused),
      Heeded("advapi32.dll", "RegSetValueExW", Address(&Ears::SetValue), &unused),
      Heeded("mscms.dll", "WcsGetDefaultColorProfile", Address(&Ears::WcsGetDefaultColorProfile),
             Slot(&getDefaultProfile)),
      Heeded("mscms.dll", "InstallColorProfileW", Address(&Ears::InstallColorProfileW), &unused),
      Heeded("mscms.dll", "WcsDisassociateColorProfileFromDevice", Address(&Ears::Disassociate),
             &unused),
      Heeded("mscms.dll", "WcsAssociateColorProfileWithDevice", Address(&Ears::Associate), &unused),
      Heeded("VeloraPlatform.dll", "PlatformSet3DLut", Address(&Ears::SetLut), &unused),
      Heeded("VeloraPlatform.dll", "PlatformSetGammaLut", Address(&Ears::SetLut), &unused),
      Heeded("VeloraPlatform.dll", "PlatformReset3DLut", Address(&Ears::ResetLut), &unused),
      Heeded("VeloraPlatform.dll", "PlatformResetPccMatrixInfo", Address(&Ears::ResetLut), &unused),
      Heeded("VeloraPlatform.dll", "PlatformSetPccMatrixInfo", Address(&Ears::SetMatrix), &unused),
      Heeded("dxva2.dll", "SetVCPFeature", Address(&Ears::SetVcp), &unused),
      Heeded("CoreKit.dll", "LcdLogMessage", Address(&Ears::LcdLogMessage), &unused)};
}

std::vector<Heard::Line> keptLines;

}  // namespace

Listener::Listener(HMODULE module, ProfileAnswer answer) : answer_(answer) {
  listening = this;
  redirection_ = std::make_unique<virtualnotebook::ImportRedirection>(module, Imports());
}

Listener::~Listener() {
  redirection_.reset();
  listening = nullptr;
}

OwnLog::OwnLog() {
  keptLines.clear();
  ownLines = &keptLines;
  const ImportedFunction log =
      Heeded("CoreKit.dll", "LcdLogMessage", Address(&Ears::OwnLogMessage), &unused);
  redirection_ = std::make_unique<virtualnotebook::ImportRedirection>(
      GetModuleHandleW(nullptr), std::span<const ImportedFunction>(&log, 1));
}

OwnLog::~OwnLog() {
  redirection_.reset();
  ownLines = nullptr;
}

std::vector<std::wstring> OwnLog::Errors() const {
  constexpr int kError = 3;
  std::vector<std::wstring> errors;
  for (const Heard::Line& line : keptLines) {
    if (line.level == kError && std::ranges::find(errors, line.text) == errors.end()) {
      errors.push_back(line.text);
    }
  }
  return errors;
}

}  // namespace veloractl
