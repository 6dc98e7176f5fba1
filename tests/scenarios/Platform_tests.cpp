// The platform library's start and stop through the shipped library.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/NotebookTest.h"
#include "virtualnotebook/HostedLibrary.h"

namespace virtualnotebook {
namespace {

TEST(Platform, InitAndFiniDoNoMoreThanTheirCalls) {
  HostedLibrary library;
  EXPECT_EQ(library.Init(), 0);
  EXPECT_EQ(library.Fini(), 0);
  const std::vector<std::string> calls = {"PlatformInit", "PlatformFini"};
  EXPECT_EQ(testsupport::CallsOf(library.notebook, calls), calls);
  EXPECT_EQ(library.notebook.calls.size(), calls.size());
  EXPECT_TRUE(testsupport::LogIs(library.notebook, {}));
}

TEST(Platform, InitAndFiniGiveThePlatformsResult) {
  HostedLibrary library;
  library.notebook.FailCall("PlatformInit", 1, static_cast<uint32_t>(-7));
  library.notebook.FailCall("PlatformFini", 1, 23);
  EXPECT_EQ(library.Init(), -7);
  EXPECT_EQ(library.Fini(), 23);
}

}  // namespace
}  // namespace virtualnotebook
