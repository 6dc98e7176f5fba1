// A host on a virtual notebook, with a stopwatch between the library and all beneath it.
#pragma once

#include <string>

#include "ImportStopwatch.h"
#include "virtualnotebook/Factory.h"
#include "virtualnotebook/HostedLibrary.h"
#include "virtualnotebook/Machine.h"

namespace bench {

// A machine as it left the factory; one at a time.
class Machine {
 public:
  Machine();
  ~Machine();
  Machine(const Machine&) = delete;
  Machine& operator=(const Machine&) = delete;

  // Takes the library's bin files away, so that the next switch is a machine's first.
  void RemoveBinFiles() const;

  const virtualnotebook::MachineData data;
  const virtualnotebook::InstalledFiles files;

 private:
  virtualnotebook::PluggedPanel panel_;
};

// The shipped library, loaded anew, with its modes registered.
class Host {
 public:
  explicit Host(const Machine& machine);

  virtualnotebook::HostedLibrary library;
  virtualnotebook::Notebook& notebook = library.notebook;
  ImportStopwatch stopwatch;

 private:
  void AddMode(const Machine& machine, ColorFieldMode mode, int gamut);
};

}  // namespace bench
