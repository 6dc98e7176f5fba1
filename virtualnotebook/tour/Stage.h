// Where the tour plays: a virtual notebook with one panel, the product installed on it, and a host
// that loads the library.
#pragma once

#include <windows.h>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "VeloraPlatform/SoftwarePanel.h"
#include "virtualnotebook/DayPlot.h"
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
  size_t linesLeftOut = 0;  // of the log
};

inline constexpr ColorFieldSetType kDdcciWay = 0;
inline constexpr ColorFieldSetType k3DLutWay = 1;
inline constexpr ColorFieldSetType kPccWay = 2;
inline constexpr ColorFieldSetType kGammaWay = 3;

// Of every mode that the stage registers: a little of the neighbouring channels in each.
inline constexpr double kPccMatrix[9] = {0.92, 0.06, 0.02, 0.03, 0.94, 0.03, 0.01, 0.05, 0.94};

// Of the modes that the user designs.
inline constexpr const char* kUserModeIds[] = {"Reading%1", "Proof%2"};

// Where the product is installed for the tour.
struct Place {
  virtualnotebook::MachineDirs dirs = {};
  // As Notebook has them; with any folder moved the place is apart from this machine: nothing of
  // its files, nor its platform library, is touched.
  std::map<std::wstring, std::wstring> movedFolders = {};
  std::wstring eventPrefix = {};

  bool IsApart() const { return !movedFolders.empty(); }
};

class Stage {
 public:
  // The machine's panel has this EDID.
  explicit Stage(const Bytes& edid, Place place = {});
  ~Stage();
  Stage(const Stage&) = delete;
  Stage& operator=(const Stage&) = delete;

  const virtualnotebook::MachineData& Machine() const { return machine_; }
  const virtualnotebook::InstalledFiles& Files() const { return files_; }
  std::string BinFile(const std::string& name) const;
  std::string Path(const std::string& machinePath) const;  // where the stage has it
  bool IsApart() const { return place_.IsApart(); }

  // A new process of the host, as far as the library can tell: it is loaded anew, so that nothing
  // is left in its memory, and told of the modes 1 and 2 and of the way to the panel. What the
  // system keeps stays.
  void StartHost(ColorFieldSetType way = k3DLutWay);
  virtualnotebook::HostedLibrary& Library() { return *library_; }
  virtualnotebook::Notebook& Notebook() { return library_->notebook; }

  // Calls the library; the records begin anew.
  Outcome Do(const std::function<ResultT(virtualnotebook::HostedLibrary&)>& call);
  Outcome SetColorField(int mode);

  // The panel as it comes on: nothing in its pipeline.
  void ClearPanel();
  void ChooseProfile(const std::string& name);  // as the system's settings do

  // The desktop moves to an external monitor of the maker's, until the next host starts.
  void DockWithTheLidClosed();
  virtualnotebook::PhysicalMonitor& ExternalMonitor();
  std::string ExternalProfile();

  void PlugPanel(const Bytes& edid) { panel_.Replace(edid); }

  std::string DefaultProfile();  // of the panel, as the system has it; empty: none

  std::vector<virtualnotebook::DaySample> day;  // what an act saw, for its picture

  softwarepanel::State Shown() const;
  uint64_t PanelChanges() const;
  virtualnotebook::Image ShowOnPanel(const virtualnotebook::Image& image) const;

 private:
  std::string DefaultProfileOf(const std::wstring& deviceId);
  void Refresh() const;

  Place place_;
  virtualnotebook::MachineData machine_;
  virtualnotebook::InstalledFiles files_;
  std::wstring deviceId_;
  virtualnotebook::PluggedPanel panel_;
  softwarepanel::SoftwarePanel viewer_;
  // Apart, the panel is the notebook's alone.
  mutable std::unique_ptr<softwarepanel::State> own_ = std::make_unique<softwarepanel::State>();
  mutable uint64_t ownSequence_ = 0;
  std::unique_ptr<virtualnotebook::HostedLibrary> library_;
};

Bytes ReadBytes(const std::string& path);
void WriteBytes(const std::string& path, const Bytes& content);

}  // namespace tour
