#include "icc/ICCProfileOperation.h"

#include <windows.h>

#include <gtest/gtest.h>
#include <icm.h>
#include <lcms2.h>

#include <cmath>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "support/NotebookTest.h"
#include "support/UserProfile.h"
#include "virtualnotebook/Factory.h"

namespace {

using virtualnotebook::Bytes;

const std::string kTemp = "C:\\ProgramData\\Comms\\NxVelora\\User\\temp";
constexpr wchar_t kCreated[] =
    L"Create icc profile success(ICCProfileOperation::CreateAndSaveIccProfile)";

class ICCProfileOperationTest : public testsupport::NotebookTest {
 protected:
  ICCProfileOperationTest() { std::filesystem::create_directories(kTemp); }
  ~ICCProfileOperationTest() override {
    notebook.ClearFaults();
    std::filesystem::remove_all("C:\\ProgramData\\Comms\\NxVelora");
  }

  static UserDesignInfo Design(const std::string& id, const std::string& name) {
    UserDesignInfo info{};
    id.copy(info.id, sizeof info.id);
    name.copy(info.modeName, sizeof info.modeName);
    info.gamut = 1;
    info.whitePointX = 0.3127;
    info.whitePointY = 0.3290;
    info.gamma = 2.2;
    return info;
  }
  static std::string PathOf(const std::string& id) { return kTemp + "\\" + id + "_usr.icc"; }

  // A saved profile of this name.
  Bytes Make(const std::string& name) {
    UserDesignInfo info = Design("Made", name);
    EXPECT_EQ(icc.CreateAndSaveIccProfile(info), 0);
    notebook.ForgetRecords();
    return testsupport::ReadFileBytes(PathOf("Made"));
  }
  bool Check(const Bytes& file, const std::string& name) {
    testsupport::WriteFileBytes(PathOf("Checked"), file);
    notebook.ForgetRecords();
    return icc.ICCProfileSha256Check(PathOf("Checked"), name);
  }
  static uint32_t Be32(const Bytes& file, size_t offset) {
    return uint32_t{file.at(offset)} << 24 | uint32_t{file.at(offset + 1)} << 16 |
           uint32_t{file.at(offset + 2)} << 8 | file.at(offset + 3);
  }
  static testsupport::LogLine CheckLine(const wchar_t* text) {
    return {3, std::wstring(text) + L"(ICCProfileOperation::ICCProfileSha256Check)"};
  }
  const testsupport::LogLine idsDiffer = {3,
                                          L"IDs are different(ICCProfileOperation::IsfileMatchId)"};

  velora::ICCProfileOperation icc;
};

// --- Making ---

TEST_F(ICCProfileOperationTest, CreateAndSaveIccProfile) {
  UserDesignInfo info = Design("Mine%1", "Mine");
  EXPECT_EQ(icc.CreateAndSaveIccProfile(info), 0);
  EXPECT_EQ(std::string(info.iccPath), PathOf("Mine%1"));
  const std::string path = PathOf("Mine%1");
  EXPECT_LOG({1, kCreated}, {1, L"Save icc profile success, icc profile's path is " +
                                    std::wstring(path.begin(), path.end()) +
                                    L"(ICCProfileOperation::CreateAndSaveIccProfile)"});
  const Bytes file = testsupport::ReadFileBytes(path);
  const uint32_t size = Be32(file, 0);
  EXPECT_EQ(size, 552u) << "544 bytes and four letters";
  ASSERT_EQ(file.size(), size + 32);
  EXPECT_EQ(std::string(file.begin() + 4, file.begin() + 8), "MSFT");
  EXPECT_EQ(std::string(file.begin() + 80, file.begin() + 84), "MSFT");
  EXPECT_EQ(Be32(file, 128), 11u);
  EXPECT_EQ(std::string(file.begin() + 132, file.begin() + 136), "desc");
  EXPECT_EQ(Be32(file, 136), 264u);
  EXPECT_EQ(Be32(file, 140), 28u + 8u);
  EXPECT_EQ(Bytes(file.begin() + 292, file.begin() + 300), (Bytes{0, 'M', 0, 'i', 0, 'n', 0, 'e'}));
  EXPECT_EQ(Bytes(file.begin() + size, file.end()), virtualnotebook::Sha256({file.data(), size}));
  EXPECT_EQ(notebook.CountCalls("CoreKit::EnableFileUsersPriviledge"), 1u);
}

// Readers that did not write it: lcms2 and the system.
TEST_F(ICCProfileOperationTest, CreateAndSaveIccProfile_OtherReaders) {
  UserDesignInfo info = Design("Mine%1", "Mine");
  info.gamut = 2;
  info.gamma = 1.8;
  ASSERT_EQ(icc.CreateAndSaveIccProfile(info), 0);
  const Bytes file = testsupport::ReadFileBytes(PathOf("Mine%1"));
  void* profile = cmsOpenProfileFromMem(file.data(), static_cast<cmsUInt32Number>(file.size()));
  ASSERT_NE(profile, nullptr);
  EXPECT_EQ(cmsGetDeviceClass(profile), cmsSigDisplayClass);
  EXPECT_EQ(cmsGetColorSpace(profile), cmsSigRgbData);
  EXPECT_TRUE(cmsIsMatrixShaper(profile));
  wchar_t text[64] = {};
  cmsGetProfileInfo(profile, cmsInfoDescription, "en", "US", text, 64);
  EXPECT_STREQ(text, L"Mine");
  cmsGetProfileInfo(profile, cmsInfoCopyright, "en", "US", text, 64);
  EXPECT_STREQ(text, L"No copyright, use freely");
  const auto* curve = static_cast<const cmsToneCurve*>(cmsReadTag(profile, cmsSigRedTRCTag));
  ASSERT_NE(curve, nullptr);
  EXPECT_NEAR(cmsEstimateGamma(curve, 0.01), 1.8, 0.01);
  // Full green's chromaticity under the profile's D50: the sum of the colorants is D50.
  double sum[3] = {};
  for (auto tag : {cmsSigRedColorantTag, cmsSigGreenColorantTag, cmsSigBlueColorantTag}) {
    const auto* xyz = static_cast<const cmsCIEXYZ*>(cmsReadTag(profile, tag));
    sum[0] += xyz->X;
    sum[1] += xyz->Y;
    sum[2] += xyz->Z;
  }
  EXPECT_NEAR(sum[0], 0.9642, 1e-3);
  EXPECT_NEAR(sum[1], 1.0, 1e-3);
  EXPECT_NEAR(sum[2], 0.8249, 1e-3);
  cmsCloseProfile(profile);

  const std::string narrow = PathOf("Mine%1");
  std::wstring path(narrow.begin(), narrow.end());
  PROFILE record{};
  record.dwType = PROFILE_FILENAME;
  record.pProfileData = path.data();
  record.cbDataSize = static_cast<DWORD>(2 * path.size() + 2);
  HPROFILE handle = OpenColorProfileW(&record, PROFILE_READ, FILE_SHARE_READ, OPEN_EXISTING);
  ASSERT_NE(handle, nullptr);
  BOOL valid = FALSE;
  EXPECT_TRUE(IsColorProfileValid(handle, &valid));
  EXPECT_TRUE(valid);
  CloseColorProfile(handle);
}

TEST_F(ICCProfileOperationTest, CreateAndSaveIccProfile_UnknownGamut) {
  for (int gamut : {0, 7, -1}) {
    notebook.ForgetRecords();
    UserDesignInfo info = Design("Mine%1", "Mine");
    info.gamut = gamut;
    EXPECT_EQ(icc.CreateAndSaveIccProfile(info), 1);
    EXPECT_LOG({3, L"Can not find specified gamut(ICCProfileOperation::GamutAssign)"},
               {3, L"Assign value failed(ICCProfileOperation::CreateUsrDesignIccProfile)"},
               {3, L"Create icc profile failed(ICCProfileOperation::CreateAndSaveIccProfile)"});
    EXPECT_FALSE(std::filesystem::exists(PathOf("Mine%1")));
    EXPECT_EQ(std::string(info.iccPath), PathOf("Mine%1")) << "set all the same";
  }
}

TEST_F(ICCProfileOperationTest, CreateAndSaveIccProfile_LengthOfTheId) {
  for (size_t length : {51u, 52u, 53u}) {
    notebook.ForgetRecords();
    const std::string id(length, 'x');
    UserDesignInfo info = Design(id, "x");
    EXPECT_EQ(PathOf(id).size(), length + 48);
    if (length < 53) {
      EXPECT_EQ(icc.CreateAndSaveIccProfile(info), 0) << length;
      EXPECT_EQ(std::string(info.iccPath, strnlen(info.iccPath, 100)), PathOf(id));
      EXPECT_TRUE(std::filesystem::exists(PathOf(id)));
    } else {
      EXPECT_EQ(icc.CreateAndSaveIccProfile(info), 1);
      EXPECT_LOG(
          {3, L"copy icc profile path failed(ICCProfileOperation::CreateAndSaveIccProfile)"});
    }
  }
}

TEST_F(ICCProfileOperationTest, CreateAndSaveIccProfile_NoDirectory) {
  std::filesystem::remove_all(kTemp);
  UserDesignInfo info = Design("Mine%1", "Mine");
  EXPECT_EQ(icc.CreateAndSaveIccProfile(info), 1);
  EXPECT_LOG({1, kCreated},
             {3, L"Save icc profile failed(ICCProfileOperation::CreateAndSaveIccProfile)"});
}

TEST_F(ICCProfileOperationTest, CreateAndSaveIccProfile_CannotBePatched) {
  notebook.FailCall("CreateFileA", 1, static_cast<uint64_t>(-1), ERROR_SHARING_VIOLATION);
  UserDesignInfo info = Design("Mine%1", "Mine");
  EXPECT_EQ(icc.CreateAndSaveIccProfile(info), 1);
  const std::string path = PathOf("Mine%1");
  EXPECT_LOG(
      {1, kCreated},
      {3, L"Open iccfile failed, iccfileName is " + std::wstring(path.begin(), path.end()) +
              L"(ICCProfileOperation::ModifyICCProfile)"},
      {3, L"Modify icc profile header failed(ICCProfileOperation::CreateAndSaveIccProfile)"});
  EXPECT_TRUE(std::filesystem::exists(path)) << "what was written stays";
}

// Where the profile ends can't be told: the hash does not go over its head.
TEST_F(ICCProfileOperationTest, CreateAndSaveIccProfile_SizeUnknown) {
  notebook.FailCall("GetFileSizeEx", 1, FALSE, ERROR_GEN_FAILURE);
  UserDesignInfo info = Design("Mine%1", "Mine");
  EXPECT_EQ(icc.CreateAndSaveIccProfile(info), 1);
  EXPECT_LOG(
      {1, kCreated},
      {3, L"Can not get Sha256 Value(ICCProfileOperation::WriteSha256ValueToIccProfile)"},
      {3, L"Write Sha256Value failed(ICCProfileOperation::ModifyICCProfile)"},
      {3, L"Modify icc profile header failed(ICCProfileOperation::CreateAndSaveIccProfile)"});
  EXPECT_EQ(testsupport::ReadFileBytes(PathOf("Mine%1"))[0], 0) << "the size's first byte";
}

TEST_F(ICCProfileOperationTest, CreateAndSaveIccProfile_CannotBeOpenedToAll) {
  notebook.FailCall("CoreKit::EnableFileUsersPriviledge", 1, 1);
  UserDesignInfo info = Design("Mine%1", "Mine");
  EXPECT_EQ(icc.CreateAndSaveIccProfile(info), 1);
  EXPECT_LOG(
      {1, kCreated},
      {3, L"Modify icc profile privilegde failed(ICCProfileOperation::CreateAndSaveIccProfile)"});
}

// --- Checking ---

TEST_F(ICCProfileOperationTest, ICCProfileSha256Check_NamesUpTo46Letters) {
  for (size_t length : {1u, 2u, 3u, 45u, 46u}) {
    const std::string name(length, 'n');
    EXPECT_TRUE(Check(Make(name), name)) << length;
    EXPECT_TRUE(notebook.log.empty()) << length;
  }
  for (size_t length : {47u, 48u, 49u, 50u}) {
    const std::string name(length, 'n');
    EXPECT_FALSE(Check(Make(name), name)) << length;
    EXPECT_LOG(CheckLine(L"Icc file is abnormoal!"));
  }
}

TEST_F(ICCProfileOperationTest, ICCProfileSha256Check_NameBeyondAscii) {
  EXPECT_FALSE(Check(Make("Caf\xE9"), "Caf\xE9"));
  EXPECT_LOG(idsDiffer, CheckLine(L"File does not match id"));
}

TEST_F(ICCProfileOperationTest, ICCProfileSha256Check_OtherNames) {
  const Bytes file = Make("Mine");
  for (const char* name : {"mine", "Min", "", "Nine"}) {
    EXPECT_FALSE(Check(file, name)) << name;
    EXPECT_LOG(idsDiffer, CheckLine(L"File does not match id"));
  }
  EXPECT_TRUE(Check(file, "Mine and more")) << "only what is stored is compared";
}

// 50 letters make a tag of 128 bytes, whose size has its highest bit set.
TEST_F(ICCProfileOperationTest, ICCProfileSha256Check_TagSizeWithTheHighestBit) {
  Bytes file(600, 0);
  file[2] = 1;  // N = 256
  file[143] = 128;
  for (size_t i = 0; i < 50; ++i) file[293 + 2 * i] = 'n';
  EXPECT_FALSE(Check(file, std::string(50, 'n')));
  EXPECT_LOG(idsDiffer, CheckLine(L"File does not match id"));
}

TEST_F(ICCProfileOperationTest, ICCProfileSha256Check_SizeBeyondTheLimit) {
  const auto sized = [](uint32_t size) {
    Bytes file(2000, 0);
    file[2] = static_cast<uint8_t>(size >> 8);
    file[3] = static_cast<uint8_t>(size);
    file[143] = 28 + 2;
    file[293] = 'n';
    const Bytes hash = virtualnotebook::Sha256({file.data(), size});
    std::copy(hash.begin(), hash.end(), file.begin() + size);
    return file;
  };
  // 1000 is 0x3E8: its low byte counts as signed, and so is beyond the limit; 895 is 0x37F.
  EXPECT_TRUE(Check(sized(895), "n"));
  for (uint32_t size : {896u, 1000u, 1001u, 1024u + 1u}) {
    EXPECT_FALSE(Check(sized(size), "n")) << size;
    EXPECT_LOG(CheckLine(L"Icc file is abnormoal!"));
  }
}

// The profile that native tests and fuzzers check is this one, as far as the check looks.
TEST_F(ICCProfileOperationTest, ICCProfileSha256Check_TestProfileHasTheLayout) {
  for (const std::string name : {"m", "Mi", "Min", "Mine", "A name of some length"}) {
    const Bytes made = Make(name);
    const Bytes layout = testsupport::MakeUserProfile(name);
    ASSERT_EQ(layout.size(), made.size()) << name;
    const auto expectSame = [&](size_t first, size_t last) {
      EXPECT_TRUE(std::equal(made.begin() + static_cast<ptrdiff_t>(first),
                             made.begin() + static_cast<ptrdiff_t>(last),
                             layout.begin() + static_cast<ptrdiff_t>(first)))
          << name << " at " << first;
    };
    expectSame(0, 8);
    expectSame(80, 84);
    expectSame(128, 144);
    expectSame(264, 268);
    expectSame(292, 292 + 2 * name.size());
    EXPECT_TRUE(Check(layout, name));
  }
}

TEST_F(ICCProfileOperationTest, ICCProfileSha256Check_EveryFlippedBitIsRefused) {
  const Bytes good = Make("Mine");
  const auto refused = [&](Bytes file) {
    uint8_t head[velora::ICCProfileOperation::kProfileHead] = {};
    std::copy(file.begin(), file.end(), head);
    return !icc.CheckProfile(head, "Mine");
  };
  size_t count = 0;
  for (size_t i = 0; i < good.size(); ++i) {
    for (int bit = 0; bit < 8; ++bit) {
      Bytes damaged = good;
      damaged[i] ^= static_cast<uint8_t>(1 << bit);
      count += refused(damaged);
      notebook.ForgetRecords();
    }
  }
  EXPECT_EQ(count, good.size() * 8);
}

TEST_F(ICCProfileOperationTest, ICCProfileSha256Check_EveryCutIsRefused) {
  const Bytes good = Make("Mine");
  for (size_t length = 0; length < good.size(); ++length) {
    EXPECT_FALSE(Check(Bytes(good.begin(), good.begin() + static_cast<ptrdiff_t>(length)), "Mine"))
        << length;
  }
  Bytes longer = good;
  longer.push_back(7);
  EXPECT_TRUE(Check(longer, "Mine")) << "what stands behind the hash is not looked at";
}

TEST_F(ICCProfileOperationTest, ICCProfileSha256Check_ChangedByteAndHash) {
  Bytes file = Make("Mine");
  file[400] ^= 1;
  EXPECT_FALSE(Check(file, "Mine"));
  EXPECT_LOG(CheckLine(L"The sha256 values after and before are different"));
  file = Make("Mine");
  file.back() ^= 1;
  EXPECT_FALSE(Check(file, "Mine"));
  EXPECT_LOG(CheckLine(L"The sha256 values after and before are different"));
}

TEST_F(ICCProfileOperationTest, ICCProfileSha256Check_NoFile) {
  EXPECT_FALSE(icc.ICCProfileSha256Check(kTemp + "\\none.icc", "Mine"));
  EXPECT_LOG(
      CheckLine(L"Open iccfile failed, iccfileName is "
                L"C:\\ProgramData\\Comms\\NxVelora\\User\\temp\\none.icc"));
}

}  // namespace
