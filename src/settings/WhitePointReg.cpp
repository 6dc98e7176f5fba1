#include "settings/WhitePointReg.h"

#include "settings/Gains.h"

namespace velora {
namespace {

constexpr wchar_t kIsEnable[] = L"IsEnable";

}  // namespace

WhitePointReg::WhitePointReg() : MultiUserReg(FEATURE_TYPE_WHITEPOINT) {}

int WhitePointReg::GetWhitePointStatus(int defaultWhitePointEnable) const {
  return RegReadValue(rootKey_, regPath_, kIsEnable, defaultWhitePointEnable);
}

ResultT WhitePointReg::SetWhitePointStatus(int whitePointEnable) {
  return RegWriteValue(rootKey_, regPath_, kIsEnable, static_cast<uint32_t>(whitePointEnable));
}

ResultT WhitePointReg::GetWhitePointRGB(double* r, double* g, double* b) const {
  return ReadGains(*this, rootKey_, regPath_, r, g, b);
}

ResultT WhitePointReg::SetWhitePointRGB(double r, double g, double b) {
  return WriteGains(*this, rootKey_, regPath_, r, g, b);
}

}  // namespace velora
