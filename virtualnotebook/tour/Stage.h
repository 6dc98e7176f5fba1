// Where the tour plays: a virtual notebook with one panel, the product installed on it, and a host
// that loads the library.
#pragma once

#include <windows.h>

#include <memory>
#include <string>
#include <vector>

#include "VeloraPlatform/SoftwarePanel.h"
#include "virtualnotebook/Factory.h"
#include "virtualnotebook/HostedLibrary.h"
#include "virtualnotebook/Machine.h"
#include "virtualnotebook/Notebook.h"
#include "virtualnotebook/TestChart.h"

namespace tour {

using virtualnotebook::Bytes;

// What one call of the library did.
struct Outcome {
  ResultT result = 0;
  double milliseconds = 0;
  std::vector<virtualnotebook::LogLine> log;
};

class Stage {
 public:
  // The machine's panel has this EDID.
  explicit Stage(const Bytes& edid);
  ~Stage();
  Stage(const Stage&) = delete;
  Stage& operator=(const Stage&) = delete;

  const virtualnotebook::MachineData& Machine() const { return machine_; }
  const virtualnotebook::InstalledFiles& Files() const { return files_; }
  std::string BinFile(const std::string& name) const;

  // A new process of the host, as far as the library can tell: it is loaded anew, so that nothing
  // is left in its memory, and told of the modes 1 and 2. What the system keeps stays.
  void StartHost();
  virtualnotebook::Notebook& Notebook() { return library_->notebook; }

  Outcome SetColorField(int mode);

  void PlugPanel(const Bytes& edid) { panel_.Replace(edid); }

  std::string DefaultProfile();  // of the panel, as the system has it; empty: none

  softwarepanel::State Shown() const;
  uint64_t PanelChanges() const { return viewer_.Sequence(); }
  virtualnotebook::Image ShowOnPanel(const virtualnotebook::Image& image) const;

 private:
  virtualnotebook::MachineData machine_;
  virtualnotebook::InstalledFiles files_;
  std::wstring deviceId_;
  virtualnotebook::PluggedPanel panel_;
  softwarepanel::SoftwarePanel viewer_;
  std::unique_ptr<virtualnotebook::HostedLibrary> library_;
};

Bytes ReadBytes(const std::string& path);
void WriteBytes(const std::string& path, const Bytes& content);

}  // namespace tour
