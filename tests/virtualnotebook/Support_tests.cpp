// What tests/support offers to tests on the notebook.
#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <stdexcept>
#include <string>

#include "support/NotebookTest.h"

namespace testsupport {
namespace {

constexpr wchar_t kKey[] = L"Software\\VeloraSupportTest";
constexpr wchar_t kSubKey[] = L"Software\\VeloraSupportTest\\Sub";

bool KeyExists() {
  return RegGetValueW(HKEY_CURRENT_USER, kSubKey, L"value", RRF_RT_ANY, nullptr, nullptr,
                      nullptr) == ERROR_SUCCESS;
}

void MakeKey() {
  const DWORD value = 1;
  ASSERT_EQ(RegSetKeyValueW(HKEY_CURRENT_USER, kSubKey, L"value", REG_DWORD, &value, sizeof value),
            ERROR_SUCCESS);
}

class Support : public NotebookTest {};

TEST_F(Support, ScopedKey_IsNotThereAtTheStartAndNotAtTheEnd) {
  MakeKey();
  {
    ScopedKey key(HKEY_CURRENT_USER, kKey);
    EXPECT_FALSE(KeyExists());
    MakeKey();
    EXPECT_TRUE(KeyExists());
  }
  EXPECT_FALSE(KeyExists());
}

TEST_F(Support, ScratchDirectory_HoldsFilesForItsLife) {
  std::string path;
  {
    ScratchDirectory scratch;
    path = scratch.Write("sub\\file.bin", {1, 0, 13, 10, 26, 255});
    EXPECT_THAT(scratch.Read("sub\\file.bin"), ::testing::ElementsAre(1, 0, 13, 10, 26, 255));
    EXPECT_EQ(std::filesystem::file_size(path), 6U);
    EXPECT_THROW(scratch.Read("other"), std::runtime_error);
  }
  EXPECT_FALSE(std::filesystem::exists(path));
  EXPECT_TRUE(std::filesystem::is_empty(ScratchDirectory().Path())) << "a second one starts anew";
}

TEST_F(Support, LeavesNoTraceInTheRecords) {
  ScopedKey key(HKEY_CURRENT_USER, kKey);
  ScratchDirectory scratch;
  scratch.Write("file.bin", {1});
  scratch.Read("file.bin");
  EXPECT_THAT(notebook.calls, ::testing::IsEmpty());
}

TEST_F(Support, CallsOf_KeepsTheOrderOfTheFunctionsAskedFor) {
  HKEY key = nullptr;
  RegOpenKeyW(HKEY_CURRENT_USER, L"Software", &key);
  SetEvent(nullptr);
  RegCloseKey(key);
  EXPECT_THAT(CallsOf(notebook, {"RegCloseKey", "RegOpenKeyW"}),
              ::testing::ElementsAre("RegOpenKeyW", "RegCloseKey"));
}

}  // namespace
}  // namespace testsupport
