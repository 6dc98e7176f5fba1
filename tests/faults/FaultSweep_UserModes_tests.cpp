// A fault at every call of the exports that make, change and enable user-designed colour modes, and
// of the e-book mode, which has files of its own kind too.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "faults/ColorModeSweep.h"

namespace faults {
namespace {

const std::wstring kUserDir = L"C:\\ProgramData\\Comms\\NxVelora\\User";
const std::wstring kProfile = L"C:\\Windows\\System32\\spool\\drivers\\color\\Mine%1_usr.icc";

UserDesignInfo Design(const std::string& id, int gamut) {
  UserDesignInfo info{};
  info.mode = USRDESIGN_MODE;
  id.copy(info.id, sizeof info.id);
  id.copy(info.modeName, id.find('%'));
  info.gamut = gamut;
  info.gamma = 2.2;
  info.whitePointX = 0.3457;
  info.whitePointY = 0.3585;
  return info;
}

class FaultSweep_UserModes : public ColorModeSweep {
 protected:
  FaultSweep_UserModes() {
    // What the panel shows of the two designs; with another panel the user's LUT comes unfused.
    for (const int gamut : {1, 2}) {
      for (const bool isFactoryPanel : {true, false}) {
        StartMachine();
        if (!isFactoryPanel) {
          notebook().firmwareTable.clear();
        }
        const UserDesignInfo design = Design("Mine%1", gamut);
        EXPECT_EQ(library().SaveUserSelfColor(&design), ResultOk);
        (isFactoryPanel ? fused_ : unfused_)[gamut] = notebook().platform.lut3D;
        gamma_ = notebook().platform.gammaLut;
      }
    }
    EXPECT_EQ(fused_[1].size(), 14739u);
    EXPECT_NE(fused_[1], fused_[2]);
    EXPECT_NE(fused_[1], unfused_[1]);
  }

  void StartMachine() {
    RemoveTraces();
    StartProcess(1);
    SetProfile(kOldProfile);
  }

  // The design with gamut 2 is the new one, if there are two.
  Shown UserLut(int gamut) {
    const std::vector<double>& lut = notebook().platform.lut3D;
    return lut.empty()                        ? Shown::Nothing
           : lut == fused_[gamut]             ? Shown::New
           : lut == unfused_[gamut]           ? Shown::Golden
           : gamut == 2 && lut == fused_[1]   ? Shown::Old
           : gamut == 2 && lut == unfused_[1] ? Shown::Old
                                              : Shown::Other;
  }
  Shown UserGamma() {
    const std::vector<double>& lut = notebook().platform.gammaLut;
    return lut.empty() ? Shown::Nothing : lut == gamma_ ? Shown::New : Shown::Other;
  }

  static bool Exists(const std::wstring& path) { return std::filesystem::exists(path); }
  static bool IsStored(const std::wstring& id) {
    return testsupport::KeyExists(HKEY_LOCAL_MACHINE,
                                  L"SOFTWARE\\Norvex\\Velora\\ColorField\\UserDesign\\" + id);
  }

  Scene UserScene(const std::string& name, const std::string& id, int gamut) {
    Scene scene;
    scene.name = name;
    scene.prepare = [this] { StartMachine(); };
    scene.oldProfile = kOldProfile;
    scene.newProfile = std::wstring(id.begin(), id.end()) + L"_usr.icc";
    scene.gamma = [this] { return UserGamma(); };
    scene.lut = [this, gamut] { return UserLut(gamut); };
    // Saving repairs whatever there is.
    scene.next = [this, id, gamut] {
      const UserDesignInfo design = Design(id, gamut);
      return library().SaveUserSelfColor(&design);
    };
    scene.restart = [this] { StartProcess(1); };
    // A panel that could not be read is not read again for designs.
    scene.lasts = [this] {
      return testsupport::Logged(notebook(), 3,
                                 L"Gamut Gamma is Zero!(UsrDesignAlgo::ThreeDLutCal)");
    };
    return scene;
  }

  std::map<int, std::vector<double>> fused_, unfused_;  // by gamut
  std::vector<double> gamma_;
};

// --- Saving ---

TEST_F(FaultSweep_UserModes, SaveUserSelfColor) {
  Scene scene = UserScene("SaveUserSelfColor", "Mine%1", 1);
  scene.call = scene.next;
  const Ending good = scene.good;

  // Nothing was registered, and nothing shown.
  const auto notMade = [](std::vector<std::wstring> errors) {
    errors.push_back(L"Save user design info to file fail(ColorFieldApi::SaveUserSelfColor)");
    return Ending{.result = ResultColorFieldError,
                  .errors = errors,
                  .profile = Shown::Old,
                  .gamma = Shown::Nothing,
                  .lut = Shown::Nothing};
  };
  // The mode is saved and registered; this much of it is shown.
  const auto notEnabled = [](int result, std::vector<std::wstring> errors, Shown profile,
                             Shown gamma, Shown lut) {
    errors.push_back(
        L"After Save user self color, enable color field is failed"
        L"(ColorFieldApi::SaveUserSelfColor)");
    return Ending{
        .result = result, .errors = errors, .profile = profile, .gamma = gamma, .lut = lut};
  };
  const auto profileFailed = [&](Ending ending) {
    ending.errors.push_back(L"SetUsrIccFileWithCheck Failed, ret is" +
                            std::to_wstring(ending.result) +
                            L"(ColorFieldApi::EnableUsrICCProfile)");
    ending.errors.push_back(
        L"EnableUsrICCProfile Failed, id isMine"
        L"(ColorFieldApi::EnableUserColorField)");
    Ending whole =
        notEnabled(ending.result, ending.errors, Shown::Old, Shown::Nothing, Shown::Nothing);
    whole.openProfiles = ending.openProfiles;
    return whole;
  };
  const Ending noMonitor = notEnabled(ResultFailed,
                                      {L"EnableUsrICCProfile Failed, id isMine"
                                       L"(ColorFieldApi::EnableUserColorField)"},
                                      Shown::Old, Shown::Nothing, Shown::Nothing);
  const auto badProfile = [&](std::vector<std::wstring> errors) {
    errors.push_back(L"Icc File Be Modified! fileName:" + kProfile +
                     L"(ColorFieldApi::SetUsrIccFileWithCheck)");
    return profileFailed({.result = ResultIccError, .errors = errors});
  };
  const Ending wrongHash =
      badProfile({L"The sha256 values after and before are different"
                  L"(ICCProfileOperation::ICCProfileSha256Check)"});
  const auto gammaFailed = [&](std::vector<std::wstring> errors) {
    errors.push_back(
        L"EnableUsrBinProfile Failed, id isMine%1(ColorFieldApi::EnableUserColorField)");
    return notEnabled(ResultColorFieldError, errors, Shown::New, Shown::Nothing, Shown::New);
  };
  const auto lutFailed = [&](std::vector<std::wstring> errors) {
    errors.push_back(
        L"EnableUsrBinProfile Failed, id isMine%1(ColorFieldApi::EnableUserColorField)");
    return notEnabled(ResultColorFieldError, errors, Shown::New, Shown::New, Shown::Nothing);
  };
  const Ending gammaNotRead =
      gammaFailed({L"get gammalut from bin failed(ColorField3DLut::SetDisplayerByUserGammaLut)"});
  const Ending lutNotRead =
      lutFailed({L"Get 3dlut from bin failed(ColorField3DLut::SetDisplayerByUser3DLut)"});
  Ending unfused = good;
  unfused.lut = Shown::Golden;
  Ending associated = good;
  associated.profile = Shown::Old;

  // The panel's values for the calculation.
  const Ending noPanel =
      notMade({L"Lut data check failed"
               L"(ColorFieldApi::CreateFileByUsrDesignInfo)"});
  scene.rules = {
      {.function = "WmiQuery::ExcuteQueryImpl", .names = L"PNPDeviceID", .n = 1, .ending = noPanel},
      {.function = "WmiQuery::ExcuteQueryImpl", .names = L"PNPDeviceID", .ending = unfused},
      {.function = "WmiQuery::GetResult", .names = L"PNPDeviceID", .n = 1, .ending = noPanel},
      {.function = "WmiQuery::GetResult", .names = L"PNPDeviceID", .ending = unfused},
      {.function = "CoreKit::WStringToString", .n = 1, .ending = noPanel},
      {.function = "CoreKit::WStringToString", .ending = unfused},
      {.function = "RegOpenKeyExA", .n = 1, .ending = noPanel},
      {.function = "RegOpenKeyExA", .ending = unfused},
      {.function = "RegQueryValueExA", .n = 1, .ending = noPanel},
      {.function = "RegQueryValueExA", .n = 2, .ending = noPanel},
      {.function = "RegQueryValueExA", .ending = unfused},
      {.function = "CoreKit::BytesToHexString", .n = 1, .ending = good},  // the serial
      {.function = "CoreKit::BytesToHexString", .ending = unfused},
      {.function = "GetSystemFirmwareTable", .n = 1, .result = 131124, .ending = good},
      {.function = "GetSystemFirmwareTable", .ending = unfused}};

  // The directories.
  const auto noDirectory = [&](const std::wstring& error) {
    return notMade({error,
                    L"Create usr color dir fail, mode id : Mine%1"
                    L"(ColorFieldApi::CreateFileByUsrDesignInfo)"});
  };
  const std::wstring inPathExist = L"(ColorFieldApi::IsFilePathExist)";
  const Ending noRoot =
      noDirectory(L"Create User directory failed, path: " + kUserDir + inPathExist);
  scene.rules = scene.rules + Rules{{.function = "_mkdir", .n = 1, .ending = noRoot}};
  for (const wchar_t* name : {L"\\temp", L"\\3dlut", L"\\gammalut"}) {
    scene.rules =
        scene.rules +
        Rules{{.function = "_access", .names = kUserDir + name, .ending = good},
              {.function = "_mkdir",
               .names = kUserDir + name,
               .ending = noDirectory(L"Create binDirectoryPath failed, binDirectoryPath: " +
                                     kUserDir + name + inPathExist)}};
  }
  const std::wstring inTemp = kUserDir + L"\\temp\\Mine%1";
  scene.rules =
      scene.rules +
      Rules{{.function = "_access",
             .names = L"_usr.icc",
             .ending = profileFailed({.result = ResultFileNotFound,
                                      .errors = {L"Icc File:" + kProfile +
                                                 L" Not Found!"
                                                 L"(ColorFieldApi::SetUsrIccFileWithCheck)"}})},
            {.function = "_access", .nth = 1, .ending = good},  // it is not there yet
            {.function = "_access", .ending = noRoot},          // and can't be made again
            {.function = "CoreKit::EnableFileUsersPriviledge", .result = 2, .ending = good},
            {.function = "CoreKit::EnableFileUsersPriviledge",
             .names = inTemp,
             .ending = notMade({L"Modify icc profile privilegde failed"
                                L"(ICCProfileOperation::CreateAndSaveIccProfile)",
                                L"Create user self icc failed"
                                L"(ColorFieldApi::CreateFileByUsrDesignInfo)"})},
            {.function = "CoreKit::EnableFileUsersPriviledge", .names = L"Mine%1", .ending = good},
            {.function = "CoreKit::EnableFileUsersPriviledge",
             .ending = noDirectory(L"EnableFileUsersPriviledge Failed! fileName:" + kUserDir +
                                   inPathExist)}};

  // The LUT files in the making: each failure is told, and nothing that is damaged goes on.
  const struct {
    std::wstring path;
    std::wstring notMade;
  } lutFiles[] = {
      {inTemp + L"_gammalut.bin", L"Create user gammalut temp bin file fail, bin path :" + inTemp +
                                      L"_gammalut.bin(ColorField3DLut::SaveUserGammaLutBin)"},
      {inTemp + L"_3dlut.bin", L"Create user 3dlut temp bin file fail, bin path :" + inTemp +
                                   L"_3dlut.bin(ColorField3DLut::SaveUser3DLutBin)"}};
  for (const auto& file : lutFiles) {
    const auto failed = [&](std::vector<std::wstring> errors) {
      errors.push_back(file.notMade);
      errors.push_back(
          L"Save user self bin failed, bin path is null"
          L"(ColorFieldApi::CreateFileByUsrDesignInfo)");
      return notMade(errors);
    };
    const std::wstring open = L"Open binfile error" + file.path + L"(ColorField3DLut::";
    const Ending noHead = failed({open + L"CreateUserBinFile)"});
    const Ending noData =
        failed({open + L"WriteLutDataToBin)", L"Add lut data fail, bin file path: " + file.path +
                                                  L"(ColorField3DLut::CreateUserBinFile)"});
    const std::wstring noHash = L"Add sha256 data fail, bin file path: " + file.path +
                                L"(ColorField3DLut::CreateUserBinFile)";
    scene.rules =
        scene.rules +
        Rules{
            {.function = "CoreKit::GetCanonicalizedFilePath",
             .names = file.path,
             .nth = 1,
             .ending = noHead},
            {.function = "CoreKit::GetCanonicalizedFilePath", .names = file.path, .ending = noData},
            {.function = "CreateFileA",
             .names = file.path,
             .alsoNames = kUpdating,
             .ending = failed({open + L"Sha256UserLut)", noHash})},
            {.function = "GetFileSizeEx", .names = file.path, .ending = failed({noHash})},
            {.function = "WriteFile", .names = file.path, .ending = failed({noHash})},
            {.function = "ReadFile", .names = file.path, .ending = failed({noHash})},
            {.function = "CloseHandle", .names = file.path, .ending = good}};
    // The first opening empties the file, the second one appends.
    for (const auto& [disposition, ending] : {std::pair(2, noHead), std::pair(4, noData)}) {
      Rule rule = {.function = "CreateFileA", .names = file.path, .ending = ending};
      rule.n = (file.path.ends_with(L"_3dlut.bin") ? 3U : 0U) + (disposition == 2 ? 1U : 2U);
      scene.rules.push_back(rule);
    }
  }

  // The profile in the making, and the user's copies.
  const auto noProfile = [&](std::vector<std::wstring> errors) {
    errors.push_back(
        L"Modify icc profile header failed"
        L"(ICCProfileOperation::CreateAndSaveIccProfile)");
    errors.push_back(
        L"Create user self icc failed"
        L"(ColorFieldApi::CreateFileByUsrDesignInfo)");
    return notMade(errors);
  };
  const std::wstring tempProfile = inTemp + L"_usr.icc";
  const Ending missing =
      profileFailed({.result = ResultFileNotFound,
                     .errors = {L"Icc File:" + kProfile +
                                L" Not Found!(ColorFieldApi::SetUsrIccFileWithCheck)"}});
  const std::wstring lut = kUserDir + L"\\3dlut\\Mine%1.bin";
  const std::wstring gamma = kUserDir + L"\\gammalut\\Mine%1.bin";
  scene.rules = scene.rules +
                Rules{{.function = "CreateFileA",
                       .names = tempProfile,
                       .ending = noProfile({L"Open iccfile failed, iccfileName is " + tempProfile +
                                            L"(ICCProfileOperation::ModifyICCProfile)"})},
                      {.function = "GetFileSizeEx",
                       .names = tempProfile,
                       .ending = noProfile({L"Can not get Sha256 Value"
                                            L"(ICCProfileOperation::WriteSha256ValueToIccProfile)",
                                            L"Write Sha256Value failed"
                                            L"(ICCProfileOperation::ModifyICCProfile)"})},
                      {.function = "ReadFile", .names = tempProfile, .ending = wrongHash},
                      {.function = "WriteFile", .names = tempProfile, .n = 9, .ending = wrongHash},
                      {.function = "WriteFile", .names = tempProfile, .ending = good},
                      {.function = "CloseHandle", .names = tempProfile, .ending = good},
                      {.function = "CopyFileW", .names = kProfile, .ending = missing},
                      {.function = "CopyFileW", .names = lut, .ending = lutNotRead},
                      {.function = "CopyFileW", .names = gamma, .ending = gammaNotRead}};
  // A path that could not be widened: for the copy, then for the stored record, whose texts are not
  // read again, then for the association.
  scene.rules =
      scene.rules + Rules{{.function = "CoreKit::StringToWString", .n = 1, .ending = missing},
                          {.function = "CoreKit::StringToWString", .n = 2, .ending = missing},
                          {.function = "CoreKit::StringToWString", .n = 3, .ending = lutNotRead},
                          {.function = "CoreKit::StringToWString", .n = 4, .ending = lutNotRead},
                          {.function = "CoreKit::StringToWString", .n = 5, .ending = gammaNotRead},
                          {.function = "CoreKit::StringToWString", .n = 6, .ending = gammaNotRead},
                          {.function = "CoreKit::StringToWString",
                           .names = kProfile,
                           .nth = 3,
                           .ending = profileFailed({.result = ResultFailed,
                                                    .errors = {L"SetOsIccFile input prar is empty!"
                                                               L"(ColorFieldApi::SetOsIccFile)"}})},
                          {.function = "CoreKit::StringToWString",
                           .names = L"Mine%1_usr.icc",
                           .n = 16,
                           .ending = associated},
                          {.function = "CoreKit::StringToWString", .ending = good}};

  // The stored record: 17 values; then the current mode's name, which does not matter.
  Ending notStored = {.result = ResultFailed,
                      .errors = {L"Add user design reg data failed, id: Mine%1"
                                 L"(UserDesignReg::AddUserDesignReg)",
                                 L"Add user design reg failed, mode id:Mine%1"
                                 L"(ColorFieldApi::SaveUserSelfColor)"},
                      .profile = Shown::Old,
                      .gamma = Shown::Nothing,
                      .lut = Shown::Nothing};
  scene.rules =
      scene.rules +
      Rules{{.function = "RegCreateKeyExW", .names = L"UserDesign\\Mine%1", .ending = notStored},
            {.function = "RegSetValueExW", .names = L"UserDesign\\Mine%1", .ending = notStored},
            {.function = "RegCreateKeyExW", .ending = good},
            {.function = "RegSetValueExW", .ending = good},
            {.function = "RegCloseKey", .ending = good},
            {.function = "RegOpenKeyW", .names = L"WhitePointFineTue", .ending = good}};

  // Enabling.
  scene.rules =
      scene.rules +
      Rules{{.function = "EnumDisplayDevicesW", .n = 1, .ending = good},
            {.function = "EnumDisplayDevicesW", .n = 2, .ending = good}} +
      MonitorRules(good, noMonitor, 5) +
      Rules{{.function = "CreateFileA",
             .names = kProfile,
             .ending = badProfile({L"Open iccfile failed, iccfileName is " + kProfile +
                                   L"(ICCProfileOperation::ICCProfileSha256Check)"})},
            {.function = "ReadFile",
             .names = kProfile,
             .ending = badProfile({L"IDs are different(ICCProfileOperation::IsfileMatchId)",
                                   L"File does not match id"
                                   L"(ICCProfileOperation::ICCProfileSha256Check)"})},
            {.function = "CloseHandle", .names = kProfile, .ending = good}} +
      AssociationRules(kProfile, good, profileFailed);
  for (const bool isGamma : {true, false}) {
    const std::wstring& path = isGamma ? gamma : lut;
    const Ending& notRead = isGamma ? gammaNotRead : lutNotRead;
    scene.rules =
        scene.rules +
        Rules{{.function = "CoreKit::GetCanonicalizedFilePath", .names = path, .ending = notRead},
              {.function = "CreateFileA", .names = path, .ending = notRead},
              {.function = "GetFileSizeEx", .names = path, .ending = notRead},
              {.function = "ReadFile", .names = path, .ending = notRead},
              {.function = "CloseHandle", .names = path, .ending = good},
              {.function = isGamma ? "PlatformSetGammaLut" : "PlatformSet3DLut",
               .ending = isGamma ? gammaFailed({L"PlatformSetGammaLut set userGammaLut Failed"
                                                L"(ColorField3DLut::SetDisplayerByUserGammaLut)"})
                                 : lutFailed({L"PlatformSet3DLut set userColorField Failed"
                                              L"(ColorField3DLut::SetDisplayerByUser3DLut)"})}};
  }
  Sweep(scene);
}

// --- Changing ---

// The colours change, and the id. Nothing is rolled back, and nothing that is half made is shown.
TEST_F(FaultSweep_UserModes, EditUserColorField_Colours) {
  Scene scene = UserScene("EditUserColorField", "Yours%2", 2);
  int result = ResultOk;
  scene.prepare = [this] {
    StartMachine();
    const UserDesignInfo mine = Design("Mine%1", 1);
    ASSERT_EQ(library().SaveUserSelfColor(&mine), ResultOk);
  };
  scene.call = [&, this] {
    const UserDesignInfo yours = Design("Yours%2", 2);
    return result = library().EditUserColorField(&yours, "Mine%1");
  };
  scene.oldProfile = L"Mine%1_usr.icc";
  scene.check = [&, this] {
    // The one is in the table or the other: the old one until all files of the new one are there.
    const bool hasOld = library().DeleteUserSelfColor("Mine%1") == ResultOk;
    const bool hasNew = library().DeleteUserSelfColor("Yours%2") == ResultOk;
    EXPECT_NE(hasOld, hasNew);
    if (hasOld) {
      EXPECT_EQ(result, ResultColorFieldError);
      EXPECT_TRUE(IsStored(L"Mine%1"));
      EXPECT_TRUE(Exists(kProfile));
      EXPECT_TRUE(Exists(kUserDir + L"\\3dlut\\Mine%1.bin"));
      EXPECT_TRUE(Exists(kUserDir + L"\\gammalut\\Mine%1.bin"));
    }
  };
  SweepWithoutRules(scene);
}

// The colours stay: the LUT files are renamed, and back again where the profile can't be made.
TEST_F(FaultSweep_UserModes, EditUserColorField_Name) {
  Scene scene = UserScene("EditUserColorField", "Yours%2", 1);
  int result = ResultOk;
  scene.prepare = [this] {
    StartMachine();
    const UserDesignInfo mine = Design("Mine%1", 1);
    ASSERT_EQ(library().SaveUserSelfColor(&mine), ResultOk);
  };
  scene.call = [&, this] {
    const UserDesignInfo yours = Design("Yours%2", 1);
    return result = library().EditUserColorField(&yours, "Mine%1");
  };
  scene.oldProfile = L"Mine%1_usr.icc";
  scene.check = [&, this] {
    const bool hasOld = library().DeleteUserSelfColor("Mine%1") == ResultOk;
    const bool hasNew = library().DeleteUserSelfColor("Yours%2") == ResultOk;
    EXPECT_NE(hasOld, hasNew);
    // The pair of LUT files is the one's or the other's. (Every renaming's failing leaves the pair
    // torn only where the way back fails too.)
    const bool hasOldLuts =
        Exists(kUserDir + L"\\3dlut\\Mine%1.bin") && Exists(kUserDir + L"\\gammalut\\Mine%1.bin");
    EXPECT_EQ(hasOld, hasOldLuts);
    if (hasOld) {
      EXPECT_EQ(result, ResultColorFieldError);
      EXPECT_TRUE(IsStored(L"Mine%1"));
      EXPECT_TRUE(Exists(kProfile));
    }
  };
  SweepWithoutRules(scene);
}

// --- Enabling ---

TEST_F(FaultSweep_UserModes, SetUserColorField) {
  Scene scene = UserScene("SetUserColorField", "Mine%1", 1);
  const auto register_ = [this] {
    UserDesignInfo mine = Design("Mine%1", 1);
    std::string(kProfile.begin(), kProfile.end()).copy(mine.iccPath, 100);
    ASSERT_EQ(library().AddUsrDesignInfo(&mine), ResultOk);
  };
  scene.prepare = [=, this] {  // another process than the one that has made it
    StartMachine();
    const UserDesignInfo mine = Design("Mine%1", 1);
    ASSERT_EQ(library().SaveUserSelfColor(&mine), ResultOk);
    StartProcess(1);
    SetProfile(kOldProfile);
    register_();
  };
  scene.call = [this] { return library().SetUserColorField("Mine%1"); };
  scene.next = {};
  scene.restart = {};
  // A failure puts the old profile back, which is taken away for that first.
  scene.mayLoseProfile = true;
  SweepWithoutRules(scene);
}

TEST_F(FaultSweep_UserModes, SyncSysColorField) {
  Scene scene = UserScene("SyncSysColorField", "Mine%1", 1);
  scene.prepare = [this] {
    StartMachine();
    const UserDesignInfo mine = Design("Mine%1", 1);
    ASSERT_EQ(library().SaveUserSelfColor(&mine), ResultOk);
    notebook().platform = {};
  };
  scene.call = [this] { return library().SyncSysColorField(); };
  scene.next = {};
  scene.restart = {};
  scene.oldProfile = L"Mine%1_usr.icc";
  scene.good.result = USRDESIGN_MODE;
  // A user mode that can't be enabled falls through to the default mode.
  scene.results = {-1, SrgbMode, USRDESIGN_MODE};
  scene.lut = [this] {
    const Shown lut = UserLut(1);
    return lut == Shown::Other && LutOf(virtualnotebook::kSrgbLut) != Shown::Other ? Shown::Old
                                                                                   : lut;
  };
  SweepWithoutRules(scene);
}

TEST_F(FaultSweep_UserModes, SyncCurrentModeIccFile) {
  Scene scene = UserScene("SyncCurrentModeIccFile", "Mine%1", 1);
  scene.prepare = [this] {
    StartMachine();
    const UserDesignInfo mine = Design("Mine%1", 1);
    ASSERT_EQ(library().SaveUserSelfColor(&mine), ResultOk);
    notebook().platform = {};
    SetProfile(L"");
    ASSERT_EQ(library().SetColorFieldCurrentMode(USRDESIGN_MODE), ResultOk);
  };
  scene.call = [this] { return library().SyncCurrentModeIccFile() ? 1 : 0; };
  scene.next = {};
  scene.restart = {};
  scene.oldProfile = L"";
  scene.good = {.result = 1, .gamma = Shown::Nothing, .lut = Shown::Nothing};
  scene.results = {0, 1};
  SweepWithoutRules(scene);
}

// --- The e-book mode ---

// The golden file's LUT on the panel's own, in a file that is changed in place. Three LUTs are good
// ones, and one is a known weakness: what comes of an unread golden file.
TEST_F(FaultSweep_UserModes, SetColorField_Ebook) {
  StartMachine();
  ASSERT_EQ(library().SetColorField(7), ResultOk);
  const std::vector<double> fused = notebook().platform.lut3D;
  const auto file = testsupport::ReadFileBytes(DataFile("EBOOK.bin"));
  StartMachine();
  std::filesystem::remove(files_.goldenFile);
  ASSERT_EQ(library().SetColorField(7), ResultOk);
  const std::vector<double> ofNoGolden = notebook().platform.lut3D;
  virtualnotebook::InstallMachine(Machine());
  ASSERT_NE(fused, ofNoGolden);

  Scene scene;
  scene.name = "SetColorField";
  scene.prepare = [this] { StartMachine(); };
  scene.restart = [this] { StartProcess(1); };
  scene.call = [this] { return library().SetColorField(7); };
  scene.oldProfile = kOldProfile;
  scene.newProfile = L"NVX-P3.icc";
  scene.gamma = [this] { return GammaLut(); };
  scene.lut = [&, this] {
    const std::vector<double>& lut = notebook().platform.lut3D;
    const Shown plain = LutOf(virtualnotebook::kEbookLut);
    return lut == fused || lut == ofNoGolden ? Shown::New
           : plain == Shown::New             ? Shown::Old  // not fused
                                             : plain;
  };
  scene.good.gamma = Shown::Nothing;
  SweepWithoutRules(scene);

  // A write that fails leaves a file that the next process makes good.
  for (unsigned n = 1; n <= 3; ++n) {
    for (const FaultKind& kind : FaultKindsOf("WriteFile")) {
      SCOPED_TRACE(n);
      StartMachine();
      notebook().FailCall("WriteFile", n, kind.result, kind.lastError);
      library().SetColorField(7);
      notebook().ClearFaults();
      StartProcess(1);
      EXPECT_EQ(library().SetColorField(7), ResultOk);
      EXPECT_EQ(notebook().platform.lut3D, fused);
      EXPECT_EQ(testsupport::ReadFileBytes(DataFile("EBOOK.bin")), file);
    }
  }
}

}  // namespace
}  // namespace faults
