// Installing a profile: real, but for what Windows allows and Wine does not.
#include <windows.h>

#include <gtest/gtest.h>
#include <icm.h>

#include <filesystem>
#include <string>

#include "support/NotebookTest.h"
#include "virtualnotebook/Factory.h"

namespace virtualnotebook {
namespace {

namespace fs = std::filesystem;

constexpr wchar_t kName[] = L"NVX-InstallTest.icc";

class ProfileInstallation : public testsupport::NotebookTest {
 protected:
  ProfileInstallation() {
    wchar_t directory[MAX_PATH];
    DWORD size = sizeof directory;
    GetColorDirectoryW(nullptr, directory, &size);
    installed_ = fs::path(directory) / kName;
    fs::remove(installed_);
    source_ = fs::path(testing::TempDir()) / kName;
    testsupport::WriteFileBytes(source_.string(), MakePresetProfile(kSrgbLut));
  }
  ~ProfileInstallation() override {
    fs::remove(installed_);
    fs::remove(source_);
  }

  BOOL Install(const std::wstring& profile) {
    SetLastError(0xdeadbeef);
    return InstallColorProfileW(nullptr, profile.c_str());
  }

  fs::path source_;
  fs::path installed_;
};

TEST_F(ProfileInstallation, CopiesTheFile) {
  EXPECT_TRUE(Install(source_.wstring()));
  EXPECT_TRUE(fs::exists(installed_));
}

TEST_F(ProfileInstallation, TakesAnInstalledProfileAgain) {
  EXPECT_TRUE(Install(source_.wstring()));
  EXPECT_TRUE(Install(source_.wstring()));
}

TEST_F(ProfileInstallation, TakesAnInstalledProfileByItsBareName) {
  EXPECT_FALSE(Install(kName));
  EXPECT_EQ(DWORD{ERROR_FILE_NOT_FOUND}, GetLastError());
  EXPECT_TRUE(Install(source_.wstring()));
  EXPECT_TRUE(Install(kName));
}

TEST_F(ProfileInstallation, RefusesAMissingFileThoughItsNameIsInstalled) {
  EXPECT_TRUE(Install(source_.wstring()));
  fs::remove(source_);
  EXPECT_FALSE(Install(source_.wstring()));
  EXPECT_EQ(DWORD{ERROR_FILE_NOT_FOUND}, GetLastError());
}

TEST_F(ProfileInstallation, RefusesNothing) {
  EXPECT_FALSE(InstallColorProfileW(nullptr, nullptr));
  EXPECT_FALSE(Install(L""));
}

}  // namespace
}  // namespace virtualnotebook
