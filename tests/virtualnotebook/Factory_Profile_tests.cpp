#include "virtualnotebook/Factory.h"

#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <icm.h>

namespace virtualnotebook {
namespace {

using testing::Each;
using testing::ElementsAre;

constexpr int kGamuts[] = {kSrgbLut, kP3Lut, kAdobeLut};

Bytes Piece(const Bytes& bytes, size_t offset, size_t size) {
  const auto from = bytes.begin() + static_cast<ptrdiff_t>(offset);
  return Bytes(from, from + static_cast<ptrdiff_t>(size));
}

bool SystemAccepts(Bytes content) {
  PROFILE profile = {PROFILE_MEMBUFFER, content.data(), static_cast<DWORD>(content.size())};
  const HPROFILE handle = OpenColorProfileW(&profile, PROFILE_READ, FILE_SHARE_READ, OPEN_EXISTING);
  if (handle == nullptr) return false;
  BOOL valid = FALSE;
  const BOOL asked = IsColorProfileValid(handle, &valid);
  CloseColorProfile(handle);
  return asked && valid;
}

TEST(Factory, MakePresetProfile_TheColourSystemTakesIt) {
  for (int gamut : kGamuts) {
    SCOPED_TRACE(gamut);
    const Bytes profile = MakePresetProfile(gamut);
    EXPECT_TRUE(SystemAccepts(profile));
    EXPECT_EQ(Bytes({'a', 'c', 's', 'p'}), Piece(profile, 36, 4));
    EXPECT_EQ(profile, MakePresetProfile(gamut));
  }
  EXPECT_NE(MakePresetProfile(kSrgbLut), MakePresetProfile(kP3Lut));
  EXPECT_NE(MakePresetProfile(kSrgbLut), MakePresetProfile(kAdobeLut));
}

TEST(Factory, MakePresetProfile_KnowsThreeGamuts) {
  EXPECT_EQ("NVX-sRGB.icc", PresetProfileName(1));
  EXPECT_EQ("NVX-P3.icc", PresetProfileName(2));
  EXPECT_EQ("NVX-Adobe.icc", PresetProfileName(4));
  EXPECT_THROW(MakePresetProfile(7), std::invalid_argument);
}

TEST(Factory, RealPresetProfile_TheColourSystemTakesIt) {
  EXPECT_TRUE(RealPresetProfile(kP3Lut).empty());
  const Bytes srgb = RealPresetProfile(kSrgbLut), adobe = RealPresetProfile(kAdobeLut);
  if (srgb.empty() || adobe.empty()) GTEST_SKIP() << "icc-profiles-free is not installed";
  EXPECT_TRUE(SystemAccepts(srgb));
  EXPECT_TRUE(SystemAccepts(adobe));
}

TEST(Factory, MakeDigestFile_OneRecordAName) {
  const Bytes a = {'a', 'b', 'c'}, b = {'d'};
  const Bytes file = MakeDigestFile({{"b.icc", b}, {"a.icc", a}});
  ASSERT_EQ(204u, file.size());
  EXPECT_THAT(Piece(file, 0, 6), ElementsAre('a', '.', 'i', 'c', 'c', 0));
  EXPECT_THAT(Piece(file, 5, 62), Each(0));
  EXPECT_EQ(Sha256(a), Piece(file, 67, 32));
  EXPECT_THAT(Piece(file, 99, 3), Each(0));
  EXPECT_EQ('b', file[102]);
  EXPECT_EQ(Sha256(b), Piece(file, 102 + 67, 32));
}

TEST(Factory, MakeDigestFile_NamesOfUpTo62Characters) {
  EXPECT_NO_THROW(MakeDigestFile({{std::string(62, 'n'), {}}}));
  EXPECT_THROW(MakeDigestFile({{std::string(63, 'n'), {}}}), std::invalid_argument);
}

}  // namespace
}  // namespace virtualnotebook
