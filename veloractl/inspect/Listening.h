// Watches the library decide, and keeps what it decides from taking effect.
//
// What the panel is, which monitor counts and which step a profile fails is the library's to say. A
// listener stands beneath it, as the virtual notebook does: questions to the system go on to the
// system and are noted with their answers, and whatever would change the machine is refused.
#pragma once

#include <windows.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "velora/VeloraCtlApi.h"
#include "virtualnotebook/ImportRedirection.h"

namespace veloractl {

// What the library asked and was told, in its order.
struct Heard {
  struct Query {
    std::wstring query;
    std::wstring property;
    std::vector<std::wstring> rows;
    int status;
  };
  struct Display {
    std::wstring adapter;  // empty: an adapter itself
    std::wstring name;
    std::wstring text;
    std::wstring id;
  };
  struct Line {
    int level;
    std::wstring text;
  };

  std::vector<Query> queries;
  std::vector<Display> displays;
  std::string keyPath;  // of the EDID's key; empty: none was opened
  std::optional<LSTATUS> keyStatus;
  std::optional<LSTATUS> edidStatus;
  std::vector<uint8_t> edid;
  std::wstring profileDevice;  // whose default profile was asked for
  std::wstring profileName;    // the system's answer
  std::optional<DWORD> profileError;
  bool reachedAssociation = false;  // all checks of a profile were passed
  std::vector<Line> log;
};

// What the library is told about the default profile of its monitor.
enum class ProfileAnswer {
  Refused,  // as if the system could not tell, which ends most operations there
  Another,  // a profile that no mode has
};

// Listens to a module for as long as it lives. One at a time, on one thread.
class Listener {
 public:
  explicit Listener(HMODULE module, ProfileAnswer answer = ProfileAnswer::Refused);
  ~Listener();
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;

  Heard heard;

 private:
  friend struct Ears;

  ProfileAnswer answer_;
  std::unique_ptr<virtualnotebook::ImportRedirection> redirection_;
};

// The lines that the pure cores within this program log: kept from the machine's log, and shown.
class OwnLog {
 public:
  OwnLog();
  ~OwnLog();
  OwnLog(const OwnLog&) = delete;
  OwnLog& operator=(const OwnLog&) = delete;

  // Each error's text once.
  std::vector<std::wstring> Errors() const;

 private:
  std::unique_ptr<virtualnotebook::ImportRedirection> redirection_;
};

}  // namespace veloractl
