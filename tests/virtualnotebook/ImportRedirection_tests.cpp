#include "virtualnotebook/ImportRedirection.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <stdexcept>

#include "virtualnotebook/Notebook.h"
#include "virtualnotebook/probe/Probe.h"

namespace virtualnotebook {
namespace {

constexpr wchar_t kSoftware[] = L"Software";

// probe.dll, loaded for one test.
class ImportRedirection_OfADll : public ::testing::Test {
 protected:
  ~ImportRedirection_OfADll() override { Free(); }

  void Free() {
    if (module_ != nullptr) {
      FreeLibrary(module_);
    }
    module_ = nullptr;
  }

  template <typename Function>
  Function* Find(const char* name) const {
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(module_, name)));
  }

  HMODULE module_ = LoadLibraryW(L"probe.dll");
  decltype(::ProbeOpenKey)* openKey_ = Find<decltype(::ProbeOpenKey)>("ProbeOpenKey");
  decltype(::ProbeOpenKeyGuarded)* openKeyGuarded_ =
      Find<decltype(::ProbeOpenKeyGuarded)>("ProbeOpenKeyGuarded");
};

TEST_F(ImportRedirection_OfADll, HearsTheDllAndNotTheProgram) {
  Notebook notebook(module_);
  HKEY key = nullptr;
  ASSERT_EQ(RegOpenKeyW(HKEY_CURRENT_USER, kSoftware, &key), ERROR_SUCCESS);
  RegCloseKey(key);
  EXPECT_EQ(notebook.CountCalls("RegOpenKeyW"), 0U);
  EXPECT_EQ(openKey_(kSoftware), ERROR_SUCCESS);
  EXPECT_EQ(notebook.CountCalls("RegOpenKeyW"), 1U);
}

TEST_F(ImportRedirection_OfADll, PutsTheImportsBackAtItsEnd) {
  {
    Notebook notebook(module_);
    notebook.FailCall("RegOpenKeyW", 0, ERROR_ACCESS_DENIED);
    EXPECT_EQ(openKey_(kSoftware), ERROR_ACCESS_DENIED);
  }
  EXPECT_EQ(openKey_(kSoftware), ERROR_SUCCESS);
  Notebook next(module_);
  EXPECT_EQ(openKey_(kSoftware), ERROR_SUCCESS);
  EXPECT_EQ(next.CountCalls("RegOpenKeyW"), 1U);
}

TEST_F(ImportRedirection_OfADll, KeepsTheDllUntilItsEnd) {
  {
    Notebook notebook(module_);
    Free();
    EXPECT_NE(GetModuleHandleW(L"probe.dll"), nullptr);
  }
  EXPECT_EQ(GetModuleHandleW(L"probe.dll"), nullptr);
}

TEST_F(ImportRedirection_OfADll, RefusesWhatIsNoModule) {
  EXPECT_THROW(Notebook notebook(reinterpret_cast<HMODULE>(4096)), std::invalid_argument);
  Notebook next(module_);  // the refused one is out of the way
}

// The DLL and the program have a C++ runtime each; a type is one type in both by its name.
TEST_F(ImportRedirection_OfADll, TheDllCatchesWhatTheStandInThrows) {
  Notebook notebook(module_);
  notebook.ThrowFrom("RegOpenKeyW", 1, "thrown in the program");
  char what[64] = "";
  EXPECT_EQ(openKeyGuarded_(kSoftware, what, sizeof what), -1);
  EXPECT_STREQ(what, "thrown in the program");
  EXPECT_EQ(openKeyGuarded_(kSoftware, what, sizeof what), ERROR_SUCCESS);
}

TEST_F(ImportRedirection_OfADll, WhatTheDllDoesNotCatchReachesTheProgram) {
  Notebook notebook(module_);
  notebook.ThrowFrom("RegOpenKeyW", 1, "through the DLL");
  try {
    openKey_(kSoftware);
    FAIL() << "nothing was thrown";
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(), "through the DLL");
  }
}

}  // namespace
}  // namespace virtualnotebook
