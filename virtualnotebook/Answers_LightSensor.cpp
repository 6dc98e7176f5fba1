// The Sensor API: a manager, a collection of light sensors, and what they report.
#include "virtualnotebook/Answers.h"

#include <windows.h>

#include <initguid.h>
#include <sensors.h>
#include <sensorsapi.h>

#include <array>
#include <utility>

#include "virtualnotebook/Recorder.h"
#include "virtualnotebook/StandIn.h"

namespace virtualnotebook {
namespace {

using SharedBoard = std::shared_ptr<SensorBoard>;

constexpr char kManagersGiver[] = "CoCreateInstance";
constexpr char kEventsGiver[] = "ISensorEvents";
constexpr char kValuesGiver[] = "ISensorDataReport::GetSensorValue";

const HRESULT kNotFound = HRESULT_FROM_WIN32(ERROR_NOT_FOUND);

// One call of a method: recorded like an import, and answered when no fault is due.
template <typename Result, typename Answer>
Result Do(const std::string& method, std::vector<std::wstring> arguments, Answer answer) {
  Notebook* const notebook = Recorder::Current();
  if (notebook != nullptr) {  // the object may outlive it
    arguments.insert(arguments.begin(), L"pointer");
    const auto fault = Recorder::Record(*notebook, {method, std::move(arguments)});
    if (fault) {
      return Suffer<Result>(*fault);
    }
  }
  return answer();
}

// An object with one reference, counted under the function that gives it to the module.
template <FixedText kName, typename Interface>
class ComObject : public Interface {
 public:
  ComObject(SharedBoard board, std::string giver)
      : board_(std::move(board)), giver_(std::move(giver)) {
    Take();
  }
  ComObject(const ComObject&) = delete;
  ComObject& operator=(const ComObject&) = delete;
  virtual ~ComObject() = default;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override {
    return Do<HRESULT>(Method("QueryInterface"), {L"pointer", AsText<void**>(object)}, [&] {
      if (object == nullptr) {
        return E_POINTER;
      }
      if (id != __uuidof(IUnknown) && id != __uuidof(Interface)) {
        *object = nullptr;
        return E_NOINTERFACE;
      }
      Take();
      *object = static_cast<Interface*>(this);
      return S_OK;
    });
  }

  ULONG STDMETHODCALLTYPE AddRef() override {
    return Do<ULONG>(Method("AddRef"), {}, [&] { return Take(); });
  }

  ULONG STDMETHODCALLTYPE Release() override {
    return Do<ULONG>(Method("Release"), {}, [&] { return Drop(); });
  }

  // The same without a record.
  ULONG Take() {
    const NotebookGuard guard(TheLock());
    ++board_->references[giver_];
    return ++count_;
  }
  ULONG Drop() {
    ULONG left = 0;
    {
      const NotebookGuard guard(TheLock());
      --board_->references[giver_];
      left = --count_;
    }
    if (left == 0) {
      delete this;
    }
    return left;
  }

 protected:
  static std::string Method(const char* name) { return std::string(kName.text) + "::" + name; }
  const SharedBoard& Board() const { return board_; }

 private:
  const SharedBoard board_;
  const std::string giver_;
  ULONG count_ = 0;
};

// The number of the sensor within the notebook is all there is to it.
class Sensor : public ComObject<"ISensor", ISensor> {
 public:
  Sensor(SharedBoard board, std::string giver, size_t index)
      : ComObject(std::move(board), std::move(giver)), index_(index) {}

  HRESULT STDMETHODCALLTYPE SetEventSink(ISensorEvents* sink) override {
    return Do<HRESULT>(Method("SetEventSink"), {AsText<ISensorEvents*>(sink)}, [&] {
      if (sink != nullptr) {
        sink->AddRef();
      }
      {
        const NotebookGuard guard(TheLock());
        std::swap(Board()->sinks[index_], sink);
      }
      if (sink != nullptr) {  // the former one
        sink->Release();
      }
      return S_OK;
    });
  }

  HRESULT STDMETHODCALLTYPE GetID(SENSOR_ID*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetCategory(SENSOR_CATEGORY_ID*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetType(SENSOR_TYPE_ID*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetFriendlyName(BSTR*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetProperty(REFPROPERTYKEY, PROPVARIANT*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetProperties(IPortableDeviceKeyCollection*,
                                          IPortableDeviceValues**) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE GetSupportedDataFields(IPortableDeviceKeyCollection**) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE SetProperties(IPortableDeviceValues*,
                                          IPortableDeviceValues**) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE SupportsDataField(REFPROPERTYKEY, VARIANT_BOOL*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE GetState(SensorState*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetData(ISensorDataReport**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE SupportsEvent(REFGUID, VARIANT_BOOL*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetEventInterest(GUID**, ULONG*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE SetEventInterest(GUID*, ULONG) override { return E_NOTIMPL; }

 private:
  const size_t index_;
};

// None where the notebook is gone.
size_t CountLightSensors() {
  const Notebook* const notebook = Recorder::Current();
  const NotebookGuard guard(TheLock());
  return notebook == nullptr ? 0 : notebook->lightSensors;
}

class SensorCollection : public ComObject<"ISensorCollection", ISensorCollection> {
 public:
  using ComObject::ComObject;

  HRESULT STDMETHODCALLTYPE GetAt(ULONG index, ISensor** sensor) override {
    return Do<HRESULT>(Method("GetAt"), {std::to_wstring(index), AsText<ISensor**>(sensor)},
                       [&]() -> HRESULT {
                         if (sensor == nullptr) {
                           return E_POINTER;
                         }
                         *sensor = nullptr;
                         if (index >= CountLightSensors()) {
                           return kNotFound;
                         }
                         *sensor = new Sensor(Board(), Method("GetAt"), index);
                         return S_OK;
                       });
  }

  HRESULT STDMETHODCALLTYPE GetCount(ULONG* count) override {
    return Do<HRESULT>(Method("GetCount"), {AsText<ULONG*>(count)}, [&] {
      if (count == nullptr) {
        return E_POINTER;
      }
      *count = static_cast<ULONG>(CountLightSensors());
      return S_OK;
    });
  }

  HRESULT STDMETHODCALLTYPE Add(ISensor*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Remove(ISensor*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE RemoveByID(REFSENSOR_ID) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Clear() override { return E_NOTIMPL; }
};

class Manager : public ComObject<"ISensorManager", ISensorManager> {
 public:
  using ComObject::ComObject;

  // There are sensors for light alone.
  HRESULT STDMETHODCALLTYPE GetSensorsByCategory(REFSENSOR_CATEGORY_ID category,
                                                 ISensorCollection** found) override {
    return Do<HRESULT>(Method("GetSensorsByCategory"),
                       {L"pointer", AsText<ISensorCollection**>(found)}, [&]() -> HRESULT {
                         if (found == nullptr) {
                           return E_POINTER;
                         }
                         *found = nullptr;
                         if (category != SENSOR_CATEGORY_LIGHT || CountLightSensors() == 0) {
                           return kNotFound;
                         }
                         *found = new SensorCollection(Board(), Method("GetSensorsByCategory"));
                         return S_OK;
                       });
  }

  HRESULT STDMETHODCALLTYPE GetSensorsByType(REFSENSOR_TYPE_ID, ISensorCollection**) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE GetSensorByID(REFSENSOR_ID, ISensor**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE SetEventSink(ISensorManagerEvents*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE RequestPermissions(HWND, ISensorCollection*, WINBOOL) override {
    return E_NOTIMPL;
  }
};

// The memory that a value holds; null for one that holds none.
const void* MemoryOf(const PROPVARIANT& value) {
  if ((value.vt & VT_VECTOR) != 0) {
    return value.cac.pElems;
  }
  switch (value.vt) {
    case VT_LPWSTR:
      return value.pwszVal;
    case VT_LPSTR:
      return value.pszVal;
    case VT_BSTR:
      return value.bstrVal;
    case VT_CLSID:
      return value.puuid;
    default:
      return nullptr;
  }
}

class Report : public ComObject<"ISensorDataReport", ISensorDataReport> {
 public:
  Report(SharedBoard board, std::string giver, const LightReading& reading)
      : ComObject(std::move(board), std::move(giver)), reading_(reading) {}

  HRESULT STDMETHODCALLTYPE GetSensorValue(REFPROPERTYKEY key, PROPVARIANT* value) override {
    return Do<HRESULT>(kValuesGiver, {std::to_wstring(key.pid), AsText<PROPVARIANT*>(value)},
                       [&]() -> HRESULT {
                         if (value == nullptr) {
                           return E_POINTER;
                         }
                         const std::optional<PROPVARIANT> field = Field(key);
                         return field ? Give(*field, *value) : kNotFound;
                       });
  }

  HRESULT STDMETHODCALLTYPE GetTimestamp(SYSTEMTIME*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetSensorValues(IPortableDeviceKeyCollection*,
                                            IPortableDeviceValues**) override {
    return E_NOTIMPL;
  }

 private:
  std::optional<PROPVARIANT> Field(REFPROPERTYKEY key) const {
    if (key == SENSOR_DATA_TYPE_LIGHT_LEVEL_LUX) {
      return reading_.lux;
    }
    return key == SENSOR_DATA_TYPE_LIGHT_TEMPERATURE_KELVIN ? reading_.kelvin : std::nullopt;
  }

  static HRESULT Give(const PROPVARIANT& field, PROPVARIANT& value) {
    const HRESULT result = PropVariantCopy(&value, &field);
    Notebook* const notebook = Recorder::Current();
    if (SUCCEEDED(result) && MemoryOf(value) != nullptr && notebook != nullptr) {
      const NotebookGuard guard(TheLock());
      Recorder::Handles(*notebook).Note(MemoryOf(value), kValuesGiver);
    }
    return result;
  }

  const LightReading reading_;
};

// An object that a sink sees for the length of one call.
template <typename Object>
struct Dropper {
  void operator()(Object* object) const { object->Drop(); }
};
template <typename Object>
using ShownObject = std::unique_ptr<Object, Dropper<Object>>;

constexpr std::array<const char*, 17> kMethods = {"ISensorManager::QueryInterface",
                                                  "ISensorManager::AddRef",
                                                  "ISensorManager::Release",
                                                  "ISensorManager::GetSensorsByCategory",
                                                  "ISensorCollection::QueryInterface",
                                                  "ISensorCollection::AddRef",
                                                  "ISensorCollection::Release",
                                                  "ISensorCollection::GetAt",
                                                  "ISensorCollection::GetCount",
                                                  "ISensor::QueryInterface",
                                                  "ISensor::AddRef",
                                                  "ISensor::Release",
                                                  "ISensor::SetEventSink",
                                                  "ISensorDataReport::QueryInterface",
                                                  "ISensorDataReport::AddRef",
                                                  "ISensorDataReport::Release",
                                                  kValuesGiver};

}  // namespace

std::span<const char* const> SensorMethods() { return kMethods; }

PROPVARIANT SensorFloat(float value) {
  PROPVARIANT variant{};
  variant.vt = VT_R4;
  variant.fltVal = value;
  return variant;
}

ISensorEvents* Notebook::LightSensorSink(size_t sensor) const {
  const NotebookGuard guard(TheLock());
  const auto& sinks = Recorder::Sensors(*this)->sinks;
  const auto found = sinks.find(sensor);
  return found == sinks.end() ? nullptr : found->second;
}

std::optional<HRESULT> Notebook::ReportLight(const LightReading& reading, size_t sensor) const {
  ISensorEvents* const sink = LightSensorSink(sensor);
  if (sink == nullptr) {
    return std::nullopt;
  }
  const SharedBoard& board = Recorder::Sensors(*this);
  const ShownObject<Sensor> device(new Sensor(board, kEventsGiver, sensor));
  const ShownObject<Report> report(new Report(board, kEventsGiver, reading));
  return sink->OnDataUpdated(device.get(), report.get());
}

std::optional<HRESULT> Notebook::ReportSensorState(int state, size_t sensor) const {
  ISensorEvents* const sink = LightSensorSink(sensor);
  if (sink == nullptr) {
    return std::nullopt;
  }
  const ShownObject<Sensor> device(new Sensor(Recorder::Sensors(*this), kEventsGiver, sensor));
  return sink->OnStateChanged(device.get(), static_cast<SensorState>(state));
}

HRESULT answers::CoCreateInstance(Notebook& notebook, decltype(::CoCreateInstance)* original,
                                  REFCLSID classId, IUnknown* outer, DWORD context, REFIID id,
                                  void** object) {
  if (classId != __uuidof(::SensorManager)) {
    return original(classId, outer, context, id, object);
  }
  if (object == nullptr) {
    return E_POINTER;
  }
  *object = nullptr;
  if (outer != nullptr) {
    return CLASS_E_NOAGGREGATION;
  }
  if (id != __uuidof(ISensorManager)) {
    return E_NOINTERFACE;
  }
  *object = static_cast<ISensorManager*>(new Manager(Recorder::Sensors(notebook), kManagersGiver));
  return S_OK;
}

HRESULT answers::PropVariantClear(Notebook& notebook, decltype(::PropVariantClear)* original,
                                  PROPVARIANT* value) {
  if (value != nullptr) {
    const NotebookGuard guard(TheLock());
    Recorder::Handles(notebook).TakeBack(MemoryOf(*value), {kValuesGiver});
  }
  return original(value);
}

}  // namespace virtualnotebook
