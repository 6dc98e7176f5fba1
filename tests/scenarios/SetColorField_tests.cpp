// Whole switches through the shipped library: the export, the profile, the firmware's LUT and the
// panel.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "support/NotebookTest.h"
#include "virtualnotebook/Factory.h"
#include "virtualnotebook/HostedLibrary.h"
#include "virtualnotebook/Machine.h"

namespace scenarios {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using virtualnotebook::Bytes;
using virtualnotebook::PanelDescription;
using Lines = std::vector<testsupport::LogLine>;

constexpr char kDataDir[] = "C:\\ProgramData\\Comms\\NxVelora\\";
// Wine's own; the panel's default profile at the start.
constexpr wchar_t kOldProfile[] = L"srgb color space profile.icm";
constexpr wchar_t kColorDir[] = L"C:\\windows\\system32\\spool\\drivers\\color\\";

std::wstring Wide(const std::string& ascii) { return {ascii.begin(), ascii.end()}; }

// A machine as it left the factory, and a host that has registered its modes: sRGB and P3 with
// profiles, digital (4) without a gamma.
class SetColorFieldScenario : public testing::Test {
 protected:
  SetColorFieldScenario() {
    virtualnotebook::RemoveMachine();
    files_ = virtualnotebook::InstallMachine(machine_);
    Start();
  }
  ~SetColorFieldScenario() override {
    library_.reset();
    virtualnotebook::RemoveMachine();
  }

  // A new host process on the same machine.
  void Start() {
    virtualnotebook::ProfileAssociations profiles = {{panelDevice_, {kOldProfile}}};
    if (library_) {
      profiles = notebook().profiles;
      library_.reset();
    }
    library_.emplace();
    virtualnotebook::SetUpNotebook(notebook());
    notebook().profiles = profiles;
    notebook().firmwareTable = machine_.firmwareTable;
    Register();
  }

  void Register() {
    ColorFieldInitInfo init{};
    init.setType = 1;
    init.defaultMode = SrgbMode;
    files_.digestFile.copy(init.pIccCheckFilePath, 100);
    files_.goldenName.copy(init.goldenFilePath, 100);
    ASSERT_EQ(library_->InitColorFieldInfo(&init), ResultOk);
    AddMode(SrgbMode, virtualnotebook::kSrgbLut, 2.2);
    AddMode(P3Mode, virtualnotebook::kP3Lut, 2.2);
    AddMode(DigitalMode, virtualnotebook::kP3Lut, 0);
    notebook().ForgetRecords();
  }

  void AddMode(ColorFieldMode mode, int gamut, double gamma) {
    ColorFieldModeInfo info{};
    info.mode = mode;
    files_.Profile(gamut).copy(info.iccPath, 100);
    info.gamma = gamma;
    info.gamut = gamut;
    info.temperR = info.temperG = info.temperB = 1;
    ASSERT_EQ(library_->AddColorFieldModeInfo(&info), ResultOk);
  }

  // The log of one call; the records are emptied first.
  ResultT Set(int mode) {
    notebook().ForgetRecords();
    return library_->SetColorField(mode);
  }

  testing::AssertionResult LogIs(std::initializer_list<Lines> parts) {
    Lines all;
    for (const Lines& part : parts) all.insert(all.end(), part.begin(), part.end());
    return testsupport::LogIs(notebook(), all);
  }

  // --- Parts of the log of a switch to P3Mode ---

  Lines StartLines(const std::wstring& current) const {
    return {{1, L"mode:2(SetColorField)"},
            {1,
             L"instanceName is DISPLAY\\NVX1234\\4&1a2b3c&0&UID0_0"
             L"(ColorFieldApi::GetTargetMonitorNameByWmi)"},
            {1, L"monitorDriverName is NVX1234(ColorFieldApi::GetTargetMonitorNameByWmi)"},
            {1, L"monitorName is " + panelDevice_ + L"(ColorFieldApi::GetTargetMonitorName)"},
            {1, L"targetMonitorName is " + panelDevice_ + L",pFileName is " + current +
                    L"(ColorFieldApi::GetDefaultIccFile)"},
            {0, L"currentIccFileName:" + current +
                    L", targetIccFileName:NVX-P3.icc(ColorFieldApi::IsIccAlreadyAssociated)"}};
  }
  Lines AlreadyAssociatedLine() const {
    return {{1, L"Icc Already Associated. iccFileName:" + p3Profile_ +
                    L"(ColorFieldApi::SetColorField)"}};
  }
  Lines InstallLines(const std::wstring& path) const {
    const auto open = [](const std::wstring& name) {
      return L"GetProfileHandle OpenColorProfile Success!" + name + L", buf size:" +
             std::to_wstring(name.size()) + L", cbDataSize:" +
             std::to_wstring(2 * name.size() + 2) + L"(ColorFieldApi::GetProfileHandle)";
    };
    return {{1, open(path)},
            {1, open(std::wstring(kColorDir) + kOldProfile)},
            {0, path + L"(ColorFieldApi::AssociateIccFile)"}};
  }
  Lines InstallLines() const {
    Lines lines = InstallLines(p3Profile_);
    lines.push_back({1, L"WcsDisassociateColorProfileFromDevice Failed, iccFileName is " +
                            p3Profile_ + L"(ColorFieldApi::AssociateIccFile)"});
    return lines;
  }
  const Lines kEnableLines = {
      {1, L"set colorfield mode is:2(ColorFieldApi::EnableColorFieldMode)"},
      {1, L"SetDisplayer by 3DLut, mode is 2(ColorField3DLut::SetDisplayerBy3DLut)"}};
  // The first look at the panel: coordinates of the description in steps of 1/1024.
  const Lines kPanelLine = {
      {1,
       L"LcdEdidColorGamut:0.679688, 0.320312, 0.264648, 0.69043, 0.150391, 0.0595703, 0.3125, "
       L"0.329102(LcdEdidParse::ParseEdidWrgb)"}};
  const Lines kNoEbookLine = {{1, L"Not e-book mode.(ColorField3DLut::FusionEbookProc)"}};
  const Lines kDoneLine = {{1, L"SetColorField mode is :2,ret is 0(ColorFieldApi::SetColorField)"}};
  const Lines kEnableFailedLines = {
      {3, L"SetDisplayerBy3DLut Failed, mode is 2(ColorFieldApi::EnableColorFieldByDriver)"},
      {3, L"Set Color Filed Failed, ret is 17(ColorFieldApi::EnableColorFieldMode)"},
      {3, L"EnableColorFieldMode error,ret is :17(ColorFieldApi::SetColorField)"}};

  virtualnotebook::Notebook& notebook() { return library_->notebook; }
  std::vector<std::wstring> Profiles() { return notebook().profiles.at(panelDevice_); }

  static Bytes BlockOf(const PanelDescription& panel, uint8_t type) {
    return MakeLutBlock(HeaderOf(panel, type), MakeLut(panel, type));
  }
  static Bytes DataFile(const std::string& name) {
    return testsupport::ReadFileBytes(kDataDir + name);
  }
  static bool DataFileExists(const std::string& name) {
    return std::filesystem::exists(kDataDir + name);
  }

  const virtualnotebook::MachineData machine_ = virtualnotebook::MakeMachine(PanelDescription{});
  const std::vector<double> p3Lut_ =
      virtualnotebook::MakeLut(machine_.panel, virtualnotebook::kP3Lut);
  const std::wstring panelDevice_ =
      virtualnotebook::MonitorDeviceId(virtualnotebook::kPanelDeviceId);
  virtualnotebook::PluggedPanel panel_{machine_.edid};
  virtualnotebook::InstalledFiles files_;
  const std::wstring p3Profile_ = Wide(virtualnotebook::FilesOf().Profile(virtualnotebook::kP3Lut));
  std::optional<virtualnotebook::HostedLibrary> library_;
};

TEST_F(SetColorFieldScenario, Cold) {
  EXPECT_EQ(Set(P3Mode), ResultOk);
  EXPECT_TRUE(LogIs({StartLines(kOldProfile), InstallLines(), kEnableLines, kPanelLine,
                     kNoEbookLine, kDoneLine}));
  ASSERT_EQ(notebook().platform.lut3D.size(), 14739u);
  EXPECT_EQ(notebook().platform.lut3D, p3Lut_);
  EXPECT_EQ(notebook().CountCalls("PlatformSet3DLut"), 1u);
  EXPECT_EQ(DataFile("P3.bin"), BlockOf(machine_.panel, virtualnotebook::kP3Lut));
  EXPECT_THAT(Profiles(), ElementsAre(L"NVX-P3.icc", kOldProfile));
  EXPECT_EQ(testsupport::ReadFileBytes(testsupport::Utf8(kColorDir) + "NVX-P3.icc"),
            machine_.profiles.at("NVX-P3.icc"));
  EXPECT_EQ(notebook().CountCalls("RegSetValueExW"), 0u);
  EXPECT_EQ(notebook().CountCalls("OpenColorProfileW"), notebook().CountCalls("CloseColorProfile"));
}

TEST_F(SetColorFieldScenario, WarmInTheSameProcess) {
  Set(P3Mode);
  EXPECT_EQ(Set(P3Mode), ResultOk);
  EXPECT_TRUE(LogIs({StartLines(L"NVX-P3.icc"), AlreadyAssociatedLine(), kEnableLines, kDoneLine}));
  EXPECT_EQ(notebook().platform.lut3D, p3Lut_);
  EXPECT_EQ(notebook().CountCalls("PlatformSet3DLut"), 1u);
  EXPECT_EQ(notebook().CountCalls("CreateFileA"), 0u);
  EXPECT_EQ(notebook().CountCalls("GetSystemFirmwareTable"), 0u);
}

TEST_F(SetColorFieldScenario, WarmInANewProcess) {
  Set(P3Mode);
  Start();
  EXPECT_EQ(Set(P3Mode), ResultOk);
  EXPECT_TRUE(LogIs({StartLines(L"NVX-P3.icc"), AlreadyAssociatedLine(), kEnableLines, kPanelLine,
                     kNoEbookLine, kDoneLine}));
  EXPECT_EQ(notebook().platform.lut3D, p3Lut_);
  EXPECT_EQ(notebook().CountCalls("GetSystemFirmwareTable"), 0u);
}

TEST_F(SetColorFieldScenario, DamagedBinFileIsRebuilt) {
  Set(P3Mode);
  Bytes damaged = DataFile("P3.bin");
  damaged[128] ^= 0x10;
  testsupport::WriteFileBytes(std::string(kDataDir) + "P3.bin", damaged);
  Start();
  EXPECT_EQ(Set(P3Mode), ResultOk);
  EXPECT_TRUE(LogIs({StartLines(L"NVX-P3.icc"),
                     AlreadyAssociatedLine(),
                     kEnableLines,
                     kPanelLine,
                     {{3,
                       L"SHA256 Value is not match, shadata len is 24693"
                       L"(ColorField3DLut::IsLutDataValid3D)"}},
                     kNoEbookLine,
                     kDoneLine}));
  EXPECT_EQ(notebook().platform.lut3D, p3Lut_);
  EXPECT_EQ(DataFile("P3.bin"), BlockOf(machine_.panel, virtualnotebook::kP3Lut));
}

TEST_F(SetColorFieldScenario, ReplacedPanelGetsTheGoldenLut) {
  PanelDescription other;
  other.vendor = "ABC";
  other.serial = {0xA5, 6, 7, 8};
  other.week = 31;
  other.year = 2025;
  panel_.Replace(virtualnotebook::MakeEdid(other));
  EXPECT_EQ(Set(P3Mode), ResultOk);
  EXPECT_TRUE(LogIs(
      {StartLines(kOldProfile),
       InstallLines(),
       kEnableLines,
       kPanelLine,
       {{1,
         L"LCD Invalid! Bios SN:01020304Edid SN:A5060708Bios Vendor:NVX#Edid Vendor:ABC#"
         L"Bios Week:08Edid Week:31Bios Year:2024Edid Year:2025"
         L"(ColorField3DLut::IsLcdDataValid)"},
        {3, L"LCD data is not match or get data error, ret is 1(ColorField3DLut::IsLcdChanged)"},
        {1, L"LCD changed! mode:2(ColorField3DLut::Sync3DLutDataTable)"}},
       kNoEbookLine,
       kDoneLine}));
  const PanelDescription nominal = virtualnotebook::NominalPanel(machine_.panel);
  EXPECT_EQ(notebook().platform.lut3D, virtualnotebook::MakeLut(nominal, virtualnotebook::kP3Lut));
  EXPECT_NE(notebook().platform.lut3D, p3Lut_);
  EXPECT_EQ(DataFile("GoldenP3.bin"), BlockOf(nominal, virtualnotebook::kP3Lut));
  // The factory's file stays.
  EXPECT_EQ(DataFile("P3.bin"), BlockOf(machine_.panel, virtualnotebook::kP3Lut));
}

TEST_F(SetColorFieldScenario, ReplacedPanelWithoutAGoldenFile) {
  std::filesystem::remove(files_.goldenFile);
  PanelDescription other;
  other.serial = {9, 9, 9, 9};
  panel_.Replace(virtualnotebook::MakeEdid(other));
  EXPECT_EQ(Set(P3Mode), ResultColorFieldError);
  EXPECT_TRUE(testsupport::Logged(
      notebook(), 3,
      L"UpdateThreeLutBinFile3D Failed! mode:2(ColorField3DLut::Sync3DLutDataTable)"));
  EXPECT_THAT(notebook().platform.lut3D, IsEmpty());
  EXPECT_FALSE(DataFileExists("GoldenP3.bin"));
  EXPECT_THAT(Profiles(), ElementsAre(kOldProfile, L"NVX-P3.icc"));
}

TEST_F(SetColorFieldScenario, NoFirmwareTable) {
  notebook().firmwareTable.clear();
  EXPECT_EQ(Set(P3Mode), ResultOk);
  EXPECT_EQ(notebook().platform.lut3D,
            virtualnotebook::MakeLut(virtualnotebook::NominalPanel(machine_.panel),
                                     virtualnotebook::kP3Lut));
  EXPECT_FALSE(DataFileExists("P3.bin"));
}

TEST_F(SetColorFieldScenario, ChangedProfileSwitchesNothing) {
  Bytes profile = machine_.profiles.at("NVX-P3.icc");
  profile[profile.size() / 2] ^= 1;
  testsupport::WriteFileBytes(files_.Profile(virtualnotebook::kP3Lut), profile);
  EXPECT_EQ(Set(P3Mode), ResultIccError);
  EXPECT_TRUE(LogIs({StartLines(kOldProfile),
                     {{3, L"Icc File Be Modified! fileName:" + p3Profile_ +
                              L"(ColorFieldApi::CheckTargetIccFileIsValid)"},
                      {3, L"Icc Already Associated. iccFileName:" + p3Profile_ +
                              L"(ColorFieldApi::SetOsIccFileWithCheck)"},
                      {3, L"SetOsIccFile Failed, ret is16(ColorFieldApi::SetColorField)"}}}));
  EXPECT_THAT(Profiles(), ElementsAre(kOldProfile));
  EXPECT_EQ(notebook().CountCalls("PlatformSet3DLut"), 0u);
  EXPECT_FALSE(DataFileExists("P3.bin"));
  EXPECT_FALSE(std::filesystem::exists(testsupport::Utf8(kColorDir) + "NVX-P3.icc"));
}

TEST_F(SetColorFieldScenario, MissingProfileSwitchesNothing) {
  std::filesystem::remove(files_.Profile(virtualnotebook::kP3Lut));
  EXPECT_EQ(Set(P3Mode), ResultFileNotFound);
  EXPECT_THAT(Profiles(), ElementsAre(kOldProfile));
  EXPECT_EQ(notebook().CountCalls("PlatformSet3DLut"), 0u);
}

TEST_F(SetColorFieldScenario, PanelThatRefusesTheLut) {
  notebook().FailCall("PlatformSet3DLut", 1, 5);
  EXPECT_EQ(Set(P3Mode), ResultColorFieldError);
  EXPECT_TRUE(LogIs({StartLines(kOldProfile),
                     InstallLines(),
                     kEnableLines,
                     kPanelLine,
                     kNoEbookLine,
                     {{3,
                       L"PlatformSet3DLut Failed, ret is 5"
                       L"(ColorField3DLut::SetDisplayerBy3DLut)"}},
                     kEnableFailedLines,
                     InstallLines(kOldProfile)}));
  EXPECT_THAT(Profiles(), ElementsAre(kOldProfile, L"NVX-P3.icc"));
  EXPECT_THAT(notebook().platform.lut3D, IsEmpty());
  // What the way prepared stays: the next try needs no file.
  EXPECT_TRUE(DataFileExists("P3.bin"));
  notebook().ClearFaults();
  EXPECT_EQ(Set(P3Mode), ResultOk);
  EXPECT_EQ(notebook().platform.lut3D, p3Lut_);
  EXPECT_THAT(Profiles(), ElementsAre(L"NVX-P3.icc", kOldProfile));
}

TEST_F(SetColorFieldScenario, ModeZeroTakesTheLutOut) {
  Set(P3Mode);
  EXPECT_EQ(Set(0), ResultOk);
  const Lines p3Start = StartLines(L"NVX-P3.icc");
  EXPECT_TRUE(
      LogIs({{{1, L"mode:0(SetColorField)"},
              {3, L"modeIccVec_ is not initialized.(ColorFieldApi::FindIccFilePathByMode)"},
              {3, L"FindIccFilePathByMode failed, mode is 0(ColorFieldApi::SetColorField)"}},
             Lines(p3Start.begin() + 1, p3Start.end() - 1),
             {{0,
               L"currentIccFileName:NVX-P3.icc, targetIccFileName:"
               L"(ColorFieldApi::IsIccAlreadyAssociated)"},
              {1, L"Icc Already Associated. iccFileName:(ColorFieldApi::SetColorField)"},
              {1, L"set colorfield mode is:0(ColorFieldApi::EnableColorFieldMode)"},
              {1, L"SetDisplayer by 3DLut, mode is 0(ColorField3DLut::SetDisplayerBy3DLut)"},
              {1, L"SetColorField mode is :0,ret is 0(ColorFieldApi::SetColorField)"}}}));
  EXPECT_THAT(notebook().platform.lut3D, IsEmpty());
  EXPECT_THAT(Profiles(), ElementsAre(L"NVX-P3.icc", kOldProfile));
  EXPECT_EQ(notebook().CountCalls("CreateFileA"), 0u);
}

TEST_F(SetColorFieldScenario, FromModeToMode) {
  EXPECT_EQ(Set(SrgbMode), ResultOk);
  EXPECT_EQ(notebook().platform.lut3D,
            virtualnotebook::MakeLut(machine_.panel, virtualnotebook::kSrgbLut));
  EXPECT_EQ(Set(P3Mode), ResultOk);
  EXPECT_EQ(notebook().platform.lut3D, p3Lut_);
  EXPECT_EQ(Set(SrgbMode), ResultOk);
  EXPECT_THAT(Profiles(), ElementsAre(L"NVX-sRGB.icc", L"NVX-P3.icc", kOldProfile));
  EXPECT_EQ(DataFile("sRGB.bin"), BlockOf(machine_.panel, virtualnotebook::kSrgbLut));
}

TEST_F(SetColorFieldScenario, ModeThatTheLutEngineWasNotToldOfGetsTheBaseLut) {
  EXPECT_EQ(Set(DigitalMode), ResultOk);
  EXPECT_EQ(notebook().platform.lut3D,
            virtualnotebook::MakeLut(machine_.panel, virtualnotebook::kBaseLut));
  EXPECT_EQ(DataFile("P3.bin"), BlockOf(machine_.panel, virtualnotebook::kBaseLut));
  // The file is now of the wrong type for P3Mode, which rebuilds it.
  EXPECT_EQ(Set(P3Mode), ResultOk);
  EXPECT_EQ(notebook().platform.lut3D, p3Lut_);
  EXPECT_EQ(DataFile("P3.bin"), BlockOf(machine_.panel, virtualnotebook::kP3Lut));
}

TEST_F(SetColorFieldScenario, ModeThatNobodyKnows) {
  EXPECT_EQ(Set(11), ResultColorFieldError);
  EXPECT_EQ(notebook().log.front(), (testsupport::LogLine{1, L"mode:11(SetColorField)"}));
  EXPECT_EQ(notebook().CountCalls("PlatformSet3DLut"), 0u);
}

TEST_F(SetColorFieldScenario, BeforeAnyRegistration) {
  virtualnotebook::HostedLibrary& library = library_.emplace();
  virtualnotebook::SetUpNotebook(library.notebook);
  // Set type 0 with an empty table: the way looks for an external monitor, and takes the panel.
  EXPECT_EQ(library.SetColorField(P3Mode), ResultColorFieldError);
  EXPECT_TRUE(testsupport::Logged(library.notebook, 3,
                                  L"EnableColorFieldByDdcci failed."
                                  L"(ColorFieldApi::EnableColorFieldByDdcci)"));
}

// --- The frames of the registration ---

// A pointer as a stream prints it.
template <typename Record>
std::wstring PointerText(const Record* record) {
  std::wostringstream text;
  text << record;
  return text.str();
}

TEST_F(SetColorFieldScenario, NullRecords) {
  EXPECT_EQ(library_->InitColorFieldInfo(nullptr), ResultFailed);
  EXPECT_EQ(library_->AddColorFieldModeInfo(nullptr), ResultFailed);
  EXPECT_EQ(library_->AddUsrDesignInfo(nullptr), ResultFailed);
  EXPECT_TRUE(LogIs(
      {{{1, L"info:0(InitColorFieldInfo)"},
        {0, L"InitColorFieldInfo input para is NULL.(ColorFieldApi::InitColorFieldInfo)"},
        {1, L"modeInfo:0(AddColorFieldModeInfo)"},
        {0, L"AddColorFieldModeInfo input para is NULL.(ColorFieldApi::AddColorFieldModeInfo)"},
        {1, L"modeInfo:0(AddUsrDesignInfo)"},
        {3, L"AddUsrDesignInfo input para is NULL.(ColorFieldApi::AddUsrDesignInfo)"}}}));
}

TEST_F(SetColorFieldScenario, RecordsAreLoggedAsPointers) {
  const ColorFieldInitInfo init{};
  const ColorFieldModeInfo mode{};
  const UserDesignInfo user{};
  library_->InitColorFieldInfo(&init);
  library_->AddColorFieldModeInfo(&mode);
  library_->AddUsrDesignInfo(&user);
  const Lines lines = {{1, L"info:" + PointerText(&init) + L"(InitColorFieldInfo)"},
                       {1, L"modeInfo:" + PointerText(&mode) + L"(AddColorFieldModeInfo)"},
                       {1, L"modeInfo:" + PointerText(&user) + L"(AddUsrDesignInfo)"}};
  for (const testsupport::LogLine& line : lines) {
    EXPECT_TRUE(testsupport::Logged(notebook(), line.level, line.text));
  }
}

}  // namespace
}  // namespace scenarios
