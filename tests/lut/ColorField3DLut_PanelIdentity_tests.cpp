#include "lut/LutMachine.h"
#include "support/FailingNew.h"

namespace lutmachine {
namespace {

class ColorField3DLutPanelIdentity : public LutMachine {
 protected:
  // Loads the EDID of a panel that differs from the default one, and the header of a block.
  void Load(const PanelDescription& panel, const virtualnotebook::BlockHeader& header) {
    PlugIn(virtualnotebook::MakeEdid(panel));
    ASSERT_TRUE(engine.GetLcdEdidData());
    LoadHeader(virtualnotebook::MakeLutBlock(header, {}));
  }
  void LoadHeader(const Bytes& block) {
    engine.OneLutTypeIsValid(1, block.data(), block.size());
    notebook.ForgetRecords();
  }
  virtualnotebook::BlockHeader OwnHeader() const {
    return virtualnotebook::HeaderOf(machine.panel, 0);
  }

  static virtualnotebook::Monitor MonitorNamed(const std::wstring& name) {
    virtualnotebook::Monitor monitor;
    monitor.deviceName = name;
    return monitor;
  }
  void ConnectASecondMonitor() {
    notebook.adapters.push_back({L"\\\\.\\DISPLAY2", L"Adapter", {MonitorNamed(L"External")}});
  }

  // The texts of the queries that were run, in order.
  Lines Queries() const {
    Lines queries;
    for (const auto& call : notebook.calls) {
      if (call.function == "WmiQuery::ExcuteQueryImpl") {
        queries.push_back(Utf8(call.arguments.at(1)));
      }
    }
    return queries;
  }
};

// --- GetLcdEdidData ---

TEST_F(ColorField3DLutPanelIdentity, GetLcdEdidData_ReadsTheEdid) {
  EXPECT_TRUE(engine.GetLcdEdidData());
  EXPECT_EQ(Log(), Lines({GamutLine(machine.panel)}));
  EXPECT_EQ(engine.GetEdidCopy().GetSerialNumber(), "01020304");
  EXPECT_EQ(engine.GetEdidCopy().GetWeek(), 8);
  EXPECT_EQ(engine.GetEdidCopy().GetYear(), 2024);
}

TEST_F(ColorField3DLutPanelIdentity, GetLcdEdidData_OpensTheKeyForReading) {
  ASSERT_TRUE(engine.GetLcdEdidData());
  EXPECT_EQ(LastArgument("RegOpenKeyExA", 0), "HKEY_LOCAL_MACHINE");
  EXPECT_EQ(LastArgument("RegOpenKeyExA", 1), kEdidPath);
  EXPECT_EQ(LastArgument("RegOpenKeyExA", 2), "0");
  EXPECT_EQ(LastArgument("RegOpenKeyExA", 3), std::to_string(0x20019));
  EXPECT_EQ(notebook.CountCalls("RegQueryValueExA"), 2u);
  EXPECT_EQ(notebook.CountCalls("RegCloseKey"), 1u);
}

TEST_F(ColorField3DLutPanelIdentity, GetLcdEdidData_SecondCallTouchesNothing) {
  ASSERT_TRUE(engine.GetLcdEdidData());
  notebook.ForgetRecords();
  Unplug();
  EXPECT_TRUE(engine.GetLcdEdidData());
  EXPECT_TRUE(notebook.calls.empty());
}

TEST_F(ColorField3DLutPanelIdentity, GetLcdEdidData_NoPath) {
  notebook.AnswerWmi(kCimV2, kAnyMonitor, L"PNPDeviceID", {L"DISPLAY\\NVX1234"});
  EXPECT_FALSE(engine.GetLcdEdidData());
  EXPECT_EQ(
      Log(),
      Lines({Error("GetPnpDeviceID",
                   "GetPnpDeviceID Failed! deviceId is invalid, deviceId is DISPLAY\\NVX1234"),
             Error("GetEdidDataPath", "GetPnpDeviceID Failed! edidRegistryPath is empty.")}));
  EXPECT_EQ(notebook.CountCalls("RegOpenKeyExA"), 0u);
}

TEST_F(ColorField3DLutPanelIdentity, GetLcdEdidData_NoKey) {
  Unplug();
  EXPECT_FALSE(engine.GetLcdEdidData());
  EXPECT_EQ(Log(),
            Lines({Error("GetLcdEdidData", "RegOpenKeyExA Failed! edidFullPath:" + kEdidPath)}));
  EXPECT_EQ(notebook.CountCalls("RegCloseKey"), 0u);
}

TEST_F(ColorField3DLutPanelIdentity, GetLcdEdidData_NoValue) {
  notebook.FailCall("RegQueryValueExA", 1, ERROR_FILE_NOT_FOUND);
  EXPECT_FALSE(engine.GetLcdEdidData());
  EXPECT_EQ(Log(), Lines({Error("GetLcdEdidData",
                                "RegQuery max Edid value length Failed, maxValueLength is 0")}));
  EXPECT_EQ(notebook.CountCalls("RegCloseKey"), 1u);
}

TEST_F(ColorField3DLutPanelIdentity, GetLcdEdidData_SizeOutsideItsLimits) {
  for (const size_t size : {0u, 2560u, 2561u, 4096u}) {
    Bytes edid = machine.edid;
    edid.resize(size);
    PlugIn(edid);
    notebook.ForgetRecords();
    EXPECT_FALSE(engine.GetLcdEdidData());
    EXPECT_EQ(
        Log(),
        Lines({Error("GetLcdEdidData", "RegQuery max Edid value length Failed, maxValueLength is " +
                                           std::to_string(size))}));
    EXPECT_EQ(notebook.CountCalls("RegQueryValueExA"), 1u);
    EXPECT_EQ(notebook.CountCalls("RegCloseKey"), 1u);
  }
}

TEST_F(ColorField3DLutPanelIdentity, GetLcdEdidData_TooShortForTheParser) {
  for (const size_t size : {1u, 34u}) {
    Bytes edid = machine.edid;
    edid.resize(size);
    PlugIn(edid);
    notebook.ForgetRecords();
    EXPECT_FALSE(engine.GetLcdEdidData());
    EXPECT_EQ(Log(), Lines());
    EXPECT_EQ(notebook.CountCalls("RegQueryValueExA"), 2u);
    EXPECT_EQ(notebook.CountCalls("RegCloseKey"), 1u);
  }
}

TEST_F(ColorField3DLutPanelIdentity, GetLcdEdidData_LeastAndGreatestSize) {
  for (const size_t size : {35u, 2559u}) {
    Bytes edid = machine.edid;
    edid.resize(size);
    PlugIn(edid);
    velora::ColorField3DLut fresh;
    EXPECT_TRUE(fresh.GetLcdEdidData()) << size;
  }
}

TEST_F(ColorField3DLutPanelIdentity, GetLcdEdidData_NoMemory) {
  const testsupport::FailingNew none(1);
  EXPECT_FALSE(engine.GetLcdEdidData());
  EXPECT_EQ(Log(), Lines({Error("GetLcdEdidData", "outValue is nullptr!")}));
  EXPECT_EQ(notebook.CountCalls("RegCloseKey"), 1u);
}

TEST_F(ColorField3DLutPanelIdentity, GetLcdEdidData_SecondQueryFails) {
  notebook.FailCall("RegQueryValueExA", 2, ERROR_MORE_DATA);
  EXPECT_FALSE(engine.GetLcdEdidData());
  EXPECT_EQ(Log(), Lines());
  EXPECT_EQ(notebook.CountCalls("RegCloseKey"), 1u);
  // Nothing was remembered: the next call starts from the device id.
  notebook.ForgetRecords();
  EXPECT_TRUE(engine.GetLcdEdidData());
  EXPECT_EQ(Queries(), Lines({Utf8(kAnyMonitor)}));
}

TEST_F(ColorField3DLutPanelIdentity, GetLcdEdidData_ParserRefuses) {
  Bytes edid = machine.edid;
  edid[8] = edid[9] = 0;
  PlugIn(edid);
  EXPECT_FALSE(engine.GetLcdEdidData());
  ASSERT_EQ(notebook.log.size(), 1u);
  PlugIn(machine.edid);
  EXPECT_TRUE(engine.GetLcdEdidData());
}

// --- GetPnpDeviceID and what it asks ---

TEST_F(ColorField3DLutPanelIdentity, GetPnpDeviceID_OneMonitor) {
  EXPECT_EQ(engine.GetPnpDeviceID(), kDeviceId);
  EXPECT_EQ(Log(), Lines());
  EXPECT_EQ(Queries(), Lines({Utf8(kAnyMonitor)}));
  EXPECT_EQ(LastArgument("WmiQuery::ExcuteQueryImpl", 2), "PNPDeviceID");
  EXPECT_EQ(LastArgument("WmiQuery::ExcuteQueryImpl", 4), "1");
}

TEST_F(ColorField3DLutPanelIdentity, GetPnpDeviceID_FirstRowIsTaken) {
  notebook.AnswerWmi(kCimV2, kAnyMonitor, L"PNPDeviceID", {L"A\\B\\C", L"D\\E\\F"});
  EXPECT_EQ(engine.GetPnpDeviceID(), "A\\B\\C");
}

TEST_F(ColorField3DLutPanelIdentity, GetPnpDeviceID_TwoBackslashesAreEnough) {
  for (const wchar_t* id : {L"\\\\", L"A\\\\", L"A\\B\\", L"A\\B\\C\\D"}) {
    notebook.AnswerWmi(kCimV2, kAnyMonitor, L"PNPDeviceID", {id});
    EXPECT_EQ(engine.GetPnpDeviceID(), Utf8(id));
  }
  EXPECT_EQ(Log(), Lines());
}

TEST_F(ColorField3DLutPanelIdentity, GetPnpDeviceID_TooFewBackslashes) {
  for (const wchar_t* id : {L"DISPLAY", L"DISPLAY\\NVX1234", L"\\"}) {
    notebook.AnswerWmi(kCimV2, kAnyMonitor, L"PNPDeviceID", {id});
    notebook.ForgetRecords();
    EXPECT_EQ(engine.GetPnpDeviceID(), "");
    EXPECT_EQ(
        Log(),
        Lines({Error("GetPnpDeviceID",
                     "GetPnpDeviceID Failed! deviceId is invalid, deviceId is " + Utf8(id))}));
  }
}

TEST_F(ColorField3DLutPanelIdentity, GetPnpDeviceID_FailedQueryGivesTheCaption) {
  notebook.AnswerWmi(kCimV2, kCaption, L"Caption", {L"Generic Monitor"});
  const auto expectCaption = [this] {
    notebook.ForgetRecords();
    EXPECT_EQ(engine.GetPnpDeviceID(), "Generic Monitor");
    EXPECT_EQ(Log(),
              Lines({Error("GetPnpDeviceID", "QueryCimv2NameSpaceProperty failed, id is ")}));
    EXPECT_EQ(Queries(), Lines({Utf8(kAnyMonitor), Utf8(kCaption)}));
  };
  notebook.AnswerWmi(kCimV2, kAnyMonitor, L"PNPDeviceID", {});
  expectCaption();
  notebook.AnswerWmi(kCimV2, kAnyMonitor, L"PNPDeviceID", {L""});
  expectCaption();
  notebook.FailWmi(kCimV2, kAnyMonitor, -1);
  expectCaption();
}

TEST_F(ColorField3DLutPanelIdentity, GetLcdEdidData_CaptionGoesIntoThePath) {
  notebook.FailWmi(kCimV2, kAnyMonitor, -1);
  notebook.AnswerWmi(kCimV2, kCaption, L"Caption", {L"Generic Monitor"});
  EXPECT_FALSE(engine.GetLcdEdidData());
  EXPECT_EQ(Log(),
            Lines({Error("GetPnpDeviceID", "QueryCimv2NameSpaceProperty failed, id is "),
                   Error("GetLcdEdidData",
                         "RegOpenKeyExA Failed! edidFullPath:SYSTEM\\CurrentControlSet\\Enum\\"
                         "Generic Monitor\\Device Parameters\\")}));
}

TEST_F(ColorField3DLutPanelIdentity, GetLCDNameByWMI_Failure) {
  const Lines failed = {Error("GetLCDNameByWMI", "Get LCD Name and query Caption by WMI failed.")};
  notebook.AnswerWmi(kCimV2, kCaption, L"Caption", {});
  EXPECT_EQ(engine.GetLCDNameByWMI(), L"");
  EXPECT_EQ(Log(), failed);
  notebook.ForgetRecords();
  notebook.FailWmi(kCimV2, kCaption, 5);
  EXPECT_EQ(engine.GetLCDNameByWMI(), L"");
  EXPECT_EQ(Log(), failed);
}

// An empty caption is a caption.
TEST_F(ColorField3DLutPanelIdentity, GetLCDNameByWMI_EmptyText) {
  notebook.AnswerWmi(kCimV2, kCaption, L"Caption", {L"", L"Second"});
  EXPECT_EQ(engine.GetLCDNameByWMI(), L"");
  EXPECT_EQ(Log(), Lines());
}

TEST_F(ColorField3DLutPanelIdentity, GetEdidDataPath_NothingCanBeAsked) {
  notebook.FailWmi(kCimV2, kAnyMonitor, -1);
  notebook.FailWmi(kCimV2, kCaption, -1);
  EXPECT_EQ(engine.GetEdidDataPath(), "");
  EXPECT_EQ(Log(),
            Lines({Error("GetPnpDeviceID", "QueryCimv2NameSpaceProperty failed, id is "),
                   Error("GetLCDNameByWMI", "Get LCD Name and query Caption by WMI failed."),
                   Error("GetEdidDataPath", "GetPnpDeviceID Failed! edidRegistryPath is empty.")}));
}

TEST_F(ColorField3DLutPanelIdentity, GetEdidDataPath_OfTheDevice) {
  EXPECT_EQ(engine.GetEdidDataPath(), kEdidPath);
}

TEST_F(ColorField3DLutPanelIdentity, GetPnpDeviceID_SeveralMonitorsAskForTheMakersTwice) {
  ConnectASecondMonitor();
  notebook.AnswerWmi(kCimV2, kBuiltInMonitor, L"PNPDeviceID", {L"DISPLAY\\OWN\\1"});
  EXPECT_EQ(engine.GetPnpDeviceID(), "DISPLAY\\OWN\\1");
  EXPECT_EQ(Log(), Lines({Info("GetPnpDeviceID", "Multiple monitors are connected!")}));
  EXPECT_EQ(Queries(), Lines({Utf8(kBuiltInMonitor), Utf8(kBuiltInMonitor)}));
}

TEST_F(ColorField3DLutPanelIdentity, GetPnpDeviceID_SeveralMonitorsNoneOfTheMakers) {
  ConnectASecondMonitor();
  const auto expectAnyMonitor = [this] {
    notebook.ForgetRecords();
    EXPECT_EQ(engine.GetPnpDeviceID(), kDeviceId);
    EXPECT_EQ(Log(), Lines({Info("GetPnpDeviceID", "Multiple monitors are connected!"),
                            Error("GetPnpDeviceID",
                                  "Norvex monitor QueryCimv2NameSpaceProperty failed, id is ")}));
    EXPECT_EQ(Queries(), Lines({Utf8(kBuiltInMonitor), Utf8(kAnyMonitor)}));
  };
  expectAnyMonitor();
  notebook.AnswerWmi(kCimV2, kBuiltInMonitor, L"PNPDeviceID", {L""});
  expectAnyMonitor();
  notebook.FailWmi(kCimV2, kBuiltInMonitor, -1);
  expectAnyMonitor();
}

// The second run of the manufacturer's query is the one that counts.
TEST_F(ColorField3DLutPanelIdentity, GetPnpDeviceID_SecondRunOfTheMakersQueryFails) {
  ConnectASecondMonitor();
  notebook.AnswerWmi(kCimV2, kBuiltInMonitor, L"PNPDeviceID", {L"DISPLAY\\OWN\\1"});
  notebook.AnswerWmi(kCimV2, kCaption, L"Caption", {L"Generic Monitor"});
  notebook.FailCall("WmiQuery::ExcuteQueryImpl", 2, static_cast<uint64_t>(-1));
  EXPECT_EQ(engine.GetPnpDeviceID(), "Generic Monitor");
  EXPECT_EQ(Log(), Lines({Info("GetPnpDeviceID", "Multiple monitors are connected!"),
                          Error("GetPnpDeviceID", "QueryCimv2NameSpaceProperty failed, id is ")}));
}

TEST_F(ColorField3DLutPanelIdentity, HasMultipleMonitors_CountsOverAllAdapters) {
  const virtualnotebook::Adapter none = {L"\\\\.\\DISPLAY1", L"Adapter", {}};
  const virtualnotebook::Adapter one = {L"\\\\.\\DISPLAY2", L"Adapter", {MonitorNamed(L"A")}};
  const virtualnotebook::Adapter other = {L"\\\\.\\DISPLAY3", L"Adapter", {MonitorNamed(L"B")}};
  const virtualnotebook::Adapter two = {
      L"\\\\.\\DISPLAY4", L"Adapter", {MonitorNamed(L"C"), MonitorNamed(L"D")}};
  notebook.adapters = {};
  EXPECT_FALSE(engine.HasMultipleMonitors());
  notebook.adapters = {none, one, none};
  EXPECT_FALSE(engine.HasMultipleMonitors());
  notebook.adapters = {none, one, none, other};
  EXPECT_TRUE(engine.HasMultipleMonitors());
  notebook.adapters = {two};
  EXPECT_TRUE(engine.HasMultipleMonitors());
}

TEST_F(ColorField3DLutPanelIdentity, HasMultipleMonitors_StopsAtTheSecond) {
  notebook.adapters = {{L"\\\\.\\DISPLAY1",
                        L"Adapter",
                        {MonitorNamed(L"A"), MonitorNamed(L"B"), MonitorNamed(L"C")}},
                       {L"\\\\.\\DISPLAY2", L"Adapter", {MonitorNamed(L"D")}}};
  EXPECT_TRUE(engine.HasMultipleMonitors());
  EXPECT_EQ(notebook.CountCalls("EnumDisplayDevicesW"), 3u);  // one adapter, two monitors
  EXPECT_EQ(LastArgument("EnumDisplayDevicesW", 0), "\\\\.\\DISPLAY1");
  EXPECT_EQ(LastArgument("EnumDisplayDevicesW", 1), "1");
  EXPECT_EQ(LastArgument("EnumDisplayDevicesW", 3), "1");  // the interface name
}

// --- IsLcdDataValid ---

TEST_F(ColorField3DLutPanelIdentity, IsLcdDataValid_OwnHeader) {
  Load(machine.panel, OwnHeader());
  EXPECT_EQ(engine.IsLcdDataValid(), 0);
  EXPECT_EQ(Log(), Lines());
}

TEST_F(ColorField3DLutPanelIdentity, IsLcdDataValid_AnyDifference) {
  std::vector<virtualnotebook::BlockHeader> headers(6, OwnHeader());
  headers[0].serialNumber = "01020305";
  headers[1].vendor = "NVY#";
  headers[2].vendor = "nvx#";
  headers[3].week = "09";
  headers[4].year = "2023";
  headers[5].vendor = "NVX ";
  for (const auto& header : headers) {
    Load(machine.panel, header);
    EXPECT_EQ(engine.IsLcdDataValid(), 1);
    EXPECT_EQ(Log(), Lines({InvalidLine(header, machine.panel)}));
  }
}

TEST_F(ColorField3DLutPanelIdentity, IsLcdDataValid_SerialIsComparedInItsCase) {
  PanelDescription panel;
  panel.serial = {0xAB, 0xCD, 0xEF, 0x01};
  auto header = virtualnotebook::HeaderOf(panel, 0);
  Load(panel, header);
  EXPECT_EQ(engine.IsLcdDataValid(), 0);
  header.serialNumber = "abcdef01";
  LoadHeader(virtualnotebook::MakeLutBlock(header, {}));
  EXPECT_EQ(engine.IsLcdDataValid(), 1);
  EXPECT_EQ(Log(), Lines({InvalidLine(header, panel)}));
}

TEST_F(ColorField3DLutPanelIdentity, IsLcdDataValid_DatesAreNumbers) {
  for (const char* week : {"08", "8 ", " 8", "8x", "+8"}) {
    auto header = OwnHeader();
    header.week = week;
    Load(machine.panel, header);
    EXPECT_EQ(engine.IsLcdDataValid(), 0) << week;
  }
}

TEST_F(ColorField3DLutPanelIdentity, IsLcdDataValid_Week54IsZero) {
  PanelDescription panel;
  panel.week = 54;
  auto header = virtualnotebook::HeaderOf(panel, 0);
  header.week = "54";
  Load(panel, header);
  EXPECT_EQ(engine.IsLcdDataValid(), 1);
  EXPECT_EQ(Log(), Lines({InvalidLine(header, panel)}));
  header.week = "00";
  LoadHeader(virtualnotebook::MakeLutBlock(header, {}));
  EXPECT_EQ(engine.IsLcdDataValid(), 0);
}

TEST_F(ColorField3DLutPanelIdentity, IsLcdDataValid_DatesThatAreNoNumbers) {
  auto header = OwnHeader();
  header.week = "xx";
  Load(machine.panel, header);
  EXPECT_EQ(engine.IsLcdDataValid(), 1);
  EXPECT_EQ(Log(), Lines({Error("IsLcdDataValid",
                                "IsLcdDataValid exception,msg:stoi , biosHeaderV2 Week:xx , "
                                "biosHeaderV2 Year:2024")}));
  header = OwnHeader();
  header.year = "year";
  LoadHeader(virtualnotebook::MakeLutBlock(header, {}));
  EXPECT_EQ(engine.IsLcdDataValid(), 1);
  EXPECT_EQ(Log(), Lines({Error("IsLcdDataValid",
                                "IsLcdDataValid exception,msg:stoi , biosHeaderV2 Week:08 , "
                                "biosHeaderV2 Year:year")}));
}

// The comparison ends at the first difference: what comes behind it is not converted.
TEST_F(ColorField3DLutPanelIdentity, IsLcdDataValid_DifferenceAheadOfABadDate) {
  std::vector<virtualnotebook::BlockHeader> headers(3, OwnHeader());
  headers[0].serialNumber = "99999999";
  headers[1].vendor = "XYZ#";
  headers[2].week = "09";
  for (auto& header : headers) {
    if (header.week == "08") {
      header.week = "xx";
    }
    header.year = "year";
    Load(machine.panel, header);
    EXPECT_EQ(engine.IsLcdDataValid(), 1);
    EXPECT_EQ(Log(), Lines({InvalidLine(header, machine.panel)}));
  }
}

TEST_F(ColorField3DLutPanelIdentity, IsLcdDataValid_ZeroFilledHead) {
  Load(machine.panel, OwnHeader());
  LoadHeader(Bytes(128, 0));
  EXPECT_EQ(engine.IsLcdDataValid(), 1);
  // The zero characters of the serial end the line as the logger sees it.
  EXPECT_EQ(Log(), Lines({"1 LCD Invalid! Bios SN:"}));
}

// --- IsLcdChanged, IsLcdChangedGamma ---

TEST_F(ColorField3DLutPanelIdentity, IsLcdChanged_OwnPanel) {
  EXPECT_EQ(engine.IsLcdChanged(2), 0);
  EXPECT_EQ(Log(), Lines({GamutLine(machine.panel)}));
  EXPECT_EQ(ReadFileBytes(DataFile("P3.bin")), Block(2));
}

TEST_F(ColorField3DLutPanelIdentity, IsLcdChanged_NoEdidLeavesTheFilesAlone) {
  Unplug();
  EXPECT_EQ(engine.IsLcdChanged(2), 1);
  EXPECT_EQ(Log(),
            Lines({Error("GetLcdEdidData", "RegOpenKeyExA Failed! edidFullPath:" + kEdidPath),
                   Error("IsLcdChanged", "Get LCD EDID Data error.")}));
  EXPECT_EQ(notebook.CountCalls("_access"), 0u);
}

TEST_F(ColorField3DLutPanelIdentity, IsLcdChanged_UpdateFails) {
  notebook.firmwareTable.clear();
  EXPECT_EQ(engine.IsLcdChanged(2), 1);
  EXPECT_EQ(Log(),
            Lines({GamutLine(machine.panel),
                   Error("ReadBiosLutDataBlock", "GetSystemFirmwareTable Failed! Error Code:" +
                                                     std::to_string(ERROR_NOT_FOUND)),
                   Error("GetSourceDataBlock", "ReadBiosLutDataBlock Failed!"),
                   Error("IsLcdChanged", "UpdateThreeLutBinFile3D Failed! mode:2")}));
}

TEST_F(ColorField3DLutPanelIdentity, IsLcdChanged_ForeignPanel) {
  PanelDescription foreign;
  foreign.serial = {9, 9, 9, 9};
  PlugIn(virtualnotebook::MakeEdid(foreign));
  EXPECT_EQ(engine.IsLcdChanged(2), 1);
  EXPECT_EQ(Log(),
            Lines({GamutLine(foreign), InvalidLine(OwnHeader(), foreign),
                   Error("IsLcdChanged", "LCD data is not match or get data error, ret is 1")}));
}

// A good bin file's own header is what the panel is compared with: no look at the firmware.
TEST_F(ColorField3DLutPanelIdentity, IsLcdChanged_ComparesTheBinFile) {
  PanelDescription other;
  other.serial = {9, 9, 9, 9};
  WriteFileBytes(DataFile("P3.bin"), MakeBlock(other, 2));
  EXPECT_EQ(engine.IsLcdChanged(2), 1);
  EXPECT_EQ(Log(),
            Lines({GamutLine(machine.panel),
                   InvalidLine(virtualnotebook::HeaderOf(other, 2), machine.panel),
                   Error("IsLcdChanged", "LCD data is not match or get data error, ret is 1")}));
  EXPECT_EQ(notebook.CountCalls("GetSystemFirmwareTable"), 0u);
}

TEST_F(ColorField3DLutPanelIdentity, IsLcdChangedGamma_OwnPanel) {
  EXPECT_EQ(engine.IsLcdChangedGamma(), 0);
  EXPECT_EQ(Log(), Lines({GamutLine(machine.panel),
                          Info("IsGammaLutBinFileNeedUpdate", "GammaLutBinFile not Exist")}));
  Bytes stride = Block(160);
  stride.resize(24725, 0xFF);
  EXPECT_EQ(ReadFileBytes(DataFile("Gamma.bin")), stride);
}

TEST_F(ColorField3DLutPanelIdentity, IsLcdChangedGamma_NoEdid) {
  Unplug();
  EXPECT_EQ(engine.IsLcdChangedGamma(), 1);
  EXPECT_EQ(Log(),
            Lines({Error("GetLcdEdidData", "RegOpenKeyExA Failed! edidFullPath:" + kEdidPath),
                   Error("IsLcdChangedGamma", "Get LCD EDID Data error.")}));
}

TEST_F(ColorField3DLutPanelIdentity, IsLcdChangedGamma_UpdateFails) {
  notebook.firmwareTable.clear();
  EXPECT_EQ(engine.IsLcdChangedGamma(), 1);
  EXPECT_EQ(Log(),
            Lines({GamutLine(machine.panel),
                   Info("IsGammaLutBinFileNeedUpdate", "GammaLutBinFile not Exist"),
                   Error("ReadBiosLutDataBlock", "GetSystemFirmwareTable Failed! Error Code:" +
                                                     std::to_string(ERROR_NOT_FOUND)),
                   Error("GetSourceDataBlockGamma", "ReadBiosLutDataBlock Failed!"),
                   Error("IsLcdChangedGamma", "UpdateGammaLutBinFile Failed!")}));
}

TEST_F(ColorField3DLutPanelIdentity, IsLcdChangedGamma_ForeignPanel) {
  WriteFileBytes(DataFile("Gamma.bin"), GoldenBlock(160));
  EXPECT_EQ(engine.IsLcdChangedGamma(), 1);
  EXPECT_EQ(
      Log(),
      Lines({GamutLine(machine.panel),
             InvalidLine(virtualnotebook::HeaderOf(nominal, 160), machine.panel),
             Error("IsLcdChangedGamma", "LCD data is not match or get data error, ret is 1")}));
}

// --- GetVendor, GetEdidCopy ---

TEST_F(ColorField3DLutPanelIdentity, GetVendor_WritesTheText) {
  char buffer[5] = {'?', '?', '?', '?', '?'};
  engine.GetVendor(buffer, sizeof buffer);
  EXPECT_STREQ(buffer, "NVX#");
  EXPECT_EQ(Log(), Lines({GamutLine(machine.panel)}));
}

TEST_F(ColorField3DLutPanelIdentity, GetVendor_NoRoom) {
  ASSERT_TRUE(engine.GetLcdEdidData());
  for (const int length : {4, 1, 0, -1}) {
    notebook.ForgetRecords();
    char buffer[5] = {'?', '?', '?', '?', '?'};
    engine.GetVendor(buffer, length);
    EXPECT_EQ(Log(), Lines({Error("GetVendor", "strcpy_s failed, err = %d\n")})) << length;
    EXPECT_EQ(buffer[0], length > 0 ? '\0' : '?') << length;
    EXPECT_EQ(buffer[4], '?') << length;
  }
}

TEST_F(ColorField3DLutPanelIdentity, GetVendor_NullBuffer) {
  ASSERT_TRUE(engine.GetLcdEdidData());
  notebook.ForgetRecords();
  engine.GetVendor(nullptr, 5);
  EXPECT_EQ(Log(), Lines({Error("GetVendor", "strcpy_s failed, err = %d\n")}));
}

TEST_F(ColorField3DLutPanelIdentity, GetVendor_UnknownPanelLeavesTheBuffer) {
  Unplug();
  char buffer[5] = {'?', '?', '?', '?', '?'};
  engine.GetVendor(buffer, sizeof buffer);
  EXPECT_EQ(std::string(buffer, sizeof buffer), "?????");
  EXPECT_EQ(Log(),
            Lines({Error("GetLcdEdidData", "RegOpenKeyExA Failed! edidFullPath:" + kEdidPath),
                   Error("GetVendor", "Get LCD EDID Data error.")}));
}

TEST_F(ColorField3DLutPanelIdentity, GetEdidCopy_WithoutEdidIsEmpty) {
  Unplug();
  const velora::LcdEdidParse edid = engine.GetEdidCopy();
  EXPECT_EQ(edid.GetVendor(), "");
  EXPECT_EQ(edid.GetWeek(), -1);
  EXPECT_EQ(edid.GetYear(), -1);
}

TEST_F(ColorField3DLutPanelIdentity, GetEdidCopy_HasThePrimaries) {
  const velora::LcdEdidParse edid = engine.GetEdidCopy();
  EXPECT_EQ(edid.GetVendor(), "NVX#");
  EXPECT_EQ(edid.GetRedX(), 696.0 / 1024);    // 0.680
  EXPECT_EQ(edid.GetWhiteX(), 320.0 / 1024);  // 0.3127
}

}  // namespace
}  // namespace lutmachine
