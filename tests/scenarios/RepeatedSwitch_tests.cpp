// The mode in force, applied again: after a resume or a docking a host does it, perhaps several
// times. It costs the platform's calls alone.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "support/NotebookTest.h"
#include "virtualnotebook/Factory.h"
#include "virtualnotebook/HostedLibrary.h"
#include "virtualnotebook/Machine.h"

namespace scenarios {
namespace {

using testing::ElementsAreArray;
using testing::IsEmpty;
using testsupport::CallsOf;
using Names = std::vector<std::string>;

const std::string kData = "C:\\ProgramData\\Comms\\NxVelora\\";
const std::string kUserProfile = "C:\\Windows\\System32\\spool\\drivers\\color\\Again%1_usr.icc";

const Names kPlatformFunctions = {"PlatformSet3DLut",
                                  "PlatformReset3DLut",
                                  "PlatformSetGammaLut",
                                  "PlatformSetPccMatrixInfo",
                                  "PlatformResetPccMatrixInfo",
                                  "PlatformSet2DColorTemperature",
                                  "PlatformSet3DColorTemperature"};
const Names kFileFunctions = {"CreateFileA", "ReadFile", "WriteFile", "CopyFileW",
                              "_access",     "_mkdir",   "remove",    "rename"};
const Names kProfileFunctions = {"WcsAssociateColorProfileWithDevice",
                                 "WcsDisassociateColorProfileFromDevice", "InstallColorProfileW",
                                 "OpenColorProfileW"};

class RepeatedSwitch : public testing::Test {
 protected:
  RepeatedSwitch() {
    virtualnotebook::RemoveMachine();
    std::filesystem::remove_all(kData + "User");
    files_ = virtualnotebook::InstallMachine(machine_);
    for (const char* name : {"3dlut", "gammalut"}) {
      std::filesystem::create_directories(kData + "User\\" + name);
    }
    virtualnotebook::SetUpNotebook(notebook);
    notebook.firmwareTable = machine_.firmwareTable;
  }
  ~RepeatedSwitch() override {
    std::filesystem::remove(kUserProfile);
    std::filesystem::remove_all(kData + "User");
    virtualnotebook::RemoveMachine();
  }

  void Register(ColorFieldSetType setType) {
    ColorFieldInitInfo init{};
    init.setType = setType;
    files_.digestFile.copy(init.pIccCheckFilePath, 100);
    files_.goldenName.copy(init.goldenFilePath, 100);
    ASSERT_EQ(library.InitColorFieldInfo(&init), ResultOk);
    ColorFieldModeInfo mode{};
    mode.mode = P3Mode;
    files_.Profile(virtualnotebook::kP3Lut).copy(mode.iccPath, 100);
    mode.PlatformPccMatrix[0] = mode.PlatformPccMatrix[4] = mode.PlatformPccMatrix[8] = 0.9;
    mode.gamma = 2.4;
    mode.gamut = virtualnotebook::kP3Lut;
    mode.temperR = mode.temperG = mode.temperB = 1;
    ASSERT_EQ(library.AddColorFieldModeInfo(&mode), ResultOk);
  }

  // The LUT files are gone, and whoever wanted one would fail or make it anew.
  static Names LutFiles() {
    Names names;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(kData)) {
      if (entry.path().extension() == ".bin") {
        names.push_back(entry.path().string());
      }
    }
    return names;
  }
  static void RemoveLutFiles() {
    for (const std::string& name : LutFiles()) {
      std::filesystem::remove(name);
    }
  }

  // Applies the mode, then again and again without any LUT file: the same platform calls with the
  // same data each time, and nothing of files or profiles.
  template <typename Apply>
  void ExpectIdempotent(const Apply& apply, const Names& platformCalls, size_t firmwareCalls = 0) {
    ASSERT_EQ(apply(), ResultOk);
    ASSERT_THAT(LutFiles(), testing::Not(IsEmpty()));
    RemoveLutFiles();
    const virtualnotebook::PlatformState state = notebook.platform;
    const virtualnotebook::ProfileAssociations profiles = notebook.profiles;
    std::vector<testsupport::LogLine> log;
    for (int repeat = 0; repeat < 5; ++repeat) {
      SCOPED_TRACE(repeat);
      notebook.ForgetRecords();
      EXPECT_EQ(apply(), ResultOk);
      EXPECT_THAT(CallsOf(notebook, kPlatformFunctions), ElementsAreArray(platformCalls));
      EXPECT_THAT(CallsOf(notebook, kFileFunctions), IsEmpty());
      EXPECT_THAT(CallsOf(notebook, kProfileFunctions), IsEmpty());
      EXPECT_EQ(notebook.CountCalls("GetSystemFirmwareTable"), firmwareCalls);
      EXPECT_EQ(notebook.platform.lut3D, state.lut3D);
      EXPECT_EQ(notebook.platform.gammaLut, state.gammaLut);
      EXPECT_EQ(notebook.platform.pccMatrix, state.pccMatrix);
      EXPECT_EQ(notebook.profiles, profiles);
      if (repeat == 0) log = notebook.log;
      EXPECT_EQ(notebook.log, log);
    }
    EXPECT_THAT(LutFiles(), IsEmpty());
  }

  const testsupport::ScopedKey settings_{HKEY_LOCAL_MACHINE, L"SOFTWARE\\Norvex\\Velora"};
  const virtualnotebook::MachineData machine_ =
      virtualnotebook::MakeMachine(virtualnotebook::PanelDescription{});
  const virtualnotebook::PluggedPanel panel_{machine_.edid};
  virtualnotebook::InstalledFiles files_;
  virtualnotebook::HostedLibrary library;
  virtualnotebook::Notebook& notebook = library.notebook;
};

TEST_F(RepeatedSwitch, By3DLut) {
  Register(1);
  ExpectIdempotent([this] { return library.SetColorField(P3Mode); }, {"PlatformSet3DLut"});
  EXPECT_EQ(notebook.platform.lut3D,
            virtualnotebook::MakeLut(machine_.panel, virtualnotebook::kP3Lut));
  EXPECT_EQ(notebook.CountCalls("RegSetValueExW"), 0u);
}

TEST_F(RepeatedSwitch, ByGammaLutAnd3DLut) {
  Register(3);
  ExpectIdempotent([this] { return library.SetColorField(P3Mode); },
                   {"PlatformSetGammaLut", "PlatformSet3DLut"});
  EXPECT_EQ(notebook.platform.gammaLut.size(), 3072u);
  EXPECT_EQ(notebook.CountCalls("RegSetValueExW"), 0u);
}

TEST_F(RepeatedSwitch, ByMatrix) {
  Register(2);
  testsupport::WriteFileBytes(kData + "P3.bin", {1});  // of no use to this way
  ExpectIdempotent([this] { return library.SetColorField(P3Mode); }, {"PlatformSetPccMatrixInfo"});
  EXPECT_EQ(notebook.platform.pccMatrix, (std::array<double, 9>{0.9, 0, 0, 0, 0.9, 0, 0, 0, 0.9}));
}

// Its own LUTs are kept, the panel's is not: one reading of the firmware, its size and its bytes,
// to put both together.
TEST_F(RepeatedSwitch, ToAUserMode) {
  UserDesignInfo design{};
  design.mode = USRDESIGN_MODE;
  strcpy(design.id, "Again%1");
  strcpy(design.modeName, "Again");
  design.gamut = 1;
  design.gamma = 2.2;
  design.whitePointX = 0.3457;
  design.whitePointY = 0.3585;
  ASSERT_EQ(library.SaveUserSelfColor(&design), ResultOk);
  ExpectIdempotent([this] { return library.SetUserColorField("Again%1"); },
                   {"PlatformSetGammaLut", "PlatformSet3DLut"}, 2);
  EXPECT_EQ(notebook.platform.lut3D.size(), 14739u);
}

// The profile's mode is the stored one: the output is taken to be right.
TEST_F(RepeatedSwitch, SyncSysColorFieldSendsNothing) {
  Register(1);
  ASSERT_EQ(library.SetColorField(P3Mode), ResultOk);
  ASSERT_EQ(library.SetColorFieldCurrentMode(P3Mode), ResultOk);
  RemoveLutFiles();
  for (int repeat = 0; repeat < 3; ++repeat) {
    notebook.ForgetRecords();
    EXPECT_EQ(library.SyncSysColorField(), P3Mode);
    EXPECT_TRUE(library.SyncCurrentModeIccFile());
    EXPECT_THAT(CallsOf(notebook, kPlatformFunctions), IsEmpty());
    EXPECT_THAT(CallsOf(notebook, kFileFunctions), IsEmpty());
    EXPECT_THAT(CallsOf(notebook, kProfileFunctions), IsEmpty());
    EXPECT_EQ(notebook.CountCalls("GetSystemFirmwareTable"), 0u);
    EXPECT_EQ(notebook.CountCalls("RegSetValueExW"), 0u);
  }
}

}  // namespace
}  // namespace scenarios
