#include "settings/WhitePointFineTueReg.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "support/NotebookTest.h"
#include "support/Registry.h"

namespace velora {
namespace {

using testing::ElementsAre;
using testsupport::DwordValue;
using testsupport::KeyExists;
using testsupport::LogLine;
using testsupport::ReadKey;
using testsupport::RegistryValue;
using testsupport::RegistryValues;
using testsupport::TextValue;

const HKEY kTueRoot = HKEY_LOCAL_MACHINE;
const std::wstring kTueTestKey = L"SOFTWARE\\Norvex\\Velora";
const std::wstring kFeatureKey = L"SOFTWARE\\Norvex\\Velora\\ColorField\\WhitePointFineTue";
const std::wstring kUserModes = kFeatureKey + L"\\UserDesignMode";
const std::wstring kPresetModes = kFeatureKey + L"\\PresetMode";

constexpr wchar_t kGet[] = L"(WhitePointFineTueReg::GetWhitePointTueValue)";
constexpr wchar_t kSet[] = L"(WhitePointFineTueReg::SetWhitePointTueValue)";
constexpr wchar_t kTueEdit[] = L"(WhitePointFineTueReg::EditUsrModeWhitePointId)";
constexpr wchar_t kTueRead[] = L"(RegisterHelper::RegReadValue)";
constexpr wchar_t kTueWrite[] = L"(RegisterHelper::RegWriteValue)";

// The layout that hosts are built with.
static_assert(std::is_standard_layout_v<WhitePointFineTueInfo>);
static_assert(offsetof(WhitePointFineTueInfo, id) == 0);
static_assert(offsetof(WhitePointFineTueInfo, mode) == 100);
static_assert(offsetof(WhitePointFineTueInfo, r) == 104);
static_assert(offsetof(WhitePointFineTueInfo, g) == 112);
static_assert(offsetof(WhitePointFineTueInfo, b) == 120);
static_assert(sizeof(WhitePointFineTueInfo) == 128);

// An id of 100 characters fills its field; the mode lies right behind it.
WhitePointFineTueInfo Tuning(ColorFieldMode mode, const std::string& id, double r, double g,
                             double b) {
  WhitePointFineTueInfo info{};
  std::memcpy(info.id, id.data(), std::min(id.size(), sizeof info.id));
  info.mode = mode;
  info.r = r;
  info.g = g;
  info.b = b;
  return info;
}

RegistryValues Values(const std::wstring& id, uint32_t mode, const std::wstring& r,
                      const std::wstring& g, const std::wstring& b) {
  return {{L"Id", TextValue(id)},
          {L"Mode", DwordValue(mode)},
          {L"R", TextValue(r)},
          {L"G", TextValue(g)},
          {L"B", TextValue(b)}};
}

class WhitePointFineTueRegTest : public testsupport::NotebookTest {
 protected:
  WhitePointFineTueRegTest() { notebook.ForgetRecords(); }

  void Tune(const std::wstring& path, const std::wstring& id) {
    for (const auto& [name, value] : Values(id, 11, L"0.100000", L"0.200000", L"0.300000")) {
      testsupport::WriteValue(kTueRoot, path, name, value);
    }
  }

  const testsupport::ScopedKey key{kTueRoot, kTueTestKey};
  WhitePointFineTueReg store;
};

TEST_F(WhitePointFineTueRegTest, KeepsToTheMachine) {
  const WhitePointFineTueReg another;
  EXPECT_LOG({1, L"FeatureType 8 is single user!(MultiUserReg::MultiUserReg)"},
             {1, L"reg path:" + kFeatureKey + L"(MultiUserReg::MultiUserReg)"});
}

// --- Keys and values ---

TEST_F(WhitePointFineTueRegTest, SetWhitePointTueValue_PresetModesByName) {
  const std::pair<ColorFieldMode, const wchar_t*> modes[] = {
      {1, L"SrgbMode"},    {2, L"P3Mode"},         {3, L"WebMode"},
      {4, L"DigitalMode"}, {5, L"PhotoMode"},      {6, L"DesignMode"},
      {8, L"HdtvMode"},    {9, L"DigitalD65Mode"}, {10, L"AdobeMode"}};
  for (const auto& [mode, name] : modes) {
    SCOPED_TRACE(mode);
    const auto info = Tuning(mode, "any id", 0.5, 0.25, mode);
    EXPECT_EQ(store.SetWhitePointTueValue(&info), ResultOk);
    EXPECT_EQ(ReadKey(kTueRoot, kPresetModes + L"\\" + name),
              Values(L"any id", static_cast<uint32_t>(mode), L"0.500000", L"0.250000",
                     std::to_wstring(mode) + L".000000"));
    auto read = Tuning(mode, "another id", 9, 9, 9);
    EXPECT_EQ(store.GetWhitePointTueValue(&read), ResultOk);
    EXPECT_EQ(read.r, 0.5);
    EXPECT_EQ(read.g, 0.25);
    EXPECT_EQ(read.b, mode);
    EXPECT_STREQ(read.id, "another id") << "only the gains are read";
    EXPECT_EQ(read.mode, mode);
  }
  EXPECT_LOG();
}

TEST_F(WhitePointFineTueRegTest, SetWhitePointTueValue_UserModeById) {
  const auto info = Tuning(11, "Mine%7", 0.1234567, 1, -2);
  EXPECT_EQ(store.SetWhitePointTueValue(&info), ResultOk);
  EXPECT_EQ(ReadKey(kTueRoot, kUserModes + L"\\Mine%7"),
            Values(L"Mine%7", 11, L"0.123457", L"1.000000", L"-2.000000"));
  auto read = Tuning(11, "Mine%7", 9, 9, 9);
  EXPECT_EQ(store.GetWhitePointTueValue(&read), ResultOk);
  EXPECT_EQ(read.r, 0.123457) << "six decimals";
  EXPECT_EQ(read.g, 1);
  EXPECT_EQ(read.b, -2);
}

TEST_F(WhitePointFineTueRegTest, SetWhitePointTueValue_InOrder) {
  const auto info = Tuning(11, "Mine", 1, 1, 1);
  store.SetWhitePointTueValue(&info);
  std::vector<std::wstring> names;
  for (const auto& call : notebook.calls) {
    if (call.function == "RegSetValueExW") {
      names.push_back(call.arguments[1]);
    }
  }
  EXPECT_THAT(names, ElementsAre(L"Id", L"Mode", L"R", L"G", L"B"));
}

// The field's array is the end of the id, not what lies behind it.
TEST_F(WhitePointFineTueRegTest, SetWhitePointTueValue_IdsAroundTheFieldsLength) {
  for (const size_t length : {99U, 100U}) {
    SCOPED_TRACE(length);
    const auto info = Tuning(11, std::string(length, 'x'), 1, 2, 3);
    EXPECT_EQ(store.SetWhitePointTueValue(&info), ResultOk);
    const std::wstring id(length, L'x');
    EXPECT_EQ(ReadKey(kTueRoot, kUserModes + L"\\" + id),
              Values(id, 11, L"1.000000", L"2.000000", L"3.000000"));
    auto read = Tuning(11, std::string(length, 'x'), 9, 9, 9);
    EXPECT_EQ(store.GetWhitePointTueValue(&read), ResultOk);
    EXPECT_EQ(read.b, 3);
  }
}

// What the registry makes of ids that are no plain key names.
TEST_F(WhitePointFineTueRegTest, SetWhitePointTueValue_IdsThatAKeyCannotHold) {
  const auto nested = Tuning(11, "a\\b", 1, 2, 3);
  EXPECT_EQ(store.SetWhitePointTueValue(&nested), ResultOk);
  EXPECT_EQ(ReadKey(kTueRoot, kUserModes + L"\\a\\b"),
            Values(L"a\\b", 11, L"1.000000", L"2.000000", L"3.000000"));
  const auto empty = Tuning(11, "", 4, 5, 6);
  EXPECT_EQ(store.SetWhitePointTueValue(&empty), ResultOk);
  EXPECT_EQ(ReadKey(kTueRoot, kUserModes), Values(L"", 11, L"4.000000", L"5.000000", L"6.000000"));
}

// The values of the modes without a key land at the root, where the registry lets them.
TEST_F(WhitePointFineTueRegTest, ModesWithoutAKeyAddressTheRoot) {
  const auto forget = [] {
    for (const wchar_t* name : {L"Id", L"Mode", L"R", L"G", L"B"}) {
      RegDeleteKeyValueW(kTueRoot, nullptr, name);
    }
  };
  ASSERT_EQ(ReadKey(kTueRoot, L""), RegistryValues{});
  for (const ColorFieldMode mode : {0, 7}) {
    SCOPED_TRACE(mode);
    auto info = Tuning(mode, "root", 0.5, 0.6, 0.7);
    EXPECT_EQ(store.GetWhitePointTueValue(&info), ResultFailed);
    const std::wstring number = std::to_wstring(mode);
    EXPECT_LOG({3, L"itemName:R not exist in subKey:" + std::wstring(kTueRead)},
               {3, L"Read reg whitePoint R value fail, mode: " + number + L", id: root" + kGet});
    EXPECT_EQ(store.SetWhitePointTueValue(&info), ResultOk);
    EXPECT_EQ(ReadKey(kTueRoot, L""),
              Values(L"root", static_cast<uint32_t>(mode), L"0.500000", L"0.600000", L"0.700000"));
    auto read = Tuning(mode, "", 9, 9, 9);
    EXPECT_EQ(store.GetWhitePointTueValue(&read), ResultOk);
    EXPECT_EQ(read.g, 0.6);
    forget();
    notebook.ForgetRecords();
  }
  EXPECT_FALSE(KeyExists(kTueRoot, kTueTestKey));
}

TEST_F(WhitePointFineTueRegTest, ModesOutsideTheTableThrow) {
  for (const ColorFieldMode mode : {-1, 12, std::numeric_limits<int32_t>::max()}) {
    SCOPED_TRACE(mode);
    auto info = Tuning(mode, "x", 1, 2, 3);
    for (const bool get : {true, false}) {
      try {
        get ? store.GetWhitePointTueValue(&info) : store.SetWhitePointTueValue(&info);
        ADD_FAILURE() << "nothing thrown";
      } catch (const std::out_of_range& error) {
        EXPECT_STREQ(error.what(), "invalid map<K, T> key");
      }
    }
    EXPECT_THROW(store.SetWhitePointTueValue(&info, L"new"), std::out_of_range);
  }
  EXPECT_LOG();
  EXPECT_FALSE(KeyExists(kTueRoot, kTueTestKey));
}

// --- Failed reads ---

TEST_F(WhitePointFineTueRegTest, GetWhitePointTueValue_OfAModeThatWasNeverTuned) {
  auto info = Tuning(2, "", 7, 8, 9);
  EXPECT_EQ(store.GetWhitePointTueValue(&info), ResultFailed);
  EXPECT_LOG({3, L"Reg key:" + kPresetModes + L"\\P3Mode not exists!" + kTueRead},
             {3, L"Read reg whitePoint R value fail, mode: 2, id: " + std::wstring(kGet)});
  EXPECT_EQ(info.r, 7);
}

TEST_F(WhitePointFineTueRegTest, GetWhitePointTueValue_EachGainMissing) {
  const std::wstring mode = kUserModes + L"\\Mine";
  struct Row {
    const wchar_t* missing;
    std::wstring line;
    double r, g, b;
  };
  const Row rows[] = {
      {L"R", L"Read reg whitePoint R value fail, mode: 11, id: Mine", 9, 9, 9},
      {L"G", L"Read reg whitePoint G value fail, mode: 11, id: Mine", 0.1, 9, 9},
      {L"B", L"Read reg whitePoint B value fail, mode: 11id: Mine", 0.1, 0.2, 9},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(testsupport::Utf8(row.missing));
    Tune(mode, L"Mine");
    RegDeleteKeyValueW(kTueRoot, mode.c_str(), row.missing);
    notebook.ForgetRecords();
    auto info = Tuning(11, "Mine", 9, 9, 9);
    EXPECT_EQ(store.GetWhitePointTueValue(&info), ResultFailed);
    EXPECT_LOG(
        {3, std::wstring(L"itemName:") + row.missing + L" not exist in subKey:" + mode + kTueRead},
        {3, row.line + kGet});
    EXPECT_EQ(info.r, row.r) << "what was read ahead of the failure stays";
    EXPECT_EQ(info.g, row.g);
    EXPECT_EQ(info.b, row.b);
  }
}

TEST_F(WhitePointFineTueRegTest, GetWhitePointTueValue_TextsThatAreNoGains) {
  const std::wstring mode = kUserModes + L"\\Mine";
  const RegistryValue texts[] = {TextValue(L"abc"), TextValue(L""), TextValue(L"1e400"),
                                 DwordValue(1)};
  for (const RegistryValue& text : texts) {
    Tune(mode, L"Mine");
    testsupport::WriteValue(kTueRoot, mode, L"G", text);
    notebook.ForgetRecords();
    auto info = Tuning(11, "Mine", 9, 9, 9);
    EXPECT_EQ(store.GetWhitePointTueValue(&info), ResultFailed);
    EXPECT_LOG({3, L"RegReadValue failed!" + std::wstring(kTueRead)},
               {3, L"Read reg whitePoint G value fail, mode: 11, id: Mine" + std::wstring(kGet)});
    EXPECT_EQ(info.r, 0.1);
    EXPECT_EQ(info.g, 9);
  }
  Tune(mode, L"Mine");
  testsupport::WriteValue(kTueRoot, mode, L"B", TextValue(std::wstring(260, L'1')));
  auto info = Tuning(11, "Mine", 9, 9, 9);
  EXPECT_EQ(store.GetWhitePointTueValue(&info), ResultFailed) << "too long to be read";
}

// --- Failed writes ---

TEST_F(WhitePointFineTueRegTest, SetWhitePointTueValue_EachWriteFails) {
  const std::wstring mode = kPresetModes + L"\\WebMode";
  const std::wstring before = L"Write key:" + mode + L", itemName:";
  RegistryValues stored;
  // The lines for green and blue show the red gain.
  const std::pair<const wchar_t*, const wchar_t*> lines[] = {
      {L"Id, value:some id failed!", L"Write id to reg fail, id: some id"},
      {L"Mode, value:3 failed!", L"Write mode to reg fail, mode: 3"},
      {L"R, value:0.125000 failed!", L"Write whitePoint r fail, r: 0.125"},
      {L"G, value:0.250000 failed!", L"Write whitePoint g fail, g: 0.125"},
      {L"B, value:0.375000 failed!", L"Write whitePoint b fail, b: 0.125"},
  };
  const auto all = Values(L"some id", 3, L"0.125000", L"0.250000", L"0.375000");
  const wchar_t* const order[] = {L"Id", L"Mode", L"R", L"G", L"B"};
  for (unsigned n = 1; n <= 5; ++n) {
    SCOPED_TRACE(n);
    RegDeleteTreeW(kTueRoot, kTueTestKey.c_str());
    notebook.ForgetRecords();
    notebook.FailCall("RegSetValueExW", n, ERROR_ACCESS_DENIED);
    const auto info = Tuning(3, "some id", 0.125, 0.25, 0.375);
    EXPECT_EQ(store.SetWhitePointTueValue(&info), ResultFailed);
    EXPECT_LOG({3, before + lines[n - 1].first + kTueWrite},
               {3, lines[n - 1].second + std::wstring(kSet)});
    EXPECT_EQ(ReadKey(kTueRoot, mode), stored) << "nothing is taken back";
    stored.insert(*all.find(order[n - 1]));
    notebook.ClearFaults();
  }
}

TEST_F(WhitePointFineTueRegTest, SetWhitePointTueValue_WithoutRightsOnTheKey) {
  notebook.FailCall("RegCreateKeyExW", 0, ERROR_ACCESS_DENIED);
  const auto info = Tuning(11, "Mine", 1, 2, 3);
  EXPECT_EQ(store.SetWhitePointTueValue(&info), ResultFailed);
  EXPECT_LOG({3, L"RegCreateKeyEx:" + kUserModes + L"\\Mine failed!" + kTueWrite},
             {3, L"Write id to reg fail, id: Mine" + std::wstring(kSet)});
}

// --- Under a new id ---

TEST_F(WhitePointFineTueRegTest, SetWhitePointTueValue_UnderANewId) {
  const auto info = Tuning(11, "old", 1, 2, 3);
  EXPECT_EQ(store.SetWhitePointTueValue(&info, L"new"), ResultOk);
  EXPECT_EQ(ReadKey(kTueRoot, kUserModes + L"\\new"),
            Values(L"new", 11, L"1.000000", L"2.000000", L"3.000000"));
  EXPECT_FALSE(KeyExists(kTueRoot, kUserModes + L"\\old"));
  EXPECT_STREQ(info.id, "old");
  EXPECT_LOG();
}

TEST_F(WhitePointFineTueRegTest, SetWhitePointTueValue_NewIdsAroundTheFieldsLength) {
  const auto info = Tuning(11, "old", 1, 2, 3);
  for (const size_t length : {0U, 99U, 100U}) {
    SCOPED_TRACE(length);
    const std::wstring id(length, L'n');
    EXPECT_EQ(store.SetWhitePointTueValue(&info, id), ResultOk);
    EXPECT_EQ(ReadKey(kTueRoot, kUserModes + L"\\" + id)[L"Id"], TextValue(id));
  }
  EXPECT_LOG();
  const std::wstring tooLong(101, L'n');
  EXPECT_EQ(store.SetWhitePointTueValue(&info, tooLong), ResultFailed);
  EXPECT_LOG({3, L"Memcpy id fail, id: " + tooLong + kSet});
  EXPECT_FALSE(KeyExists(kTueRoot, kUserModes + L"\\" + tooLong));
}

TEST_F(WhitePointFineTueRegTest, SetWhitePointTueValue_UnderANewIdFails) {
  notebook.FailCall("RegSetValueExW", 3, ERROR_ACCESS_DENIED);
  const auto info = Tuning(11, "old", 1, 2, 3);
  EXPECT_EQ(store.SetWhitePointTueValue(&info, L"new"), ResultFailed);
  EXPECT_LOG(
      {3, L"Write key:" + kUserModes + L"\\new, itemName:R, value:1.000000 failed!" + kTueWrite},
      {3, L"Write whitePoint r fail, r: 1" + std::wstring(kSet)},
      {3, L"Set white point tue value fail, id: new" + std::wstring(kSet)});
}

// --- Moving ---

TEST_F(WhitePointFineTueRegTest, EditUsrModeWhitePointId_MovesTheValues) {
  Tune(kUserModes + L"\\old", L"old");
  store.EditUsrModeWhitePointId(L"old", L"new");
  EXPECT_EQ(ReadKey(kTueRoot, kUserModes + L"\\new"),
            Values(L"new", 11, L"0.100000", L"0.200000", L"0.300000"));
  EXPECT_FALSE(KeyExists(kTueRoot, kUserModes + L"\\old"));
  EXPECT_LOG();
}

TEST_F(WhitePointFineTueRegTest, EditUsrModeWhitePointId_OfTheSameId) {
  Tune(kUserModes + L"\\old", L"old");
  notebook.ForgetRecords();
  store.EditUsrModeWhitePointId(L"old", L"old");
  EXPECT_LOG(
      {1, L"oldId is equals newId, not need to edit id value, id: old" + std::wstring(kTueEdit)});
  EXPECT_TRUE(KeyExists(kTueRoot, kUserModes + L"\\old"));
  EXPECT_EQ(notebook.CountCalls("RegOpenKeyW"), 0U);
}

TEST_F(WhitePointFineTueRegTest, EditUsrModeWhitePointId_OfAModeThatWasNeverTuned) {
  store.EditUsrModeWhitePointId(L"old", L"new");
  EXPECT_LOG();
  EXPECT_FALSE(KeyExists(kTueRoot, kTueTestKey));
}

TEST_F(WhitePointFineTueRegTest, EditUsrModeWhitePointId_OldIdsAroundTheFieldsLength) {
  for (const size_t length : {99U, 100U}) {
    SCOPED_TRACE(length);
    const std::wstring old(length, L'o');
    Tune(kUserModes + L"\\" + old, old);
    store.EditUsrModeWhitePointId(old, L"new");
    EXPECT_FALSE(KeyExists(kTueRoot, kUserModes + L"\\" + old));
    EXPECT_EQ(ReadKey(kTueRoot, kUserModes + L"\\new")[L"B"], TextValue(L"0.300000"));
  }
  EXPECT_LOG();
  const std::wstring tooLong(101, L'o');
  Tune(kUserModes + L"\\" + tooLong, tooLong);
  store.EditUsrModeWhitePointId(tooLong, L"newer");
  EXPECT_LOG({3, L"Memcpy id fail, id: " + tooLong + kTueEdit});
  EXPECT_TRUE(KeyExists(kTueRoot, kUserModes + L"\\" + tooLong));
  EXPECT_FALSE(KeyExists(kTueRoot, kUserModes + L"\\newer"));
}

TEST_F(WhitePointFineTueRegTest, EditUsrModeWhitePointId_ReadFails) {
  const std::wstring old = kUserModes + L"\\old";
  Tune(old, L"old");
  RegDeleteKeyValueW(kTueRoot, old.c_str(), L"B");
  store.EditUsrModeWhitePointId(L"old", L"new");
  EXPECT_LOG({3, L"itemName:B not exist in subKey:" + old + kTueRead},
             {3, L"Read reg whitePoint B value fail, mode: 11id: old" + std::wstring(kGet)},
             {3, L"Read white point value fail, id: old" + std::wstring(kTueEdit)});
  EXPECT_TRUE(KeyExists(kTueRoot, old));
  EXPECT_FALSE(KeyExists(kTueRoot, kUserModes + L"\\new"));
}

TEST_F(WhitePointFineTueRegTest, EditUsrModeWhitePointId_WriteFails) {
  Tune(kUserModes + L"\\old", L"old");
  notebook.FailCall("RegSetValueExW", 5, ERROR_ACCESS_DENIED);
  store.EditUsrModeWhitePointId(L"old", L"new");
  EXPECT_LOG(
      {3, L"Write key:" + kUserModes + L"\\new, itemName:B, value:0.300000 failed!" + kTueWrite},
      {3, L"Write whitePoint b fail, b: 0.1" + std::wstring(kSet)},
      {3, L"Set white point tue value fail, id: new" + std::wstring(kSet)},
      {3, L"Edit white point id fail, id: new" + std::wstring(kTueEdit)});
  EXPECT_TRUE(KeyExists(kTueRoot, kUserModes + L"\\old")) << "only a complete copy replaces it";
}

// --- Deleting ---

TEST_F(WhitePointFineTueRegTest, DeleteUsrModeWhitePoint) {
  Tune(kUserModes + L"\\one", L"one");
  Tune(kUserModes + L"\\two", L"two");
  store.DeleteUsrModeWhitePoint(L"one");
  EXPECT_FALSE(KeyExists(kTueRoot, kUserModes + L"\\one"));
  EXPECT_TRUE(KeyExists(kTueRoot, kUserModes + L"\\two"));
  store.DeleteUsrModeWhitePoint(L"one");
  EXPECT_LOG();
  EXPECT_EQ(notebook.CountCalls("RegDeleteKeyW"), 1U) << "an absent key is not deleted";
}

TEST_F(WhitePointFineTueRegTest, DeleteUsrModeWhitePoint_OfAKeyWithSubKeys) {
  Tune(kUserModes + L"\\a\\b", L"a\\b");
  store.DeleteUsrModeWhitePoint(L"a");
  EXPECT_LOG({3,
              L"Delete usr design mode white point fine tue value fail, id: "
              L"a(WhitePointFineTueReg::DeleteUsrModeWhitePoint)"});
  EXPECT_TRUE(KeyExists(kTueRoot, kUserModes + L"\\a\\b"));
  notebook.ForgetRecords();
  store.DeleteUsrModeWhitePoint(L"a\\b");
  EXPECT_LOG();
  EXPECT_FALSE(KeyExists(kTueRoot, kUserModes + L"\\a\\b"));
  EXPECT_TRUE(KeyExists(kTueRoot, kUserModes + L"\\a"));
}

// The empty name is that of the parent, which goes unless a mode's key is in it.
TEST_F(WhitePointFineTueRegTest, DeleteUsrModeWhitePoint_OfTheEmptyId) {
  Tune(kUserModes + L"\\one", L"one");
  store.DeleteUsrModeWhitePoint(L"");
  EXPECT_LOG({3,
              L"Delete usr design mode white point fine tue value fail, id: "
              L"(WhitePointFineTueReg::DeleteUsrModeWhitePoint)"});
  EXPECT_TRUE(KeyExists(kTueRoot, kUserModes + L"\\one"));
  store.DeleteUsrModeWhitePoint(L"one");
  store.DeleteUsrModeWhitePoint(L"");
  EXPECT_FALSE(KeyExists(kTueRoot, kUserModes));
}

}  // namespace
}  // namespace velora
