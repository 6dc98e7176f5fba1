// Files and events that lie elsewhere than the module believes.
#include <windows.h>

#include <direct.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <icm.h>
#include <io.h>

#include <cstdio>
#include <filesystem>
#include <string>

#include "CoreKit/CoreKit.h"
#include "support/NotebookTest.h"
#include "virtualnotebook/Factory.h"

namespace virtualnotebook {
namespace {

namespace fs = std::filesystem;

constexpr char kData[] = "C:\\ProgramData\\Comms\\NxVelora";
constexpr char kColor[] = "C:\\Windows\\System32\\spool\\drivers\\color";

class MovedFiles : public testsupport::NotebookTest {
 protected:
  MovedFiles() : scratch_(fs::path(testing::TempDir()) / "moved") {
    fs::remove_all(scratch_);
    fs::create_directories(scratch_ / "data");
    fs::create_directories(scratch_ / "color");
    notebook.movedFolders = {
        {std::wstring(std::begin(kData), std::end(kData) - 1), (scratch_ / "data").wstring()},
        {std::wstring(std::begin(kColor), std::end(kColor) - 1), (scratch_ / "color").wstring()}};
  }
  ~MovedFiles() override { fs::remove_all(scratch_); }

  std::string Data(const std::string& name) const { return std::string(kData) + "\\" + name; }
  bool IsThere(const char* name) const { return fs::exists(scratch_ / "data" / name); }
  void Write(const char* name, const std::string& text) const {
    testsupport::WriteFileBytes((scratch_ / "data" / name).string(), {text.begin(), text.end()});
  }

  fs::path scratch_;
};

TEST_F(MovedFiles, PathsWithinAFolderMoveWhateverTheirCase) {
  const std::string data = (scratch_ / "data").string();
  EXPECT_EQ(notebook.Moved(std::string(kData)), data);
  EXPECT_EQ(notebook.Moved(Data("a\\b.bin")), data + "\\a\\b.bin");
  EXPECT_EQ(notebook.Moved(std::string("c:\\PROGRAMDATA\\comms\\nxvelora\\A")), data + "\\A");
}

TEST_F(MovedFiles, OthersStay) {
  for (const std::string path : {"C:\\ProgramData\\Comms\\NxVelora2\\a", "C:\\ProgramData\\Comms",
                                 "D:\\ProgramData\\Comms\\NxVelora\\a", "NxVelora", ""}) {
    EXPECT_EQ(notebook.Moved(path), path);
  }
}

TEST_F(MovedFiles, OpenedRenamedCopiedAndRemoved) {
  const HANDLE file = CreateFileA(Data("one").c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                  FILE_ATTRIBUTE_NORMAL, nullptr);
  ASSERT_NE(file, INVALID_HANDLE_VALUE);
  CloseHandle(file);
  EXPECT_TRUE(IsThere("one"));
  EXPECT_EQ(_access(Data("one").c_str(), 0), 0);
  EXPECT_EQ(std::rename(Data("one").c_str(), Data("two").c_str()), 0);
  EXPECT_TRUE(IsThere("two"));
  EXPECT_TRUE(CopyFileW(L"C:\\ProgramData\\Comms\\NxVelora\\two",
                        L"C:\\ProgramData\\Comms\\NxVelora\\three", TRUE));
  EXPECT_TRUE(IsThere("three"));
  EXPECT_EQ(std::remove(Data("two").c_str()), 0);
  EXPECT_FALSE(IsThere("two"));
  EXPECT_EQ(_mkdir(Data("folder").c_str()), 0);
  EXPECT_TRUE(fs::is_directory(scratch_ / "data" / "folder"));
  EXPECT_EQ(CoreKit::EnableFileUsersPriviledge(Data("three")), 0);
  EXPECT_EQ(CoreKit::EnableFileUsersPriviledge(Data("none")), 1);
}

TEST_F(MovedFiles, AStreamOfTheCRuntime) {
  std::FILE* const file = std::fopen(Data("stream").c_str(), "wb");
  ASSERT_NE(file, nullptr);
  std::fclose(file);
  EXPECT_TRUE(IsThere("stream"));
}

TEST_F(MovedFiles, TheIniFile) {
  Write("SetColor.ini", "[A]\r\nB=5\r\n");
  wchar_t text[8] = L"";
  GetPrivateProfileStringW(L"A", L"B", L"", text, 8,
                           L"C:\\ProgramData\\Comms\\NxVelora\\SetColor.ini");
  EXPECT_STREQ(text, L"5");
}

TEST_F(MovedFiles, AProfileIsInstalledIntoItsFolderAndOpenedThere) {
  testsupport::WriteFileBytes((scratch_ / "data" / "a.icc").string(), MakePresetProfile(kSrgbLut));
  EXPECT_TRUE(InstallColorProfileW(nullptr, L"C:\\ProgramData\\Comms\\NxVelora\\a.icc"));
  EXPECT_TRUE(fs::exists(scratch_ / "color" / "a.icc"));
  EXPECT_TRUE(InstallColorProfileW(nullptr, L"a.icc"));
  EXPECT_FALSE(InstallColorProfileW(nullptr, L"b.icc"));
  EXPECT_EQ(GetLastError(), DWORD{ERROR_FILE_NOT_FOUND});

  for (std::wstring path : {L"C:\\Windows\\System32\\spool\\drivers\\color\\a.icc", L"a.icc"}) {
    PROFILE profile = {PROFILE_FILENAME, path.data(),
                       static_cast<DWORD>((path.size() + 1) * sizeof(wchar_t))};
    const HPROFILE handle =
        OpenColorProfileW(&profile, PROFILE_READ, FILE_SHARE_READ, OPEN_EXISTING);
    EXPECT_NE(handle, nullptr);
    CloseColorProfile(handle);
  }
}

class MovedEvents : public testsupport::NotebookTest {};

TEST_F(MovedEvents, AnEventHasANameOfItsOwn) {
  notebook.eventPrefix = L"Local\\moved-";
  const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, L"Global\\Bell");
  ASSERT_NE(event, nullptr);
  const HANDLE moved = OpenEventW(EVENT_ALL_ACCESS, FALSE, L"Local\\moved-Bell");
  EXPECT_NE(moved, nullptr);
  EXPECT_EQ(OpenEventW(EVENT_ALL_ACCESS, FALSE, L"Global\\Bell"), nullptr);
  CloseHandle(moved);
  CloseHandle(event);
}

}  // namespace
}  // namespace virtualnotebook
