#include "frame/Log.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <clocale>
#include <limits>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "support/LogCapture.h"

namespace velora {
namespace {

using testing::ElementsAre;
using testsupport::Line;
using testsupport::LogCapture;

constexpr FunctionLog kLog("Class::Method");

template <typename... Parts>
std::wstring Compose(const Parts&... parts) {
  const LogCapture capture;
  kLog.Info(parts...);
  const std::vector<Line> lines = capture.Lines();
  return lines.size() == 1 ? lines[0].text : L"not one line";
}

TEST(FunctionLog, EachLevelHasItsNumber) {
  const LogCapture capture;
  kLog.Debug(L"a");
  kLog.Info(L"b");
  kLog.Warn(L"c");
  kLog.Error(L"d");
  kLog.Write(LogWarn, L"e");
  EXPECT_THAT(capture.Lines(),
              ElementsAre(Line{0, L"a(Class::Method)"}, Line{1, L"b(Class::Method)"},
                          Line{2, L"c(Class::Method)"}, Line{3, L"d(Class::Method)"},
                          Line{2, L"e(Class::Method)"}));
}

TEST(FunctionLog, TheLinesOfTheHosts) {
  const LogCapture capture;
  FunctionLog("GetColorFieldCurrentMode").Info(L"defaultMode:", 1);
  FunctionLog("ResetColorField").Info();
  FunctionLog("ColorTemperatureReg::SetTemperatureValue")
      .Error(L"exceed temperatureValue:", 400, L", valid range:[0, 366]");
  EXPECT_THAT(capture.Lines(), ElementsAre(Line{1, L"defaultMode:1(GetColorFieldCurrentMode)"},
                                           Line{1, L"(ResetColorField)"},
                                           Line{3,
                                                L"exceed temperatureValue:400, valid range:[0, 366]"
                                                L"(ColorTemperatureReg::SetTemperatureValue)"}));
}

TEST(FunctionLog, AnEmptyMessageKeepsTheParentheses) { EXPECT_EQ(Compose(), L"(Class::Method)"); }

TEST(FunctionLog, WideTextAsItIs) {
  EXPECT_EQ(Compose(std::wstring(L"\x00e9\x4e2d"), L"x"), L"\x00e9\x4e2dx(Class::Method)");
}

TEST(FunctionLog, NarrowTextWidenedCharByChar) {
  const char text[] = "abc";
  EXPECT_EQ(Compose(text, std::string("def"), std::string_view("ghi")),
            L"abcdefghi(Class::Method)");
  EXPECT_EQ(Compose("\xe9"), L"\x00e9(Class::Method)");
}

TEST(FunctionLog, Integers) {
  EXPECT_EQ(Compose(-1, L" ", 4294967295U, L" ", uint64_t{18446744073709551615U}, L" ", 1234567),
            L"-1 4294967295 18446744073709551615 1234567(Class::Method)");
}

TEST(FunctionLog, DoublesShowSixSignificantDigits) {
  EXPECT_EQ(Compose(0.8199999928474426), L"0.82(Class::Method)");
  EXPECT_EQ(Compose(1.0), L"1(Class::Method)");
  EXPECT_EQ(Compose(-0.0), L"-0(Class::Method)");
  EXPECT_EQ(Compose(1234567.0), L"1.23457e+06(Class::Method)");
  EXPECT_EQ(Compose(123456.5), L"123456(Class::Method)");
  EXPECT_EQ(Compose(0.0001), L"0.0001(Class::Method)");
  EXPECT_EQ(Compose(0.00001), L"1e-05(Class::Method)");
  EXPECT_EQ(Compose(-1.7976931348623157e308), L"-1.79769e+308(Class::Method)");
  EXPECT_EQ(Compose(std::numeric_limits<double>::infinity()), L"inf(Class::Method)");
}

TEST(FunctionLog, FloatsShowSixSignificantDigits) {
  EXPECT_EQ(Compose(6500.0F), L"6500(Class::Method)");
  EXPECT_EQ(Compose(0.1F), L"0.1(Class::Method)");
  EXPECT_EQ(Compose(1234567.0F), L"1.23457e+06(Class::Method)");
}

TEST(FunctionLog, PointersAsAStreamPrintsThem) {
  const int object = 0;
  for (const void* const pointer :
       {static_cast<const void*>(&object), static_cast<const void*>(nullptr)}) {
    std::wostringstream expected;
    expected << pointer << L"(Class::Method)";
    EXPECT_EQ(Compose(pointer), expected.str());
  }
}

TEST(FunctionLog, SmallNumbersAreNoCharacters) {
  EXPECT_EQ(Compose(true, L" ", uint8_t{65}, L" ", int8_t{-1}, L" ", uint16_t{66}, L" ", INT64_MIN),
            L"1 65 -1 66 -9223372036854775808(Class::Method)");
}

TEST(FunctionLog, CharactersWideAndNarrow) {
  EXPECT_EQ(Compose(L'\x4e2d', '\xe9'), L"\x4e2d\x00e9(Class::Method)");
}

// Longer than the room of a usual line, in one part and in many.
TEST(FunctionLog, LinesOfAnyLength) {
  for (const size_t length : {200u, 239u, 240u, 241u, 255u, 256u, 257u, 1000u, 100'000u}) {
    const std::wstring wide(length, L'w');
    const std::string narrow(length, 'n');
    EXPECT_EQ(Compose(wide), wide + L"(Class::Method)");
    EXPECT_EQ(
        Compose(narrow, wide, 7, narrow),
        std::wstring(length, L'n') + wide + L"7" + std::wstring(length, L'n') + L"(Class::Method)");
  }
}

// The line ends there for the logger, which takes a terminated text.
TEST(FunctionLog, ANulCharacterEndsTheLine) {
  EXPECT_EQ(Compose(L"vendor:", '\0', L"x"), L"vendor:");
}

TEST(FunctionLog, TheHostsLocaleHasNoInfluence) {
  const std::locale previous = std::locale::global(std::locale::classic());
  struct Thousands : std::numpunct<wchar_t> {
    wchar_t do_thousands_sep() const override { return L'.'; }
    wchar_t do_decimal_point() const override { return L','; }
    std::string do_grouping() const override { return "\3"; }
  };
  std::locale::global(std::locale(std::locale::classic(), new Thousands));
  for (const char* name : {"German", "de_DE.UTF-8"}) {
    setlocale(LC_ALL, name);
  }
  EXPECT_EQ(Compose(1234567, L" ", 0.5, L" ", 0.5F), L"1234567 0.5 0.5(Class::Method)");
  setlocale(LC_ALL, "C");
  std::locale::global(previous);
}

#ifdef _WIN32
TEST(FunctionLog, LinesOfSeveralThreadsStayWhole) {
  constexpr int threadCount = 4;
  constexpr int lineCount = 50;
  const LogCapture capture;
  std::vector<std::thread> threads;
  for (int t = 0; t < threadCount; ++t) {
    threads.emplace_back([t] {
      for (int i = 0; i < lineCount; ++i) {
        kLog.Info(L"thread:", t, L" line:", i);
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  std::vector<std::wstring> texts;
  for (const Line& line : capture.Lines()) {
    texts.push_back(line.text);
  }
  std::vector<std::wstring> expected;
  for (int t = 0; t < threadCount; ++t) {
    for (int i = 0; i < lineCount; ++i) {
      expected.push_back(L"thread:" + std::to_wstring(t) + L" line:" + std::to_wstring(i) +
                         L"(Class::Method)");
    }
  }
  EXPECT_THAT(texts, testing::UnorderedElementsAreArray(expected));
}
#endif

}  // namespace
}  // namespace velora
