#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace velora {

// What GetLutType gives for a block that holds no known LUT.
inline constexpr uint32_t kNoLutType = 162;

// The header of a LUT block: 128 bytes, of which the first 64 are common to both versions. Texts
// are ASCII without terminator, exactly as long as their field.
//
//   offset  size  field
//   0       4     tag
//   4       2     version       "01" or "02"
//   6       40    panelFields   ten items of 4 bytes
//   46      8     serialNumber
//   54      4     year          digits
//   58      2     week          digits
//   60      4     vendor        three letters and "#"
class BiosHeaderBase {
 public:
  // Slots in this order.
  virtual ~BiosHeaderBase();
  virtual bool Parse(const uint8_t* buf, size_t bufLen) = 0;
  virtual uint32_t GetLutType() const;
  virtual uint32_t GetDataLength() const;
  virtual bool IsBiosHeaderDataValid(const uint8_t* buf, size_t bufLen) const = 0;

  // 0 for version 1, 1 for version 2, 2 for anything else.
  static int GetVersion(const std::string& block);

  bool Parse(const std::string& block);

  std::string GetTag() const;
  std::string GetVersionText() const;
  std::string GetPanelField(size_t item) const;  // item 0 to 9
  std::string GetSerialNumber() const;
  std::string GetYear() const;
  std::string GetWeek() const;
  std::string GetVendor() const;

 protected:
  BiosHeaderBase();

  // Reads the common fields from offset 0 and moves offset behind them.
  void ParseCommonFields(const uint8_t* buf, uint32_t& offset);

  // Copies length bytes from buf + offset; the offset moves even when the copy was refused.
  static void CopyData(void* dst, uint32_t length, const uint8_t* buf, uint32_t& offset);

  // The same from a byte buffer: a copy beyond its end copies nothing and leaves the offset.
  static void CopyData(void* dst, uint32_t length, const std::string& buf, uint32_t& offset);

 private:
  struct CommonFields {
    char tag[4];
    char version[2];
    char panelFields[10][4];
    char serialNumber[8];
    char year[4];
    char week[2];
    char vendor[4];
  };
  static_assert(sizeof(CommonFields) == 64);

  CommonFields common_;
};

}  // namespace velora
