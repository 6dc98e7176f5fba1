#include "frame/Log.h"
#include "lut/ColorField3DLut.h"
#include "velora/VeloraCtlApi.h"

namespace {

// A LUT engine of its own: it only reads the panel's EDID.
velora::ColorField3DLut& PanelLut() {
  static velora::ColorField3DLut instance;
  return instance;
}

}  // namespace

void GetVendor(char* vendorBuf, int vendorBufLength) {
  constexpr velora::FunctionLog log("GetVendor");
  // The buffer is the caller's to be filled: its address is logged, not its bytes.
  log.Info(L"vendorBuf:", static_cast<const void*>(vendorBuf), L", ", L"vendorBufLength:",
           vendorBufLength);
  PanelLut().GetVendor(vendorBuf, vendorBufLength);
}
