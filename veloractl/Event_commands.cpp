// Change events between processes.
#include <windows.h>

#include <atomic>
#include <mutex>
#include <thread>

#include "veloractl/Application.h"
#include "veloractl/Commands.h"
#include "veloractl/Features.h"

namespace veloractl {
namespace {

using virtualnotebook::LoadedLibrary;

struct WatchArguments {
  std::vector<std::string> features;
  unsigned count = 1;
  unsigned timeout = 0;  // milliseconds; 0: none
  bool ring = false;
};

constexpr uint32_t kSlice = 50;  // milliseconds after which a waiting thread looks whether to stop

// An event that is open in this process for as long as the object lives.
class OpenEvent {
 public:
  OpenEvent(const LoadedLibrary& library, FeatureType feature)
      : library_(library), feature_(feature) {
    const ResultT result = library.InitConfigSyncObject(feature);
    isOwn_ = result == ResultOk;
    if (result != ResultAlreadyInit) {
      Expect(result, "InitConfigSyncObject");
    }
  }
  ~OpenEvent() {
    if (isOwn_) {
      library_.FiniConfigSyncObject(feature_);
    }
  }
  OpenEvent(const OpenEvent&) = delete;
  OpenEvent& operator=(const OpenEvent&) = delete;

 private:
  const LoadedLibrary& library_;
  FeatureType feature_;
  bool isOwn_ = false;
};

// Waits for several features at once, one thread each.
class Watch {
 public:
  Watch(const LoadedLibrary& library, const WatchArguments& arguments)
      : library_(library), arguments_(arguments), start_(GetTickCount64()) {}

  Json Run(const std::vector<const Feature*>& features) {
    std::vector<std::thread> threads;
    threads.reserve(features.size());
    for (const Feature* feature : features) {
      threads.emplace_back([this, feature] { WaitFor(*feature); });
    }
    for (std::thread& thread : threads) {
      thread.join();
    }
    return events_;
  }

  ResultT Failed() const { return failed_; }

 private:
  bool IsOver() {
    const std::lock_guard guard(mutex_);
    return failed_ != ResultOk || events_.size() >= arguments_.count ||
           (arguments_.timeout != 0 && GetTickCount64() - start_ >= arguments_.timeout);
  }

  void WaitFor(const Feature& feature) {
    while (!IsOver()) {
      const ResultT result = library_.WaitConfigChangeSync(feature.type, kSlice);
      const std::lock_guard guard(mutex_);
      if (result == ResultOk && events_.size() < arguments_.count) {
        const ULONGLONG time = GetTickCount64() - start_;
        events_.push_back({{"feature", feature.name}, {"milliseconds", time}});
        PrintProgress(std::string(feature.name) + " changed after " + std::to_string(time) + " ms");
      } else if (result != ResultOk && result != ResultTimeout) {
        failed_ = result;
      }
    }
  }

  const LoadedLibrary& library_;
  const WatchArguments& arguments_;
  const ULONGLONG start_;
  std::mutex mutex_;
  Json events_ = Json::array();
  ResultT failed_ = ResultOk;
};

Report WatchEvents(const WatchArguments& arguments, Session& session) {
  std::vector<const Feature*> features;
  for (const std::string& name : arguments.features) {
    features.push_back(&FeatureOf(name));
  }
  if (features.empty()) {
    for (const Feature& feature : Features()) {
      features.push_back(&feature);
    }
  }
  const LoadedLibrary& library = session.Library();
  std::vector<std::unique_ptr<OpenEvent>> events;
  for (const Feature* feature : features) {
    events.push_back(std::make_unique<OpenEvent>(library, feature->type));
    if (arguments.ring) {
      Expect(library.NotifyConfigChange(feature->type), "NotifyConfigChange");
    }
  }
  Watch watch(library, arguments);
  const Json seen = watch.Run(features);
  Expect(watch.Failed(), "WaitConfigChangeSync");
  const bool all = seen.size() >= arguments.count;
  return {Json{{"events", seen}}, all ? kDone : kRefused,
          all ? ""
              : "within " + std::to_string(arguments.timeout) + " ms there were " +
                    std::to_string(seen.size()) + " of " + std::to_string(arguments.count) +
                    " changes"};
}

Report Ring(const std::string& name, Session& session) {
  const Feature& feature = FeatureOf(name);
  const LoadedLibrary& library = session.Library();
  const OpenEvent event(library, feature.type);
  Expect(library.NotifyConfigChange(feature.type), "NotifyConfigChange");
  return Json{{"feature", feature.name}, {"rung", true}};
}

}  // namespace

void AddEventCommands(const CommandSet& commands) {
  commands.Add("watch", "Waits for changes that other processes ring", [](CLI::App& app) -> Action {
    const auto arguments = std::make_shared<WatchArguments>();
    app.add_option("FEATURE", arguments->features, "Any of " + FeatureNames() + "; none: all");
    app.add_option("--count", arguments->count, "End after so many changes; else after one")
        ->check(CLI::Range(1U, 1000000U));
    app.add_option("--timeout", arguments->timeout, "End after so many milliseconds; 0: never");
    app.add_flag("--ring", arguments->ring, "Ring each first, to see it work");
    app.footer(
        "A ring wakes one waiter only: don't watch natural-color where a service runs it.\n"
        "  veloractl watch eye-protection temperature --count 5 --timeout 60000");
    return [arguments](Session& session) { return WatchEvents(*arguments, session); };
  });
  commands.Add("ring", "Tells another process that a feature's settings changed",
               [](CLI::App& app) -> Action {
                 const auto feature = std::make_shared<std::string>();
                 app.add_option("FEATURE", *feature, FeatureNames())->required();
                 return [feature](Session& session) { return Ring(*feature, session); };
               });
}

}  // namespace veloractl
