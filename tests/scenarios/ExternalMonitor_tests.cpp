// A PC whose colour modes live in the maker's external monitors, through the shipped library.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/NotebookTest.h"
#include "virtualnotebook/Factory.h"
#include "virtualnotebook/HostedLibrary.h"
#include "virtualnotebook/Machine.h"

namespace scenarios {
namespace {

using testing::AnyOf;
using testing::ElementsAre;
using testing::IsEmpty;
using virtualnotebook::PhysicalMonitor;
using virtualnotebook::VcpWrite;
using Lines = std::vector<testsupport::LogLine>;

constexpr wchar_t kMakersDevice[] = L"DISPLAY\\NVX2701\\5&2b&0&UID4352";
constexpr wchar_t kSecondDevice[] = L"DISPLAY\\NVX2402\\5&2b&0&UID4353";
constexpr wchar_t kOtherDevice[] = L"DISPLAY\\AAA0001\\5&2b&0&UID4354";
// Wine's own; the monitor's default profile at the start.
constexpr wchar_t kOldProfile[] = L"srgb color space profile.icm";
constexpr wchar_t kColorDir[] = L"C:\\windows\\system32\\spool\\drivers\\color\\";

constexpr wchar_t kSettings[] = L"SOFTWARE\\Norvex\\Velora";

std::wstring Wide(const std::string& ascii) { return {ascii.begin(), ascii.end()}; }

// One monitor of the maker, and a host that has registered a profile each for sRGB and P3.
class ExternalMonitorScenario : public testing::Test {
 protected:
  ExternalMonitorScenario() {
    virtualnotebook::RemoveMachine();
    files_ = virtualnotebook::InstallMachine(
        virtualnotebook::MakeMachine(virtualnotebook::PanelDescription{}));
    PlugInMonitor(notebook, kMakersDevice, L"NVX Studio 27");
    notebook.profiles[device_] = {kOldProfile};
    Register(0);
  }
  ~ExternalMonitorScenario() override { virtualnotebook::RemoveMachine(); }

  // Whatever a test does: each array of physical monitors is destroyed once, and nothing but the
  // colour mode's code and its two values leaves.
  void TearDown() override {
    for (const auto& array : notebook.monitorArrays) {
      EXPECT_EQ(array.destroyed, 1u);
    }
    for (const auto& desktopMonitor : notebook.desktop) {
      for (const PhysicalMonitor& monitor : desktopMonitor.physicalMonitors) {
        for (const VcpWrite& write : monitor.taken) {
          EXPECT_EQ(write.code, 224);
          EXPECT_THAT(write.value, AnyOf(6u, 1u));
        }
      }
    }
  }

  void Register(ColorFieldSetType setType) {
    ColorFieldInitInfo init{};
    init.setType = setType;
    files_.digestFile.copy(init.pIccCheckFilePath, 100);
    ASSERT_EQ(library_.InitColorFieldInfo(&init), ResultOk);
    AddMode(SrgbMode, virtualnotebook::kSrgbLut);
    AddMode(P3Mode, virtualnotebook::kP3Lut);
    AddMode(WebMode, virtualnotebook::kP3Lut);
    notebook.ForgetRecords();
  }
  void AddMode(ColorFieldMode mode, int gamut) {
    ColorFieldModeInfo info{};
    info.mode = mode;
    files_.Profile(gamut).copy(info.iccPath, 100);
    ASSERT_EQ(library_.AddColorFieldModeInfo(&info), ResultOk);
  }

  // The log of one call; the records are emptied first.
  ResultT Set(int mode) {
    notebook.ForgetRecords();
    return library_.SetColorField(mode);
  }

  testing::AssertionResult LogIs(std::initializer_list<Lines> parts) {
    Lines all;
    for (const Lines& part : parts) all.insert(all.end(), part.begin(), part.end());
    return testsupport::LogIs(notebook, all);
  }

  // --- Parts of the log of a switch to P3Mode ---

  Lines StartLines(const std::wstring& mode) const {
    return {{1, L"mode:" + mode + L"(SetColorField)"},
            {3,
             L"QueryWmiNamespaceProperty WmiMonitorConnectionParams error."
             L"(ColorFieldApi::GetTargetMonitorNameByWmi)"},
            {2, L"GetTargetMonitorNameByWmi Failed!(ColorFieldApi::GetTargetMonitorName)"},
            {1, L"monitorName is " + device_ + L"(ColorFieldApi::GetTargetMonitorName)"},
            {1, L"targetMonitorName is " + device_ + L",pFileName is " + kOldProfile +
                    L"(ColorFieldApi::GetDefaultIccFile)"},
            {0, L"currentIccFileName:" + std::wstring(kOldProfile) +
                    L", targetIccFileName:NVX-P3.icc(ColorFieldApi::IsIccAlreadyAssociated)"}};
  }
  static Lines OpenLines(const std::wstring& path) {
    const auto open = [](const std::wstring& name) {
      return L"GetProfileHandle OpenColorProfile Success!" + name + L", buf size:" +
             std::to_wstring(name.size()) + L", cbDataSize:" +
             std::to_wstring(2 * name.size() + 2) + L"(ColorFieldApi::GetProfileHandle)";
    };
    return {{1, open(path)}, {1, open(std::wstring(kColorDir) + kOldProfile)}};
  }
  Lines InstallLines() const {
    Lines lines = OpenLines(p3Profile_);
    lines.push_back({0, p3Profile_ + L"(ColorFieldApi::AssociateIccFile)"});
    lines.push_back({1, L"WcsDisassociateColorProfileFromDevice Failed, iccFileName is " +
                            p3Profile_ + L"(ColorFieldApi::AssociateIccFile)"});
    return lines;
  }
  // The profile from before is put back.
  static Lines RestoreLines() {
    Lines lines = OpenLines(kOldProfile);
    lines.push_back({0, std::wstring(kOldProfile) + L"(ColorFieldApi::AssociateIccFile)"});
    return lines;
  }
  static Lines EnableLine(const std::wstring& mode) {
    return {{1, L"set colorfield mode is:" + mode + L"(ColorFieldApi::EnableColorFieldMode)"}};
  }
  static Lines FailedLines(const std::wstring& result) {
    return {
        {3, L"Set Color Filed Failed, ret is " + result + L"(ColorFieldApi::EnableColorFieldMode)"},
        {3, L"EnableColorFieldMode error,ret is :" + result + L"(ColorFieldApi::SetColorField)"}};
  }
  const Lines kNoMonitorLine = {
      {3, L"EnableColorFieldByDdcci failed.(ColorFieldApi::EnableColorFieldByDdcci)"}};

  PhysicalMonitor& Device(size_t monitor = 0) {
    return notebook.desktop.at(monitor).physicalMonitors.front();
  }
  std::wstring DefaultProfile() { return notebook.profiles.at(device_).front(); }

  // Every write over DDC/CI since the records were emptied, taken by a monitor or not.
  std::vector<std::string> Sent() const {
    std::vector<std::string> writes;
    for (const auto& call : notebook.calls) {
      if (call.function == "SetVCPFeature") {
        writes.push_back(testsupport::Utf8(call.arguments[1] + L"=" + call.arguments[2]));
      }
    }
    return writes;
  }
  static std::vector<std::string> SentFor(int mode) {
    if (mode == SrgbMode) return {"224=6"};
    if (mode == P3Mode) return {"224=1"};
    return {};
  }

  const std::wstring device_ = virtualnotebook::MonitorDeviceId(kMakersDevice);
  virtualnotebook::InstalledFiles files_;
  virtualnotebook::HostedLibrary library_;
  virtualnotebook::Notebook& notebook = library_.notebook;
  const std::wstring p3Profile_ = Wide(virtualnotebook::FilesOf().Profile(virtualnotebook::kP3Lut));
};

TEST_F(ExternalMonitorScenario, OneSwitch) {
  EXPECT_EQ(Set(P3Mode), ResultOk);
  EXPECT_TRUE(LogIs({StartLines(L"2"),
                     InstallLines(),
                     EnableLine(L"2"),
                     {{1, L"SetColorField mode is :2,ret is 0(ColorFieldApi::SetColorField)"}}}));
  EXPECT_THAT(Device().taken, ElementsAre(VcpWrite{224, 1, true}));
  EXPECT_EQ(DefaultProfile(), L"NVX-P3.icc");
  EXPECT_EQ(notebook.CountCalls("CoreKit::GetDisplayType"), 0u);
}

// A monitor is not asked what it shows: the same mode again is written and saved again.
TEST_F(ExternalMonitorScenario, EachSwitchIsOneWriteAndOneSave) {
  for (const int mode : {P3Mode, P3Mode, SrgbMode}) {
    EXPECT_EQ(Set(mode), ResultOk);
    EXPECT_EQ(notebook.CountCalls("SetVCPFeature"), 1u);
    EXPECT_EQ(notebook.CountCalls("SaveCurrentSettings"), 1u);
  }
  EXPECT_THAT(Device().taken,
              ElementsAre(VcpWrite{224, 1, true}, VcpWrite{224, 1, true}, VcpWrite{224, 6, true}));
}

TEST_F(ExternalMonitorScenario, AMonitorThatRefusesTheValue) {
  Device().answersDdcci = false;
  EXPECT_EQ(Set(P3Mode), ResultColorFieldError);
  EXPECT_TRUE(LogIs({StartLines(L"2"),
                     InstallLines(),
                     EnableLine(L"2"),
                     {{3,
                       L"LCD SetVCPFeature set Failed! Code:224, value:1, physicalMonitorsCount:1, "
                       L"index:0, description:NVX Studio 27(ColorFieldApi::SetMonitorColorField)"}},
                     kNoMonitorLine,
                     FailedLines(L"17"),
                     RestoreLines()}));
  EXPECT_THAT(Device().taken, IsEmpty());
  EXPECT_EQ(DefaultProfile(), kOldProfile);
}

TEST_F(ExternalMonitorScenario, AMonitorThatDoesNotKeepTheValue) {
  notebook.FailCall("SaveCurrentSettings", 1, FALSE, ERROR_GEN_FAILURE);
  EXPECT_EQ(Set(P3Mode), ResultColorFieldError);
  EXPECT_TRUE(LogIs({StartLines(L"2"),
                     InstallLines(),
                     EnableLine(L"2"),
                     {{3, L"SaveCurrentSettings is failed(ColorFieldApi::SetMonitorColorField)"}},
                     kNoMonitorLine,
                     FailedLines(L"17"),
                     RestoreLines()}));
  // The profile went back, the picture did not.
  EXPECT_THAT(Device().taken, ElementsAre(VcpWrite{224, 1, false}));
  EXPECT_EQ(DefaultProfile(), kOldProfile);
}

TEST_F(ExternalMonitorScenario, AModeThatMonitorsDoNotHave) {
  EXPECT_EQ(Set(WebMode), ResultFailed);
  EXPECT_TRUE(LogIs({StartLines(L"3"),
                     InstallLines(),
                     EnableLine(L"3"),
                     {{3, L"mode is error, mode is 3(ColorFieldApi::EnableColorFieldByDdcci)"}},
                     FailedLines(L"1"),
                     RestoreLines()}));
  EXPECT_EQ(DefaultProfile(), kOldProfile);
  EXPECT_EQ(notebook.CountCalls("GetNumberOfPhysicalMonitorsFromHMONITOR"), 0u);
}

TEST_F(ExternalMonitorScenario, OnlyTheIdentityNamesTheMaker) {
  Device().description = L"Generic PnP Monitor";
  EXPECT_EQ(Set(SrgbMode), ResultOk);
  EXPECT_THAT(Device().taken, ElementsAre(VcpWrite{224, 6, true}));
  EXPECT_EQ(notebook.monitorArrays.size(), 2u) << "one in each pass";
}

TEST_F(ExternalMonitorScenario, AllMonitorsOfTheMakerThatStandInFront) {
  PlugInMonitor(notebook, kSecondDevice, L"NVX Studio 24");
  PlugInMonitor(notebook, kOtherDevice, L"Other");
  PlugInMonitor(notebook, kSecondDevice, L"NVX Studio 24");
  EXPECT_EQ(Set(P3Mode), ResultOk);
  EXPECT_EQ(Device(0).Value(224), 1u);
  EXPECT_EQ(Device(1).Value(224), 1u);
  EXPECT_THAT(Device(2).taken, IsEmpty());
  EXPECT_THAT(Device(3).taken, IsEmpty());
}

TEST_F(ExternalMonitorScenario, BehindAnotherMakersMonitorNothingIsFound) {
  notebook.desktop.clear();
  notebook.adapters.clear();
  PlugInMonitor(notebook, kOtherDevice, L"Other");
  PlugInMonitor(notebook, kMakersDevice, L"NVX Studio 27");
  EXPECT_EQ(Set(P3Mode), ResultColorFieldError);
  EXPECT_THAT(Device(1).taken, IsEmpty());
  EXPECT_EQ(notebook.monitorArrays.size(), 1u);
}

// TearDown looks at what has left.
TEST_F(ExternalMonitorScenario, NoModeSendsAnythingElse) {
  std::vector<int> modes = {std::numeric_limits<int>::min(), 256 + SrgbMode, 65536 + P3Mode,
                            std::numeric_limits<int>::max()};
  for (int mode = -16; mode <= 256; ++mode) {
    modes.push_back(mode);
  }
  for (const int mode : modes) {
    const bool known = mode == SrgbMode || mode == P3Mode;
    EXPECT_EQ(Set(mode), known ? ResultOk : ResultFailed) << mode;
    EXPECT_EQ(notebook.CountCalls("SetVCPFeature"), known ? 1u : 0u) << mode;
  }
  EXPECT_THAT(Device().taken, ElementsAre(VcpWrite{224, 6, true}, VcpWrite{224, 1, true}));
}

TEST_F(ExternalMonitorScenario, NoOtherWayTouchesTheMonitor) {
  for (const ColorFieldSetType setType : {1u, 2u, 3u, 4u, 5u, 256u, 0xFFFFFFFFu}) {
    Register(setType);
    for (int mode = -1; mode <= 12; ++mode) {
      Set(mode);
      EXPECT_EQ(notebook.CountCalls("GetNumberOfPhysicalMonitorsFromHMONITOR"), 0u) << setType;
      EXPECT_EQ(notebook.CountCalls("SetVCPFeature"), 0u) << setType;
    }
  }
  EXPECT_THAT(notebook.monitorArrays, IsEmpty());
}

// --- What leaves, whatever the arguments ---

// Numbers around each that means something (modes, set types, the code, the values), in their low
// bytes too, and the limits.
std::vector<int> Numbers() {
  std::vector<int> numbers = {std::numeric_limits<int>::min(),
                              std::numeric_limits<int>::min() + 1,
                              std::numeric_limits<int>::max(),
                              -65536,
                              -256 + SrgbMode,
                              -224,
                              255,
                              256,
                              256 + SrgbMode,
                              256 + P3Mode,
                              65536 + P3Mode,
                              0x01000001};
  for (int number = -3; number <= 13; ++number) numbers.push_back(number);
  for (int number = 223; number <= 225; ++number) numbers.push_back(number);
  return numbers;
}

// Registrations and switches with every number, and what the next switches then send.
TEST_F(ExternalMonitorScenario, NoRegistrationSendsAnythingElse) {
  for (const int number : Numbers()) {
    SCOPED_TRACE(number);
    notebook.ForgetRecords();
    ColorFieldInitInfo init{};
    init.defaultMode = number;
    init.reservedType = static_cast<uint32_t>(number);
    ASSERT_EQ(library_.InitColorFieldInfo(&init), ResultOk);
    ColorFieldModeInfo mode{};
    mode.mode = number;
    mode.gamut = number;
    mode.gamma = mode.temperR = mode.temperG = mode.temperB = number;
    ASSERT_EQ(library_.AddColorFieldModeInfo(&mode), ResultOk);
    UserDesignInfo user{};
    user.mode = user.gamut = user.whitePointMode = user.gammaMode = number;
    ASSERT_EQ(library_.AddUsrDesignInfo(&user), ResultOk);
    EXPECT_THAT(Sent(), IsEmpty());
    EXPECT_EQ(library_.SetColorField(SrgbMode), ResultOk);
    EXPECT_EQ(library_.SetColorField(P3Mode), ResultOk);
    EXPECT_THAT(Sent(), ElementsAre("224=6", "224=1"));
  }
}

// Only the set type 0 and the modes 1 and 2, both as they are stored, lead to the monitor.
TEST_F(ExternalMonitorScenario, NoResetSendsAnythingElse) {
  const testsupport::ScopedKey settings(HKEY_LOCAL_MACHINE, kSettings);
  for (const int setType : Numbers()) {
    for (const int mode : Numbers()) {
      SCOPED_TRACE(std::to_string(setType) + ", " + std::to_string(mode));
      notebook.ForgetRecords();
      ASSERT_EQ(library_.SetColorFieldSetType(setType), ResultOk);
      ASSERT_EQ(library_.SetColorFieldResetMode(mode), ResultOk);
      library_.ResetColorField();
      EXPECT_EQ(Sent(), setType == 0 ? SentFor(mode) : std::vector<std::string>());
    }
  }
}

// The system has a profile that no mode knows: the default mode's output is switched on, unless it
// is the stored one.
TEST_F(ExternalMonitorScenario, NoSynchronisationSendsAnythingElse) {
  const testsupport::ScopedKey settings(HKEY_LOCAL_MACHINE, kSettings);
  for (const int defaultMode : Numbers()) {
    ColorFieldInitInfo init{};
    init.defaultMode = defaultMode;
    ASSERT_EQ(library_.InitColorFieldInfo(&init), ResultOk);
    for (const int stored : Numbers()) {
      SCOPED_TRACE(std::to_string(defaultMode) + ", " + std::to_string(stored));
      notebook.ForgetRecords();
      ASSERT_EQ(library_.SetColorFieldCurrentMode(stored), ResultOk);
      library_.SyncSysColorField();
      library_.SyncCurrentModeIccFile();
      EXPECT_EQ(Sent(), defaultMode == stored ? std::vector<std::string>() : SentFor(defaultMode));
    }
  }
}

// The other exports that take a number, or a record with one.
TEST_F(ExternalMonitorScenario, NothingElseReachesTheMonitor) {
  const testsupport::ScopedKey settings(HKEY_LOCAL_MACHINE, kSettings);
  for (const int number : Numbers()) {
    const auto unsignedNumber = static_cast<uint32_t>(number);
    library_.SetEyeProtectHandleType(number);
    library_.SetEyeProtectValue(number);
    library_.SetTemperatureValue(number);
    library_.SetColorTemperatureType(number);
    library_.SetFeatureSupport(number, number);
    library_.SetDisplayerCheck(number, number);
    library_.SetFrameWorkType(number);
    const Color2DInfo two{.temperature = unsignedNumber, .colorBlue = unsignedNumber};
    library_.Set2DColorTemperature(&two);
    const double gain = number;
    const Color3DInfo three{
        .r = gain, .g = gain, .b = gain, .colorBlue = unsignedNumber, .protectValue = gain};
    library_.Set3DColorTemperature(&three);
    const FusionInfo input{.status = unsignedNumber, .colorInfo = three};
    Color3DInfo fused{};
    library_.Fusion(unsignedNumber, &input, &fused);
    WhitePointFineTueInfo tuning{.id = "x", .mode = number, .r = 1, .g = 1, .b = 1};
    try {
      library_.WhitePointFineTue(&tuning);
    } catch (const std::out_of_range&) {
      // what a mode outside the table of modes gives
    }
    UserDesignInfo design{};
    design.mode = design.gamut = design.whitePointMode = design.gammaMode = number;
    design.id[0] = design.modeName[0] = 'x';
    library_.SaveUserSelfColor(&design);
    library_.EditUserColorField(&design, "x");
    library_.SetUserColorField("x");
    library_.DeleteUserSelfColor("x");
  }
  std::filesystem::remove_all("C:\\ProgramData\\Comms\\NxVelora\\User");
  EXPECT_THAT(Sent(), IsEmpty());
  EXPECT_EQ(notebook.CountCalls("GetPhysicalMonitorsFromHMONITOR"), 0u);
}

// Once each, a call on the way to the monitors fails. What is not a success leaves the old profile.
TEST_F(ExternalMonitorScenario, EachCallFailsOnce) {
  PlugInMonitor(notebook, kSecondDevice, L"NVX Studio 24");
  for (const char* function :
       {"EnumDisplayMonitors", "GetMonitorInfoW", "EnumDisplayDevicesW",
        "GetNumberOfPhysicalMonitorsFromHMONITOR", "GetPhysicalMonitorsFromHMONITOR",
        "SetVCPFeature", "SaveCurrentSettings"}) {
    for (unsigned n = 1; n <= 4; ++n) {
      SCOPED_TRACE(function + std::to_string(n));
      notebook.ClearFaults();
      notebook.profiles[device_] = {kOldProfile};
      notebook.FailCall(function, n, FALSE);
      const ResultT result = Set(P3Mode);
      EXPECT_THAT(result, AnyOf(ResultOk, ResultFailed, ResultColorFieldError));
      if (result != ResultOk) {
        EXPECT_EQ(DefaultProfile(), kOldProfile);
      }
      EXPECT_EQ(notebook.CountOpenMonitorArrays(), 0u);
    }
  }
}

}  // namespace
}  // namespace scenarios
