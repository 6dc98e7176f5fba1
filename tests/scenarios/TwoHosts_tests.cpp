// A service and an application, two processes, do everything at once (machinehost/Rounds.h).
#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <iostream>
#include <sstream>
#include <string>

#include "scenarios/HostProcess.h"
#include "scenarios/Long.h"
#include "scenarios/Persistent.h"
#include "scenarios/machinehost/Rounds.h"
#include "support/NotebookTest.h"
#include "support/Registry.h"
#include "virtualnotebook/Factory.h"
#include "virtualnotebook/Machine.h"

namespace scenarios {
namespace {

constexpr wchar_t kKey[] = L"SOFTWARE\\Norvex\\Velora";

// A bell that is kept while both sides start anew: nobody's last handle takes a ring along.
class KeptBell {
 public:
  explicit KeptBell(const wchar_t* name) : event_(CreateEventW(nullptr, FALSE, FALSE, name)) {}
  ~KeptBell() { CloseHandle(event_); }
  KeptBell(const KeptBell&) = delete;
  KeptBell& operator=(const KeptBell&) = delete;

 private:
  HANDLE event_;
};

class TwoHosts : public testing::Test {
 protected:
  TwoHosts() {
    RemovePersistent();
    virtualnotebook::InstallMachine(machine_);
    // The application's settings are the user's own, the service's the machine's.
    for (const wchar_t* feature : {L"WhitePoint", L"EyeProtect", L"Temperature"}) {
      testsupport::WriteValue(HKEY_LOCAL_MACHINE, std::wstring(kKey) + L"\\FeatureInfo\\MultiUser",
                              feature, testsupport::DwordValue(1));
    }
  }
  ~TwoHosts() override {
    RemovePersistent();
    virtualnotebook::RemoveMachine();
  }

  // What an undisturbed process shows.
  static std::string Shown(HostProcess& host, const std::string& command) {
    EXPECT_EQ(host.Call("load"), 0);
    EXPECT_EQ(host.Call(command), ResultOk) << command;
    return host.Ask("pipeline");
  }

  const testsupport::ScopedKey usersOwn_{HKEY_CURRENT_USER, kKey};
  const virtualnotebook::MachineData machine_ =
      virtualnotebook::MakeMachine(virtualnotebook::PanelDescription{});
  const virtualnotebook::PluggedPanel panel_{machine_.edid};
  const KeptBell applications_{L"Global\\FEATURE_TYPE_WHITEPOINT_EVENT_OBJECT"};
  const KeptBell services_{L"Global\\FEATURE_TYPE_COLOR_FIELD_EVENT_OBJECT"};
};

std::array<int, 6> Counts(const std::string& answer) {
  std::istringstream text(answer);
  std::array<int, 6> counts{};
  for (int& count : counts) {
    EXPECT_TRUE(text >> count) << answer;
  }
  return counts;
}

TEST_F(TwoHosts, EverythingAtOnce) {
  const int rounds = IsLongRun() ? 2000 : 40;
  HostProcess service(kMachineHost);
  HostProcess application(kMachineHost);

  // All that a panel may show. The e-book mode's file is for a moment the firmware's LUT as it is.
  const std::string p3 = Shown(application, "switch 2");
  const std::string srgb = Shown(application, "switch 1");
  const std::string ebook = Shown(application, "switch 7");
  std::string shown = " " + p3 + " " + srgb + " " + ebook + " " + application.Ask("made 7");
  for (const char* mode : {machinehost::kServicesMode, machinehost::kApplicationsMode}) {
    for (const char* colour : {" 1", " 2"}) {
      shown += " " + Shown(application, "save " + std::string(mode) + colour);
    }
  }

  service.Send("rounds service " + std::to_string(rounds) + shown);
  application.Send("rounds application " + std::to_string(rounds) + shown);
  constexpr DWORD kPatience = 3'600'000;  // milliseconds
  ASSERT_TRUE(service.HasAnswered(kPatience));
  const std::array<int, 6> served = Counts(service.Receive());
  const std::array<int, 6> applied = Counts(application.Receive());
  std::cout << rounds << " rounds: " << served[1] + applied[1] << " switches, of them "
            << served[2] + applied[2] << " refused, " << served[3] + applied[3]
            << " user modes saved; " << served[4] + applied[4] << " LUTs of zeros" << std::endl;
  EXPECT_EQ(served[0], rounds);
  EXPECT_EQ(applied[0], rounds);
  EXPECT_EQ(served[5], 0);
  EXPECT_EQ(applied[5], 0);

  // At rest each file is good after at most one look, and is not refused by anybody.
  for (const char* mode : {"switch 1", "switch 2"}) {
    EXPECT_EQ(Shown(service, mode), mode[7] == '1' ? srgb : p3);
  }
  for (HostProcess* host : {&service, &application}) {
    for (const char* mode : {"switch 1", "switch 2"}) {
      EXPECT_EQ(Shown(*host, mode), mode[7] == '1' ? srgb : p3);
      EXPECT_EQ(host->Call("firmware"), 0) << mode;
    }
  }
}

}  // namespace
}  // namespace scenarios
