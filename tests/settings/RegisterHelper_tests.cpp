#include "settings/RegisterHelper.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "support/NotebookTest.h"
#include "support/Registry.h"

namespace velora {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testsupport::DwordValue;
using testsupport::KeyExists;
using testsupport::LogLine;
using testsupport::ReadKey;
using testsupport::RegistryValue;
using testsupport::RegistryValues;
using testsupport::TextValue;

const HKEY kRoot = HKEY_LOCAL_MACHINE;
const std::wstring kHelperTestKey = L"SOFTWARE\\Norvex\\Velora";
const std::wstring kKey = L"SOFTWARE\\Norvex\\Velora\\RegisterHelper";
const std::wstring kItem = L"Item";

constexpr wchar_t kRead[] = L"(RegisterHelper::RegReadValue)";
constexpr wchar_t kWrite[] = L"(RegisterHelper::RegWriteValue)";

enum class ScopedMode : int32_t { Minus = -2, Seven = 7 };
enum PlainMode { PlainModeNine = 9 };

class RegisterHelperTest : public testsupport::NotebookTest {
 protected:
  void Store(const RegistryValue& value) { testsupport::WriteValue(kRoot, kKey, kItem, value); }
  RegistryValues Stored() { return ReadKey(kRoot, kKey); }

  // Each opened key was closed.
  void ExpectKeysClosed() {
    EXPECT_EQ(notebook.CountCalls("RegOpenKeyW") + notebook.CountCalls("RegCreateKeyExW"),
              notebook.CountCalls("RegCloseKey"));
  }

  const testsupport::ScopedKey key{kRoot, kHelperTestKey};
  RegisterHelper helper;
};

RegistryValue Bytes(DWORD type, std::vector<uint8_t> bytes) { return {type, std::move(bytes)}; }

// --- 32-bit values ---

TEST_F(RegisterHelperTest, RegReadValue_Dword) {
  Store(DwordValue(0xFEDCBA98));
  uint32_t value = 0;
  EXPECT_EQ(helper.RegReadValue(kRoot, kKey, kItem, &value, true), ResultOk);
  EXPECT_EQ(value, 0xFEDCBA98);
  EXPECT_LOG();
  ExpectKeysClosed();
}

TEST_F(RegisterHelperTest, RegReadValue_DwordWithoutKey) {
  uint32_t value = 42;
  EXPECT_EQ(helper.RegReadValue(kRoot, kKey, kItem, &value, true), ResultKeyNotFound);
  EXPECT_EQ(value, 42u);
  EXPECT_LOG({3, L"Open key:" + kKey + L" not exists!" + kRead});
  EXPECT_EQ(notebook.CountCalls("RegCloseKey"), 0u);
}

TEST_F(RegisterHelperTest, RegReadValue_DwordWithoutValue) {
  testsupport::MakeKey(kRoot, kKey);
  uint32_t value = 42;
  EXPECT_EQ(helper.RegReadValue(kRoot, kKey, kItem, &value, true), ResultFailed);
  EXPECT_EQ(value, 42u);
  EXPECT_LOG({3, L"itemName:Item not exist in subKey:" + kKey + kRead});
  ExpectKeysClosed();
}

TEST_F(RegisterHelperTest, RegReadValue_DwordLogsOnlyWhenAsked) {
  uint32_t value = 42;
  EXPECT_EQ(helper.RegReadValue(kRoot, kKey, kItem, &value, false), ResultKeyNotFound);
  testsupport::MakeKey(kRoot, kKey);
  EXPECT_EQ(helper.RegReadValue(kRoot, kKey, kItem, &value, false), ResultFailed);
  EXPECT_LOG();
}

// The registry type plays no part: four bytes or less are the value, more are none.
TEST_F(RegisterHelperTest, RegReadValue_DwordOfOtherTypes) {
  struct Row {
    RegistryValue stored;
    ResultT result;
    uint32_t value;
  };
  const Row rows[] = {
      {TextValue(L"A"), ResultOk, 0x00000041},
      {TextValue(L""), ResultOk, 0},
      {Bytes(REG_SZ, {0x41, 0, 0x42, 0}), ResultOk, 0x00420041},
      {TextValue(L"AB"), ResultFailed, 0xFFFFFFFF},
      {Bytes(REG_BINARY, {}), ResultOk, 0},
      {Bytes(REG_BINARY, {1}), ResultOk, 1},
      {Bytes(REG_BINARY, {1, 2, 3}), ResultOk, 0x00030201},
      {Bytes(REG_BINARY, {1, 2, 3, 4}), ResultOk, 0x04030201},
      {Bytes(REG_BINARY, {1, 2, 3, 4, 5}), ResultFailed, 0xFFFFFFFF},
      {Bytes(REG_QWORD, {1, 0, 0, 0, 0, 0, 0, 0}), ResultFailed, 0xFFFFFFFF},
      {Bytes(REG_NONE, {9, 0, 0, 0}), ResultOk, 9},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row.stored.bytes));
    Store(row.stored);
    uint32_t value = 0xFFFFFFFF;
    EXPECT_EQ(helper.RegReadValue(kRoot, kKey, kItem, &value, false), row.result);
    EXPECT_EQ(value, row.value);
    EXPECT_EQ(Stored(), (RegistryValues{{kItem, row.stored}}));
  }
}

TEST_F(RegisterHelperTest, RegReadValue_WithDefault) {
  EXPECT_EQ(helper.RegReadValue(kRoot, kKey, kItem, 17), 17);
  EXPECT_FALSE(KeyExists(kRoot, kKey)) << "nothing is written back";
  testsupport::MakeKey(kRoot, kKey);
  EXPECT_EQ(helper.RegReadValue(kRoot, kKey, kItem, 17), 17);
  EXPECT_THAT(Stored(), IsEmpty());
  Store(DwordValue(static_cast<uint32_t>(-5)));
  EXPECT_EQ(helper.RegReadValue(kRoot, kKey, kItem, 17), -5);
  EXPECT_EQ(helper.RegReadValue(kRoot, kKey, kItem, 17u), 0xFFFFFFFBu);
  Store(TextValue(L"too long"));
  EXPECT_EQ(helper.RegReadValue(kRoot, kKey, kItem, 17), 17);
  Store(DwordValue(7));
  EXPECT_EQ(helper.RegReadValue(kRoot, kKey, kItem, ScopedMode::Minus), ScopedMode::Seven);
  EXPECT_LOG();
  EXPECT_EQ(notebook.CountCalls("RegOpenKeyW"), 6u);
  EXPECT_EQ(notebook.CountCalls("RegCloseKey"), 5u) << "all but the one that was missing";
}

TEST_F(RegisterHelperTest, RegWriteValue_Dword) {
  EXPECT_EQ(helper.RegWriteValue(kRoot, kKey, kItem, uint32_t{0xFEDCBA98}), ResultOk);
  EXPECT_EQ(Stored(), (RegistryValues{{kItem, {REG_DWORD, {0x98, 0xBA, 0xDC, 0xFE}}}}));
  EXPECT_LOG();
  ExpectKeysClosed();
}

TEST_F(RegisterHelperTest, RegWriteValue_MakesTheKeysOnTheWay) {
  const std::wstring deep = kKey + L"\\a\\b\\c";
  EXPECT_EQ(helper.RegWriteValue(kRoot, deep, kItem, 1u), ResultOk);
  EXPECT_EQ(ReadKey(kRoot, deep), (RegistryValues{{kItem, DwordValue(1)}}));
}

TEST_F(RegisterHelperTest, RegWriteValue_CreatesNonVolatileForWriting) {
  helper.RegWriteValue(kRoot, kKey, kItem, 1u);
  for (const auto& call : notebook.calls) {
    if (call.function == "RegCreateKeyExW") {
      EXPECT_THAT(call.arguments,
                  ElementsAre(L"HKEY_LOCAL_MACHINE", kKey, L"0", L"null",
                              std::to_wstring(REG_OPTION_NON_VOLATILE), std::to_wstring(KEY_WRITE),
                              L"null", L"pointer", L"null"));
    }
  }
  EXPECT_EQ(notebook.CountCalls("RegCreateKeyExW"), 1u);
}

TEST_F(RegisterHelperTest, RegWriteValue_Enumerations) {
  EXPECT_EQ(helper.RegWriteValue(kRoot, kKey, L"scoped", ScopedMode::Minus), ResultOk);
  EXPECT_EQ(helper.RegWriteValue(kRoot, kKey, L"plain", PlainModeNine), ResultOk);
  EXPECT_EQ(Stored(),
            (RegistryValues{{L"scoped", DwordValue(0xFFFFFFFE)}, {L"plain", DwordValue(9)}}));
}

TEST_F(RegisterHelperTest, RegWriteValue_ReplacesAValueOfAnotherType) {
  Store(TextValue(L"text"));
  EXPECT_EQ(helper.RegWriteValue(kRoot, kKey, kItem, 3u), ResultOk);
  EXPECT_EQ(Stored(), (RegistryValues{{kItem, DwordValue(3)}}));
}

// --- Failed writes ---

TEST_F(RegisterHelperTest, RegWriteValue_KeyCannotBeCreated) {
  notebook.FailCall("RegCreateKeyExW", 0, ERROR_ACCESS_DENIED);
  EXPECT_EQ(helper.RegWriteValue(kRoot, kKey, kItem, 1u), ResultFailed);
  EXPECT_EQ(helper.RegWriteValue(kRoot, kKey, kItem, 0.5), ResultFailed);
  EXPECT_EQ(helper.RegWriteValue(kRoot, kKey, kItem, std::wstring(L"x")), ResultFailed);
  EXPECT_EQ(helper.RegWriteValue(kRoot, kKey, kItem, ScopedMode::Seven), ResultFailed);
  const LogLine line{3, L"RegCreateKeyEx:" + kKey + L" failed!" + kWrite};
  EXPECT_LOG(line, line, line, line);
  EXPECT_FALSE(KeyExists(kRoot, kKey));
  EXPECT_EQ(notebook.CountCalls("RegSetValueExW"), 0u);
  EXPECT_EQ(notebook.CountCalls("RegCloseKey"), 0u);
}

TEST_F(RegisterHelperTest, RegWriteValue_ValueCannotBeSet) {
  Store(DwordValue(5));
  notebook.FailCall("RegSetValueExW", 0, ERROR_ACCESS_DENIED);
  EXPECT_EQ(helper.RegWriteValue(kRoot, kKey, kItem, 4294967295u), ResultFailed);
  EXPECT_EQ(helper.RegWriteValue(kRoot, kKey, kItem, ScopedMode::Minus), ResultFailed);
  EXPECT_EQ(helper.RegWriteValue(kRoot, kKey, kItem, PlainModeNine), ResultFailed);
  EXPECT_EQ(helper.RegWriteValue(kRoot, kKey, kItem, 0.1234567), ResultFailed);
  EXPECT_EQ(helper.RegWriteValue(kRoot, kKey, kItem, std::wstring(L"a text")), ResultFailed);
  const std::wstring before = L"Write key:" + kKey + L", itemName:Item, value:";
  const std::wstring after = L" failed!" + std::wstring(kWrite);
  EXPECT_LOG({3, before + L"4294967295" + after}, {3, before + L"-2" + after},
             {3, before + L"9" + after}, {3, before + L"0.123457" + after},
             {3, before + L"a text" + after});
  EXPECT_EQ(Stored(), (RegistryValues{{kItem, DwordValue(5)}})) << "the former value stays";
  EXPECT_EQ(notebook.CountCalls("RegCreateKeyExW"), 5u);
  EXPECT_EQ(notebook.CountCalls("RegCloseKey"), 5u);
}

TEST_F(RegisterHelperTest, RegWriteValue_IntoARootThatIsNone) {
  const auto closed = reinterpret_cast<HKEY>(uintptr_t{0x7ffc});
  EXPECT_EQ(helper.RegWriteValue(closed, kKey, kItem, 1u), ResultFailed);
  EXPECT_LOG({3, L"RegCreateKeyEx:" + kKey + L" failed!" + kWrite});
}

// --- Wide text ---

TEST_F(RegisterHelperTest, RegWriteValue_TextIsStoredWithItsTerminator) {
  EXPECT_EQ(helper.RegWriteValue(kRoot, kKey, kItem, std::wstring(L"\x00e9z")), ResultOk);
  EXPECT_EQ(Stored(), (RegistryValues{{kItem, {REG_SZ, {0xE9, 0, 'z', 0, 0, 0}}}}));
}

TEST_F(RegisterHelperTest, RegReadValue_Text) {
  Store(TextValue(L"a text"));
  std::wstring value = L"before";
  EXPECT_EQ(helper.RegReadValue(kRoot, kKey, kItem, value, true), ResultOk);
  EXPECT_EQ(value, L"a text");
  Store(TextValue(L""));
  EXPECT_EQ(helper.RegReadValue(kRoot, kKey, kItem, value, true), ResultOk);
  EXPECT_EQ(value, L"");
  EXPECT_LOG();
  ExpectKeysClosed();
}

TEST_F(RegisterHelperTest, RegReadValue_TextWithoutKeyOrValue) {
  std::wstring value = L"before";
  EXPECT_EQ(helper.RegReadValue(kRoot, kKey, kItem, value, true), ResultKeyNotFound);
  testsupport::MakeKey(kRoot, kKey);
  EXPECT_EQ(helper.RegReadValue(kRoot, kKey, kItem, value, true), ResultFailed);
  EXPECT_EQ(value, L"before");
  EXPECT_LOG({3, L"Reg key:" + kKey + L" not exists!" + kRead},
             {3, L"itemName:Item not exist in subKey:" + kKey + kRead});
}

TEST_F(RegisterHelperTest, RegReadValue_TextLogsOnlyWhenAsked) {
  std::wstring value;
  EXPECT_EQ(helper.RegReadValue(kRoot, kKey, kItem, value, false), ResultKeyNotFound);
  testsupport::MakeKey(kRoot, kKey);
  EXPECT_EQ(helper.RegReadValue(kRoot, kKey, kItem, value, false), ResultFailed);
  EXPECT_LOG();
}

TEST_F(RegisterHelperTest, RegReadValue_TextOf259CharactersIsTheLongest) {
  for (const size_t length : {258u, 259u, 260u, 261u}) {
    SCOPED_TRACE(length);
    const std::wstring text(length, L'x');
    EXPECT_EQ(helper.RegWriteValue(kRoot, kKey, kItem, text), ResultOk);
    EXPECT_EQ(Stored(), (RegistryValues{{kItem, TextValue(text)}}));
    std::wstring value = L"before";
    const bool fits = length <= 259;
    EXPECT_EQ(helper.RegReadValue(kRoot, kKey, kItem, value, false),
              fits ? ResultOk : ResultFailed);
    EXPECT_EQ(value, fits ? text : L"before");
  }
}

TEST_F(RegisterHelperTest, RegReadValue_TextTooLongIsLoggedAsMissing) {
  Store(TextValue(std::wstring(260, L'x')));
  std::wstring value;
  EXPECT_EQ(helper.RegReadValue(kRoot, kKey, kItem, value, true), ResultFailed);
  EXPECT_LOG({3, L"itemName:Item not exist in subKey:" + kKey + kRead});
}

// Nothing behind the buffer is read, though no terminator stops the text.
TEST_F(RegisterHelperTest, RegReadValue_TextWithoutTerminator) {
  RegistryValue full = TextValue(std::wstring(260, L'x'));
  full.bytes.resize(520);
  Store(full);
  std::wstring value;
  EXPECT_EQ(helper.RegReadValue(kRoot, kKey, kItem, value, true), ResultOk);
  EXPECT_EQ(value, std::wstring(260, L'x'));

  Store(Bytes(REG_SZ, {'a', 0, 'b', 0}));
  EXPECT_EQ(helper.RegReadValue(kRoot, kKey, kItem, value, true), ResultOk);
  EXPECT_EQ(value, L"ab");
  Store(Bytes(REG_SZ, {'a', 0, 'b'}));
  EXPECT_EQ(helper.RegReadValue(kRoot, kKey, kItem, value, true), ResultOk);
  EXPECT_EQ(value, L"ab");
}

TEST_F(RegisterHelperTest, RegReadValue_TextOfOtherTypes) {
  Store(DwordValue(0x00420041));
  std::wstring value;
  EXPECT_EQ(helper.RegReadValue(kRoot, kKey, kItem, value, true), ResultOk);
  EXPECT_EQ(value, L"AB");
  Store(Bytes(REG_MULTI_SZ, {'a', 0, 0, 0, 'b', 0, 0, 0, 0, 0}));
  EXPECT_EQ(helper.RegReadValue(kRoot, kKey, kItem, value, true), ResultOk);
  EXPECT_EQ(value, L"a");
}

// --- Doubles ---

TEST_F(RegisterHelperTest, Double_IsSixDecimalsOfText) {
  EXPECT_EQ(helper.RegWriteValue(kRoot, kKey, kItem, 0.1234567), ResultOk);
  EXPECT_EQ(Stored(), (RegistryValues{{kItem, TextValue(L"0.123457")}}));
  double value = 0;
  EXPECT_EQ(helper.RegReadValue(kRoot, kKey, kItem, &value), ResultOk);
  EXPECT_EQ(value, 0.123457);
  EXPECT_LOG();
}

TEST_F(RegisterHelperTest, RegReadValue_DoubleTexts) {
  struct Row {
    const wchar_t* text;
    double value;
  };
  const Row rows[] = {{L"0.5", 0.5},
                      {L"0.5abc", 0.5},
                      {L"  -2", -2},
                      {L"+3.25", 3.25},
                      {L"0x10", 16},
                      {L"1e3", 1000},
                      {L"0,5", 0},
                      {L"0x", 0},
                      {L"6500.000000", 6500},
                      {L"inf", std::numeric_limits<double>::infinity()}};
  for (const Row& row : rows) {
    SCOPED_TRACE(testing::PrintToString(std::wstring(row.text)));
    Store(TextValue(row.text));
    double value = 42;
    EXPECT_EQ(helper.RegReadValue(kRoot, kKey, kItem, &value), ResultOk);
    EXPECT_EQ(value, row.value);
  }
  Store(TextValue(L"nan"));
  double value = 42;
  EXPECT_EQ(helper.RegReadValue(kRoot, kKey, kItem, &value), ResultOk);
  EXPECT_TRUE(std::isnan(value));
  EXPECT_LOG();
}

TEST_F(RegisterHelperTest, RegReadValue_DoubleOfTextThatIsNoNumber) {
  for (const wchar_t* text :
       {L"abc", L"", L" ", L".", L"-", L"+-1", L"\xff11", L"1e400", L"-1e400", L"1e-400"}) {
    SCOPED_TRACE(testing::PrintToString(std::wstring(text)));
    Store(TextValue(text));
    notebook.ForgetRecords();
    double value = 42;
    EXPECT_EQ(helper.RegReadValue(kRoot, kKey, kItem, &value), ResultFailed);
    EXPECT_EQ(value, 42);
    EXPECT_LOG({3, L"RegReadValue failed!(RegisterHelper::RegReadValue)"});
    ExpectKeysClosed();
  }
}

TEST_F(RegisterHelperTest, RegReadValue_DoubleAlwaysLogsWhatIsMissing) {
  double value = 42;
  EXPECT_EQ(helper.RegReadValue(kRoot, kKey, kItem, &value), ResultKeyNotFound);
  testsupport::MakeKey(kRoot, kKey);
  EXPECT_EQ(helper.RegReadValue(kRoot, kKey, kItem, &value), ResultFailed);
  EXPECT_EQ(value, 42);
  EXPECT_LOG({3, L"Reg key:" + kKey + L" not exists!" + kRead},
             {3, L"itemName:Item not exist in subKey:" + kKey + kRead});
}

TEST_F(RegisterHelperTest, RegReadValue_DoubleHandlesEveryException) {
  Store(TextValue(L"0.5"));
  notebook.ThrowFrom("RegOpenKeyW", 1, "out of memory");
  double value = 42;
  EXPECT_EQ(helper.RegReadValue(kRoot, kKey, kItem, &value), ResultFailed);
  EXPECT_EQ(value, 42);
  EXPECT_LOG({3, L"RegReadValue failed!" + std::wstring(kRead)});
}

TEST_F(RegisterHelperTest, Double_TheHostsLocaleHasNoInfluence) {
  ASSERT_NE(setlocale(LC_ALL, "German"), nullptr);
  EXPECT_EQ(helper.RegWriteValue(kRoot, kKey, kItem, 0.5), ResultOk);
  double value = 0;
  EXPECT_EQ(helper.RegReadValue(kRoot, kKey, kItem, &value), ResultOk);
  setlocale(LC_ALL, "C");
  EXPECT_EQ(Stored(), (RegistryValues{{kItem, TextValue(L"0.500000")}}));
  EXPECT_EQ(value, 0.5);
}

// Its text has 316 characters: written, but too long to be read.
TEST_F(RegisterHelperTest, Double_TheLargestCannotBeReadBack) {
  EXPECT_EQ(helper.RegWriteValue(kRoot, kKey, kItem, std::numeric_limits<double>::max()), ResultOk);
  EXPECT_EQ(Stored()[kItem].bytes.size(), (309 + 7 + 1) * sizeof(wchar_t));
  double value = 42;
  EXPECT_EQ(helper.RegReadValue(kRoot, kKey, kItem, &value), ResultFailed);
  EXPECT_EQ(value, 42);
}

// --- Keys ---

TEST_F(RegisterHelperTest, RegDeleteKeyW_DeletesTheKeyWithItsValues) {
  Store(DwordValue(1));
  EXPECT_EQ(helper.RegDeleteKeyW(kRoot, kHelperTestKey, L"RegisterHelper"), ResultOk);
  EXPECT_FALSE(KeyExists(kRoot, kKey));
  EXPECT_TRUE(KeyExists(kRoot, kHelperTestKey));
  EXPECT_LOG();
  ExpectKeysClosed();
}

TEST_F(RegisterHelperTest, RegDeleteKeyW_WithoutParent) {
  EXPECT_EQ(helper.RegDeleteKeyW(kRoot, kHelperTestKey, L"RegisterHelper"), ResultKeyNotFound);
  EXPECT_LOG({3, L"Open key:" + kHelperTestKey + L" not exists!(RegisterHelper::RegDeleteKeyW)"});
}

TEST_F(RegisterHelperTest, RegDeleteKeyW_WithoutKey) {
  testsupport::MakeKey(kRoot, kHelperTestKey);
  EXPECT_EQ(helper.RegDeleteKeyW(kRoot, kHelperTestKey, L"RegisterHelper"), ResultFailed);
  EXPECT_LOG();
  ExpectKeysClosed();
}

TEST_F(RegisterHelperTest, RegDeleteKeyW_AKeyWithSubKeysStays) {
  Store(DwordValue(1));
  testsupport::MakeKey(kRoot, kKey + L"\\Sub");
  EXPECT_EQ(helper.RegDeleteKeyW(kRoot, kHelperTestKey, L"RegisterHelper"), ResultFailed);
  EXPECT_TRUE(KeyExists(kRoot, kKey + L"\\Sub"));
  EXPECT_EQ(Stored(), (RegistryValues{{kItem, DwordValue(1)}}));
  EXPECT_LOG();
  ExpectKeysClosed();
}

TEST_F(RegisterHelperTest, RegDeleteKeyW_RefusedBySystem) {
  Store(DwordValue(1));
  notebook.FailCall("RegDeleteKeyW", 1, ERROR_ACCESS_DENIED);
  EXPECT_EQ(helper.RegDeleteKeyW(kRoot, kHelperTestKey, L"RegisterHelper"), ResultFailed);
  EXPECT_TRUE(KeyExists(kRoot, kKey));
}

TEST_F(RegisterHelperTest, IsRegKeyExists) {
  EXPECT_FALSE(helper.IsRegKeyExists(kRoot, kKey));
  testsupport::MakeKey(kRoot, kKey);
  EXPECT_TRUE(helper.IsRegKeyExists(kRoot, kKey));
  notebook.FailCall("RegOpenKeyW", 2, ERROR_ACCESS_DENIED);
  EXPECT_TRUE(helper.IsRegKeyExists(kRoot, kKey));
  notebook.ForgetRecords();
  EXPECT_FALSE(helper.IsRegKeyExists(kRoot, kKey));
  EXPECT_LOG();
}

}  // namespace
}  // namespace velora
