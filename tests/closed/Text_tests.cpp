#include "common/Text.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <string>

TEST(Text, CodePage_RoundTrip) {
  if (GetACP() != 1252) {
    GTEST_SKIP() << "the expected bytes are those of code page 1252";
  }
  EXPECT_EQ(closed::FromCodePage("caf\xe9 \x80"), L"caf\x00e9 \x20ac");
  EXPECT_EQ(closed::ToCodePage(L"caf\x00e9 \x20ac"), "caf\xe9 \x80");
  EXPECT_EQ(closed::ToCodePage(L"\x8272"), "?") << "not in the code page";
}

TEST(Text, ToUtf8_OneToFourBytes) {
  EXPECT_EQ(closed::ToUtf8(L"a\x00e9\x8272\xd83d\xde00"), "a\xc3\xa9\xe8\x89\xb2\xf0\x9f\x98\x80");
}

TEST(Text, EmptyStaysEmptyAndZerosStay) {
  EXPECT_EQ(closed::FromCodePage(""), L"");
  EXPECT_EQ(closed::ToCodePage(L""), "");
  EXPECT_EQ(closed::ToUtf8(L""), "");
  EXPECT_EQ(closed::FromCodePage(std::string_view("a\0b", 3)), std::wstring(L"a\0b", 3));
  EXPECT_EQ(closed::ToCodePage(std::wstring_view(L"a\0b", 3)), std::string("a\0b", 3));
}
