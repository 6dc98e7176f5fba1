#include <cstdio>

#include "ColorFieldTest.h"
#include "support/FailingNew.h"
#include "support/Registry.h"

using testing::ElementsAre;

namespace {

const std::string kUser = "C:\\ProgramData\\Comms\\NxVelora\\User";
const std::string kColor = "C:\\Windows\\System32\\spool\\drivers\\color\\";
const std::wstring kModes = L"SOFTWARE\\Norvex\\Velora\\ColorField\\UserDesign\\";

// A machine with factory data, and a host that designs modes. Each test starts without any.
class ColorFieldApiUserDesign : public ColorFieldTest {
 protected:
  ColorFieldApiUserDesign() {
    CleanUp();
    std::filesystem::create_directories("C:\\ProgramData\\Comms\\NxVelora");
    notebook.firmwareTable = machine.firmwareTable;
  }
  ~ColorFieldApiUserDesign() override {
    notebook.ClearFaults();
    CleanUp();
  }

  static void CleanUp() {
    std::error_code ignored;
    std::filesystem::remove_all("C:\\ProgramData\\Comms\\NxVelora", ignored);
    for (const auto& file : std::filesystem::directory_iterator(kColor)) {
      if (file.path().filename().string().ends_with("_usr.icc")) {
        std::filesystem::remove(file.path(), ignored);
      }
    }
  }

  static UserDesignInfo Design(const std::string& id, const std::string& name, int gamut = 1,
                               double gamma = 2.2, double x = 0.3127, double y = 0.3290) {
    UserDesignInfo info{};
    info.mode = USRDESIGN_MODE;
    id.copy(info.id, sizeof info.id);
    name.copy(info.modeName, sizeof info.modeName);
    info.gamut = gamut;
    info.gamma = gamma;
    info.whitePointX = x;
    info.whitePointY = y;
    return info;
  }

  static std::string Icc(const std::string& id) { return kColor + id + "_usr.icc"; }
  static std::string Lut3D(const std::string& id) { return kUser + "\\3dlut\\" + id + ".bin"; }
  static std::string Gamma(const std::string& id) { return kUser + "\\gammalut\\" + id + ".bin"; }
  static bool AllFiles(const std::string& id) {
    return std::filesystem::exists(Icc(id)) && std::filesystem::exists(Lut3D(id)) &&
           std::filesystem::exists(Gamma(id));
  }
  static bool NoFile(const std::string& id) {
    return !std::filesystem::exists(Icc(id)) && !std::filesystem::exists(Lut3D(id)) &&
           !std::filesystem::exists(Gamma(id));
  }
  static bool IsStored(const std::wstring& id) {
    return testsupport::KeyExists(HKEY_LOCAL_MACHINE, kModes + id);
  }
  bool IsInTable(const std::string& name) {
    std::string path;
    return api.FindIccFilePathByModeName(name, path);
  }
  bool Logged(int level, const std::wstring& text) const {
    return testsupport::Logged(notebook, level, text + L")");
  }
  std::wstring Default() const { return notebook.profiles.at(panel).front(); }

  void Save(const UserDesignInfo& info) {
    ASSERT_EQ(api.SaveUserSelfColor(info), ResultOk);
    notebook.ForgetRecords();
  }

  const virtualnotebook::MachineData machine =
      virtualnotebook::MakeMachine(virtualnotebook::PanelDescription{});
  const virtualnotebook::PluggedPanel plugged{machine.edid};
  const testsupport::ScopedKey settings{HKEY_LOCAL_MACHINE, L"SOFTWARE\\Norvex\\Velora"};
};

// --- A new mode ---

TEST_F(ColorFieldApiUserDesign, SaveUserSelfColor) {
  EXPECT_EQ(api.SaveUserSelfColor(Design("Mine%1", "Mine")), ResultOk);
  EXPECT_TRUE(AllFiles("Mine%1"));
  for (const char* name : {"Mine%1_usr.icc", "Mine%1_3dlut.bin", "Mine%1_gammalut.bin"}) {
    EXPECT_TRUE(std::filesystem::exists(kUser + "\\temp\\" + name)) << name;
  }
  auto stored = testsupport::ReadKey(HKEY_LOCAL_MACHINE, kModes + L"Mine%1");
  EXPECT_EQ(stored[L"IccPath"], testsupport::TextValue(Wide(Icc("Mine%1"))));
  EXPECT_EQ(testsupport::ReadKey(HKEY_LOCAL_MACHINE,
                                 kModes.substr(0, kModes.size() - 1))[L"CurrentUsrMode"],
            testsupport::TextValue(L"Mine"));
  EXPECT_EQ(Default(), L"Mine%1_usr.icc");
  EXPECT_EQ(notebook.platform.lut3D.size(), 14739u);
  EXPECT_EQ(notebook.platform.gammaLut.size(), 3072u);
  EXPECT_TRUE(IsInTable("Mine"));
  const std::vector<uint8_t> gamma = testsupport::ReadFileBytes(Gamma("Mine%1"));
  EXPECT_EQ(gamma.size(), 5280u);
  EXPECT_EQ(gamma, testsupport::ReadFileBytes(kUser + "\\temp\\Mine%1_gammalut.bin"));
}

TEST_F(ColorFieldApiUserDesign, SaveUserSelfColor_BadColours) {
  // The gamma is refused by the calculation, which leaves zeros.
  for (double gamma : {0.0, -1.0}) {
    EXPECT_EQ(api.SaveUserSelfColor(Design("Mine%1", "Mine", 1, gamma)), ResultColorFieldError);
    EXPECT_TRUE(Logged(3, L"Lut data check failed(ColorFieldApi::CreateFileByUsrDesignInfo"));
    EXPECT_TRUE(Logged(3, L"Save user design info to file fail(ColorFieldApi::SaveUserSelfColor"));
    EXPECT_FALSE(std::filesystem::exists(kUser));
  }
  // A gamut without a row is found by the profile, after the LUTs were saved.
  for (int gamut : {0, 7}) {
    EXPECT_EQ(api.SaveUserSelfColor(Design("Mine%1", "Mine", gamut)), ResultColorFieldError);
    EXPECT_TRUE(Logged(3, L"Create user self icc failed(ColorFieldApi::CreateFileByUsrDesignInfo"));
    EXPECT_TRUE(std::filesystem::exists(kUser + "\\temp\\Mine%1_3dlut.bin"));
    EXPECT_TRUE(NoFile("Mine%1"));
  }
  EXPECT_FALSE(IsStored(L"Mine%1"));
  EXPECT_FALSE(IsInTable("Mine"));
}

TEST_F(ColorFieldApiUserDesign, SaveUserSelfColor_NoMemory) {
  {
    const testsupport::FailingNew failing(1);
    EXPECT_EQ(api.SaveUserSelfColor(Design("Mine%1", "Mine")), ResultColorFieldError);
    EXPECT_TRUE(Logged(3, L"3DLut is null(ColorFieldApi::CreateFileByUsrDesignInfo"));
  }
  const testsupport::FailingNew failing(2);
  EXPECT_EQ(api.SaveUserSelfColor(Design("Mine%1", "Mine")), ResultColorFieldError);
  EXPECT_TRUE(Logged(3, L"GammaLut is null(ColorFieldApi::CreateFileByUsrDesignInfo"));
}

TEST_F(ColorFieldApiUserDesign, SaveUserSelfColor_LengthOfTheId) {
  for (size_t length : {51u, 52u, 53u}) {
    const std::string id(length, 'x');
    notebook.ForgetRecords();
    const ResultT result = api.SaveUserSelfColor(Design(id, id));
    if (length == 53) {
      EXPECT_TRUE(
          Logged(3, L"copy icc profile path failed(ICCProfileOperation::CreateAndSaveIccProfile"));
      EXPECT_TRUE(NoFile(id));
      EXPECT_EQ(result, ResultColorFieldError);
    } else if (length == 52) {
      EXPECT_TRUE(Logged(3,
                         L"memcpy_s error, gammaPath copy fail"
                         L"(ColorFieldApi::SaveUserDesignAttributeInfo"));
      EXPECT_TRUE(Logged(3, L"SaveUserDesignAttributeInfo fail(ColorFieldApi::SaveUserSelfColor"));
      EXPECT_EQ(result, ResultColorFieldError);
      EXPECT_TRUE(AllFiles(id)) << "copied from a path without a terminator";
      EXPECT_FALSE(IsStored(Wide(id)));
    } else {
      EXPECT_TRUE(AllFiles(id));
      EXPECT_TRUE(IsStored(Wide(id)));
      // A name of that length never passes the profile's check.
      EXPECT_EQ(result, ResultIccError);
      EXPECT_TRUE(Logged(3,
                         L"After Save user self color, enable color field is failed"
                         L"(ColorFieldApi::SaveUserSelfColor"));
      EXPECT_TRUE(IsInTable(id));
    }
  }
}

TEST_F(ColorFieldApiUserDesign, SaveUserSelfColor_OddIds) {
  EXPECT_EQ(api.SaveUserSelfColor(Design("Plain", "Plain")), ResultOk) << "without a mark";
  EXPECT_EQ(api.SaveUserSelfColor(Design("A%b%c", "A")), ResultOk) << "with two";
  EXPECT_TRUE(AllFiles("A%b%c"));
  EXPECT_EQ(api.SaveUserSelfColor(Design("no\\folder%1", "no")), ResultColorFieldError);
  EXPECT_TRUE(Logged(3,
                     L"Save user self bin failed, bin path is null"
                     L"(ColorFieldApi::CreateFileByUsrDesignInfo"));
}

TEST_F(ColorFieldApiUserDesign, SaveUserSelfColor_ADirectoryCannotBeMade) {
  testsupport::WriteFileBytes(kUser, {1});  // a file in the directory's place
  EXPECT_EQ(api.SaveUserSelfColor(Design("Mine%1", "Mine")), ResultColorFieldError);
  EXPECT_TRUE(Logged(3, L"Create binDirectoryPath failed, binDirectoryPath: " +
                            Wide(kUser + "\\temp") + L"(ColorFieldApi::IsFilePathExist"));
  EXPECT_TRUE(Logged(3,
                     L"Create usr color dir fail, mode id : Mine%1"
                     L"(ColorFieldApi::CreateFileByUsrDesignInfo"));
  std::filesystem::remove(kUser);
  notebook.FailCall("_mkdir", 1, static_cast<uint64_t>(-1));
  EXPECT_EQ(api.SaveUserSelfColor(Design("Mine%1", "Mine")), ResultColorFieldError);
  EXPECT_TRUE(Logged(3, L"Create User directory failed, path: " + Wide(kUser) +
                            L"(ColorFieldApi::IsFilePathExist"));
  notebook.ClearFaults();
  notebook.FailCall("CoreKit::EnableFileUsersPriviledge", 1, 1);
  EXPECT_EQ(api.SaveUserSelfColor(Design("Mine%1", "Mine")), ResultColorFieldError);
  EXPECT_TRUE(Logged(3, L"EnableFileUsersPriviledge Failed! fileName:" + Wide(kUser) +
                            L"(ColorFieldApi::IsFilePathExist"));
}

TEST_F(ColorFieldApiUserDesign, SaveUserSelfColor_CopiesThatFailShowInTheLogOnly) {
  Save(Design("Mine%1", "Mine"));
  notebook.FailCall("CopyFileW", 2, 0, ERROR_ACCESS_DENIED);
  EXPECT_EQ(api.SaveUserSelfColor(Design("Mine%1", "Mine")), ResultOk);
  EXPECT_TRUE(Logged(3, L"Copy user design file failed, exist path :" +
                            Wide(kUser + "\\temp\\Mine%1_3dlut.bin") + L", new path :" +
                            Wide(Lut3D("Mine%1")) + L"(ColorFieldApi::CopyUsrDesignFile"));
}

TEST_F(ColorFieldApiUserDesign, SaveUserSelfColor_Twice) {
  Save(Design("Mine%1", "Mine"));
  Save(Design("Mine%1", "Mine", 2));
  EXPECT_EQ(api.DeleteUserSelfColor("Mine%1"), ResultOk);
  EXPECT_TRUE(IsInTable("Mine")) << "a second row";
  EXPECT_EQ(api.DeleteUserSelfColor("Mine%1"), ResultOk);
  EXPECT_FALSE(IsInTable("Mine"));
}

// A fault at every call of one kind after the other: what survives is told by how far it came.
TEST_F(ColorFieldApiUserDesign, SaveUserSelfColor_AFaultAtEachCall) {
  const struct {
    const char* function;
    uint64_t result;
  } rows[] = {{"CreateFileA", static_cast<uint64_t>(-1)},
              {"CopyFileW", 0},
              {"_mkdir", static_cast<uint64_t>(-1)},
              {"CoreKit::EnableFileUsersPriviledge", 1},
              {"RegCreateKeyExW", ERROR_ACCESS_DENIED},
              {"RegSetValueExW", ERROR_ACCESS_DENIED},
              {"WcsGetDefaultColorProfile", 0},
              {"OpenColorProfileW", 0},
              {"InstallColorProfileW", 0},
              {"WcsAssociateColorProfileWithDevice", 0},
              {"PlatformSetGammaLut", 5},
              {"PlatformSet3DLut", 5}};
  size_t faults = 0;
  for (const auto& row : rows) {
    for (unsigned n = 1;; ++n) {
      SCOPED_TRACE(std::string(row.function) + " " + std::to_string(n));
      ASSERT_LT(n, 100u);
      notebook.ClearFaults();
      CleanUp();
      std::filesystem::create_directories("C:\\ProgramData\\Comms\\NxVelora");
      RegDeleteTreeW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Norvex\\Velora");
      notebook.profiles[panel] = {L"VeloraOld.icc"};
      velora::ColorFieldApi host;
      notebook.ForgetRecords();
      notebook.FailCall(row.function, n, row.result, ERROR_ACCESS_DENIED);
      const ResultT result = host.SaveUserSelfColor(Design("Mine%1", "Mine"));
      if (notebook.CountCalls(row.function) < n) {
        EXPECT_EQ(result, ResultOk);
        break;
      }
      ++faults;
      std::string path;
      const bool inTable = host.FindIccFilePathByModeName("Mine", path);
      const auto logged = [&](const wchar_t* text) {
        return std::ranges::any_of(notebook.log, [text](const auto& line) {
          return line.text.find(text) != std::wstring::npos;
        });
      };
      if (logged(L"Save user design info to file fail")) {
        EXPECT_EQ(result, ResultColorFieldError);
        EXPECT_FALSE(inTable);
        EXPECT_FALSE(IsStored(L"Mine%1"));
        EXPECT_TRUE(NoFile("Mine%1"));
        EXPECT_EQ(Default(), L"VeloraOld.icc");
      } else if (logged(L"Add user design reg failed, mode id:Mine%1")) {
        EXPECT_NE(result, ResultOk);
        EXPECT_FALSE(inTable);
        EXPECT_TRUE(AllFiles("Mine%1"));
        EXPECT_EQ(Default(), L"VeloraOld.icc");
      } else {
        EXPECT_TRUE(inTable);
        EXPECT_TRUE(IsStored(L"Mine%1"));
        EXPECT_EQ(result != ResultOk,
                  logged(L"After Save user self color, enable color field is failed"));
      }
    }
  }
  EXPECT_GT(faults, 40u);
  RecordProperty("faults", static_cast<int>(faults));
}

// --- A changed mode ---

TEST_F(ColorFieldApiUserDesign, EditUserColorField_OtherColoursSameId) {
  Save(Design("Mine%1", "Mine"));
  const std::vector<double> before = notebook.platform.gammaLut;
  const auto file = testsupport::ReadFileBytes(Gamma("Mine%1"));
  EXPECT_EQ(api.EditUserColorField(Design("Mine%1", "Mine", 1, 2.2, 0.3457, 0.3585), "Mine%1"),
            ResultOk);
  EXPECT_TRUE(Logged(1, L" UserDesign data is change(ColorFieldApi::IsUserDesignDataChange"));
  EXPECT_NE(notebook.platform.gammaLut, before) << "the cached LUT is dropped";
  EXPECT_NE(testsupport::ReadFileBytes(Gamma("Mine%1")), file);
  EXPECT_EQ(api.DeleteUserSelfColor("Mine%1"), ResultOk);
  EXPECT_FALSE(IsInTable("Mine")) << "one row";
}

TEST_F(ColorFieldApiUserDesign, EditUserColorField_EachColourCounts) {
  Save(Design("Mine%1", "Mine"));
  const UserDesignInfo changes[] = {Design("Mine%1", "Mine", 2), Design("Mine%1", "Mine", 2, 2.4),
                                    Design("Mine%1", "Mine", 2, 2.4, 0.33),
                                    Design("Mine%1", "Mine", 2, 2.4, 0.33, 0.34)};
  for (const UserDesignInfo& change : changes) {
    notebook.ForgetRecords();
    EXPECT_EQ(api.EditUserColorField(change, "Mine%1"), ResultOk);
    EXPECT_TRUE(Logged(1, L" UserDesign data is change(ColorFieldApi::IsUserDesignDataChange"));
  }
}

TEST_F(ColorFieldApiUserDesign, EditUserColorField_OtherColoursAndId) {
  Save(Design("Mine%1", "Mine"));
  std::filesystem::remove(Lut3D("Mine%1"));
  EXPECT_EQ(api.EditUserColorField(Design("Yours%1", "Yours", 2), "Mine%1"), ResultOk);
  EXPECT_TRUE(NoFile("Mine%1"));
  EXPECT_TRUE(AllFiles("Yours%1"));
  EXPECT_TRUE(Logged(2, L"Delete source3DLutFile failed, source3DLutFile: " +
                            Wide(Lut3D("Mine%1")) + L"(ColorFieldApi::EditUserDesignData"));
  EXPECT_FALSE(IsStored(L"Mine%1"));
  EXPECT_TRUE(IsStored(L"Yours%1"));
  EXPECT_FALSE(IsInTable("Mine"));
  EXPECT_TRUE(IsInTable("Yours"));
}

TEST_F(ColorFieldApiUserDesign, EditUserColorField_NameOnly) {
  Save(Design("Mine%1", "Mine"));
  const auto lut3D = testsupport::ReadFileBytes(Lut3D("Mine%1"));
  const auto gamma = testsupport::ReadFileBytes(Gamma("Mine%1"));
  EXPECT_EQ(api.EditUserColorField(Design("Yours%1", "Yours"), "Mine%1"), ResultOk);
  EXPECT_TRUE(Logged(1, L" UserDesign data is not change(ColorFieldApi::IsUserDesignDataChange"));
  EXPECT_TRUE(NoFile("Mine%1"));
  EXPECT_EQ(testsupport::ReadFileBytes(Lut3D("Yours%1")), lut3D);
  EXPECT_EQ(testsupport::ReadFileBytes(Gamma("Yours%1")), gamma);
  EXPECT_EQ(Default(), L"Yours%1_usr.icc");
}

TEST_F(ColorFieldApiUserDesign, EditUserColorField_SameIdAndColours) {
  Save(Design("Mine%1", "Mine"));
  EXPECT_EQ(api.EditUserColorField(Design("Mine%1", "Mine"), "Mine%1"), ResultOk);
  EXPECT_TRUE(AllFiles("Mine%1"));
}

TEST_F(ColorFieldApiUserDesign, EditUserColorField_UnknownOldId) {
  Save(Design("Mine%1", "Mine"));
  EXPECT_EQ(api.EditUserColorField(Design("Yours%1", "Yours"), "Other%1"), ResultColorFieldError);
  EXPECT_TRUE(Logged(3, L"rename 3dlut file failed, des3DLutFile: " + Wide(Lut3D("Yours%1")) +
                            L"(ColorFieldApi::EditUserDesignDescription"));
  EXPECT_TRUE(Logged(3,
                     L"Edit userDesign info failed, mode original id: Other%1"
                     L"(ColorFieldApi::EditUserColorField"));
  EXPECT_TRUE(AllFiles("Mine%1"));
  EXPECT_TRUE(IsInTable("Mine"));
}

TEST_F(ColorFieldApiUserDesign, EditUserColorField_TheNewIdsFilesExist) {
  Save(Design("Mine%1", "Mine"));
  Save(Design("Yours%1", "Yours"));
  EXPECT_EQ(api.EditUserColorField(Design("Yours%1", "Yours"), "Mine%1"), ResultColorFieldError);
  EXPECT_TRUE(AllFiles("Mine%1"));
  EXPECT_TRUE(AllFiles("Yours%1"));
}

TEST_F(ColorFieldApiUserDesign, EditUserColorField_GammaRenameFails) {
  Save(Design("Mine%1", "Mine"));
  notebook.FailCall("rename", 2, static_cast<uint64_t>(-1));
  EXPECT_EQ(api.EditUserColorField(Design("Yours%1", "Yours"), "Mine%1"), ResultColorFieldError);
  EXPECT_TRUE(Logged(3, L"rename gamma file failed, desGammaLutFile: " + Wide(Gamma("Yours%1")) +
                            L"(ColorFieldApi::EditUserDesignDescription"));
  EXPECT_TRUE(AllFiles("Mine%1")) << "the 3D LUT is back";
  EXPECT_TRUE(NoFile("Yours%1"));
}

TEST_F(ColorFieldApiUserDesign, EditUserColorField_NewProfileFails) {
  Save(Design("Mine%1", "Mine"));
  notebook.FailCall("CoreKit::EnableFileUsersPriviledge", 1, 1);
  EXPECT_EQ(api.EditUserColorField(Design("Yours%1", "Yours"), "Mine%1"), ResultColorFieldError);
  EXPECT_TRUE(Logged(3, L"Create new icc file failed(ColorFieldApi::EditUserDesignDescription"));
  EXPECT_TRUE(AllFiles("Mine%1")) << "both LUTs are back";
  EXPECT_TRUE(NoFile("Yours%1"));
  EXPECT_TRUE(IsStored(L"Mine%1"));
}

TEST_F(ColorFieldApiUserDesign, EditUserColorField_OldProfileCannotBeDeleted) {
  Save(Design("Mine%1", "Mine"));
  notebook.FailCall("remove", 1, static_cast<uint64_t>(-1));
  EXPECT_EQ(api.EditUserColorField(Design("Yours%1", "Yours"), "Mine%1"), ResultOk);
  EXPECT_TRUE(Logged(2, L"Delete iccProfile failed, iccProfile: " + Wide(Icc("Mine%1")) +
                            L"(ColorFieldApi::EditUserDesignDescription"));
}

// New files may stand beside the old ones; the old mode stays as it is.
TEST_F(ColorFieldApiUserDesign, EditUserColorField_ColoursThatFail) {
  Save(Design("Mine%1", "Mine"));
  EXPECT_EQ(api.EditUserColorField(Design("Yours%1", "Yours", 0), "Mine%1"), ResultColorFieldError);
  EXPECT_TRUE(Logged(3,
                     L"Create user design color file fail, old id: Mine%1"
                     L"(ColorFieldApi::EditUserDesignData"));
  EXPECT_TRUE(AllFiles("Mine%1"));
  EXPECT_TRUE(IsStored(L"Mine%1"));
  EXPECT_TRUE(IsInTable("Mine"));
}

TEST_F(ColorFieldApiUserDesign, EditUserColorField_FieldsThatFail) {
  Save(Design("Mine%1", "Mine"));
  const std::string id(52, 'x');
  EXPECT_EQ(api.EditUserColorField(Design(id, "x", 2), "Mine%1"), ResultColorFieldError);
  EXPECT_TRUE(Logged(3,
                     L"SaveUserDesignAttributeInfo fail, old id: Mine%1"
                     L"(ColorFieldApi::EditUserDesignData"));
  EXPECT_TRUE(NoFile("Mine%1")) << "removed already";
  EXPECT_TRUE(AllFiles(id));
  EXPECT_TRUE(IsStored(L"Mine%1"));
}

TEST_F(ColorFieldApiUserDesign, EditUserColorField_NoTemporaryDirectory) {
  Save(Design("Mine%1", "Mine"));
  std::filesystem::remove_all(kUser + "\\temp");
  notebook.FailCall("_mkdir", 1, static_cast<uint64_t>(-1));
  EXPECT_EQ(api.EditUserColorField(Design("Yours%1", "Yours"), "Mine%1"), ResultColorFieldError);
  EXPECT_TRUE(Logged(3,
                     L"Create usr color temp dir fail, mode id : Mine%1"
                     L"(ColorFieldApi::EditUserColorField"));
  EXPECT_TRUE(AllFiles("Mine%1"));
}

TEST_F(ColorFieldApiUserDesign, EditUserColorField_EnablingFails) {
  Save(Design("Mine%1", "Mine"));
  notebook.FailCall("PlatformSet3DLut", 1, 5);
  EXPECT_EQ(api.EditUserColorField(Design("Yours%1", "Yours"), "Mine%1"), ResultColorFieldError);
  EXPECT_TRUE(Logged(3,
                     L"Edit userDesign file success, but enable fail"
                     L"(ColorFieldApi::EditUserColorField"));
  EXPECT_TRUE(IsStored(L"Yours%1")) << "the edit stays";
  EXPECT_TRUE(IsInTable("Yours"));
  EXPECT_FALSE(IsInTable("Mine"));
}

TEST_F(ColorFieldApiUserDesign, EditUserColorField_TheStoreDoesNotMatter) {
  Save(Design("Mine%1", "Mine"));
  notebook.FailCall("RegSetValueExW", 0, ERROR_ACCESS_DENIED);
  EXPECT_EQ(api.EditUserColorField(Design("Yours%1", "Yours"), "Mine%1"), ResultOk);
}

// A fault at every call of one kind after the other. An edit that fails before its record is stored
// leaves the old mode usable; afterwards the new one is in its place.
TEST_F(ColorFieldApiUserDesign, EditUserColorField_AFaultAtEachCall) {
  const struct {
    const char* function;
    uint64_t result;
  } rows[] = {{"CreateFileA", static_cast<uint64_t>(-1)},
              {"CopyFileW", 0},
              {"rename", static_cast<uint64_t>(-1)},
              {"remove", static_cast<uint64_t>(-1)},
              {"CoreKit::EnableFileUsersPriviledge", 1},
              {"RegSetValueExW", ERROR_ACCESS_DENIED},
              {"WcsGetDefaultColorProfile", 0},
              {"OpenColorProfileW", 0},
              {"InstallColorProfileW", 0},
              {"WcsAssociateColorProfileWithDevice", 0},
              {"PlatformSetGammaLut", 5},
              {"PlatformSet3DLut", 5}};
  size_t faults = 0;
  for (int gamut : {1, 2}) {  // the same colours, and others
    for (const auto& row : rows) {
      for (unsigned n = 1;; ++n) {
        SCOPED_TRACE(std::string(row.function) + " " + std::to_string(n) + " gamut " +
                     std::to_string(gamut));
        ASSERT_LT(n, 100u);
        notebook.ClearFaults();
        CleanUp();
        std::filesystem::create_directories("C:\\ProgramData\\Comms\\NxVelora");
        RegDeleteTreeW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Norvex\\Velora");
        notebook.profiles[panel] = {L"VeloraOld.icc"};
        velora::ColorFieldApi host;
        ASSERT_EQ(host.SaveUserSelfColor(Design("Mine%1", "Mine")), ResultOk);
        notebook.ForgetRecords();
        notebook.FailCall(row.function, n, row.result, ERROR_ACCESS_DENIED);
        const ResultT result = host.EditUserColorField(Design("Yours%1", "Yours", gamut), "Mine%1");
        if (notebook.CountCalls(row.function) < n) {
          EXPECT_EQ(result, ResultOk);
          break;
        }
        ++faults;
        notebook.ClearFaults();
        std::string path;
        const bool edited = host.FindIccFilePathByModeName("Yours", path);
        EXPECT_NE(edited, host.FindIccFilePathByModeName("Mine", path)) << "one of them";
        if (!edited) {
          EXPECT_EQ(result, ResultColorFieldError);
          EXPECT_TRUE(IsStored(L"Mine%1"));
          EXPECT_TRUE(AllFiles("Mine%1"));
          EXPECT_EQ(host.SetUserColorField("Mine%1"), ResultOk) << "still good";
        }
      }
    }
  }
  EXPECT_GT(faults, 60u);
  RecordProperty("faults", static_cast<int>(faults));
}

// --- A removed mode ---

TEST_F(ColorFieldApiUserDesign, DeleteUserSelfColor) {
  Save(Design("Mine%1", "Mine"));
  EXPECT_EQ(api.DeleteUserSelfColor("Mine%2"), ResultFailed);
  EXPECT_TRUE(Logged(2,
                     L"Delete user self color mode info fail, id = Mine%2"
                     L"(ColorFieldApi::DeleteUserSelfColor"));
  EXPECT_EQ(api.DeleteUserSelfColor("Mine%1"), ResultOk);
  EXPECT_TRUE(AllFiles("Mine%1"));
  EXPECT_TRUE(IsStored(L"Mine%1"));
  EXPECT_EQ(Default(), L"Mine%1_usr.icc") << "output and profile stay";
  EXPECT_EQ(api.SetUserColorField("Mine%1"), ResultFailed);
}

// The system's profile of a user mode leads back to the mode.
TEST_F(ColorFieldApiUserDesign, SyncSysColorField_FollowsAUserMode) {
  Save(Design("Mine%1", "Mine"));
  notebook.platform.lut3D.clear();
  EXPECT_EQ(api.SyncSysColorField(), USRDESIGN_MODE);
  EXPECT_TRUE(Logged(1, L"Current mode change to USRDESIGN_MODE(ColorFieldApi::SyncSysColorField"));
  EXPECT_EQ(notebook.platform.lut3D.size(), 14739u);
}

}  // namespace
