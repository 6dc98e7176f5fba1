#include "icc/IccFileCheck.h"

#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <fstream>

#include "support/FailingNew.h"
#include "support/NotebookTest.h"

using velora::IccFileCheck;

namespace {

using Bytes = std::vector<uint8_t>;
using Hash = std::array<uint8_t, 32>;

// FIPS 180-2, appendix B.1: the digest of the three bytes "abc".
constexpr Hash kHashOfAbc = {0xba, 0x78, 0x16, 0xbf, 0x8f, 0x01, 0xcf, 0xea, 0x41, 0x41, 0x40,
                             0xde, 0x5d, 0xae, 0x22, 0x23, 0xb0, 0x03, 0x61, 0xa3, 0x96, 0x17,
                             0x7a, 0x9c, 0xb4, 0x10, 0xff, 0x61, 0xf2, 0x00, 0x15, 0xad};
const Bytes kAbc = {'a', 'b', 'c'};
const Hash kOtherHash = [] {
  Hash hash;
  hash.fill(0x5A);
  return hash;
}();

// A record of a digest file; the bytes that nobody reads are not zero.
Bytes Record(const std::string& name, const Hash& hash) {
  Bytes record(102, 0);
  std::copy_n(name.begin(), std::min<size_t>(name.size(), 63), record.begin());
  std::fill(record.begin() + 63, record.begin() + 67, uint8_t{0xEE});
  std::copy(hash.begin(), hash.end(), record.begin() + 67);
  std::fill(record.begin() + 99, record.end(), uint8_t{0xEE});
  return record;
}

Bytes Join(const std::vector<Bytes>& parts) {
  Bytes all;
  for (const Bytes& part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}

class IccFileCheckTest : public testsupport::NotebookTest {
 protected:
  // A profile "P3.icc" of "abc" and a digest file of these records.
  bool Compare(const std::vector<Bytes>& records) {
    WriteFile(profile, kAbc);
    WriteFile(digest, Join(records));
    return check.CompareSha256(profile, digest);
  }

  // A file of this length that takes no room on the disk.
  void WriteSparse(const std::string& path, uint64_t length) {
    WriteFile(path, {});
    std::filesystem::resize_file(path, length);
  }

  void WriteFile(const std::string& path, const Bytes& bytes) {
    testsupport::WriteFileBytes(path, bytes);
  }
  static std::wstring Wide(const std::string& ascii) { return {ascii.begin(), ascii.end()}; }

  testsupport::ScratchDirectory directory;
  const std::string profile = directory.Path("P3.icc");
  const std::string digest = directory.Path("digest.bin");
  IccFileCheck check;
};

// --- CompareSha256 ---

TEST_F(IccFileCheckTest, CompareSha256_MatchingRecord) {
  EXPECT_TRUE(Compare({Record("P3.icc", kHashOfAbc)}));
  EXPECT_LOG();
}

TEST_F(IccFileCheckTest, CompareSha256_LaterRecord) {
  EXPECT_TRUE(Compare({Record("sRGB.icc", kOtherHash), Record("P3.icc", kHashOfAbc)}));
}

TEST_F(IccFileCheckTest, CompareSha256_ChangedProfile) {
  EXPECT_TRUE(Compare({Record("P3.icc", kHashOfAbc)}));
  WriteFile(profile, Bytes{'a', 'b', 'd'});
  EXPECT_FALSE(check.CompareSha256(profile, digest));
  WriteFile(profile, Bytes{'a', 'b', 'c', 0});
  EXPECT_FALSE(check.CompareSha256(profile, digest));
  EXPECT_LOG();
}

TEST_F(IccFileCheckTest, CompareSha256_EachHashByteCounts) {
  for (size_t i = 0; i < 32; ++i) {
    Hash hash = kHashOfAbc;
    hash[i] ^= 1;
    EXPECT_FALSE(Compare({Record("P3.icc", hash)})) << i;
  }
}

TEST_F(IccFileCheckTest, CompareSha256_EmptyStrings) {
  const testsupport::LogLine line{3, L"input string is empty(IccFileCheck::CompareSha256)"};
  EXPECT_FALSE(check.CompareSha256("", digest));
  EXPECT_FALSE(check.CompareSha256(profile, ""));
  EXPECT_LOG(line, line);
}

TEST_F(IccFileCheckTest, CompareSha256_NoRecord) {
  EXPECT_FALSE(Compare({Record("sRGB.icc", kHashOfAbc)}));
  EXPECT_LOG();
}

TEST_F(IccFileCheckTest, CompareSha256_EmptyDigestFile) {
  EXPECT_FALSE(Compare({}));
  EXPECT_LOG();
}

TEST_F(IccFileCheckTest, CompareSha256_MissingDigestFile) {
  WriteFile(profile, kAbc);
  EXPECT_FALSE(check.CompareSha256(profile, digest));
  EXPECT_LOG({3, L"Open digestFile Failed!digestFileName:" + Wide(digest) +
                     L"(IccFileCheck::GetSha256DataFromDigestFile)"});
}

TEST_F(IccFileCheckTest, CompareSha256_MissingProfile) {
  WriteFile(digest, Record("P3.icc", kHashOfAbc));
  EXPECT_FALSE(check.CompareSha256(profile, digest));
  EXPECT_LOG(
      {3, L"Open iccFile failed!fileName:" + Wide(profile) + L"(IccFileCheck::GetSha256Value)"},
      {3, L"GetSha256Value failed.(IccFileCheck::CompareSha256)"});
}

TEST_F(IccFileCheckTest, CompareSha256_ProfileOfLengthZero) {
  WriteFile(profile, {});
  WriteFile(digest, Record("P3.icc", kHashOfAbc));
  EXPECT_FALSE(check.CompareSha256(profile, digest));
  EXPECT_LOG({3, L"GetSha256Value failed.(IccFileCheck::CompareSha256)"});
}

TEST_F(IccFileCheckTest, CompareSha256_FirstOfTwoRecordsCounts) {
  EXPECT_TRUE(Compare({Record("P3.icc", kHashOfAbc), Record("P3.icc", kOtherHash)}));
  EXPECT_FALSE(Compare({Record("P3.icc", kOtherHash), Record("P3.icc", kHashOfAbc)}));
}

TEST_F(IccFileCheckTest, CompareSha256_RecordWhoseNameContainsTheAskedOne) {
  EXPECT_TRUE(Compare({Record("old-P3.icc.bak", kHashOfAbc)}));
  EXPECT_FALSE(Compare({Record("old-P3.icc", kOtherHash), Record("P3.icc", kHashOfAbc)}));
}

TEST_F(IccFileCheckTest, CompareSha256_NameIsCaseSensitive) {
  EXPECT_FALSE(Compare({Record("p3.ICC", kHashOfAbc)}));
}

TEST_F(IccFileCheckTest, CompareSha256_TrailingPieceIsNoRecord) {
  Bytes piece = Record("P3.icc", kHashOfAbc);
  piece.pop_back();
  EXPECT_FALSE(Compare({piece}));
  EXPECT_FALSE(Compare({Record("sRGB.icc", kOtherHash), piece}));
  EXPECT_TRUE(Compare({Record("P3.icc", kHashOfAbc), piece}));
}

// The letters of the name and the hash count. The rest does not: what stands behind the name's end,
// the bytes that nobody reads.
TEST_F(IccFileCheckTest, CompareSha256_EveryFlippedBitOfARecord) {
  Bytes record = Record("P3.icc", kHashOfAbc);
  size_t refused = 0;
  for (uint8_t& byte : record) {
    for (int bit = 0; bit < 8; ++bit) {
      byte ^= static_cast<uint8_t>(1 << bit);
      refused += Compare({record}) ? 0U : 1U;
      byte ^= static_cast<uint8_t>(1 << bit);
    }
  }
  EXPECT_EQ(refused, 8 * (6 + 32)) << "of 816";
}

TEST_F(IccFileCheckTest, CompareSha256_EveryCutOfARecord) {
  const Bytes record = Record("P3.icc", kHashOfAbc);
  for (size_t length = 0; length < record.size(); ++length) {
    EXPECT_FALSE(Compare({{record.begin(), record.begin() + static_cast<ptrdiff_t>(length)}}))
        << length;
  }
}

TEST_F(IccFileCheckTest, CompareSha256_NameOf62And63Characters) {
  for (const size_t length : {62u, 63u}) {
    const std::string name = std::string(length - 4, 'n') + ".icc";
    const std::string path = directory.Path(name);
    WriteFile(path, kAbc);
    WriteFile(digest, Record(name, kHashOfAbc));
    EXPECT_EQ(check.CompareSha256(path, digest), length == 62) << length;
  }
}

TEST_F(IccFileCheckTest, CompareSha256_OpenElsewhere) {
  WriteFile(digest, Record("P3.icc", kHashOfAbc));
  WriteFile(profile, kAbc);
  std::fstream profileInUse(profile, std::ios::binary | std::ios::in | std::ios::out);
  std::fstream digestInUse(digest, std::ios::binary | std::ios::in | std::ios::out);
  EXPECT_TRUE(check.CompareSha256(profile, digest));
}

// --- GetSha256Value ---

TEST_F(IccFileCheckTest, GetSha256Value_OfTheWholeFile) {
  WriteFile(profile, kAbc);
  Hash hash{};
  EXPECT_TRUE(check.GetSha256Value(profile, hash.data(), hash.size()));
  EXPECT_EQ(hash, kHashOfAbc);
}

TEST_F(IccFileCheckTest, GetSha256Value_BadOutput) {
  WriteFile(profile, kAbc);
  Hash hash{};
  EXPECT_FALSE(check.GetSha256Value(profile, nullptr, 32));
  EXPECT_FALSE(check.GetSha256Value(profile, hash.data(), 31));
  EXPECT_EQ(hash, Hash{});
  EXPECT_LOG();
}

TEST_F(IccFileCheckTest, GetSha256Value_BadPath) {
  Hash hash{};
  EXPECT_FALSE(check.GetSha256Value("", hash.data(), hash.size()));
  EXPECT_EQ(hash, Hash{});
  EXPECT_LOG({3, L"IccFilePath error(IccFileCheck::GetSha256Value)"});
}

TEST_F(IccFileCheckTest, GetSha256Value_PathIsCanonicalised) {
  WriteFile(profile, kAbc);
  Hash hash{};
  EXPECT_TRUE(check.GetSha256Value(directory.Path("absent\\..\\P3.icc"), hash.data(), hash.size()));
  EXPECT_EQ(hash, kHashOfAbc);
}

TEST_F(IccFileCheckTest, GetSha256Value_FileOver4GB) {
  WriteSparse(profile, 0x100000000);
  Hash hash{};
  EXPECT_FALSE(check.GetSha256Value(profile, hash.data(), hash.size()));
  EXPECT_EQ(hash, Hash{});
  EXPECT_LOG();
  EXPECT_EQ(notebook.CountCalls("ReadFile"), 0u);
}

TEST_F(IccFileCheckTest, GetSha256Value_NoMemory) {
  WriteFile(profile, kAbc);
  Hash hash{};
  {
    const testsupport::FailingNew noMemory(1);
    EXPECT_FALSE(check.GetSha256Value(profile, hash.data(), hash.size()));
    EXPECT_TRUE(noMemory.HasFailed());
  }
  EXPECT_LOG({3, L"pData is nullptr!(IccFileCheck::GetSha256Value)"});
  EXPECT_EQ(notebook.CountCalls("CreateFileA"), notebook.CountCalls("CloseHandle"));
}

TEST_F(IccFileCheckTest, GetSha256Value_FileThatCannotBeRead) {
  WriteFile(profile, kAbc);
  Hash hash{};
  notebook.FailCall("ReadFile", 1, FALSE, ERROR_READ_FAULT);
  EXPECT_FALSE(check.GetSha256Value(profile, hash.data(), hash.size()));
  EXPECT_EQ(hash, Hash{});
  EXPECT_LOG();
}

// --- GetSha256DataFromDigestFile ---

TEST_F(IccFileCheckTest, GetSha256DataFromDigestFile_CopiesTheRecordsHash) {
  WriteFile(digest, Record("P3.icc", kHashOfAbc));
  Hash hash{};
  EXPECT_EQ(check.GetSha256DataFromDigestFile(hash.data(), 32, digest, "X:\\dir\\P3.icc"), 0);
  EXPECT_EQ(hash, kHashOfAbc);
}

TEST_F(IccFileCheckTest, GetSha256DataFromDigestFile_WithoutRecordLeavesTheHash) {
  WriteFile(digest, Record("sRGB.icc", kHashOfAbc));
  Hash hash = kOtherHash;
  EXPECT_EQ(check.GetSha256DataFromDigestFile(hash.data(), 32, digest, "P3.icc"), 0);
  EXPECT_EQ(hash, kOtherHash);
}

TEST_F(IccFileCheckTest, GetSha256DataFromDigestFile_BadArguments) {
  WriteFile(digest, Record("P3.icc", kHashOfAbc));
  Hash hash = kOtherHash;
  EXPECT_EQ(check.GetSha256DataFromDigestFile(nullptr, 32, digest, "P3.icc"), -1);
  EXPECT_EQ(check.GetSha256DataFromDigestFile(hash.data(), 31, digest, "P3.icc"), -1);
  EXPECT_EQ(check.GetSha256DataFromDigestFile(hash.data(), 32, "", "P3.icc"), -1);
  EXPECT_EQ(check.GetSha256DataFromDigestFile(hash.data(), 32, digest, ""), -1);
  EXPECT_EQ(hash, kOtherHash);
  EXPECT_LOG();
}

TEST_F(IccFileCheckTest, GetSha256DataFromDigestFile_MissingFile) {
  Hash hash = kOtherHash;
  EXPECT_EQ(check.GetSha256DataFromDigestFile(hash.data(), 32, digest, "P3.icc"), -1);
  EXPECT_EQ(hash, kOtherHash);
  EXPECT_LOG({3, L"Open digestFile Failed!digestFileName:" + Wide(digest) +
                     L"(IccFileCheck::GetSha256DataFromDigestFile)"});
}

TEST_F(IccFileCheckTest, GetSha256DataFromDigestFile_PathThatEndsInABackslash) {
  // The name is empty, and an empty name is part of every record's.
  WriteFile(digest, Record("sRGB.icc", kHashOfAbc));
  Hash hash{};
  EXPECT_EQ(check.GetSha256DataFromDigestFile(hash.data(), 32, digest, "X:\\"), 0);
  EXPECT_EQ(hash, kHashOfAbc);
}

// --- GetFileNameFromPath ---

TEST_F(IccFileCheckTest, GetFileNameFromPath) {
  const struct {
    const char* path;
    const char* name;
  } kRows[] = {
      {"C:\\a\\P3.icc", "P3.icc"},        // behind the last backslash
      {"C:/a/P3.icc", "P3.icc"},          // behind the last slash
      {"C:\\a/b\\c/P3.icc", "c/P3.icc"},  // a backslash comes before any slash
      {"P3.icc", "P3.icc"},
      {"C:\\a\\", ""},
  };
  for (const auto& row : kRows) {
    std::string name = "before";
    EXPECT_EQ(check.GetFileNameFromPath(row.path, name), 0) << row.path;
    EXPECT_EQ(name, row.name);
  }
}

TEST_F(IccFileCheckTest, GetFileNameFromPath_EmptyPath) {
  std::string name = "before";
  EXPECT_EQ(check.GetFileNameFromPath("", name), -1);
  EXPECT_EQ(name, "before");
}

}  // namespace
