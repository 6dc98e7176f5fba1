// The panel's EDID missing, of any length, of another panel: a panel that can't be told to be the
// factory's gets the golden LUT.
#include <gtest/gtest.h>

#include <algorithm>

#include "scenarios/BrokenMachine.h"
#include "support/NotebookTest.h"

namespace scenarios {
namespace {

class BadEdid : public BrokenMachine {
 protected:
  void SetEdidSize(size_t size) {
    Bytes edid = WholeMachine().edid;
    edid.resize(size, 0xFF);
    panel.Replace(edid);
  }

  // The golden LUT, without a look at bin file and firmware.
  void ExpectGoldenLutFor(const Lines& reasons) {
    const Outcome outcome = SetP3Mode();
    ExpectGoldenLut(outcome);
    EXPECT_EQ(
        outcome.lutLog,
        (Lines{LutLine(1, "SetDisplayer by 3DLut, mode is 2", "SetDisplayerBy3DLut")} + reasons +
         Lines{LutLine(3, "Get LCD EDID Data error.", "IsLcdChanged"),
               LutLine(1, "LCD changed! mode:2", "Sync3DLutDataTable"),
               LutLine(1, "Not e-book mode.", "FusionEbookProc")}));
    EXPECT_EQ(outcome.firmwareReads, 0u);
  }

  // What GetVendor leaves in a buffer.
  std::string Vendor() const {
    virtualnotebook::HostedLibrary library;
    virtualnotebook::SetUpNotebook(library.notebook, deviceId);
    char vendor[8] = "before";
    library.GetVendor(vendor, sizeof vendor);
    return vendor;
  }
};

std::string BadSize(size_t size) {
  return LutLine(3,
                 "RegQuery max Edid value length Failed, maxValueLength is " + std::to_string(size),
                 "GetLcdEdidData");
}

TEST_F(BadEdid, Of0Bytes) {
  SetEdidSize(0);
  ExpectGoldenLutFor({BadSize(0)});
  EXPECT_EQ(Vendor(), "before");
}

TEST_F(BadEdid, TooShortToParse) {
  for (const size_t size : {1u, 33u, 34u}) {
    SCOPED_TRACE(size);
    RemoveBinFiles();
    SetEdidSize(size);
    ExpectGoldenLutFor({});
    EXPECT_EQ(Vendor(), "before");
  }
}

TEST_F(BadEdid, OfEnoughBytes) {
  for (const size_t size : {35u, 36u, 127u, 128u, 129u, 2559u}) {
    SCOPED_TRACE(size);
    RemoveBinFiles();
    SetEdidSize(size);
    const Outcome outcome = SetP3Mode();
    ExpectFirmwareLut(outcome);
    EXPECT_EQ(outcome.lutLog, FirmwareLog({}));
    EXPECT_EQ(Vendor(), "NVX#");
  }
}

TEST_F(BadEdid, TooLong) {
  for (const size_t size : {2560u, 2561u, 70000u}) {
    SCOPED_TRACE(size);
    RemoveBinFiles();
    SetEdidSize(size);
    ExpectGoldenLutFor({BadSize(size)});
    EXPECT_EQ(Vendor(), "before");
  }
}

// Of the 35 bytes only those of vendor, serial number, week and year tell the panel.
TEST_F(BadEdid, OneBitAnywhere) {
  for (size_t bit = 0; bit < 35 * 8; ++bit) {
    const size_t byte = bit / 8;
    const bool isReservedBit = bit == 8 * 8 + 7;
    const bool tellsThePanel =
        (byte == 8 && !isReservedBit) || byte == 9 || (byte >= 12 && byte <= 17);
    if (!tellsThePanel && !isReservedBit && bit % 8 != byte % 8) {
      continue;  // one bit of each byte that does not matter
    }
    SCOPED_TRACE(bit);
    RemoveBinFiles();
    Bytes edid = WholeMachine().edid;
    FlipBit(edid, bit / 8, bit % 8);
    panel.Replace(edid);
    const Outcome outcome = SetP3Mode();
    if (tellsThePanel) {
      ExpectGoldenLut(outcome);
    } else {
      ExpectFirmwareLut(outcome);
    }
  }
}

// The third letter becomes the group 0: as a character, it ends its line ahead of the function's
// name.
TEST_F(BadEdid, VendorOutOfBounds) {
  Bytes edid = WholeMachine().edid;
  edid[9] &= 0xE0;
  panel.Replace(edid);
  const Outcome outcome = SetP3Mode();
  ExpectGoldenLut(outcome);
  const auto line = std::ranges::find(outcome.log, "3 Vendor data out of boundary,data:");
  ASSERT_NE(line, outcome.log.end());
  EXPECT_EQ(*(line + 1), LutLine(3, "Get LCD EDID Data error.", "IsLcdChanged"));
}

TEST_F(BadEdid, OfADeviceIdWithoutBackslashes) {
  for (const wchar_t* id : {L"NVX1234", L"DISPLAY\\NVX1234", L"\\"}) {
    RemoveBinFiles();
    deviceId = id;
    const std::string text = testsupport::Utf8(id);
    ExpectGoldenLutFor(
        {LutLine(3, "GetPnpDeviceID Failed! deviceId is invalid, deviceId is " + text,
                 "GetPnpDeviceID"),
         LutLine(3, "GetPnpDeviceID Failed! edidRegistryPath is empty.", "GetEdidDataPath")});
  }
}

TEST_F(BadEdid, OfADeviceThatIsNotInTheRegistry) {
  deviceId = L"DISPLAY\\NVX0000\\1";
  ExpectGoldenLutFor({LutLine(
      3,
      "RegOpenKeyExA Failed! edidFullPath:SYSTEM\\CurrentControlSet\\Enum\\DISPLAY\\NVX0000\\1"
      "\\Device Parameters\\",
      "GetLcdEdidData")});
}

}  // namespace
}  // namespace scenarios
