// Rows of the table that tools/bench prints: one contender at one job each, measured by Google
// Benchmark between two measurements of the unit.
#pragma once

#include <benchmark/benchmark.h>

#include <functional>
#include <optional>
#include <string>
#include <utility>

namespace bench {

// The library itself, and the simplest code that does the same; every other contender is a peer.
inline constexpr char kOurs[] = "ours";
inline constexpr char kPlainForm[] = "plain form";

// Measures a function that takes the state: its loop, its counters.
void AddBenchmark(const std::string& job, const std::string& contender,
                  const std::function<void(benchmark::State&)>& measure);

// The same for a function that gives the time itself, in seconds.
void AddTimedBenchmark(const std::string& job, const std::string& contender,
                       const std::function<double(benchmark::State&)>& measure);

// The row once, for tools that count instructions.
void AddOnce(const std::string& job, const std::string& contender, std::function<void()> run);

// offBy: the largest difference of its result from the plain form's; none where there is nothing to
// compare.
template <typename Run>
void AddRow(const std::string& job, const std::string& contender, std::optional<double> offBy,
            Run run) {
  AddOnce(job, contender, run);
  AddBenchmark(job, contender, [offBy, run = std::move(run)](benchmark::State& state) mutable {
    for (auto _ : state) {
      run();
      benchmark::ClobberMemory();
    }
    if (offBy) {
      state.counters["off_by"] = *offBy;
    }
  });
}

// A copy of what a row gives, which a row that is measured keeps to itself.
template <typename Run>
auto ResultOf(Run run) {
  return run();
}

// Runs what was added, or with --once[=ROW] each row twice, the second time inside RunRowOnce.
// Gives the program's result.
int Run(int argc, char** argv);

}  // namespace bench
