#pragma once

#include <windows.h>

#include <sensorsapi.h>

#include <atomic>
#include <cstdint>
#include <thread>

#include "WmiKit/WmiKit.h"
#include "naturalcolor/NaturalColorAdjustAlgorithm.h"
#include "velora/VeloraCtlApi.h"

namespace velora {

// Natural colour's ear: turns light sensor reports, the firmware's event and changes of the
// settings into readings and status changes of the adjust part. All failures are logged, and the
// sources that are left go on.
//
//   monitorType_   illuminance     colour temperature            firmware event
//   0              sensor report   sensor report                 not used
//   1              sensor report   firmware query, on the event  used
//   other          ignored         ignored                       not used
//
// Threads: start and stop come from one, which gets an apartment; the sensors, the firmware event
// and the config thread call in on theirs. There is no lock: a field that one thread writes and
// another reads is atomic, and what is read late is mended by the next reading. It lives as long as
// the process, so its reference count frees nothing.
//
// Sources by topic:
//   NaturalColorMsg.cpp          start, stop, the config thread
//   NaturalColorMsg_Sensors.cpp  the Sensor API
//   NaturalColorMsg_Bios.cpp     the firmware's event and query
//
// NOLINTNEXTLINE(cppcoreguidelines-virtual-class-destructor): it is final, and COM deletes nothing
class NaturalColorMsg final : public ISensorEvents {
 public:
  explicit NaturalColorMsg(NaturalColorAdjustAlgorithm* adjustAlgorithm)
      : adjustAlgorithm_(adjustAlgorithm) {}
  NaturalColorMsg(const NaturalColorMsg&) = delete;
  NaturalColorMsg& operator=(const NaturalColorMsg&) = delete;

  void InitNaturalColorMsg(uint32_t monitorType);
  void StopNaturalColorMsg();

  // --- IUnknown ---

  // Takes no reference.
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override;
  ULONG STDMETHODCALLTYPE AddRef() override;
  ULONG STDMETHODCALLTYPE Release() override;

  // --- ISensorEvents ---

  HRESULT STDMETHODCALLTYPE OnStateChanged(ISensor* sensor, SensorState state) override;
  HRESULT STDMETHODCALLTYPE OnDataUpdated(ISensor* sensor, ISensorDataReport* report) override;
  HRESULT STDMETHODCALLTYPE OnEvent(ISensor* sensor, REFGUID eventId,
                                    IPortableDeviceValues* values) override;
  HRESULT STDMETHODCALLTYPE OnLeave(REFSENSOR_ID sensorId) override;

 private:
  // --- Settings ---

  void ReadEffectiveStatus();
  int GetConfigLoop();

  // --- Sensors ---

  void InitSensorData();
  void StopSensorData();
  void ContorlNatureColor();
  bool ConnectSensors(ISensorCollection* sensors);
  void StopNaturalColorNotifications();
  HRESULT HandleSensorData(ISensorDataReport* report);
  HRESULT HandleWmiData(ISensorDataReport* report);

  // --- Firmware ---

  void ContorlWmiSensorEvent();
  static void BiosEventCallback(uint32_t eventId);
  int ReadWmiSensorColor();
  void SetWmiSensorColor();

  // --- Members ---

  static constexpr int32_t kSensorAlone = 0;
  static constexpr int32_t kSensorAndBios = 1;

  int32_t monitorType_ = 0;
  std::atomic<uint32_t> sensorCct_ = 5000;  // from the firmware, in kelvin
  std::atomic<float> sensorLux_ = 300.0F;   // beside it
  std::atomic<uint32_t> natureColorStatus_ = 0;
  uint32_t colorFieldMode_ = static_cast<uint32_t>(-1);
  std::thread configThread_;
  std::atomic<bool> isConfigLoopRun_ = true;
  // Owned references, kept by a stop with natural colour off for the next start. A ring that was
  // pending at the start has the config thread look for the sensors while they are got.
  ISensorManager* sensorManager_ = nullptr;
  std::atomic<ISensorCollection*> sensorCollection_ = nullptr;
  NxSDK::BiosEventMonitor biosEventMonitor_;
  std::atomic<int32_t> refCount_ = 1;
  NaturalColorAdjustAlgorithm* adjustAlgorithm_;
};

}  // namespace velora
