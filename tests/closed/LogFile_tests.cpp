#include "common/LogFile.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <map>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include "Child.h"
#include "TestFiles.h"

using closed::LogFile;
using closedtests::FreshDirectory;
using closedtests::ReadBytes;
using closedtests::ReadLines;
using closedtests::Widen;
using closedtests::WriteBytes;

namespace {

std::string MadeDirectory() {
  const std::string directory = FreshDirectory();
  CreateDirectoryA(directory.c_str(), nullptr);
  return directory;
}

bool IsThere(const std::string& path) {
  return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

constexpr size_t kLimit = 1048576;  // one mebibyte

}  // namespace

TEST(LogFile, Append_MakesTheDirectoriesAndEndsEachLine) {
  const std::string path = FreshDirectory() + "one\\two\\made.log";
  const LogFile file(Widen(path));
  EXPECT_FALSE(IsThere(path)) << "nothing is made before the first line";
  file.Append("first");
  file.Append("");
  file.Append("third");
  EXPECT_EQ(ReadBytes(path), "first\r\n\r\nthird\r\n");
}

TEST(LogFile, Append_ContinuesAPresentFile) {
  const std::string path = MadeDirectory() + "present.log";
  WriteBytes(path, "old\r\n");
  LogFile(Widen(path)).Append("new");
  EXPECT_EQ(ReadBytes(path), "old\r\nnew\r\n");
}

TEST(LogFile, Append_ALineUpToTheLimitStays) {
  const std::string path = MadeDirectory() + "limit.log";
  WriteBytes(path, std::string(kLimit - 5, 'x'));
  LogFile(Widen(path)).Append("abc");  // five bytes with its line end
  EXPECT_EQ(ReadBytes(path).size(), kLimit);
  EXPECT_FALSE(IsThere(path + ".1"));
}

TEST(LogFile, Append_ALineBeyondTheLimitBeginsANewFile) {
  const std::string path = MadeDirectory() + "limit.log";
  const std::string old(kLimit - 4, 'x');
  WriteBytes(path, old);
  WriteBytes(path + ".1", "older");
  LogFile(Widen(path)).Append("abc");
  EXPECT_EQ(ReadBytes(path), "abc\r\n");
  EXPECT_EQ(ReadBytes(path + ".1"), old) << "and takes the place of an older one";
}

TEST(LogFile, Append_ALineLongerThanTheLimitIsWrittenToAnEmptyFile) {
  const std::string path = MadeDirectory() + "long.log";
  LogFile(Widen(path)).Append(std::string(kLimit, 'y'));
  EXPECT_EQ(ReadBytes(path).size(), kLimit + 2);
  EXPECT_FALSE(IsThere(path + ".1"));
}

TEST(LogFile, Append_GoesOnInAFileThatCannotBeMoved) {
  const std::string path = MadeDirectory() + "held.log";
  const std::string old(kLimit, 'x');
  WriteBytes(path, old);
  const closed::OwnedHandle reader =
      closed::OwnFile(CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                  nullptr, OPEN_EXISTING, 0, nullptr));
  ASSERT_TRUE(reader);
  LogFile(Widen(path)).Append("abc");
  EXPECT_EQ(ReadBytes(path), old + "abc\r\n");
}

TEST(LogFile, Append_APathThatCannotBeWrittenIsNoHarm) {
  const std::string directory = MadeDirectory();
  WriteBytes(directory + "file", "x");
  LogFile(Widen(directory + "file\\below.log")).Append("lost");
  LogFile(L"").Append("lost");
  LogFile(L"?:\\nowhere\\x.log").Append("lost");
  EXPECT_EQ(ReadBytes(directory + "file"), "x");
}

// Four writers, two in threads and two in processes of their own, across a change of files.
TEST(LogFile, Append_ThreadsAndProcessesTearAndLoseNothing) {
  constexpr int kLines = 3200;  // 4 writers with some 90 bytes a line: more than one file
  const std::string path = FreshDirectory() + "race.log";
  const std::wstring count = L" " + std::to_wstring(kLines);
  const closedtests::Child p(L"log " + Widen(path) + L" p" + count);
  const closedtests::Child q(L"log " + Widen(path) + L" q" + count);
  const LogFile file(Widen(path));
  const auto write = [&](const std::string& tag) {
    for (int i = 0; i < kLines; ++i) {
      file.Append(tag + " " + std::to_string(i) + " " + std::string(80, 'x'));
    }
  };
  std::thread r(write, "r");
  std::thread s(write, "s");
  r.join();
  s.join();
  ASSERT_EQ(p.Wait(), 0u);
  ASSERT_EQ(q.Wait(), 0u);

  std::vector<std::string> lines = ReadLines(path + ".1");
  ASSERT_FALSE(lines.empty()) << "the file has changed";
  const std::vector<std::string> present = ReadLines(path);
  EXPECT_LE(ReadBytes(path + ".1").size(), kLimit);
  lines.insert(lines.end(), present.begin(), present.end());

  // Whole lines, each once, each writer's in its order.
  std::map<std::string, int> next;
  for (const std::string& line : lines) {
    const std::string tag = line.substr(0, 1);
    ASSERT_EQ(line, tag + " " + std::to_string(next[tag]++) + " " + std::string(80, 'x'));
  }
  EXPECT_EQ(next, (std::map<std::string, int>{
                      {"p", kLines}, {"q", kLines}, {"r", kLines}, {"s", kLines}}));
}

TEST(LogFile, FormatLogLine_HasTimeProcessThreadLevelAndText) {
  const std::string line = closed::FormatLogLine("WARN", L"mode:2(SetColorField)");
  const std::regex shape(
      R"((\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z) (\d+) (\d+) WARN mode:2\(SetColorField\))");
  std::smatch match;
  ASSERT_TRUE(std::regex_match(line, match, shape)) << line;
  EXPECT_EQ(match[2], std::to_string(GetCurrentProcessId()));
  EXPECT_EQ(match[3], std::to_string(GetCurrentThreadId()));
}

TEST(LogFile, FormatLogLine_IsUtf8OnOneLine) {
  const auto textOf = [](std::wstring_view text) {
    const std::string line = closed::FormatLogLine("L", text);
    return line.substr(line.find(" L ") + 3);
  };
  EXPECT_EQ(textOf(L""), "");
  EXPECT_EQ(textOf(L"a\r\nb\tc\x1f"), "a  b c ");
  EXPECT_EQ(textOf(std::wstring_view(L"a\0b", 3)), "a b");
  EXPECT_EQ(textOf(L"\x00e9\x8272\xd83d\xde00"), "\xc3\xa9\xe8\x89\xb2\xf0\x9f\x98\x80");
  EXPECT_EQ(textOf(L"\xd83d"), "\xef\xbf\xbd") << "half a pair: the replacement character";
}

TEST(LogFile, FormatLogLine_CutsALongText) {
  const auto lengthOf = [](size_t length) {
    const std::string line = closed::FormatLogLine("L", std::wstring(length, L'z'));
    return line.size() - line.find('z');
  };
  EXPECT_EQ(lengthOf(16383), 16383u);
  EXPECT_EQ(lengthOf(16384), 16384u);
  EXPECT_EQ(lengthOf(16385), 16384u);
}

TEST(LogFile, UtcTimestamp_IsNow) {
  FILETIME before;
  FILETIME after;
  GetSystemTimeAsFileTime(&before);
  const std::string text = closed::UtcTimestamp();
  GetSystemTimeAsFileTime(&after);
  SYSTEMTIME parsed{};
  int last = 0;
  ASSERT_EQ(std::sscanf(text.c_str(), "%4hu-%2hu-%2huT%2hu:%2hu:%2hu.%3huZ%n", &parsed.wYear,
                        &parsed.wMonth, &parsed.wDay, &parsed.wHour, &parsed.wMinute,
                        &parsed.wSecond, &parsed.wMilliseconds, &last),
            7)
      << text;
  EXPECT_EQ(static_cast<size_t>(last), text.size());
  FILETIME time;
  ASSERT_TRUE(SystemTimeToFileTime(&parsed, &time));
  const auto milliseconds = [](const FILETIME& value) {
    return ((static_cast<uint64_t>(value.dwHighDateTime) << 32) | value.dwLowDateTime) / 10000;
  };
  EXPECT_GE(milliseconds(time), milliseconds(before));
  EXPECT_LE(milliseconds(time), milliseconds(after));
}
