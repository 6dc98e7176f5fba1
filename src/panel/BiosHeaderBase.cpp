#include "panel/BiosHeaderBase.h"

#include <cstring>
#include <string_view>

#include "frame/BoundedCopy.h"
#include "frame/Log.h"

namespace velora {
namespace {

constexpr uint32_t kVersionOffset = 4;
constexpr uint32_t kVersionLength = 2;

template <size_t length>
std::string TextOf(const char (&field)[length]) {
  return {field, length};
}

}  // namespace

BiosHeaderBase::BiosHeaderBase() { memset_s(&common_, sizeof common_, 0, sizeof common_); }

BiosHeaderBase::~BiosHeaderBase() { memset_s(&common_, sizeof common_, 0, sizeof common_); }

uint32_t BiosHeaderBase::GetLutType() const { return kNoLutType; }

uint32_t BiosHeaderBase::GetDataLength() const { return 0; }

int BiosHeaderBase::GetVersion(const std::string& block) {
  constexpr FunctionLog log("BiosHeaderBase::GetVersion");
  char text[kVersionLength + 1] = {};
  uint32_t offset = kVersionOffset;
  CopyData(text, kVersionLength, block, offset);
  const std::string_view version = text;
  if (version == "01") {
    return 0;
  }
  if (version == "02") {
    return 1;
  }
  log.Error(L"invalid ver:", version);
  return 2;
}

bool BiosHeaderBase::Parse(const std::string& block) {
  return Parse(reinterpret_cast<const uint8_t*>(block.data()), block.size());
}

std::string BiosHeaderBase::GetTag() const { return TextOf(common_.tag); }
std::string BiosHeaderBase::GetVersionText() const { return TextOf(common_.version); }
std::string BiosHeaderBase::GetPanelField(size_t item) const {
  return TextOf(common_.panelFields[item]);
}
std::string BiosHeaderBase::GetSerialNumber() const { return TextOf(common_.serialNumber); }
std::string BiosHeaderBase::GetYear() const { return TextOf(common_.year); }
std::string BiosHeaderBase::GetWeek() const { return TextOf(common_.week); }
std::string BiosHeaderBase::GetVendor() const { return TextOf(common_.vendor); }

void BiosHeaderBase::ParseCommonFields(const uint8_t* buf, uint32_t& offset) {
  offset = 0;
  CopyData(&common_, sizeof common_, buf, offset);
}

void BiosHeaderBase::CopyData(void* dst, uint32_t length, const uint8_t* buf, uint32_t& offset) {
  constexpr FunctionLog log("BiosHeaderBase::CopyData");
  if (memcpy_s(dst, length, buf + offset, length) != 0) {
    log.Error(L"memcpy_s failed!");
  }
  offset += length;
}

void BiosHeaderBase::CopyData(void* dst, uint32_t length, const std::string& buf,
                              uint32_t& offset) {
  constexpr FunctionLog log("BiosHeaderBase::CopyData");
  if (uint64_t{offset} + length > buf.size()) {
    log.Error(L"copy data failed! offset:", offset, L", copyLen:", length, L", buf size:",
              buf.size());
    return;
  }
  std::memcpy(dst, buf.data() + offset, length);
  offset += length;
}

}  // namespace velora
