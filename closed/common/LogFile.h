#pragma once

#include <windows.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "common/Owned.h"
#include "common/UsersAccess.h"

namespace closed {

// A text file that threads and processes of all local users append to, a line at a time. No line is
// torn or lost while writers race. The file is limited: before a line that would cross the limit,
// it becomes "<path>.1", in place of an older one, and a new file begins.
class LogFile {
 public:
  static constexpr uint64_t kSizeLimit = 1 << 20;  // bytes

  // path: absolute. Missing directories are made at the first line. Processes meet by the path's
  // last component, so it names the log, wherever it lies.
  explicit LogFile(std::wstring path);

  // Appends line and CR LF. A line that cannot be written is lost: nobody could be told.
  void Append(std::string_view line) const;

 private:
  OwnedHandle Open() const;
  OwnedHandle OpenWithRoomFor(size_t size) const;
  void MakeDirectories() const;

  std::wstring path_;
  SharedWithUsers security_;
  OwnedHandle mutex_;
};

// Now, in UTC: "2024-02-29T23:59:59.999Z".
std::string UtcTimestamp();

// One line of a log: time, process, thread, level, text, with a blank between them. The text is
// UTF-8, its control characters are blanks, and a text of more than 16384 characters is cut there.
std::string FormatLogLine(std::string_view level, std::wstring_view text);

}  // namespace closed
