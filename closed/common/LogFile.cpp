#include "common/LogFile.h"

#include <algorithm>
#include <cstdio>

#include "common/Text.h"

namespace closed {
namespace {

constexpr DWORD kShareWithAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// A stopped writer must not stop the others: after this they append without the lock, which the
// system still does whole, but for the rare line that meets a change of files.
constexpr DWORD kLockPatience = 1000;  // milliseconds

// Keeps a line well below the size limit of a file.
constexpr size_t kMostCharacters = 16384;

class Lock {
 public:
  explicit Lock(HANDLE mutex) : mutex_(mutex), state_(WaitForSingleObject(mutex, kLockPatience)) {}
  ~Lock() {
    if (state_ == WAIT_OBJECT_0 || state_ == WAIT_ABANDONED) {
      ReleaseMutex(mutex_);
    }
  }
  Lock(const Lock&) = delete;
  Lock& operator=(const Lock&) = delete;

 private:
  HANDLE mutex_;
  DWORD state_;
};

}  // namespace

LogFile::LogFile(std::wstring path) : path_(std::move(path)) {
  const std::wstring name = L"Global\\NxVelora." + path_.substr(path_.rfind(L'\\') + 1);
  mutex_.reset(CreateMutexW(security_.Get(), FALSE, name.c_str()));
}

void LogFile::Append(std::string_view line) const {
  std::string bytes(line);
  bytes += "\r\n";
  const Lock lock(mutex_.get());
  const OwnedHandle file = OpenWithRoomFor(bytes.size());
  if (file) {
    // One write: with the right to append only, the system puts it at the end as it then is.
    DWORD written = 0;
    WriteFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
  }
}

OwnedHandle LogFile::OpenWithRoomFor(size_t size) const {
  OwnedHandle file = Open();
  if (!file && GetLastError() == ERROR_PATH_NOT_FOUND) {
    MakeDirectories();
    file = Open();
  }
  LARGE_INTEGER present{};
  if (!file || !GetFileSizeEx(file.get(), &present) || present.QuadPart == 0 ||
      static_cast<uint64_t>(present.QuadPart) + size <= kSizeLimit) {
    return file;
  }
  file.reset();
  MoveFileExW(path_.c_str(), (path_ + L".1").c_str(), MOVEFILE_REPLACE_EXISTING);
  return Open();
}

OwnedHandle LogFile::Open() const {
  return OwnFile(CreateFileW(path_.c_str(), FILE_APPEND_DATA | FILE_READ_ATTRIBUTES, kShareWithAll,
                             security_.Get(), OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
}

void LogFile::MakeDirectories() const {
  for (size_t end = path_.find(L'\\'); end != std::wstring::npos;
       end = path_.find(L'\\', end + 1)) {
    CreateDirectoryW(path_.substr(0, end).c_str(), nullptr);
  }
}

std::string UtcTimestamp() {
  SYSTEMTIME now;
  GetSystemTime(&now);
  char text[48];
  std::snprintf(text, sizeof text, "%04u-%02u-%02uT%02u:%02u:%02u.%03uZ", now.wYear, now.wMonth,
                now.wDay, now.wHour, now.wMinute, now.wSecond, now.wMilliseconds);
  return text;
}

std::string FormatLogLine(std::string_view level, std::wstring_view text) {
  std::wstring shown(text.substr(0, kMostCharacters));
  std::replace_if(
      shown.begin(), shown.end(), [](wchar_t c) { return c < L' '; }, L' ');

  std::string line = UtcTimestamp();
  line += ' ' + std::to_string(GetCurrentProcessId());
  line += ' ' + std::to_string(GetCurrentThreadId());
  line += ' ';
  line += level;
  line += ' ';
  line += ToUtf8(shown);
  return line;
}

}  // namespace closed
