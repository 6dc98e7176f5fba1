#include <gtest/gtest.h>

#include <sstream>

#include "support/NotebookTest.h"
#include "virtualnotebook/Factory.h"
#include "virtualnotebook/HostedLibrary.h"
#include "virtualnotebook/Machine.h"

namespace scenarios {
using virtualnotebook::HostedLibrary;

namespace {

// The buffer shows by its address.
std::wstring EntryLine(const void* buffer, int length) {
  std::wostringstream line;
  line << L"vendorBuf:" << buffer << L", vendorBufLength:" << length << L"(GetVendor)";
  return line.str();
}

TEST(GetVendor, WritesTheVendor) {
  const virtualnotebook::PluggedPanel panel(virtualnotebook::MakeEdid({}));
  HostedLibrary library;
  virtualnotebook::SetUpNotebook(library.notebook);
  char buffer[5] = {'?', '?', '?', '?', '?'};  // never a text of its own
  library.GetVendor(buffer, sizeof buffer);
  EXPECT_STREQ(buffer, "NVX#");
  ASSERT_EQ(library.notebook.log.size(), 2U);  // and the EDID's primaries
  EXPECT_EQ(library.notebook.log[0], (virtualnotebook::LogLine{1, EntryLine(buffer, 5)}));
}

TEST(GetVendor, AsksForThePanelOnce) {
  const virtualnotebook::PluggedPanel panel(virtualnotebook::MakeEdid({}));
  HostedLibrary library;
  virtualnotebook::SetUpNotebook(library.notebook);
  char buffer[5];
  library.GetVendor(buffer, sizeof buffer);
  library.notebook.ForgetRecords();
  library.GetVendor(buffer, sizeof buffer);
  EXPECT_TRUE(testsupport::LogIs(library.notebook, {{1, EntryLine(buffer, sizeof buffer)}}));
  EXPECT_EQ(library.notebook.CountCalls("WmiQuery::ExcuteQueryImpl"), 0U);
  EXPECT_EQ(library.notebook.CountCalls("RegOpenKeyExA"), 0U);
}

TEST(GetVendor, NullBuffer) {
  const virtualnotebook::PluggedPanel panel(virtualnotebook::MakeEdid({}));
  HostedLibrary library;
  virtualnotebook::SetUpNotebook(library.notebook);
  library.GetVendor(nullptr, 5);
  EXPECT_TRUE(testsupport::Logged(library.notebook, 1, EntryLine(nullptr, 5)));
  EXPECT_TRUE(testsupport::Logged(library.notebook, 3,
                                  L"strcpy_s failed, err = %d\n(ColorField3DLut::GetVendor)"));
}

TEST(GetVendor, UnknownPanel) {
  HostedLibrary library;
  virtualnotebook::SetUpNotebook(library.notebook);
  char buffer[5] = "none";
  library.GetVendor(buffer, sizeof buffer);
  EXPECT_STREQ(buffer, "none");
  EXPECT_TRUE(testsupport::Logged(library.notebook, 3,
                                  L"Get LCD EDID Data error.(ColorField3DLut::GetVendor)"));
}

}  // namespace
}  // namespace scenarios
