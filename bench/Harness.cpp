#include "Harness.h"

#include <openssl/sha.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string_view>
#include <vector>

// A name for callgrind's --toggle-collect: what it calls is counted, and nothing else.
extern "C" __attribute__((noinline)) void RunRowOnce(const std::function<void()>& run) { run(); }

namespace bench {
namespace {

// Shorter than the system's time slices, so that what else runs leaves most repeats alone.
constexpr int kRepeats = 101;
constexpr double kSecondsEach = 0.0005;
constexpr int kTimedRepeats = 31;

// What is hashed of a 3D LUT's block.
constexpr size_t kReferenceSize = 24693;

struct NamedRow {
  std::string name;
  std::function<void()> run;
};

std::vector<NamedRow>& Rows() {
  static std::vector<NamedRow> rows;
  return rows;
}

void Reference(benchmark::State& state) {
  const std::vector<uint8_t> bytes(kReferenceSize, 0xA5);
  std::array<uint8_t, SHA256_DIGEST_LENGTH> hash;
  for (auto _ : state) {
    benchmark::DoNotOptimize(SHA256(bytes.data(), bytes.size(), hash.data()));
    benchmark::ClobberMemory();
  }
}

void Register(const std::string& name, const std::function<void(benchmark::State&)>& measure) {
  benchmark::RegisterBenchmark(name.c_str(), measure)
      ->Repetitions(kRepeats)
      ->MinTime(kSecondsEach)
      ->UseRealTime()
      ->ReportAggregatesOnly();
}

void RegisterReference() { Register("unit", Reference); }

int RunEachOnce(std::string_view wanted) {
  for (const NamedRow& row : Rows()) {
    if (wanted.empty() || wanted == row.name) {
      row.run();
      std::puts(row.name.c_str());
      RunRowOnce(row.run);
    }
  }
  return 0;
}

}  // namespace

void AddBenchmark(const std::string& job, const std::string& contender,
                  const std::function<void(benchmark::State&)>& measure) {
  RegisterReference();
  Register(job + '|' + contender, measure);
}

void AddTimedBenchmark(const std::string& job, const std::string& contender,
                       const std::function<double(benchmark::State&)>& measure) {
  RegisterReference();
  const std::string name = job + '|' + contender;
  benchmark::RegisterBenchmark(name.c_str(),
                               [measure](benchmark::State& state) {
                                 for (auto _ : state) {
                                   state.SetIterationTime(measure(state));
                                 }
                               })
      ->Repetitions(kTimedRepeats)
      ->Iterations(1)
      ->UseManualTime()
      ->ReportAggregatesOnly();
}

void AddOnce(const std::string& job, const std::string& contender, std::function<void()> run) {
  Rows().push_back({job + '|' + contender, std::move(run)});
}

int Run(int argc, char** argv) {
  constexpr std::string_view kOnce = "--once";
  if (argc == 2 && std::string_view(argv[1]).starts_with(kOnce)) {
    return RunEachOnce(std::string_view(argv[1]).substr(kOnce.size()));
  }
  RegisterReference();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
    return 2;
  }
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}

}  // namespace bench
