// The operating system's ICC profile of the target monitor: query, check, install, associate and
// put back.
#include "colorfield/ColorFieldApi.h"

#include <algorithm>

#include "CoreKit/CoreKit.h"
#include "frame/Log.h"
#include "frame/SharedFile.h"
#include "frame/TextField.h"

namespace velora {
namespace {

constexpr WCS_PROFILE_MANAGEMENT_SCOPE kScope = WCS_PROFILE_MANAGEMENT_SCOPE_CURRENT_USER;
constexpr DWORD kLcsSrgb = 0x73524742;  // LCS_sRGB, "sRGB"

// Where the system stores the name of a profile.
struct NameBuffer {
  wchar_t text[MAX_PATH] = {};
};
constexpr DWORD kNameBufferSize = sizeof(NameBuffer);
static_assert(kNameBufferSize == 520);

bool QueryDefaultProfile(const std::wstring& device, DWORD profileId, NameBuffer& name) {
  return WcsGetDefaultColorProfile(kScope, device.c_str(), CPT_ICC, CPST_RGB_WORKING_SPACE,
                                   profileId, kNameBufferSize, name.text);
}

}  // namespace

ResultT ColorFieldApi::GetDefaultIccFile(std::wstring& name) {
  constexpr FunctionLog log("ColorFieldApi::GetDefaultIccFile");
  std::wstring monitor;
  if (GetTargetMonitorName(monitor) != ResultOk) {
    log.Error(L"GetTargetMonitorName Failed!");
    return ResultFailed;
  }
  if (monitor.empty()) {
    log.Error(L"currentMainMonitorName empty!");
    return ResultFailed;
  }
  NameBuffer buffer;
  if (!QueryDefaultProfile(monitor, 0, buffer)) {
    const DWORD error = GetLastError();
    // Not found: the monitor has no default profile, which is as good an answer.
    if (error != ERROR_FILE_NOT_FOUND) {
      log.Error(L"GetDefaultIccFile Failed! targetMonitorName:", monitor, L"errorCode is", error);
      return ResultFailed;
    }
  }
  name = buffer.text;
  log.Info(L"targetMonitorName is ", monitor, L",pFileName is ", name);
  return ResultOk;
}

bool ColorFieldApi::QueryIccFile(const std::wstring& deviceName, std::wstring& name) const {
  constexpr FunctionLog log("ColorFieldApi::QueryIccFile");
  NameBuffer buffer;
  if (!QueryDefaultProfile(deviceName, 1, buffer)) {
    log.Error(L"WcsGetDefaultColorProfile Failed! currentMainMonitorName:", deviceName);
    return false;
  }
  name = buffer.text;
  return true;
}

bool ColorFieldApi::IsIccAlreadyAssociated(const std::wstring& current,
                                           const std::string& target) const {
  constexpr FunctionLog log("ColorFieldApi::IsIccAlreadyAssociated");
  // Without a backslash npos + 1 is 0: all of it.
  const std::string file = target.substr(target.rfind('\\') + 1);
  log.Debug(L"currentIccFileName:", current, L", targetIccFileName:", file);
  return current.find(CoreKit::StringToWString(file)) != std::wstring::npos;
}

ResultT ColorFieldApi::SetOsIccFileWithCheck(const std::string& path) {
  constexpr FunctionLog log("ColorFieldApi::SetOsIccFileWithCheck");
  const std::string digestPath(FieldText(iccCheckFilePath_));
  const ResultT valid = CheckTargetIccFileIsValid(path, digestPath.c_str());
  if (valid != ResultOk) {
    // The wording is that of another case; here it stands for the failed check.
    log.Error(L"Icc Already Associated. iccFileName:", path);
    return valid;
  }
  return SetOsIccFile(CoreKit::StringToWString(path));
}

ResultT ColorFieldApi::CheckTargetIccFileIsValid(const std::string& path,
                                                 const char* digestPath) const {
  constexpr FunctionLog log("ColorFieldApi::CheckTargetIccFileIsValid");
  if (digestPath == nullptr) {
    log.Error(L"targetIccPtah is null!");
    return ResultFailed;
  }
  if (!FileExists(path) || !FileExists(digestPath)) {
    log.Error(L"Icc File:", path, L" Not Found!");
    return ResultFileNotFound;
  }
  if (!iccFileCheck_.CompareSha256(path, digestPath)) {
    log.Error(L"Icc File Be Modified! fileName:", path);
    return ResultIccError;
  }
  return ResultOk;
}

ResultT ColorFieldApi::SetUsrIccFileWithCheck(const std::string& path,
                                              const std::string& modeName) {
  constexpr FunctionLog log("ColorFieldApi::SetUsrIccFileWithCheck");
  if (!FileExists(path)) {
    log.Error(L"Icc File:", path, L" Not Found!");
    return ResultFileNotFound;
  }
  if (!iccProfileOperation_.ICCProfileSha256Check(path, modeName)) {
    log.Error(L"Icc File Be Modified! fileName:", path);
    return ResultIccError;
  }
  return SetOsIccFile(CoreKit::StringToWString(path));
}

ResultT ColorFieldApi::SetOsIccFile(const std::wstring& path) {
  constexpr FunctionLog log("ColorFieldApi::SetOsIccFile");
  if (path.empty()) {
    log.Error(L"SetOsIccFile input prar is empty!");
    return ResultFailed;
  }
  std::wstring file = path;
  std::ranges::replace(file, L'/', L'\\');

  const ResultT installed = InstallIccFile(file);
  if (installed != ResultOk) {
    // The handles that it opened stay open; the next run overwrites them.
    log.Error(L"InstallIccFile Failed! fileName:", path);
    return installed;
  }
  const bool associated = AssociateIccFile(file);
  if (!associated) {
    log.Error(L"AssociateIccFile Failed! fileName:", path);
  }
  CloseProfileHandles();
  return associated ? ResultOk : ResultColorFieldError;
}

ResultT ColorFieldApi::InstallIccFile(const std::wstring& path) {
  constexpr FunctionLog log("ColorFieldApi::InstallIccFile");
  profileHandles_[0] = GetProfileHandle(path);
  if (profileHandles_[0] == nullptr) {
    log.Error(L"Get CurrentProFileHandle Failed! fileName:", path);
    return ResultIccError;
  }

  NameBuffer standard;
  DWORD size = kNameBufferSize;
  GetStandardColorSpaceProfileW(nullptr, kLcsSrgb, standard.text, &size);
  profileHandles_[1] = GetProfileHandle(standard.text);
  if (profileHandles_[1] == nullptr) {
    log.Error(L"Get StandardProfileHandle Failed! fileName:", path);
    return ResultIccError;
  }

  // Whether the two profiles make a transform is not asked, and the transform lives on.
  DWORD intents[] = {INTENT_RELATIVE_COLORIMETRIC, INTENT_RELATIVE_COLORIMETRIC};
  CreateMultiProfileTransform(profileHandles_, 2, intents, 2, BEST_MODE, INDEX_DONT_CARE);

  if (!InstallColorProfileW(nullptr, path.c_str())) {
    log.Error(L"InstallColorProfile Failed! fileName:", path);
    return ResultIccError;
  }
  return ResultOk;
}

HPROFILE ColorFieldApi::GetProfileHandle(const std::wstring& path) const {
  constexpr FunctionLog log("ColorFieldApi::GetProfileHandle");
  PROFILE profile{};
  profile.dwType = PROFILE_FILENAME;
  profile.pProfileData = const_cast<wchar_t*>(path.c_str());
  profile.cbDataSize = static_cast<DWORD>((path.size() + 1) * sizeof(wchar_t));
  const HPROFILE handle = OpenColorProfileW(&profile, PROFILE_READ, FILE_SHARE_READ, OPEN_EXISTING);
  if (handle == nullptr) {
    log.Error(L"GetProfileHandle OpenColorProfile Failed!", path, L", buf size:", path.size(),
              L", cbDataSize:", profile.cbDataSize);
    return nullptr;
  }
  log.Info(L"GetProfileHandle OpenColorProfile Success!", path, L", buf size:", path.size(),
           L", cbDataSize:", profile.cbDataSize);
  BOOL valid = FALSE;
  IsColorProfileValid(handle, &valid);
  if (!valid) {
    // The handle stays open.
    log.Error(L"GetProfileHandle Profile Not Valid!");
    return nullptr;
  }
  return handle;
}

bool ColorFieldApi::AssociateIccFile(const std::wstring& fileName) const {
  constexpr FunctionLog log("ColorFieldApi::AssociateIccFile");
  log.Debug(fileName);
  const std::wstring& device = targetMonitorInfo_.deviceID;
  if (device.empty() || fileName.empty()) {
    log.Error(L"targetMonitorInfo_ deviceID is empty!");
    return false;
  }
  // The system makes the profile associated last the default: one that is on the list already has
  // to leave it first.
  if (!WcsDisassociateColorProfileFromDevice(kScope, fileName.c_str(), device.c_str())) {
    log.Info(L"WcsDisassociateColorProfileFromDevice Failed, iccFileName is ", fileName);
  }
  return WcsAssociateColorProfileWithDevice(kScope, fileName.c_str(), device.c_str());
}

void ColorFieldApi::ResetOsIccField(const std::wstring& previousIcc) {
  constexpr FunctionLog log("ColorFieldApi::ResetOsIccField");
  if (!previousIcc.empty()) {
    SetOsIccFile(previousIcc);
    return;
  }
  // There was no profile before. No profile has the empty name, so the new one stays associated.
  const std::wstring device =
      alternateDeviceName_.empty() ? targetMonitorInfo_.deviceID : L"DISPLAY";
  WcsDisassociateColorProfileFromDevice(kScope, previousIcc.c_str(), device.c_str());
  log.Error(L" currentIccFileName icc File is empty!");
}

void ColorFieldApi::CloseProfileHandles() {
  for (HPROFILE& handle : profileHandles_) {
    if (handle != nullptr) {
      CloseColorProfile(handle);
      handle = nullptr;
    }
  }
}

}  // namespace velora
