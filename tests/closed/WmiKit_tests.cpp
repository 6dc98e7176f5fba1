#include "WmiKit/WmiKit.h"

#include <windows.h>

#include <gtest/gtest.h>
#include <objbase.h>
#include <wbemidl.h>

#include <algorithm>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

using NxSDK::WmiQuery;

namespace {

using Texts = std::vector<std::wstring>;

constexpr wchar_t kCimV2[] = L"ROOT\\CIMV2";

int Ask(const wchar_t* nameSpace, const wchar_t* query, const wchar_t* property, Texts& results) {
  return WmiQuery(nameSpace).ExcuteQuery(query, property, results, false);
}

std::wstring TextOf(VARIANT value) {
  std::wstring text = L"before";
  WmiQuery::GetResult(value, text);
  return text;
}

VARIANT Value(VARTYPE type) {
  VARIANT value;
  VariantInit(&value);
  V_VT(&value) = type;
  return value;
}

}  // namespace

TEST(WmiQuery, ExcuteQuery_OneRow) {
  Texts results = {L"from before"};
  ASSERT_EQ(Ask(kCimV2, L"SELECT * FROM Win32_OperatingSystem", L"Caption", results), 0);
  ASSERT_EQ(results.size(), 1u);
  EXPECT_NE(results[0].find(L"Windows"), std::wstring::npos);
}

TEST(WmiQuery, ExcuteQuery_NumbersComeAsText) {
  Texts results;
  const std::wstring query = L"SELECT ProcessId FROM Win32_Process WHERE ProcessId = " +
                             std::to_wstring(GetCurrentProcessId());
  ASSERT_EQ(Ask(kCimV2, query.c_str(), L"ProcessId", results), 0);
  EXPECT_EQ(results, Texts{std::to_wstring(GetCurrentProcessId())});
}

TEST(WmiQuery, ExcuteQuery_EveryRow) {
  Texts names;
  ASSERT_EQ(Ask(kCimV2, L"SELECT Name FROM Win32_Process", L"Name", names), 0);
  EXPECT_GT(names.size(), 1u);
  EXPECT_NE(std::find(names.begin(), names.end(), L"closed_tests.exe"), names.end());
}

TEST(WmiQuery, ExcuteQuery_NoRow) {
  Texts results = {L"from before"};
  EXPECT_EQ(
      Ask(kCimV2, L"SELECT Name FROM Win32_Process WHERE Name = 'absent.exe'", L"Name", results),
      -15);
  EXPECT_TRUE(results.empty());
}

TEST(WmiQuery, ExcuteQueryImpl_NoRowIsSuccess) {
  int calls = 0;
  EXPECT_EQ(WmiQuery(kCimV2).ExcuteQueryImpl(
                L"SELECT Name FROM Win32_Process WHERE Name = 'absent.exe'", L"Name",
                [&](const VARIANT&) { ++calls; }, true),
            0);
  EXPECT_EQ(calls, 0);
}

TEST(WmiQuery, ExcuteQuery_BadInput) {
  Texts results;
  const struct {
    const wchar_t* nameSpace;
    const wchar_t* query;
    const wchar_t* property;
  } rows[] = {
      {L"ROOT\\ABSENT", L"SELECT * FROM Win32_OperatingSystem", L"Caption"},
      {kCimV2, L"SELECT FROM WHERE", L"Caption"},
      {kCimV2, L"", L"Caption"},
      {kCimV2, L"SELECT * FROM Win32_OperatingSystem", L"Absent"},
      {kCimV2, L"SELECT * FROM Win32_OperatingSystem", L""},
  };
  for (const auto& row : rows) {
    const int status = Ask(row.nameSpace, row.query, row.property, results);
    EXPECT_LT(status, 0) << row.nameSpace << " " << row.query;
    EXPECT_NE(status, WmiQuery::kNoResult) << "the step's own code";
    EXPECT_TRUE(results.empty());
  }
}

TEST(WmiQuery, ExcuteQueryImpl_WithoutACallback) {
  EXPECT_EQ(WmiQuery(kCimV2).ExcuteQueryImpl(L"SELECT * FROM Win32_OperatingSystem", L"Caption",
                                             nullptr, false),
            E_INVALIDARG);
}

TEST(WmiQuery, ExcuteQueryImpl_AnExceptionOfTheCallbackReachesTheCaller) {
  std::thread([] {
    EXPECT_THROW(WmiQuery(kCimV2).ExcuteQueryImpl(
                     L"SELECT * FROM Win32_OperatingSystem", L"Caption",
                     [](const VARIANT&) { throw std::runtime_error("enough"); }, false),
                 std::runtime_error);
    EXPECT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK)
        << "and the thread has left COM";
    CoUninitialize();
  }).join();
}

TEST(WmiQuery, ExcuteQuery_LeavesTheThreadOutsideCom) {
  std::thread([] {
    Texts results;
    EXPECT_EQ(Ask(kCimV2, L"SELECT * FROM Win32_OperatingSystem", L"Caption", results), 0);
    // S_OK: the first one in. After a membership left behind it would be refused.
    EXPECT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK);
    CoUninitialize();
  }).join();
}

TEST(WmiQuery, ExcuteQuery_OnThreadsOfBothComKinds) {
  for (const DWORD kind : {COINIT_APARTMENTTHREADED, COINIT_MULTITHREADED}) {
    std::thread([kind] {
      ASSERT_EQ(CoInitializeEx(nullptr, kind), S_OK);
      Texts results;
      EXPECT_EQ(Ask(kCimV2, L"SELECT * FROM Win32_OperatingSystem", L"Caption", results), 0);
      EXPECT_EQ(results.size(), 1u);
      // Still a member in its own way: S_FALSE says so.
      EXPECT_EQ(CoInitializeEx(nullptr, kind), S_FALSE);
      CoUninitialize();
      CoUninitialize();
    }).join();
  }
}

TEST(WmiQuery, ExcuteQuery_FromSeveralThreadsAtOnce) {
  if (GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version")) {
    GTEST_SKIP() << "Wine's WMI itself does not stand several threads (seen with Wine 8.0)";
  }
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([] {
      for (int n = 0; n < 5; ++n) {
        Texts results;
        EXPECT_EQ(Ask(kCimV2, L"SELECT * FROM Win32_OperatingSystem", L"Caption", results), 0);
        EXPECT_EQ(results.size(), 1u);
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
}

TEST(WmiQuery, GetResult_Texts) {
  VARIANT value = Value(VT_BSTR);
  V_BSTR(&value) = SysAllocStringLen(L"DISPLAY\\BOE\0X", 13);
  EXPECT_EQ(TextOf(value), std::wstring(L"DISPLAY\\BOE\0X", 13)) << "with a zero in it";
  VariantClear(&value);
  EXPECT_EQ(TextOf(Value(VT_BSTR)), L"") << "a null text";
}

TEST(WmiQuery, GetResult_Numbers) {
  VARIANT value = Value(VT_I4);
  V_I4(&value) = -2147483647 - 1;
  EXPECT_EQ(TextOf(value), L"-2147483648");
  value = Value(VT_UI4);
  V_UI4(&value) = 4294967295u;
  EXPECT_EQ(TextOf(value), L"4294967295");
  value = Value(VT_UI1);
  V_UI1(&value) = 255;
  EXPECT_EQ(TextOf(value), L"255");
  value = Value(VT_I2);
  V_I2(&value) = -5;
  EXPECT_EQ(TextOf(value), L"-5");
  value = Value(VT_R8);
  V_R8(&value) = 1.5;
  EXPECT_EQ(TextOf(value), L"1.5") << "a point, whatever the user's language";
}

TEST(WmiQuery, GetResult_TruthValues) {
  VARIANT value = Value(VT_BOOL);
  V_BOOL(&value) = VARIANT_TRUE;
  EXPECT_EQ(TextOf(value), L"True");
  V_BOOL(&value) = VARIANT_FALSE;
  EXPECT_EQ(TextOf(value), L"False");
}

TEST(WmiQuery, GetResult_NoText) {
  EXPECT_EQ(TextOf(Value(VT_EMPTY)), L"");
  EXPECT_EQ(TextOf(Value(VT_NULL)), L"");
  VARIANT array = Value(VT_ARRAY | VT_I4);
  V_ARRAY(&array) = SafeArrayCreateVector(VT_I4, 0, 3);
  EXPECT_EQ(TextOf(array), L"");
  VariantClear(&array);
}

TEST(BiosWmi, GetBiosInfo_IsNotAvailable) {
  NxSDK::WmiInputParams input{{6, 0x26}};
  NxSDK::WmiOutputParams output;
  std::fill(std::begin(output.bytes), std::end(output.bytes), uint8_t{0xA5});
  EXPECT_EQ(NxSDK::BiosWmi::GetBiosInfo(input, output), static_cast<int>(0x80041009));
  EXPECT_EQ(std::count(std::begin(output.bytes), std::end(output.bytes), 0xA5), 256);
}

namespace {

int fired = 0;
void Count(uint32_t) { ++fired; }

}  // namespace

TEST(BiosEventMonitor, StartsAndStopsAndNeverFires) {
  NxSDK::BiosEventMonitor monitor;
  EXPECT_EQ(monitor.StopEventMonitor(), 0) << "without a start";
  EXPECT_EQ(monitor.StartEventMonitor(&Count), 0);
  Sleep(50);
  EXPECT_EQ(monitor.StopEventMonitor(), 0);
  EXPECT_EQ(fired, 0);
  EXPECT_NE(monitor.StartEventMonitor(nullptr), 0);
}
