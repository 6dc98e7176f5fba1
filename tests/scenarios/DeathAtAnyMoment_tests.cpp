// A host dies ahead of each call that the library makes of the system or of a closed library, and
// in the middle of each write to a file. What it leaves behind is what the next process starts
// with.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <functional>
#include <iostream>
#include <iterator>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "scenarios/HostProcess.h"
#include "scenarios/Long.h"
#include "scenarios/Persistent.h"
#include "support/NotebookTest.h"
#include "support/Registry.h"
#include "virtualnotebook/Factory.h"
#include "virtualnotebook/Machine.h"

namespace scenarios {
namespace {

const std::string kData = "C:\\ProgramData\\Comms\\NxVelora\\";
const std::wstring kDesigns = L"SOFTWARE\\Norvex\\Velora\\ColorField\\UserDesign\\";
const std::wstring kTunings =
    L"SOFTWARE\\Norvex\\Velora\\ColorField\\WhitePointFineTue\\UserDesignMode\\";

// Functions that put bytes into a file, and others that change what outlives the process.
constexpr std::array<std::string_view, 2> kWriters = {"WriteFile", "CopyFileW"};
constexpr std::array<std::string_view, 6> kChangers = {
    "CreateFileA", "rename", "remove", "_mkdir", "RegSetValueExW", "RegDeleteKeyW"};

template <size_t N>
bool IsIn(const std::string& function, const std::array<std::string_view, N>& functions) {
  return std::ranges::find(functions, function) != functions.end();
}

// What is done, by the commands of machinehost/MachineHostProgram.cpp.
struct Deed {
  std::vector<std::string> preparation;  // what a host does at its start
  std::string command;
};

// What the panel shows, as the host tells it.
struct Pipeline {
  std::string lut3D;
  std::string gammaLut;

  friend bool operator==(const Pipeline&, const Pipeline&) = default;
};

void PrintTo(const Pipeline& pipeline, std::ostream* out) {
  *out << pipeline.lut3D << " and " << pipeline.gammaLut;
}

Pipeline PipelineOf(HostProcess& host) {
  std::istringstream answer(host.Ask("pipeline"));
  Pipeline pipeline;
  answer >> pipeline.lut3D >> pipeline.gammaLut;
  return pipeline;
}

void Load(HostProcess& host, const Deed& deed) {
  ASSERT_EQ(host.Call("load"), 0);
  for (const std::string& command : deed.preparation) {
    ASSERT_EQ(host.Call(command), ResultOk) << command;
  }
}

// The states between one write and the next that a torn write can leave: of the bytes that it
// changes, the first ones alone are new.
std::vector<Persistent> TornStates(const Persistent& before, const Persistent& after) {
  std::vector<Persistent> states;
  for (const auto& [path, whole] : after.files) {
    const auto found = before.files.find(path);
    const FileBytes old = found == before.files.end() ? FileBytes() : found->second;
    if (old == whole) {
      continue;
    }
    const size_t end = std::max(old.size(), whole.size());
    const auto differs = [&](size_t i) {
      return i >= old.size() || i >= whole.size() || old[i] != whole[i];
    };
    size_t first = 0;
    while (!differs(first)) {
      ++first;
    }
    size_t last = end - 1;
    while (!differs(last)) {
      --last;
    }
    const std::set<size_t> cuts = {first + 1, (first + last) / 2 + 1, last};
    for (const size_t cut : cuts) {
      if (cut <= first || cut > last) {
        continue;
      }
      Persistent torn = before;
      FileBytes& bytes = torn.files[path];
      // A file that is put in the place of another one is emptied first.
      if (old.size() < cut || old.size() > whole.size()) {
        bytes.resize(cut);
      }
      std::copy_n(whole.begin(), std::min(cut, whole.size()), bytes.begin());
      states.push_back(std::move(torn));
    }
  }
  return states;
}

class DeathAtAnyMoment : public testing::Test {
 protected:
  DeathAtAnyMoment() {
    RemovePersistent();
    virtualnotebook::InstallMachine(machine_);
  }
  ~DeathAtAnyMoment() override {
    RemovePersistent();
    virtualnotebook::RemoveMachine();
  }

  // Kills a process ahead of each call of the deed, tears each write, and has a fresh process look
  // at what is left each time. A short run does so at one in so many of the moments at which
  // something new is left.
  void DieEverywhere(const Deed& deed, size_t oneIn,
                     const std::function<void(HostProcess& fresh)>& look) {
    const Persistent start = Persistent::Now();
    const std::vector<std::string> trail = TrailOf(deed);
    std::optional<HostProcess> fresh(std::in_place, kMachineHost);
    size_t deaths = 0;
    size_t tears = 0;
    for (const size_t n : Moments(trail, oneIn)) {
      SCOPED_TRACE(deed.command + ", ahead of call " + std::to_string(n) + ", " + trail[n - 1]);
      DieAhead(start, deed, n, fresh);
      ++deaths;
      const Persistent left = Persistent::Now();
      look(*fresh);
      if (IsIn(trail[n - 1], kWriters) && n < trail.size()) {
        DieAhead(start, deed, n + 1, fresh);
        for (const Persistent& torn : TornStates(left, Persistent::Now())) {
          torn.Restore();
          ++tears;
          look(*fresh);
          fresh.emplace(kMachineHost);
        }
      }
      if (HasFatalFailure()) {
        return;
      }
    }
    std::cout << deed.command << ": " << deaths << " deaths in " << trail.size() << " calls and "
              << tears << " torn writes" << std::endl;
    EXPECT_GT(deaths, 3U);
  }

  // Numbers of calls, from 1.
  static std::vector<size_t> Moments(const std::vector<std::string>& trail, size_t oneIn) {
    std::vector<size_t> moments;
    size_t changes = 0;
    for (size_t n = 1; n <= trail.size(); ++n) {
      const bool isNew = IsIn(trail[n - 1], kWriters) ||
                         (n > 1 && (IsIn(trail[n - 2], kWriters) || IsIn(trail[n - 2], kChangers)));
      if (IsLongRun() || (isNew && changes++ % oneIn == 0)) {
        moments.push_back(n);
      }
    }
    return moments;
  }

  // The functions that the library calls in an undisturbed deed.
  static std::vector<std::string> TrailOf(const Deed& deed) {
    HostProcess host(kMachineHost);
    Load(host, deed);
    host.Call("errors");
    host.Ask(deed.command);
    std::istringstream trail(host.Ask("trail"));
    return {std::istream_iterator<std::string>(trail), {}};
  }

  // The start again, a process that goes its way up to there, and the next process.
  static void DieAhead(const Persistent& start, const Deed& deed, size_t n,
                       std::optional<HostProcess>& host) {
    start.Restore();
    Load(*host, deed);
    ASSERT_EQ(host->Call("stop " + std::to_string(n)), 0);
    ASSERT_TRUE(host->Ask(deed.command).starts_with("ahead of "));
    host->Kill();
    host.emplace(kMachineHost);
  }

  // What an undisturbed process does and leaves.
  void DoUndisturbed(const std::vector<std::string>& commands) {
    HostProcess host(kMachineHost);
    ASSERT_EQ(host.Call("load"), 0);
    for (const std::string& command : commands) {
      ASSERT_EQ(host.Call(command), ResultOk) << command;
    }
    pipeline_ = PipelineOf(host);
  }

  const virtualnotebook::MachineData machine_ =
      virtualnotebook::MakeMachine(virtualnotebook::PanelDescription{});
  virtualnotebook::PluggedPanel panel_{machine_.edid};
  Pipeline pipeline_;
};

// --- The data files ---

class DeathInDataFiles : public DeathAtAnyMoment {
 protected:
  static void Damage(const std::string& name, size_t size) {
    FileBytes bytes = testsupport::ReadFileBytes(kData + name);
    bytes.resize(size);
    bytes[size / 2] ^= 1;
    testsupport::WriteFileBytes(kData + name, bytes);
  }

  // All files, but for the filling behind a gamma LUT's block: a torn write that lacks some of it
  // is as good as a whole one.
  static std::map<std::string, FileBytes> BlocksNow() {
    constexpr size_t kGammaBlock = 5280;
    std::map<std::string, FileBytes> files = Persistent::Now().files;
    for (auto& [path, bytes] : files) {
      if (path.ends_with("Gamma.bin") && bytes.size() > kGammaBlock) {
        bytes.resize(kGammaBlock);
      }
    }
    return files;
  }

  // A switch shows what an undisturbed one shows and leaves the same files; and these are good: a
  // further process finds nothing to read anew.
  void DieInSwitch(const std::string& command, int firmwareReads) {
    const Persistent start = Persistent::Now();
    DoUndisturbed({command});
    const auto rebuilt = BlocksNow();
    start.Restore();
    DieEverywhere({{}, command}, 2, [&](HostProcess& fresh) {
      ASSERT_EQ(fresh.Call("load"), 0);
      EXPECT_EQ(fresh.Call(command), ResultOk);
      EXPECT_EQ(PipelineOf(fresh), pipeline_);
      EXPECT_EQ(BlocksNow(), rebuilt);
      ASSERT_EQ(fresh.Call("load"), 0);
      EXPECT_EQ(fresh.Call(command), ResultOk);
      EXPECT_EQ(fresh.Call("firmware"), firmwareReads);
    });
  }
};

TEST_F(DeathInDataFiles, OutOfTheFirmware) { DieInSwitch("switch 2", 0); }

TEST_F(DeathInDataFiles, InThePlaceOfDamagedOnes) {
  DoUndisturbed({"switch 2"});
  Damage("P3.bin", 24725);
  Damage("Gamma.bin", 5279);
  DieInSwitch("switch 2", 0);
}

// The base LUT is read each time: its size and its bytes, for two LUT types.
TEST_F(DeathInDataFiles, FusionOfTheEbookMode) { DieInSwitch("switch 7", 4); }

TEST_F(DeathInDataFiles, OutOfTheGoldenFile) {
  virtualnotebook::PanelDescription other;
  other.serial = {9, 9, 9, 9};
  panel_.Replace(virtualnotebook::MakeEdid(other));
  DieInSwitch("switch 2", 0);
}

// --- User modes ---

class DeathInUserModes : public DeathAtAnyMoment {
 protected:
  // A mode with its fine tuning, and what it shows in each colour.
  DeathInUserModes() {
    const Persistent start = Persistent::Now();
    for (const std::string colour : {"1", "2"}) {
      start.Restore();
      DoUndisturbed({"save Mine%1 " + colour});
      untuned_.push_back(pipeline_);
      DoUndisturbed({"write 1", "save Mine%1 " + colour});
      tuned_.push_back(pipeline_);
      EXPECT_EQ(tuned_.back().lut3D, untuned_.back().lut3D);
      EXPECT_NE(tuned_.back().gammaLut, untuned_.back().gammaLut);
    }
    EXPECT_NE(tuned_[0].lut3D, tuned_[1].lut3D);
    EXPECT_NE(tuned_[0].gammaLut, tuned_[1].gammaLut);
    start.Restore();
    DoUndisturbed({"write 1", "save Mine%1 1"});
  }

  void DieIn(const Deed& deed) {
    const Persistent start = Persistent::Now();
    DoUndisturbed([&] {
      std::vector<std::string> all = deed.preparation;
      all.push_back(deed.command);
      return all;
    }());
    const Persistent finished = Persistent::Now();
    start.Restore();
    DieEverywhere(deed, 9, [&](HostProcess& fresh) {
      ExpectWhole(start, finished);
      ExpectTuningIsKept();
      ASSERT_NO_FATAL_FAILURE(ExpectNothingDamagedIsShown(fresh));
      ASSERT_NO_FATAL_FAILURE(ExpectSavedAnew(fresh));
    });
  }

  // Each value is one of the two, to the letter. The one of a mode may be gone with its key.
  static void ExpectWhole(const Persistent& start, const Persistent& finished) {
    for (const auto& [path, values] : Persistent::Now().keys) {
      for (const auto& [name, value] : values) {
        const auto isIn = [&, &path = path, &name = name, &value = value](const Persistent& state) {
          const auto key = state.keys.find(path);
          return key != state.keys.end() && key->second.contains(name) &&
                 key->second.at(name) == value;
        };
        EXPECT_TRUE(isIn(start) || isIn(finished)) << testsupport::Utf8(path + L" " + name);
      }
    }
  }

  // It moves with the mode, and is whole under one of the two ids at any time.
  static void ExpectTuningIsKept() {
    const auto values = [](const wchar_t* id) {
      return testsupport::ReadKey(HKEY_LOCAL_MACHINE, kTunings + id).size();
    };
    EXPECT_TRUE(values(L"Mine%1") == 5 || values(L"Yours%2") == 5);
  }

  // A mode is shown as one of the two or, where a file is missing or damaged, refused.
  void ExpectNothingDamagedIsShown(HostProcess& fresh) const {
    for (const std::string id : {"Mine%1", "Yours%2"}) {
      ASSERT_EQ(fresh.Call("load"), 0);
      ASSERT_EQ(fresh.Call("register " + id + " 1"), ResultOk);
      const int result = fresh.Call("user " + id);
      const Pipeline shown = PipelineOf(fresh);
      EXPECT_TRUE(IsShown(&Pipeline::lut3D, shown, result)) << id;
      EXPECT_TRUE(IsShown(&Pipeline::gammaLut, shown, result)) << id;
    }
  }

  bool IsShown(std::string Pipeline::*lut, const Pipeline& shown, int result) const {
    return std::ranges::count(tuned_, shown.*lut, lut) > 0 ||
           std::ranges::count(untuned_, shown.*lut, lut) > 0 ||
           (shown.*lut == "-" && result != ResultOk);
  }

  // Whatever was left, saving makes a whole mode of it, and preset modes never knew.
  void ExpectSavedAnew(HostProcess& fresh) const {
    ASSERT_EQ(fresh.Call("load"), 0);
    EXPECT_EQ(fresh.Call("save Mine%1 2"), ResultOk);
    const Pipeline saved = PipelineOf(fresh);
    EXPECT_TRUE(saved == tuned_[1] || saved == untuned_[1]);
    EXPECT_EQ(testsupport::ReadKey(HKEY_LOCAL_MACHINE, kDesigns + L"Mine%1").size(), 17U);
    ASSERT_EQ(fresh.Call("load"), 0);
    ASSERT_EQ(fresh.Call("register Mine%1 2"), ResultOk);
    EXPECT_EQ(fresh.Call("user Mine%1"), ResultOk);
    EXPECT_EQ(PipelineOf(fresh), saved);
    EXPECT_EQ(fresh.Call("switch 2"), ResultOk);
  }

  std::vector<Pipeline> tuned_;    // in each of the two colours
  std::vector<Pipeline> untuned_;  // likewise, before or behind a move of the fine tuning
};

// Directories and all.
TEST_F(DeathInUserModes, SavingTheFirstOne) {
  RemovePersistent();
  virtualnotebook::InstallMachine(machine_);
  DoUndisturbed({"write 1"});
  DieIn({{}, "save Mine%1 1"});
}

TEST_F(DeathInUserModes, SavingAgain) { DieIn({{}, "save Mine%1 2"}); }

TEST_F(DeathInUserModes, ANewColour) { DieIn({{"register Mine%1 1"}, "edit Mine%1 2 Mine%1"}); }

TEST_F(DeathInUserModes, ANewName) { DieIn({{"register Mine%1 1"}, "edit Yours%2 1 Mine%1"}); }

TEST_F(DeathInUserModes, ANewColourAndName) {
  DieIn({{"register Mine%1 1"}, "edit Yours%2 2 Mine%1"});
}

// --- Settings ---

class DeathInSettings : public DeathAtAnyMoment {
 protected:
  static std::vector<std::string> Read(HostProcess& host) {
    EXPECT_EQ(host.Call("load"), 0);
    std::istringstream answer(host.Ask("read"));
    return {std::istream_iterator<std::string>(answer), {}};
  }
};

// They are written one by one: each reads as before or as told, and after a death at a later moment
// none is back at what it was.
TEST_F(DeathInSettings, Writes) {
  DoUndisturbed({"write 1"});
  const Persistent start = Persistent::Now();
  HostProcess host(kMachineHost);
  const std::vector<std::string> before = Read(host);
  DoUndisturbed({"write 2"});
  const std::vector<std::string> after = Read(host);
  const Persistent finished = Persistent::Now();
  start.Restore();
  ASSERT_EQ(before.size(), after.size());

  std::ptrdiff_t newOnes = 0;
  DieEverywhere({{}, "write 2"}, 3, [&](HostProcess& fresh) {
    const std::vector<std::string> left = Read(fresh);
    ASSERT_EQ(left.size(), before.size());
    std::ptrdiff_t count = 0;
    for (size_t i = 0; i < left.size(); ++i) {
      EXPECT_TRUE(left[i] == before[i] || left[i] == after[i]) << i << ": " << left[i];
      count += left[i] == after[i] ? 1 : 0;
    }
    EXPECT_GE(count, newOnes);
    newOnes = count;
    EXPECT_EQ(fresh.Call("write 2"), ResultOk);
    EXPECT_EQ(Persistent::Now().keys, finished.keys);
  });
  EXPECT_GT(newOnes, 20);
}

// A first read seeds the store out of the INI file.
TEST_F(DeathInSettings, Seeding) {
  testsupport::WriteFileBytes(kData + "SetColor.ini", [] {
    const std::string text =
        "[EYEPROTECT]\r\nIsEnableEyeProtect=1\r\n"
        "[BLUEPROTECT]\r\nCurrentBlueProtect=1\r\nCurrentBlueProtectSlider=40\r\n"
        "[TEMPERATURE]\r\nCurrentTemperatureSlider=70\r\n"
        "[CIRCLE]\r\nAngle=30\r\nRadiusScale=0.5\r\n[NATURECOLOR]\r\nIsNatureColor=1\r\n";
    return FileBytes(text.begin(), text.end());
  }());
  const Persistent start = Persistent::Now();
  HostProcess host(kMachineHost);
  const std::vector<std::string> seeded = Read(host);
  const Persistent finished = Persistent::Now();
  ASSERT_NE(finished.keys, start.keys);
  start.Restore();
  DieEverywhere({{}, "read"}, 1, [&](HostProcess& fresh) {
    EXPECT_EQ(Read(fresh), seeded);
    EXPECT_EQ(Persistent::Now().keys, finished.keys);
  });
}

}  // namespace
}  // namespace scenarios
