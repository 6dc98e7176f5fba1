#include "naturalcolor/NaturalColorMsg.h"

#include <cstring>

#include "frame/Log.h"
#include "naturalcolor/NaturalColorApi.h"
#include "panel/ByteOrder.h"

namespace velora {
namespace {

// The firmware has a new colour temperature.
constexpr uint32_t kColorTemperatureEvent = 705;

// The firmware's request for it.
constexpr uint8_t kRequest[] = {6, 0x26};

// Its answer: a status, and the colour temperature in kelvin, little-endian.
constexpr size_t kStatusOffset = 0;
constexpr size_t kCctOffset = 1;
constexpr uint8_t kStatusError = 1;

}  // namespace

void NaturalColorMsg::ContorlWmiSensorEvent() {
  constexpr FunctionLog log("NaturalColorMsg::ContorlWmiSensorEvent");
  if (monitorType_ != kSensorAndBios) {
    return;
  }
  if (natureColorStatus_ == 0) {
    if (biosEventMonitor_.StopEventMonitor() != 0) {
      log.Error(L"StopWmiEventMonitor fail.");
    }
    return;
  }
  log.Info(L"StartContorlWmiSensorEvent Wmi");
  const int result = biosEventMonitor_.StartEventMonitor(BiosEventCallback);
  BiosEventCallback(kColorTemperatureEvent);  // the first reading does not wait for the firmware
  if (result != 0) {
    log.Error(L"StartEventMonitor Faild:", result);
  }
}

// A plain function has no other way to the object.
void NaturalColorMsg::BiosEventCallback(uint32_t eventId) {
  NaturalColorMsg& msg = NaturalColorApi::GetInstance().GetNaturalColorMsg();
  if (eventId == kColorTemperatureEvent && msg.ReadWmiSensorColor() == 0) {
    msg.SetWmiSensorColor();
  }
}

int NaturalColorMsg::ReadWmiSensorColor() {
  constexpr FunctionLog log("NaturalColorMsg::ReadWmiSensorColor");
  NxSDK::WmiInputParams input = {};
  std::memcpy(input.bytes, kRequest, sizeof kRequest);
  NxSDK::WmiOutputParams output = {};
  const int result = NxSDK::BiosWmi::GetBiosInfo(input, output);
  if (result != 0) {
    log.Error(L"GetBiosInfo Failed! ret:", result);
    return 1;
  }
  if (output.bytes[kStatusOffset] == kStatusError) {
    log.Error(L"OutPut Params status Error!");
    return 1;
  }
  const uint32_t cct = ReadLe32(output.bytes + kCctOffset);
  sensorCct_ = cct;
  log.Info(L"ReadWmiSensorColor1:", cct);
  return 0;
}

void NaturalColorMsg::SetWmiSensorColor() {
  constexpr FunctionLog log("NaturalColorMsg::SetWmiSensorColor");
  if (adjustAlgorithm_->StartCctDimming(static_cast<float>(sensorCct_), sensorLux_) != 0) {
    log.Error(L"SetWmiSensorColor error.");
  }
  log.Info(L"SetWmiSensorColor end!");
}

}  // namespace velora
