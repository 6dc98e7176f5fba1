#include "settings/IniHelper.h"

#include <gtest/gtest.h>

#include <clocale>
#include <limits>
#include <string>
#include <vector>

#include "support/NotebookTest.h"

namespace velora {
namespace {

using testsupport::LogLine;

class IniHelperTest : public testsupport::NotebookTest {
 protected:
  // The file holds the line in section "CIRCLE", and a section behind it.
  void Store(const std::string& line) {
    const std::string text = "[OTHER]\r\nKey=1\r\n[CIRCLE]\r\n" + line + "\r\n[LAST]\r\nKey=2\r\n";
    directory.Write("SetColor.ini", {text.begin(), text.end()});
  }

  template <typename T>
  int Get(T* value) {
    return ini.GetValue(L"CIRCLE", L"Key", value);
  }

  testsupport::ScratchDirectory directory;
  const std::string narrowPath = directory.Path("SetColor.ini");
  const std::wstring path{narrowPath.begin(), narrowPath.end()};
  const IniHelper ini{path};
};

TEST_F(IniHelperTest, GetValue_EachType) {
  Store("Key=12");
  unsigned long flag = 0;
  int number = 0;
  double real = 0;
  EXPECT_EQ(Get(&flag), 0);
  EXPECT_EQ(Get(&number), 0);
  EXPECT_EQ(Get(&real), 0);
  EXPECT_EQ(flag, 12u);
  EXPECT_EQ(number, 12);
  EXPECT_EQ(real, 12.0);
  EXPECT_LOG();
}

// What >> makes of the text; the value counts as found whatever that is.
TEST_F(IniHelperTest, GetValue_Texts) {
  struct Row {
    const char* text;
    unsigned long flag;
    int number;
    double real;
  };
  constexpr unsigned long flagMax = std::numeric_limits<unsigned long>::max();
  constexpr int intMax = std::numeric_limits<int>::max();
  constexpr int intMin = std::numeric_limits<int>::min();
  constexpr double realMax = std::numeric_limits<double>::max();
  const Row rows[] = {
      {"12abc", 12, 12, 12},
      {"abc", 0, 0, 0},
      {"x12", 0, 0, 0},
      {"  7  ", 7, 7, 7},
      {"\"7\"", 7, 7, 7},
      {"-3", flagMax - 2, -3, -3},
      {"+3", 3, 3, 3},
      {"0.5", 0, 0, 0.5},
      {".5", 0, 0, 0.5},
      {"1,5", 1, 1, 1},
      {"010", 10, 10, 10},
      {"0x10", 0, 0, 0},
      {"1e3", 1, 1, 1000},
      {"1e", 1, 1, 0},
      {"nan", 0, 0, 0},
      {"4294967295", flagMax, intMax, 4294967295.0},
      {"4294967296", flagMax, intMax, 4294967296.0},
      {"-2147483649", 2147483647, intMin, -2147483649.0},
      {"1e400", 1, 1, realMax},
      {"-1e400", flagMax, -1, -realMax},
      {"1e-400", 1, 1, 0},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.text);
    Store("Key=" + std::string(row.text));
    unsigned long flag = 42;
    int number = 42;
    double real = 42;
    EXPECT_EQ(Get(&flag), 0);
    EXPECT_EQ(Get(&number), 0);
    EXPECT_EQ(Get(&real), 0);
    EXPECT_EQ(flag, row.flag);
    EXPECT_EQ(number, row.number);
    EXPECT_EQ(real, row.real);
  }
  EXPECT_LOG();
}

// White space in quotes is a text; the stream finds nothing to extract and leaves the value alone.
TEST_F(IniHelperTest, GetValue_QuotedWhiteSpace) {
  Store("Key=\"  \"");
  int number = 42;
  double real = 42;
  EXPECT_EQ(Get(&number), 0);
  EXPECT_EQ(Get(&real), 0);
  EXPECT_EQ(number, 42);
  EXPECT_EQ(real, 42);
}

TEST_F(IniHelperTest, GetValue_WhatIsMissing) {
  const LogLine line{
      1, L"get key:Key from section:CIRCLE failed in file:" + path + L"(IniHelper::GetValue)"};
  const auto expectMissing = [&] {
    notebook.ForgetRecords();
    unsigned long flag = 42;
    int number = 42;
    double real = 42;
    EXPECT_EQ(Get(&flag), 1);
    EXPECT_EQ(Get(&number), 1);
    EXPECT_EQ(Get(&real), 1);
    EXPECT_EQ(flag, 42u);
    EXPECT_EQ(number, 42);
    EXPECT_EQ(real, 42);
    EXPECT_LOG(line, line, line);
  };
  {
    SCOPED_TRACE("no file");
    expectMissing();
  }
  {
    SCOPED_TRACE("no key");
    Store("Angle=1");
    expectMissing();
  }
  {
    SCOPED_TRACE("nothing behind the sign");
    Store("Key=");
    expectMissing();
  }
  {
    SCOPED_TRACE("white space behind the sign");
    Store("Key=   ");
    expectMissing();
  }
  {
    SCOPED_TRACE("empty quotes");
    Store("Key=\"\"");
    expectMissing();
  }
  {
    SCOPED_TRACE("no section");
    directory.Write("SetColor.ini", {'[', 'O', ']', '\r', '\n'});
    expectMissing();
  }
}

TEST_F(IniHelperTest, GetValue_NamesInTheLogLine) {
  double value = 0;
  EXPECT_EQ(IniHelper(L"C:\\ProgramData\\Comms\\NxVelora\\Absent.ini")
                .GetValue(L"CIRCLE", L"Angle", &value),
            1);
  EXPECT_LOG({1,
              L"get key:Angle from section:CIRCLE failed in file:"
              L"C:\\ProgramData\\Comms\\NxVelora\\Absent.ini(IniHelper::GetValue)"});
}

// 260 characters with the terminator: of a longer text the first 259 count.
TEST_F(IniHelperTest, GetValue_ReadsAtMost259Characters) {
  for (const size_t zeros : {257u, 258u, 259u}) {
    SCOPED_TRACE(zeros);
    Store("Key=" + std::string(zeros, '0') + "17");
    int number = 42;
    EXPECT_EQ(Get(&number), 0);
    EXPECT_EQ(number, zeros == 257 ? 17 : zeros == 258 ? 1 : 0);
    double real = 42;
    EXPECT_EQ(Get(&real), 0);
    EXPECT_EQ(real, number);
  }
}

TEST_F(IniHelperTest, GetValue_TheHostsLocaleHasNoInfluence) {
  Store("Key=0.5");
  ASSERT_NE(setlocale(LC_ALL, "German"), nullptr);
  double value = 0;
  EXPECT_EQ(Get(&value), 0);
  const std::string locale = setlocale(LC_ALL, nullptr);
  setlocale(LC_ALL, "C");
  EXPECT_EQ(value, 0.5);
  EXPECT_EQ(locale.substr(0, 6), "German");
}

TEST_F(IniHelperTest, GetUnsigned) {
  EXPECT_EQ(ini.GetUnsigned(L"CIRCLE", L"Key", -7), -7);
  Store("Key=12");
  EXPECT_EQ(ini.GetUnsigned(L"CIRCLE", L"Key", -7), 12);
  Store("Key=4294967295");
  EXPECT_EQ(ini.GetUnsigned(L"CIRCLE", L"Key", -7), -1) << "an unsigned number";
}

TEST_F(IniHelperTest, GetValue_WritesNothing) {
  Store("Key=abc");
  const std::vector<uint8_t> before = directory.Read("SetColor.ini");
  double value = 0;
  Get(&value);
  ini.GetValue(L"CIRCLE", L"Absent", &value);
  EXPECT_EQ(directory.Read("SetColor.ini"), before);
}

}  // namespace
}  // namespace velora
