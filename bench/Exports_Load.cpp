// From nothing loaded to the first answer, its log line in the file.
#include "Exports.h"

#include "Harness.h"

namespace bench {

void AddLoadRows() {
  AddTimedBenchmark("load the library and get a setting", kOurs, [](benchmark::State& state) {
    const Ticks start = Now();
    const virtualnotebook::LoadedModule library(L"VeloraCtlApi.dll");
    auto* const get = library.Find<decltype(::GetPSRStatusValue)>("GetPSRStatusValue");
    const Ticks loaded = Now();
    benchmark::DoNotOptimize(get(0));
    const Ticks answered = Now();
    benchmark::DoNotOptimize(get(0));
    const Ticks answeredAgain = Now();
    state.counters["part loading"] = Seconds(loaded - start);
    state.counters["part the first call"] = Seconds(answered - loaded);
    state.counters["part a second call, beyond the sum"] = Seconds(answeredAgain - answered);
    return Seconds(answered - start);
  });
}

}  // namespace bench
