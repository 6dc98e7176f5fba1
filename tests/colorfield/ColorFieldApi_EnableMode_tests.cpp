#include "ColorFieldTest.h"

using testing::ElementsAre;
using testing::ElementsAreArray;

namespace {

// Most of these switch to mode 0, which takes the 3D LUT out of the display, with a profile: a mode
// that needs no LUT data.
class ColorFieldApiEnableMode : public ColorFieldTest {
 protected:
  // A machine with a profile for mode 0.
  void Prepare(ColorFieldSetType setType = velora::SetType3DLut) {
    Init(setType);
    AddMode(0, newPath);
  }

  std::vector<std::wstring> Associations() const { return notebook.profiles.at(panel); }

  // The parts of the log of a switch, in their order.
  Lines InstallLines() const {
    Lines lines = OpenLine(newFile);
    for (const Lines& part :
         {OpenLine(srgbFile), AssociateLine(newFile), NotOnTheListLine(newFile)}) {
      lines.insert(lines.end(), part.begin(), part.end());
    }
    return lines;
  }
  Lines RestoreLines() const {
    Lines lines = OpenLine(L"VeloraOld.icc");
    for (const Lines& part : {OpenLine(srgbFile), AssociateLine(L"VeloraOld.icc")}) {
      lines.insert(lines.end(), part.begin(), part.end());
    }
    return lines;
  }
  Lines CompareLines() const { return CompareLine(L"VeloraOld.icc", L"VeloraNew.icc"); }
  static Lines SwitchFailedLine(ResultT result) {
    return {{3, L"SetOsIccFile Failed, ret is" + std::to_wstring(result) +
                    L"(ColorFieldApi::SetColorField)"}};
  }
  static Lines EnableFailedLines(ResultT result) {
    return {{3, L"Set Color Filed Failed, ret is " + std::to_wstring(result) +
                    L"(ColorFieldApi::EnableColorFieldMode)"},
            {3, L"EnableColorFieldMode error,ret is :" + std::to_wstring(result) +
                    L"(ColorFieldApi::SetColorField)"}};
  }
  const Lines kEnableLines = {
      {1, L"set colorfield mode is:0(ColorFieldApi::EnableColorFieldMode)"},
      {1, L"SetDisplayer by 3DLut, mode is 0(ColorField3DLut::SetDisplayerBy3DLut)"}};
  const Lines kDoneLine = {{1, L"SetColorField mode is :0,ret is 0(ColorFieldApi::SetColorField)"}};
  // Of InstallIccFile's failures.
  Lines InstallFailedLines(const std::wstring& text) const {
    return {{3, text + newFile + L"(ColorFieldApi::InstallIccFile)"},
            {3, L"InstallIccFile Failed! fileName:" + newFile + L"(ColorFieldApi::SetOsIccFile)"},
            {3, L"SetOsIccFile Failed, ret is16(ColorFieldApi::SetColorField)"}};
  }

  void ExpectHandles(size_t opened, size_t closed) const {
    EXPECT_EQ(notebook.CountCalls("OpenColorProfileW"), opened);
    EXPECT_EQ(notebook.CountCalls("CloseColorProfile"), closed);
  }
};

// --- SetColorField: the whole sequence ---

TEST_F(ColorFieldApiEnableMode, SetColorField_Sequence) {
  Prepare();
  notebook.platform.lut3D.assign(3, 1.0);
  EXPECT_EQ(api.SetColorField(0), ResultOk);
  EXPECT_TRUE(LogIs({QueryLines(), CompareLines(), InstallLines(), kEnableLines, kDoneLine}));
  const std::string device = testsupport::Utf8(panel);
  const std::vector<std::string> expected = {
      "WmiQuery::ExcuteQueryImpl(pointer, SELECT * FROM WmiMonitorConnectionParams WHERE "
      "VideoOutputTechnology=2147483648, InstanceName, pointer, 1)",
      "EnumDisplayMonitors",
      "GetMonitorInfoW",
      "EnumDisplayDevicesW(null, 0, pointer, 0)",
      "EnumDisplayDevicesW(\\\\.\\DISPLAY1, 0, pointer, 0)",
      "EnumDisplayDevicesW(\\\\.\\DISPLAY1, 1, pointer, 0)",
      "EnumDisplayDevicesW(null, 1, pointer, 0)",
      "WcsGetDefaultColorProfile(1, " + device + ", 0, 5, 0, 520, pointer)",
      "OpenColorProfileW(pointer, 1, 1, 3)",
      "IsColorProfileValid(pointer, pointer)",
      "GetStandardColorSpaceProfileW(null, 1934772034, pointer, pointer)",
      "OpenColorProfileW(pointer, 1, 1, 3)",
      "IsColorProfileValid(pointer, pointer)",
      "CreateMultiProfileTransform(pointer, 2, pointer, 2, 3, 0)",
      "InstallColorProfileW(null, " + newPath + ")",
      "WcsDisassociateColorProfileFromDevice(1, " + newPath + ", " + device + ")",
      "WcsAssociateColorProfileWithDevice(1, " + newPath + ", " + device + ")",
      "CloseColorProfile(pointer)",
      "CloseColorProfile(pointer)",
      "CoreKit::GetDisplayType()",
      "PlatformReset3DLut()"};
  EXPECT_THAT(SystemCalls(), ElementsAreArray(expected));
  EXPECT_THAT(Associations(), ElementsAre(L"VeloraNew.icc", L"VeloraOld.icc"));
  EXPECT_TRUE(notebook.platform.lut3D.empty());
  EXPECT_EQ(testsupport::ReadFileBytes(InstalledPath("VeloraNew.icc")), newProfile);
}

TEST_F(ColorFieldApiEnableMode, SetColorField_SecondTimeOnlyTheOutputIsSet) {
  Prepare();
  api.SetColorField(0);
  notebook.ForgetRecords();
  EXPECT_EQ(api.SetColorField(0), ResultOk);
  EXPECT_TRUE(LogIs(
      {QueryLines(L"VeloraNew.icc"),
       CompareLine(L"VeloraNew.icc", L"VeloraNew.icc"),
       {{1, L"Icc Already Associated. iccFileName:" + newFile + L"(ColorFieldApi::SetColorField)"}},
       kEnableLines,
       kDoneLine}));
  ExpectHandles(0, 0);
  EXPECT_EQ(notebook.CountCalls("_access"), 0u);
  EXPECT_EQ(notebook.CountCalls("PlatformReset3DLut"), 1u);
}

// --- SetColorField: once per step, that step fails ---

TEST_F(ColorFieldApiEnableMode, SetColorField_WmiFails) {
  Prepare();
  notebook.FailCall("WmiQuery::ExcuteQueryImpl", 1, 5);
  EXPECT_EQ(api.SetColorField(0), ResultOk);
  EXPECT_THAT(Associations(), ElementsAre(L"VeloraNew.icc", L"VeloraOld.icc"));
}

TEST_F(ColorFieldApiEnableMode, SetColorField_NoPrimaryMonitor) {
  Prepare();
  notebook.FailCall("EnumDisplayMonitors", 1, FALSE);
  EXPECT_EQ(api.SetColorField(0), ResultFailed);
  Lines lines = QueryLines();
  lines.resize(2);
  EXPECT_TRUE(LogIs({lines,
                     {{3, L"GetTargetMonitorName Failed!(ColorFieldApi::GetDefaultIccFile)"},
                      {3,
                       L"GetDefaultIccFile Failed, ret is1currentIccFileName:"
                       L"(ColorFieldApi::SetColorField)"}}}));
  EXPECT_THAT(Associations(), ElementsAre(L"VeloraOld.icc"));
  EXPECT_EQ(notebook.CountCalls("PlatformReset3DLut"), 0u);
}

TEST_F(ColorFieldApiEnableMode, SetColorField_NoAdapters) {
  Prepare();
  notebook.FailCall("EnumDisplayDevicesW", 1, FALSE);
  EXPECT_EQ(api.SetColorField(0), ResultFailed);
  Lines lines = QueryLines();
  lines.resize(2);
  EXPECT_TRUE(LogIs({lines,
                     {{1, L"monitorName is (ColorFieldApi::GetTargetMonitorName)"},
                      {3, L"currentMainMonitorName empty!(ColorFieldApi::GetDefaultIccFile)"},
                      {3,
                       L"GetDefaultIccFile Failed, ret is1currentIccFileName:"
                       L"(ColorFieldApi::SetColorField)"}}}));
}

TEST_F(ColorFieldApiEnableMode, SetColorField_ProfileQueryFails) {
  Prepare();
  notebook.FailCall("WcsGetDefaultColorProfile", 1, FALSE, ERROR_ACCESS_DENIED);
  EXPECT_EQ(api.SetColorField(0), ResultFailed);
  Lines lines = QueryLines();
  lines.resize(3);
  EXPECT_TRUE(LogIs({lines,
                     {{3, L"GetDefaultIccFile Failed! targetMonitorName:" + panel +
                              L"errorCode is5(ColorFieldApi::GetDefaultIccFile)"},
                      {3,
                       L"GetDefaultIccFile Failed, ret is1currentIccFileName:"
                       L"(ColorFieldApi::SetColorField)"}}}));
  EXPECT_THAT(Associations(), ElementsAre(L"VeloraOld.icc"));
  EXPECT_EQ(notebook.CountCalls("PlatformReset3DLut"), 0u);
}

TEST_F(ColorFieldApiEnableMode, SetColorField_ProfileMissing) {
  Prepare();
  std::filesystem::remove(newPath);
  EXPECT_EQ(api.SetColorField(0), ResultFileNotFound);
  EXPECT_TRUE(LogIs(
      {QueryLines(),
       CompareLines(),
       {{3, L"Icc File:" + newFile + L" Not Found!(ColorFieldApi::CheckTargetIccFileIsValid)"},
        {3, L"Icc Already Associated. iccFileName:" + newFile +
                L"(ColorFieldApi::SetOsIccFileWithCheck)"}},
       SwitchFailedLine(15)}));
  EXPECT_THAT(Associations(), ElementsAre(L"VeloraOld.icc"));
  EXPECT_EQ(notebook.CountCalls("PlatformReset3DLut"), 0u);
}

TEST_F(ColorFieldApiEnableMode, SetColorField_DigestFileMissing) {
  Prepare();
  std::filesystem::remove(digestPath);
  EXPECT_EQ(api.SetColorField(0), ResultFileNotFound);
  EXPECT_LOGGED(3,
                L"Icc File:" + newFile + L" Not Found!(ColorFieldApi::CheckTargetIccFileIsValid)");
}

TEST_F(ColorFieldApiEnableMode, SetColorField_ProfileChanged) {
  Prepare();
  auto changed = newProfile;
  changed.back() ^= 1;
  testsupport::WriteFileBytes(newPath, changed);
  EXPECT_EQ(api.SetColorField(0), ResultIccError);
  EXPECT_TRUE(LogIs({QueryLines(),
                     CompareLines(),
                     {{3, L"Icc File Be Modified! fileName:" + newFile +
                              L"(ColorFieldApi::CheckTargetIccFileIsValid)"},
                      {3, L"Icc Already Associated. iccFileName:" + newFile +
                              L"(ColorFieldApi::SetOsIccFileWithCheck)"}},
                     SwitchFailedLine(16)}));
  EXPECT_THAT(Associations(), ElementsAre(L"VeloraOld.icc"));
  ExpectHandles(0, 0);
  EXPECT_EQ(notebook.CountCalls("PlatformReset3DLut"), 0u);
}

TEST_F(ColorFieldApiEnableMode, SetColorField_ProfileCannotBeOpened) {
  Prepare();
  notebook.FailCall("OpenColorProfileW", 1, 0, ERROR_FILE_CORRUPT);
  EXPECT_EQ(api.SetColorField(0), ResultIccError);
  EXPECT_TRUE(LogIs({QueryLines(), CompareLines(), OpenFailedLine(newFile),
                     InstallFailedLines(L"Get CurrentProFileHandle Failed! fileName:")}));
  EXPECT_THAT(Associations(), ElementsAre(L"VeloraOld.icc"));
  ExpectHandles(1, 0);
  EXPECT_EQ(notebook.CountCalls("PlatformReset3DLut"), 0u);
}

TEST_F(ColorFieldApiEnableMode, SetColorField_ProfileNotValidStaysOpen) {
  Prepare();
  notebook.FailCall("IsColorProfileValid", 1, FALSE);
  EXPECT_EQ(api.SetColorField(0), ResultIccError);
  EXPECT_TRUE(LogIs({QueryLines(),
                     CompareLines(),
                     OpenLine(newFile),
                     {{3, L"GetProfileHandle Profile Not Valid!(ColorFieldApi::GetProfileHandle)"}},
                     InstallFailedLines(L"Get CurrentProFileHandle Failed! fileName:")}));
  ExpectHandles(1, 0);
}

TEST_F(ColorFieldApiEnableMode, SetColorField_StandardProfileHasNoPath) {
  Prepare();
  notebook.FailCall("GetStandardColorSpaceProfileW", 1, FALSE, ERROR_FILE_NOT_FOUND);
  notebook.FailCall("OpenColorProfileW", 2, 0, ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(api.SetColorField(0), ResultIccError);
  EXPECT_TRUE(LogIs({QueryLines(), CompareLines(), OpenLine(newFile), OpenFailedLine(L""),
                     InstallFailedLines(L"Get StandardProfileHandle Failed! fileName:")}));
  ExpectHandles(2, 0);
}

TEST_F(ColorFieldApiEnableMode, SetColorField_StandardProfileCannotBeOpened) {
  Prepare();
  notebook.FailCall("OpenColorProfileW", 2, 0, ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(api.SetColorField(0), ResultIccError);
  EXPECT_TRUE(LogIs({QueryLines(), CompareLines(), OpenLine(newFile), OpenFailedLine(srgbFile),
                     InstallFailedLines(L"Get StandardProfileHandle Failed! fileName:")}));
  EXPECT_EQ(notebook.CountCalls("InstallColorProfileW"), 0u);
  ExpectHandles(2, 0);
}

TEST_F(ColorFieldApiEnableMode, SetColorField_StandardProfileNotValid) {
  Prepare();
  notebook.FailCall("IsColorProfileValid", 2, FALSE);
  EXPECT_EQ(api.SetColorField(0), ResultIccError);
  EXPECT_TRUE(LogIs({QueryLines(),
                     CompareLines(),
                     OpenLine(newFile),
                     OpenLine(srgbFile),
                     {{3, L"GetProfileHandle Profile Not Valid!(ColorFieldApi::GetProfileHandle)"}},
                     InstallFailedLines(L"Get StandardProfileHandle Failed! fileName:")}));
  ExpectHandles(2, 0);
}

TEST_F(ColorFieldApiEnableMode, SetColorField_NoTransformIsNoMatter) {
  Prepare();
  notebook.FailCall("CreateMultiProfileTransform", 1, 0, ERROR_INVALID_PROFILE);
  EXPECT_EQ(api.SetColorField(0), ResultOk);
  EXPECT_TRUE(LogIs({QueryLines(), CompareLines(), InstallLines(), kEnableLines, kDoneLine}));
}

TEST_F(ColorFieldApiEnableMode, SetColorField_InstallationFails) {
  Prepare();
  notebook.FailCall("InstallColorProfileW", 1, FALSE, ERROR_ACCESS_DENIED);
  EXPECT_EQ(api.SetColorField(0), ResultIccError);
  EXPECT_TRUE(LogIs({QueryLines(), CompareLines(), OpenLine(newFile), OpenLine(srgbFile),
                     InstallFailedLines(L"InstallColorProfile Failed! fileName:")}));
  EXPECT_THAT(Associations(), ElementsAre(L"VeloraOld.icc"));
  ExpectHandles(2, 0);
  EXPECT_EQ(notebook.CountCalls("PlatformReset3DLut"), 0u);
}

TEST_F(ColorFieldApiEnableMode, SetColorField_AssociationFails) {
  Prepare();
  notebook.FailCall("WcsAssociateColorProfileWithDevice", 1, FALSE, ERROR_ACCESS_DENIED);
  EXPECT_EQ(api.SetColorField(0), ResultColorFieldError);
  EXPECT_TRUE(LogIs(
      {QueryLines(),
       CompareLines(),
       InstallLines(),
       {{3, L"AssociateIccFile Failed! fileName:" + newFile + L"(ColorFieldApi::SetOsIccFile)"}},
       SwitchFailedLine(17)}));
  EXPECT_THAT(Associations(), ElementsAre(L"VeloraOld.icc"));
  ExpectHandles(2, 2);
  // What was installed stays installed.
  EXPECT_TRUE(std::filesystem::exists(InstalledPath("VeloraNew.icc")));
  EXPECT_EQ(notebook.CountCalls("PlatformReset3DLut"), 0u);
}

TEST_F(ColorFieldApiEnableMode, SetColorField_DisplayTypeUnknown) {
  Prepare();
  notebook.displayType = 0xFFFFFFFF;
  EXPECT_EQ(api.SetColorField(0), ResultFailed);
  EXPECT_TRUE(LogIs({QueryLines(),
                     CompareLines(),
                     InstallLines(),
                     {{1, L"set colorfield mode is:0(ColorFieldApi::EnableColorFieldMode)"},
                      {3,
                       L"Display Type not found! mode:0"
                       L"(ColorFieldApi::EnableColorFieldByDriver)"}},
                     EnableFailedLines(1),
                     RestoreLines()}));
  EXPECT_THAT(Associations(), ElementsAre(L"VeloraOld.icc", L"VeloraNew.icc"));
  ExpectHandles(4, 4);
}

TEST_F(ColorFieldApiEnableMode, SetColorField_OutputFails) {
  Prepare();
  notebook.FailCall("PlatformReset3DLut", 1, 9);
  EXPECT_EQ(api.SetColorField(0), ResultColorFieldError);
  EXPECT_TRUE(
      LogIs({QueryLines(),
             CompareLines(),
             InstallLines(),
             kEnableLines,
             {{3, L"PlatformSet3DLut Failed, ret is9(ColorField3DLut::SetDisplayerBy3DLut)"},
              {3,
               L"SetDisplayerBy3DLut Failed, mode is 0"
               L"(ColorFieldApi::EnableColorFieldByDriver)"}},
             EnableFailedLines(17),
             RestoreLines()}));
  EXPECT_THAT(Associations(), ElementsAre(L"VeloraOld.icc", L"VeloraNew.icc"));
}

TEST_F(ColorFieldApiEnableMode, SetColorField_OutputFailsWithoutAnOldProfile) {
  Prepare();
  notebook.profiles.clear();
  notebook.FailCall("PlatformReset3DLut", 1, 9);
  EXPECT_EQ(api.SetColorField(0), ResultColorFieldError);
  EXPECT_EQ(notebook.log.back(), (testsupport::LogLine{3,
                                                       L" currentIccFileName icc File is empty!"
                                                       L"(ColorFieldApi::ResetOsIccField)"}));
  // No profile of the empty name was there to take away.
  EXPECT_THAT(Associations(), ElementsAre(L"VeloraNew.icc"));
}

TEST_F(ColorFieldApiEnableMode, SetColorField_OutputFailsWithTheProfileAlreadyAssociated) {
  // The undo step runs although nothing was changed.
  Init(velora::SetType3DLut);
  AddMode(0, InstalledPath("VeloraOld.icc"));
  notebook.FailCall("PlatformReset3DLut", 1, 9);
  EXPECT_EQ(api.SetColorField(0), ResultColorFieldError);
  EXPECT_THAT(testsupport::CallsOf(notebook,
                                   {"InstallColorProfileW", "WcsDisassociateColorProfileFromDevice",
                                    "WcsAssociateColorProfileWithDevice"}),
              ElementsAre("InstallColorProfileW", "WcsDisassociateColorProfileFromDevice",
                          "WcsAssociateColorProfileWithDevice"));
  EXPECT_THAT(Associations(), ElementsAre(L"VeloraOld.icc"));
}

TEST_F(ColorFieldApiEnableMode, SetColorField_UndoFails) {
  // The switch gives the output's result all the same.
  Prepare();
  notebook.FailCall("PlatformReset3DLut", 1, 9);
  notebook.FailCall("OpenColorProfileW", 3, 0);
  EXPECT_EQ(api.SetColorField(0), ResultColorFieldError);
  EXPECT_EQ(notebook.log.back(),
            (testsupport::LogLine{3,
                                  L"InstallIccFile Failed! fileName:VeloraOld.icc"
                                  L"(ColorFieldApi::SetOsIccFile)"}));
  EXPECT_THAT(Associations(), ElementsAre(L"VeloraNew.icc", L"VeloraOld.icc"));
}

// --- SetColorField: modes without a profile, ways that fail ---

TEST_F(ColorFieldApiEnableMode, SetColorField_ModeWithoutARow) {
  Init(velora::SetType3DLut);
  EXPECT_EQ(api.SetColorField(0), ResultOk);
  EXPECT_TRUE(
      LogIs({{{3, L"modeIccVec_ is not initialized.(ColorFieldApi::FindIccFilePathByMode)"},
              {3, L"FindIccFilePathByMode failed, mode is 0(ColorFieldApi::SetColorField)"}},
             QueryLines(),
             CompareLine(L"VeloraOld.icc", L""),
             {{1, L"Icc Already Associated. iccFileName:(ColorFieldApi::SetColorField)"}},
             kEnableLines,
             kDoneLine}));
  EXPECT_THAT(Associations(), ElementsAre(L"VeloraOld.icc"));
  EXPECT_EQ(notebook.CountCalls("PlatformReset3DLut"), 1u);
}

TEST_F(ColorFieldApiEnableMode, SetColorField_ModeWithoutARowOnAPccMachine) {
  Init(velora::SetTypePccMatrix);
  EXPECT_EQ(api.SetColorField(3), ResultFailed);
  EXPECT_TRUE(
      LogIs({{{3, L"modeIccVec_ is not initialized.(ColorFieldApi::FindIccFilePathByMode)"},
              {3, L"FindIccFilePathByMode failed, mode is 3(ColorFieldApi::SetColorField)"}},
             QueryLines(),
             CompareLine(L"VeloraOld.icc", L""),
             {{1, L"Icc Already Associated. iccFileName:(ColorFieldApi::SetColorField)"},
              {1, L"set colorfield mode is:3(ColorFieldApi::EnableColorFieldMode)"},
              {3, L"PccMatrix not found! mode:3(ColorFieldApi::FindPccMatrixByMode)"}},
             EnableFailedLines(1),
             RestoreLines()}));
}

TEST_F(ColorFieldApiEnableMode, SetColorField_UnsupportedWay) {
  for (const ColorFieldSetType setType : {4u, 5u, 0xFFFFFFFFu}) {
    Prepare(setType);
    notebook.profiles[panel] = {L"VeloraOld.icc"};
    EXPECT_EQ(api.SetColorField(0), ResultColorFieldError);
    EXPECT_TRUE(LogIs({QueryLines(),
                       CompareLines(),
                       InstallLines(),
                       {{1, L"set colorfield mode is:0(ColorFieldApi::EnableColorFieldMode)"},
                        {3,
                         L"PC Displayer ColorField Mode Not Support on this version."
                         L"(ColorFieldApi::EnableColorFieldMode)"}},
                       EnableFailedLines(17),
                       RestoreLines()}));
    EXPECT_THAT(Associations(), ElementsAre(L"VeloraOld.icc", L"VeloraNew.icc"));
    EXPECT_EQ(notebook.CountCalls("CoreKit::GetDisplayType"), 0u);
  }
}

TEST_F(ColorFieldApiEnableMode, SetColorField_ModeUnknownToTheLutEngineHasNoFile) {
  Init(velora::SetType3DLut);
  EXPECT_EQ(api.SetColorField(11), ResultColorFieldError);
  EXPECT_LOGGED(3, L"Sync3DLutDataTable Failed(ColorField3DLut::SetDisplayerBy3DLut)");
  EXPECT_LOGGED(3,
                L"SetDisplayerBy3DLut Failed, mode is 11(ColorFieldApi::EnableColorFieldByDriver)");
  EXPECT_EQ(notebook.CountCalls("PlatformSet3DLut"), 0u);
}

// --- The ways alone ---

TEST_F(ColorFieldApiEnableMode, EnableColorFieldMode_LeavesTheProfileAlone) {
  Prepare();
  EXPECT_EQ(api.EnableColorFieldMode(0), ResultOk);
  EXPECT_TRUE(LogIs({kEnableLines}));
  EXPECT_THAT(SystemCalls(), ElementsAre("CoreKit::GetDisplayType()", "PlatformReset3DLut()"));
}

TEST_F(ColorFieldApiEnableMode, EnableColorFieldByPcc_HandsTheMatrixOn) {
  Init(velora::SetTypePccMatrix);
  ColorFieldModeInfo info = ModeInfo(3, newPath);
  const std::array<double, 9> matrix = {1.0, -0.25, 0.1, 1e-9, 0.95, 3, -4.5, 0, 0.333};
  std::copy(matrix.begin(), matrix.end(), info.PlatformPccMatrix);
  api.AddColorFieldModeInfo(&info);
  notebook.ForgetRecords();
  EXPECT_EQ(api.EnableColorFieldMode(3), ResultOk);
  EXPECT_EQ(notebook.platform.pccMatrix, matrix);
  EXPECT_TRUE(LogIs({{{1, L"set colorfield mode is:3(ColorFieldApi::EnableColorFieldMode)"}}}));
  EXPECT_THAT(SystemCalls(),
              ElementsAre("CoreKit::GetDisplayType()", "PlatformSetPccMatrixInfo(pointer)"));
}

TEST_F(ColorFieldApiEnableMode, EnableColorFieldByPcc_GivesThePlatformsResult) {
  Init(velora::SetTypePccMatrix);
  AddMode(3, newPath);
  notebook.FailCall("PlatformSetPccMatrixInfo", 1, 77);
  EXPECT_EQ(api.EnableColorFieldMode(3), 77);
  EXPECT_TRUE(LogIs({{{1, L"set colorfield mode is:3(ColorFieldApi::EnableColorFieldMode)"},
                      {3,
                       L"Set Color Filed Failed, ret is 77"
                       L"(ColorFieldApi::EnableColorFieldMode)"}}}));
}

TEST_F(ColorFieldApiEnableMode, EnableColorFieldByPcc_DisplayTypeUnknown) {
  Init(velora::SetTypePccMatrix);
  AddMode(3, newPath);
  notebook.displayType = 0xFFFFFFFF;
  EXPECT_EQ(api.EnableColorFieldMode(3), ResultFailed);
  EXPECT_LOGGED(3, L"Display Type not found! mode:3(ColorFieldApi::EnableColorFieldByPcc)");
  EXPECT_EQ(notebook.CountCalls("PlatformSetPccMatrixInfo"), 0u);
}

TEST_F(ColorFieldApiEnableMode, EnableColorFieldByPcc_NoRow) {
  Init(velora::SetTypePccMatrix);
  EXPECT_EQ(api.EnableColorFieldByPcc(5), ResultFailed);
  EXPECT_TRUE(LogIs({{{3, L"PccMatrix not found! mode:5(ColorFieldApi::FindPccMatrixByMode)"}}}));
}

TEST_F(ColorFieldApiEnableMode, EnableColorFieldByDriver_OnlyOneDisplayTypeMatters) {
  for (const unsigned type : {0u, 1u, 0xFFFFFFFEu}) {
    notebook.displayType = type;
    EXPECT_EQ(api.EnableColorFieldByDriver(0), ResultOk);
  }
}

}  // namespace
