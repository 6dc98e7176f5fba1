#pragma once

#include <windows.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>
#include <vector>

namespace closedtests {

inline constexpr char kLogDirectory[] = "C:\\ProgramData\\Comms\\NxVelora\\Log\\";

// A text that no other run has had.
inline std::string Marker(const std::string& name) {
  static int count = 0;
  FILETIME now;
  GetSystemTimeAsFileTime(&now);
  return name + "." + std::to_string(now.dwHighDateTime) + "." + std::to_string(now.dwLowDateTime) +
         "." + std::to_string(++count);
}

// Directories of this run; what is in them goes with it.
class TestDirectories {
 public:
  ~TestDirectories() {
    for (const std::string& directory : directories_) {
      std::error_code ignored;
      std::filesystem::remove_all(directory, ignored);
    }
  }

  std::string Add() {
    char temp[MAX_PATH];
    GetTempPathA(MAX_PATH, temp);
    return directories_.emplace_back(temp + Marker("closed_tests") + "\\");
  }

 private:
  std::vector<std::string> directories_;
};

// A fresh directory's path, with a backslash; the directory is not there yet.
inline std::string FreshDirectory() {
  static TestDirectories directories;
  return directories.Add();
}

inline std::wstring Widen(const std::string& ascii) { return {ascii.begin(), ascii.end()}; }

inline std::string ReadBytes(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

inline void WriteBytes(const std::string& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

// Lines without their CR LF. A piece without a line end at the end of the file counts as a line
// that ends in "<cut>".
inline std::vector<std::string> ReadLines(const std::string& path) {
  const std::string bytes = ReadBytes(path);
  std::vector<std::string> lines;
  size_t begin = 0;
  for (size_t end; (end = bytes.find("\r\n", begin)) != std::string::npos; begin = end + 2) {
    lines.push_back(bytes.substr(begin, end - begin));
  }
  if (begin < bytes.size()) {
    lines.push_back(bytes.substr(begin) + "<cut>");
  }
  return lines;
}

// The lines of a log, and of the one before it, that hold a text.
inline std::vector<std::string> LogLinesWith(const std::string& path, const std::string& text) {
  std::vector<std::string> found;
  for (const std::string& file : {path + ".1", path}) {
    for (const std::string& line : ReadLines(file)) {
      if (line.find(text) != std::string::npos) {
        found.push_back(line);
      }
    }
  }
  return found;
}

// How a log line shows the calling thread.
inline std::string ProcessAndThread() {
  return std::to_string(GetCurrentProcessId()) + " " + std::to_string(GetCurrentThreadId());
}

}  // namespace closedtests
