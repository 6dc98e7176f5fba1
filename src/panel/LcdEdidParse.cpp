#include "panel/LcdEdidParse.h"

#include "CoreKit/CoreKit.h"
#include "frame/Log.h"
#include "panel/ByteOrder.h"

namespace velora {
namespace {

// Offsets in an EDID base block (VESA E-EDID 1.4, section 3).
constexpr uint32_t kVendorOffset = 8;
constexpr uint32_t kVendorLength = 2;
constexpr uint32_t kSerialNumberOffset = 12;
constexpr uint32_t kSerialNumberLength = 4;
constexpr uint32_t kWeekOffset = 16;
constexpr uint32_t kYearOffset = 17;
constexpr uint32_t kGammaOffset = 23;
constexpr uint32_t kWrgbOffset = 25;
constexpr uint32_t kWrgbLength = 10;
static_assert(kWrgbOffset + kWrgbLength == LcdEdidParse::kMinLength);

constexpr int32_t kLastWeek = 53;  // above it the byte holds no week
constexpr int32_t kFirstYear = 1990;

// One of the eight 10-bit coordinates as a binary fraction. lowBits holds the two low bits of four
// coordinates, those of the first (index 0) at its top.
double Coordinate(uint8_t highBits, uint8_t lowBits, int index) {
  const int value = highBits << 2 | ((lowBits >> (6 - 2 * index)) & 3);
  return value / 1024.0;
}

}  // namespace

bool LcdEdidParse::ParseEdidData(const uint8_t* data, uint32_t length) {
  constexpr FunctionLog log("LcdEdidParse::ParseEdidData");
  if (length < kMinLength) {
    return false;
  }
  Reset();
  if (!ParseEdidVendor(data + kVendorOffset, kVendorLength)) {
    return false;
  }
  // The bytes in their order, not the standard's little-endian number: the firmware's block headers
  // spell serial numbers this way.
  serialNumber_ = CoreKit::BytesToHexString(data + kSerialNumberOffset, kSerialNumberLength);
  for (char& digit : serialNumber_) {
    if (digit >= 'a') {
      digit = static_cast<char>(digit - 'a' + 'A');
    }
  }
  week_ = data[kWeekOffset] > kLastWeek ? 0 : data[kWeekOffset];
  year_ = data[kYearOffset] + kFirstYear;
  gamma_ = (data[kGammaOffset] + 100) / 100.0;  // 255 means no more than 3.55 here
  if (!ParseEdidWrgb(data + kWrgbOffset, kWrgbLength)) {
    log.Error(L"EDID WRGB coordinates error");
    return false;
  }
  return true;
}

bool LcdEdidParse::ParseEdidVendor(const uint8_t* data, uint32_t length) {
  constexpr FunctionLog log("LcdEdidParse::ParseEdidVendor");
  if (length != kVendorLength) {
    log.Error(L"Vendor data length error,dataLen:", length);
    return false;
  }
  // Three groups of five bits; bit 15 is not looked at.
  std::string vendor = "???#";
  uint32_t groups = ReadBe16(data);
  for (size_t letter = 3; letter-- > 0; groups >>= 5) {
    const uint32_t group = groups & 0x1F;
    if (group == 0 || group > 26) {
      // As a character, so that a group of 0 ends the line for the logger.
      log.Error(L"Vendor data out of boundary,data:", static_cast<char>(group));
      return false;
    }
    vendor[letter] = static_cast<char>('A' - 1 + group);
  }
  vendor_ = vendor;
  return true;
}

bool LcdEdidParse::ParseEdidWrgb(const uint8_t* data, uint32_t length) {
  constexpr FunctionLog log("LcdEdidParse::ParseEdidWrgb");
  if (length != kWrgbLength) {
    log.Error(L"wrgb data length error,dataLen:", length);
    return false;
  }
  red_ = {Coordinate(data[2], data[0], 0), Coordinate(data[3], data[0], 1)};
  green_ = {Coordinate(data[4], data[0], 2), Coordinate(data[5], data[0], 3)};
  blue_ = {Coordinate(data[6], data[1], 0), Coordinate(data[7], data[1], 1)};
  white_ = {Coordinate(data[8], data[1], 2), Coordinate(data[9], data[1], 3)};
  log.Info(L"LcdEdidColorGamut:", red_.x, L", ", red_.y, L", ", green_.x, L", ", green_.y, L", ",
           blue_.x, L", ", blue_.y, L", ", white_.x, L", ", white_.y);
  return true;
}

void LcdEdidParse::Reset() { *this = LcdEdidParse(); }

}  // namespace velora
