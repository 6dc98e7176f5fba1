#pragma once

#include <cstdint>
#include <string>

namespace velora {

// A point of the CIE 1931 xy diagram.
struct Chromaticity {
  double x = 0;
  double y = 0;
};

// What the panel says about itself: the first 35 bytes of an EDID base block (VESA E-EDID 1.4).
class LcdEdidParse {
 public:
  static constexpr uint32_t kMinLength = 35;

  virtual ~LcdEdidParse() = default;

  // False without any change below 35 bytes; otherwise the fields are reset first, and a failure
  // leaves what was done before it.
  bool ParseEdidData(const uint8_t* data, uint32_t length);
  bool ParseEdidVendor(const uint8_t* data, uint32_t length);  // bytes 8 and 9
  bool ParseEdidWrgb(const uint8_t* data, uint32_t length);    // the ten bytes from 25

  // Three PNP letters and "#"; empty before a parse.
  std::string GetVendor() const { return vendor_; }
  // Bytes 12 to 15 in their order, eight upper-case hexadecimal digits; empty before a parse.
  std::string GetSerialNumber() const { return serialNumber_; }
  int32_t GetWeek() const { return week_; }   // 0 to 53; -1 before a parse
  int32_t GetYear() const { return year_; }   // from 1990; -1 before a parse
  double GetGamma() const { return gamma_; }  // 1.00 to 3.55; 0 before a parse
  // Each coordinate is a multiple of 1/1024.
  double GetRedX() const { return red_.x; }
  double GetRedY() const { return red_.y; }
  double GetGreenX() const { return green_.x; }
  double GetGreenY() const { return green_.y; }
  double GetBlueX() const { return blue_.x; }
  double GetBlueY() const { return blue_.y; }
  double GetWhiteX() const { return white_.x; }
  double GetWhiteY() const { return white_.y; }

 private:
  void Reset();

  std::string vendor_;
  std::string serialNumber_;
  int32_t week_ = -1;
  int32_t year_ = -1;
  double gamma_ = 0;
  Chromaticity red_;
  Chromaticity green_;
  Chromaticity blue_;
  Chromaticity white_;
};

}  // namespace velora
