#include <windows.h>

#include <wtypes.h>

// The identifiers of the Sensor API stand in this file.
#include <initguid.h>
#include <sensors.h>

#include "frame/Log.h"
#include "naturalcolor/NaturalColorMsg.h"

namespace velora {
namespace {

// One field of a report, freed with it.
class SensorValue {
 public:
  SensorValue() = default;
  ~SensorValue() { PropVariantClear(&value_); }
  SensorValue(const SensorValue&) = delete;
  SensorValue& operator=(const SensorValue&) = delete;

  HRESULT Read(ISensorDataReport* report, const PROPERTYKEY& key) {
    return report->GetSensorValue(key, &value_);
  }

  // Another type counts as absent.
  bool IsFloat() const { return value_.vt == VT_R4; }
  float Float() const { return value_.fltVal; }

 private:
  PROPVARIANT value_ = {};
};

// held: a pointer, atomic or not.
template <typename Pointer>
void ReleaseAndForget(Pointer& held) {
  IUnknown* const object = held;
  if (object != nullptr) {
    object->Release();
    held = nullptr;
  }
}

}  // namespace

// --- The sensors ---

void NaturalColorMsg::InitSensorData() {
  constexpr FunctionLog log("NaturalColorMsg::InitSensorData");
  try {
    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    if (sensorManager_ == nullptr) {
      const HRESULT result =
          CoCreateInstance(__uuidof(::SensorManager), nullptr, CLSCTX_INPROC_SERVER,
                           __uuidof(ISensorManager), reinterpret_cast<void**>(&sensorManager_));
      if (FAILED(result)) {
        log.Error(L"CoCreateInstance NatureColor SensorManager Faild:", result);
        return;
      }
    }
    if (sensorCollection_ == nullptr) {
      ISensorCollection* sensors = nullptr;
      const HRESULT result = sensorManager_->GetSensorsByCategory(SENSOR_CATEGORY_LIGHT, &sensors);
      if (FAILED(result)) {
        log.Error(L"GetSensorsByCategory SensorCollection Faild:", result);
        return;
      }
      sensorCollection_ = sensors;
    }
    log.Info(L"InitSensorData Success.");
  } catch (...) {
    log.Error(L"InitSensorData Exception.");
  }
}

void NaturalColorMsg::StopSensorData() {
  constexpr FunctionLog log("NaturalColorMsg::StopSensorData");
  try {
    ReleaseAndForget(sensorCollection_);
    ReleaseAndForget(sensorManager_);
    log.Info(L"StopSensorData Success.");
    CoUninitialize();
  } catch (...) {
    log.Error(L"StopSensorData Exception.");
  }
}

void NaturalColorMsg::ContorlNatureColor() {
  constexpr FunctionLog log("NaturalColorMsg::ContorlNatureColor");
  if (natureColorStatus_ == 0) {
    log.Info(L"StopMonitorNatureColor Sensor");
    StopNaturalColorNotifications();
    return;
  }
  ISensorCollection* const sensors = sensorCollection_;
  if (sensors == nullptr) {
    return;
  }
  try {
    if (!ConnectSensors(sensors)) {
      return;
    }
  } catch (...) {
    log.Error(L"StartMonitorNatureColor Exception.");
  }
  log.Info(L"StartMonitorNatureColor Success");
}

// Each pass leaves one reference a sensor, as does each of StopNaturalColorNotifications.
bool NaturalColorMsg::ConnectSensors(ISensorCollection* sensors) {
  constexpr FunctionLog log("NaturalColorMsg::ContorlNatureColor");
  ULONG count = 0;
  sensors->GetCount(&count);
  ISensorEvents* events = nullptr;
  if (FAILED(QueryInterface(__uuidof(ISensorEvents), reinterpret_cast<void**>(&events)))) {
    log.Error(L"ISensor QueryInterface Faild");
    return false;
  }
  for (ULONG i = 0; i < count; ++i) {
    ISensor* sensor = nullptr;
    if (FAILED(sensors->GetAt(i, &sensor))) {
      log.Error(L"get sensor Faild");
      return false;
    }
    if (FAILED(sensor->SetEventSink(events))) {
      log.Error(L"SetEventSink Faild");
      return false;
    }
  }
  return true;
}

void NaturalColorMsg::StopNaturalColorNotifications() {
  constexpr FunctionLog log("NaturalColorMsg::StopNaturalColorNotifications");
  ISensorCollection* const sensors = sensorCollection_;
  if (sensors == nullptr) {
    return;
  }
  ULONG count = 0;
  sensors->GetCount(&count);
  for (ULONG i = 0; i < count; ++i) {
    ISensor* sensor = nullptr;
    if (FAILED(sensors->GetAt(i, &sensor))) {
      log.Error(L"get sensor Faild");
    } else if (FAILED(sensor->SetEventSink(nullptr))) {
      log.Error(L"SetEventSink Faild");
    }
  }
}

// --- ISensorEvents ---

HRESULT NaturalColorMsg::OnDataUpdated(ISensor* sensor, ISensorDataReport* report) {
  constexpr FunctionLog log("NaturalColorMsg::OnDataUpdated");
  if (natureColorStatus_ == 0) {
    return S_OK;
  }
  if (sensor == nullptr || report == nullptr) {
    return E_POINTER;
  }
  try {
    if (monitorType_ == kSensorAlone) {
      log.Info(L"HandleSensorData In.");
      HandleSensorData(report);
    } else if (monitorType_ == kSensorAndBios) {
      HandleWmiData(report);
    }
  } catch (...) {
    log.Error(L"nDataUpdated Exception.");
  }
  return S_OK;
}

// A report without a colour temperature moves nothing; one without an illuminance is a dark room's.
HRESULT NaturalColorMsg::HandleSensorData(ISensorDataReport* report) {
  constexpr FunctionLog log("NaturalColorMsg::HandleSensorData");
  if (report == nullptr) {
    return S_FALSE;
  }
  SensorValue lux;
  HRESULT result = lux.Read(report, SENSOR_DATA_TYPE_LIGHT_LEVEL_LUX);
  if (FAILED(result)) {
    return result;
  }
  SensorValue cct;
  result = cct.Read(report, SENSOR_DATA_TYPE_LIGHT_TEMPERATURE_KELVIN);
  if (FAILED(result) || !cct.IsFloat()) {
    return result;
  }
  try {
    if (adjustAlgorithm_->StartCctDimming(cct.Float(), lux.IsFloat() ? lux.Float() : 0.0F) != 0) {
      log.Error(L"HandleSensorData error.");
    }
  } catch (...) {
    log.Error(L"StartThreadForCctDimming Exception.");
  }
  return result;
}

HRESULT NaturalColorMsg::HandleWmiData(ISensorDataReport* report) {
  constexpr FunctionLog log("NaturalColorMsg::HandleWmiData");
  if (report == nullptr) {
    return S_FALSE;
  }
  SensorValue lux;
  const HRESULT result = lux.Read(report, SENSOR_DATA_TYPE_LIGHT_LEVEL_LUX);
  if (SUCCEEDED(result) && lux.IsFloat()) {
    sensorLux_ = lux.Float();
    log.Info(L"HandleWmiData In.", lux.Float());
    if (adjustAlgorithm_->StartCctDimming(static_cast<float>(sensorCct_), sensorLux_) != 0) {
      log.Error(L"HandleWmiData error.");
    }
  }
  return result;
}

HRESULT NaturalColorMsg::OnStateChanged(ISensor* sensor, SensorState state) {
  constexpr FunctionLog log("NaturalColorMsg::OnStateChanged");
  if (sensor == nullptr) {
    return E_INVALIDARG;
  }
  if (state == SENSOR_STATE_READY) {
    log.Info(L"Light sensor is now ready.");
  } else if (state == SENSOR_STATE_ACCESS_DENIED) {
    log.Error(L"No permission for the time sensor.");
  }
  return S_OK;
}

HRESULT NaturalColorMsg::OnEvent(ISensor*, REFGUID, IPortableDeviceValues*) { return S_OK; }

HRESULT NaturalColorMsg::OnLeave(REFSENSOR_ID) { return S_OK; }

// --- IUnknown ---

HRESULT NaturalColorMsg::QueryInterface(REFIID id, void** object) {
  if (object == nullptr) {
    return E_POINTER;
  }
  if (id == __uuidof(IUnknown) || id == __uuidof(ISensorEvents)) {
    *object = static_cast<ISensorEvents*>(this);
    return S_OK;
  }
  *object = nullptr;
  return E_NOINTERFACE;
}

ULONG NaturalColorMsg::AddRef() { return static_cast<ULONG>(++refCount_); }

ULONG NaturalColorMsg::Release() { return static_cast<ULONG>(--refCount_); }

}  // namespace velora
