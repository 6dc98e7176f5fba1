// Switches of a colour mode. What Wine lacks comes from the notebook, whose stand-ins keep records:
// their time is the system's here, and more than a real one's.
#include "Exports.h"

#include <memory>
#include <stdexcept>
#include <string>

#include "Harness.h"
#include "Parts.h"

namespace bench {
namespace {

constexpr char kWarm[] = "switch to a mode again";
constexpr char kCold[] = "switch to a mode, the process's first";
constexpr char kFirst[] = "switch to a mode, the machine's first";

void TimeSwitch(Host& host, Parts& parts) {
  host.notebook.ForgetRecords();
  host.stopwatch.Reset();
  const Ticks start = Now();
  const ResultT result = host.library.SetColorField(P3Mode);
  const Ticks all = Now() - start;
  if (result != ResultOk) {
    throw std::runtime_error("the switch failed");
  }
  parts.Add(host.stopwatch, all);
}

void AddWarm(const Machine& machine) {
  AddTimedBenchmark(kWarm, kOurs, [&machine](benchmark::State& state) {
    constexpr int kSwitches = 100;
    Host host(machine);
    host.library.SetColorField(P3Mode);
    Parts parts;
    for (int i = 0; i < kSwitches; ++i) {
      TimeSwitch(host, parts);
    }
    return parts.Report(state);
  });
}

// The library is loaded anew each time. The profile is associated as a switch before left it.
template <typename Prepare>
void AddCold(const char* job, Prepare prepare) {
  AddTimedBenchmark(job, kOurs, [prepare](benchmark::State& state) {
    constexpr int kSwitches = 5;
    Parts parts;
    for (int i = 0; i < kSwitches; ++i) {
      TimeSwitch(*prepare(), parts);
    }
    return parts.Report(state);
  });
}

}  // namespace

void AddSwitchRows(const Machine& machine) {
  AddWarm(machine);
  AddCold(kCold, [&machine] {
    auto host = std::make_unique<Host>(machine);
    const std::wstring profile = L"NVX-P3.icc";
    host->notebook.profiles = {
        {virtualnotebook::MonitorDeviceId(virtualnotebook::kPanelDeviceId), {profile}}};
    return host;
  });
  AddCold(kFirst, [&machine] {
    machine.RemoveBinFiles();
    return std::make_unique<Host>(machine);
  });
}

}  // namespace bench
