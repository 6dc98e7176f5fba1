// A call's time by where it went.
#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

#include "ImportStopwatch.h"

namespace bench {

double MedianSeconds(std::vector<Ticks> times);

// Takes the times of many calls; their medians become counters of the row, in seconds, named
// "part ...".
class Parts {
 public:
  // A call that took all of this.
  void Add(const ImportStopwatch& stopwatch, Ticks all);

  // Gives the median of all, in seconds.
  double Report(benchmark::State& state) const;

 private:
  std::vector<Ticks> all_;
  std::map<std::string, std::vector<Ticks>> parts_;
};

}  // namespace bench
