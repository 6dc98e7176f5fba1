// Making, changing and removing user-designed modes: three files, a stored record and a row of the
// table. Nothing is rolled back but what a rename has moved.
#include "colorfield/ColorFieldApi.h"

#include <windows.h>

#include <direct.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>

#include "CoreKit/CoreKit.h"
#include "frame/BoundedCopy.h"
#include "frame/Constants.h"
#include "frame/Log.h"
#include "frame/SharedFile.h"
#include "frame/TextField.h"
#include "lut/LutBlock.h"

namespace velora {
namespace {

constexpr int kAccessFailed = 1;  // CoreKit's result
constexpr double kSameValue = 1e-16;

// Where a mode's files end up.
struct UserModeFiles {
  std::string icc;
  std::string lut3D;
  std::string gamma;
};

UserModeFiles FilesOf(std::string_view id) {
  const std::string name(id);
  return {std::string(colorProfileDir) + "\\" + name + "_usr.icc",
          std::string(user3DLutDir) + "\\" + name + ".bin",
          std::string(userGammaLutDir) + "\\" + name + ".bin"};
}

// Keys are compared over the whole field, and end at its terminator.
bool HasId(const UserDesignInfo& info, const std::string& id) {
  return strncmp(info.id, id.c_str(), sizeof info.id) == 0;
}

std::unique_ptr<double[]> NewZeros(size_t count) {
  return std::unique_ptr<double[]>(new (std::nothrow) double[count]());
}

bool IsFilePathExist(const char* directory) {
  constexpr FunctionLog log("ColorFieldApi::IsFilePathExist");
  if (FileExists(directory)) {
    return true;
  }
  if (!FileExists(userRootDir) && _mkdir(userRootDir) != 0) {
    log.Error(L"Create User directory failed, path: ", userRootDir);
    return false;
  }
  if (CoreKit::EnableFileUsersPriviledge(userRootDir) == kAccessFailed) {
    log.Error(L"EnableFileUsersPriviledge Failed! fileName:", userRootDir);
    return false;
  }
  if (_mkdir(directory) != 0) {
    log.Error(L"Create binDirectoryPath failed, binDirectoryPath: ", directory);
    return false;
  }
  return true;
}

bool CopyUsrDesignFile(const std::string& existing, const std::string& copy) {
  constexpr FunctionLog log("ColorFieldApi::CopyUsrDesignFile");
  if (!CopyFileW(CoreKit::StringToWString(existing).c_str(), CoreKit::StringToWString(copy).c_str(),
                 FALSE)) {
    log.Error(L"Copy user design file failed, exist path :", existing, L", new path :", copy);
    return false;
  }
  if (CoreKit::EnableFileUsersPriviledge(copy) == kAccessFailed) {
    log.Error(L"EnableFileUsersPriviledge Failed! fileName:", copy);
    return false;
  }
  return true;
}

ResultT SaveUserDesignAttributeInfo(const UserDesignInfo& info, UserDesignInfo& out) {
  constexpr FunctionLog log("ColorFieldApi::SaveUserDesignAttributeInfo");
  const UserModeFiles files = FilesOf(FieldText(info.id));
  out = info;
  if (strcpy_s(out.threeDLutPath, sizeof out.threeDLutPath, files.lut3D.c_str()) != 0) {
    log.Error(L"memcpy_s error, user3DLutFilePath copy fail");
    return ResultColorFieldError;
  }
  if (strcpy_s(out.gammaPath, sizeof out.gammaPath, files.gamma.c_str()) != 0) {
    log.Error(L"memcpy_s error, gammaPath copy fail");
    return ResultColorFieldError;
  }
  // The system's copy of the profile, not the one in the temporary directory.
  if (strcpy_s(out.iccPath, sizeof out.iccPath, files.icc.c_str()) != 0) {
    log.Error(L"memcpy_s error, pIccFilePath copy fail");
    return ResultColorFieldError;
  }
  return ResultOk;
}

void RemoveOldFile(const std::string& path, const FunctionLog& log) {
  if (std::remove(path.c_str()) != 0) {
    log.Warn(L"Delete source3DLutFile failed, source3DLutFile: ", path);
  }
}

}  // namespace

ResultT ColorFieldApi::SaveUserSelfColor(const UserDesignInfo& info) {
  constexpr FunctionLog log("ColorFieldApi::SaveUserSelfColor");
  UserDesignInfo copy = info;
  const ResultT created = CreateFileByUsrDesignInfo(copy);
  if (created != ResultOk) {
    log.Error(L"Save user design info to file fail");
    return created;
  }
  UserDesignInfo stored = {};
  const ResultT filled = SaveUserDesignAttributeInfo(copy, stored);
  if (filled != ResultOk) {
    log.Error(L"SaveUserDesignAttributeInfo fail");
    return filled;
  }
  const std::string id(FieldText(stored.id));
  const ResultT added = userDesignReg_.AddUserDesignReg(&stored);
  if (added != ResultOk) {
    log.Error(L"Add user design reg failed, mode id:", id);
    return added;
  }
  modeUsrDesignVec_.push_back(stored);
  const ResultT enabled = EnableUserColorField(id, false);
  if (enabled != ResultOk) {
    // The mode stays saved and registered.
    log.Error(L"After Save user self color, enable color field is failed");
  }
  return enabled;
}

// Everything is made in the temporary directory and then copied; the copies there stay.
ResultT ColorFieldApi::CreateFileByUsrDesignInfo(UserDesignInfo& info) {
  constexpr FunctionLog log("ColorFieldApi::CreateFileByUsrDesignInfo");
  const std::string id(FieldText(info.id));
  const UserModeFiles files = FilesOf(id);
  // Zeros: a refused calculation leaves them, and the check finds that out.
  const std::unique_ptr<double[]> lut3D = NewZeros(LutValueCount(k3DEntries));
  if (lut3D == nullptr) {
    log.Error(L"3DLut is null");
    return ResultColorFieldError;
  }
  const std::unique_ptr<double[]> gamma = NewZeros(LutValueCount(kGammaEntries));
  if (gamma == nullptr) {
    log.Error(L"GammaLut is null");
    return ResultColorFieldError;
  }
  usrDesignAlgo_.ThreeDLutCal(info, lut3D.get(), k3DEntries);
  usrDesignAlgo_.GammaLutCal(info, gamma.get(), kGammaEntries);
  if (!colorField3DLut_.IsThreeDLutDataValid(lut3D.get()) ||
      !colorField3DLut_.IsGammaLutDataValid(gamma.get())) {
    log.Error(L"Lut data check failed");
    return ResultColorFieldError;
  }
  if (!IsFilePathExist(userTempDir) || !IsFilePathExist(user3DLutDir) ||
      !IsFilePathExist(userGammaLutDir)) {
    log.Error(L"Create usr color dir fail, mode id : ", id);
    return ResultColorFieldError;
  }
  const std::string tempGamma = colorField3DLut_.SaveUserGammaLutBin(gamma.get(), id);
  const std::string temp3D = colorField3DLut_.SaveUser3DLutBin(lut3D.get(), id);
  if (tempGamma.empty() || temp3D.empty()) {
    log.Error(L"Save user self bin failed, bin path is null");
    return ResultColorFieldError;
  }
  if (iccProfileOperation_.CreateAndSaveIccProfile(info) != ResultOk) {
    log.Error(L"Create user self icc failed");
    return ResultColorFieldError;
  }
  // A copy that fails shows in the log only.
  CopyUsrDesignFile(std::string(FieldText(info.iccPath)), files.icc);
  CopyUsrDesignFile(temp3D, files.lut3D);
  CopyUsrDesignFile(tempGamma, files.gamma);
  return ResultOk;
}

ResultT ColorFieldApi::EditUserColorField(const UserDesignInfo& info, const std::string& oldId) {
  constexpr FunctionLog log("ColorFieldApi::EditUserColorField");
  UserDesignInfo copy = info;
  UserDesignInfo stored = {};
  ResultT edited = ResultOk;
  if (IsUserDesignDataChange(copy, oldId)) {
    edited = EditUserDesignData(copy, oldId, stored);
  } else if (!IsFilePathExist(userTempDir)) {
    log.Error(L"Create usr color temp dir fail, mode id : ", oldId);
    return ResultColorFieldError;
  } else {
    edited = EditUserDesignDescription(copy, oldId, stored);
  }
  if (edited != ResultOk) {
    log.Error(L"Edit userDesign info failed, mode original id: ", oldId);
    return ResultColorFieldError;
  }
  userDesignReg_.EditUserDesignReg(&stored, oldId);
  DeleteUserSelfColor(oldId);
  modeUsrDesignVec_.push_back(stored);
  // The LUT engine's copy is out of date.
  const ResultT enabled = EnableUserColorField(std::string(FieldText(stored.id)), true);
  if (enabled != ResultOk) {
    log.Error(L"Edit userDesign file success, but enable fail");
  }
  return enabled;
}

// A mode that is not in the table counts as unchanged.
bool ColorFieldApi::IsUserDesignDataChange(const UserDesignInfo& info,
                                           const std::string& oldId) const {
  constexpr FunctionLog log("ColorFieldApi::IsUserDesignDataChange");
  const auto differs = [](double a, double b) { return std::fabs(a - b) > kSameValue; };
  for (const UserDesignInfo& row : modeUsrDesignVec_) {
    if (HasId(row, oldId) && (differs(row.gamma, info.gamma) || row.gamut != info.gamut ||
                              differs(row.whitePointX, info.whitePointX) ||
                              differs(row.whitePointY, info.whitePointY))) {
      log.Info(L" UserDesign data is change");
      return true;
    }
  }
  log.Info(L" UserDesign data is not change");
  return false;
}

// The colours changed: all files are made anew. Under the same id they are overwritten.
ResultT ColorFieldApi::EditUserDesignData(UserDesignInfo& info, const std::string& oldId,
                                          UserDesignInfo& out) {
  constexpr FunctionLog log("ColorFieldApi::EditUserDesignData");
  const ResultT created = CreateFileByUsrDesignInfo(info);
  if (created != ResultOk) {
    log.Error(L"Create user design color file fail, old id: ", oldId);
    return created;
  }
  if (!HasId(info, oldId)) {
    const UserModeFiles old = FilesOf(oldId);
    RemoveOldFile(old.icc, log);
    RemoveOldFile(old.lut3D, log);
    RemoveOldFile(old.gamma, log);
  }
  const ResultT filled = SaveUserDesignAttributeInfo(info, out);
  if (filled != ResultOk) {
    log.Error(L"SaveUserDesignAttributeInfo fail, old id: ", oldId);
  }
  return filled;
}

// The colours are the same: the LUT files are renamed, from a file to itself where the id is the
// same. The profile is made anew, as the name stands in it.
ResultT ColorFieldApi::EditUserDesignDescription(UserDesignInfo& info, const std::string& oldId,
                                                 UserDesignInfo& out) {
  constexpr FunctionLog log("ColorFieldApi::EditUserDesignDescription");
  const UserModeFiles old = FilesOf(oldId);
  const UserModeFiles files = FilesOf(FieldText(info.id));
  if (std::rename(old.lut3D.c_str(), files.lut3D.c_str()) != 0) {
    log.Error(L"rename 3dlut file failed, des3DLutFile: ", files.lut3D);
    return ResultColorFieldError;
  }
  if (std::rename(old.gamma.c_str(), files.gamma.c_str()) != 0) {
    log.Error(L"rename gamma file failed, desGammaLutFile: ", files.gamma);
    std::rename(files.lut3D.c_str(), old.lut3D.c_str());
    return ResultColorFieldError;
  }
  if (iccProfileOperation_.CreateAndSaveIccProfile(info) != ResultOk) {
    log.Error(L"Create new icc file failed");
    std::rename(files.lut3D.c_str(), old.lut3D.c_str());
    std::rename(files.gamma.c_str(), old.gamma.c_str());
    return ResultColorFieldError;
  }
  CopyUsrDesignFile(std::string(FieldText(info.iccPath)), files.icc);
  if (!HasId(info, oldId) && std::remove(old.icc.c_str()) != 0) {
    log.Warn(L"Delete iccProfile failed, iccProfile: ", old.icc);
  }
  const ResultT filled = SaveUserDesignAttributeInfo(info, out);
  if (filled != ResultOk) {
    log.Error(L"SaveUserDesignAttributeInfo fail, old id: ", oldId);
  }
  return filled;
}

ResultT ColorFieldApi::DeleteUserSelfColor(const std::string& id) {
  constexpr FunctionLog log("ColorFieldApi::DeleteUserSelfColor");
  const auto row = std::ranges::find_if(
      modeUsrDesignVec_, [&id](const UserDesignInfo& info) { return HasId(info, id); });
  if (row == modeUsrDesignVec_.end()) {
    log.Warn(L"Delete user self color mode info fail, id = ", id);
    return ResultFailed;
  }
  modeUsrDesignVec_.erase(row);
  return ResultOk;
}

}  // namespace velora
