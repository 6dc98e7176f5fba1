// Change events between processes: this one and others, each with the shipped library.
#include <gtest/gtest.h>

#include <string>

#include "scenarios/HostProcess.h"
#include "support/NotebookTest.h"
#include "virtualnotebook/HostedLibrary.h"

namespace scenarios {
namespace {

using virtualnotebook::HostedLibrary;

constexpr uint32_t kShort = 50;        // milliseconds in which nothing is to happen
constexpr uint32_t kPatience = 30000;  // milliseconds for what is to happen

const std::string kInit4 = "InitConfigSyncObject 4";
const std::string kFini4 = "FiniConfigSyncObject 4";
const std::string kRing4 = "NotifyConfigChange 4";
const std::string kWait4 = "WaitConfigChangeSync 4 0";
const std::string kWait4Shortly = "WaitConfigChangeSync 4 50";

bool EventExists(const wchar_t* name) {
  const HANDLE event = OpenEventW(SYNCHRONIZE, FALSE, name);
  return event != nullptr && CloseHandle(event);
}

class ConfigSyncScenario : public testing::Test {
 protected:
  // These exports have no entry line.
  ~ConfigSyncScenario() override { EXPECT_TRUE(testsupport::LogIs(library.notebook, {})); }

  HostedLibrary library;
};

TEST_F(ConfigSyncScenario, TheWaiterStartsFirst) {
  HostProcess waiter;
  ASSERT_EQ(waiter.Call(kInit4), ResultOk);
  waiter.Send(kWait4);
  EXPECT_FALSE(waiter.HasAnswered(kShort));
  ASSERT_EQ(library.InitConfigSyncObject(4), ResultOk);
  EXPECT_FALSE(waiter.HasAnswered(kShort)) << "opening the event rings nobody";
  EXPECT_EQ(library.NotifyConfigChange(4), ResultOk);
  EXPECT_EQ(waiter.Receive(), "0");
  EXPECT_EQ(library.WaitConfigChangeSync(4, kShort), ResultTimeout) << "the waiter took the ring";
}

TEST_F(ConfigSyncScenario, TheRingerStartsFirst) {
  ASSERT_EQ(library.InitConfigSyncObject(4), ResultOk);
  EXPECT_EQ(library.NotifyConfigChange(4), ResultOk);
  HostProcess waiter;
  ASSERT_EQ(waiter.Call(kInit4), ResultOk);
  EXPECT_EQ(waiter.Call(kWait4), ResultOk) << "the ring was pending";
  EXPECT_EQ(waiter.Call(kWait4Shortly), ResultTimeout);
}

TEST_F(ConfigSyncScenario, AnotherProcessRings) {
  HostProcess ringer;
  ASSERT_EQ(ringer.Call(kInit4), ResultOk);
  EXPECT_EQ(ringer.Call(kRing4), ResultOk);
  ASSERT_EQ(library.InitConfigSyncObject(4), ResultOk);
  EXPECT_EQ(library.WaitConfigChangeSync(4, kPatience), ResultOk);
  EXPECT_EQ(ringer.Call(kRing4), ResultOk);
  EXPECT_EQ(library.WaitConfigChangeSync(4, 0), ResultOk);
}

TEST_F(ConfigSyncScenario, EachTypeHasAnEventOfItsOwn) {
  HostProcess other;
  for (int type = 0; type < 7; ++type) {
    ASSERT_EQ(library.InitConfigSyncObject(type), ResultOk);
    ASSERT_EQ(other.Call("InitConfigSyncObject " + std::to_string(type)), ResultOk);
  }
  for (int rung = 0; rung < 7; ++rung) {
    EXPECT_EQ(other.Call("NotifyConfigChange " + std::to_string(rung)), ResultOk);
    for (int type = 0; type < 7; ++type) {
      EXPECT_EQ(library.WaitConfigChangeSync(type, 1), type == rung ? ResultOk : ResultTimeout)
          << rung << " was rung, " << type << " was asked";
    }
  }
}

TEST_F(ConfigSyncScenario, OneRingWakesOneWaiter) {
  ASSERT_EQ(library.InitConfigSyncObject(4), ResultOk);
  HostProcess first;
  HostProcess second;
  for (HostProcess* waiter : {&first, &second}) {
    ASSERT_EQ(waiter->Call(kInit4), ResultOk);
    waiter->Send(kWait4);
    EXPECT_FALSE(waiter->HasAnswered(kShort));
  }
  EXPECT_EQ(library.NotifyConfigChange(4), ResultOk);
  const ULONGLONG end = GetTickCount64() + kPatience;
  while (!first.HasAnswered(1) && !second.HasAnswered(1) && GetTickCount64() < end) {
  }
  HostProcess& woken = first.HasAnswered(0) ? first : second;
  HostProcess& asleep = &woken == &first ? second : first;
  EXPECT_EQ(woken.Receive(), "0");
  EXPECT_FALSE(asleep.HasAnswered(4 * kShort));
  EXPECT_EQ(library.NotifyConfigChange(4), ResultOk);
  EXPECT_EQ(asleep.Receive(), "0");
}

TEST_F(ConfigSyncScenario, RingsAheadOfAWaitCountOnce) {
  ASSERT_EQ(library.InitConfigSyncObject(4), ResultOk);
  HostProcess other;
  ASSERT_EQ(other.Call(kInit4), ResultOk);
  EXPECT_EQ(other.Call(kRing4), ResultOk);
  EXPECT_EQ(library.NotifyConfigChange(4), ResultOk);
  EXPECT_EQ(other.Call(kRing4), ResultOk);
  EXPECT_EQ(library.WaitConfigChangeSync(4, 0), ResultOk);
  EXPECT_EQ(library.WaitConfigChangeSync(4, kShort), ResultTimeout);
  EXPECT_EQ(other.Call(kWait4Shortly), ResultTimeout);
}

TEST_F(ConfigSyncScenario, WaitsTimeOutInBothProcesses) {
  ASSERT_EQ(library.InitConfigSyncObject(4), ResultOk);
  HostProcess other;
  ASSERT_EQ(other.Call(kInit4), ResultOk);
  const ULONGLONG start = GetTickCount64();
  EXPECT_EQ(other.Call("WaitConfigChangeSync 4 100"), ResultTimeout);
  EXPECT_GE(GetTickCount64() - start, 90U);
  EXPECT_EQ(library.WaitConfigChangeSync(4, 100), ResultTimeout);
  EXPECT_GE(GetTickCount64() - start, 180U);
}

// The pending ring stays with the event while anybody has it open.
TEST_F(ConfigSyncScenario, TheEventLivesAsLongAsAProcessHoldsIt) {
  ASSERT_EQ(library.InitConfigSyncObject(4), ResultOk);
  {
    HostProcess other;
    ASSERT_EQ(other.Call(kInit4), ResultOk);
    EXPECT_EQ(library.NotifyConfigChange(4), ResultOk);
    EXPECT_EQ(library.FiniConfigSyncObject(4), ResultOk);
    ASSERT_EQ(library.InitConfigSyncObject(4), ResultOk);
    EXPECT_EQ(library.WaitConfigChangeSync(4, kShort), ResultOk) << "the other held the event";

    EXPECT_EQ(other.Call(kRing4), ResultOk);
    EXPECT_EQ(other.Call(kFini4), ResultOk);
    EXPECT_EQ(library.FiniConfigSyncObject(4), ResultOk);
  }
  ASSERT_EQ(library.InitConfigSyncObject(4), ResultOk);
  EXPECT_EQ(library.WaitConfigChangeSync(4, kShort), ResultTimeout) << "nobody held the event";
}

TEST_F(ConfigSyncScenario, AKilledProcessLetsGoOfItsEvent) {
  constexpr wchar_t name[] = L"Global\\FEATURE_TYPE_NATURAL_COLOR_EVENT_OBJECT";
  HostProcess other;
  ASSERT_EQ(other.Call(kInit4), ResultOk);
  other.Send(kWait4);
  EXPECT_FALSE(other.HasAnswered(kShort));
  EXPECT_TRUE(EventExists(name));
  other.Kill();
  EXPECT_FALSE(EventExists(name));
  ASSERT_EQ(library.InitConfigSyncObject(4), ResultOk);
  EXPECT_EQ(library.NotifyConfigChange(4), ResultOk);
  EXPECT_EQ(library.WaitConfigChangeSync(4, kShort), ResultOk) << "no dead waiter takes the ring";
}

TEST_F(ConfigSyncScenario, EachProcessHasATableOfItsOwn) {
  ASSERT_EQ(library.InitConfigSyncObject(4), ResultOk);
  HostProcess other;
  EXPECT_EQ(other.Call(kRing4), ResultNotCreated);
  EXPECT_EQ(other.Call(kInit4), ResultOk);
  EXPECT_EQ(other.Call(kInit4), ResultAlreadyInit);
  EXPECT_EQ(other.Call(kFini4), ResultOk);
  EXPECT_EQ(other.Call(kFini4), ResultNotCreated);
  EXPECT_EQ(other.Call(kWait4), ResultNotCreated);
}

TEST(ConfigSync, TypesWithoutAnEventAreRefused) {
  HostProcess host;
  for (const char* type : {"-1", "7", "8", "100000", "2147483647", "-2147483648"}) {
    EXPECT_EQ(host.Call(std::string("InitConfigSyncObject ") + type), ResultCreateFailed);
    EXPECT_EQ(host.Call(std::string("FiniConfigSyncObject ") + type), ResultNotCreated);
    EXPECT_EQ(host.Call(std::string("NotifyConfigChange ") + type), ResultNotCreated);
    EXPECT_EQ(host.Call(std::string("WaitConfigChangeSync ") + type + " 0"), ResultNotCreated);
  }
}

// The one rings after it has written; the other reads once it is woken.
TEST(ConfigSync, TheWokenProcessSeesTheSetting) {
  const testsupport::ScopedKey key(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Norvex\\Velora");
  HostedLibrary library;
  HostProcess writer;
  ASSERT_EQ(library.InitConfigSyncObject(0), ResultOk);
  ASSERT_EQ(writer.Call("InitConfigSyncObject 0"), ResultOk);
  for (const int status : {1, 0, 7}) {
    EXPECT_EQ(writer.Call("SetWhitePointStatus " + std::to_string(status)), ResultOk);
    EXPECT_EQ(writer.Call("NotifyConfigChange 0"), ResultOk);
    EXPECT_EQ(library.WaitConfigChangeSync(0, kPatience), ResultOk);
    EXPECT_EQ(library.GetWhitePointStatus(-1), status);
  }
  EXPECT_EQ(library.SetWhitePointStatus(5), ResultOk);
  EXPECT_EQ(writer.Call("GetWhitePointStatus -1"), 5);
}

TEST(ConfigSync, UnloadingTheLibraryClosesItsEvents) {
  constexpr wchar_t name[] = L"Global\\FEATURE_TYPE_ESD_EVENT_OBJECT";
  {
    HostedLibrary library;
    ASSERT_EQ(library.InitConfigSyncObject(6), ResultOk);
    EXPECT_TRUE(EventExists(name));
  }
  EXPECT_FALSE(EventExists(name));
}

// Each failure through the exports, with the library's own lines and no entry lines.
TEST(ConfigSync, FailuresOfTheExports) {
  HostedLibrary library;
  auto& notebook = library.notebook;
  const std::wstring object = L"type:3, obj name:Global\\FEATURE_TYPE_COLOR_FIELD_EVENT_OBJECT";
  EXPECT_EQ(library.NotifyConfigChange(3), ResultNotCreated);
  EXPECT_EQ(library.WaitConfigChangeSync(3, 0), ResultNotCreated);
  EXPECT_EQ(library.FiniConfigSyncObject(3), ResultNotCreated);
  notebook.FailCall("CreateEventW", 1, 0, ERROR_ACCESS_DENIED);
  EXPECT_EQ(library.InitConfigSyncObject(3), ResultCreateFailed);
  EXPECT_EQ(library.InitConfigSyncObject(3), ResultOk);
  EXPECT_EQ(library.InitConfigSyncObject(3), ResultAlreadyInit);
  notebook.FailCall("SetEvent", 1, FALSE, ERROR_INVALID_HANDLE);
  EXPECT_EQ(library.NotifyConfigChange(3), ResultFailed);
  notebook.FailCall("WaitForSingleObject", 1, WAIT_FAILED, ERROR_INVALID_HANDLE);
  EXPECT_EQ(library.WaitConfigChangeSync(3, 0), ResultFailed);
  notebook.FailCall("CloseHandle", 1, FALSE, ERROR_INVALID_HANDLE);
  EXPECT_EQ(library.FiniConfigSyncObject(3), ResultFailed);
  EXPECT_EQ(library.FiniConfigSyncObject(3), ResultOk);
  EXPECT_LOG(
      {3, L"ConfigSyncObject not created!" + object + L"(ConfigSyncObject::NotifyConfigChange)"},
      {3, L"ConfigSyncObject not created!" + object + L"(ConfigSyncObject::WaitConfigChangeSync)"},
      {3, L"ConfigSyncObject not created!" + object + L"(ConfigSyncObject::FiniConfigSyncObject)"},
      {3,
       L"Create ConfigSyncObject failed! " + object + L"(ConfigSyncObject::InitConfigSyncObject)"},
      {3,
       L"ConfigSyncObject has beed init!" + object + L"(ConfigSyncObject::InitConfigSyncObject)"},
      {3, L"NotifyConfigChange failed! " + object + L"(ConfigSyncObject::NotifyConfigChange)"},
      {3, L"FiniConfigSyncObject failed! " + object + L"(ConfigSyncObject::FiniConfigSyncObject)"});
}

}  // namespace
}  // namespace scenarios
