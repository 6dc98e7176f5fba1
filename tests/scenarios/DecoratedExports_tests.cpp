// The exports with the compiler's names: what the headers of the telemetry and WMI libraries emit
// into the library. Each is called by the address that the export table gives.
#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <malloc.h>

#include <new>
#include <string>
#include <vector>

#include "WmiKit/WmiKit.h"
#include "closed/TestFiles.h"
#include "orbevent/orbevent.h"
#include "virtualnotebook/HostedLibrary.h"

namespace scenarios {
namespace {

using NxSDK::WmiQuery;
using testing::ElementsAre;
using testing::IsEmpty;
using virtualnotebook::LoadedModule;
using virtualnotebook::Notebook;

#define STRING "NSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE"
#define WSTRING "NSt7__cxx1112basic_stringIwSt11char_traitsIwESaIwEEE"

class DecoratedExports : public testing::Test {
 protected:
  template <typename T>
  T Constant(const char* name) const {
    return *module.Find<const T>(name);
  }

  const LoadedModule module{L"VeloraCtlApi.dll"};
};

TEST_F(DecoratedExports, ConstantsOfEvents) {
  EXPECT_EQ(Constant<uint64_t>("_ZN8OrbEvent11MAX_KEY_LENE"), 32u);
  EXPECT_EQ(Constant<uint64_t>("_ZN8OrbEvent13MAX_VALUE_LENE"), 1024u);
  EXPECT_EQ(Constant<uint64_t>("_ZN8OrbEvent12MAX_PAIR_NUME"), 256u);
  EXPECT_EQ(Constant<uint64_t>("_ZN8OrbEvent12MAX_ARR_SIZEE"), 100u);
  EXPECT_EQ(Constant<uint64_t>("_ZN8OrbEvent12MAX_PATH_LENE"), 256u);
  EXPECT_EQ(Constant<uint64_t>("_ZN8OrbEvent12MAX_FILE_NUME"), 10u);
  EXPECT_EQ(Constant<int32_t>("_ZN8OrbEvent11INVALID_NUME"), -1);
}

TEST_F(DecoratedExports, AssignmentsOfViews) {
  auto* const copy = module.Find<OrbView&(OrbView*, const OrbView&)>("_ZN7OrbViewaSERKS_");
  auto* const move = module.Find<OrbView&(OrbView*, OrbView &&)>("_ZN7OrbViewaSEOS_");
  OrbView left;
  OrbView right;
  EXPECT_EQ(&copy(&left, right), &left);
  EXPECT_EQ(&move(&right, std::move(left)), &right);
}

TEST_F(DecoratedExports, PairsByBothKindsOfKeys) {
  auto* const byLiteral = module.Find<void(OrbEvent&, const char*, const std::string&)>(
      "_ZN7OrbView15VariadicKVPairsER8OrbEventPKcRK" STRING);
  auto* const byText = module.Find<void(OrbEvent&, const std::string&, const std::string&)>(
      "_ZN7OrbView15VariadicKVPairsER8OrbEventRK" STRING "S9_");
  const std::string marker = closedtests::Marker("pairs");
  OrbEvent event(7);
  byLiteral(event, "first", marker);
  byText(event, "second", "2");
  OrbView::Report(event);
  EXPECT_THAT(
      closedtests::LogLinesWith(std::string(closedtests::kLogDirectory) + "orbevent.jsonl", marker),
      ElementsAre(testing::EndsWith("\"event\":7,\"data\":{\"first\":\"" + marker +
                                    "\",\"second\":\"2\"}}")));
}

// --- WmiQuery ---

const std::wstring kNameSpace = L"ROOT\\WMI";
const std::wstring kQuery = L"SELECT * FROM Anything";
const std::wstring kProperty = L"Name";

// A query that the library makes and ends.
class WmiQueryExports : public DecoratedExports {
 protected:
  ~WmiQueryExports() override {
    if (query_ != nullptr) End("_ZN5NxSDK8WmiQueryD1Ev");
  }

  WmiQuery* Make(const std::wstring& nameSpace) {
    query_ = reinterpret_cast<WmiQuery*>(storage_);
    module.Find<void(WmiQuery*, std::wstring)>("_ZN5NxSDK8WmiQueryC1E" WSTRING)(query_, nameSpace);
    return query_;
  }
  void End(const char* destructor) {
    module.Find<void(WmiQuery*)>(destructor)(query_);
    query_ = nullptr;
  }
  int Excute(std::vector<std::wstring>& results) const {
    return module.Find<int(const WmiQuery*, const std::wstring&, const std::wstring&,
                           std::vector<std::wstring>&, bool)>(
        "_ZN5NxSDK8WmiQuery11ExcuteQueryI" WSTRING
        "EEiRKS7_S9_RSt6vectorIT_SaISB_EEb")(query_, kQuery, kProperty, results, true);
  }

  // The text that the query keeps, its only member.
  const std::wstring& Kept() const { return *reinterpret_cast<const std::wstring*>(query_); }

  Notebook notebook{module.Handle()};

 private:
  alignas(WmiQuery) unsigned char storage_[sizeof(WmiQuery)] = {};
  WmiQuery* query_ = nullptr;
};

TEST_F(WmiQueryExports, KeepsACopyOfTheNameSpace) {
  std::wstring nameSpace = kNameSpace + std::wstring(100, L'x');
  Make(nameSpace);
  nameSpace.assign(nameSpace.size(), L'#');
  EXPECT_EQ(Kept(), kNameSpace + std::wstring(100, L'x'));
}

TEST_F(WmiQueryExports, EachDestructorFreesIt) {
  const auto heap = reinterpret_cast<HANDLE>(_get_heap_handle());
  for (const char* destructor : {"_ZN5NxSDK8WmiQueryD1Ev", "_ZN5NxSDK8WmiQueryD2Ev"}) {
    Make(std::wstring(5000, L'x'));
    const void* const text = Kept().data();
    EXPECT_TRUE(HeapValidate(heap, 0, text)) << destructor;
    End(destructor);
    EXPECT_FALSE(HeapValidate(heap, 0, text)) << destructor;
  }
}

TEST_F(WmiQueryExports, ResultsOfEachRow) {
  notebook.AnswerWmi(kNameSpace, kQuery, kProperty, {L"one", L"", L"three"});
  Make(kNameSpace);
  std::vector<std::wstring> results = {L"from before"};
  EXPECT_EQ(Excute(results), 0);
  EXPECT_THAT(results, ElementsAre(L"one", L"", L"three"));
  EXPECT_EQ(notebook.CountCalls("WmiQuery::GetResult"), 3u);
  ASSERT_EQ(notebook.CountCalls("WmiQuery::ExcuteQueryImpl"), 1u);
  const std::vector<std::wstring>& arguments = notebook.calls.front().arguments;
  EXPECT_EQ(arguments.at(1), kQuery);
  EXPECT_EQ(arguments.at(2), kProperty);
  EXPECT_EQ(arguments.at(4), L"1") << "the flag";
}

TEST_F(WmiQueryExports, NoRowIsAFailureOfItsOwn) {
  notebook.AnswerWmi(L"ROOT\\CIMV2", kQuery, kProperty, {L"another name space's"});
  Make(kNameSpace);
  std::vector<std::wstring> results = {L"from before"};
  EXPECT_EQ(Excute(results), -15);
  EXPECT_THAT(results, IsEmpty());
}

TEST_F(WmiQueryExports, TheResultOfAFailedQuery) {
  for (const int status : {1, -1, -15, static_cast<int>(0x80041010)}) {
    notebook.FailWmi(kNameSpace, kQuery, status);
    Make(kNameSpace);
    std::vector<std::wstring> results = {L"from before"};
    EXPECT_EQ(Excute(results), status);
    EXPECT_THAT(results, IsEmpty());
    End("_ZN5NxSDK8WmiQueryD1Ev");
  }
}

}  // namespace
}  // namespace scenarios
