// The fusion of the features that tint the panel, and the frame of a dimming that ends in it.
#include "Exports.h"

#include <algorithm>
#include <vector>

#include "Harness.h"
#include "Parts.h"

namespace bench {
namespace {

constexpr char kFusion[] = "fuse natural colour with the other features";
constexpr char kFrame[] = "a frame of natural colour";

// All features are there, switched on, and merged.
void SetUpFeatures(virtualnotebook::HostedLibrary& library) {
  for (const int feature : {FEATURE_TYPE_WHITEPOINT, FEATURE_TYPE_EYE_PROTECT,
                            FEATURE_TYPE_TEMPERATURE, FEATURE_TYPE_NATURAL_COLOR}) {
    library.SetFeatureSupport(feature, 1);
  }
  library.SetWhitePointStatus(1);
  library.SetEyeProtectStatus(1);
  library.SetEyeProtectValue(200);
  const ColorTemperatureConfig point = {100, 60};
  library.SetColorTemperatureConfig(&point);
  library.SetNatureColorStatus(1);
}

// What one dimming's frames took: from the first call of one to the first call of the next.
class FrameTimes {
 public:
  explicit FrameTimes(Host& host) : host_(host) {
    host.notebook.onCall = [this](const virtualnotebook::Call& call) {
      if (call.function == "WTSEnumerateSessionsW") {
        BeginFrame();
      }
    };
  }
  ~FrameTimes() { host_.notebook.onCall = nullptr; }
  FrameTimes(const FrameTimes&) = delete;
  FrameTimes& operator=(const FrameTimes&) = delete;

  const std::vector<Ticks>& All() const { return all_; }
  const std::vector<Ticks>& Own() const { return own_; }

 private:
  struct Moment {
    Ticks time;
    Ticks elsewhere;
  };

  void BeginFrame() {
    host_.stopwatch.Follow();
    const Moment now = {Now(), host_.stopwatch.Spent() + host_.stopwatch.Overhead()};
    if (begun_.time != 0) {
      const Ticks all = now.time - begun_.time;
      all_.push_back(all);
      own_.push_back(all - std::min(all, now.elsewhere - begun_.elsewhere));
    }
    begun_ = now;
    host_.notebook.ForgetRecords();
  }

  Host& host_;
  Moment begun_ = {};
  std::vector<Ticks> all_;
  std::vector<Ticks> own_;
};

constexpr int kFrames = 30;  // of a dimming, and one more that ends it

// Two readings in turn; gives a dimming's frames.
void Dim(Host& host, float kelvin) {
  host.notebook.platform.temperatures3D.clear();
  host.notebook.ReportLight(
      {.lux = virtualnotebook::SensorFloat(500), .kelvin = virtualnotebook::SensorFloat(kelvin)});
  for (size_t frames = 0; frames <= kFrames;) {
    Sleep(1);
    host.notebook.Locked([&] { frames = host.notebook.platform.temperatures3D.size(); });
  }
  Sleep(20);  // the last frame's line
}

}  // namespace

void AddFusionRows(const Machine& machine) {
  AddTimedBenchmark(kFusion, kOurs, [&machine](benchmark::State& state) {
    constexpr int kCalls = 50;
    Host host(machine);
    SetUpFeatures(host.library);
    const FusionInfo input = {.status = 1, .colorInfo = {0.9, 0.95, 1.0, 0, 0}};
    Color3DInfo output = {};
    host.library.Fusion(FEATURE_TYPE_NATURAL_COLOR, &input, &output);
    Parts parts;
    for (int i = 0; i < kCalls; ++i) {
      host.notebook.ForgetRecords();
      host.stopwatch.Reset();
      const Ticks start = Now();
      host.library.Fusion(FEATURE_TYPE_NATURAL_COLOR, &input, &output);
      parts.Add(host.stopwatch, Now() - start);
    }
    return parts.Report(state);
  });
}

void AddFrameRows(const Machine& machine) {
  AddTimedBenchmark(kFrame, kOurs, [&machine](benchmark::State& state) {
    Host host(machine);
    host.notebook.sleeps = false;
    SetUpFeatures(host.library);
    std::vector<CctAlgoInfo> curve = {
        {3000, 1, 0.75, 0.5}, {5000, 1, 0.875, 0.75}, {6500, 1, 1, 1}, {8000, 0.75, 0.875, 1}};
    const NatureColorDataIn dataIn = {.frameCount = kFrames,
                                      .frameTime = 0,
                                      .dimmingThreshold = 100,
                                      .methodVersion = 0,
                                      .minLuma = 4000,
                                      .luminanceThreshold = 50,
                                      .monitorType = 0,
                                      .executionType = 1,
                                      .algoInfo = curve.data(),
                                      .algoInfoCnt = static_cast<int32_t>(curve.size())};
    host.library.InitNatureColor(&dataIn);
    Dim(host, 3500);  // also whatever the start dims to
    double seconds = 0;
    {
      const FrameTimes times(host);
      Dim(host, 7500);
      state.counters["part its own"] = MedianSeconds(times.Own());
      seconds = MedianSeconds(times.All());
    }
    host.library.FiniNatureColor();
    return seconds;
  });
}

}  // namespace bench
