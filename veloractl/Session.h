// What all commands share: the options ahead of them, and the machine, which is this one or a
// virtual notebook.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "veloractl/Report.h"
#include "virtualnotebook/HostedLibrary.h"

namespace veloractl {

struct Options {
  bool json = false;
  bool isVirtual = false;
  std::string description;  // JSON file of the virtual notebook; empty: the usual one
  std::string modes;        // JSON file of this machine's colour modes; empty: the usual place
};

class VirtualMachine;

class Session {
 public:
  explicit Session(Options options);
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  const Options& Chosen() const { return options_; }

  // Made at the first use of any of them. Failure where that can't be.
  const virtualnotebook::LoadedLibrary& Library();
  VirtualMachine* Virtual();  // null: this machine

  // The library with its platform started, and with its colour modes registered, presets and stored
  // user modes. Once for all commands of the session.
  const virtualnotebook::LoadedLibrary& StartedLibrary();
  const virtualnotebook::LoadedLibrary& LibraryWithModes();

  // Where a file that the library has at this path is: there, or in the virtual notebook's folder.
  std::string Path(const std::string& machinePath);

 private:
  Options options_;
  bool isStarted_ = false;
  bool hasModes_ = false;
  std::unique_ptr<VirtualMachine> virtual_;
  std::unique_ptr<virtualnotebook::LoadedLibrary> library_;
};

}  // namespace veloractl
