// The firmware's road into natural colour, in the shipped library.
#include "scenarios/NaturalColour.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace scenarios {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;
using testsupport::CallsOf;
using virtualnotebook::LogLine;

constexpr uint32_t kColourTemperatureEvent = 705;

constexpr char kStart[] = "BiosEventMonitor::StartEventMonitor";
constexpr char kStop[] = "BiosEventMonitor::StopEventMonitor";
constexpr char kQuery[] = "BiosWmi::GetBiosInfo";

const LogLine kStarting{1,
                        L"StartContorlWmiSensorEvent Wmi(NaturalColorMsg::ContorlWmiSensorEvent)"};
const LogLine kWeighed{1, L"SetWmiSensorColor end!(NaturalColorMsg::SetWmiSensorColor)"};
const LogLine kConnected{1,
                         L"StartMonitorNatureColor Success(NaturalColorMsg::ContorlNatureColor)"};

LogLine ReadLine(const std::wstring& kelvin) {
  return {1, L"ReadWmiSensorColor1:" + kelvin + L"(NaturalColorMsg::ReadWmiSensorColor)"};
}

std::vector<uint8_t> Answer(uint32_t kelvin, uint8_t status = 0) {
  return {status, static_cast<uint8_t>(kelvin), static_cast<uint8_t>(kelvin >> 8),
          static_cast<uint8_t>(kelvin >> 16), static_cast<uint8_t>(kelvin >> 24)};
}

class NaturalColourBios : public NaturalColourTest {
 protected:
  NaturalColourBios() {
    dataIn.monitorType = 1;
    notebook.biosAnswer = Answer(6400);
  }

  void StartOn() {
    SwitchOn();
    Start();
  }

  void SetAnswer(std::vector<uint8_t> answer) {
    notebook.Locked([&] { notebook.biosAnswer = std::move(answer); });
  }
  void ForgetLog() {
    notebook.Locked([&] { notebook.log.clear(); });
  }

  // What was said of the firmware, and of connecting the sensors.
  std::vector<LogLine> FirmwareLog() const {
    std::vector<LogLine> lines;
    for (const LogLine& line : notebook.LogNow()) {
      if (line.text.find(L"Wmi") != std::wstring::npos ||
          line.text.find(L"NaturalColorMsg::ReadWmi") != std::wstring::npos ||
          line.text.find(L"NaturalColorMsg::ContorlNatureColor") != std::wstring::npos) {
        lines.push_back(line);
      }
    }
    return lines;
  }
};

// --- The monitor ---

TEST_F(NaturalColourBios, StartAsksAtOnceAndConnectsTheSensorsThen) {
  StartOn();
  EXPECT_EQ(FirmwareLog(),
            (std::vector<LogLine>{kStarting, ReadLine(L"6400"), kWeighed, kConnected}));
  EXPECT_THAT(
      CallsOf(notebook,
              {"ISensorManager::GetSensorsByCategory", kStart, kQuery, "ISensor::SetEventSink"}),
      ElementsAre("ISensorManager::GetSensorsByCategory", kStart, kQuery, "ISensor::SetEventSink"));
  EXPECT_THAT(Readings(), ElementsAre(Pair(6400, 300)));
  EXPECT_TRUE(testsupport::WaitUntil([&] { return Frames().size() == 5; }));
  EXPECT_EQ(SensorColor(), 6400);
  EXPECT_LOGGED(1, L"InitNaturalColorMsg monitorType=1(NaturalColorMsg::InitNaturalColorMsg)");
}

TEST_F(NaturalColourBios, AChangeOfTheSettingsConnectsTheSensorsFirst) {
  StartOn();
  ForgetLog();
  Ring();
  EXPECT_EQ(FirmwareLog(),
            (std::vector<LogLine>{kConnected, kStarting, ReadLine(L"6400"), kWeighed}));
  EXPECT_EQ(notebook.CountCalls(kStart), 2U) << "started again";
  EXPECT_EQ(notebook.CountCalls(kStop), 0U);
}

TEST_F(NaturalColourBios, WhileOffTheStartLeavesTheFirmwareAlone) {
  SwitchOff();
  Start();
  for (const char* function : {kStart, kStop, kQuery}) {
    EXPECT_EQ(notebook.CountCalls(function), 0U) << function;
  }
  EXPECT_FALSE(notebook.FireBiosEvent(kColourTemperatureEvent));
}

TEST_F(NaturalColourBios, SwitchingOffStopsTheMonitor) {
  StartOn();
  SwitchOff();
  Ring();
  EXPECT_EQ(notebook.CountCalls(kStop), 1U);
  EXPECT_FALSE(notebook.FireBiosEvent(kColourTemperatureEvent));
  EXPECT_EQ(CountLogged(L"StopWmiEventMonitor"), 0U);
  EXPECT_EQ(notebook.CountCalls(kQuery), 1U) << "the start's";
}

TEST_F(NaturalColourBios, TheStopStopsTheMonitorBehindTheSensors) {
  StartOn();
  notebook.ForgetRecords();
  Stop();
  EXPECT_THAT(CallsOf(notebook, {"ISensorManager::Release", kStop, "PlatformFini"}),
              ElementsAre("ISensorManager::Release", kStop, "PlatformFini"));
  EXPECT_EQ(CountLogged(L"StopWmiEventMonitor"), 0U);
  EXPECT_FALSE(notebook.FireBiosEvent(kColourTemperatureEvent));
}

TEST_F(NaturalColourBios, AMonitorThatDoesNotStartIsAskedAllTheSame) {
  notebook.FailCall(kStart, 1, 7);
  StartOn();
  EXPECT_EQ(FirmwareLog(),
            (std::vector<LogLine>{
                kStarting,
                ReadLine(L"6400"),
                kWeighed,
                {3, L"StartEventMonitor Faild:7(NaturalColorMsg::ContorlWmiSensorEvent)"},
                kConnected}));
  EXPECT_THAT(Readings(), ElementsAre(Pair(6400, 300)));
}

TEST_F(NaturalColourBios, CodesAreLoggedWithTheirSign) {
  notebook.FailCall(kStart, 1, static_cast<uint64_t>(-3));
  notebook.FailCall(kQuery, 1, static_cast<uint64_t>(-15));
  StartOn();
  EXPECT_LOGGED(3, L"StartEventMonitor Faild:-3(NaturalColorMsg::ContorlWmiSensorEvent)");
  EXPECT_LOGGED(3, L"GetBiosInfo Failed! ret:-15(NaturalColorMsg::ReadWmiSensorColor)");
}

TEST_F(NaturalColourBios, AMonitorThatDoesNotStop) {
  StartOn();
  notebook.FailCall(kStop, 0, 7);
  SwitchOff();
  Ring();
  EXPECT_LOGGED(3, L"StopWmiEventMonitor fail.(NaturalColorMsg::ContorlWmiSensorEvent)");
  SwitchOn();
  Ring();
  ForgetLog();
  Stop();
  EXPECT_EQ(LogOf(L"NaturalColorMsg::Stop"),
            (std::vector<LogLine>{
                {1, L"StopNaturalColorMsg WMI&&SENSOR(NaturalColorMsg::StopNaturalColorMsg)"},
                {1, L"StopSensorData Success.(NaturalColorMsg::StopSensorData)"},
                {3, L"StopWmiEventMonitor fail.(NaturalColorMsg::StopNaturalColorMsg)"},
                {1, L"StopNaturalColorMsg Success(NaturalColorMsg::StopNaturalColorMsg)"}}));
}

TEST_F(NaturalColourBios, AnExceptionWhileTheMonitorStops) {
  StartOn();
  ForgetLog();
  notebook.ThrowFrom(kStop, 1, "thrown");
  Stop();
  EXPECT_EQ(LogOf(L"NaturalColorMsg::Stop"),
            (std::vector<LogLine>{
                {1, L"StopNaturalColorMsg WMI&&SENSOR(NaturalColorMsg::StopNaturalColorMsg)"},
                {1, L"StopSensorData Success.(NaturalColorMsg::StopSensorData)"},
                {3, L"StopNaturalColorMsg Exception.(NaturalColorMsg::StopNaturalColorMsg)"},
                {1, L"StopNaturalColorMsg Success(NaturalColorMsg::StopNaturalColorMsg)"}}));
}

TEST_F(NaturalColourBios, OtherMonitorTypesLeaveTheFirmwareAlone) {
  for (const int32_t type : {0, 2, -1}) {
    SCOPED_TRACE(type);
    dataIn.monitorType = type;
    StartOn();
    Ring();
    SwitchOff();
    Ring();
    SwitchOn();
    Stop();
  }
  for (const char* function : {kStart, kStop, kQuery}) {
    EXPECT_EQ(notebook.CountCalls(function), 0U) << function;
  }
}

// --- Events and queries ---

TEST_F(NaturalColourBios, TheRequest) {
  StartOn();
  ASSERT_TRUE(notebook.FireBiosEvent(kColourTemperatureEvent));
  ASSERT_EQ(notebook.biosQueries.size(), 2U);
  for (const virtualnotebook::BiosQuery& query : notebook.biosQueries) {
    EXPECT_EQ(query.request[0], 6);
    EXPECT_EQ(query.request[1], 0x26);
    EXPECT_EQ(std::count(query.request.begin() + 2, query.request.end(), 0), 62);
    EXPECT_TRUE(query.outputWasZero);
  }
}

TEST_F(NaturalColourBios, TheEventOfANewColourTemperatureIsTheOnlyOne) {
  StartOn();
  ForgetLog();
  for (const uint32_t event : {0U, 1U, 704U, 706U, 705U + 65536U, 0xFFFFFFFFU}) {
    EXPECT_TRUE(notebook.FireBiosEvent(event));
  }
  EXPECT_EQ(notebook.CountCalls(kQuery), 1U) << "the start's";
  EXPECT_THAT(FirmwareLog(), IsEmpty());
  SetAnswer(Answer(7100));
  EXPECT_TRUE(notebook.FireBiosEvent(kColourTemperatureEvent));
  EXPECT_EQ(FirmwareLog(), (std::vector<LogLine>{ReadLine(L"7100"), kWeighed}));
  EXPECT_THAT(Readings(), ElementsAre(Pair(7100, 300)));
}

TEST_F(NaturalColourBios, OneStatusIsAnError) {
  StartOn();
  for (unsigned status = 0; status < 256; ++status) {
    SCOPED_TRACE(status);
    ForgetLog();
    const uint32_t kelvin = 5000 + 10 * status;
    SetAnswer(Answer(kelvin, static_cast<uint8_t>(status)));
    notebook.FireBiosEvent(kColourTemperatureEvent);
    if (status == 1) {
      EXPECT_EQ(FirmwareLog(),
                (std::vector<LogLine>{
                    {3, L"OutPut Params status Error!(NaturalColorMsg::ReadWmiSensorColor)"}}));
      EXPECT_THAT(Readings(), IsEmpty());
    } else {
      EXPECT_EQ(FirmwareLog(), (std::vector<LogLine>{ReadLine(std::to_wstring(kelvin)), kWeighed}));
      EXPECT_THAT(Readings(), ElementsAre(Pair(static_cast<float>(kelvin), 300)));
    }
  }
}

// Little-endian behind the status; the rest of the answer says nothing.
TEST_F(NaturalColourBios, WhereTheAnswerHasTheColourTemperature) {
  StartOn();
  ForgetLog();
  std::vector<uint8_t> answer(256, 0xA5);
  const uint8_t first[] = {0, 0x58, 0x1B, 0, 0};
  std::ranges::copy(first, answer.begin());
  SetAnswer(answer);
  notebook.FireBiosEvent(kColourTemperatureEvent);
  EXPECT_THAT(Readings(), ElementsAre(Pair(7000, 300)));
  SetAnswer({0, 0x01, 0x02, 0x03, 0x04, 0xFF});
  notebook.FireBiosEvent(kColourTemperatureEvent);
  SetAnswer({0, 0xFF, 0xFF, 0xFF, 0xFF});
  notebook.FireBiosEvent(kColourTemperatureEvent);
  SetAnswer({0});
  notebook.FireBiosEvent(kColourTemperatureEvent);
  EXPECT_EQ(FirmwareLog(),
            (std::vector<LogLine>{ReadLine(L"7000"), kWeighed, ReadLine(L"67305985"), kWeighed,
                                  ReadLine(L"4294967295"), kWeighed, ReadLine(L"0"), kWeighed}));
}

TEST_F(NaturalColourBios, AQueryThatFailsMovesNothing) {
  StartOn();
  ForgetLog();
  notebook.FailCall(kQuery, 1, 5);
  SetAnswer(Answer(7100));
  EXPECT_TRUE(notebook.FireBiosEvent(kColourTemperatureEvent));
  EXPECT_EQ(FirmwareLog(),
            (std::vector<LogLine>{
                {3, L"GetBiosInfo Failed! ret:5(NaturalColorMsg::ReadWmiSensorColor)"}}));
  EXPECT_THAT(Readings(), IsEmpty());
  notebook.ReportLight(Reading(0, 200));
  EXPECT_THAT(Readings(), ElementsAre(Pair(6400, 200))) << "the last one that was read";
}

TEST_F(NaturalColourBios, AStatusErrorKeepsTheLastColourTemperature) {
  StartOn();
  SetAnswer(Answer(7100, 1));
  EXPECT_TRUE(notebook.FireBiosEvent(kColourTemperatureEvent));
  ForgetLog();
  notebook.ReportLight(Reading(0, 200));
  EXPECT_THAT(Readings(), ElementsAre(Pair(6400, 200)));
}

TEST_F(NaturalColourBios, WithoutACurve) {
  curve.clear();
  StartOn();
  EXPECT_EQ(FirmwareLog(), (std::vector<LogLine>{
                               kStarting,
                               ReadLine(L"6400"),
                               {3, L"SetWmiSensorColor error.(NaturalColorMsg::SetWmiSensorColor)"},
                               kWeighed,
                               kConnected}));
  EXPECT_EQ(notebook.ReportLight(Reading(7000, 300)), S_OK);
  EXPECT_LOGGED(3, L"HandleWmiData error.(NaturalColorMsg::HandleWmiData)");
}

// The monitor may fire once more while it is being stopped.
TEST_F(NaturalColourBios, AnEventWhileOffIsWeighedAndDimsNothing) {
  StartOn();
  const virtualnotebook::BiosEventCallback callback = notebook.biosEventCallback;
  ASSERT_NE(callback, nullptr);
  SwitchOff();
  Ring();
  ASSERT_TRUE(testsupport::WaitUntil([&] { return SensorColor() == 6500; }));
  ForgetLog();
  SetAnswer(Answer(7100));
  callback(kColourTemperatureEvent);
  EXPECT_EQ(FirmwareLog(), (std::vector<LogLine>{ReadLine(L"7100"), kWeighed}));
  EXPECT_THAT(Readings(), ElementsAre(Pair(7100, 300)));
  Stop();
  EXPECT_EQ(SensorColor(), 6500);
}

// --- Together with the light sensor ---

TEST_F(NaturalColourBios, EachSourceIsWeighedWithTheLastOfTheOther) {
  StartOn();
  notebook.ForgetRecords();
  EXPECT_EQ(notebook.ReportLight(Reading(3000, 120.5F)), S_OK);
  EXPECT_LOGGED(1, L"HandleWmiData In.120.5(NaturalColorMsg::HandleWmiData)");
  EXPECT_EQ(CountLogged(L"HandleSensorData"), 0U);
  EXPECT_EQ(notebook.CountCalls("ISensorDataReport::GetSensorValue"), 1U)
      << "the sensor's own colour temperature is not asked for";
  EXPECT_EQ(notebook.CountCalls(kQuery), 0U);
  SetAnswer(Answer(7200));
  notebook.FireBiosEvent(kColourTemperatureEvent);
  EXPECT_EQ(notebook.ReportLight({.lux = virtualnotebook::SensorFloat(10), .kelvin = {}}), S_OK);
  notebook.FireBiosEvent(kColourTemperatureEvent);
  EXPECT_THAT(Readings(),
              ElementsAre(Pair(6400, 120.5F), Pair(7200, 120.5F), Pair(4000, 10), Pair(4000, 10)));
}

TEST_F(NaturalColourBios, ValuesAheadOfAnyReading) {
  notebook.FailCall(kQuery, 1, 5);
  StartOn();
  EXPECT_EQ(notebook.ReportLight(Reading(0, 200)), S_OK);
  EXPECT_THAT(Readings(), ElementsAre(Pair(5000, 200)));
}

TEST_F(NaturalColourBios, WithoutSensorsTheFirmwareGoesOn) {
  notebook.FailCall("CoCreateInstance", 1, static_cast<uint64_t>(E_FAIL));
  StartOn();
  SetAnswer(Answer(7200));
  EXPECT_TRUE(notebook.FireBiosEvent(kColourTemperatureEvent));
  EXPECT_THAT(Readings(), ElementsAre(Pair(6400, 300), Pair(7200, 300)));
}

TEST_F(NaturalColourBios, AnIlluminanceOfAnotherTypeIsNone) {
  StartOn();
  ForgetLog();
  wchar_t text[] = L"120";
  PROPVARIANT allocated{};
  allocated.vt = VT_LPWSTR;
  allocated.pwszVal = text;
  std::vector<PROPVARIANT> values = {allocated};
  for (const VARTYPE type : {VT_EMPTY, VT_NULL, VT_I4, VT_UI4, VT_R8, VT_BOOL, VT_ERROR}) {
    values.push_back(virtualnotebook::SensorFloat(120));
    values.back().vt = type;
  }
  for (const PROPVARIANT& value : values) {
    EXPECT_EQ(notebook.ReportLight({.lux = value, .kelvin = {}}), S_OK);
    EXPECT_EQ(notebook.CountOpen("ISensorDataReport::GetSensorValue"), 0U) << value.vt;
  }
  EXPECT_EQ(notebook.ReportLight({.lux = {}, .kelvin = virtualnotebook::SensorFloat(7000)}), S_OK);
  EXPECT_THAT(LogOf(L"NaturalColorMsg::"), IsEmpty());
  EXPECT_THAT(Readings(), IsEmpty());
  notebook.FireBiosEvent(kColourTemperatureEvent);
  EXPECT_THAT(Readings(), ElementsAre(Pair(6400, 300))) << "the illuminance stays";
}

TEST_F(NaturalColourBios, ExceptionsOfAReport) {
  StartOn();
  ASSERT_TRUE(testsupport::WaitUntil([&] { return Frames().size() == 5; }));
  const LogLine exception{3, L"nDataUpdated Exception.(NaturalColorMsg::OnDataUpdated)"};
  ForgetLog();
  notebook.ThrowFrom("ISensorDataReport::GetSensorValue", 1, "thrown");
  EXPECT_EQ(notebook.ReportLight(Reading(0, 10)), S_OK);
  EXPECT_EQ(LogOf(L"NaturalColorMsg::"), (std::vector<LogLine>{exception}));
  ForgetLog();
  notebook.ThrowFrom("RegSetValueExW", 1, "the ambient colour temperature for the printer");
  EXPECT_EQ(notebook.ReportLight(Reading(0, 10)), S_OK);
  EXPECT_EQ(LogOf(L"NaturalColorMsg::"),
            (std::vector<LogLine>{{1, L"HandleWmiData In.10(NaturalColorMsg::HandleWmiData)"},
                                  exception}));
}

// What was read last outlives a stop.
TEST_F(NaturalColourBios, ARestartKeepsTheLastReadings) {
  StartOn();
  notebook.ReportLight(Reading(0, 200));
  Stop();
  notebook.FailCall(kQuery, 1, 5);
  Start();
  ForgetLog();
  SetAnswer(Answer(7200));
  notebook.FireBiosEvent(kColourTemperatureEvent);
  EXPECT_THAT(Readings(), ElementsAre(Pair(7200, 200)));
  Stop();
  notebook.ClearFaults();
  notebook.FailCall(kQuery, 1, 5);
  Start();
  ForgetLog();
  notebook.ReportLight(Reading(0, 210));
  EXPECT_THAT(Readings(), ElementsAre(Pair(7200, 210)));
}

}  // namespace
}  // namespace scenarios
