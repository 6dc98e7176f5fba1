// The SDK's example host, with the shipped DLL, on a virtual notebook.
#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "support/NotebookTest.h"
#include "virtualnotebook/Factory.h"
#include "virtualnotebook/HostedLibrary.h"
#include "virtualnotebook/Machine.h"

namespace {

using testing::IsEmpty;

class ExampleHost : public testing::Test {
 protected:
  ExampleHost() {
    virtualnotebook::RemoveMachine();
    files_ = virtualnotebook::InstallMachine(machine_);
    virtualnotebook::SetUpNotebook(notebook());
    notebook().firmwareTable = machine_.firmwareTable;
    library_.SetColorFieldCurrentMode(SrgbMode);
  }
  ~ExampleHost() override { virtualnotebook::RemoveMachine(); }

  virtualnotebook::Notebook& notebook() { return library_.notebook; }

  // What it writes; its exit code is left in exitCode_.
  std::string Run() {
    testing::internal::CaptureStdout();
    exitCode_ = host_.Find<int()>("ExampleHostMain")();
    return testing::internal::GetCapturedStdout();
  }

  const testsupport::ScopedKey settings_{HKEY_LOCAL_MACHINE, L"SOFTWARE\\Norvex\\Velora"};
  const virtualnotebook::MachineData machine_ =
      virtualnotebook::MakeMachine(virtualnotebook::PanelDescription{});
  virtualnotebook::PluggedPanel panel_{machine_.edid};
  virtualnotebook::LoadedModule host_{L"example_host.dll"};  // the host's main
  virtualnotebook::HostedLibrary library_;                   // the DLL that the host imports
  virtualnotebook::InstalledFiles files_;
  int exitCode_ = -1;
};

TEST_F(ExampleHost, SwitchesAndRemembersTheMode) {
  EXPECT_EQ(Run(), "try 1: panel NVX#, SetColorField gave 0\nP3 is on\n");
  EXPECT_EQ(exitCode_, 0);
  EXPECT_EQ(notebook().platform.lut3D, virtualnotebook::MakeLut(machine_.panel, 2));
  EXPECT_EQ(library_.GetColorFieldCurrentMode(-1), P3Mode);
  EXPECT_FALSE(notebook().platform.initialised);
}

// As after a resume: the panel answers at the second try, the platform at the third.
TEST_F(ExampleHost, TriesAgain) {
  notebook().FailCall("WmiQuery::ExcuteQueryImpl", 1, 1);
  notebook().FailCall("PlatformSet3DLut", 1, 5);
  EXPECT_EQ(Run(),
            "try 1: no panel\ntry 2: panel NVX#, SetColorField gave 17\n"
            "try 3: panel NVX#, SetColorField gave 0\nP3 is on\n");
  EXPECT_EQ(exitCode_, 0);
}

TEST_F(ExampleHost, GivesUp) {
  notebook().FailCall("PlatformSet3DLut", 0, 5);
  EXPECT_EQ(Run(),
            "try 1: panel NVX#, SetColorField gave 17\n"
            "try 2: panel NVX#, SetColorField gave 17\n"
            "try 3: panel NVX#, SetColorField gave 17\nP3 is not on: 17\n");
  EXPECT_EQ(exitCode_, 1);
  EXPECT_THAT(notebook().platform.lut3D, IsEmpty());
  EXPECT_EQ(library_.GetColorFieldCurrentMode(-1), SrgbMode);
  EXPECT_FALSE(notebook().platform.initialised);
}

TEST_F(ExampleHost, DoesNotRepeatForAMissingProfile) {
  std::filesystem::remove(files_.Profile(virtualnotebook::kP3Lut));
  EXPECT_EQ(Run(), "try 1: panel NVX#, SetColorField gave 15\nP3 is not on: 15\n");
  EXPECT_EQ(exitCode_, 1);
}

}  // namespace
