#include "settings/UserDesignReg.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

#include "settings/FeatureManager.h"
#include "support/NotebookTest.h"
#include "support/Registry.h"

namespace velora {
namespace {

using testing::ElementsAre;
using testsupport::DwordValue;
using testsupport::KeyExists;
using testsupport::LogLine;
using testsupport::ReadKey;
using testsupport::RegistryValues;
using testsupport::TextValue;

const HKEY kDesignRoot = HKEY_LOCAL_MACHINE;
const std::wstring kDesignTestKey = L"SOFTWARE\\Norvex\\Velora";
const std::wstring kModes = L"SOFTWARE\\Norvex\\Velora\\ColorField\\UserDesign";
const std::wstring kTunings =
    L"SOFTWARE\\Norvex\\Velora\\ColorField\\WhitePointFineTue\\UserDesignMode";

constexpr wchar_t kAdd[] = L"(UserDesignReg::AddUserDesignReg)";
constexpr wchar_t kEdit[] = L"(UserDesignReg::EditUserDesignReg)";
constexpr wchar_t kEditSerial[] = L"(UserDesignReg::EditUserSerialNumReg)";
constexpr wchar_t kDelete[] = L"(UserDesignReg::DeleteUserDesignReg)";
constexpr wchar_t kDesignRead[] = L"(RegisterHelper::RegReadValue)";
constexpr wchar_t kDesignWrite[] = L"(RegisterHelper::RegWriteValue)";
constexpr wchar_t kMove[] = L"(WhitePointFineTueReg::EditUsrModeWhitePointId)";

// The order in which a mode's values are written.
const std::vector<std::wstring> kOrder = {
    L"SerialNum",      L"Mode",           L"Gammut",        L"WhitePointX", L"WhitePointY",
    L"Gamma",          L"WhitePointMode", L"GammaMode",     L"Id",          L"ModeName",
    L"Description",    L"IccPath",        L"ThreeDLutPath", L"GammaPath",   L"WhitePointXStr",
    L"WhitePointYStr", L"GammaStr"};

// The layout that hosts are built with: natural alignment, arrays packed.
static_assert(offsetof(UserDesignInfo, serialNum) == 0);
static_assert(offsetof(UserDesignInfo, mode) == 8);
static_assert(offsetof(UserDesignInfo, description) == 12);
static_assert(offsetof(UserDesignInfo, id) == 413);
static_assert(offsetof(UserDesignInfo, modeName) == 513);
static_assert(offsetof(UserDesignInfo, gamut) == 616);
static_assert(offsetof(UserDesignInfo, whitePointMode) == 620);
static_assert(offsetof(UserDesignInfo, whitePointX) == 624);
static_assert(offsetof(UserDesignInfo, whitePointY) == 632);
static_assert(offsetof(UserDesignInfo, whitePointXStr) == 640);
static_assert(offsetof(UserDesignInfo, whitePointYStr) == 740);
static_assert(offsetof(UserDesignInfo, gammaMode) == 840);
static_assert(offsetof(UserDesignInfo, gamma) == 848);
static_assert(offsetof(UserDesignInfo, gammaStr) == 856);
static_assert(offsetof(UserDesignInfo, iccPath) == 956);
static_assert(offsetof(UserDesignInfo, threeDLutPath) == 1056);
static_assert(offsetof(UserDesignInfo, gammaPath) == 1156);
static_assert(sizeof(UserDesignInfo) == 1256);

template <size_t N>
void Fill(char (&field)[N], const std::string& text) {
  std::memset(field, 0, N);
  std::memcpy(field, text.data(), std::min(N, text.size()));
}

UserDesignInfo Design(const std::string& id) {
  UserDesignInfo info{};
  info.serialNum = 3.1234567;
  info.mode = 11;
  Fill(info.description, "a description");
  Fill(info.id, id);
  Fill(info.modeName, "a name");
  info.gamut = 2;
  info.whitePointMode = 1;
  info.whitePointX = 0.3127;
  info.whitePointY = 0.329;
  Fill(info.whitePointXStr, "0,3127");
  Fill(info.whitePointYStr, "0,329");
  info.gammaMode = 4;
  info.gamma = 2.2;
  Fill(info.gammaStr, "2,2");
  Fill(info.iccPath, "C:\\icc");
  Fill(info.threeDLutPath, "C:\\3dlut");
  Fill(info.gammaPath, "C:\\gamma");
  return info;
}

// What Design(id) is in the registry.
RegistryValues Stored(const std::wstring& id) {
  return {{L"SerialNum", TextValue(L"3.123457")},
          {L"Mode", DwordValue(11)},
          {L"Gammut", DwordValue(2)},
          {L"WhitePointX", TextValue(L"0.312700")},
          {L"WhitePointY", TextValue(L"0.329000")},
          {L"Gamma", TextValue(L"2.200000")},
          {L"WhitePointMode", DwordValue(1)},
          {L"GammaMode", DwordValue(4)},
          {L"Id", TextValue(id)},
          {L"ModeName", TextValue(L"a name")},
          {L"Description", TextValue(L"a description")},
          {L"IccPath", TextValue(L"C:\\icc")},
          {L"ThreeDLutPath", TextValue(L"C:\\3dlut")},
          {L"GammaPath", TextValue(L"C:\\gamma")},
          {L"WhitePointXStr", TextValue(L"0,3127")},
          {L"WhitePointYStr", TextValue(L"0,329")},
          {L"GammaStr", TextValue(L"2,2")}};
}

class UserDesignRegTest : public testsupport::NotebookTest {
 protected:
  UserDesignRegTest() { notebook.ForgetRecords(); }

  RegistryValues ReadMode(const std::wstring& id) {
    return ReadKey(kDesignRoot, kModes + L"\\" + id);
  }
  bool ModeExists(const std::wstring& id) { return KeyExists(kDesignRoot, kModes + L"\\" + id); }
  bool TuningExists(const std::wstring& id) {
    return KeyExists(kDesignRoot, kTunings + L"\\" + id);
  }

  void Add(const std::string& id) {
    const UserDesignInfo info = Design(id);
    ASSERT_EQ(store.AddUserDesignReg(&info), ResultOk);
    notebook.ForgetRecords();
  }

  void Tune(const std::string& id) {
    WhitePointFineTueInfo tuning{};
    Fill(tuning.id, id);
    tuning.mode = 11;
    tuning.r = 0.5;
    ASSERT_EQ(WhitePointFineTueReg().SetWhitePointTueValue(&tuning), ResultOk);
    notebook.ForgetRecords();
  }

  std::vector<std::wstring> NamesWritten() {
    std::vector<std::wstring> names;
    for (const auto& call : notebook.calls) {
      if (call.function == "RegSetValueExW") {
        names.push_back(call.arguments[1]);
      }
    }
    return names;
  }

  const testsupport::ScopedKey key{kDesignRoot, kDesignTestKey};
  UserDesignReg store;
};

// Neither the flags nor anybody can make the store a user's own.
TEST_F(UserDesignRegTest, KeepsToTheMachine) {
  EXPECT_EQ(FeatureManager::GetInstance().SetMultiUser(FEATURE_TYPE_USER_DESIGN, 1), ResultFailed);
  const UserDesignReg another;
  const std::wstring tunings = kTunings.substr(0, kTunings.rfind(L'\\'));
  EXPECT_LOG({1, L"FeatureType 7 is single user!(MultiUserReg::MultiUserReg)"},
             {1, L"reg path:" + kModes + L"(MultiUserReg::MultiUserReg)"},
             {1, L"FeatureType 8 is single user!(MultiUserReg::MultiUserReg)"},
             {1, L"reg path:" + tunings + L"(MultiUserReg::MultiUserReg)"});
}

// --- Adding ---

TEST_F(UserDesignRegTest, AddUserDesignReg_Writes17ValuesInOrder) {
  const UserDesignInfo info = Design("Mine%7");
  EXPECT_EQ(store.AddUserDesignReg(&info), ResultOk);
  EXPECT_EQ(ReadMode(L"Mine%7"), Stored(L"Mine%7"));
  EXPECT_EQ(ReadMode(L"Mine%7").size(), 17U);
  EXPECT_EQ(NamesWritten(), kOrder);
  EXPECT_LOG();
}

TEST_F(UserDesignRegTest, AddUserDesignReg_OverwritesAModeOfTheSameId) {
  Add("Mine");
  testsupport::WriteValue(kDesignRoot, kModes + L"\\Mine", L"HostsOwn", DwordValue(1));
  UserDesignInfo info = Design("Mine");
  info.gamut = 9;
  EXPECT_EQ(store.AddUserDesignReg(&info), ResultOk);
  RegistryValues expected = Stored(L"Mine");
  expected[L"Gammut"] = DwordValue(9);
  expected[L"HostsOwn"] = DwordValue(1);
  EXPECT_EQ(ReadMode(L"Mine"), expected);
}

// No text runs into the field behind it.
TEST_F(UserDesignRegTest, AddUserDesignReg_FieldsThatAreFull) {
  UserDesignInfo info{};
  std::memset(info.description, 'd', sizeof info.description);
  std::memset(info.id, 'i', sizeof info.id);
  std::memset(info.modeName, 'm', sizeof info.modeName);
  std::memset(info.whitePointXStr, 'x', sizeof info.whitePointXStr);
  std::memset(info.whitePointYStr, 'y', sizeof info.whitePointYStr);
  std::memset(info.gammaStr, 'g', sizeof info.gammaStr);
  std::memset(info.iccPath, 'p', sizeof info.iccPath);
  std::memset(info.threeDLutPath, 't', sizeof info.threeDLutPath);
  std::memset(info.gammaPath, 'q', sizeof info.gammaPath);
  info.gamut = info.gammaMode = 0x41414141;
  EXPECT_EQ(store.AddUserDesignReg(&info), ResultOk);
  const std::wstring id(100, L'i');
  RegistryValues mode = ReadMode(id);
  EXPECT_EQ(mode[L"Id"], TextValue(id));
  EXPECT_EQ(mode[L"Description"], TextValue(std::wstring(401, L'd')));
  EXPECT_EQ(mode[L"ModeName"], TextValue(std::wstring(100, L'm')));
  EXPECT_EQ(mode[L"WhitePointXStr"], TextValue(std::wstring(100, L'x')));
  EXPECT_EQ(mode[L"WhitePointYStr"], TextValue(std::wstring(100, L'y')));
  EXPECT_EQ(mode[L"GammaStr"], TextValue(std::wstring(100, L'g')));
  EXPECT_EQ(mode[L"IccPath"], TextValue(std::wstring(100, L'p')));
  EXPECT_EQ(mode[L"ThreeDLutPath"], TextValue(std::wstring(100, L't')));
  EXPECT_EQ(mode[L"GammaPath"], TextValue(std::wstring(100, L'q')));
  EXPECT_EQ(mode[L"Gammut"], DwordValue(0x41414141));
}

TEST_F(UserDesignRegTest, AddUserDesignReg_IdsAroundTheFieldsLength) {
  for (const size_t length : {99U, 100U}) {
    SCOPED_TRACE(length);
    Add(std::string(length, 'x'));
    const std::wstring id(length, L'x');
    EXPECT_EQ(ReadMode(id), Stored(id));
  }
  Add(std::string(101, 'y'));
  EXPECT_EQ(ReadMode(std::wstring(100, L'y')), Stored(std::wstring(100, L'y')))
      << "the field holds no more";
}

TEST_F(UserDesignRegTest, AddUserDesignReg_IdsThatAKeyCannotHold) {
  Add("a\\b");
  EXPECT_EQ(ReadMode(L"a\\b"), Stored(L"a\\b"));
  Add("");
  EXPECT_EQ(ReadKey(kDesignRoot, kModes), Stored(L"")) << "the values stand beside the modes";
}

TEST_F(UserDesignRegTest, AddUserDesignReg_TextsOfTheSystemCodePage) {
  wchar_t wide[4] = {};
  ASSERT_NE(MultiByteToWideChar(CP_ACP, 0, "z\xe9", -1, wide, 4), 0);
  UserDesignInfo info = Design("Mine");
  Fill(info.modeName, "z\xe9");
  EXPECT_EQ(store.AddUserDesignReg(&info), ResultOk);
  EXPECT_EQ(ReadMode(L"Mine")[L"ModeName"], TextValue(wide));
}

TEST_F(UserDesignRegTest, AddUserDesignReg_EachWriteFails) {
  const auto all = Stored(L"Mine");
  const std::wstring shown[] = {
      L"3.123457", L"11",    L"2",      L"0.312700",      L"0.329000", L"2.200000",  L"1",
      L"4",        L"Mine",  L"a name", L"a description", L"C:\\icc",  L"C:\\3dlut", L"C:\\gamma",
      L"0,3127",   L"0,329", L"2,2"};
  RegistryValues stored;
  for (unsigned n = 1; n <= kOrder.size(); ++n) {
    const std::wstring& name = kOrder[n - 1];
    SCOPED_TRACE(testsupport::Utf8(name));
    RegDeleteTreeW(kDesignRoot, kDesignTestKey.c_str());
    notebook.ForgetRecords();
    notebook.FailCall("RegSetValueExW", n, ERROR_ACCESS_DENIED);
    const UserDesignInfo info = Design("Mine");
    EXPECT_EQ(store.AddUserDesignReg(&info), ResultFailed);
    EXPECT_LOG({3, L"Write key:" + kModes + L"\\Mine, itemName:" + name + L", value:" +
                       shown[n - 1] + L" failed!" + kDesignWrite},
               {3, L"Add user design reg data failed, id: Mine" + std::wstring(kAdd)});
    EXPECT_EQ(ReadMode(L"Mine"), stored) << "nothing is taken back";
    stored.insert(*all.find(name));
    notebook.ClearFaults();
  }
}

TEST_F(UserDesignRegTest, AddUserDesignReg_WithoutRights) {
  notebook.FailCall("RegCreateKeyExW", 0, ERROR_ACCESS_DENIED);
  const UserDesignInfo info = Design("Mine");
  EXPECT_EQ(store.AddUserDesignReg(&info), ResultFailed);
  EXPECT_LOG({3, L"RegCreateKeyEx:" + kModes + L"\\Mine failed!" + kDesignWrite},
             {3, L"Add user design reg data failed, id: Mine" + std::wstring(kAdd)});
}

// The numbers are enumerations: a failure line shows their sign.
TEST_F(UserDesignRegTest, AddUserDesignReg_NegativeNumbers) {
  UserDesignInfo info = Design("Mine");
  info.mode = info.gamut = info.whitePointMode = info.gammaMode = -2;
  EXPECT_EQ(store.AddUserDesignReg(&info), ResultOk);
  for (const wchar_t* name : {L"Mode", L"Gammut", L"WhitePointMode", L"GammaMode"}) {
    EXPECT_EQ(ReadMode(L"Mine")[name], DwordValue(0xFFFFFFFE));
  }
  for (const auto& [n, name] :
       {std::pair(2U, L"Mode"), {3U, L"Gammut"}, {7U, L"WhitePointMode"}, {8U, L"GammaMode"}}) {
    notebook.FailCall("RegSetValueExW", n, ERROR_ACCESS_DENIED);
    store.AddUserDesignReg(&info);
    EXPECT_LOGGED(3, L"Write key:" + kModes + L"\\Mine, itemName:" + name + L", value:-2 failed!" +
                         kDesignWrite);
    notebook.ClearFaults();
  }
}

// --- Editing ---

TEST_F(UserDesignRegTest, EditUserDesignReg_WithoutAChangeOfId) {
  Add("Mine");
  Tune("Mine");
  UserDesignInfo info = Design("Mine");
  info.gamma = 1.8;
  EXPECT_EQ(store.EditUserDesignReg(&info, "Mine"), ResultOk);
  EXPECT_EQ(ReadMode(L"Mine")[L"Gamma"], TextValue(L"1.800000"));
  EXPECT_EQ(notebook.CountCalls("RegDeleteKeyW"), 0U);
  EXPECT_TRUE(TuningExists(L"Mine"));
  EXPECT_LOG(
      {1, L"oldId is equals newId, not need to edit id value, id: Mine" + std::wstring(kMove)});
}

TEST_F(UserDesignRegTest, EditUserDesignReg_RenamesAMode) {
  Add("old");
  Tune("old");
  const UserDesignInfo info = Design("new");
  EXPECT_EQ(store.EditUserDesignReg(&info, "old"), ResultOk);
  EXPECT_FALSE(ModeExists(L"old"));
  EXPECT_EQ(ReadMode(L"new"), Stored(L"new"));
  EXPECT_FALSE(TuningExists(L"old"));
  EXPECT_EQ(ReadKey(kDesignRoot, kTunings + L"\\new")[L"R"], TextValue(L"0.500000"));
  EXPECT_EQ(ReadKey(kDesignRoot, kTunings + L"\\new")[L"Id"], TextValue(L"new"));
  EXPECT_LOG({1, L"Id have changed, need delete old reg value" + std::wstring(kEdit)});
}

TEST_F(UserDesignRegTest, EditUserDesignReg_DeletesTheOldKeyAheadOfTheWrite) {
  Add("old");
  const UserDesignInfo info = Design("new");
  EXPECT_EQ(store.EditUserDesignReg(&info, "old"), ResultOk);
  std::vector<std::string> expected = {"RegDeleteKeyW"};
  expected.resize(18, "RegSetValueExW");
  EXPECT_EQ(testsupport::CallsOf(notebook, {"RegDeleteKeyW", "RegSetValueExW"}), expected);
}

// It is the new key that tells whether the id has changed.
TEST_F(UserDesignRegTest, EditUserDesignReg_OntoAnotherModeLeavesTheOldKey) {
  Add("old");
  Tune("old");
  Add("other");
  UserDesignInfo info = Design("other");
  info.gamut = 5;
  EXPECT_EQ(store.EditUserDesignReg(&info, "old"), ResultOk);
  EXPECT_EQ(ReadMode(L"old"), Stored(L"old"));
  EXPECT_EQ(ReadMode(L"other")[L"Gammut"], DwordValue(5));
  EXPECT_FALSE(TuningExists(L"old")) << "the fine tuning goes by the ids alone";
  EXPECT_TRUE(TuningExists(L"other"));
  EXPECT_LOG();
}

TEST_F(UserDesignRegTest, EditUserDesignReg_WhereThereIsNoOldKey) {
  const UserDesignInfo info = Design("new");
  EXPECT_EQ(store.EditUserDesignReg(&info, "old"), ResultOk);
  EXPECT_EQ(ReadMode(L"new"), Stored(L"new"));
  EXPECT_LOG({1, L"Id have changed, need delete old reg value" + std::wstring(kEdit)},
             {3, L"Open key:" + kModes + L" not exists!(RegisterHelper::RegDeleteKeyW)"});
}

TEST_F(UserDesignRegTest, EditUserDesignReg_OldKeyThatCannotBeDeleted) {
  Add("old");
  testsupport::MakeKey(kDesignRoot, kModes + L"\\old\\sub");
  const UserDesignInfo info = Design("new");
  EXPECT_EQ(store.EditUserDesignReg(&info, "old"), ResultOk);
  EXPECT_TRUE(ModeExists(L"old"));
  EXPECT_EQ(ReadMode(L"new"), Stored(L"new"));
  EXPECT_LOG({1, L"Id have changed, need delete old reg value" + std::wstring(kEdit)});
}

TEST_F(UserDesignRegTest, EditUserDesignReg_FailedWriteLosesTheOldKeyAndKeepsTheTuning) {
  Add("old");
  Tune("old");
  notebook.FailCall("RegSetValueExW", 2, ERROR_ACCESS_DENIED);
  const UserDesignInfo info = Design("new");
  EXPECT_EQ(store.EditUserDesignReg(&info, "old"), ResultFailed);
  EXPECT_LOG({1, L"Id have changed, need delete old reg value" + std::wstring(kEdit)},
             {3, L"Write key:" + kModes + L"\\new, itemName:Mode, value:11 failed!" + kDesignWrite},
             {3, L"Edit user design reg data failed, id: new" + std::wstring(kEdit)});
  EXPECT_FALSE(ModeExists(L"old"));
  EXPECT_EQ(ReadMode(L"new"), (RegistryValues{{L"SerialNum", TextValue(L"3.123457")}}));
  EXPECT_TRUE(TuningExists(L"old"));
  EXPECT_FALSE(TuningExists(L"new"));
}

TEST_F(UserDesignRegTest, EditUserDesignReg_OutcomeOfTheMoveDoesNotCount) {
  Add("old");
  Tune("old");
  notebook.FailCall("RegSetValueExW", 18, ERROR_ACCESS_DENIED);  // behind the mode's 17 values
  const UserDesignInfo info = Design("new");
  EXPECT_EQ(store.EditUserDesignReg(&info, "old"), ResultOk);
  EXPECT_LOGGED(3, L"Edit white point id fail, id: new" + std::wstring(kMove));
  EXPECT_TRUE(TuningExists(L"old"));
}

// --- Serial number ---

TEST_F(UserDesignRegTest, EditUserSerialNumReg_WritesOnlyTheSerialNumber) {
  Add("Mine");
  UserDesignInfo info = Design("Mine");
  info.serialNum = 12.9999999;
  info.gamut = 7;
  EXPECT_EQ(store.EditUserSerialNumReg(&info), ResultOk);
  RegistryValues expected = Stored(L"Mine");
  expected[L"SerialNum"] = TextValue(L"13.000000");
  EXPECT_EQ(ReadMode(L"Mine"), expected);
  EXPECT_THAT(NamesWritten(), ElementsAre(L"SerialNum"));
  EXPECT_LOG();
}

TEST_F(UserDesignRegTest, EditUserSerialNumReg_EmptyId) {
  const UserDesignInfo info = Design("");
  EXPECT_EQ(store.EditUserSerialNumReg(&info), ResultFailed);
  EXPECT_LOG({3, L"Edit user design serial num failed, id is empty" + std::wstring(kEditSerial)});
  EXPECT_FALSE(KeyExists(kDesignRoot, kDesignTestKey));
}

TEST_F(UserDesignRegTest, EditUserSerialNumReg_FailedWrite) {
  notebook.FailCall("RegCreateKeyExW", 1, ERROR_ACCESS_DENIED);
  const UserDesignInfo info = Design("Mine");
  EXPECT_EQ(store.EditUserSerialNumReg(&info), ResultFailed);
  EXPECT_LOG({3, L"RegCreateKeyEx:" + kModes + L"\\Mine failed!" + kDesignWrite},
             {3, L"Edit user design serial num failed, id: Mine" + std::wstring(kEditSerial)});
}

TEST_F(UserDesignRegTest, EditUserSerialNumReg_IdOf100Characters) {
  const UserDesignInfo info = Design(std::string(100, 'x'));
  EXPECT_EQ(store.EditUserSerialNumReg(&info), ResultOk);
  EXPECT_TRUE(ModeExists(std::wstring(100, L'x')));
}

// --- Deleting ---

TEST_F(UserDesignRegTest, DeleteUserDesignReg_TakesTheFineTuningToo) {
  Add("Mine");
  Tune("Mine");
  Add("other");
  Tune("other");
  const UserDesignInfo info = Design("Mine");
  EXPECT_EQ(store.DeleteUserDesignReg(&info), ResultOk);
  EXPECT_FALSE(ModeExists(L"Mine"));
  EXPECT_FALSE(TuningExists(L"Mine"));
  EXPECT_TRUE(ModeExists(L"other"));
  EXPECT_TRUE(TuningExists(L"other"));
  EXPECT_LOG();
}

TEST_F(UserDesignRegTest, DeleteUserDesignReg_WithoutAKey) {
  Tune("Mine");
  const UserDesignInfo info = Design("Mine");
  EXPECT_EQ(store.DeleteUserDesignReg(&info), ResultOk);
  EXPECT_LOG({1, L"IsRegKeyExists false, path" + kModes + L"\\Mine" + kDelete});
  EXPECT_TRUE(TuningExists(L"Mine")) << "without the mode nothing is deleted";
}

TEST_F(UserDesignRegTest, DeleteUserDesignReg_OfAKeyWithSubKeys) {
  Add("Mine");
  Tune("Mine");
  testsupport::MakeKey(kDesignRoot, kModes + L"\\Mine\\sub");
  const UserDesignInfo info = Design("Mine");
  EXPECT_EQ(store.DeleteUserDesignReg(&info), ResultFailed);
  EXPECT_LOG({3, L"RegDeleteKey Error, path" + kModes + L"\\Mine" + kDelete});
  EXPECT_EQ(ReadMode(L"Mine"), Stored(L"Mine"));
  EXPECT_TRUE(TuningExists(L"Mine"));
}

TEST_F(UserDesignRegTest, DeleteUserDesignReg_WithoutTheParent) {
  Add("Mine");
  notebook.FailCall("RegOpenKeyW", 2, ERROR_FILE_NOT_FOUND);  // behind the test of the mode's key
  const UserDesignInfo info = Design("Mine");
  EXPECT_EQ(store.DeleteUserDesignReg(&info), ResultKeyNotFound);
  EXPECT_LOG({3, L"Open key:" + kModes + L" not exists!(RegisterHelper::RegDeleteKeyW)"},
             {3, L"RegDeleteKey Error, path" + kModes + L"\\Mine" + kDelete});
}

TEST_F(UserDesignRegTest, DeleteUserDesignReg_OutcomeForTheTuningDoesNotCount) {
  Add("Mine");
  Tune("Mine");
  notebook.FailCall("RegDeleteKeyW", 2, ERROR_ACCESS_DENIED);
  const UserDesignInfo info = Design("Mine");
  EXPECT_EQ(store.DeleteUserDesignReg(&info), ResultOk);
  EXPECT_LOG({3,
              L"Delete usr design mode white point fine tue value fail, id: "
              L"Mine(WhitePointFineTueReg::DeleteUsrModeWhitePoint)"});
}

TEST_F(UserDesignRegTest, DeleteUserDesignReg_IdOf100Characters) {
  Add(std::string(100, 'x'));
  const UserDesignInfo info = Design(std::string(100, 'x'));
  EXPECT_EQ(store.DeleteUserDesignReg(&info), ResultOk);
  EXPECT_FALSE(ModeExists(std::wstring(100, L'x')));
  EXPECT_LOG();
}

// The empty id is the key of all modes, which goes unless a mode is in it.
TEST_F(UserDesignRegTest, DeleteUserDesignReg_EmptyId) {
  Add("Mine");
  const UserDesignInfo info = Design("");
  EXPECT_EQ(store.DeleteUserDesignReg(&info), ResultFailed);
  EXPECT_LOG({3, L"RegDeleteKey Error, path" + kModes + L"\\" + kDelete});
  EXPECT_TRUE(ModeExists(L"Mine"));
}

// --- The root ---

// Only tests can move the store elsewhere.
class MovedUserDesignReg : public UserDesignReg {
 public:
  explicit MovedUserDesignReg(HKEY root) { rootKey_ = root; }
};

TEST_F(UserDesignRegTest, GetUserRegHkey) {
  EXPECT_EQ(store.GetUserRegHkey(), 2);
  const MovedUserDesignReg ofUser(HKEY_CURRENT_USER);
  const MovedUserDesignReg ofUsers(HKEY_USERS);
  EXPECT_LOGGED(1, L"hkey is HKEY_LOCAL_MACHINE(UserDesignReg::GetUserRegHkey)");
  notebook.ForgetRecords();
  EXPECT_EQ(ofUser.GetUserRegHkey(), 1);
  EXPECT_EQ(ofUsers.GetUserRegHkey(), 3);
  EXPECT_LOG({1, L"hkey is HKEY_CURRENT_USER(UserDesignReg::GetUserRegHkey)"},
             {1, L"hkey is HKEY_USERS(UserDesignReg::GetUserRegHkey)"});
}

// --- The current mode ---

TEST_F(UserDesignRegTest, SetCurrentUsrMode) {
  EXPECT_EQ(store.SetCurrentUsrMode("Mine%7"), ResultOk);
  EXPECT_EQ(ReadKey(kDesignRoot, kModes),
            (RegistryValues{{L"CurrentUsrMode", TextValue(L"Mine%7")}}));
  EXPECT_EQ(store.GetCurrentUsrMode(), "Mine%7");
  EXPECT_EQ(store.SetCurrentUsrMode(""), ResultOk);
  EXPECT_EQ(store.GetCurrentUsrMode(), "");
  EXPECT_LOG();
}

TEST_F(UserDesignRegTest, SetCurrentUsrMode_FailedWrite) {
  notebook.FailCall("RegSetValueExW", 1, ERROR_ACCESS_DENIED);
  EXPECT_EQ(store.SetCurrentUsrMode("Mine"), ResultFailed);
  EXPECT_LOG(
      {3, L"Write key:" + kModes + L", itemName:CurrentUsrMode, value:Mine failed!" + kDesignWrite},
      {3, L"SetCurrentUsrMode Error, id: Mine(UserDesignReg::SetCurrentUsrMode)"});
}

TEST_F(UserDesignRegTest, GetCurrentUsrMode_WithoutAValue) {
  const LogLine line{
      3, L"Get currentUsrMode fail, path" + kModes + L"(UserDesignReg::GetCurrentUsrMode)"};
  EXPECT_EQ(store.GetCurrentUsrMode(), "");
  testsupport::MakeKey(kDesignRoot, kModes);
  EXPECT_EQ(store.GetCurrentUsrMode(), "");
  EXPECT_LOG({3, L"Reg key:" + kModes + L" not exists!" + kDesignRead}, line,
             {3, L"itemName:CurrentUsrMode not exist in subKey:" + kModes + kDesignRead}, line);
}

}  // namespace
}  // namespace velora
