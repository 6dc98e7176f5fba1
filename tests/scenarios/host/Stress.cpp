#include "scenarios/host/Stress.h"

#include <atomic>
#include <cmath>
#include <cstring>
#include <iostream>
#include <random>
#include <thread>
#include <vector>

#include "velora/VeloraCtlApi.h"

namespace stress {
namespace {

constexpr int kWriters = kProcesses * kThreads;

struct Counts {
  std::atomic<int> operations{0};
  std::atomic<int> reads{0};
  std::atomic<int> rings{0};
  std::atomic<int> wrong{0};
};

WhitePointFineTueInfo Tuning(ColorFieldMode mode) {
  WhitePointFineTueInfo tuning{};
  std::strcpy(tuning.id, kUserMode);
  tuning.mode = mode;
  return tuning;
}

class Worker {
 public:
  Worker(int process, int writer, Counts& counts)
      : firstOfProcess_(process * kThreads + 1), writer_(writer), counts_(counts) {}

  void Run(int operations) {
    std::minstd_rand random(static_cast<unsigned>(writer_));
    for (int n = 0; n < operations; ++n) {
      Operate(static_cast<int>(random() % 10), Written(writer_, n));
      ++counts_.operations;
    }
  }

 private:
  void Operate(int kind, int value) {
    const int featureType = value / 10 % 7;
    const ColorFieldMode mode = value / 10 % 2 == 0 ? P3Mode : USRDESIGN_MODE;
    switch (kind) {
      case 0:
        return Expect(SetWhitePointStatus(value) == ResultOk, "SetWhitePointStatus", value);
      case 1:
        return CheckRead(GetWhitePointStatus(-1), "GetWhitePointStatus");
      case 2:
        return Expect(SetFrameWorkType(value) == ResultOk, "SetFrameWorkType", value);
      case 3:
        return CheckRead(GetFrameWorkType(), "GetFrameWorkType");
      case 4:
        return Expect(SetFeatureSupport(featureType, value) == ResultOk, "SetFeatureSupport",
                      value);
      case 5:
        return CheckFlag(IsFeatureSupport(featureType));
      case 6:
      case 7:
        return kind == 6 ? WriteTuning(mode, value) : ReadTuning(mode);
      default:
        return Ring(kRungTypes[kind - 8]);
    }
  }

  void CheckRead(int value, const char* what) {
    ++counts_.reads;
    Expect(IsWritten(value, 0, kWriters), what, value);
  }

  // A flag is read once a process: it is the seed's, reduced to 1, or what this process has set.
  void CheckFlag(int value) {
    ++counts_.reads;
    Expect(value == 1 || IsWritten(value, firstOfProcess_, firstOfProcess_ + kThreads - 1),
           "IsFeatureSupport", value);
  }

  void WriteTuning(ColorFieldMode mode, int value) {
    WhitePointFineTueInfo tuning = Tuning(mode);
    tuning.r = tuning.g = tuning.b = value + 0.5;
    Expect(SetWhitePointTueValue(&tuning) == ResultOk, "SetWhitePointTueValue", value);
  }

  // A triple is not written at once: each gain stands for itself.
  void ReadTuning(ColorFieldMode mode) {
    WhitePointFineTueInfo tuning = Tuning(mode);
    Expect(GetWhitePointTueValue(&tuning) == ResultOk, "GetWhitePointTueValue", mode);
    for (const double gain : {tuning.r, tuning.g, tuning.b}) {
      Expect(gain - std::floor(gain) == 0.5, "half of a gain", static_cast<int>(gain));
      CheckRead(static_cast<int>(gain), "a gain");
    }
  }

  void Ring(int type) {
    ++counts_.rings;
    Expect(NotifyConfigChange(type) == ResultOk, "NotifyConfigChange", type);
  }

  void Expect(bool right, const char* what, int value) {
    if (!right) {
      ++counts_.wrong;
      std::cerr << "writer " << writer_ << ": " << what << " " << value << std::endl;
    }
  }

  int firstOfProcess_;
  int writer_;
  Counts& counts_;
};

}  // namespace

std::string Run(int process, int threads, int operations) {
  Counts counts;
  for (const int type : kRungTypes) {
    if (InitConfigSyncObject(type) != ResultOk) {
      ++counts.wrong;
    }
  }
  std::vector<std::thread> workers;
  for (int i = 0; i < threads; ++i) {
    workers.emplace_back([process, operations, &counts, writer = process * threads + i + 1] {
      Worker(process, writer, counts).Run(operations);
    });
  }
  for (std::thread& worker : workers) {
    worker.join();
  }
  return std::to_string(counts.operations) + " " + std::to_string(counts.reads) + " " +
         std::to_string(counts.rings) + " " + std::to_string(counts.wrong);
}

}  // namespace stress
