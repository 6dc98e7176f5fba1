// The virtual notebook of --virtual: a made machine with the product installed on it. Its files lie
// in a folder below the user's temporary one, its registry below a key of the tool's own, its
// events have names of their own; all of it goes with the process.
#pragma once

#include <windows.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "veloractl/DescribedJson.h"
#include "virtualnotebook/Factory.h"
#include "virtualnotebook/HostedLibrary.h"
#include "virtualnotebook/Machine.h"

namespace veloractl {

// The process's registry, moved: the predefined keys are empty ones for as long as the object
// lives.
class MovedRegistry {
 public:
  MovedRegistry();
  ~MovedRegistry();
  MovedRegistry(const MovedRegistry&) = delete;
  MovedRegistry& operator=(const MovedRegistry&) = delete;

 private:
  std::wstring path_;
};

// A folder of its own below the temporary one, removed at the end.
class ScratchFolder {
 public:
  ScratchFolder();
  ~ScratchFolder();
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  const std::string& Path() const { return path_; }  // in the system's code page

 private:
  std::string path_;
};

// Where the machine's folders are in the scratch folder.
std::map<std::wstring, std::wstring> FoldersBelow(const std::string& scratch);
virtualnotebook::MachineDirs DirsBelow(const std::string& scratch);
// The folder of installed profiles in the scratch folder, with the system's own profile in it.
void MakeProfileFolder(const std::string& scratch);
// For Notebook::eventPrefix.
std::wstring OwnEventPrefix();

class VirtualMachine {
 public:
  // descriptionFile: JSON; empty: the usual notebook. Failure for a file that describes none.
  explicit VirtualMachine(const std::string& descriptionFile);

  // How it applies its colour modes.
  ColorFieldSetType SetType() const { return setType_; }
  const virtualnotebook::MachineData& Data() const { return data_; }

  virtualnotebook::HostedLibrary& Library() { return *library_; }
  virtualnotebook::Notebook& Notebook() { return library_->notebook; }

 private:
  void Describe(DescribedJson& description);
  void DescribePanel(DescribedJson& panel);
  void PlugMonitors(DescribedJson& description);
  void WriteIni(DescribedJson& ini) const;
  void SetFlags(DescribedJson& features);

  ScratchFolder folder_;
  MovedRegistry registry_;
  std::unique_ptr<virtualnotebook::HostedLibrary> library_;
  virtualnotebook::MachineData data_;
  std::optional<virtualnotebook::PluggedPanel> panel_;
  ColorFieldSetType setType_ = 1;
};

}  // namespace veloractl
