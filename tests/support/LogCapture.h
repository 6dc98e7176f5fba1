#pragma once

#include <string>
#include <vector>

namespace testsupport {

struct Line {
  int level;
  std::wstring text;

  friend bool operator==(const Line&, const Line&) = default;
};

// Takes the lines that the code under test gives to LcdLogMessage while the object lives. For tests
// of the pure cores; tests on the virtual notebook read its own log.
class LogCapture {
 public:
  LogCapture();
  ~LogCapture();
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;

  std::vector<Line> Lines() const;
};

}  // namespace testsupport
