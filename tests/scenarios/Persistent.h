// What outlives a process: the library's registry keys and files.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "support/Registry.h"

namespace scenarios {

using FileBytes = std::vector<uint8_t>;

// All of it at one moment.
struct Persistent {
  std::set<std::string> directories;                         // below the data directory
  std::map<std::string, FileBytes> files;                    // by path
  std::map<std::wstring, testsupport::RegistryValues> keys;  // by path, below the library's key

  static Persistent Now();
  void Restore() const;
};

// Removes the keys, and all files of the data directory and of users' modes.
void RemovePersistent();

}  // namespace scenarios
