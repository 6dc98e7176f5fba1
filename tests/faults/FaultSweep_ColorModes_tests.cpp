// A fault at every call of the exports that switch preset colour modes and keep them in step with
// the system. Each ending is what the description of the failing step says, written down here.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "faults/ColorModeSweep.h"
#include "support/Registry.h"

namespace faults {
namespace {

constexpr unsigned kWayOf3DLuts = 1;
constexpr unsigned kWayOfMatrix = 2;
constexpr unsigned kWayOfGammaAnd3DLuts = 3;
constexpr wchar_t kGammaFile[] = L"\\Gamma.bin";
constexpr wchar_t kP3File[] = L"\\P3.bin";

class FaultSweep_ColorModes : public ColorModeSweep {
 protected:
  // --- SetColorField(P3Mode) ---

  Scene SetScene(unsigned way) {
    Scene scene;
    scene.name = "SetColorField";
    scene.prepare = [this, way] {
      RemoveTraces();
      StartProcess(way);
      SetProfile(kOldProfile);
    };
    scene.restart = [this, way] { StartProcess(way); };
    scene.call = [this] { return library().SetColorField(P3Mode); };
    scene.oldProfile = kOldProfile;
    scene.newProfile = L"NVX-P3.icc";
    scene.gamma = [this] { return GammaLut(); };
    scene.lut = [this] { return LutOf(virtualnotebook::kP3Lut); };
    if (way != kWayOfGammaAnd3DLuts) {
      scene.good.gamma = Shown::Nothing;
    }
    if (way == kWayOfMatrix) {
      scene.good.lut = Shown::Nothing;
    }
    scene.rules =
        MonitorRules(scene.good, ProfileFailed({.result = ResultFailed, .errors = {}}, true)) +
        PresetProfileRules(files_.Profile(virtualnotebook::kP3Lut), scene.good,
                           [](Ending ending) { return ProfileFailed(ending); });
    return scene;
  }

  // The profile's half failed: the output's is not tried.
  static Ending ProfileFailed(Ending ending, bool ofQuery = false) {
    const std::wstring result = std::to_wstring(ending.result);
    ending.errors.push_back(ofQuery ? L"GetDefaultIccFile Failed, ret is" + result +
                                          L"currentIccFileName:(ColorFieldApi::SetColorField)"
                                    : L"SetOsIccFile Failed, ret is" + result +
                                          L"(ColorFieldApi::SetColorField)");
    ending.profile = Shown::Old;
    ending.gamma = ending.lut = Shown::Nothing;
    return ending;
  }

  // The output's half failed: the profile is put back.
  static Ending OutputFailed(int result, std::vector<std::wstring> errors,
                             Shown gamma = Shown::Nothing) {
    const std::wstring number = std::to_wstring(result);
    errors.push_back(L"Set Color Filed Failed, ret is " + number +
                     L"(ColorFieldApi::EnableColorFieldMode)");
    errors.push_back(L"EnableColorFieldMode error,ret is :" + number +
                     L"(ColorFieldApi::SetColorField)");
    return {.result = result,
            .errors = errors,
            .profile = Shown::Old,
            .gamma = gamma,
            .lut = Shown::Nothing};
  }
  static Ending GammaFailed(std::vector<std::wstring> errors) {
    errors.push_back(
        L"SetDisplayerByGammalut Failed, mode is 2(ColorFieldApi::EnableColorFieldByGamma)");
    return OutputFailed(ResultColorFieldError, errors);
  }
  static Ending LutFailed(std::vector<std::wstring> errors, unsigned way) {
    errors.push_back(
        std::wstring(L"SetDisplayerBy3DLut Failed, mode is 2(ColorFieldApi::") +
        (way == kWayOf3DLuts ? L"EnableColorFieldByDriver)" : L"EnableColorFieldByGamma)"));
    return OutputFailed(ResultColorFieldError, errors,
                        way == kWayOf3DLuts ? Shown::Nothing : Shown::New);
  }

  static Rules DisplayTypeRule(const wchar_t* way) {
    return {{.function = "CoreKit::GetDisplayType",
             .ending = OutputFailed(ResultFailed, {std::wstring(L"Display Type not found! mode:2"
                                                                L"(ColorFieldApi::") +
                                                   way + L")"})}};
  }

  // --- The output's blocks ---

  // Rebuilding a bin file. Whatever goes wrong ahead of the file's being there moves the mode to
  // the golden file; what goes wrong afterwards fails.
  static Rules RebuildRules(const std::wstring& file, bool gamma, const Ending& good,
                            const Ending& golden, const std::function<Ending(std::wstring)>& failed,
                            unsigned firstFirmwareCall, const std::wstring& shownPath) {
    const auto moved = [&](std::vector<std::wstring> errors) {
      Ending ending = golden;
      errors.push_back(gamma ? L"UpdateGammaLutBinFile Failed!(ColorField3DLut::IsLcdChangedGamma)"
                             : L"UpdateThreeLutBinFile3D Failed! mode:2"
                               L"(ColorField3DLut::IsLcdChanged)");
      ending.errors = errors;
      return ending;
    };
    const std::wstring source = gamma ? L"(ColorField3DLut::GetSourceDataBlockGamma)"
                                      : L"(ColorField3DLut::GetSourceDataBlock)";
    const std::wstring notCreated = gamma ? L"CreateLutDataFileGamma Failed!"
                                            L"(ColorField3DLut::UpdateGammaLutBinFile)"
                                          : L"CreateLutDataFile3D Failed! mode:2"
                                            L"(ColorField3DLut::UpdateThreeLutBinFile3D)";
    const std::wstring create = gamma ? L"(ColorField3DLut::CreateLutDataFileGamma)"
                                      : L"(ColorField3DLut::CreateLutDataFile3D)";
    const Ending notRead = moved({L"ReadBiosLutDataBlock Failed!" + source});
    const unsigned size = firstFirmwareCall;
    const unsigned read = size + 1;
    return {{.function = "_access", .names = file, .ending = good},
            // A table of nothing, of too little for its reading, and of more than there is.
            {.function = "GetSystemFirmwareTable", .n = size, .result = 0, .ending = notRead},
            {.function = "GetSystemFirmwareTable", .n = size, .result = 60, .ending = notRead},
            {.function = "GetSystemFirmwareTable", .n = size, .result = 131124, .ending = good},
            {.function = "GetSystemFirmwareTable",
             .n = size,
             .result = 131125,
             .ending = moved({L"Firmware Table bufferSize over max size!bufferSize:131125"
                              L"(ColorField3DLut::GetBiosLutDataBlockSize)",
                              L"GetBiosLutDataBlockSize Failed!" + source})},
            {.function = "GetSystemFirmwareTable",
             .n = read,
             .result = 60,
             .ending = moved({std::wstring(L"biosControlHeader Parse Failed!") +
                              (gamma ? L"(ColorField3DLut::GetOneLutDatGamma)"
                                     : L"(ColorField3DLut::GetOneLutDat3D)")})},
            {.function = "GetSystemFirmwareTable", .n = read, .ending = notRead},
            {.function = "CoreKit::GetCanonicalizedFilePath",
             .names = file,
             .nth = 1,
             .ending = moved({L"lutFileTable error" + create, notCreated})},
            {.function = "CreateFileA",
             .names = file,
             .alsoNames = kWriting,
             .ending = moved({(gamma ? L"Open Gamma LUT Data File Failed! fileName:"
                                     : L"Open 3D LUT Data File Failed! fileName:") +
                                  shownPath + create,
                              notCreated})},
            // The reader finds that the file is short.
            {.function = "WriteFile",
             .names = file,
             .ending = failed(L"3D LUT Data File Len Error! fileName:" + shownPath)},
            {.function = "CloseHandle", .names = file, .ending = good},
            {.function = "CoreKit::EnableFileUsersPriviledge", .names = file, .ending = good},
            {.function = "CoreKit::GetCanonicalizedFilePath",
             .names = file,
             .nth = 2,
             .ending = failed(L"Open 3D LUT Data File Failed! fileName:")},
            {.function = "CreateFileA",
             .names = file,
             .alsoNames = kReading,
             .ending = failed(L"Open 3D LUT Data File Failed! fileName:" + shownPath)},
            {.function = "GetFileSizeEx",
             .names = file,
             .ending = failed(L"3D LUT Data File Len Error! fileName:" + shownPath)},
            {.function = "ReadFile",
             .names = file,
             .ending = failed(L"3D LUT Data File Len Error! fileName:" + shownPath)}};
  }

  static std::wstring PathOf(const std::wstring& file) {
    return L"C:\\ProgramData\\Comms\\NxVelora" + file;
  }

  static std::function<Ending(std::wstring)> GammaNotRead() {
    return [](const std::wstring& error) {
      return GammaFailed(
          {error + L"(ColorField3DLut::Read3DLutDataFormFile)",
           L"ReadGammaLutDataFile Failed!(ColorField3DLut::SyncGammaLutDataTable)",
           L"SyncGammaLutDataTable Failed(ColorField3DLut::SetDisplayerByGammaLut)"});
    };
  }
  static std::function<Ending(std::wstring)> LutNotRead(unsigned way) {
    return [way](const std::wstring& error) {
      return LutFailed({error + L"(ColorField3DLut::Read3DLutDataFormFile)",
                        L"ReadLutDataFile Failed! mode:2(ColorField3DLut::Sync3DLutDataTable)",
                        L"Sync3DLutDataTable Failed(ColorField3DLut::SetDisplayerBy3DLut)"},
                       way);
    };
  }

  template <typename Failed>
  static Rules PlatformRules(const std::string& function, const Failed& failed) {
    Rules rules;
    for (const FaultKind& kind : FaultKindsOf(function)) {
      const std::wstring number = std::to_wstring(static_cast<int>(kind.result));
      rules.push_back({.function = function, .result = kind.result, .ending = failed(number)});
    }
    return rules;
  }
  static Rules PlatformGammaRules() {
    return PlatformRules("PlatformSetGammaLut", [](const std::wstring& number) {
      return GammaFailed({L"PlatformSetGammaLut Failed, ret is " + number +
                          L"(ColorField3DLut::SetDisplayerByGammaLut)"});
    });
  }
  static Rules Platform3DRules(unsigned way) {
    return PlatformRules("PlatformSet3DLut", [way](const std::wstring& number) {
      return LutFailed({L"PlatformSet3DLut Failed, ret is " + number +
                        L"(ColorField3DLut::SetDisplayerBy3DLut)"},
                       way);
    });
  }
};

// All from nothing: profile, gamma LUT and 3D LUT.
TEST_F(FaultSweep_ColorModes, SetColorField_ByGammaAnd3DLut) {
  Scene scene = SetScene(kWayOfGammaAnd3DLuts);
  Ending goldenGamma = scene.good;
  goldenGamma.gamma = Shown::Golden;
  Ending goldenLut = scene.good;
  goldenLut.lut = Shown::Golden;
  Ending golden = goldenGamma;
  golden.lut = Shown::Golden;
  // The EDID is read anew for the 3D LUT; a serial that was read wrongly stays.
  Ending unknown = goldenGamma;
  unknown.errors = {L"Get LCD EDID Data error.(ColorField3DLut::IsLcdChangedGamma)"};
  scene.rules = scene.rules + DisplayTypeRule(L"EnableColorFieldByGamma") +
                EdidRules(scene.good, unknown, golden) +
                RebuildRules(kGammaFile, true, scene.good, goldenGamma, GammaNotRead(), 1,
                             PathOf(kGammaFile)) +
                Rules{{.function = "RegOpenKeyW", .names = L"P3Mode", .ending = scene.good}} +
                PlatformGammaRules() +
                RebuildRules(kP3File, false, scene.good, goldenLut,
                             LutNotRead(kWayOfGammaAnd3DLuts), 3, PathOf(kP3File)) +
                Platform3DRules(kWayOfGammaAnd3DLuts);
  Sweep(scene);
}

// The bin files are there, from another process.
TEST_F(FaultSweep_ColorModes, SetColorField_WithBinFiles) {
  Scene scene = SetScene(kWayOfGammaAnd3DLuts);
  scene.prepare();
  ASSERT_EQ(scene.call(), ResultOk);
  const auto gamma = testsupport::ReadFileBytes(DataFile("Gamma.bin"));
  const auto p3 = testsupport::ReadFileBytes(DataFile("P3.bin"));
  const auto prepare = scene.prepare;
  scene.prepare = [&] {
    prepare();
    testsupport::WriteFileBytes(DataFile("Gamma.bin"), gamma);
    testsupport::WriteFileBytes(DataFile("P3.bin"), p3);
  };
  // Whatever happens, the files are whole at the end.
  scene.check = [&] {
    EXPECT_EQ(testsupport::ReadFileBytes(DataFile("Gamma.bin")), gamma);
    EXPECT_EQ(testsupport::ReadFileBytes(DataFile("P3.bin")), p3);
  };
  Ending unknown = scene.good;
  unknown.gamma = Shown::Golden;
  unknown.errors = {L"Get LCD EDID Data error.(ColorField3DLut::IsLcdChangedGamma)"};
  Ending golden = scene.good;
  golden.gamma = golden.lut = Shown::Golden;
  scene.rules = scene.rules + DisplayTypeRule(L"EnableColorFieldByGamma") +
                EdidRules(scene.good, unknown, golden);
  for (const bool isGamma : {true, false}) {
    const std::wstring file = isGamma ? kGammaFile : kP3File;
    const auto notRead = isGamma ? GammaNotRead() : LutNotRead(kWayOfGammaAnd3DLuts);
    const std::wstring path = PathOf(file);
    // A file that can't be tested is rebuilt; one that can't be read afterwards fails.
    scene.rules = scene.rules +
                  Rules{{.function = "_access", .names = file, .ending = scene.good},
                        {.function = "CoreKit::GetCanonicalizedFilePath",
                         .names = file,
                         .nth = 1,
                         .ending = scene.good},
                        {.function = "CoreKit::GetCanonicalizedFilePath",
                         .names = file,
                         .nth = 2,
                         .ending = notRead(L"Open 3D LUT Data File Failed! fileName:")},
                        {.function = "CreateFileA", .names = file, .nth = 1, .ending = scene.good},
                        {.function = "CreateFileA",
                         .names = file,
                         .nth = 2,
                         .ending = notRead(L"Open 3D LUT Data File Failed! fileName:" + path)}};
    // The four files' accesses are told apart by their number: profile, digest, digest, gamma,
    // gamma, P3, P3.
    const unsigned size = isGamma ? 2 : 4;
    const unsigned read = isGamma ? 4 : 6;
    scene.rules =
        scene.rules +
        Rules{{.function = "GetFileSizeEx", .names = file, .n = size, .ending = scene.good},
              {.function = "GetFileSizeEx",
               .names = file,
               .ending = notRead(L"3D LUT Data File Len Error! fileName:" + path)},
              {.function = "ReadFile", .names = file, .n = read, .ending = scene.good},
              {.function = "ReadFile",
               .names = file,
               .ending = notRead(L"3D LUT Data File Len Error! fileName:" + path)},
              {.function = "CloseHandle", .names = file, .ending = scene.good}};
  }
  scene.rules = scene.rules +
                Rules{{.function = "RegOpenKeyW", .names = L"P3Mode", .ending = scene.good}} +
                PlatformGammaRules() + Platform3DRules(kWayOfGammaAnd3DLuts);
  Sweep(scene);
}

// The panel is not the factory's: the golden file is the last source.
TEST_F(FaultSweep_ColorModes, SetColorField_GoldenFile) {
  Scene scene = SetScene(kWayOf3DLuts);
  const auto replace = [this] {  // the firmware's blocks are of another panel
    virtualnotebook::PanelDescription other = Machine().panel;
    other.serial = {9, 9, 9, 9};
    static const auto table = MakeMachine(other).firmwareTable;
    notebook().firmwareTable = table;
  };
  const auto prepare = scene.prepare;
  scene.prepare = [=] {
    prepare();
    replace();
  };
  scene.restart = [=, this] {
    StartProcess(kWayOf3DLuts);
    replace();
  };
  scene.good.lut = Shown::Golden;
  const auto failed = [](std::vector<std::wstring> errors) {
    errors.push_back(
        L"UpdateThreeLutBinFile3D Failed! mode:2(ColorField3DLut::Sync3DLutDataTable)");
    errors.push_back(L"Sync3DLutDataTable Failed(ColorField3DLut::SetDisplayerBy3DLut)");
    return LutFailed(errors, kWayOf3DLuts);
  };
  const std::wstring goldenFile = L"NxVelora\\Golden.bin";
  const std::wstring goldenPath = L"C:\\Program Files\\Norvex\\NxVelora\\Golden.bin";
  const std::wstring binFile = L"\\GoldenP3.bin";
  const auto goldenNotRead = [&](const std::wstring& error) {
    return failed({error + L"(ColorField3DLut::Read3DLutDataFormFile)"});
  };
  const std::wstring notCreated =
      L"CreateLutDataFile3D Failed! mode:2(ColorField3DLut::UpdateThreeLutBinFile3D)";
  const auto notRead = LutNotRead(kWayOf3DLuts);
  // Without the file in its first place there is none.
  Ending noGolden = failed({});
  scene.rules = SetScene(kWayOf3DLuts).rules + DisplayTypeRule(L"EnableColorFieldByDriver");
  for (Rule& rule : scene.rules) {
    if (rule.ending.lut == Shown::New) {
      rule.ending.lut = Shown::Golden;
    }
  }
  scene.rules =
      scene.rules + EdidRules(scene.good, scene.good, scene.good) +
      // The file from the firmware is of no use to this panel, whatever becomes of it.
      Rules{
          {.function = "_access", .names = kP3File, .ending = scene.good},
          {.function = "GetSystemFirmwareTable", .ending = scene.good},
          {.function = "CoreKit::GetCanonicalizedFilePath", .names = kP3File, .ending = scene.good},
          {.function = "CreateFileA", .names = kP3File, .ending = scene.good},
          {.function = "WriteFile", .names = kP3File, .ending = scene.good},
          {.function = "CloseHandle", .names = kP3File, .ending = scene.good},
          {.function = "CoreKit::EnableFileUsersPriviledge", .ending = scene.good},

          {.function = "_access", .names = binFile, .ending = scene.good},
          {.function = "_access", .names = goldenFile, .ending = noGolden},
          {.function = "CoreKit::GetCanonicalizedFilePath",
           .names = goldenFile,
           .ending = goldenNotRead(L"Open 3D LUT Data File Failed! fileName:")},
          {.function = "CreateFileA",
           .names = goldenFile,
           .ending = goldenNotRead(L"Open 3D LUT Data File Failed! fileName:" + goldenPath)},
          {.function = "GetFileSizeEx",
           .names = goldenFile,
           .ending = goldenNotRead(L"3D LUT Data File Len Error! fileName:" + goldenPath)},
          {.function = "ReadFile",
           .names = goldenFile,
           .ending = goldenNotRead(L"3D LUT Data File Len Error! fileName:" + goldenPath)},
          {.function = "CloseHandle", .names = goldenFile, .ending = scene.good},
          {.function = "CoreKit::GetCanonicalizedFilePath",
           .names = binFile,
           .nth = 1,
           .ending =
               failed({L"lutFileTable error(ColorField3DLut::CreateLutDataFile3D)", notCreated})},
          {.function = "CreateFileA",
           .names = binFile,
           .alsoNames = kWriting,
           .ending = failed({L"Open 3D LUT Data File Failed! fileName:" + PathOf(binFile) +
                                 L"(ColorField3DLut::CreateLutDataFile3D)",
                             notCreated})},
          {.function = "WriteFile",
           .names = binFile,
           .ending = notRead(L"3D LUT Data File Len Error! fileName:" + PathOf(binFile))},
          {.function = "CloseHandle", .names = binFile, .ending = scene.good},
          {.function = "CoreKit::GetCanonicalizedFilePath",
           .names = binFile,
           .nth = 2,
           .ending = notRead(L"Open 3D LUT Data File Failed! fileName:")},
          {.function = "CreateFileA",
           .names = binFile,
           .alsoNames = kReading,
           .ending = notRead(L"Open 3D LUT Data File Failed! fileName:" + PathOf(binFile))},
          {.function = "GetFileSizeEx",
           .names = binFile,
           .ending = notRead(L"3D LUT Data File Len Error! fileName:" + PathOf(binFile))},
          {.function = "ReadFile",
           .names = binFile,
           .ending = notRead(L"3D LUT Data File Len Error! fileName:" + PathOf(binFile))}} +
      Platform3DRules(kWayOf3DLuts);
  Sweep(scene);
}

TEST_F(FaultSweep_ColorModes, SetColorField_ByMatrix) {
  Scene scene = SetScene(kWayOfMatrix);
  scene.results = {0, 1, 7, -1, 15, 16, 17};  // the platform's own come through
  scene.rules = scene.rules + DisplayTypeRule(L"EnableColorFieldByPcc") +
                PlatformRules("PlatformSetPccMatrixInfo", [](const std::wstring& number) {
                  return OutputFailed(std::stoi(number), {});
                });
  const auto matrix = [this] { return notebook().platform.pccMatrix.has_value(); };
  Sweep(scene);
  EXPECT_TRUE(matrix());
}

// Mode 0 takes the LUT out; there is no profile to change.
TEST_F(FaultSweep_ColorModes, SetColorField_Mode0) {
  Scene scene = SetScene(kWayOf3DLuts);
  scene.call = [this] { return library().SetColorField(0); };
  scene.newProfile = kOldProfile;
  scene.oldProfile = L"none";
  scene.good.lut = Shown::Nothing;
  const Ending noMonitor = {.result = ResultFailed, .gamma = Shown::Nothing, .lut = Shown::Nothing};
  scene.rules = MonitorRules(scene.good, noMonitor) +
                Rules{{.function = "CoreKit::StringToWString", .ending = scene.good},
                      {.function = "CoreKit::GetDisplayType", .ending = noMonitor}} +
                PlatformRules("PlatformReset3DLut", [&](const std::wstring& number) {
                  return Ending{.result = ResultColorFieldError,
                                .errors = {L"PlatformSet3DLut Failed, ret is" + number +
                                           L"(ColorField3DLut::SetDisplayerBy3DLut)"},
                                .gamma = Shown::Nothing,
                                .lut = Shown::Nothing};
                });
  // Putting the profile back, which is there.
  Sweep(scene);
}

// --- In step with the system ---

TEST_F(FaultSweep_ColorModes, SyncSysColorField) {
  Scene scene;
  scene.name = "SyncSysColorField";
  const auto start = [this] {
    StartProcess(kWayOf3DLuts);
    SetProfile(L"NVX-P3.icc");
  };
  scene.prepare = [=] {
    RemoveTraces();
    start();
    testsupport::WriteValue(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Norvex\\Velora\\ColorField",
                            L"CurrentMode", testsupport::DwordValue(SrgbMode));
  };
  scene.restart = start;
  scene.call = [this] { return library().SyncSysColorField(); };
  scene.oldProfile = L"none";
  scene.newProfile = L"NVX-P3.icc";
  scene.gamma = [this] { return GammaLut(); };
  scene.lut = [this] { return LutOf(virtualnotebook::kP3Lut); };
  scene.good = {.result = P3Mode, .gamma = Shown::Nothing};
  scene.results = {-1, SrgbMode, P3Mode};
  Ending golden = scene.good;
  golden.lut = Shown::Golden;
  Ending unknown = golden;
  unknown.errors = {L"Get LCD EDID Data error.(ColorField3DLut::IsLcdChanged)"};
  const Ending noMonitor = {.result = -1,
                            .errors = {L"GetDefaultIccFile Failed, ret is1currentIccFileName:"
                                       L"(ColorFieldApi::SyncSysColorField)"},
                            .gamma = Shown::Nothing,
                            .lut = Shown::Nothing};
  // Nothing is there to learn from: the stored mode, and nothing is touched.
  const Ending stored = {.result = SrgbMode, .gamma = Shown::Nothing, .lut = Shown::Nothing};
  const auto notEnabled = [](int result, std::vector<std::wstring> errors) {
    const std::wstring number = std::to_wstring(result);
    if (result == ResultColorFieldError) {
      errors.push_back(
          L"SetDisplayerBy3DLut Failed, mode is 2(ColorFieldApi::EnableColorFieldByDriver)");
    }
    errors.push_back(L"Set Color Filed Failed, ret is " + number +
                     L"(ColorFieldApi::EnableColorFieldMode)");
    errors.push_back(L"EnableColorFieldMode:2 failed,ret is " + number +
                     L"(ColorFieldApi::SyncSysColorField)");
    return Ending{.result = -1, .errors = errors, .gamma = Shown::Nothing, .lut = Shown::Nothing};
  };
  const auto lutNotRead = [&](const std::wstring& error) {
    return notEnabled(ResultColorFieldError,
                      {error + L"(ColorField3DLut::Read3DLutDataFormFile)",
                       L"ReadLutDataFile Failed! mode:2(ColorField3DLut::Sync3DLutDataTable)",
                       L"Sync3DLutDataTable Failed(ColorField3DLut::SetDisplayerBy3DLut)"});
  };
  scene.rules =
      Rules{{.function = "WcsGetDefaultColorProfile",
             .lastError = ERROR_FILE_NOT_FOUND,
             .ending = stored},
            // An empty name is in every path: the first mode, which is the stored one.
            {.function = "CoreKit::WStringToString",
             .names = L"NVX-P3.icc",
             .nth = 1,
             .ending = stored},
            {.function = "CoreKit::WStringToString",
             .names = L"NVX-P3.icc",
             .nth = 2,
             .ending = scene.good},
            {.function = "RegOpenKeyW", .ending = scene.good},
            {.function = "RegQueryValueExW", .ending = scene.good},
            {.function = "RegCloseKey", .names = L"\\ColorField", .ending = scene.good},
            {.function = "CoreKit::GetDisplayType",
             .ending = notEnabled(ResultFailed, {L"Display Type not found! mode:2"
                                                 L"(ColorFieldApi::EnableColorFieldByDriver)"})}} +
      MonitorRules(scene.good, noMonitor) + EdidRules(scene.good, unknown, golden) +
      RebuildRules(kP3File, false, scene.good, golden, lutNotRead, 1, PathOf(kP3File)) +
      PlatformRules("PlatformSet3DLut", [&](const std::wstring& number) {
        return notEnabled(ResultColorFieldError, {L"PlatformSet3DLut Failed, ret is " + number +
                                                  L"(ColorField3DLut::SetDisplayerBy3DLut)"});
      });
  Sweep(scene);
}

TEST_F(FaultSweep_ColorModes, SyncCurrentModeIccFile) {
  Scene scene;
  scene.name = "SyncCurrentModeIccFile";
  const auto start = [this] {
    StartProcess(kWayOf3DLuts);
    SetProfile(L"");
  };
  scene.prepare = [=] {
    RemoveTraces();
    start();
    testsupport::WriteValue(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Norvex\\Velora\\ColorField",
                            L"CurrentMode", testsupport::DwordValue(P3Mode));
  };
  scene.restart = start;
  scene.call = [this] { return library().SyncCurrentModeIccFile() ? 1 : 0; };
  scene.oldProfile = L"";
  scene.newProfile = L"NVX-P3.icc";
  scene.gamma = [this] { return GammaLut(); };
  scene.lut = [this] { return LutOf(virtualnotebook::kP3Lut); };
  scene.good = {.result = 1, .gamma = Shown::Nothing, .lut = Shown::Nothing};
  scene.results = {0, 1};
  // It can't be told from success.
  Ending noMonitor = scene.good;
  noMonitor.profile = Shown::Old;
  const auto whole = [](Ending ending) {
    ending.result = 0;
    ending.errors.push_back(L"SetOsIccFileWithCheck Failed(ColorFieldApi::SyncCurrentModeIccFile)");
    ending.profile = Shown::Old;
    ending.gamma = ending.lut = Shown::Nothing;
    return ending;
  };
  const Ending noMode = {
      .result = 0,
      .errors = {L"modeIccVec_ is not initialized.(ColorFieldApi::FindIccFilePathByMode)",
                 L"Can not find icc by mode(ColorFieldApi::SyncCurrentModeIccFile)"},
      .profile = Shown::Old,
      .gamma = Shown::Nothing,
      .lut = Shown::Nothing};
  scene.rules = Rules{{.function = "RegOpenKeyW", .ending = noMode},
                      {.function = "RegQueryValueExW", .ending = noMode},
                      {.function = "RegCloseKey", .ending = scene.good}} +
                MonitorRules(scene.good, noMonitor) +
                PresetProfileRules(files_.Profile(virtualnotebook::kP3Lut), scene.good, whole);
  Sweep(scene);
}

// --- Resetting ---

TEST_F(FaultSweep_ColorModes, ResetColorField) {
  for (const uint32_t setType : {1U, 2U}) {
    Scene scene;
    scene.name = "ResetColorField";
    scene.prepare = [=, this] {
      RemoveTraces();
      StartProcess(kWayOf3DLuts);
      SetProfile(kOldProfile);
      library().SetColorFieldResetMode(P3Mode);
      library().SetColorFieldSetType(static_cast<int>(setType));
    };
    scene.call = [this] { return library().ResetColorField(); };
    scene.oldProfile = L"none";
    scene.newProfile = kOldProfile;
    scene.gamma = [this] { return GammaLut(); };
    scene.lut = [this] { return LutOf(virtualnotebook::kP3Lut); };
    scene.good = {.gamma = Shown::Nothing, .lut = Shown::Nothing};
    scene.results = {0, 1, 7, -1, ResultNotSet};
    Ending notSet = scene.good;
    notSet.result = ResultNotSet;
    scene.rules =
        // Without a mode it is 0, which is as good here; without a way there is nothing to do.
        Rules{{.function = "RegOpenKeyW", .n = 1, .ending = scene.good},
              {.function = "RegQueryValueExW", .n = 1, .ending = scene.good},
              {.function = "RegOpenKeyW", .n = 2, .ending = notSet},
              {.function = "RegQueryValueExW", .n = 2, .ending = notSet},
              {.function = "RegCloseKey", .ending = scene.good}} +
        PlatformRules(setType == 1 ? "PlatformReset3DLut" : "PlatformResetPccMatrixInfo",
                      [&](const std::wstring& number) {
                        Ending ending = scene.good;
                        ending.result = std::stoi(number);
                        return ending;
                      });
    Sweep(scene);
  }
}

// --- Fine tuning at once ---

TEST_F(FaultSweep_ColorModes, WhitePointFineTue) {
  Scene scene;
  scene.name = "WhitePointFineTue";
  scene.prepare = [this] {
    RemoveTraces();
    StartProcess(kWayOfGammaAnd3DLuts);
    SetProfile(kOldProfile);
  };
  scene.restart = [this] { StartProcess(kWayOfGammaAnd3DLuts); };
  // A gain out of its range resets the stored ones and acts as 1.
  scene.call = [this] {
    WhitePointFineTueInfo info = {.id = "", .mode = P3Mode, .r = 0.5, .g = 1, .b = 1};
    const int result = library().WhitePointFineTue(&info);
    if (result != ResultOk && result != ResultFailed && notebook().platform.gammaLut.empty()) {
      EXPECT_EQ(notebook().CountCalls("PlatformSetGammaLut"), 1u) << "the platform's own result";
    }
    return result;
  };
  scene.oldProfile = L"none";
  scene.newProfile = kOldProfile;
  scene.gamma = [this] { return GammaLut(); };
  scene.lut = [this] { return LutOf(virtualnotebook::kP3Lut); };
  scene.good.lut = Shown::Nothing;
  scene.results = {0, 1, 7, -1};
  const auto failed = [](int result, std::vector<std::wstring> errors) {
    errors.push_back(L"WhitePoint fine tue error, mode: 2, id: (ColorFieldApi::WhitePointFineTue)");
    return Ending{
        .result = result, .errors = errors, .gamma = Shown::Nothing, .lut = Shown::Nothing};
  };
  const auto notRead = [&](const std::wstring& error) {
    return failed(ResultFailed,
                  {error + L"(ColorField3DLut::Read3DLutDataFormFile)",
                   L"ReadGammaLutDataFile Failed!(ColorField3DLut::SyncGammaLutDataTable)",
                   L"SyncGammaLutDataTable Failed(ColorField3DLut::FindGammalutByMode)",
                   L"Gammalut in is null, fusion fail(ColorField3DLut::FusionGammaLut)",
                   L"Fusion gammalut data fail, mode: 2, id : "
                   L"(ColorField3DLut::EditGammaLutByWhitePoint)"});
  };
  Ending golden = scene.good;
  golden.gamma = Shown::Golden;
  Ending unknown = golden;
  unknown.errors = {L"Get LCD EDID Data error.(ColorField3DLut::IsLcdChangedGamma)"};
  scene.rules =
      Rules{{.function = "EnumDisplayDevicesW", .ending = scene.good}} +
      EdidRules(scene.good, unknown, golden) +
      RebuildRules(kGammaFile, true, scene.good, golden, notRead, 1, PathOf(kGammaFile)) +
      // The store's repair is not looked at.
      Rules{{.function = "CoreKit::StringToWString", .ending = scene.good},
            {.function = "RegCreateKeyExW", .ending = scene.good},
            {.function = "RegSetValueExW", .ending = scene.good},
            {.function = "RegCloseKey", .ending = scene.good}} +
      PlatformRules("PlatformSetGammaLut", [&](const std::wstring& number) {
        return failed(std::stoi(number), {L"PlatformSetGammaLut fail, mode: 2, id : "
                                          L"(ColorField3DLut::EditGammaLutByWhitePoint)"});
      });
  Sweep(scene);
}

}  // namespace
}  // namespace faults
