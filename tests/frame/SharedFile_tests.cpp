#include "frame/SharedFile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "support/NotebookTest.h"

namespace velora {
namespace {

using Bytes = std::vector<uint8_t>;

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

class SharedFileTest : public testsupport::NotebookTest {
 protected:
  // Opened by somebody else, past the import that the notebook watches.
  HANDLE OpenElsewhere(DWORD access, DWORD share) {
    return CreateFileW(widePath.c_str(), access, share, nullptr, OPEN_EXISTING, 0, nullptr);
  }

  Bytes Stored() { return directory.Read("data.bin"); }

  testsupport::ScratchDirectory directory;
  const std::string path = directory.Path("data.bin");
  const std::wstring widePath{path.begin(), path.end()};
};

TEST_F(SharedFileTest, OpenForReading) {
  EXPECT_FALSE(SharedFile::OpenForReading(path).IsOpen());
  directory.Write("data.bin", {1, 2, 3, 4, 5});
  const SharedFile file = SharedFile::OpenForReading(path);
  ASSERT_TRUE(file.IsOpen());
  uint64_t size = 0;
  EXPECT_TRUE(file.GetSize(size));
  EXPECT_EQ(size, 5u);
  Bytes bytes(3);
  EXPECT_EQ(file.ReadAt(1, bytes), 3u);
  EXPECT_EQ(bytes, (Bytes{2, 3, 4}));
  EXPECT_FALSE(file.WriteAt(0, Bytes{9}));
  EXPECT_EQ(Stored(), (Bytes{1, 2, 3, 4, 5}));
}

TEST_F(SharedFileTest, ReadAt_TheEnd) {
  directory.Write("data.bin", {1, 2, 3});
  const SharedFile file = SharedFile::OpenForReading(path);
  Bytes bytes(4, 0xbd);
  EXPECT_EQ(file.ReadAt(1, bytes), 2u);
  EXPECT_EQ(bytes, (Bytes{2, 3, 0xbd, 0xbd}));
  EXPECT_EQ(file.ReadAt(3, bytes), 0u);
  EXPECT_EQ(file.ReadAt(uint64_t{1} << 32, bytes), 0u) << "offsets are 64 bits";
  EXPECT_EQ(file.ReadAt(0, {}), 0u);
}

TEST_F(SharedFileTest, ReadAt_DoesNotMoveAPosition) {
  directory.Write("data.bin", {1, 2, 3});
  const SharedFile file = SharedFile::OpenForReading(path);
  Bytes bytes(2);
  file.ReadAt(0, bytes);
  EXPECT_EQ(file.ReadAt(0, bytes), 2u);
  EXPECT_EQ(bytes, (Bytes{1, 2}));
}

TEST_F(SharedFileTest, OpenForUpdating) {
  EXPECT_FALSE(SharedFile::OpenForUpdating(path).IsOpen());
  directory.Write("data.bin", {1, 2, 3});
  {
    const SharedFile file = SharedFile::OpenForUpdating(path);
    ASSERT_TRUE(file.IsOpen());
    EXPECT_TRUE(file.WriteAt(1, Bytes{8, 9, 10}));
    Bytes bytes(4);
    EXPECT_EQ(file.ReadAt(0, bytes), 4u);
    EXPECT_EQ(bytes, (Bytes{1, 8, 9, 10}));
  }
  EXPECT_EQ(Stored(), (Bytes{1, 8, 9, 10}));
}

TEST_F(SharedFileTest, Create_EmptiesAnExistingFile) {
  for (int round = 0; round < 2; ++round) {
    {
      const SharedFile file = SharedFile::Create(path);
      ASSERT_TRUE(file.IsOpen());
      uint64_t size = 1;
      EXPECT_TRUE(file.GetSize(size));
      EXPECT_EQ(size, 0u);
      EXPECT_TRUE(file.WriteAt(0, Bytes{1, 2}));
      EXPECT_TRUE(file.GetSize(size));
      EXPECT_EQ(size, 2u);
    }
    EXPECT_EQ(Stored(), (Bytes{1, 2}));
  }
}

TEST_F(SharedFileTest, Create_InADirectoryThatIsNotThere) {
  EXPECT_FALSE(SharedFile::Create(directory.Path("absent\\data.bin")).IsOpen());
}

TEST_F(SharedFileTest, OpenForAppending_MakesAndKeeps) {
  for (const uint8_t round : Bytes{1, 2}) {
    const SharedFile file = SharedFile::OpenForAppending(path);
    ASSERT_TRUE(file.IsOpen());
    EXPECT_TRUE(file.Append(Bytes{round, round}));
    EXPECT_TRUE(file.Append(Bytes{0}));
  }
  EXPECT_EQ(Stored(), (Bytes{1, 1, 0, 2, 2, 0}));
}

TEST_F(SharedFileTest, Append_BehindWhatOthersWrote) {
  const SharedFile file = SharedFile::OpenForAppending(path);
  EXPECT_TRUE(file.Append(Bytes{1}));
  {
    const SharedFile other = SharedFile::OpenForAppending(path);
    EXPECT_TRUE(other.Append(Bytes{2, 3}));
  }
  EXPECT_TRUE(file.Append(Bytes{4}));
  EXPECT_EQ(Stored(), (Bytes{1, 2, 3, 4}));
}

// Another program has the file open and shares it fully: each way of opening works beside it.
TEST_F(SharedFileTest, OpensBesideAHandleThatSharesFully) {
  using Opener = SharedFile (*)(const std::string&);
  for (const Opener open : {&SharedFile::OpenForReading, &SharedFile::OpenForUpdating,
                            &SharedFile::Create, &SharedFile::OpenForAppending}) {
    directory.Write("data.bin", {1, 2, 3});
    const HANDLE other = OpenElsewhere(GENERIC_READ | GENERIC_WRITE | DELETE, kShareAll);
    ASSERT_NE(other, INVALID_HANDLE_VALUE);
    EXPECT_TRUE(open(path).IsOpen());
    CloseHandle(other);
  }
}

TEST_F(SharedFileTest, DoesNotOpenBesideAHandleThatSharesNothing) {
  directory.Write("data.bin", {1});
  const HANDLE other = OpenElsewhere(GENERIC_READ, 0);
  ASSERT_NE(other, INVALID_HANDLE_VALUE);
  EXPECT_FALSE(SharedFile::OpenForReading(path).IsOpen());
  CloseHandle(other);
}

TEST_F(SharedFileTest, OthersMayReadWriteAndDelete) {
  directory.Write("data.bin", {1});
  const SharedFile file = SharedFile::OpenForReading(path);
  for (const DWORD access : {DWORD{GENERIC_READ}, DWORD{GENERIC_WRITE}, DWORD{DELETE}}) {
    const HANDLE other = OpenElsewhere(access, kShareAll);
    EXPECT_NE(other, INVALID_HANDLE_VALUE) << access;
    CloseHandle(other);
  }
  EXPECT_TRUE(DeleteFileW(widePath.c_str()));
}

TEST_F(SharedFileTest, IsClosedOnceWithTheObject) {
  directory.Write("data.bin", {1});
  const size_t before = notebook.CountCalls("CloseHandle");
  {
    SharedFile file = SharedFile::OpenForReading(path);
    const SharedFile moved = std::move(file);
    EXPECT_TRUE(moved.IsOpen());
  }
  EXPECT_EQ(notebook.CountCalls("CloseHandle"), before + 1);
  { SharedFile::OpenForReading(directory.Path("absent.bin")); }
  EXPECT_EQ(notebook.CountCalls("CloseHandle"), before + 1) << "there was nothing to close";
}

TEST_F(SharedFileTest, SystemFailures) {
  directory.Write("data.bin", {1, 2, 3});
  const SharedFile file = SharedFile::OpenForUpdating(path);
  uint64_t size = 42;
  notebook.FailCall("GetFileSizeEx", 1, FALSE, ERROR_GEN_FAILURE);
  EXPECT_FALSE(file.GetSize(size));
  EXPECT_EQ(size, 42u);
  Bytes bytes(3, 0xbd);
  notebook.FailCall("ReadFile", 1, FALSE, ERROR_GEN_FAILURE);
  EXPECT_EQ(file.ReadAt(0, bytes), 0u);
  notebook.FailCall("WriteFile", 1, FALSE, ERROR_DISK_FULL);
  EXPECT_FALSE(file.WriteAt(0, bytes));
  // A success that reports fewer bytes than it was given.
  notebook.FailCall("WriteFile", 1, TRUE);
  EXPECT_FALSE(file.WriteAt(0, bytes));
  notebook.FailCall("GetFileSizeEx", 1, FALSE, ERROR_GEN_FAILURE);
  EXPECT_FALSE(file.Append(bytes));
  EXPECT_EQ(Stored(), (Bytes{1, 2, 3}));
}

}  // namespace
}  // namespace velora
