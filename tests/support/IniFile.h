#pragma once

#include <filesystem>
#include <string>

#include "support/NotebookTest.h"

namespace testsupport {

// The INI file of the settings' defaults: absent at the start and at the end of a test.
class IniFile {
 public:
  IniFile() { Remove(); }
  ~IniFile() { Remove(); }
  IniFile(const IniFile&) = delete;
  IniFile& operator=(const IniFile&) = delete;

  void Write(const std::string& text) const { WriteFileBytes(kPath, {text.begin(), text.end()}); }

 private:
  static constexpr char kPath[] = "C:\\ProgramData\\Comms\\NxVelora\\SetColor.ini";

  static void Remove() {
    std::error_code ignored;
    std::filesystem::remove(kPath, ignored);
  }
};

}  // namespace testsupport
