#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "CoreKit/CoreKit.h"
#include "WmiKit/WmiKit.h"
#include "support/NotebookTest.h"

namespace virtualnotebook {
namespace {

using ::testing::ElementsAre;

class Kits : public testsupport::NotebookTest {
 protected:
  int Query(const std::wstring& nameSpace, const std::wstring& query,
            const std::wstring& property) {
    return NxSDK::WmiQuery(nameSpace).ExcuteQuery(query, property, rows_, true);
  }

  std::vector<std::wstring> rows_;
};

TEST_F(Kits, LcdLogMessage_KeepsLevelAndText) {
  LcdLogMessage(0, L"first");
  LcdLogMessage(3, L"second");
  EXPECT_LOG({0, L"first"}, {3, L"second"});
  EXPECT_LOGGED(3, L"second");
  EXPECT_FALSE(testsupport::Logged(notebook, 2, L"second"));
  EXPECT_FALSE(testsupport::Logged(notebook, 3, L"secon"));
  EXPECT_NOT_LOGGED(L"third");
  EXPECT_FALSE(testsupport::NothingLogged(notebook, L"sec"));
  EXPECT_FALSE(testsupport::LogIs(notebook, {{3, L"second"}, {0, L"first"}}));
}

TEST_F(Kits, Users) {
  EXPECT_EQ(CoreKit::IsAdminPrivilege(), 0);
  notebook.administrator = true;
  EXPECT_EQ(CoreKit::IsAdminPrivilege(), 1);
  notebook.sessionId = 7;
  EXPECT_EQ(CoreKit::GetLogonSessionId(), 7U);
  std::wstring sid = L"untouched";
  EXPECT_NE(CoreKit::GetUserSIDBySessionId(7, sid), 0);
  notebook.userSid = L"S-1-5-21-1-2-3-1001";
  EXPECT_NE(CoreKit::GetUserSIDBySessionId(8, sid), 0);
  EXPECT_EQ(sid, L"untouched");
  EXPECT_EQ(CoreKit::GetUserSIDBySessionId(7, sid), 0);
  EXPECT_EQ(sid, L"S-1-5-21-1-2-3-1001");
}

TEST_F(Kits, DisplayType) {
  notebook.displayType = 0xFFFFFFFF;
  EXPECT_EQ(CoreKit::GetDisplayType(), 0xFFFFFFFF);
}

TEST_F(Kits, CoreKitsConversionsAreItsOwn) {
  const uint8_t bytes[] = {0x12, 0x34};
  EXPECT_EQ(CoreKit::BytesToHexString(bytes, 2), "1234");
  EXPECT_EQ(CoreKit::StringToWString("text"), L"text");
  EXPECT_EQ(CoreKit::WStringToString(L"text"), "text");
  EXPECT_EQ(notebook.CountCalls("CoreKit::StringToWString"), 1U);
  EXPECT_THAT(notebook.calls.back().arguments, ElementsAre(L"text"));
}

TEST_F(Kits, Wmi_GivesTheRowsOfOneProperty) {
  notebook.AnswerWmi(L"ROOT\\CIMV2", L"SELECT * FROM A", L"Name", {L"one", L"two"});
  EXPECT_EQ(Query(L"ROOT\\CIMV2", L"SELECT * FROM A", L"Name"), 0);
  EXPECT_THAT(rows_, ElementsAre(L"one", L"two"));
  for (const auto& [nameSpace, query, property] :
       {std::tuple(L"ROOT\\WMI", L"SELECT * FROM A", L"Name"),
        std::tuple(L"ROOT\\CIMV2", L"SELECT * FROM B", L"Name"),
        std::tuple(L"ROOT\\CIMV2", L"SELECT * FROM A", L"Caption")}) {
    EXPECT_EQ(Query(nameSpace, query, property), NxSDK::WmiQuery::kNoResult);
    EXPECT_TRUE(rows_.empty());
  }
}

TEST_F(Kits, Wmi_FailsAndRecovers) {
  notebook.FailWmi(L"ROOT\\WMI", L"SELECT * FROM A", 5);
  EXPECT_EQ(Query(L"ROOT\\WMI", L"SELECT * FROM A", L"Name"), 5);
  notebook.AnswerWmi(L"ROOT\\WMI", L"SELECT * FROM A", L"Name", {L"again"});
  EXPECT_EQ(Query(L"ROOT\\WMI", L"SELECT * FROM A", L"Name"), 0);
  EXPECT_THAT(rows_, ElementsAre(L"again"));
}

TEST_F(Kits, Wmi_RecordsQueryAndProperty) {
  Query(L"ROOT\\WMI", L"SELECT * FROM A", L"Name");
  ASSERT_EQ(notebook.CountCalls("WmiQuery::ExcuteQueryImpl"), 1U);
  EXPECT_THAT(notebook.calls.front().arguments,
              ElementsAre(L"pointer", L"SELECT * FROM A", L"Name", L"pointer", L"1"));
}

TEST_F(Kits, Wmi_RowsGoThroughTheModulesConversion) {
  notebook.AnswerWmi(L"ROOT\\WMI", L"SELECT * FROM A", L"Name", {L"one", L"two"});
  Query(L"ROOT\\WMI", L"SELECT * FROM A", L"Name");
  EXPECT_EQ(notebook.CountCalls("WmiQuery::GetResult"), 2U);
}

}  // namespace
}  // namespace virtualnotebook
