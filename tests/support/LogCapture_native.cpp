// On this machine there is no CoreKit: what the pure cores take from it, for their native tests.
#include "support/LogCapture.h"

#include <cstdio>

#include "CoreKit/CoreKit.h"

namespace {

std::vector<testsupport::Line> lines;

}  // namespace

void LcdLogMessage(int level, const wchar_t* text) { lines.push_back({level, text}); }

std::string CoreKit::BytesToHexString(const uint8_t* bytes, size_t count) {
  std::string text;
  for (size_t i = 0; i < count; ++i) {
    char digits[3];
    std::snprintf(digits, sizeof digits, "%02x", static_cast<unsigned>(bytes[i]));
    text += digits;
  }
  return text;
}

namespace testsupport {

LogCapture::LogCapture() { lines.clear(); }
LogCapture::~LogCapture() = default;
std::vector<Line> LogCapture::Lines() const { return lines; }

}  // namespace testsupport
