// What the sweeps of the colour mode exports share: a machine with its panel and profiles, and what
// is told of a fault, by the call that fails.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "faults/FaultSweep.h"
#include "support/NotebookTest.h"
#include "virtualnotebook/Factory.h"
#include "virtualnotebook/Machine.h"

namespace faults {

// The system's profile ahead of most sweeps.
inline const std::wstring kOldProfile = L"srgb color space profile.icm";

// What the panel shows, or the system's profile.
enum class Shown { Nothing, Old, New, Golden, Other };
void PrintTo(Shown shown, std::ostream* out);

// What a run ends in.
struct Ending {
  int result = ResultOk;
  std::vector<std::wstring> errors = {};  // in the log, in this order; with others between them
  Shown profile = Shown::New;
  Shown gamma = Shown::New;
  Shown lut = Shown::New;
  unsigned openProfiles = 0;  // handles that are left open, as told
};

// What is told of the failure of one call. The first rule that fits a fault counts.
struct Rule {
  std::string function;
  std::wstring names = {};              // in the call's arguments or its opener's
  std::wstring alsoNames = {};          // and this
  unsigned nth = 0;                     // of the calls with the same arguments; 0: any
  unsigned n = 0;                       // of the function's calls; 0: any
  std::optional<uint64_t> result = {};  // that the call gives; none: any
  std::optional<DWORD> lastError = {};
  Ending ending = {};
};
using Rules = std::vector<Rule>;
Rules operator+(Rules first, const Rules& second);

// File access as the calls' arguments have it.
inline const std::wstring kReading = L"2147483648";
inline const std::wstring kWriting = L"1073741824";
inline const std::wstring kUpdating = L"3221225472";

class ColorModeSweep : public testing::Test {
 protected:
  // Makes an ending of a part's failure that of the export.
  using Whole = std::function<Ending(Ending)>;

  ColorModeSweep();
  ~ColorModeSweep() override;

  // --- The machine ---

  static const virtualnotebook::MachineData& Machine();
  static std::string DataFile(const std::string& name);
  // Bin files, user files, stored settings and the system's copies of profiles are gone.
  static void RemoveTraces();

  // A new process on the machine, whose host has registered sRGB, P3 and the e-book mode.
  void StartProcess(uint32_t setType);
  virtualnotebook::HostedLibrary& library() { return *library_->operator->(); }
  virtualnotebook::Notebook& notebook() { return library_->notebook(); }

  void SetProfile(const std::wstring& name);  // empty: none
  std::wstring Profile();

  // Against the LUTs of the firmware and of the golden file.
  Shown LutOf(int type);
  Shown GammaLut();

  // --- The sweep ---

  struct Scene {
    std::string name;               // of the export
    std::function<void()> prepare;  // a process, ready for the call
    std::function<int()> call;
    Rules rules;
    std::wstring oldProfile;
    std::wstring newProfile;  // what Shown::New stands for
    std::function<Shown()> gamma;
    std::function<Shown()> lut;
    Ending good = {};  // without a fault
    std::vector<int> results = {ResultOk, ResultFailed, ResultFileNotFound, ResultIccError,
                                ResultColorFieldError};  // that are documented
    std::function<void()> check = [] {};                 // after each run
    std::function<void()> restart = {};  // a new process, for where something went wrong
    std::function<int()> next = {};      // the call that repairs everything; empty: the same
    std::vector<std::string> without = {};
    bool mayLoseProfile = false;                         // where every association fails
    std::function<bool()> lasts = [] { return false; };  // the failure, for this process
  };
  void Sweep(const Scene& scene) { Sweep(scene, true); }
  // What holds after every fault alone.
  void SweepWithoutRules(const Scene& scene) { Sweep(scene, false); }

  // --- Rules ---

  // Looking for the monitor and its profile. firstDevice: number of the first EnumDisplayDevicesW.
  static Rules MonitorRules(const Ending& good, const Ending& failed, unsigned firstDevice = 1);
  // Checking and associating a preset profile.
  static Rules PresetProfileRules(const std::string& path, const Ending& good, const Whole& whole);
  static Rules AssociationRules(const std::wstring& path, const Ending& good, const Whole& whole);
  // The panel's EDID.
  static Rules EdidRules(const Ending& good, const Ending& unknown, const Ending& otherSerial);

  static const std::wstring kDevice;
  virtualnotebook::InstalledFiles files_;

 private:
  void Sweep(const Scene& scene, bool byRules);
  void Check(const Scene& scene, const Fault& fault, int result, size_t handlesLeft);
  void CheckAlways(const Scene& scene, int result);
  void CheckEnding(const Scene& scene, const Fault& fault, const Ending& ending, int result);
  Shown ProfileOf(const Scene& scene);
  unsigned CountOpenProfiles(const Fault& fault);

  const testsupport::ScopedKey settings_{HKEY_LOCAL_MACHINE, L"SOFTWARE\\Norvex\\Velora"};
  const virtualnotebook::PluggedPanel panel_{Machine().edid};
  std::optional<FreshLibrary> library_;
};

}  // namespace faults
