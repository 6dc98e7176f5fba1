#include "virtualnotebook/HostedLibrary.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <stdexcept>
#include <string>

#include "support/NotebookTest.h"
#include "virtualnotebook/Factory.h"
#include "virtualnotebook/Machine.h"

namespace virtualnotebook {
namespace {

constexpr wchar_t kLibrary[] = L"VeloraCtlApi.dll";

TEST(HostedLibrary, LeavesNothingLoaded) {
  {
    HostedLibrary library;
    EXPECT_NE(GetModuleHandleW(kLibrary), nullptr);
  }
  EXPECT_EQ(GetModuleHandleW(kLibrary), nullptr);
}

// A process has a thousand and some: a program that loads the library for each of many tests would
// run out of them.
TEST(HostedLibrary, GivesThreadLocalSlotsBack) {
  const auto live = [] {
    HostedLibrary library;
    virtualnotebook::SetUpNotebook(library.notebook);
    library.notebook.ThrowFrom("WmiQuery::ExcuteQueryImpl", 1, "for the runtime's own slot");
    char vendor[5];
    EXPECT_ANY_THROW(library.GetVendor(vendor, sizeof vendor));
  };
  const auto firstFreeSlot = [] {
    const DWORD slot = TlsAlloc();
    TlsFree(slot);
    return slot;
  };
  live();
  const DWORD before = firstFreeSlot();
  for (int i = 0; i < 10; ++i) {
    live();
  }
  EXPECT_EQ(firstFreeSlot(), before);
}

// The feature flags are read once in a library's life: a second library reads them again.
TEST(HostedLibrary, EachHasSingletonsOfItsOwn) {
  const auto firstReads = [] {
    HostedLibrary library;
    library.IsFeatureSupport(FEATURE_TYPE_WHITEPOINT);
    const size_t reads = library.notebook.CountCalls("RegOpenKeyW");
    library.IsFeatureSupport(FEATURE_TYPE_WHITEPOINT);
    EXPECT_EQ(library.notebook.CountCalls("RegOpenKeyW"), reads);
    return reads;
  };
  const size_t reads = firstReads();
  EXPECT_GT(reads, 0U);
  EXPECT_EQ(firstReads(), reads);
}

TEST(HostedLibrary, TheNotebookHearsTheLibrary) {
  HostedLibrary library;
  library.notebook.platformType = 1;
  EXPECT_EQ(library.Init(), 0);
  EXPECT_TRUE(library.notebook.platform.initialised);
  library.SwitchUser();
  EXPECT_TRUE(testsupport::Logged(library.notebook, 1, L"(SwitchUser)"));
  EXPECT_EQ(library.Fini(), 0);
  EXPECT_FALSE(library.notebook.platform.initialised);
}

// The library and the program have a C++ runtime each: exceptions cross from one to the other.
TEST(HostedLibrary, AnExceptionOfAStandInRunsThroughTheExport) {
  HostedLibrary library;
  virtualnotebook::SetUpNotebook(library.notebook);
  library.notebook.ThrowFrom("WmiQuery::ExcuteQueryImpl", 1, "thrown by the notebook");
  char vendor[5] = "none";
  EXPECT_THROW(library.GetVendor(vendor, sizeof vendor), std::runtime_error);
  EXPECT_STREQ(vendor, "none");
}

TEST(HostedLibrary, TheLibraryCatchesWhatAStandInThrows) {
  std::filesystem::remove("C:\\ProgramData\\Comms\\NxVelora\\P3.bin");
  virtualnotebook::PluggedPanel panel(
      virtualnotebook::MakeEdid(virtualnotebook::PanelDescription()));
  HostedLibrary library;
  virtualnotebook::SetUpNotebook(library.notebook);
  ColorFieldInitInfo info{};
  info.setType = 1;  // by 3D LUT
  ASSERT_EQ(library.InitColorFieldInfo(&info), ResultOk);
  library.notebook.ThrowFrom("GetSystemFirmwareTable", 1, "thrown by the notebook");
  EXPECT_EQ(library.SetColorField(P3Mode), ResultColorFieldError);
  const bool caught = std::ranges::any_of(library.notebook.log, [](const auto& line) {
    return line.level == 3 &&
           line.text.find(L"exception:thrown by the notebook") != std::wstring::npos;
  });
  EXPECT_TRUE(caught) << ::testing::PrintToString(library.notebook.log);
}

}  // namespace
}  // namespace virtualnotebook
