// Registration of modes, and look-ups in what was registered.
#include "colorfield/ColorFieldApi.h"

#include <algorithm>

#include "CoreKit/CoreKit.h"
#include "frame/Log.h"
#include "frame/TextField.h"

namespace velora {

ColorFieldApi& ColorFieldApi::GetInstance() {
  static ColorFieldApi instance;
  return instance;
}

ColorFieldApi::~ColorFieldApi() { CloseProfileHandles(); }

ResultT ColorFieldApi::InitColorFieldInfo(const ColorFieldInitInfo* info) {
  constexpr FunctionLog log("ColorFieldApi::InitColorFieldInfo");
  if (info == nullptr) {
    log.Debug(L"InitColorFieldInfo input para is NULL.");
    return ResultFailed;
  }
  // Emptied first: a digest path that is refused below leaves no preset modes.
  modeIccVec_.clear();
  setType_ = info->setType;
  defaultMode_ = info->defaultMode;
  reservedType_ = info->reservedType;
  // Nothing clears the field first: behind a shorter path the tail of an older one stays.
  if (CopyToField(iccCheckFilePath_, info->pIccCheckFilePath) != 0) {
    log.Error(L"InitColorFieldInfo pIccCheckFilePath memcpy error.");
    return ResultFailed;
  }
  log.Debug(L"pIccCheckFilePath:", FieldText(info->pIccCheckFilePath));
  return colorField3DLut_.InitColorFieldThreeLutBaseInfo(*info) == 0 ? ResultOk : ResultFailed;
}

ResultT ColorFieldApi::AddColorFieldModeInfo(const ColorFieldModeInfo* modeInfo) {
  constexpr FunctionLog log("ColorFieldApi::AddColorFieldModeInfo");
  if (modeInfo == nullptr) {
    log.Debug(L"AddColorFieldModeInfo input para is NULL.");
    return ResultFailed;
  }
  ColorFieldModeInfo row{};
  row.mode = modeInfo->mode;
  if (modeInfo->gamma != 0 && modeInfo->temperR != 0 && modeInfo->temperG != 0 &&
      modeInfo->temperB != 0) {
    colorField3DLut_.InitColorFieldGammaInfo(*modeInfo);
  }
  if (CopyToField(row.iccPath, modeInfo->iccPath) != 0) {
    // The wording names the other operation. What the LUT engine was told above stands.
    log.Error(L"InitColorFieldInfo memcpy error.");
    return ResultFailed;
  }
  std::ranges::copy(modeInfo->PlatformPccMatrix, row.PlatformPccMatrix);
  modeIccVec_.push_back(row);
  const double* const m = row.PlatformPccMatrix;
  log.Debug(L"mode:", row.mode, L",iccpath:", FieldText(row.iccPath), L"PlatformPccMatrix: ", m[0],
            L" ", m[1], L" ", m[2], L" ", m[3], L" ", m[4], L" ", m[5], L" ", m[6], L" ", m[7],
            L" ", m[8]);
  return ResultOk;
}

ResultT ColorFieldApi::AddUsrDesignInfo(const UserDesignInfo* modeInfo) {
  constexpr FunctionLog log("ColorFieldApi::AddUsrDesignInfo");
  if (modeInfo == nullptr) {
    log.Error(L"AddUsrDesignInfo input para is NULL.");
    return ResultFailed;
  }
  modeUsrDesignVec_.push_back(*modeInfo);
  return ResultOk;
}

bool ColorFieldApi::FindIccFilePathByMode(ColorFieldMode mode, std::string& path) const {
  constexpr FunctionLog log("ColorFieldApi::FindIccFilePathByMode");
  const auto row = std::ranges::find(modeIccVec_, mode, &ColorFieldModeInfo::mode);
  if (row != modeIccVec_.end()) {
    path = FieldText(row->iccPath);
  }
  if (row == modeIccVec_.end() || path.empty()) {
    log.Error(L"modeIccVec_ is not initialized.");
    return false;
  }
  return true;
}

bool ColorFieldApi::FindIccFilePathByModeName(const std::string& modeName,
                                              std::string& path) const {
  constexpr FunctionLog log("ColorFieldApi::FindIccFilePathByModeName");
  const auto row = std::ranges::find(modeUsrDesignVec_, modeName, [](const UserDesignInfo& info) {
    return FieldText(info.modeName);
  });
  if (row != modeUsrDesignVec_.end()) {
    path = FieldText(row->iccPath);
  }
  if (row == modeUsrDesignVec_.end() || path.empty()) {
    log.Error(L"modeUsrDesignVec_ is not initialized.");
    return false;
  }
  return true;
}

bool ColorFieldApi::FindUserModeByIcc(const std::wstring& iccFileName, std::string& id) const {
  constexpr FunctionLog log("ColorFieldApi::FindUserModeByIcc");
  // Containment: the system reports bare file names, the table holds full paths.
  const std::string fileName = CoreKit::WStringToString(iccFileName);
  for (const UserDesignInfo& row : modeUsrDesignVec_) {
    if (FieldText(row.iccPath).find(fileName) != std::string::npos) {
      id = FieldText(row.id);
      return true;
    }
  }
  log.Info(L"Not find user mode by icc, icc name :", iccFileName);
  return false;
}

bool ColorFieldApi::FindPccMatrixByMode(ColorFieldMode mode, PlatformPccMatrix& matrix) const {
  constexpr FunctionLog log("ColorFieldApi::FindPccMatrixByMode");
  const auto row = std::ranges::find(modeIccVec_, mode, &ColorFieldModeInfo::mode);
  if (row == modeIccVec_.end()) {
    log.Error(L"PccMatrix not found! mode:", mode);
    return false;
  }
  std::ranges::copy(row->PlatformPccMatrix, matrix.values);
  return true;
}

}  // namespace velora
