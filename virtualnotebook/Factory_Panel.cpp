// EDID base blocks: made and described.
#include "virtualnotebook/Factory.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

namespace virtualnotebook {
namespace {

constexpr size_t kEdidSize = 128;
constexpr int kFirstYear = 1990;
constexpr uint8_t kNoGamma = 255;
constexpr double kUsualGamma = 2.2;
constexpr std::array<uint8_t, 8> kEdidMagic = {0x00, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x00};

// Offsets in the base block (VESA E-EDID 1.4, section 3).
enum EdidOffset : size_t {
  kManufacturer = 8,
  kProduct = 10,
  kSerial = 12,
  kWeek = 16,
  kYear = 17,
  kVersion = 18,
  kVideoInput = 20,
  kScreenSize = 21,
  kGamma = 23,
  kFeatures = 24,
  kChromaticity = 25,
  kStandardTimings = 38,
  kFirstDescriptor = 54,
  kChecksum = 127
};

void Require(bool condition, const char* what) {
  if (!condition) {
    throw std::invalid_argument(what);
  }
}

// Three letters as 5-bit groups, A is 1.
uint16_t PackVendor(const std::string& vendor) {
  Require(vendor.size() == 3 && std::all_of(vendor.begin(), vendor.end(),
                                            [](char c) { return c >= 'A' && c <= 'Z'; }),
          "a vendor is three letters A to Z");
  unsigned packed = 0;
  for (char c : vendor) {
    packed = packed << 5 | static_cast<unsigned>(c - 'A' + 1);
  }
  return static_cast<uint16_t>(packed);
}

std::string UnpackVendor(unsigned packed) {
  std::string vendor;
  for (int shift : {10, 5, 0}) {
    const unsigned group = packed >> shift & 0x1F;
    Require(group >= 1 && group <= 26, "the EDID names no manufacturer");
    vendor += static_cast<char>('A' + group - 1);
  }
  return vendor;
}

// Red, green, blue and white x and y, in 1/1024: two bytes of low bits, eight of high bits.
void PutChromaticities(const PanelDescription& panel, uint8_t* out) {
  const double values[8] = {panel.red.x,  panel.red.y,  panel.green.x, panel.green.y,
                            panel.blue.x, panel.blue.y, panel.white.x, panel.white.y};
  for (unsigned i = 0; i < 8; ++i) {
    Require(values[i] >= 0 && values[i] < 1023.5 / 1024, "a chromaticity lies outside 0 to 1");
    const auto fixed = static_cast<unsigned>(std::lround(values[i] * 1024));
    out[2 + i] = static_cast<uint8_t>(fixed >> 2);
    out[i / 4] = static_cast<uint8_t>(out[i / 4] | (fixed & 3) << (6 - 2 * (i % 4)));
  }
}

Xy ChromaticityAt(const uint8_t* colour, unsigned pair) {
  const auto value = [colour](unsigned i) {
    const unsigned low = unsigned{colour[i / 4]} >> (6 - 2 * (i % 4)) & 3u;
    return (colour[2 + i] * 4u + low) / 1024.0;
  };
  return {value(2 * pair), value(2 * pair + 1)};
}

// 1920 x 1080 at 60 Hz: 141.0 MHz, 2080 x 1130 in all, 344 x 194 mm.
constexpr std::array<uint8_t, 18> kDetailedTiming = {0x14, 0x37, 0x80, 0xA0, 0x70, 0x38,
                                                     0x32, 0x40, 0x30, 0x20, 0x35, 0x00,
                                                     0x58, 0xC2, 0x10, 0x00, 0x00, 0x1A};

// An alphanumeric descriptor (tag 0xFE), 13 characters ended by a line feed and blanks.
std::array<uint8_t, 18> TextDescriptor(const std::string& text) {
  std::array<uint8_t, 18> descriptor = {0, 0, 0, 0xFE, 0};
  std::fill(descriptor.begin() + 5, descriptor.end(), uint8_t{' '});
  std::copy(text.begin(), text.end(), descriptor.begin() + 5);
  descriptor[5 + text.size()] = '\n';
  return descriptor;
}

constexpr std::array<uint8_t, 18> kDummyDescriptor = {0, 0, 0, 0x10};

}  // namespace

Bytes MakeEdid(const PanelDescription& panel) {
  Require(panel.year >= kFirstYear && panel.year <= kFirstYear + 255,
          "an EDID's year is 1990 to 2245");
  const long gamma = std::lround(panel.gamma * 100) - 100;
  Require(gamma >= 0 && gamma < kNoGamma, "an EDID's gamma is 1.00 to 3.54");

  Bytes edid(kEdidSize, 0);
  std::copy(kEdidMagic.begin(), kEdidMagic.end(), edid.begin());
  const uint16_t vendor = PackVendor(panel.vendor);
  edid[kManufacturer] = static_cast<uint8_t>(vendor >> 8);
  edid[kManufacturer + 1] = static_cast<uint8_t>(vendor & 0xFF);
  edid[kProduct] = static_cast<uint8_t>(panel.product & 0xFF);
  edid[kProduct + 1] = static_cast<uint8_t>(panel.product >> 8);
  std::copy(panel.serial.begin(), panel.serial.end(), edid.begin() + kSerial);
  edid[kWeek] = panel.week;
  edid[kYear] = static_cast<uint8_t>(panel.year - kFirstYear);
  edid[kVersion] = 1;
  edid[kVersion + 1] = 4;
  edid[kVideoInput] = 0xA5;  // digital, 8 bits a colour, DisplayPort
  edid[kScreenSize] = 34;    // cm
  edid[kScreenSize + 1] = 19;
  edid[kGamma] = static_cast<uint8_t>(gamma);
  edid[kFeatures] = 0x02;  // the preferred timing is the native one
  PutChromaticities(panel, &edid[kChromaticity]);
  std::fill_n(edid.begin() + kStandardTimings, 16, uint8_t{1});  // unused

  const std::array<uint8_t, 18> descriptors[] = {
      kDetailedTiming, kDummyDescriptor, TextDescriptor("VIRTUAL"), TextDescriptor("NVX140V01")};
  auto next = edid.begin() + kFirstDescriptor;
  for (const auto& descriptor : descriptors) {
    next = std::copy(descriptor.begin(), descriptor.end(), next);
  }

  unsigned sum = 0;
  for (size_t i = 0; i < kChecksum; ++i) {
    sum += edid[i];
  }
  edid[kChecksum] = static_cast<uint8_t>(0u - sum);
  return edid;
}

PanelDescription DescribePanel(const Bytes& edid) {
  Require(
      edid.size() >= kEdidSize && std::equal(kEdidMagic.begin(), kEdidMagic.end(), edid.begin()),
      "this is no EDID");
  PanelDescription panel;
  panel.vendor = UnpackVendor(edid[kManufacturer] * 256u + edid[kManufacturer + 1]);
  panel.product = static_cast<uint16_t>(edid[kProduct + 1] * 256u + edid[kProduct]);
  std::copy_n(edid.begin() + kSerial, panel.serial.size(), panel.serial.begin());
  panel.week = edid[kWeek];
  panel.year = kFirstYear + edid[kYear];
  panel.gamma = edid[kGamma] == kNoGamma ? kUsualGamma : (edid[kGamma] + 100) / 100.0;
  panel.red = ChromaticityAt(&edid[kChromaticity], 0);
  panel.green = ChromaticityAt(&edid[kChromaticity], 1);
  panel.blue = ChromaticityAt(&edid[kChromaticity], 2);
  panel.white = ChromaticityAt(&edid[kChromaticity], 3);
  return panel;
}

Bytes ReadEdidFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  const std::string content{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  if (content.empty()) {
    throw std::runtime_error("cannot read the EDID file " + path);
  }
  // No text begins with a zero byte, every EDID does.
  if (content[0] == '\0') {
    return Bytes(content.begin(), content.end());
  }
  Bytes edid;
  std::string digits;
  for (char c : content) {
    if (std::isspace(static_cast<unsigned char>(c)) != 0) {
      continue;
    }
    Require(std::isxdigit(static_cast<unsigned char>(c)) != 0,
            "an EDID file holds bytes or hexadecimal digits");
    digits += c;
    if (digits.size() < 2) {
      continue;
    }
    edid.push_back(static_cast<uint8_t>(std::stoul(digits, nullptr, 16)));
    digits.clear();
  }
  Require(digits.empty(), "an EDID file in hexadecimal text ends in half a byte");
  return edid;
}

PanelDescription NominalPanel(const PanelDescription& panel) {
  PanelDescription nominal = panel;
  nominal.serial = {};
  nominal.week = 0;
  for (Xy* point : {&nominal.red, &nominal.green, &nominal.blue, &nominal.white}) {
    point->x = std::round(point->x * 100) / 100;
    point->y = std::round(point->y * 100) / 100;
  }
  return nominal;
}

}  // namespace virtualnotebook
