#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <filesystem>
#include <initializer_list>
#include <set>
#include <string>
#include <system_error>
#include <vector>

#include "colorfield/ColorFieldApi.h"
#include "support/NotebookTest.h"
#include "virtualnotebook/Factory.h"
#include "virtualnotebook/Machine.h"

// A directory for one test's files. The library keeps profiles open after some failures, for as
// long as the process lives: what can't be removed is left to the next run of the program.
class ProfileDirectory {
 public:
  ProfileDirectory() {
    static int count = 0;
    if (count == 0) {
      Remove(kRoot);
    }
    path_ = kRoot + std::to_string(++count) + "\\";
    std::filesystem::create_directories(path_);
  }
  ~ProfileDirectory() { Remove(path_); }
  ProfileDirectory(const ProfileDirectory&) = delete;
  ProfileDirectory& operator=(const ProfileDirectory&) = delete;

  std::string Path(const std::string& name = "") const { return path_ + name; }

 private:
  static void Remove(const std::string& path) {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
  }

  static inline const std::string kRoot = "C:\\velora-colorfield-tests\\";
  std::string path_;
};

// A notebook with one panel whose default profile is "VeloraOld.icc", a preset profile
// "VeloraNew.icc" with its digest file, and a ColorFieldApi that knows nothing yet.
class ColorFieldTest : public testsupport::NotebookTest {
 protected:
  ColorFieldTest() {
    virtualnotebook::SetUpNotebook(notebook);
    notebook.profiles[panel] = {L"VeloraOld.icc"};
    testsupport::WriteFileBytes(newPath, newProfile);
    testsupport::WriteFileBytes(digestPath, Digest());
    testsupport::WriteFileBytes(InstalledPath("VeloraOld.icc"),
                                virtualnotebook::MakePresetProfile(virtualnotebook::kSrgbLut));
    notebook.ForgetRecords();  // of the construction of api
  }
  ~ColorFieldTest() override {
    for (const char* name : {"VeloraOld.icc", "VeloraNew.icc"}) {
      std::filesystem::remove(InstalledPath(name));
    }
  }

  static std::string InstalledPath(const std::string& name) {
    return "C:\\windows\\system32\\spool\\drivers\\color\\" + name;
  }
  std::vector<uint8_t> Digest() const {
    return virtualnotebook::MakeDigestFile({{"VeloraNew.icc", newProfile}});
  }
  static std::wstring Wide(const std::string& ascii) { return {ascii.begin(), ascii.end()}; }

  // Records of a host. Texts beyond a field run on into the next one.
  static ColorFieldInitInfo InitInfo(ColorFieldSetType setType, const std::string& digest) {
    ColorFieldInitInfo info{};
    info.setType = setType;
    digest.copy(reinterpret_cast<char*>(&info) + offsetof(ColorFieldInitInfo, pIccCheckFilePath),
                200);
    return info;
  }
  static ColorFieldModeInfo ModeInfo(ColorFieldMode mode, const std::string& iccPath) {
    ColorFieldModeInfo info{};
    info.mode = mode;
    iccPath.copy(reinterpret_cast<char*>(&info) + offsetof(ColorFieldModeInfo, iccPath), 150);
    return info;
  }
  static UserDesignInfo UserMode(const std::string& modeName, const std::string& iccPath) {
    UserDesignInfo info{};
    modeName.copy(info.modeName, sizeof info.modeName);
    (modeName + "%1").copy(info.id, sizeof info.id);
    iccPath.copy(info.iccPath, sizeof info.iccPath);
    return info;
  }

  void Init(ColorFieldSetType setType) {
    const ColorFieldInitInfo info = InitInfo(setType, digestPath);
    ASSERT_EQ(api.InitColorFieldInfo(&info), ResultOk);
    notebook.ForgetRecords();
  }
  void AddMode(ColorFieldMode mode, const std::string& iccPath) {
    const ColorFieldModeInfo info = ModeInfo(mode, iccPath);
    ASSERT_EQ(api.AddColorFieldModeInfo(&info), ResultOk);
    notebook.ForgetRecords();
  }
  void AddUserMode(const std::string& modeName, const std::string& iccPath) {
    const UserDesignInfo info = UserMode(modeName, iccPath);
    ASSERT_EQ(api.AddUsrDesignInfo(&info), ResultOk);
  }

  using Lines = std::vector<testsupport::LogLine>;

  // The log is these lines and no others.
  testing::AssertionResult LogIs(std::initializer_list<Lines> parts) const {
    Lines all;
    for (const Lines& part : parts) all.insert(all.end(), part.begin(), part.end());
    return testsupport::LogIs(notebook, all);
  }

  // What GetDefaultIccFile logs on this notebook.
  Lines QueryLines(const std::wstring& currentProfile = L"VeloraOld.icc") const {
    return {{1,
             L"instanceName is DISPLAY\\NVX1234\\4&1a2b3c&0&UID0_0"
             L"(ColorFieldApi::GetTargetMonitorNameByWmi)"},
            {1, L"monitorDriverName is NVX1234(ColorFieldApi::GetTargetMonitorNameByWmi)"},
            {1, L"monitorName is " + panel + L"(ColorFieldApi::GetTargetMonitorName)"},
            {1, L"targetMonitorName is " + panel + L",pFileName is " + currentProfile +
                    L"(ColorFieldApi::GetDefaultIccFile)"}};
  }
  static Lines CompareLine(const std::wstring& current, const std::wstring& target) {
    return {{0, L"currentIccFileName:" + current + L", targetIccFileName:" + target +
                    L"(ColorFieldApi::IsIccAlreadyAssociated)"}};
  }
  // What GetProfileHandle logs for a profile that opens.
  static Lines OpenLine(const std::wstring& path) {
    return {{1, L"GetProfileHandle OpenColorProfile Success!" + path + L", buf size:" +
                    std::to_wstring(path.size()) + L", cbDataSize:" +
                    std::to_wstring(2 * path.size() + 2) + L"(ColorFieldApi::GetProfileHandle)"}};
  }
  static Lines OpenFailedLine(const std::wstring& path) {
    return {{3, L"GetProfileHandle OpenColorProfile Failed!" + path + L", buf size:" +
                    std::to_wstring(path.size()) + L", cbDataSize:" +
                    std::to_wstring(2 * path.size() + 2) + L"(ColorFieldApi::GetProfileHandle)"}};
  }
  static Lines AssociateLine(const std::wstring& path) {
    return {{0, path + L"(ColorFieldApi::AssociateIccFile)"}};
  }
  static Lines NotOnTheListLine(const std::wstring& path) {
    return {{1, L"WcsDisassociateColorProfileFromDevice Failed, iccFileName is " + path +
                    L"(ColorFieldApi::AssociateIccFile)"}};
  }

  // The calls to the colour system, the displays, WMI and the platform, as "Name(argument, ...)".
  std::vector<std::string> SystemCalls() const {
    static const std::set<std::string> kShown = {"EnumDisplayDevicesW",
                                                 "WcsGetDefaultColorProfile",
                                                 "WcsAssociateColorProfileWithDevice",
                                                 "WcsDisassociateColorProfileFromDevice",
                                                 "InstallColorProfileW",
                                                 "GetStandardColorSpaceProfileW",
                                                 "OpenColorProfileW",
                                                 "IsColorProfileValid",
                                                 "CreateMultiProfileTransform",
                                                 "CloseColorProfile",
                                                 "WmiQuery::ExcuteQueryImpl",
                                                 "CoreKit::GetDisplayType",
                                                 "PlatformSet3DLut",
                                                 "PlatformReset3DLut",
                                                 "PlatformSetPccMatrixInfo"};
    // Their arguments hold addresses.
    static const std::set<std::string> kNameOnly = {"EnumDisplayMonitors", "GetMonitorInfoW"};
    std::vector<std::string> texts;
    for (const auto& call : notebook.calls) {
      if (kShown.contains(call.function)) {
        texts.push_back(testing::PrintToString(call));
      } else if (kNameOnly.contains(call.function)) {
        texts.push_back(call.function);
      }
    }
    return texts;
  }

  const std::wstring panel = virtualnotebook::MonitorDeviceId(virtualnotebook::kPanelDeviceId);
  const std::vector<uint8_t> newProfile =
      virtualnotebook::MakePresetProfile(virtualnotebook::kP3Lut);
  ProfileDirectory directory;
  const std::string newPath = directory.Path("VeloraNew.icc");
  const std::string digestPath = directory.Path("digest.bin");
  const std::wstring newFile = Wide(newPath);
  // Wine's own.
  const std::wstring srgbFile =
      L"C:\\windows\\system32\\spool\\drivers\\color\\srgb color space profile.icm";
  velora::ColorFieldApi api;
};
