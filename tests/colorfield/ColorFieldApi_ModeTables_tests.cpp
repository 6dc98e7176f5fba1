#include "ColorFieldTest.h"

using testing::ElementsAre;

namespace {

class ColorFieldApiModeTables : public ColorFieldTest {
 protected:
  // A file path of exactly this many characters, in the test's directory.
  std::string PathOf(size_t length) const {
    const std::string start = directory.Path();
    return start + std::string(length - start.size(), 'd');
  }

  // Whether the profile passes the check against the digest path that was given to Init.
  ResultT CheckAgainstInitPath() {
    const ResultT result = api.SetOsIccFileWithCheck(newPath);
    notebook.ForgetRecords();
    return result;
  }

  std::string PathOfMode(ColorFieldMode mode) {
    std::string path = "before";
    EXPECT_TRUE(api.FindIccFilePathByMode(mode, path));
    return path;
  }
};

// What a check gives once it was passed: there is no target monitor yet.
constexpr ResultT kCheckPassed = ResultColorFieldError;

// --- InitColorFieldInfo ---

TEST_F(ColorFieldApiModeTables, InitColorFieldInfo_Null) {
  EXPECT_EQ(api.InitColorFieldInfo(nullptr), ResultFailed);
  EXPECT_LOG({0,
              L"InitColorFieldInfo input para is NULL."
              L"(ColorFieldApi::InitColorFieldInfo)"});
}

TEST_F(ColorFieldApiModeTables, InitColorFieldInfo_NullLeavesTheTable) {
  AddMode(2, "C:\\P3.icc");
  api.InitColorFieldInfo(nullptr);
  EXPECT_EQ(PathOfMode(2), "C:\\P3.icc");
}

TEST_F(ColorFieldApiModeTables, InitColorFieldInfo_LogsAndPassesThePathsOn) {
  ColorFieldInitInfo info = InitInfo(1, "C:\\digest.bin");
  std::string("C:\\lut\\").copy(info.threeLutBinFilePath, 100);
  std::string("\\Golden.bin").copy(info.goldenFilePath, 100);
  EXPECT_EQ(api.InitColorFieldInfo(&info), ResultOk);
  EXPECT_LOG({0, L"pIccCheckFilePath:C:\\digest.bin(ColorFieldApi::InitColorFieldInfo)"},
             {0,
              L"threeLutBinFilePath:C:\\lut\\"
              L"(ColorField3DLut::InitColorFieldThreeLutBaseInfo)"},
             {0,
              L"goldenFilePath:\\Golden.bin"
              L"(ColorField3DLut::InitColorFieldThreeLutBaseInfo)"});
}

TEST_F(ColorFieldApiModeTables, InitColorFieldInfo_LutEngineFails) {
  const ColorFieldInitInfo info = InitInfo(1, digestPath);
  // The engine turns an exception into its failure; its first line is the second of all.
  notebook.ThrowFrom("LcdLogMessage", 2, "no memory");
  EXPECT_EQ(api.InitColorFieldInfo(&info), ResultFailed);
}

TEST_F(ColorFieldApiModeTables, InitColorFieldInfo_PathOf100Characters) {
  const std::string path = PathOf(100);
  testsupport::WriteFileBytes(path, Digest());
  const ColorFieldInitInfo info = InitInfo(1, path);
  EXPECT_EQ(api.InitColorFieldInfo(&info), ResultOk);
  EXPECT_LOGGED(0, L"pIccCheckFilePath:" + Wide(path) + L"(ColorFieldApi::InitColorFieldInfo)");
  AddMode(2, "C:\\P3.icc");  // so that what follows the field is not zero
  EXPECT_EQ(CheckAgainstInitPath(), kCheckPassed);
}

TEST_F(ColorFieldApiModeTables, InitColorFieldInfo_PathOf101CharactersIsRefused) {
  Init(1);
  AddMode(2, "C:\\P3.icc");
  notebook.ForgetRecords();
  const ColorFieldInitInfo info = InitInfo(1, PathOf(101));
  EXPECT_EQ(api.InitColorFieldInfo(&info), ResultFailed);
  EXPECT_LOG({3,
              L"InitColorFieldInfo pIccCheckFilePath memcpy error."
              L"(ColorFieldApi::InitColorFieldInfo)"});
  // Table emptied, path zeroed.
  std::string path;
  EXPECT_FALSE(api.FindIccFilePathByMode(2, path));
  EXPECT_EQ(CheckAgainstInitPath(), ResultFileNotFound);
}

TEST_F(ColorFieldApiModeTables, InitColorFieldInfo_RefusedStillTakesTheSetType) {
  AddMode(2, "");
  const ColorFieldInitInfo info = InitInfo(2, PathOf(101));
  api.InitColorFieldInfo(&info);
  AddMode(2, "");
  EXPECT_EQ(api.EnableColorFieldMode(2), ResultOk);
  EXPECT_TRUE(notebook.platform.pccMatrix.has_value());
}

TEST_F(ColorFieldApiModeTables, InitColorFieldInfo_EmptyPath) {
  const ColorFieldInitInfo info = InitInfo(1, "");
  EXPECT_EQ(api.InitColorFieldInfo(&info), ResultOk);
  EXPECT_LOGGED(0, L"pIccCheckFilePath:(ColorFieldApi::InitColorFieldInfo)");
  EXPECT_EQ(CheckAgainstInitPath(), ResultFileNotFound);
}

TEST_F(ColorFieldApiModeTables, InitColorFieldInfo_SecondKeepsUserModesAndTheTailOfTheOldPath) {
  Init(1);
  AddMode(2, "C:\\P3.icc");
  AddUserMode("Mine", "C:\\mine.icc");
  // Shorter by its last nine characters, and the first of all others: the tail makes it whole.
  const ColorFieldInitInfo info = InitInfo(1, digestPath.substr(0, digestPath.size() - 9));
  EXPECT_EQ(api.InitColorFieldInfo(&info), ResultOk);
  EXPECT_EQ(CheckAgainstInitPath(), kCheckPassed);
  std::string path;
  EXPECT_FALSE(api.FindIccFilePathByMode(2, path));
  EXPECT_TRUE(api.FindIccFilePathByModeName("Mine", path));
}

// --- AddColorFieldModeInfo ---

TEST_F(ColorFieldApiModeTables, AddColorFieldModeInfo_Null) {
  EXPECT_EQ(api.AddColorFieldModeInfo(nullptr), ResultFailed);
  EXPECT_LOG({0,
              L"AddColorFieldModeInfo input para is NULL."
              L"(ColorFieldApi::AddColorFieldModeInfo)"});
}

TEST_F(ColorFieldApiModeTables, AddColorFieldModeInfo_TellsTheLutEngineAndLogsTheRow) {
  ColorFieldModeInfo info = ModeInfo(2, "C:\\P3.icc");
  double value = 0.5;
  for (double& element : info.PlatformPccMatrix) element = value++;
  info.gamma = 2.2;
  info.gamut = 2;
  info.temperR = 1;
  info.temperG = 0.98;
  info.temperB = 0.96;
  EXPECT_EQ(api.AddColorFieldModeInfo(&info), ResultOk);
  EXPECT_LOG({0,
              L"Init colorFiledMode info, mode: 2 gamma: 2.2 Temper r g b: 1, 0.98, "
              L"0.96 gamut: 2(ColorField3DLut::InitColorFieldGammaInfo)"},
             {0,
              L"mode:2,iccpath:C:\\P3.iccPlatformPccMatrix: "
              L"0.5 1.5 2.5 3.5 4.5 5.5 6.5 7.5 8.5"
              L"(ColorFieldApi::AddColorFieldModeInfo)"});
  EXPECT_EQ(PathOfMode(2), "C:\\P3.icc");
}

TEST_F(ColorFieldApiModeTables, AddColorFieldModeInfo_AZeroKeepsTheModeFromTheLutEngine) {
  double ColorFieldModeInfo::*const kFactors[] = {
      &ColorFieldModeInfo::gamma, &ColorFieldModeInfo::temperR, &ColorFieldModeInfo::temperG,
      &ColorFieldModeInfo::temperB};
  for (const auto factor : kFactors) {
    ColorFieldModeInfo info = ModeInfo(2, "C:\\P3.icc");
    info.gamma = info.temperR = info.temperG = info.temperB = 1;
    info.*factor = 0;
    info.gamut = 2;
    notebook.ForgetRecords();
    EXPECT_EQ(api.AddColorFieldModeInfo(&info), ResultOk);
    EXPECT_LOG({0,
                L"mode:2,iccpath:C:\\P3.iccPlatformPccMatrix: "
                L"0 0 0 0 0 0 0 0 0(ColorFieldApi::AddColorFieldModeInfo)"});
  }
  EXPECT_EQ(PathOfMode(2), "C:\\P3.icc");
}

TEST_F(ColorFieldApiModeTables, AddColorFieldModeInfo_GamutZeroIsNoMatter) {
  ColorFieldModeInfo info = ModeInfo(2, "C:\\P3.icc");
  info.gamma = info.temperR = info.temperG = info.temperB = 1;
  EXPECT_EQ(api.AddColorFieldModeInfo(&info), ResultOk);
  EXPECT_EQ(notebook.log.size(), 2u);
}

TEST_F(ColorFieldApiModeTables, AddColorFieldModeInfo_LutEngineFailureIsNoMatter) {
  ColorFieldModeInfo info = ModeInfo(2, "C:\\P3.icc");
  info.gamma = info.temperR = info.temperG = info.temperB = 1;
  notebook.ThrowFrom("LcdLogMessage", 1, "no memory");
  EXPECT_EQ(api.AddColorFieldModeInfo(&info), ResultOk);
  EXPECT_EQ(PathOfMode(2), "C:\\P3.icc");
}

TEST_F(ColorFieldApiModeTables, AddColorFieldModeInfo_PathOf100Characters) {
  ColorFieldModeInfo info = ModeInfo(2, PathOf(100));
  EXPECT_EQ(api.AddColorFieldModeInfo(&info), ResultOk);
  EXPECT_EQ(PathOfMode(2), PathOf(100));
}

TEST_F(ColorFieldApiModeTables, AddColorFieldModeInfo_PathOf101CharactersIsRefused) {
  ColorFieldModeInfo info = ModeInfo(2, PathOf(101));
  info.gamma = info.temperR = info.temperG = info.temperB = 1;
  EXPECT_EQ(api.AddColorFieldModeInfo(&info), ResultFailed);
  // What the engine was told stands.
  EXPECT_LOG({0,
              L"Init colorFiledMode info, mode: 2 gamma: 1 Temper r g b: 1, 1, 1 "
              L"gamut: 0(ColorField3DLut::InitColorFieldGammaInfo)"},
             {3,
              L"InitColorFieldInfo memcpy error."
              L"(ColorFieldApi::AddColorFieldModeInfo)"});
  PlatformPccMatrix matrix;
  EXPECT_FALSE(api.FindPccMatrixByMode(2, matrix));
}

TEST_F(ColorFieldApiModeTables,
       AddColorFieldModeInfo_PathOf100CharactersThatRunsIntoTheMatrixIsRefused) {
  ColorFieldModeInfo info = ModeInfo(2, PathOf(100));
  info.PlatformPccMatrix[0] = 0.1;  // its first byte is not zero
  EXPECT_EQ(api.AddColorFieldModeInfo(&info), ResultFailed);
}

TEST_F(ColorFieldApiModeTables, AddColorFieldModeInfo_TheEarlierRowWins) {
  AddMode(2, "C:\\first.icc");
  AddMode(2, "C:\\second.icc");
  EXPECT_EQ(PathOfMode(2), "C:\\first.icc");
}

// --- AddUsrDesignInfo ---

TEST_F(ColorFieldApiModeTables, AddUsrDesignInfo_Null) {
  EXPECT_EQ(api.AddUsrDesignInfo(nullptr), ResultFailed);
  EXPECT_LOG({3,
              L"AddUsrDesignInfo input para is NULL."
              L"(ColorFieldApi::AddUsrDesignInfo)"});
}

TEST_F(ColorFieldApiModeTables, AddUsrDesignInfo_LogsNothing) {
  AddUserMode("Mine", "C:\\mine.icc");
  EXPECT_LOG();
}

// --- FindIccFilePathByMode ---

TEST_F(ColorFieldApiModeTables, FindIccFilePathByMode_NoRowOrEmptyPath) {
  AddMode(2, "");
  AddMode(2, "C:\\second.icc");  // never reached
  notebook.ForgetRecords();
  std::string path = "before";
  EXPECT_FALSE(api.FindIccFilePathByMode(3, path));
  EXPECT_EQ(path, "before");
  EXPECT_FALSE(api.FindIccFilePathByMode(2, path));
  EXPECT_EQ(path, "");
  const testsupport::LogLine line{
      3, L"modeIccVec_ is not initialized.(ColorFieldApi::FindIccFilePathByMode)"};
  EXPECT_LOG(line, line);
}

// --- FindIccFilePathByModeName ---

TEST_F(ColorFieldApiModeTables, FindIccFilePathByModeName_TheFirstOfTheNameCounts) {
  AddUserMode("Mine2", "C:\\mine2.icc");
  AddUserMode("Mine", "C:\\mine.icc");
  AddUserMode("Mine", "C:\\later.icc");
  std::string path;
  EXPECT_TRUE(api.FindIccFilePathByModeName("Mine", path));
  EXPECT_EQ(path, "C:\\mine.icc");
  EXPECT_LOG();
}

TEST_F(ColorFieldApiModeTables, FindIccFilePathByModeName_NoRowOrEmptyPath) {
  AddUserMode("Mine", "");
  std::string path = "before";
  for (const char* name : {"mine", "Min", "Mine2"}) {
    EXPECT_FALSE(api.FindIccFilePathByModeName(name, path)) << name;
    EXPECT_EQ(path, "before");
  }
  EXPECT_FALSE(api.FindIccFilePathByModeName("Mine", path));
  EXPECT_EQ(path, "");
  const testsupport::LogLine line{
      3, L"modeUsrDesignVec_ is not initialized.(ColorFieldApi::FindIccFilePathByModeName)"};
  EXPECT_LOG(line, line, line, line);
}

TEST_F(ColorFieldApiModeTables, FindIccFilePathByModeName_FieldsWithoutTerminator) {
  const std::string name(100, 'n');
  const std::string path = PathOf(100);
  AddUserMode(name, path);
  std::string found;
  EXPECT_TRUE(api.FindIccFilePathByModeName(name, found));
  EXPECT_EQ(found, path);
}

// --- FindUserModeByIcc ---

TEST_F(ColorFieldApiModeTables, FindUserModeByIcc_PathContainsTheName) {
  AddUserMode("Other", "C:\\other.icc");
  AddUserMode("Mine", "C:\\dir\\mine_usr.icc.old");
  std::string id;
  EXPECT_TRUE(api.FindUserModeByIcc(L"mine_usr.icc", id));
  EXPECT_EQ(id, "Mine%1");
  EXPECT_LOG();
}

TEST_F(ColorFieldApiModeTables, FindUserModeByIcc_EmptyNameMatchesTheFirstRow) {
  AddUserMode("First", "");
  AddUserMode("Second", "C:\\second.icc");
  std::string id;
  EXPECT_TRUE(api.FindUserModeByIcc(L"", id));
  EXPECT_EQ(id, "First%1");
}

TEST_F(ColorFieldApiModeTables, FindUserModeByIcc_NotFound) {
  AddUserMode("Mine", "C:\\mine.icc");
  std::string id = "before";
  EXPECT_FALSE(api.FindUserModeByIcc(L"MINE.icc", id));
  EXPECT_EQ(id, "before");
  EXPECT_LOG({1,
              L"Not find user mode by icc, icc name :MINE.icc"
              L"(ColorFieldApi::FindUserModeByIcc)"});
}

// --- FindPccMatrixByMode ---

TEST_F(ColorFieldApiModeTables, FindPccMatrixByMode_FirstRowOfTheMode) {
  ColorFieldModeInfo info = ModeInfo(3, "");
  for (int i = 0; i < 9; ++i) info.PlatformPccMatrix[i] = i + 1;
  api.AddColorFieldModeInfo(&info);
  info.PlatformPccMatrix[0] = 99;
  api.AddColorFieldModeInfo(&info);
  PlatformPccMatrix matrix{};
  EXPECT_TRUE(api.FindPccMatrixByMode(3, matrix));
  EXPECT_THAT(matrix.values, ElementsAre(1, 2, 3, 4, 5, 6, 7, 8, 9));
}

TEST_F(ColorFieldApiModeTables, FindPccMatrixByMode_NoRow) {
  PlatformPccMatrix matrix;
  EXPECT_FALSE(api.FindPccMatrixByMode(5, matrix));
  EXPECT_LOG({3, L"PccMatrix not found! mode:5(ColorFieldApi::FindPccMatrixByMode)"});
}

TEST_F(ColorFieldApiModeTables, GetInstance_IsOne) {
  EXPECT_EQ(&velora::ColorFieldApi::GetInstance(), &velora::ColorFieldApi::GetInstance());
}

}  // namespace
