#include "settings/NumberText.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstdio>
#include <limits>
#include <locale>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/GuardedBuffer.h"

namespace velora {
namespace {

// Texts on every edge of the two ways of reading a number.
const std::vector<std::wstring> kTexts = {
    L"",
    L" ",
    L"\t\n",
    L"0",
    L"-0",
    L"+0",
    L"00012",
    L"0.5",
    L".5",
    L"5.",
    L".",
    L"-.",
    L"+.5",
    L"-.5e1",
    L"1e3",
    L"1E3",
    L"1e+3",
    L"1e-3",
    L"1e",
    L"1e+",
    L"1ex",
    L"1e5.5",
    L"1.2.3",
    L"e5",
    L".e5",
    L"0.5abc",
    L"abc",
    L"12abc",
    L" 7",
    L"\v\f\r7",
    L"- 7",
    L"+-7",
    L"-+7",
    L"--7",
    L"++7",
    L"1,5",
    L"1 5",
    L"0x",
    L"0X",
    L"0xg",
    L"0x.",
    L"0x.g",
    L"0x.8",
    L"0x1p3",
    L"0X1P3",
    L"-0x1p3",
    L"0x1.8p",
    L"0x1p+3",
    L"0x1p-3",
    L"0x1p+-3",
    L"0x1p-+3",
    L"0x1p--3",
    L"0x1p++3",
    L"-0x1.8p+-3",
    L"0x8+-3",
    L"0x-1",
    L"0x+1",
    L"0xinf",
    L"0x1p5000",
    L"0x1p-5000",
    L"0xfg",
    L"inf",
    L"INF",
    L"-inf",
    L"infinity",
    L"infin",
    L"nan",
    L"NAN",
    L"-nan",
    L"nan(12)",
    L"nan(",
    L"nanx",
    L"in",
    L"1e308",
    L"1e309",
    L"-1e309",
    L"1e400",
    L"2e-324",
    L"1e-400",
    L"-1e-400",
    L"1e-99999999999999999999",
    L"1e99999999999999999999",
    L"0e-999999",
    L"0e99999999",
    L"1.7976931348623157e308",
    L"1.7976931348623159e308",
    L"0.1234567",
    L"123456789.987654321",
    L"1234567890123456789012345678901234567890",
    L"0.000000000000000000000000000000000000000001e40",
    L"5\x00e9",
    L"\x00e9"
    L"5",
    L"\x0665",
    L"5\xff10",
    L"2.2250738585072014e-308",
};

// Short texts of the characters that matter, the same on every run.
std::vector<std::wstring> RandomTexts() {
  constexpr std::wstring_view alphabet = L"0123456789..--++eEexXpfinax ";
  constexpr int count = 20000;
  std::mt19937 random(1);
  std::vector<std::wstring> texts(count);
  for (std::wstring& text : texts) {
    for (auto length = random() % 12; length > 0; --length) {
      text.push_back(alphabet[random() % alphabet.size()]);
    }
  }
  return texts;
}

enum class Outcome { Number, InvalidArgument, OutOfRange };

struct Parsed {
  Outcome outcome;
  double value = 0;
};

// NaNs are alike, zeros are not.
bool AreAlike(double a, double b) {
  return (std::isnan(a) && std::isnan(b)) || (a == b && std::signbit(a) == std::signbit(b));
}

template <typename Function>
Parsed Run(const Function& parse, const std::wstring& text) {
  try {
    return {Outcome::Number, parse(text)};
  } catch (const std::invalid_argument&) {
    return {Outcome::InvalidArgument};
  } catch (const std::out_of_range&) {
    return {Outcome::OutOfRange};
  }
}

void ExpectAsStod(const std::wstring& text) {
  const Parsed parsed = Run(ParseDouble, text);
  const Parsed expected = Run([](const std::wstring& t) { return std::stod(t); }, text);
  EXPECT_EQ(parsed.outcome, expected.outcome) << testing::PrintToString(text);
  EXPECT_PRED2(AreAlike, parsed.value, expected.value) << testing::PrintToString(text);
}

void ExpectAsStream(const std::wstring& text) {
  constexpr double untouched = 42;
  double value = untouched;
  ExtractDouble(text, value);
  double expected = untouched;
  std::wistringstream stream(text);
  stream.imbue(std::locale::classic());
  stream >> expected;
  EXPECT_PRED2(AreAlike, value, expected) << testing::PrintToString(text);
}

// A C locale with a decimal comma, while the object lives.
class CommaLocale {
 public:
  CommaLocale() {
    for (const char* name : {"German", "de_DE.UTF-8", "de_DE"}) {
      if (setlocale(LC_ALL, name) != nullptr) {
        break;
      }
    }
    name_ = setlocale(LC_ALL, nullptr);
  }
  ~CommaLocale() { setlocale(LC_ALL, "C"); }
  bool IsSet() const { return *localeconv()->decimal_point == ','; }
  const std::string& Name() const { return name_; }

 private:
  std::string name_;
};

TEST(NumberText, FormatDouble_SixDecimals) {
  EXPECT_EQ(FormatDouble(0.5), L"0.500000");
  EXPECT_EQ(FormatDouble(0.1234567), L"0.123457");
  EXPECT_EQ(FormatDouble(0), L"0.000000");
  EXPECT_EQ(FormatDouble(-0.0), L"-0.000000");
  EXPECT_EQ(FormatDouble(-1.5), L"-1.500000");
  EXPECT_EQ(FormatDouble(1e-7), L"0.000000");
  EXPECT_EQ(FormatDouble(6500), L"6500.000000");
  EXPECT_EQ(FormatDouble(1e22), L"10000000000000000000000.000000");
  EXPECT_EQ(FormatDouble(std::numeric_limits<double>::infinity()), L"inf");
  EXPECT_EQ(FormatDouble(std::numeric_limits<double>::quiet_NaN()), L"nan");
}

TEST(NumberText, FormatDouble_TheLargestDoubleFits) {
  const std::wstring text = FormatDouble(std::numeric_limits<double>::lowest());
  EXPECT_EQ(text.size(), 1u + 309u + 1u + 6u);
  EXPECT_EQ(text.substr(0, 18), L"-17976931348623157");
  EXPECT_EQ(text.substr(text.size() - 7), L".000000");
}

TEST(NumberText, FormatDouble_RoundsTheExactValue) {
  // The doubles nearest to these lie on one side of the tie: the first below, the next two above.
  EXPECT_EQ(FormatDouble(0.0000005), L"0.000000");
  EXPECT_EQ(FormatDouble(0.0000015), L"0.000002");
  EXPECT_EQ(FormatDouble(0.9999995), L"1.000000");
  EXPECT_EQ(FormatDouble(0.99999949), L"0.999999");
}

TEST(NumberText, ParseDouble_AsStod) {
  for (const std::wstring& text : kTexts) {
    ExpectAsStod(text);
  }
}

TEST(NumberText, ParseDouble_AsStodOnRandomText) {
  for (const std::wstring& text : RandomTexts()) {
    ExpectAsStod(text);
  }
}

TEST(NumberText, ParseDouble_ExceptionTexts) {
  try {
    ParseDouble(L"abc");
    FAIL();
  } catch (const std::invalid_argument& e) {
    EXPECT_STREQ(e.what(), "invalid stod argument");
  }
  try {
    ParseDouble(L"1e400");
    FAIL();
  } catch (const std::out_of_range& e) {
    EXPECT_STREQ(e.what(), "stod argument out of range");
  }
}

// The C libraries disagree on numbers below the normal range; here they count.
TEST(NumberText, ParseDouble_SubnormalIsANumber) {
  EXPECT_EQ(ParseDouble(L"1e-310"), 1e-310);
  EXPECT_EQ(ParseDouble(L"4.9e-324"), std::numeric_limits<double>::denorm_min());
}

TEST(NumberText, ExtractDouble_AsTheStream) {
  for (const std::wstring& text : kTexts) {
    ExpectAsStream(text);
  }
}

TEST(NumberText, ExtractDouble_AsTheStreamOnRandomText) {
  for (const std::wstring& text : RandomTexts()) {
    ExpectAsStream(text);
  }
}

TEST(NumberText, ExtractDouble_Examples) {
  const auto extract = [](const std::wstring& text) {
    double value = 42;
    ExtractDouble(text, value);
    return value;
  };
  EXPECT_EQ(extract(L"12abc"), 12);
  EXPECT_EQ(extract(L"abc"), 0);
  EXPECT_EQ(extract(L"12e"), 0);
  EXPECT_EQ(extract(L"inf"), 0);
  EXPECT_EQ(extract(L"-1e400"), std::numeric_limits<double>::lowest());
  EXPECT_EQ(extract(L"1e-400"), 0);
  EXPECT_EQ(extract(L"  "), 42);
}

TEST(NumberText, TheHostsLocaleHasNoInfluence) {
  const CommaLocale locale;
  if (!locale.IsSet()) {
    GTEST_SKIP() << "this machine has no locale with a decimal comma";
  }
  char text[16];
  std::snprintf(text, sizeof text, "%f", 0.5);
  ASSERT_STREQ(text, "0,500000");

  EXPECT_EQ(FormatDouble(0.5), L"0.500000");
  EXPECT_EQ(ParseDouble(L"0.5"), 0.5);
  EXPECT_EQ(ParseDouble(L"0,5"), 0);
  double value = 0;
  ExtractDouble(L"0.5", value);
  EXPECT_EQ(value, 0.5);
  EXPECT_EQ(setlocale(LC_ALL, nullptr), locale.Name());
}

// --- Integers ---

template <typename T>
T Integer(std::wstring_view text) {
  T value = 42;
  ExtractInteger(text, value);
  return value;
}

TEST(NumberText, ExtractInteger_OfAnInt) {
  EXPECT_EQ(Integer<int>(L"12abc"), 12);
  EXPECT_EQ(Integer<int>(L" \t\n-7"), -7);
  EXPECT_EQ(Integer<int>(L"+007"), 7);
  EXPECT_EQ(Integer<int>(L"0x10"), 0) << "decimal digits alone";
  EXPECT_EQ(Integer<int>(L"abc"), 0);
  EXPECT_EQ(Integer<int>(L"-"), 0);
  EXPECT_EQ(Integer<int>(L""), 42);
  EXPECT_EQ(Integer<int>(L"  "), 42);
  EXPECT_EQ(Integer<int>(L"2147483647"), 2147483647);
  EXPECT_EQ(Integer<int>(L"2147483648"), 2147483647);
  EXPECT_EQ(Integer<int>(L"-2147483648"), std::numeric_limits<int>::min());
  EXPECT_EQ(Integer<int>(L"-99999999999999999999"), std::numeric_limits<int>::min());
}

TEST(NumberText, ExtractInteger_OfAnUnsignedLong) {
  constexpr auto kTop = std::numeric_limits<unsigned long>::max();
  EXPECT_EQ(Integer<unsigned long>(L"4294967295"), 4294967295u);
  EXPECT_EQ(Integer<unsigned long>(L"99999999999999999999999"), kTop);
  EXPECT_EQ(Integer<unsigned long>(L"-1"), kTop) << "from 0 downwards";
  EXPECT_EQ(Integer<unsigned long>(L"abc"), 0u);
  EXPECT_EQ(Integer<unsigned long>(L" "), 42u);
}

// A locale of the C++ library that the host has made the global one.
TEST(NumberText, ExtractInteger_TheGlobalLocaleHasNoInfluence) {
  class Thousands : public std::numpunct<wchar_t> {
    wchar_t do_thousands_sep() const override { return L','; }
    std::string do_grouping() const override { return "\3"; }
  };
  const std::locale before = std::locale::global(std::locale(std::locale(), new Thousands));
  const int value = Integer<int>(L"1,234");
  std::locale::global(before);
  EXPECT_EQ(value, 1);
}

// Every beginning of every text, at the end of a page.
TEST(NumberText, TextsAtTheEndOfMemory) {
  for (const std::wstring& text : kTexts) {
    const auto* bytes = reinterpret_cast<const uint8_t*>(text.data());
    for (size_t length = 0; length <= text.size(); ++length) {
      const testsupport::GuardedBuffer guarded({bytes, length * sizeof(wchar_t)});
      const std::wstring_view view(reinterpret_cast<const wchar_t*>(guarded.data()), length);
      const std::wstring copy = text.substr(0, length);
      double value = 42;
      double expected = 42;
      ExtractDouble(view, value);
      ExtractDouble(copy, expected);
      EXPECT_PRED2(AreAlike, value, expected);
      EXPECT_EQ(Integer<int>(view), Integer<int>(copy));
      const auto parseView = [view](const std::wstring&) { return ParseDouble(view); };
      EXPECT_EQ(velora::Run(parseView, copy).outcome, velora::Run(ParseDouble, copy).outcome);
    }
  }
}

}  // namespace
}  // namespace velora
