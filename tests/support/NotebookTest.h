// What tests on the virtual notebook share.
#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

#include "virtualnotebook/Notebook.h"

namespace virtualnotebook {

void PrintTo(const LogLine& line, std::ostream* out);
void PrintTo(const Call& call, std::ostream* out);

}  // namespace virtualnotebook

namespace testsupport {

using virtualnotebook::LogLine;

std::string Utf8(const std::wstring& text);

// A notebook beneath the test program itself, new for each test: a machine without monitors,
// firmware table and profiles. virtualnotebook/Machine.h has a ready one.
class NotebookTest : public ::testing::Test {
 protected:
  virtualnotebook::Notebook notebook{GetModuleHandleW(nullptr)};
};

// The line stands in the log, exactly so. A failure shows the whole log.
::testing::AssertionResult Logged(const virtualnotebook::Notebook& notebook, int level,
                                  const std::wstring& text);

// No line of the log contains the text.
::testing::AssertionResult NothingLogged(const virtualnotebook::Notebook& notebook,
                                         const std::wstring& part);

// The log is these lines and no others, in this order.
::testing::AssertionResult LogIs(const virtualnotebook::Notebook& notebook,
                                 const std::vector<LogLine>& lines);

// The calls of these functions, by name, in their order: others are left out.
std::vector<std::string> CallsOf(const virtualnotebook::Notebook& notebook,
                                 const std::vector<std::string>& functions);

// Looks again and again for as long as the predicate is false; what it gave last. The waiting
// leaves no record.
bool WaitUntil(const std::function<bool()>& predicate, uint64_t milliseconds = 60000);

// The line comes into the log.
::testing::AssertionResult LoggedWithin(const virtualnotebook::Notebook& notebook, int level,
                                        const std::wstring& text, uint64_t milliseconds = 60000);

// For tests that have a notebook by this name.
#define EXPECT_LOGGED(level, text) EXPECT_TRUE(testsupport::Logged(notebook, level, text))
#define EXPECT_NOT_LOGGED(part) EXPECT_TRUE(testsupport::NothingLogged(notebook, part))
#define EXPECT_LOG(...) \
  EXPECT_TRUE(testsupport::LogIs(notebook, std::vector<testsupport::LogLine>{__VA_ARGS__}))

// A registry key that is not there at the start and not at the end, with all beneath it.
class ScopedKey {
 public:
  ScopedKey(HKEY root, const std::wstring& path);
  ~ScopedKey();
  ScopedKey(const ScopedKey&) = delete;
  ScopedKey& operator=(const ScopedKey&) = delete;

 private:
  HKEY root_;
  std::wstring path_;
};

// An empty directory for one test's files.
class ScratchDirectory {
 public:
  ScratchDirectory();
  ~ScratchDirectory();
  ScratchDirectory(const ScratchDirectory&) = delete;
  ScratchDirectory& operator=(const ScratchDirectory&) = delete;

  std::string Path() const { return path_; }  // ends in "\"
  std::string Path(const std::string& name) const { return path_ + name; }

  // Gives the file's path.
  std::string Write(const std::string& name, const std::vector<uint8_t>& bytes) const;
  std::vector<uint8_t> Read(const std::string& name) const;

 private:
  std::string path_;
};

// Files anywhere. Directories on the way are made; a file that can't be had ends the test.
void WriteFileBytes(const std::string& path, const std::vector<uint8_t>& bytes);
std::vector<uint8_t> ReadFileBytes(const std::string& path);

}  // namespace testsupport
