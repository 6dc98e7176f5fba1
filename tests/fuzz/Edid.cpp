// An EDID. The plain forms are the factory's own reader, and a panel of the factory that is
// described by what was parsed: its EDID says the same again.
#include <cmath>
#include <string>

#include "fuzz/Fuzz.h"
#include "panel/LcdEdidParse.h"
#include "support/GuardedBuffer.h"
#include "support/LogCapture.h"
#include "virtualnotebook/Factory.h"

namespace {

constexpr uint32_t kRead = 35;      // bytes that are looked at
constexpr size_t kBaseBlock = 128;  // bytes that the factory's reader wants
constexpr uint8_t kNoGamma = 255;

bool IsVendorGood(const uint8_t* edid) {
  const unsigned packed = edid[8] * 256u + edid[9];
  for (const unsigned letter : {packed / 1024 % 32, packed / 32 % 32, packed % 32}) {
    if (letter < 1 || letter > 26) {
      return false;
    }
  }
  return true;
}

// The factory's reader wants the magic bytes as well, and a whole block.
virtualnotebook::PanelDescription Describe(const uint8_t* edid) {
  fuzz::Bytes block(edid, edid + kRead);
  block.resize(kBaseBlock);
  block[0] = block[7] = 0;
  std::fill_n(block.begin() + 1, 6, uint8_t{0xFF});
  return virtualnotebook::DescribePanel(block);
}

void CheckFields(const velora::LcdEdidParse& parsed, const uint8_t* edid) {
  const auto panel = Describe(edid);
  const auto header = virtualnotebook::HeaderOf(panel, 0);
  fuzz::Require(parsed.GetVendor() == header.vendor, "vendor");
  fuzz::Require(parsed.GetSerialNumber() == header.serialNumber, "serial number");
  fuzz::Require(parsed.GetWeek() == std::stoi(header.week), "week");
  fuzz::Require(parsed.GetYear() == panel.year, "year");
  fuzz::Require(parsed.GetGamma() == (edid[23] == kNoGamma ? 3.55 : panel.gamma), "gamma");
  const double coordinates[] = {parsed.GetRedX(),   parsed.GetRedY(),  parsed.GetGreenX(),
                                parsed.GetGreenY(), parsed.GetBlueX(), parsed.GetBlueY(),
                                parsed.GetWhiteX(), parsed.GetWhiteY()};
  const double expected[] = {panel.red.x,  panel.red.y,  panel.green.x, panel.green.y,
                             panel.blue.x, panel.blue.y, panel.white.x, panel.white.y};
  fuzz::Require(std::equal(std::begin(coordinates), std::end(coordinates), expected),
                "chromaticities");
  if (panel.gamma < 3.545) {
    velora::LcdEdidParse again;
    const auto remade = virtualnotebook::MakeEdid(panel);
    fuzz::Require(again.ParseEdidData(remade.data(), static_cast<uint32_t>(remade.size())),
                  "the factory's EDID of the panel is good");
    fuzz::Require(again.GetVendor() == parsed.GetVendor() && again.GetYear() == parsed.GetYear() &&
                      again.GetWhiteY() == parsed.GetWhiteY() &&
                      again.GetWeek() == parsed.GetWeek(),
                  "and says the same");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const testsupport::LogCapture log;
  const testsupport::GuardedBuffer edid({data, size});
  velora::LcdEdidParse parsed;
  const bool isGood = parsed.ParseEdidData(edid.data(), static_cast<uint32_t>(size));
  fuzz::Require(isGood == (size >= kRead && IsVendorGood(data)), "good is what has a vendor");
  if (isGood) {
    CheckFields(parsed, data);
  } else {
    fuzz::Require(parsed.GetVendor().empty() && parsed.GetSerialNumber().empty() &&
                      parsed.GetWeek() == -1 && parsed.GetYear() == -1 && parsed.GetGamma() == 0,
                  "a refused EDID says nothing");
    fuzz::Require(log.Lines().size() == (size < kRead ? 0 : 1), "a bad vendor has its line");
  }
  return 0;
}
