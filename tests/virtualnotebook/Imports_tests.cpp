#include "virtualnotebook/Imports.h"

#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace virtualnotebook {
namespace {

// A misspelt name would never be found in an import table, and its stand-in never called.
TEST(Imports, EachIsAnExportOfTheLibraryThatItNames) {
  for (const ImportedFunction& function : Imports()) {
    const HMODULE library = LoadLibraryA(function.library);
    ASSERT_NE(library, nullptr) << function.library;
    EXPECT_NE(GetProcAddress(library, function.symbol), nullptr)
        << function.library << ": " << function.symbol;
  }
}

TEST(Imports, NamesAreUnique) {
  std::vector<std::string> names;
  for (const ImportedFunction& function : Imports()) {
    EXPECT_THAT(names, ::testing::Not(::testing::Contains(function.name)));
    names.emplace_back(function.name);
  }
}

}  // namespace
}  // namespace virtualnotebook
