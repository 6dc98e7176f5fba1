// A setting, read and written, beside the registry calls that it cannot avoid.
#include "Exports.h"

#include <windows.h>

#include "Harness.h"
#include "Parts.h"

namespace bench {
namespace {

constexpr char kGet[] = "get a setting";
constexpr char kSet[] = "set a setting";
constexpr wchar_t kKey[] = L"SOFTWARE\\Norvex\\Velora\\EyeProtect";
constexpr wchar_t kValue[] = L"PSRIsEnable";

void Discard(int, const wchar_t*) {}

void* logFunction;
const virtualnotebook::ImportedFunction kLog[] = {{"CoreKit.dll", "LcdLogMessage", "LcdLogMessage",
                                                   reinterpret_cast<void*>(Discard), &logFunction}};

// The library on the real system; its lines are composed and go nowhere.
struct Quiet {
  const virtualnotebook::LoadedModule module{L"VeloraCtlApi.dll"};
  const virtualnotebook::ImportRedirection noLog{module.Handle(), kLog};
  ImportStopwatch stopwatch{module.Handle()};
  decltype(::GetPSRStatusValue)* const get =
      module.Find<decltype(::GetPSRStatusValue)>("GetPSRStatusValue");
  decltype(::SetPSRStatusValue)* const set =
      module.Find<decltype(::SetPSRStatusValue)>("SetPSRStatusValue");
};

DWORD BareGet() {
  HKEY key = nullptr;
  DWORD value = 0;
  DWORD size = sizeof value;
  if (RegOpenKeyW(HKEY_LOCAL_MACHINE, kKey, &key) == ERROR_SUCCESS) {
    RegQueryValueExW(key, kValue, nullptr, nullptr, reinterpret_cast<BYTE*>(&value), &size);
    RegCloseKey(key);
  }
  return value;
}

void BareSet(DWORD value) {
  HKEY key = nullptr;
  if (RegCreateKeyExW(HKEY_LOCAL_MACHINE, kKey, 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_WRITE,
                      nullptr, &key, nullptr) == ERROR_SUCCESS) {
    RegSetValueExW(key, kValue, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&value), sizeof value);
    RegCloseKey(key);
  }
}

// In turns, so that both see the same moments of the system; each row has one of the two times.
template <typename Ours, typename Bare>
void AddInTurns(const char* job, Ours ours, Bare bare) {
  const auto measure = [ours, bare](benchmark::State& state, bool wantOurs) {
    Quiet library;
    ours(library);
    constexpr int kTurns = 200;
    Parts parts;
    std::vector<Ticks> bareTimes;
    for (int turn = 0; turn < kTurns; ++turn) {
      library.stopwatch.Reset();
      const Ticks start = Now();
      ours(library);
      parts.Add(library.stopwatch, Now() - start);
      const Ticks bareStart = Now();
      bare();
      bareTimes.push_back(Now() - bareStart);
    }
    return wantOurs ? parts.Report(state) : MedianSeconds(bareTimes);
  };
  AddTimedBenchmark(job, kOurs, [measure](auto& state) { return measure(state, true); });
  AddTimedBenchmark(job, "the bare registry calls",
                    [measure](auto& state) { return measure(state, false); });
}

}  // namespace

void AddSettingsRows() {
  AddInTurns(
      kSet, [](const Quiet& library) { library.set(1); }, [] { BareSet(1); });
  AddInTurns(
      kGet, [](const Quiet& library) { benchmark::DoNotOptimize(library.get(0)); },
      [] { benchmark::DoNotOptimize(BareGet()); });
}

}  // namespace bench
