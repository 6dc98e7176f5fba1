#include "orbevent/orbevent.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#include "TestFiles.h"

using closedtests::LogLinesWith;
using closedtests::Marker;
using nlohmann::json;

namespace {

const std::string kFile = std::string(closedtests::kLogDirectory) + "orbevent.jsonl";

// Reports the event with a marker beside its pairs and gives what came into the file.
json ReportAndRead(OrbEvent& event) {
  const std::string marker = Marker("m");
  event.PutString("marker", marker);
  OrbView::Report(event);
  const std::vector<std::string> lines = LogLinesWith(kFile, marker);
  EXPECT_EQ(lines.size(), 1u);
  return lines.empty() ? json() : json::parse(lines[0]);
}

}  // namespace

TEST(OrbEvent, Constants) {
  static_assert(std::is_same_v<decltype(OrbEvent::MAX_KEY_LEN), const uint64_t>);
  static_assert(std::is_same_v<decltype(OrbEvent::INVALID_NUM), const int32_t>);
  EXPECT_EQ(OrbEvent::MAX_KEY_LEN, 32u);
  EXPECT_EQ(OrbEvent::MAX_VALUE_LEN, 1024u);
  EXPECT_EQ(OrbEvent::MAX_PAIR_NUM, 256u);
  EXPECT_EQ(OrbEvent::MAX_ARR_SIZE, 100u);
  EXPECT_EQ(OrbEvent::MAX_PATH_LEN, 256u);
  EXPECT_EQ(OrbEvent::MAX_FILE_NUM, 10u);
  EXPECT_EQ(OrbEvent::INVALID_NUM, -1);
}

TEST(OrbView, Report_OneObjectALine) {
  OrbEvent event(991705);
  event.PutString("mode", "2");
  event.PutString("quoted", "a \"b\" \\ c\r\nd\x01");
  const json line = ReportAndRead(event);
  EXPECT_EQ(line.size(), 4u);
  EXPECT_EQ(line.at("event"), 991705);
  EXPECT_EQ(line.at("process"), GetCurrentProcessId());
  EXPECT_EQ(line.at("time").get<std::string>().size(),
            std::string("2024-02-29T23:59:59.999Z").size());
  EXPECT_EQ(line.at("data").size(), 3u);
  EXPECT_EQ(line.at("data").at("mode"), "2");
  EXPECT_EQ(line.at("data").at("quoted"), "a \"b\" \\ c\r\nd\x01");
}

TEST(OrbView, Report_AnEventWithoutPairs) {
  const std::string marker = "\"event\":-1,\"data\":{}";
  const size_t before = LogLinesWith(kFile, marker).size();
  OrbEvent event(OrbEvent::INVALID_NUM);
  OrbView::Report(event);
  EXPECT_EQ(LogLinesWith(kFile, marker).size(), before + 1);
}

TEST(OrbView, Report_CodePageBecomesUtf8) {
  if (GetACP() != 1252) {
    GTEST_SKIP() << "the bytes are those of code page 1252";
  }
  OrbEvent event(1);
  event.PutString("na\xefve", "\x80 5");
  EXPECT_EQ(ReportAndRead(event).at("data").at("na\xc3\xafve"), "\xe2\x82\xac 5");
}

TEST(OrbEvent, PutString_ALaterValueReplacesTheEarlier) {
  OrbEvent event(1);
  event.PutString("key", "one");
  event.PutString("other", "x");
  event.PutString("key", "two");
  const json data = ReportAndRead(event).at("data");
  EXPECT_EQ(data.size(), 3u);
  EXPECT_EQ(data.at("key"), "two");
}

TEST(OrbEvent, PutString_LeavesOutWhatBreaksALimit) {
  OrbEvent event(1);
  event.PutString("", "no key");
  event.PutString(std::string(31, 'a'), "31");
  event.PutString(std::string(32, 'b'), "32");
  event.PutString(std::string(33, 'c'), "33");
  event.PutString("v1023", std::string(1023, 'v'));
  event.PutString("v1024", std::string(1024, 'v'));
  event.PutString("v1025", std::string(1025, 'v'));
  const json data = ReportAndRead(event).at("data");
  EXPECT_EQ(data.size(), 5u) << data;
  EXPECT_EQ(data.at(std::string(31, 'a')), "31");
  EXPECT_EQ(data.at(std::string(32, 'b')), "32");
  EXPECT_EQ(data.at("v1023"), std::string(1023, 'v'));
  EXPECT_EQ(data.at("v1024"), std::string(1024, 'v'));
}

TEST(OrbEvent, PutString_AtMost256Pairs) {
  OrbEvent event(1);
  event.PutString("marker", "");  // counts; gets its text below
  for (int i = 1; i <= 256; ++i) {
    event.PutString(std::string("k").append(std::to_string(i)), "v");
  }
  event.PutString("k255", "replaced");  // still possible when full
  const json data = ReportAndRead(event).at("data");
  EXPECT_EQ(data.size(), 256u);
  EXPECT_EQ(data.at("k255"), "replaced");
  EXPECT_FALSE(data.contains("k256"));
}

TEST(OrbView, ReportKVPairs_KeysOfBothKinds) {
  const std::string marker = Marker("kv");
  const std::string key = "second";
  OrbView::ReportKVPairs(42, "first", marker, key, "2", "third", std::string("3"));
  const std::vector<std::string> lines = LogLinesWith(kFile, marker);
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_TRUE(lines[0].ends_with("\"event\":42,\"data\":{\"first\":\"" + marker +
                                 "\",\"second\":\"2\",\"third\":\"3\"}}"))
      << lines[0];
}

TEST(OrbView, Assignment) {
  OrbView one;
  OrbView two;
  EXPECT_EQ(&(one = two), &one);
  EXPECT_EQ(&(one = std::move(two)), &one);
}

TEST(OrbView, Report_FromSeveralThreads) {
  constexpr int kEvents = 100;
  const std::string marker = Marker("threads");
  std::vector<std::thread> threads;
  for (int t = 0; t < 3; ++t) {
    threads.emplace_back([&, t] {
      for (int i = 0; i < kEvents; ++i) {
        OrbView::ReportKVPairs(t, "marker", marker, "i", std::to_string(i));
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  const std::vector<std::string> lines = LogLinesWith(kFile, marker);
  EXPECT_EQ(lines.size(), 3u * kEvents);
  for (const std::string& line : lines) {
    ASSERT_TRUE(json::accept(line)) << line;
  }
}
