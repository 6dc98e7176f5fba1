#include "support/NotebookTest.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <ostream>
#include <stdexcept>

namespace virtualnotebook {

void PrintTo(const LogLine& line, std::ostream* out) {
  *out << "{" << line.level << ", \"" << testsupport::Utf8(line.text) << "\"}";
}

void PrintTo(const Call& call, std::ostream* out) {
  *out << call.function << "(";
  const char* separator = "";
  for (const std::wstring& argument : call.arguments) {
    *out << separator << testsupport::Utf8(argument);
    separator = ", ";
  }
  *out << ")";
}

}  // namespace virtualnotebook

namespace testsupport {
namespace {

::testing::AssertionResult Verdict(bool good, const virtualnotebook::Notebook& notebook,
                                   const std::string& complaint) {
  if (good) {
    return ::testing::AssertionSuccess();
  }
  auto failure = ::testing::AssertionFailure() << complaint << "\nthe log:";
  for (const LogLine& line : notebook.LogNow()) {
    failure << "\n  " << ::testing::PrintToString(line);
  }
  return failure;
}

bool IsLogged(const virtualnotebook::Notebook& notebook, const LogLine& line) {
  return std::ranges::count(notebook.LogNow(), line) > 0;
}

}  // namespace

std::string Utf8(const std::wstring& text) {
  const int length = static_cast<int>(text.size());
  const int size =
      WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
  std::string bytes(static_cast<size_t>(size), '\0');
  WideCharToMultiByte(CP_UTF8, 0, text.data(), length, bytes.data(), size, nullptr, nullptr);
  return bytes;
}

::testing::AssertionResult Logged(const virtualnotebook::Notebook& notebook, int level,
                                  const std::wstring& text) {
  const LogLine line{level, text};
  return Verdict(IsLogged(notebook, line), notebook,
                 "not logged: " + ::testing::PrintToString(line));
}

::testing::AssertionResult NothingLogged(const virtualnotebook::Notebook& notebook,
                                         const std::wstring& part) {
  const bool found = std::ranges::any_of(notebook.LogNow(), [&](const LogLine& line) {
    return line.text.find(part) != std::wstring::npos;
  });
  return Verdict(!found, notebook, "logged: \"" + Utf8(part) + "\"");
}

::testing::AssertionResult LogIs(const virtualnotebook::Notebook& notebook,
                                 const std::vector<LogLine>& lines) {
  std::string complaint = "expected:";
  for (const LogLine& line : lines) {
    complaint += "\n  " + ::testing::PrintToString(line);
  }
  return Verdict(notebook.LogNow() == lines, notebook, complaint);
}

std::vector<std::string> CallsOf(const virtualnotebook::Notebook& notebook,
                                 const std::vector<std::string>& functions) {
  std::vector<std::string> calls;
  for (const virtualnotebook::Call& call : notebook.CallsNow()) {
    if (std::ranges::find(functions, call.function) != functions.end()) {
      calls.push_back(call.function);
    }
  }
  return calls;
}

bool WaitUntil(const std::function<bool()>& predicate, uint64_t milliseconds) {
  const uint64_t end = GetTickCount64() + milliseconds;
  bool holds = predicate();
  while (!holds && GetTickCount64() < end) {
    SleepEx(1, FALSE);  // the notebook stands in for Sleep
    holds = predicate();
  }
  return holds;
}

::testing::AssertionResult LoggedWithin(const virtualnotebook::Notebook& notebook, int level,
                                        const std::wstring& text, uint64_t milliseconds) {
  const LogLine line{level, text};
  WaitUntil([&] { return IsLogged(notebook, line); }, milliseconds);
  return Logged(notebook, level, text);
}

ScopedKey::ScopedKey(HKEY root, const std::wstring& path) : root_(root), path_(path) {
  RegDeleteTreeW(root_, path_.c_str());
}

ScopedKey::~ScopedKey() { RegDeleteTreeW(root_, path_.c_str()); }

ScratchDirectory::ScratchDirectory() {
  const auto directory = std::filesystem::temp_directory_path() /
                         ("velora-test-" + std::to_string(GetCurrentProcessId()));
  std::filesystem::remove_all(directory);
  std::filesystem::create_directories(directory);
  path_ = directory.string() + "\\";
}

ScratchDirectory::~ScratchDirectory() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::string ScratchDirectory::Write(const std::string& name,
                                    const std::vector<uint8_t>& bytes) const {
  WriteFileBytes(Path(name), bytes);
  return Path(name);
}

std::vector<uint8_t> ScratchDirectory::Read(const std::string& name) const {
  return ReadFileBytes(Path(name));
}

// By wide paths: narrow ones go through fopen, which a notebook beneath the test program records.
void WriteFileBytes(const std::string& path, const std::vector<uint8_t>& bytes) {
  std::filesystem::create_directories(std::filesystem::path(path).parent_path());
  std::ofstream file(std::filesystem::path(path), std::ios::binary);
  file.write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
  if (!file.flush()) {
    throw std::runtime_error("can't write " + path);
  }
}

std::vector<uint8_t> ReadFileBytes(const std::string& path) {
  std::ifstream file(std::filesystem::path(path), std::ios::binary);
  if (!file) {
    throw std::runtime_error("can't read " + path);
  }
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace testsupport
