#include "support/LogCapture.h"

#include <windows.h>

#include <memory>

#include "virtualnotebook/Notebook.h"

namespace testsupport {
namespace {

std::unique_ptr<virtualnotebook::Notebook> notebook;

}  // namespace

LogCapture::LogCapture() {
  notebook = std::make_unique<virtualnotebook::Notebook>(GetModuleHandleW(nullptr));
}

LogCapture::~LogCapture() { notebook.reset(); }

std::vector<Line> LogCapture::Lines() const {
  std::vector<Line> lines;
  for (const auto& line : notebook->log) {
    lines.push_back({line.level, line.text});
  }
  return lines;
}

}  // namespace testsupport
