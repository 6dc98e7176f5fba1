// The light sensor's road into natural colour, in the shipped library.
#include "scenarios/NaturalColour.h"

#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <initguid.h>
#include <sensors.h>
#include <sensorsapi.h>

#include <string>
#include <utility>
#include <vector>

namespace scenarios {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;
using testsupport::CallsOf;
using virtualnotebook::LightReading;
using virtualnotebook::LogLine;
using virtualnotebook::SensorFloat;

constexpr char kManager[] = "CoCreateInstance";
constexpr char kCollection[] = "ISensorManager::GetSensorsByCategory";
constexpr char kCount[] = "ISensorCollection::GetCount";
constexpr char kSensor[] = "ISensorCollection::GetAt";
constexpr char kSetSink[] = "ISensor::SetEventSink";
constexpr char kValue[] = "ISensorDataReport::GetSensorValue";

const LogLine kInitialised{1, L"InitSensorData Success.(NaturalColorMsg::InitSensorData)"};
const LogLine kSensorConnected{
    1, L"StartMonitorNatureColor Success(NaturalColorMsg::ContorlNatureColor)"};
const LogLine kDisconnecting{1,
                             L"StopMonitorNatureColor Sensor(NaturalColorMsg::ContorlNatureColor)"};

uint64_t Failure(HRESULT result) { return static_cast<uint64_t>(result); }

class NaturalColourSensors : public NaturalColourTest {
 protected:
  void StartWithSensors(size_t count) {
    notebook.lightSensors = count;
    SwitchOn();
    Start();
  }

  // Which sensors have a sink, as "x" and "-".
  std::string Sinks() const {
    std::string sinks;
    for (size_t i = 0; i < notebook.lightSensors; ++i) {
      sinks += notebook.LightSensorSink(i) != nullptr ? 'x' : '-';
    }
    return sinks;
  }

  std::vector<LogLine> InitLog() const { return LogOf(L"NaturalColorMsg::InitSensorData"); }
  std::vector<LogLine> ControlLog() const { return LogOf(L"NaturalColorMsg::ContorlNatureColor"); }
};

// --- Getting the sensors ---

TEST_F(NaturalColourSensors, Identifiers) {
  const GUID light = {0x17A665C0, 0x9063, 0x4216, {0xB2, 0x02, 0x5C, 0x7A, 0x25, 0x5E, 0x18, 0xCE}};
  const GUID field = {0xE4C77CE2, 0xDCB7, 0x46E9, {0x84, 0x39, 0x4F, 0xEC, 0x54, 0x88, 0x33, 0xA6}};
  const GUID events = {
      0x5D8DCC91, 0x4641, 0x47E7, {0xB7, 0xC3, 0xB7, 0x4F, 0x48, 0xA6, 0xC3, 0x91}};
  const GUID manager = {
      0xBD77DB67, 0x45A8, 0x42DC, {0x8D, 0x00, 0x6D, 0xCF, 0x15, 0xF8, 0x37, 0x7A}};
  const GUID managerClass = {
      0x77A1C827, 0xFCD2, 0x4689, {0x89, 0x15, 0x9D, 0x61, 0x3C, 0xC5, 0xFA, 0x3E}};
  EXPECT_EQ(SENSOR_CATEGORY_LIGHT, light);
  EXPECT_EQ(SENSOR_DATA_TYPE_LIGHT_LEVEL_LUX.fmtid, field);
  EXPECT_EQ(SENSOR_DATA_TYPE_LIGHT_LEVEL_LUX.pid, 2U);
  EXPECT_EQ(SENSOR_DATA_TYPE_LIGHT_TEMPERATURE_KELVIN.fmtid, field);
  EXPECT_EQ(SENSOR_DATA_TYPE_LIGHT_TEMPERATURE_KELVIN.pid, 3U);
  EXPECT_EQ(__uuidof(ISensorEvents), events);
  EXPECT_EQ(__uuidof(ISensorManager), manager);
  EXPECT_EQ(__uuidof(SensorManager), managerClass);
}

TEST_F(NaturalColourSensors, StartSetsTheSinkOfEachSensor) {
  StartWithSensors(3);
  EXPECT_EQ(Sinks(), "xxx");
  EXPECT_EQ(LogOf(L"NaturalColorMsg::"),
            (std::vector<LogLine>{
                {1, L"InitNaturalColorMsg monitorType=0(NaturalColorMsg::InitNaturalColorMsg)"},
                kInitialised,
                kSensorConnected}));
  EXPECT_THAT(
      CallsOf(notebook, {"CoInitializeEx", kManager, kCollection, kCount, kSensor, kSetSink}),
      ElementsAre("CoInitializeEx", kManager, kCollection, kCount, kSensor, kSetSink, kSensor,
                  kSetSink, kSensor, kSetSink));
  for (const virtualnotebook::Call& call : notebook.CallsNow()) {
    if (call.function == "CoInitializeEx") {
      EXPECT_THAT(call.arguments, ElementsAre(L"null", L"0"));
    } else if (call.function == kManager) {
      EXPECT_THAT(call.arguments, ElementsAre(L"pointer", L"null", L"1", L"pointer", L"pointer"));
    }
  }
}

TEST_F(NaturalColourSensors, SensorsAreGotWhileOffButNotListenedTo) {
  SwitchOff();
  Start();
  EXPECT_EQ(InitLog(), (std::vector<LogLine>{kInitialised}));
  EXPECT_THAT(ControlLog(), IsEmpty());
  EXPECT_EQ(notebook.CountOpen(kManager), 1U);
  EXPECT_EQ(notebook.CountOpen(kCollection), 1U);
  EXPECT_EQ(notebook.CountCalls(kSensor), 0U);
  EXPECT_EQ(Sinks(), "-");
}

// A pass over the sensors leaves a reference to each; those that own return theirs.
TEST_F(NaturalColourSensors, ReferencesThatAreGivenAway) {
  StartWithSensors(3);
  EXPECT_EQ(notebook.CountOpen(kSensor), 3U);
  Ring();
  EXPECT_EQ(notebook.CountOpen(kSensor), 6U);
  SwitchOff();
  Ring();
  EXPECT_EQ(Sinks(), "---");
  EXPECT_EQ(notebook.CountOpen(kSensor), 9U);
  EXPECT_EQ(notebook.CountOpen(kManager), 1U);
  EXPECT_EQ(notebook.CountOpen(kCollection), 1U);
  SwitchOn();
  Ring();
  Stop();
  EXPECT_EQ(notebook.CountOpen(kSensor), 15U) << "one pass to connect, one to disconnect";
  EXPECT_EQ(notebook.CountOpen(kManager), 0U);
  EXPECT_EQ(notebook.CountOpen(kCollection), 0U);
  EXPECT_EQ(notebook.CountCalls("ISensor::Release"), 0U);
  EXPECT_EQ(notebook.CountCalls("ISensorManager::Release"), 1U);
  EXPECT_EQ(notebook.CountCalls("ISensorCollection::Release"), 1U);
}

TEST_F(NaturalColourSensors, WithoutAManagerNobodyListens) {
  notebook.FailCall(kManager, 1, Failure(REGDB_E_CLASSNOTREG));
  StartWithSensors(1);
  EXPECT_EQ(InitLog(),
            (std::vector<LogLine>{{3,
                                   L"CoCreateInstance NatureColor SensorManager Faild:-2147221164"
                                   L"(NaturalColorMsg::InitSensorData)"}}));
  EXPECT_EQ(notebook.CountCalls(kCollection), 0U);
  Ring();
  EXPECT_THAT(ControlLog(), IsEmpty());
  SwitchOff();
  Ring();
  EXPECT_EQ(ControlLog(), (std::vector<LogLine>{kDisconnecting}));
  EXPECT_EQ(notebook.CountCalls(kCount), 0U);
  SwitchOn();
  Stop();
  EXPECT_LOGGED(1, L"StopSensorData Success.(NaturalColorMsg::StopSensorData)");
  Start();
  EXPECT_EQ(Sinks(), "x") << "the next start tries again";
}

TEST_F(NaturalColourSensors, WithoutACollectionTheManagerStays) {
  StartWithSensors(0);
  EXPECT_EQ(InitLog(),
            (std::vector<LogLine>{{3,
                                   L"GetSensorsByCategory SensorCollection Faild:-2147023728"
                                   L"(NaturalColorMsg::InitSensorData)"}}));
  EXPECT_THAT(ControlLog(), IsEmpty());
  EXPECT_EQ(notebook.CountOpen(kManager), 1U);
  SwitchOff();
  Stop();
  EXPECT_EQ(notebook.CountOpen(kManager), 1U);
  SwitchOn();
  notebook.lightSensors = 1;
  Start();
  EXPECT_EQ(notebook.CountCalls(kManager), 1U) << "the next start takes it as it is";
  EXPECT_EQ(notebook.CountCalls(kCollection), 2U);
  EXPECT_EQ(Sinks(), "x");
  Stop();
  EXPECT_EQ(notebook.CountOpen(kManager), 0U);
  EXPECT_EQ(notebook.CountOpen(kCollection), 0U);
}

TEST_F(NaturalColourSensors, ExceptionsWhileTheSensorsAreGot) {
  SwitchOn();
  for (const char* function : {"CoInitializeEx", kManager, kCollection}) {
    SCOPED_TRACE(function);
    notebook.ForgetRecords();
    notebook.ThrowFrom(function, 1, "thrown");
    Start();
    EXPECT_EQ(
        InitLog(),
        (std::vector<LogLine>{{3, L"InitSensorData Exception.(NaturalColorMsg::InitSensorData)"}}));
    EXPECT_THAT(ControlLog(), IsEmpty());
    EXPECT_LOGGED(1, L"InitNatureColor end(NaturalColorApi::InitNatureColor)");
    Stop();
    EXPECT_EQ(notebook.CountOpen(kManager), 0U);
  }
}

// --- Connecting ---

// A success that is not S_OK is one.
TEST_F(NaturalColourSensors, OtherSuccessesAreNoFailures) {
  notebook.FailCall(kSetSink, 1, S_FALSE);
  StartWithSensors(2);
  EXPECT_EQ(Sinks(), "-x");
  EXPECT_EQ(ControlLog(), (std::vector<LogLine>{kSensorConnected}));
}

TEST_F(NaturalColourSensors, ACountThatCantBeHadIsNone) {
  notebook.FailCall(kCount, 1, Failure(E_FAIL));
  StartWithSensors(2);
  EXPECT_EQ(Sinks(), "--");
  EXPECT_EQ(ControlLog(), (std::vector<LogLine>{kSensorConnected}));
  EXPECT_EQ(notebook.CountCalls(kSensor), 0U);
}

TEST_F(NaturalColourSensors, ConnectingEndsAtTheFirstFailure) {
  const std::string sinks[] = {"---", "x--", "xx-"};
  const std::pair<const char*, LogLine> failures[] = {
      {kSensor, {3, L"get sensor Faild(NaturalColorMsg::ContorlNatureColor)"}},
      {kSetSink, {3, L"SetEventSink Faild(NaturalColorMsg::ContorlNatureColor)"}}};
  for (const auto& [function, line] : failures) {
    for (unsigned n = 1; n <= 3; ++n) {
      SCOPED_TRACE(std::string(function) + " " + std::to_string(n));
      notebook.ForgetRecords();
      notebook.ClearFaults();
      notebook.FailCall(function, n, Failure(E_ACCESSDENIED));
      StartWithSensors(3);
      EXPECT_EQ(Sinks(), sinks[n - 1]);
      EXPECT_EQ(ControlLog(), (std::vector<LogLine>{line}));
      EXPECT_EQ(notebook.CountCalls(kSensor), n);
      EXPECT_EQ(notebook.CountCalls(kSetSink), std::string(function) == kSensor ? n - 1 : n);
      Stop();
    }
  }
}

TEST_F(NaturalColourSensors, ExceptionsWhileConnectingAreFollowedByTheSuccessLine) {
  for (const char* function : {kCount, kSensor, kSetSink}) {
    SCOPED_TRACE(function);
    notebook.ForgetRecords();
    notebook.ThrowFrom(function, 1, "thrown");
    StartWithSensors(2);
    EXPECT_EQ(ControlLog(),
              (std::vector<LogLine>{
                  {3, L"StartMonitorNatureColor Exception.(NaturalColorMsg::ContorlNatureColor)"},
                  kSensorConnected}));
    EXPECT_EQ(Sinks(), "--");
    Stop();
  }
}

// --- Disconnecting ---

TEST_F(NaturalColourSensors, DisconnectingGoesOnBehindAFailure) {
  const std::string sinks[] = {"x--", "-x-", "--x"};
  const std::pair<const char*, LogLine> failures[] = {
      {kSensor, {3, L"get sensor Faild(NaturalColorMsg::StopNaturalColorNotifications)"}},
      {kSetSink, {3, L"SetEventSink Faild(NaturalColorMsg::StopNaturalColorNotifications)"}}};
  StartWithSensors(3);
  for (const auto& [function, line] : failures) {
    for (unsigned n = 1; n <= 3; ++n) {
      SCOPED_TRACE(std::string(function) + " " + std::to_string(n));
      SwitchOn();
      Ring();
      ASSERT_EQ(Sinks(), "xxx");
      notebook.Locked([&] { notebook.log.clear(); });
      notebook.ClearFaults();
      notebook.FailCall(function, n, Failure(E_ACCESSDENIED));
      SwitchOff();
      Ring();
      EXPECT_EQ(Sinks(), sinks[n - 1]);
      EXPECT_EQ(ControlLog(), (std::vector<LogLine>{kDisconnecting}));
      EXPECT_EQ(LogOf(L"NaturalColorMsg::StopNaturalColorNotifications"),
                (std::vector<LogLine>{line}));
    }
  }
}

TEST_F(NaturalColourSensors, ACountThatCantBeHadLeavesTheSinks) {
  StartWithSensors(2);
  notebook.FailCall(kCount, 1, Failure(E_FAIL));
  SwitchOff();
  Ring();
  EXPECT_EQ(Sinks(), "xx");
  EXPECT_EQ(ControlLog(), (std::vector<LogLine>{kSensorConnected, kDisconnecting}));
}

TEST_F(NaturalColourSensors, TheStopGoesOnBehindAFailure) {
  StartWithSensors(3);
  notebook.ForgetRecords();
  notebook.FailCall(kSetSink, 2, Failure(E_ACCESSDENIED));
  Stop();
  EXPECT_EQ(Sinks(), "-x-");
  EXPECT_EQ(LogOf(L"NaturalColorMsg::Stop"),
            (std::vector<LogLine>{
                {1, L"StopNaturalColorMsg WMI&&SENSOR(NaturalColorMsg::StopNaturalColorMsg)"},
                {3, L"SetEventSink Faild(NaturalColorMsg::StopNaturalColorNotifications)"},
                {1, L"StopSensorData Success.(NaturalColorMsg::StopSensorData)"},
                {1, L"StopNaturalColorMsg Success(NaturalColorMsg::StopNaturalColorMsg)"}}));
  EXPECT_EQ(notebook.CountOpen(kManager), 0U);
}

// What comes behind it is left out.
TEST_F(NaturalColourSensors, AnExceptionWhileTheStopDisconnects) {
  dataIn.monitorType = 1;
  StartWithSensors(2);
  notebook.ForgetRecords();
  notebook.ThrowFrom(kSensor, 2, "thrown");
  Stop();
  EXPECT_EQ(Sinks(), "-x");
  EXPECT_EQ(LogOf(L"NaturalColorMsg::Stop"),
            (std::vector<LogLine>{
                {1, L"StopNaturalColorMsg WMI&&SENSOR(NaturalColorMsg::StopNaturalColorMsg)"},
                {3, L"StopNaturalColorMsg Exception.(NaturalColorMsg::StopNaturalColorMsg)"},
                {1, L"StopNaturalColorMsg Success(NaturalColorMsg::StopNaturalColorMsg)"}}));
  EXPECT_EQ(notebook.CountOpen(kCollection), 1U);
  EXPECT_EQ(notebook.CountCalls("CoUninitialize"), 0U);
  EXPECT_EQ(notebook.CountCalls("BiosEventMonitor::StopEventMonitor"), 0U);
  EXPECT_LOGGED(1, L"FiniNatureColor Success(NaturalColorApi::FiniNatureColor)");
}

TEST_F(NaturalColourSensors, ExceptionsWhileTheSensorsAreReleased) {
  dataIn.monitorType = 1;
  const LogLine exception{3, L"StopSensorData Exception.(NaturalColorMsg::StopSensorData)"};
  const LogLine success{1, L"StopSensorData Success.(NaturalColorMsg::StopSensorData)"};
  const std::pair<const char*, std::vector<LogLine>> cases[] = {
      {"ISensorCollection::Release", {exception}},
      {"ISensorManager::Release", {exception}},
      {"CoUninitialize", {success, exception}}};
  for (const auto& [function, lines] : cases) {
    SCOPED_TRACE(function);
    StartWithSensors(1);
    notebook.ForgetRecords();
    notebook.ThrowFrom(function, 1, "thrown");
    Stop();
    EXPECT_EQ(LogOf(L"NaturalColorMsg::StopSensorData"), lines);
    EXPECT_EQ(notebook.CountCalls("BiosEventMonitor::StopEventMonitor"), 1U);
    EXPECT_LOGGED(1, L"StopNaturalColorMsg Success(NaturalColorMsg::StopNaturalColorMsg)");
  }
}

// --- Reports, with the sensor alone ---

TEST_F(NaturalColourSensors, AReportIsAReading) {
  StartWithSensors(1);
  notebook.ForgetRecords();
  EXPECT_EQ(notebook.ReportLight(Reading(7250, 312.5F)), S_OK);
  EXPECT_THAT(Readings(), ElementsAre(Pair(7250, 312.5F)));
  EXPECT_LOGGED(1, L"HandleSensorData In.(NaturalColorMsg::OnDataUpdated)");
  EXPECT_THAT(LogOf(L"NaturalColorMsg::HandleSensorData"), IsEmpty());
  std::vector<std::wstring> properties;
  for (const virtualnotebook::Call& call : notebook.CallsNow()) {
    if (call.function == kValue) {
      properties.push_back(call.arguments[1]);
    }
  }
  EXPECT_THAT(properties, ElementsAre(L"2", L"3"));
  EXPECT_EQ(notebook.CountCalls("BiosWmi::GetBiosInfo"), 0U);
  EXPECT_TRUE(testsupport::WaitUntil([&] { return Frames().size() == 5; }));
  EXPECT_EQ(SensorColor(), 7250);
  EXPECT_EQ(SensorCct(), 7250U);
}

TEST_F(NaturalColourSensors, AnySensorReports) {
  StartWithSensors(2);
  EXPECT_EQ(notebook.ReportLight(Reading(7000, 300), 1), S_OK);
  EXPECT_EQ(notebook.ReportLight(Reading(4500, 200), 0), S_OK);
  EXPECT_THAT(Readings(), ElementsAre(Pair(7000, 300), Pair(4500, 200)));
}

TEST_F(NaturalColourSensors, AReportWithoutColourTemperatureMovesNothing) {
  StartWithSensors(1);
  EXPECT_EQ(notebook.ReportLight({.lux = SensorFloat(300), .kelvin = {}}), S_OK);
  EXPECT_THAT(Readings(), IsEmpty());
  EXPECT_EQ(notebook.CountCalls(kValue), 2U);
}

TEST_F(NaturalColourSensors, AReportWithoutIlluminanceEndsThere) {
  StartWithSensors(1);
  EXPECT_EQ(notebook.ReportLight({.lux = {}, .kelvin = SensorFloat(7000)}), S_OK);
  EXPECT_THAT(Readings(), IsEmpty());
  EXPECT_EQ(notebook.CountCalls(kValue), 1U);
}

// Values of every other type whose memory, where they are no pointers, is that of a float.
class OtherTypes {
 public:
  explicit OtherTypes(float number) {
    for (const VARTYPE type :
         {VT_EMPTY, VT_NULL, VT_I1, VT_UI1, VT_I2, VT_UI2, VT_I4, VT_UI4, VT_INT, VT_UINT, VT_I8,
          VT_UI8, VT_R8, VT_BOOL, VT_ERROR, VT_CY, VT_DATE, VT_FILETIME}) {
      PROPVARIANT value = SensorFloat(number);
      value.vt = type;
      values.push_back(value);
    }
    Add(VT_LPWSTR).pwszVal = wide_;
    Add(VT_LPSTR).pszVal = narrow_;
    Add(VT_BSTR).bstrVal = counted_.text;
    Add(VT_CLSID).puuid = &id_;
    Add(VT_VECTOR | VT_R4).caflt = {2, floats_};
    Add(VT_VECTOR | VT_UI4).caul = {2, numbers_};
  }

  std::vector<PROPVARIANT> values;

 private:
  PROPVARIANT& Add(int type) {
    PROPVARIANT value{};
    value.vt = static_cast<VARTYPE>(type);
    return values.emplace_back(value);
  }

  wchar_t wide_[5] = L"7000";
  char narrow_[5] = "7000";
  struct {
    uint32_t bytes = 8;
    wchar_t text[5] = L"7000";
  } counted_;
  GUID id_ = {7000, 0, 0, {}};
  float floats_[2] = {7000, 7000};
  ULONG numbers_[2] = {7000, 7000};
};

TEST_F(NaturalColourSensors, AColourTemperatureOfAnotherTypeIsNone) {
  StartWithSensors(1);
  const OtherTypes others(7000);
  for (const PROPVARIANT& value : others.values) {
    SCOPED_TRACE(value.vt);
    notebook.Locked([&] { notebook.calls.clear(); });
    EXPECT_EQ(notebook.ReportLight({.lux = SensorFloat(300), .kelvin = value}), S_OK);
    EXPECT_EQ(notebook.CountCalls(kValue), 2U);
    EXPECT_EQ(notebook.CountOpen(kValue), 0U);
  }
  EXPECT_THAT(Readings(), IsEmpty());
  EXPECT_EQ(CountLogged(L"Exception"), 0U);
}

TEST_F(NaturalColourSensors, AnIlluminanceOfAnotherTypeIsADarkRooms) {
  StartWithSensors(1);
  const OtherTypes others(300);
  for (const PROPVARIANT& value : others.values) {
    SCOPED_TRACE(value.vt);
    notebook.Locked([&] { notebook.log.clear(); });
    EXPECT_EQ(notebook.ReportLight({.lux = value, .kelvin = SensorFloat(7000)}), S_OK);
    EXPECT_THAT(Readings(), ElementsAre(Pair(4000, 0)));
    EXPECT_EQ(notebook.CountOpen(kValue), 0U);
  }
}

// Both are cleared, and one that was not given does no harm.
TEST_F(NaturalColourSensors, ValuesAreCleared) {
  StartWithSensors(1);
  wchar_t text[] = L"7000";
  PROPVARIANT value{};
  value.vt = VT_LPWSTR;
  value.pwszVal = text;
  for (const unsigned failing : {1U, 2U}) {
    notebook.ClearFaults();
    notebook.FailCall(kValue, failing, Failure(E_FAIL));
    EXPECT_EQ(notebook.ReportLight({.lux = value, .kelvin = value}), S_OK);
    EXPECT_EQ(notebook.CountOpen(kValue), 0U);
  }
  notebook.ClearFaults();
  EXPECT_EQ(notebook.ReportLight({.lux = value, .kelvin = value}), S_OK);
  EXPECT_EQ(notebook.CountOpen(kValue), 0U);
  EXPECT_STREQ(text, L"7000") << "the sensor's own";
  EXPECT_THAT(Readings(), IsEmpty());
}

TEST_F(NaturalColourSensors, ExceptionsOfAReport) {
  StartWithSensors(1);
  wchar_t text[] = L"300";
  PROPVARIANT lux{};
  lux.vt = VT_LPWSTR;
  lux.pwszVal = text;
  for (const unsigned throwing : {1U, 2U}) {
    SCOPED_TRACE(throwing);
    notebook.Locked([&] { notebook.log.clear(); });
    notebook.ClearFaults();
    notebook.ThrowFrom(kValue, throwing, "thrown");
    EXPECT_EQ(notebook.ReportLight({.lux = lux, .kelvin = SensorFloat(7000)}), S_OK);
    EXPECT_EQ(
        LogOf(L"NaturalColorMsg::"),
        (std::vector<LogLine>{{1, L"HandleSensorData In.(NaturalColorMsg::OnDataUpdated)"},
                              {3, L"nDataUpdated Exception.(NaturalColorMsg::OnDataUpdated)"}}));
    EXPECT_EQ(notebook.CountOpen(kValue), 0U);
  }
}

TEST_F(NaturalColourSensors, AnExceptionOfTheAdjustPart) {
  StartWithSensors(1);
  notebook.ForgetRecords();
  notebook.ThrowFrom("RegSetValueExW", 1, "the ambient colour temperature for the printer");
  EXPECT_EQ(notebook.ReportLight(Reading(7000, 300)), S_OK);
  EXPECT_EQ(LogOf(L"NaturalColorMsg::"),
            (std::vector<LogLine>{
                {1, L"HandleSensorData In.(NaturalColorMsg::OnDataUpdated)"},
                {3, L"StartThreadForCctDimming Exception.(NaturalColorMsg::HandleSensorData)"}}));
  EXPECT_EQ(notebook.ReportLight(Reading(3500, 300)), S_OK);
  EXPECT_TRUE(testsupport::WaitUntil([&] { return Frames().size() >= 5 && SensorColor() == 3500; }))
      << "the next reading finds it in order";
}

TEST_F(NaturalColourSensors, AReadingWithoutACurve) {
  curve.clear();
  StartWithSensors(1);
  EXPECT_EQ(notebook.ReportLight(Reading(7000, 300)), S_OK);
  EXPECT_LOGGED(3, L"HandleSensorData error.(NaturalColorMsg::HandleSensorData)");
  EXPECT_THAT(Readings(), IsEmpty());
}

TEST_F(NaturalColourSensors, AnyOtherMonitorTypeDropsReports) {
  for (const int32_t type : {2, -1, 100}) {
    SCOPED_TRACE(type);
    notebook.ForgetRecords();
    dataIn.monitorType = type;
    StartWithSensors(1);
    EXPECT_EQ(Sinks(), "x");
    EXPECT_EQ(notebook.ReportLight(Reading(7000, 300)), S_OK);
    EXPECT_EQ(notebook.LightSensorSink()->OnDataUpdated(nullptr, nullptr), E_POINTER);
    EXPECT_EQ(notebook.CountCalls(kValue), 0U);
    EXPECT_THAT(LogOf(L"NaturalColorMsg::OnDataUpdated"), IsEmpty());
    Ring();
    Stop();
    EXPECT_EQ(notebook.CountCalls("BiosEventMonitor::StartEventMonitor"), 0U);
    EXPECT_EQ(notebook.CountCalls("BiosEventMonitor::StopEventMonitor"), 0U);
    EXPECT_EQ(notebook.CountCalls("BiosWmi::GetBiosInfo"), 0U);
  }
  EXPECT_LOGGED(1, L"InitNaturalColorMsg monitorType=100(NaturalColorMsg::InitNaturalColorMsg)");
}

// --- The sink as the Sensor API sees it ---

class NaturalColourSink : public NaturalColourSensors {
 protected:
  NaturalColourSink() { StartWithSensors(1); }

  // The sensor's own reference stays with it.
  ULONG References() {
    Sink().AddRef();
    return Sink().Release();
  }
  ISensorEvents& Sink() { return *sink_; }

  // Never looked into.
  ISensor* sensor = reinterpret_cast<ISensor*>(&dataIn);
  ISensorDataReport* report = reinterpret_cast<ISensorDataReport*>(&dataIn);

 private:
  ISensorEvents* sink_ = nullptr;

 protected:
  void SetUp() override {
    sink_ = notebook.LightSensorSink();
    ASSERT_NE(sink_, nullptr);
  }
};

TEST_F(NaturalColourSink, NullArgumentsAreRefused) {
  notebook.ForgetRecords();
  EXPECT_EQ(Sink().OnDataUpdated(nullptr, report), E_POINTER);
  EXPECT_EQ(Sink().OnDataUpdated(sensor, nullptr), E_POINTER);
  EXPECT_EQ(Sink().OnDataUpdated(nullptr, nullptr), E_POINTER);
  EXPECT_THAT(notebook.LogNow(), IsEmpty());
}

TEST_F(NaturalColourSink, WhileOffReportsAreDroppedAheadOfAnyCheck) {
  SwitchOff();
  Ring();
  notebook.ForgetRecords();
  EXPECT_EQ(Sink().OnDataUpdated(nullptr, nullptr), S_OK);
  EXPECT_EQ(Sink().OnDataUpdated(sensor, nullptr), S_OK);
  EXPECT_EQ(Sink().OnDataUpdated(sensor, report), S_OK);
  EXPECT_EQ(CountLogged(L"NaturalColorMsg::OnDataUpdated"), 0U);
  EXPECT_THAT(Readings(), IsEmpty());
}

TEST_F(NaturalColourSink, StatesAreLogged) {
  notebook.ForgetRecords();
  for (const int state :
       {SENSOR_STATE_READY, SENSOR_STATE_NOT_AVAILABLE, SENSOR_STATE_NO_DATA,
        SENSOR_STATE_INITIALIZING, SENSOR_STATE_ACCESS_DENIED, SENSOR_STATE_ERROR}) {
    EXPECT_EQ(notebook.ReportSensorState(state), S_OK);
  }
  EXPECT_EQ(Sink().OnStateChanged(nullptr, SENSOR_STATE_READY), E_INVALIDARG);
  EXPECT_EQ(Sink().OnStateChanged(nullptr, SENSOR_STATE_ACCESS_DENIED), E_INVALIDARG);
  EXPECT_EQ(notebook.LogNow(),
            (std::vector<LogLine>{
                {1, L"Light sensor is now ready.(NaturalColorMsg::OnStateChanged)"},
                {3, L"No permission for the time sensor.(NaturalColorMsg::OnStateChanged)"}}));
}

TEST_F(NaturalColourSink, OtherEventsDoNothing) {
  notebook.ForgetRecords();
  EXPECT_EQ(Sink().OnEvent(nullptr, GUID{}, nullptr), S_OK);
  EXPECT_EQ(Sink().OnEvent(sensor, GUID{}, nullptr), S_OK);
  EXPECT_EQ(Sink().OnLeave(GUID{}), S_OK);
  EXPECT_THAT(notebook.LogNow(), IsEmpty());
  EXPECT_THAT(notebook.CallsNow(), IsEmpty());
}

TEST_F(NaturalColourSink, QueryInterface_TakesNoReference) {
  const ULONG before = References();
  EXPECT_EQ(before, 2U) << "its own and the sensor's";
  for (const GUID& id : {__uuidof(IUnknown), __uuidof(ISensorEvents)}) {
    void* object = nullptr;
    EXPECT_EQ(Sink().QueryInterface(id, &object), S_OK);
    EXPECT_EQ(object, &Sink());
  }
  EXPECT_EQ(References(), before);
}

TEST_F(NaturalColourSink, QueryInterface_RefusesTheRest) {
  EXPECT_EQ(Sink().QueryInterface(__uuidof(IUnknown), nullptr), E_POINTER);
  EXPECT_EQ(Sink().QueryInterface(__uuidof(ISensor), nullptr), E_POINTER);
  for (const GUID& id : {__uuidof(ISensor), __uuidof(ISensorManager), GUID{}}) {
    void* object = &dataIn;
    EXPECT_EQ(Sink().QueryInterface(id, &object), E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
  }
}

TEST_F(NaturalColourSink, ReferencesAreCountedAndFreeNothing) {
  EXPECT_EQ(Sink().AddRef(), 3U);
  EXPECT_EQ(Sink().Release(), 2U);
  EXPECT_EQ(Sink().Release(), 1U);
  EXPECT_EQ(Sink().Release(), 0U);
  EXPECT_EQ(notebook.ReportLight(Reading(7000, 300)), S_OK);
  EXPECT_THAT(Readings(), ElementsAre(Pair(7000, 300)));
  EXPECT_EQ(Sink().AddRef(), 1U);
  EXPECT_EQ(Sink().AddRef(), 2U);
  SwitchOff();
  Ring();
  EXPECT_EQ(References(), 1U) << "the sensor gave its own back";
}

TEST_F(NaturalColourSink, SlotsOfTheTable) {
  void** const slots = *reinterpret_cast<void***>(&Sink());
  const auto call = [&]<typename... Arguments>(size_t slot, Arguments... arguments) {
    using Function = HRESULT(STDMETHODCALLTYPE*)(ISensorEvents*, Arguments...);
    return reinterpret_cast<Function>(slots[slot])(&Sink(), arguments...);
  };
  GUID id = __uuidof(ISensorEvents);
  void* object = nullptr;
  EXPECT_EQ(call(0, &id, &object), S_OK);
  EXPECT_EQ(object, &Sink());
  EXPECT_EQ(call(1), 3);
  EXPECT_EQ(call(2), 2);
  EXPECT_EQ(call(3, static_cast<ISensor*>(nullptr), 0), E_INVALIDARG);
  EXPECT_EQ(call(4, static_cast<ISensor*>(nullptr), report), E_POINTER);
  EXPECT_EQ(call(5, static_cast<ISensor*>(nullptr), &id, report), S_OK);
  EXPECT_EQ(call(6, &id), S_OK);
}

}  // namespace
}  // namespace scenarios
