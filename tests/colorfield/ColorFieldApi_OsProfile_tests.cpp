#include <memory>

#include "ColorFieldTest.h"

using testing::ElementsAre;

namespace {

class ColorFieldApiOsProfile : public ColorFieldTest {
 protected:
  // A target monitor, as every switch has one.
  void ChooseMonitor() {
    std::wstring name;
    ASSERT_EQ(api.GetDefaultIccFile(name), ResultOk);
    notebook.ForgetRecords();
  }

  std::vector<std::wstring> Associations() const { return notebook.profiles.at(panel); }
};

// --- GetDefaultIccFile, QueryIccFile ---

TEST_F(ColorFieldApiOsProfile, GetDefaultIccFile_GivesTheFileName) {
  std::wstring name;
  EXPECT_EQ(api.GetDefaultIccFile(name), ResultOk);
  EXPECT_EQ(name, L"VeloraOld.icc");
  EXPECT_TRUE(LogIs({QueryLines()}));
}

TEST_F(ColorFieldApiOsProfile, GetDefaultIccFile_MonitorWithoutAProfile) {
  notebook.profiles.clear();
  std::wstring name = L"before";
  EXPECT_EQ(api.GetDefaultIccFile(name), ResultOk);
  EXPECT_EQ(name, L"");
  EXPECT_TRUE(LogIs({QueryLines(L"")}));
}

TEST_F(ColorFieldApiOsProfile, GetDefaultIccFile_OtherErrors) {
  for (const DWORD error : {0u, 1u, 3u}) {
    notebook.ForgetRecords();
    notebook.ClearFaults();
    notebook.FailCall("WcsGetDefaultColorProfile", 1, FALSE, error);
    std::wstring name = L"before";
    EXPECT_EQ(api.GetDefaultIccFile(name), ResultFailed);
    EXPECT_EQ(name, L"before");
    EXPECT_LOGGED(3, L"GetDefaultIccFile Failed! targetMonitorName:" + panel + L"errorCode is" +
                         std::to_wstring(error) + L"(ColorFieldApi::GetDefaultIccFile)");
  }
}

TEST_F(ColorFieldApiOsProfile, QueryIccFile_AsksForProfileId1) {
  std::wstring name;
  EXPECT_TRUE(api.QueryIccFile(panel, name));
  EXPECT_EQ(name, L"VeloraOld.icc");
  EXPECT_THAT(SystemCalls(), ElementsAre("WcsGetDefaultColorProfile(1, " +
                                         testsupport::Utf8(panel) + ", 0, 5, 1, 520, pointer)"));
  EXPECT_LOG();
}

TEST_F(ColorFieldApiOsProfile, QueryIccFile_Fails) {
  std::wstring name = L"before";
  EXPECT_FALSE(api.QueryIccFile(L"MONITOR\\none", name));
  EXPECT_EQ(name, L"before");
  EXPECT_LOG({3,
              L"WcsGetDefaultColorProfile Failed! currentMainMonitorName:MONITOR\\none"
              L"(ColorFieldApi::QueryIccFile)"});
}

// --- IsIccAlreadyAssociated ---

TEST_F(ColorFieldApiOsProfile, IsIccAlreadyAssociated) {
  const struct {
    const wchar_t* current;
    const char* target;
    const wchar_t* file;
    bool result;
  } kRows[] = {
      {L"P3.icc", "C:\\dir\\P3.icc", L"P3.icc", true},
      {L"P3.icc", "P3.icc", L"P3.icc", true},
      {L"my P3.icc.old", "C:\\P3.icc", L"P3.icc", true},  // whatever stands before or behind
      {L"p3.icc", "C:\\P3.icc", L"P3.icc", false},        // case
      {L"3.icc", "C:\\P3.icc", L"P3.icc", false},
      {L"P3.icc", "C:/dir/P3.icc", L"C:/dir/P3.icc", false},  // a slash parts nothing
      {L"", "C:\\P3.icc", L"P3.icc", false},
      {L"P3.icc", "", L"", true},
      {L"", "", L"", true},
      {L"P3.icc", "C:\\dir\\", L"", true},
  };
  for (const auto& row : kRows) {
    notebook.ForgetRecords();
    EXPECT_EQ(api.IsIccAlreadyAssociated(row.current, row.target), row.result) << row.target;
    EXPECT_TRUE(LogIs({CompareLine(row.current, row.file)}));
  }
}

// --- SetOsIccFileWithCheck, CheckTargetIccFileIsValid ---

TEST_F(ColorFieldApiOsProfile, SetOsIccFileWithCheck_Installs) {
  Init(velora::SetType3DLut);
  ChooseMonitor();
  EXPECT_EQ(api.SetOsIccFileWithCheck(newPath), ResultOk);
  EXPECT_TRUE(LogIs(
      {OpenLine(newFile), OpenLine(srgbFile), AssociateLine(newFile), NotOnTheListLine(newFile)}));
  EXPECT_THAT(Associations(), ElementsAre(L"VeloraNew.icc", L"VeloraOld.icc"));
}

TEST_F(ColorFieldApiOsProfile, SetOsIccFileWithCheck_FailedCheckIsReturned) {
  Init(velora::SetType3DLut);
  ChooseMonitor();
  testsupport::WriteFileBytes(digestPath, {});
  EXPECT_EQ(api.SetOsIccFileWithCheck(newPath), ResultIccError);
  EXPECT_LOG({3, L"Icc File Be Modified! fileName:" + newFile +
                     L"(ColorFieldApi::CheckTargetIccFileIsValid)"},
             {3, L"Icc Already Associated. iccFileName:" + newFile +
                     L"(ColorFieldApi::SetOsIccFileWithCheck)"});
  EXPECT_THAT(Associations(), ElementsAre(L"VeloraOld.icc"));
}

TEST_F(ColorFieldApiOsProfile, CheckTargetIccFileIsValid_NullDigestPath) {
  EXPECT_EQ(api.CheckTargetIccFileIsValid(newPath, nullptr), ResultFailed);
  EXPECT_LOG({3, L"targetIccPtah is null!(ColorFieldApi::CheckTargetIccFileIsValid)"});
}

TEST_F(ColorFieldApiOsProfile, CheckTargetIccFileIsValid_EitherFileMissing) {
  const std::string absent = directory.Path("absent");
  EXPECT_EQ(api.CheckTargetIccFileIsValid(absent, digestPath.c_str()), ResultFileNotFound);
  EXPECT_EQ(api.CheckTargetIccFileIsValid(newPath, absent.c_str()), ResultFileNotFound);
  EXPECT_EQ(api.CheckTargetIccFileIsValid(newPath, ""), ResultFileNotFound);
  // The profile is named also where the digest file is what is missing.
  const testsupport::LogLine notFound{
      3, L"Icc File:" + newFile + L" Not Found!(ColorFieldApi::CheckTargetIccFileIsValid)"};
  EXPECT_LOG(
      {3, L"Icc File:" + Wide(absent) + L" Not Found!(ColorFieldApi::CheckTargetIccFileIsValid)"},
      notFound, notFound);
}

TEST_F(ColorFieldApiOsProfile, CheckTargetIccFileIsValid_Valid) {
  EXPECT_EQ(api.CheckTargetIccFileIsValid(newPath, digestPath.c_str()), ResultOk);
  EXPECT_LOG();
}

TEST_F(ColorFieldApiOsProfile, CheckTargetIccFileIsValid_ProfileOfLengthZero) {
  testsupport::WriteFileBytes(newPath, {});
  EXPECT_EQ(api.CheckTargetIccFileIsValid(newPath, digestPath.c_str()), ResultIccError);
  EXPECT_LOG({3, L"GetSha256Value failed.(IccFileCheck::CompareSha256)"},
             {3, L"Icc File Be Modified! fileName:" + newFile +
                     L"(ColorFieldApi::CheckTargetIccFileIsValid)"});
}

// --- SetOsIccFile ---

TEST_F(ColorFieldApiOsProfile, SetOsIccFile_EmptyPath) {
  EXPECT_EQ(api.SetOsIccFile(L""), ResultFailed);
  EXPECT_LOG({3, L"SetOsIccFile input prar is empty!(ColorFieldApi::SetOsIccFile)"});
  EXPECT_THAT(SystemCalls(), ElementsAre());
}

TEST_F(ColorFieldApiOsProfile, SetOsIccFile_SlashesBecomeBackslashes) {
  ChooseMonitor();
  std::wstring slashed = newFile;
  std::ranges::replace(slashed, L'\\', L'/');
  EXPECT_EQ(api.SetOsIccFile(slashed), ResultOk);
  EXPECT_TRUE(LogIs(
      {OpenLine(newFile), OpenLine(srgbFile), AssociateLine(newFile), NotOnTheListLine(newFile)}));
}

TEST_F(ColorFieldApiOsProfile, SetOsIccFile_FailuresNameTheGivenPath) {
  ChooseMonitor();
  std::wstring slashed = newFile;
  std::ranges::replace(slashed, L'\\', L'/');
  notebook.FailCall("InstallColorProfileW", 1, FALSE);
  EXPECT_EQ(api.SetOsIccFile(slashed), ResultIccError);
  EXPECT_LOGGED(3,
                L"InstallIccFile Failed! fileName:" + slashed + L"(ColorFieldApi::SetOsIccFile)");
  notebook.FailCall("WcsAssociateColorProfileWithDevice", 1, FALSE);
  EXPECT_EQ(api.SetOsIccFile(slashed), ResultColorFieldError);
  EXPECT_LOGGED(3,
                L"AssociateIccFile Failed! fileName:" + slashed + L"(ColorFieldApi::SetOsIccFile)");
}

TEST_F(ColorFieldApiOsProfile, SetOsIccFile_WithoutATargetMonitor) {
  EXPECT_EQ(api.SetOsIccFile(newFile), ResultColorFieldError);
  EXPECT_TRUE(LogIs(
      {OpenLine(newFile),
       OpenLine(srgbFile),
       AssociateLine(newFile),
       {{3, L"targetMonitorInfo_ deviceID is empty!(ColorFieldApi::AssociateIccFile)"},
        {3, L"AssociateIccFile Failed! fileName:" + newFile + L"(ColorFieldApi::SetOsIccFile)"}}}));
  EXPECT_EQ(notebook.CountCalls("WcsDisassociateColorProfileFromDevice"), 0u);
  EXPECT_EQ(notebook.CountCalls("CloseColorProfile"), 2u);
}

TEST_F(ColorFieldApiOsProfile,
       SetOsIccFile_HandlesOfAFailedInstallationAreOverwrittenByTheNextRun) {
  ChooseMonitor();
  notebook.FailCall("InstallColorProfileW", 1, FALSE);
  api.SetOsIccFile(newFile);
  EXPECT_EQ(notebook.CountCalls("CloseColorProfile"), 0u);
  EXPECT_EQ(api.SetOsIccFile(newFile), ResultOk);
  EXPECT_EQ(notebook.CountCalls("OpenColorProfileW"), 4u);
  EXPECT_EQ(notebook.CountCalls("CloseColorProfile"), 2u);
}

TEST_F(ColorFieldApiOsProfile, Destructor_ClosesTheHandlesThatItHolds) {
  auto other = std::make_unique<velora::ColorFieldApi>();
  notebook.FailCall("InstallColorProfileW", 1, FALSE);
  EXPECT_EQ(other->SetOsIccFile(newFile), ResultIccError);
  EXPECT_EQ(notebook.CountCalls("CloseColorProfile"), 0u);
  other.reset();
  EXPECT_EQ(notebook.CountCalls("CloseColorProfile"), 2u);
}

TEST_F(ColorFieldApiOsProfile, Destructor_ClosesNoHandleTwice) {
  auto other = std::make_unique<velora::ColorFieldApi>();
  other->SetOsIccFile(newFile);
  EXPECT_EQ(notebook.CountCalls("CloseColorProfile"), 2u);
  other.reset();
  EXPECT_EQ(notebook.CountCalls("CloseColorProfile"), 2u);
}

TEST_F(ColorFieldApiOsProfile, Destructor_HandleOfAnInvalidProfileIsLost) {
  auto other = std::make_unique<velora::ColorFieldApi>();
  notebook.FailCall("IsColorProfileValid", 1, FALSE);
  EXPECT_EQ(other->SetOsIccFile(newFile), ResultIccError);
  EXPECT_EQ(notebook.CountCalls("OpenColorProfileW"), 1u);
  other.reset();
  EXPECT_EQ(notebook.CountCalls("CloseColorProfile"), 0u);
}

TEST_F(ColorFieldApiOsProfile, GetProfileHandle_FileThatIsNoProfile) {
  const std::string path = directory.Path("text.icc");
  testsupport::WriteFileBytes(path, {'n', 'o', 'n', 'e'});
  EXPECT_EQ(api.GetProfileHandle(Wide(path)), nullptr);
  EXPECT_TRUE(LogIs({OpenFailedLine(Wide(path))}));
}

// --- AssociateIccFile ---

TEST_F(ColorFieldApiOsProfile, AssociateIccFile_ProfileOnTheListLeavesItFirst) {
  ChooseMonitor();
  notebook.profiles[panel] = {L"VeloraOld.icc", L"VeloraNew.icc"};
  EXPECT_TRUE(api.AssociateIccFile(newFile));
  EXPECT_TRUE(LogIs({AssociateLine(newFile)}));
  EXPECT_THAT(SystemCalls(), ElementsAre("WcsDisassociateColorProfileFromDevice(1, " + newPath +
                                             ", " + testsupport::Utf8(panel) + ")",
                                         "WcsAssociateColorProfileWithDevice(1, " + newPath + ", " +
                                             testsupport::Utf8(panel) + ")"));
  EXPECT_THAT(Associations(), ElementsAre(L"VeloraNew.icc", L"VeloraOld.icc"));
}

TEST_F(ColorFieldApiOsProfile, AssociateIccFile_EmptyFileName) {
  ChooseMonitor();
  EXPECT_FALSE(api.AssociateIccFile(L""));
  EXPECT_LOG({0, L"(ColorFieldApi::AssociateIccFile)"},
             {3, L"targetMonitorInfo_ deviceID is empty!(ColorFieldApi::AssociateIccFile)"});
  EXPECT_THAT(SystemCalls(), ElementsAre());
}

// --- ResetOsIccField ---

TEST_F(ColorFieldApiOsProfile, ResetOsIccField_BareNameWithoutACheck) {
  ChooseMonitor();
  notebook.profiles[panel] = {L"VeloraNew.icc", L"VeloraOld.icc"};
  api.ResetOsIccField(L"VeloraOld.icc");
  EXPECT_TRUE(
      LogIs({OpenLine(L"VeloraOld.icc"), OpenLine(srgbFile), AssociateLine(L"VeloraOld.icc")}));
  EXPECT_EQ(notebook.CountCalls("_access"), 0u);
  EXPECT_THAT(Associations(), ElementsAre(L"VeloraOld.icc", L"VeloraNew.icc"));
}

TEST_F(ColorFieldApiOsProfile, ResetOsIccField_NoProfileBefore) {
  ChooseMonitor();
  api.ResetOsIccField(L"");
  EXPECT_THAT(SystemCalls(), ElementsAre("WcsDisassociateColorProfileFromDevice(1, , " +
                                         testsupport::Utf8(panel) + ")"));
  EXPECT_LOG({3, L" currentIccFileName icc File is empty!(ColorFieldApi::ResetOsIccField)"});
  EXPECT_THAT(Associations(), ElementsAre(L"VeloraOld.icc"));
}

}  // namespace
