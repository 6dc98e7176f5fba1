#include "icc/ICCProfileOperation.h"

#include <windows.h>

#include <lcms2.h>

#include <memory>
#include <new>
#include <vector>

#include "CoreKit/CoreKit.h"
#include "colormath/TargetGamuts.h"
#include "frame/Constants.h"
#include "frame/Log.h"
#include "frame/Sha256.h"
#include "frame/SharedFile.h"
#include "frame/TextField.h"

namespace velora {
namespace {

// Where ICC.1 has the preferred CMM and the profile creator, and what stands there.
constexpr uint64_t kCmmOffset = 4;
constexpr uint64_t kCreatorOffset = 80;
constexpr uint8_t kSignature[] = {'M', 'S', 'F', 'T'};

constexpr int kAccessFailed = 1;  // CoreKit's result

constexpr char kLanguage[] = "en";
constexpr char kCountry[] = "US";
constexpr wchar_t kCopyright[] = L"No copyright, use freely";

struct ProfileCloser {
  void operator()(void* profile) const { cmsCloseProfile(profile); }
};
using Profile = std::unique_ptr<void, ProfileCloser>;

struct MluDeleter {
  void operator()(cmsMLU* mlu) const { cmsMLUfree(mlu); }
};

bool GamutAssign(cmsCIExyYTRIPLE& primaries, const UserDesignInfo& info) {
  constexpr FunctionLog log("ICCProfileOperation::GamutAssign");
  const ChromaticityGamut* gamut = FindTargetGamut(info.gamut);
  if (gamut == nullptr) {
    log.Error(L"Can not find specified gamut");
    return false;
  }
  primaries.Red = {gamut->redX, gamut->redY, 1.0};
  primaries.Green = {gamut->greenX, gamut->greenY, 1.0};
  primaries.Blue = {gamut->blueX, gamut->blueY, 1.0};
  return true;
}

// What differs between the two text tags.
struct TextTag {
  cmsTagSignature signature;
  const wchar_t* noMemory;
  const wchar_t* notSet;
  const wchar_t* notWritten;
};

bool WriteTextTag(cmsHPROFILE profile, const TextTag& tag, const wchar_t* text,
                  const FunctionLog& log) {
  const std::unique_ptr<cmsMLU, MluDeleter> mlu(cmsMLUalloc(cmsGetProfileContextID(profile), 1));
  if (mlu == nullptr) {
    log.Error(tag.noMemory);
    return false;
  }
  if (!cmsMLUsetWide(mlu.get(), kLanguage, kCountry, text)) {
    log.Error(tag.notSet);
    return false;
  }
  if (!cmsWriteTag(profile, tag.signature, mlu.get())) {
    log.Error(tag.notWritten);
    return false;
  }
  return true;
}

bool SetDescriptionTags(cmsHPROFILE profile, const wchar_t* text) {
  constexpr TextTag kTag = {cmsSigProfileDescriptionTag,
                            L"Allocate memory failed for descriptionMLU",
                            L"Set description tag failed", L"Write description tag failed"};
  return WriteTextTag(profile, kTag, text, FunctionLog("ICCProfileOperation::SetDescriptionTags"));
}

bool SetCopyrightTags(cmsHPROFILE profile) {
  constexpr TextTag kTag = {cmsSigCopyrightTag, L"Allocate memory failed for copyrightMLU",
                            L"Set copyright tag failed", L"Write copyright tag failed"};
  return WriteTextTag(profile, kTag, kCopyright,
                      FunctionLog("ICCProfileOperation::SetCopyrightTags"));
}

bool SetTextTags(cmsHPROFILE profile, const wchar_t* text) {
  constexpr FunctionLog log("ICCProfileOperation::SetTextTags");
  // The description comes first in the file: the check finds it at a fixed place.
  if (!SetDescriptionTags(profile, text)) {
    log.Error(L"Set description tag failed");
    return false;
  }
  if (!SetCopyrightTags(profile)) {
    log.Error(L"Set copyright tag failed");
    return false;
  }
  return true;
}

bool SetTextTagsWithByteTranslate(cmsHPROFILE profile, const char* text) {
  constexpr FunctionLog log("ICCProfileOperation::SetTextTagsWithByteTranslate");
  const int size = MultiByteToWideChar(CP_ACP, 0, text, -1, nullptr, 0);
  const std::unique_ptr<wchar_t[]> wide(new (std::nothrow) wchar_t[static_cast<size_t>(size)]());
  if (wide == nullptr) {
    log.Error(L"Assign memery failed");
    return false;
  }
  MultiByteToWideChar(CP_ACP, 0, text, -1, wide.get(), size);
  if (!SetTextTags(profile, wide.get())) {
    log.Error(L"Set texttags failed");
    return false;
  }
  return true;
}

Profile CreateUsrDesignIccProfile(const UserDesignInfo& info) {
  constexpr FunctionLog log("ICCProfileOperation::CreateUsrDesignIccProfile");
  cmsCIExyYTRIPLE primaries;
  if (!GamutAssign(primaries, info)) {
    log.Error(L"Assign value failed");
    return nullptr;
  }
  cmsToneCurve* curve = cmsBuildGamma(nullptr, info.gamma);
  if (curve == nullptr) {
    log.Error(L"Build gamma failed");
    return nullptr;
  }
  const cmsCIExyY white = {info.whitePointX, info.whitePointY, 1.0};
  cmsToneCurve* curves[3] = {curve, curve, curve};
  Profile profile(cmsCreateRGBProfile(&white, &primaries, curves));
  cmsFreeToneCurve(curve);
  if (profile == nullptr) {
    log.Error(L"Create rgbprofile failed");
    return nullptr;
  }
  if (!SetTextTagsWithByteTranslate(profile.get(), std::string(FieldText(info.modeName)).c_str())) {
    log.Error(L"Set icc description tag failed");
    return nullptr;
  }
  return profile;
}

bool GetSha256Value(const SharedFile& file, uint8_t* hash, uint64_t& size) {
  constexpr FunctionLog log("ICCProfileOperation::GetSha256Value");
  // Without its size the hash would go over the profile's head.
  if (!file.GetSize(size)) {
    return false;
  }
  const std::unique_ptr<uint8_t[]> bytes(new (std::nothrow) uint8_t[size]());
  if (bytes == nullptr) {
    log.Error(L"Memery allocation failed");
    return false;
  }
  file.ReadAt(0, {bytes.get(), size});
  return Sha256({bytes.get(), size}, hash);
}

bool WriteSha256ValueToIccProfile(const SharedFile& file) {
  constexpr FunctionLog log("ICCProfileOperation::WriteSha256ValueToIccProfile");
  uint8_t hash[32];
  uint64_t size = 0;
  if (!GetSha256Value(file, hash, size)) {
    log.Error(L"Can not get Sha256 Value");
    return false;
  }
  file.WriteAt(size, hash);
  return true;
}

}  // namespace

int ICCProfileOperation::CreateAndSaveIccProfile(UserDesignInfo& info) const {
  constexpr FunctionLog log("ICCProfileOperation::CreateAndSaveIccProfile");
  const std::string path =
      std::string(userTempDir) + "\\" + std::string(FieldText(info.id)) + "_usr.icc";
  if (CopyToField(info.iccPath, path.c_str()) != 0) {
    log.Error(L"copy icc profile path failed");
    return ResultFailed;
  }
  Profile profile = CreateUsrDesignIccProfile(info);
  if (profile == nullptr) {
    log.Error(L"Create icc profile failed");
    return ResultFailed;
  }
  log.Info(L"Create icc profile success");
  const bool saved = cmsSaveProfileToFile(profile.get(), path.c_str()) != 0;
  profile.reset();
  if (!saved) {
    log.Error(L"Save icc profile failed");
    return ResultFailed;
  }
  if (!ModifyICCProfile(path)) {
    log.Error(L"Modify icc profile header failed");
    return ResultFailed;
  }
  if (CoreKit::EnableFileUsersPriviledge(path) == kAccessFailed) {
    log.Error(L"Modify icc profile privilegde failed");
    return ResultFailed;
  }
  log.Info(L"Save icc profile success, icc profile's path is ", path);
  return ResultOk;
}

bool ICCProfileOperation::ModifyICCProfile(const std::string& path) const {
  constexpr FunctionLog log("ICCProfileOperation::ModifyICCProfile");
  const SharedFile file = SharedFile::OpenForUpdating(path);
  if (!file.IsOpen()) {
    log.Error(L"Open iccfile failed, iccfileName is ", path);
    return false;
  }
  file.WriteAt(kCmmOffset, kSignature);
  file.WriteAt(kCreatorOffset, kSignature);
  if (!WriteSha256ValueToIccProfile(file)) {
    log.Error(L"Write Sha256Value failed");
    return false;
  }
  return true;
}

bool ICCProfileOperation::ICCProfileSha256Check(const std::string& path,
                                                const std::string& modeName) const {
  constexpr FunctionLog log("ICCProfileOperation::ICCProfileSha256Check");
  const SharedFile file = SharedFile::OpenForReading(path);
  if (!file.IsOpen()) {
    log.Error(L"Open iccfile failed, iccfileName is ", path);
    return false;
  }
  uint8_t head[kProfileHead] = {};
  file.ReadAt(0, head);
  return CheckProfile(head, modeName);
}

}  // namespace velora
