#include "settings/ConfigSyncObject.h"

#include <aclapi.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <limits>
#include <string>
#include <thread>

#include "support/NotebookTest.h"

namespace velora {
namespace {

using testing::ElementsAre;

constexpr int kTypes = 7;
const std::wstring kNames[kTypes] = {L"Global\\FEATURE_TYPE_WHITEPOINT_EVENT_OBJECT",
                                     L"Global\\FEATURE_TYPE_EYE_PROTECT_EVENT_OBJECT",
                                     L"Global\\FEATURE_TYPE_TEMPERATURE_EVENT_OBJECT",
                                     L"Global\\FEATURE_TYPE_COLOR_FIELD_EVENT_OBJECT",
                                     L"Global\\FEATURE_TYPE_NATURAL_COLOR_EVENT_OBJECT",
                                     L"Global\\FEATURE_TYPE_DP_IN_OUT_EVENT_OBJECT",
                                     L"Global\\FEATURE_TYPE_ESD_EVENT_OBJECT"};
constexpr uint32_t kShort = 20;  // milliseconds

class ConfigSyncObjectTest : public testsupport::NotebookTest {
 protected:
  ~ConfigSyncObjectTest() override {
    notebook.ClearFaults();
    for (int type = 0; type < kTypes; ++type) {
      ConfigSyncObject::FiniConfigSyncObject(type);
    }
  }

  const virtualnotebook::Call* LastCall(const std::string& function) {
    const virtualnotebook::Call* last = nullptr;
    for (const auto& call : notebook.calls) {
      last = call.function == function ? &call : last;
    }
    return last;
  }
};

bool EventExists(const std::wstring& name) {
  const HANDLE event = OpenEventW(SYNCHRONIZE, FALSE, name.c_str());
  return event != nullptr && CloseHandle(event);
}

TEST_F(ConfigSyncObjectTest, InitConfigSyncObject_MakesTheEventOfEachType) {
  for (int type = 0; type < kTypes; ++type) {
    SCOPED_TRACE(type);
    EXPECT_FALSE(EventExists(kNames[type]));
    notebook.ForgetRecords();
    EXPECT_EQ(ConfigSyncObject::InitConfigSyncObject(type), ResultOk);
    EXPECT_EQ(testsupport::CallsOf(notebook, {"InitializeSecurityDescriptor",
                                              "SetSecurityDescriptorDacl", "CreateEventW"}),
              (std::vector<std::string>{"InitializeSecurityDescriptor", "SetSecurityDescriptorDacl",
                                        "CreateEventW"}));
    // Revision 1; a null list of rights, present and not defaulted; automatic reset, not signalled.
    EXPECT_THAT(LastCall("InitializeSecurityDescriptor")->arguments, ElementsAre(L"pointer", L"1"));
    EXPECT_THAT(LastCall("SetSecurityDescriptorDacl")->arguments,
                ElementsAre(L"pointer", L"1", L"null", L"0"));
    EXPECT_THAT(LastCall("CreateEventW")->arguments,
                ElementsAre(L"pointer", L"0", L"0", kNames[type]));
    EXPECT_LOG();
    EXPECT_TRUE(EventExists(kNames[type]));
  }
}

// Any user of any session may open it: there is a list of rights, and it is null.
TEST_F(ConfigSyncObjectTest, InitConfigSyncObject_GivesEveryoneAllRights) {
  ASSERT_EQ(ConfigSyncObject::InitConfigSyncObject(2), ResultOk);
  const HANDLE event = OpenEventW(READ_CONTROL, FALSE, kNames[2].c_str());
  ASSERT_NE(event, nullptr);
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  PACL acl = nullptr;
  ASSERT_EQ(GetSecurityInfo(event, SE_KERNEL_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr,
                            &acl, nullptr, &descriptor),
            ERROR_SUCCESS);
  BOOL present = FALSE;
  BOOL defaulted = TRUE;
  ASSERT_TRUE(GetSecurityDescriptorDacl(descriptor, &present, &acl, &defaulted));
  EXPECT_TRUE(present);
  EXPECT_EQ(acl, nullptr);
  LocalFree(descriptor);
  CloseHandle(event);
}

// A process that inherits handles does not keep the event alive.
TEST_F(ConfigSyncObjectTest, InitConfigSyncObject_HandleIsNotInherited) {
  ASSERT_EQ(ConfigSyncObject::InitConfigSyncObject(2), ResultOk);
  std::wstring program(MAX_PATH, L'\0');
  program.resize(GetModuleFileNameW(nullptr, program.data(), MAX_PATH));
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION heir{};
  ASSERT_TRUE(CreateProcessW(program.c_str(), nullptr, nullptr, nullptr, TRUE, CREATE_SUSPENDED,
                             nullptr, nullptr, &startup, &heir));
  EXPECT_EQ(ConfigSyncObject::FiniConfigSyncObject(2), ResultOk);
  EXPECT_FALSE(EventExists(kNames[2]));
  TerminateProcess(heir.hProcess, 0);
  WaitForSingleObject(heir.hProcess, INFINITE);
  CloseHandle(heir.hThread);
  CloseHandle(heir.hProcess);
}

TEST_F(ConfigSyncObjectTest, InitConfigSyncObject_Twice) {
  ASSERT_EQ(ConfigSyncObject::InitConfigSyncObject(3), ResultOk);
  ASSERT_EQ(ConfigSyncObject::NotifyConfigChange(3), ResultOk);
  EXPECT_EQ(ConfigSyncObject::InitConfigSyncObject(3), ResultAlreadyInit);
  EXPECT_LOG({3,
              L"ConfigSyncObject has beed init!type:3, obj name:"
              L"Global\\FEATURE_TYPE_COLOR_FIELD_EVENT_OBJECT"
              L"(ConfigSyncObject::InitConfigSyncObject)"});
  EXPECT_EQ(notebook.CountCalls("CreateEventW"), 1U);
  EXPECT_EQ(ConfigSyncObject::WaitConfigChangeSync(3, kShort), ResultOk)
      << "the first handle and its ring stay";
}

TEST_F(ConfigSyncObjectTest, InitConfigSyncObject_RefusedBySystem) {
  notebook.FailCall("CreateEventW", 1, 0, ERROR_ACCESS_DENIED);
  EXPECT_EQ(ConfigSyncObject::InitConfigSyncObject(0), ResultCreateFailed);
  EXPECT_LOG({3, L"Create ConfigSyncObject failed! type:0, obj name:" + kNames[0] +
                     L"(ConfigSyncObject::InitConfigSyncObject)"});
  EXPECT_EQ(ConfigSyncObject::NotifyConfigChange(0), ResultNotCreated);
  EXPECT_EQ(ConfigSyncObject::InitConfigSyncObject(0), ResultOk);
}

// A name that belongs to another kind of object.
TEST_F(ConfigSyncObjectTest, InitConfigSyncObject_NameIsTaken) {
  const HANDLE mutex = CreateMutexW(nullptr, FALSE, kNames[1].c_str());
  ASSERT_NE(mutex, nullptr);
  EXPECT_EQ(ConfigSyncObject::InitConfigSyncObject(1), ResultCreateFailed);
  CloseHandle(mutex);
  EXPECT_EQ(ConfigSyncObject::InitConfigSyncObject(1), ResultOk);
}

TEST_F(ConfigSyncObjectTest, ClosedTypesAreRefused) {
  for (int type = 0; type < kTypes; ++type) {
    SCOPED_TRACE(type);
    notebook.ForgetRecords();
    EXPECT_EQ(ConfigSyncObject::NotifyConfigChange(type), ResultNotCreated);
    EXPECT_EQ(ConfigSyncObject::WaitConfigChangeSync(type, 0), ResultNotCreated);
    EXPECT_EQ(ConfigSyncObject::FiniConfigSyncObject(type), ResultNotCreated);
    const std::wstring line = L"ConfigSyncObject not created!type:" + std::to_wstring(type) +
                              L", obj name:" + kNames[type];
    EXPECT_LOG({3, line + L"(ConfigSyncObject::NotifyConfigChange)"},
               {3, line + L"(ConfigSyncObject::WaitConfigChangeSync)"},
               {3, line + L"(ConfigSyncObject::FiniConfigSyncObject)"});
    EXPECT_EQ(notebook.CountCalls("SetEvent"), 0U);
    EXPECT_EQ(notebook.CountCalls("WaitForSingleObject"), 0U);
    EXPECT_EQ(notebook.CountCalls("CloseHandle"), 0U);
  }
}

TEST_F(ConfigSyncObjectTest, TypesWithoutAnEventAreRefused) {
  for (const int type :
       {-1, 7, 8, 9, 1000000, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
    SCOPED_TRACE(type);
    notebook.ForgetRecords();
    EXPECT_EQ(ConfigSyncObject::InitConfigSyncObject(type), ResultCreateFailed);
    EXPECT_EQ(ConfigSyncObject::NotifyConfigChange(type), ResultNotCreated);
    EXPECT_EQ(ConfigSyncObject::WaitConfigChangeSync(type, 0), ResultNotCreated);
    EXPECT_EQ(ConfigSyncObject::FiniConfigSyncObject(type), ResultNotCreated);
    const std::wstring number = std::to_wstring(type);
    const std::wstring line = L"ConfigSyncObject not created!type:" + number + L", obj name:";
    EXPECT_LOG({3, L"Create ConfigSyncObject failed! type:" + number +
                       L", obj name:(ConfigSyncObject::InitConfigSyncObject)"},
               {3, line + L"(ConfigSyncObject::NotifyConfigChange)"},
               {3, line + L"(ConfigSyncObject::WaitConfigChangeSync)"},
               {3, line + L"(ConfigSyncObject::FiniConfigSyncObject)"});
    EXPECT_EQ(notebook.CountCalls("CreateEventW"), 0U);
  }
}

TEST_F(ConfigSyncObjectTest, NotifyConfigChange_RefusedBySystem) {
  ASSERT_EQ(ConfigSyncObject::InitConfigSyncObject(4), ResultOk);
  for (const uint64_t answer : {0U, 2U}) {  // anything but TRUE
    notebook.ForgetRecords();
    notebook.FailCall("SetEvent", 1, answer, ERROR_INVALID_HANDLE);
    EXPECT_EQ(ConfigSyncObject::NotifyConfigChange(4), ResultFailed);
    EXPECT_LOG({3, L"NotifyConfigChange failed! type:4, obj name:" + kNames[4] +
                       L"(ConfigSyncObject::NotifyConfigChange)"});
    EXPECT_EQ(ConfigSyncObject::WaitConfigChangeSync(4, kShort), ResultTimeout);
  }
}

TEST_F(ConfigSyncObjectTest, WaitConfigChangeSync_Results) {
  ASSERT_EQ(ConfigSyncObject::InitConfigSyncObject(4), ResultOk);
  const std::pair<uint64_t, ResultT> answers[] = {{WAIT_OBJECT_0, ResultOk},
                                                  {WAIT_TIMEOUT, ResultTimeout},
                                                  {WAIT_FAILED, ResultFailed},
                                                  {WAIT_ABANDONED, ResultFailed},
                                                  {WAIT_IO_COMPLETION, ResultFailed}};
  for (const auto& [answer, result] : answers) {
    SCOPED_TRACE(answer);
    notebook.FailCall("WaitForSingleObject", 1, answer);
    EXPECT_EQ(ConfigSyncObject::WaitConfigChangeSync(4, 0), result);
    notebook.ClearFaults();
  }
  EXPECT_LOG();
}

TEST_F(ConfigSyncObjectTest, WaitConfigChangeSync_ZeroIsWithoutLimit) {
  ASSERT_EQ(ConfigSyncObject::InitConfigSyncObject(4), ResultOk);
  const std::pair<uint32_t, std::wstring> timeouts[] = {
      {0, L"4294967295"}, {1, L"1"}, {4294967294U, L"4294967294"}, {4294967295U, L"4294967295"}};
  for (const auto& [timeout, given] : timeouts) {
    notebook.FailCall("WaitForSingleObject", 1, WAIT_TIMEOUT);
    ConfigSyncObject::WaitConfigChangeSync(4, timeout);
    EXPECT_THAT(LastCall("WaitForSingleObject")->arguments, ElementsAre(L"pointer", given));
    notebook.ClearFaults();
  }
}

TEST_F(ConfigSyncObjectTest, WaitConfigChangeSync_TimesOut) {
  ASSERT_EQ(ConfigSyncObject::InitConfigSyncObject(4), ResultOk);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(ConfigSyncObject::WaitConfigChangeSync(4, 100), ResultTimeout);
  const auto waited = std::chrono::steady_clock::now() - start;
  EXPECT_GE(waited, std::chrono::milliseconds(90));
  EXPECT_LT(waited, std::chrono::seconds(10));
  EXPECT_LOG();
}

TEST_F(ConfigSyncObjectTest, WaitConfigChangeSync_BlocksUntilTheRing) {
  ASSERT_EQ(ConfigSyncObject::InitConfigSyncObject(4), ResultOk);
  const auto start = std::chrono::steady_clock::now();
  std::thread ringer([] {
    Sleep(100);
    EXPECT_EQ(ConfigSyncObject::NotifyConfigChange(4), ResultOk);
  });
  EXPECT_EQ(ConfigSyncObject::WaitConfigChangeSync(4, 0), ResultOk);
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(90));
  ringer.join();
}

TEST_F(ConfigSyncObjectTest, RingsAheadOfAWaitCountOnce) {
  ASSERT_EQ(ConfigSyncObject::InitConfigSyncObject(4), ResultOk);
  EXPECT_EQ(ConfigSyncObject::NotifyConfigChange(4), ResultOk);
  EXPECT_EQ(ConfigSyncObject::NotifyConfigChange(4), ResultOk);
  EXPECT_EQ(ConfigSyncObject::WaitConfigChangeSync(4, 0), ResultOk);
  EXPECT_EQ(ConfigSyncObject::WaitConfigChangeSync(4, kShort), ResultTimeout);
}

TEST_F(ConfigSyncObjectTest, TypesRingApart) {
  ASSERT_EQ(ConfigSyncObject::InitConfigSyncObject(4), ResultOk);
  ASSERT_EQ(ConfigSyncObject::InitConfigSyncObject(5), ResultOk);
  EXPECT_EQ(ConfigSyncObject::NotifyConfigChange(5), ResultOk);
  EXPECT_EQ(ConfigSyncObject::WaitConfigChangeSync(4, kShort), ResultTimeout);
  EXPECT_EQ(ConfigSyncObject::WaitConfigChangeSync(5, kShort), ResultOk);
}

TEST_F(ConfigSyncObjectTest, FiniConfigSyncObject_ClosesAndTheTypeOpensAgain) {
  ASSERT_EQ(ConfigSyncObject::InitConfigSyncObject(6), ResultOk);
  ASSERT_EQ(ConfigSyncObject::NotifyConfigChange(6), ResultOk);
  EXPECT_EQ(ConfigSyncObject::FiniConfigSyncObject(6), ResultOk);
  EXPECT_FALSE(EventExists(kNames[6]));
  EXPECT_EQ(ConfigSyncObject::FiniConfigSyncObject(6), ResultNotCreated);
  EXPECT_EQ(ConfigSyncObject::InitConfigSyncObject(6), ResultOk);
  EXPECT_EQ(ConfigSyncObject::WaitConfigChangeSync(6, kShort), ResultTimeout)
      << "a new event: the ring went with the old one";
}

TEST_F(ConfigSyncObjectTest, FiniConfigSyncObject_RefusedBySystem) {
  ASSERT_EQ(ConfigSyncObject::InitConfigSyncObject(6), ResultOk);
  for (const uint64_t answer : {0U, 2U}) {  // anything but TRUE
    notebook.ForgetRecords();
    notebook.FailCall("CloseHandle", 1, answer, ERROR_INVALID_HANDLE);
    EXPECT_EQ(ConfigSyncObject::FiniConfigSyncObject(6), ResultFailed);
    EXPECT_LOG({3, L"FiniConfigSyncObject failed! type:6, obj name:" + kNames[6] +
                       L"(ConfigSyncObject::FiniConfigSyncObject)"});
  }
  EXPECT_EQ(ConfigSyncObject::NotifyConfigChange(6), ResultOk) << "the handle stays";
  EXPECT_EQ(ConfigSyncObject::InitConfigSyncObject(6), ResultAlreadyInit);
  EXPECT_EQ(ConfigSyncObject::FiniConfigSyncObject(6), ResultOk);
}

}  // namespace
}  // namespace velora
