#include "veloractl/inspect/CubeText.h"

#include <gtest/gtest.h>

#include "veloractl/inspect/InspectTest.h"

namespace veloractl {
namespace {

using namespace inspecttest;
using namespace virtualnotebook;

std::string LineOf(const std::string& text, size_t number) {
  size_t start = 0;
  for (size_t i = 0; i < number; ++i) {
    start = text.find('\n', start) + 1;
  }
  return text.substr(start, text.find('\n', start) - start);
}

constexpr size_t kHead = 4;  // lines ahead of the entries

DecodedBlock Decoded(const Bytes& block) { return DecodeBlock(block).value(); }

// Why a text is refused; empty: it is taken.
std::string Refusal(const std::string& text) {
  try {
    ParseCube(text);
    return "";
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.Status(), kBadFile);
    return failure.what();
  }
}

std::string Identity() { return CubeOf(Decoded(BlockOf({}, kBaseLut)), "identity"); }

TEST(CubeOf, RedIsFastest) {
  std::vector<double> values(3 * 4913, 0);
  values[3 * 289] = 1023;    // red 1, green 0, blue 0
  values[3 * 17 + 1] = 512;  // red 0, green 1, blue 0
  values[3 * 1 + 2] = 1;     // red 0, green 0, blue 1
  const std::string text = CubeOf({false, values}, "t");
  EXPECT_EQ(LineOf(text, 0), "TITLE \"t\"");
  EXPECT_EQ(LineOf(text, 1), "LUT_3D_SIZE 17");
  EXPECT_EQ(LineOf(text, kHead + 1), "1.0000000 0.0000000 0.0000000");
  EXPECT_EQ(LineOf(text, kHead + 17), "0.0000000 0.5004888 0.0000000");
  EXPECT_EQ(LineOf(text, kHead + 289), "0.0000000 0.0000000 0.0009775");
}

TEST(CubeOf, TheTitleIsOneLine) {
  EXPECT_EQ(LineOf(CubeOf({true, std::vector<double>(3072, 0)}, "a\"b\nc\xC3"), 0),
            "TITLE \"a_b_c_\"");
}

TEST(ParseCube, EveryValueComesBack) {
  for (const uint8_t type : {kBaseLut, kSrgbLut, kP3Lut, kAdobeLut, kEbookLut, kGammaLut}) {
    const DecodedBlock lut = Decoded(BlockOf({}, type));
    const CubeLut back = ParseCube(CubeOf(lut, ""));
    EXPECT_EQ(back.lut.values, lut.values) << int{type};
    EXPECT_EQ(back.lut.isGamma, type == kGammaLut);
    EXPECT_EQ(back.rounded, 0u);
  }
  // All levels that there are.
  DecodedBlock every{false, std::vector<double>(3 * 4913)};
  for (size_t i = 0; i < every.values.size(); ++i) {
    every.values[i] = static_cast<double>(i % 1024);
  }
  EXPECT_EQ(ParseCube(CubeOf(every, "")).lut.values, every.values);
  DecodedBlock gamma{true, std::vector<double>(3072)};
  for (size_t i = 0; i < gamma.values.size(); ++i) {
    gamma.values[i] = static_cast<double>(4 * i % 4096 + i / 1024);
  }
  EXPECT_EQ(ParseCube(CubeOf(gamma, "")).lut.values, gamma.values);
}

TEST(ParseCube, CommentsBlanksAndLineEnds) {
  std::string text = Identity();
  const DecodedBlock lut = ParseCube(text).lut;
  text.insert(0, "# made by a program\r\n\r\n  \t\n");
  for (size_t at = 0; (at = text.find('\n', at)) != std::string::npos; at += 2) {
    text.insert(at, "\r");
  }
  EXPECT_EQ(ParseCube(text).lut.values, lut.values);
  EXPECT_EQ(ParseCube(text).title, "identity");
  text.pop_back();  // without the last line's end
  EXPECT_EQ(ParseCube(text).lut.values, lut.values);
}

TEST(ParseCube, RoundsToTheNearestAndTellsIt) {
  std::string text = Identity();
  const std::string first = "0.0000000 0.0000000 0.0000000\n";
  ASSERT_EQ(text.find(first), text.find("\n0.") + 1);
  text.replace(text.find(first), first.size(), "0.0014 1e-9 .25\n");  // 1.43, 0, 255.75 of 1023
  const CubeLut cube = ParseCube(text);
  EXPECT_EQ(cube.lut.values[0], 1);
  EXPECT_EQ(cube.lut.values[1], 0);
  EXPECT_EQ(cube.lut.values[2], 256);
  EXPECT_EQ(cube.rounded, 2u);
  EXPECT_NEAR(cube.mostRounded, 0.4322, 1e-4);
}

TEST(ParseCube, OtherSizes) {
  std::string text = Identity();
  text.replace(text.find("17"), 2, "33");
  EXPECT_EQ(Refusal(text).substr(0, 24), "line 2: the size is 33, ");
  EXPECT_NE(Refusal("LUT_1D_SIZE 4096\n").find("1024 (LUT_1D_SIZE)"), std::string::npos);
  EXPECT_NE(Refusal("LUT_3D_SIZE\n").find("missing"), std::string::npos);
  EXPECT_NE(Refusal("LUT_3D_SIZE x\n").find("the size is x"), std::string::npos);
}

TEST(ParseCube, OtherDomains) {
  std::string text = Identity();
  text.replace(text.find("DOMAIN_MAX 1 1 1"), 16, "DOMAIN_MAX 1 2 1");
  EXPECT_EQ(Refusal(text), "line 4: only a LUT from 0 to 1 can be converted");
  EXPECT_EQ(Refusal("LUT_3D_INPUT_RANGE 0 4\n"), "line 1: only a LUT from 0 to 1 can be converted");
  EXPECT_EQ(Refusal("DOMAIN_MIN 0 0\n"), "line 1: only a LUT from 0 to 1 can be converted");
}

TEST(ParseCube, BrokenTexts) {
  const std::string good = Identity();
  EXPECT_EQ(Refusal(""), "the text has neither LUT_3D_SIZE nor LUT_1D_SIZE: it is no .cube");
  EXPECT_EQ(Refusal("0 0 0\n"), "line 1: \"0\" ahead of the size");
  EXPECT_EQ(Refusal(good + "0 0 0\n"), "line 4918: more entries than 4913");
  EXPECT_EQ(Refusal(good.substr(0, good.rfind('\n', good.size() - 2) + 1)),
            "the text has 4912 entries of 4913");
  EXPECT_EQ(Refusal("LUT_1D_SIZE 1024\n0 0\n"), "line 2: an entry is three numbers");
  EXPECT_EQ(Refusal("LUT_1D_SIZE 1024\n0 x 0\n"), "line 2: \"x\" is no number");
  EXPECT_EQ(Refusal("LUT_1D_SIZE 1024\n0 nan 0\n"), "line 2: \"nan\" is no number");
  EXPECT_EQ(Refusal("LUT_1D_SIZE 1024\n0 inf 0\n"), "line 2: \"inf\" is no number");
  EXPECT_EQ(Refusal("LUT_1D_SIZE 1024\n0 1.5 0\n"), "line 2: 1.5 is not within 0 to 1");
  EXPECT_EQ(Refusal("LUT_1D_SIZE 1024\n0 -0.1 0\n"), "line 2: -0.1 is not within 0 to 1");
  EXPECT_EQ(Refusal("LUT_1D_SIZE 1024\nLUT_3D_SIZE 17\n"),
            "line 2: a second size: only one LUT in a file can be converted");
  EXPECT_EQ(Refusal("LUT_1D_SIZE 1024\n\x01\xFF 0 0\n"), "line 2: \"\\x01\\xFF\" is no number");
}

TEST(ParseCube, EveryBeginning) {
  const std::string text = CubeOf(Decoded(BlockOf({}, kGammaLut)), "gamma");
  // The last byte is a line's end, and without the last digits a number is another number.
  const size_t last = text.rfind(' ') + 2;
  for (size_t size = 0; size < last; size = NextLength(size, last)) {
    ASSERT_NE(Refusal(text.substr(0, size)), "") << size;
  }
}

TEST(MakeLutFile, WithAnothersHeaderTheSameBytes) {
  for (const uint8_t type : {kP3Lut, kGammaLut}) {
    const Bytes block = BlockOf({}, type);
    EXPECT_EQ(MakeLutFile(Decoded(block), block), block);
  }
}

TEST(MakeLutFile, AUsersLut) {
  for (const uint8_t type : {kSrgbLut, kGammaLut}) {
    const Bytes user = MakeUserLutFile({}, type);
    EXPECT_EQ(MakeLutFile(Decoded(user), {}), user);
  }
}

}  // namespace
}  // namespace veloractl
