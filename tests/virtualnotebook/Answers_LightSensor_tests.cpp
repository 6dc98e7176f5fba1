#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <initguid.h>
#include <objbase.h>
#include <sensors.h>
#include <sensorsapi.h>

#include <atomic>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>

#include "support/NotebookTest.h"

namespace virtualnotebook {
namespace {

using ::testing::ElementsAre;

constexpr char kManager[] = "CoCreateInstance";
constexpr char kCollection[] = "ISensorManager::GetSensorsByCategory";
constexpr char kSensor[] = "ISensorCollection::GetAt";
constexpr char kValue[] = "ISensorDataReport::GetSensorValue";
constexpr char kEvents[] = "ISensorEvents";

const HRESULT kNotFound = HRESULT_FROM_WIN32(ERROR_NOT_FOUND);

struct Releaser {
  void operator()(IUnknown* object) const { object->Release(); }
};
template <typename Interface>
using Owned = std::unique_ptr<Interface, Releaser>;

// Does with a report what it was told.
class Sink : public ISensorEvents {
 public:
  virtual ~Sink() = default;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
  ULONG STDMETHODCALLTYPE Release() override { return --references; }
  HRESULT STDMETHODCALLTYPE OnStateChanged(ISensor* sensor, SensorState newState) override {
    EXPECT_NE(sensor, nullptr);
    state = newState;
    return S_FALSE;
  }
  HRESULT STDMETHODCALLTYPE OnDataUpdated(ISensor* sensor, ISensorDataReport* report) override {
    return onData(sensor, report);
  }
  HRESULT STDMETHODCALLTYPE OnEvent(ISensor*, REFGUID, IPortableDeviceValues*) override {
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE OnLeave(REFSENSOR_ID) override { return S_OK; }

  std::function<HRESULT(ISensor*, ISensorDataReport*)> onData;
  std::atomic<ULONG> references = 1;
  int state = -1;
};

class LightSensor : public testsupport::NotebookTest {
 protected:
  static Owned<ISensorManager> Manager() {
    void* object = nullptr;
    EXPECT_EQ(CoCreateInstance(__uuidof(SensorManager), nullptr, CLSCTX_INPROC_SERVER,
                               __uuidof(ISensorManager), &object),
              S_OK);
    return Owned<ISensorManager>(static_cast<ISensorManager*>(object));
  }

  static Owned<ISensorCollection> Collection() {
    ISensorCollection* collection = nullptr;
    EXPECT_EQ(Manager()->GetSensorsByCategory(SENSOR_CATEGORY_LIGHT, &collection), S_OK);
    return Owned<ISensorCollection>(collection);
  }

  static Owned<ISensor> At(ULONG index) {
    ISensor* sensor = nullptr;
    EXPECT_EQ(Collection()->GetAt(index, &sensor), S_OK);
    return Owned<ISensor>(sensor);
  }

  // Reports and reads one field in the sink; what GetSensorValue gave. The value is the test's.
  HRESULT Read(const LightReading& reading, REFPROPERTYKEY key, PROPVARIANT& value) {
    sink_.onData = [&](ISensor*, ISensorDataReport* report) {
      return report->GetSensorValue(key, &value);
    };
    const auto result = notebook.ReportLight(reading);
    EXPECT_TRUE(result) << "there is no sink";
    return result.value_or(E_UNEXPECTED);
  }

  Sink sink_;
};

TEST_F(LightSensor, ManagerCollectionAndSensors) {
  notebook.lightSensors = 2;
  const auto manager = Manager();
  const auto collection = Collection();
  ULONG count = 0;
  EXPECT_EQ(collection->GetCount(&count), S_OK);
  EXPECT_EQ(count, 2U);
  ISensor* sensor = nullptr;
  EXPECT_EQ(collection->GetAt(2, &sensor), kNotFound);
  EXPECT_EQ(sensor, nullptr);
  EXPECT_EQ(collection->GetAt(1, nullptr), E_POINTER);
  EXPECT_EQ(collection->GetCount(nullptr), E_POINTER);
}

TEST_F(LightSensor, ThereAreSensorsForLightAlone) {
  const auto manager = Manager();
  ISensorCollection* collection = nullptr;
  EXPECT_EQ(manager->GetSensorsByCategory(SENSOR_CATEGORY_LOCATION, &collection), kNotFound);
  notebook.lightSensors = 0;
  EXPECT_EQ(manager->GetSensorsByCategory(SENSOR_CATEGORY_LIGHT, &collection), kNotFound);
  EXPECT_EQ(collection, nullptr);
}

TEST_F(LightSensor, OtherClassesAreTheSystems) {
  void* object = nullptr;
  EXPECT_EQ(CoCreateInstance(__uuidof(SensorManager), nullptr, CLSCTX_INPROC_SERVER,
                             __uuidof(ISensor), &object),
            E_NOINTERFACE);
  EXPECT_TRUE(FAILED(CoCreateInstance(__uuidof(ISensor), nullptr, CLSCTX_INPROC_SERVER,
                                      __uuidof(IUnknown), &object)));
  EXPECT_EQ(object, nullptr);
  EXPECT_EQ(notebook.CountOpen(kManager), 0U);
}

TEST_F(LightSensor, ReferencesAreCountedUntilTheyComeBack) {
  {
    const auto manager = Manager();
    const auto collection = Collection();  // by a manager of its own, given back meanwhile
    const auto sensor = At(0);
    EXPECT_EQ(notebook.CountOpen(kManager), 1U);
    EXPECT_EQ(notebook.CountOpen(kCollection), 1U);
    EXPECT_EQ(notebook.CountOpen(kSensor), 1U);
    EXPECT_EQ(sensor->AddRef(), 2U);
    EXPECT_EQ(notebook.CountOpen(kSensor), 2U);
    EXPECT_EQ(sensor->Release(), 1U);
  }
  EXPECT_EQ(notebook.CountOpen(kManager), 0U);
  EXPECT_EQ(notebook.CountOpen(kCollection), 0U);
  EXPECT_EQ(notebook.CountOpen(kSensor), 0U);
}

TEST_F(LightSensor, QueryInterface_KnowsTheObjectsOwnAlone) {
  const auto manager = Manager();
  void* object = nullptr;
  EXPECT_EQ(manager->QueryInterface(__uuidof(ISensor), &object), E_NOINTERFACE);
  EXPECT_EQ(object, nullptr);
  EXPECT_EQ(manager->QueryInterface(__uuidof(IUnknown), &object), S_OK);
  EXPECT_EQ(object, manager.get());
  EXPECT_EQ(notebook.CountOpen(kManager), 2U);
  manager->Release();
  EXPECT_EQ(manager->QueryInterface(__uuidof(IUnknown), nullptr), E_POINTER);
}

TEST_F(LightSensor, ASinkStaysUntilItIsReplaced) {
  notebook.lightSensors = 2;
  EXPECT_EQ(notebook.LightSensorSink(), nullptr);
  At(0)->SetEventSink(&sink_);
  EXPECT_EQ(notebook.LightSensorSink(0), &sink_);
  EXPECT_EQ(notebook.LightSensorSink(1), nullptr);
  EXPECT_EQ(sink_.references, 2U);
  At(0)->SetEventSink(&sink_);
  EXPECT_EQ(sink_.references, 2U);
  At(0)->SetEventSink(nullptr);
  EXPECT_EQ(sink_.references, 1U);
  EXPECT_EQ(notebook.LightSensorSink(0), nullptr);
}

TEST_F(LightSensor, WithoutASinkNobodyIsTold) {
  EXPECT_EQ(notebook.ReportLight({SensorFloat(1), SensorFloat(2)}), std::nullopt);
  EXPECT_EQ(notebook.ReportSensorState(SENSOR_STATE_READY), std::nullopt);
}

TEST_F(LightSensor, Report_GivesItsFields) {
  At(0)->SetEventSink(&sink_);
  const LightReading reading{SensorFloat(312.5F), SensorFloat(6504)};
  PROPVARIANT value{};
  EXPECT_EQ(Read(reading, SENSOR_DATA_TYPE_LIGHT_LEVEL_LUX, value), S_OK);
  EXPECT_EQ(value.vt, VT_R4);
  EXPECT_EQ(value.fltVal, 312.5F);
  EXPECT_EQ(Read(reading, SENSOR_DATA_TYPE_LIGHT_TEMPERATURE_KELVIN, value), S_OK);
  EXPECT_EQ(value.fltVal, 6504);
  EXPECT_EQ(Read(reading, SENSOR_DATA_TYPE_LIGHT_CHROMACITY, value), kNotFound);
  EXPECT_EQ(Read({SensorFloat(1), {}}, SENSOR_DATA_TYPE_LIGHT_TEMPERATURE_KELVIN, value),
            kNotFound);
  EXPECT_EQ(notebook.CountOpen(kValue), 0U) << "a number holds no memory";
}

TEST_F(LightSensor, Report_SharesNoMemoryWithTheReading) {
  At(0)->SetEventSink(&sink_);
  wchar_t text[] = L"6504";
  PROPVARIANT own{};
  own.vt = VT_LPWSTR;
  own.pwszVal = text;
  PROPVARIANT value{};
  ASSERT_EQ(Read({own, {}}, SENSOR_DATA_TYPE_LIGHT_LEVEL_LUX, value), S_OK);
  EXPECT_EQ(value.vt, VT_LPWSTR);
  EXPECT_STREQ(value.pwszVal, L"6504");
  EXPECT_NE(value.pwszVal, text);
  EXPECT_EQ(notebook.CountOpen(kValue), 1U);
  EXPECT_EQ(PropVariantClear(&value), S_OK);
  EXPECT_EQ(value.vt, VT_EMPTY);
  EXPECT_EQ(notebook.CountOpen(kValue), 0U);
  EXPECT_STREQ(text, L"6504");
}

TEST_F(LightSensor, Report_VectorsHaveToComeBackToo) {
  At(0)->SetEventSink(&sink_);
  ULONG numbers[] = {6504, 5000};
  PROPVARIANT own{};
  own.vt = VT_VECTOR | VT_UI4;
  own.caul = {2, numbers};
  PROPVARIANT value{};
  ASSERT_EQ(Read({{}, own}, SENSOR_DATA_TYPE_LIGHT_TEMPERATURE_KELVIN, value), S_OK);
  EXPECT_EQ(value.caul.cElems, 2U);
  EXPECT_EQ(value.caul.pElems[1], 5000U);
  PROPVARIANT lost = value;
  ASSERT_EQ(Read({{}, own}, SENSOR_DATA_TYPE_LIGHT_TEMPERATURE_KELVIN, value), S_OK);
  EXPECT_EQ(notebook.CountOpen(kValue), 2U) << "a value that was written over is not back";
  PropVariantClear(&value);
  EXPECT_EQ(notebook.CountOpen(kValue), 1U);
  PropVariantClear(&lost);
  EXPECT_EQ(notebook.CountOpen(kValue), 0U);
  EXPECT_EQ(notebook.CountCalls("PropVariantClear"), 2U);
}

TEST_F(LightSensor, ReportLight_GivesWhatTheSinkSaysAndCountsWhatItKeeps) {
  At(0)->SetEventSink(&sink_);
  ISensorDataReport* kept = nullptr;
  sink_.onData = [&](ISensor* sensor, ISensorDataReport* report) {
    EXPECT_NE(sensor, nullptr);
    kept = report;
    kept->AddRef();
    return E_ABORT;
  };
  EXPECT_EQ(notebook.ReportLight({}), E_ABORT);
  EXPECT_EQ(notebook.CountOpen(kEvents), 1U);
  kept->Release();
  EXPECT_EQ(notebook.CountOpen(kEvents), 0U);
}

TEST_F(LightSensor, ReportSensorState_PassesTheState) {
  At(0)->SetEventSink(&sink_);
  EXPECT_EQ(notebook.ReportSensorState(SENSOR_STATE_ACCESS_DENIED), S_FALSE);
  EXPECT_EQ(sink_.state, SENSOR_STATE_ACCESS_DENIED);
}

TEST_F(LightSensor, MethodsAreRecordedWithTheirArguments) {
  At(0)->SetEventSink(&sink_);
  EXPECT_THAT(
      testsupport::CallsOf(
          notebook, {kManager, kCollection, kSensor, "ISensor::SetEventSink", "ISensor::Release"}),
      ElementsAre(kManager, kCollection, kSensor, "ISensor::SetEventSink", "ISensor::Release"));
  notebook.ForgetRecords();
  PROPVARIANT value{};
  Read({SensorFloat(1), SensorFloat(2)}, SENSOR_DATA_TYPE_LIGHT_TEMPERATURE_KELVIN, value);
  ASSERT_EQ(notebook.calls.size(), 1U);
  EXPECT_EQ(notebook.calls[0].function, kValue);
  EXPECT_THAT(notebook.calls[0].arguments, ElementsAre(L"pointer", L"3", L"pointer"));
}

TEST_F(LightSensor, MethodsFailLikeImports) {
  const auto collection = Collection();
  notebook.FailCall(kSensor, 2, static_cast<uint64_t>(E_ACCESSDENIED));
  Owned<ISensor> sensor;
  ISensor* found = nullptr;
  EXPECT_EQ(collection->GetAt(0, &found), S_OK);
  sensor.reset(found);
  found = nullptr;
  EXPECT_EQ(collection->GetAt(0, &found), E_ACCESSDENIED);
  EXPECT_EQ(found, nullptr);
  EXPECT_EQ(notebook.CountOpen(kSensor), 1U);

  notebook.FailCall("ISensor::SetEventSink", 1, static_cast<uint64_t>(E_FAIL));
  EXPECT_EQ(sensor->SetEventSink(&sink_), E_FAIL);
  EXPECT_EQ(notebook.LightSensorSink(), nullptr);
  notebook.ThrowFrom("ISensor::SetEventSink", 1, "thrown");
  EXPECT_THROW(sensor->SetEventSink(&sink_), std::runtime_error);
  EXPECT_EQ(sink_.references, 1U);
}

TEST_F(LightSensor, ComIsTheSystems) {
  EXPECT_TRUE(SUCCEEDED(CoInitializeEx(nullptr, COINIT_MULTITHREADED)));
  EXPECT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), RPC_E_CHANGED_MODE);
  CoUninitialize();
  EXPECT_THAT(notebook.calls.front().arguments, ElementsAre(L"null", L"0"));
}

// Objects that the module never gave back.
TEST(LightSensor_WithoutNotebook, ObjectsOutliveIt) {
  Owned<ISensorCollection> collection;
  Owned<ISensorManager> manager;
  {
    const Notebook notebook(GetModuleHandleW(nullptr));
    void* object = nullptr;
    ASSERT_EQ(CoCreateInstance(__uuidof(SensorManager), nullptr, CLSCTX_INPROC_SERVER,
                               __uuidof(ISensorManager), &object),
              S_OK);
    manager.reset(static_cast<ISensorManager*>(object));
    ISensorCollection* found = nullptr;
    ASSERT_EQ(manager->GetSensorsByCategory(SENSOR_CATEGORY_LIGHT, &found), S_OK);
    collection.reset(found);
  }
  ULONG count = 9;
  EXPECT_EQ(collection->GetCount(&count), S_OK);
  EXPECT_EQ(count, 0U);
  EXPECT_EQ(collection.release()->Release(), 0U);
}

}  // namespace
}  // namespace virtualnotebook
