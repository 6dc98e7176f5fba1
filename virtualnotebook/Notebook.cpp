#include "virtualnotebook/Notebook.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <list>
#include <stdexcept>
#include <utility>

#include "virtualnotebook/Answers.h"
#include "virtualnotebook/ImportRedirection.h"
#include "virtualnotebook/Imports.h"
#include "virtualnotebook/Recorder.h"
#include "virtualnotebook/Wmi.h"

namespace virtualnotebook {
namespace {

std::atomic<Notebook*> installed;

// A fault waiting for its call.
struct PlannedFault {
  std::string function;
  unsigned n;  // 0: every call
  Fault fault;
  unsigned calls = 0;
};

// What CountOpen counts: functions and methods that give something which has to come back.
constexpr std::array<const char*, 10> kGivers = {"WTSEnumerateSessionsW",
                                                 "WTSQuerySessionInformationW",
                                                 "OpenSCManagerW",
                                                 "OpenServiceW",
                                                 "CreateToolhelp32Snapshot",
                                                 "CoCreateInstance",
                                                 "ISensorManager::GetSensorsByCategory",
                                                 "ISensorCollection::GetAt",
                                                 "ISensorDataReport::GetSensorValue",
                                                 "ISensorEvents"};

void RequireKnown(const std::string& function) {
  const auto imports = Imports();
  if (std::ranges::none_of(imports, [&](const auto& known) { return known.name == function; }) &&
      std::ranges::count(SensorMethods(), function) == 0) {
    throw std::invalid_argument("the notebook does not stand in for " + function);
  }
}

// True on a thread that runs onCall. Not thread_local: the C++ runtime makes that of functions that
// can be redirected.
class OnCallFlag {
 public:
  bool IsSet() const { return TlsGetValue(slot_) != nullptr; }
  void Set(bool value) const {
    TlsSetValue(slot_, value ? const_cast<OnCallFlag*>(this) : nullptr);
  }

 private:
  const DWORD slot_ = TlsAlloc();
};
const OnCallFlag inOnCall;

void RunOnCall(const Notebook& notebook, const Call& call) {
  std::function<void(const Call&)> onCall;
  if (!inOnCall.IsSet()) {
    const NotebookGuard guard(TheLock());
    onCall = notebook.onCall;
  }
  if (!onCall) {
    return;
  }
  inOnCall.Set(true);
  try {
    onCall(call);
  } catch (...) {
    inOnCall.Set(false);
    throw;
  }
  inOnCall.Set(false);
}

}  // namespace

struct Notebook::Impl {
  std::vector<PlannedFault> faults;
  WmiAnswers wmi;
  GivenHandles handles;
  std::shared_ptr<SensorBoard> sensors = std::make_shared<SensorBoard>();
  std::list<ImportRedirection> redirections;
};

NotebookLock& TheLock() {
  static constinit NotebookLock lock;
  return lock;
}

std::optional<uint32_t> PhysicalMonitor::Value(uint8_t code) const {
  const auto last = std::find_if(taken.rbegin(), taken.rend(),
                                 [=](const VcpWrite& write) { return write.code == code; });
  return last == taken.rend() ? std::nullopt : std::optional(last->value);
}

Notebook::Notebook(HMODULE module) : impl_(std::make_unique<Impl>()) {
  Notebook* none = nullptr;
  if (!installed.compare_exchange_strong(none, this)) {
    throw std::logic_error("there is a notebook already");
  }
  try {
    AlsoBeneath(module);
  } catch (...) {
    installed = nullptr;
    throw;
  }
}

void Notebook::AlsoBeneath(HMODULE module) { impl_->redirections.emplace_back(module, Imports()); }

Notebook::~Notebook() {
  impl_->redirections.clear();
  installed = nullptr;
}

void Notebook::AnswerWmi(const std::wstring& nameSpace, const std::wstring& query,
                         const std::wstring& property, std::vector<std::wstring> values) {
  const NotebookGuard guard(TheLock());
  impl_->wmi.Answer(nameSpace, query, property, std::move(values));
}

void Notebook::FailWmi(const std::wstring& nameSpace, const std::wstring& query, int status) {
  const NotebookGuard guard(TheLock());
  impl_->wmi.Fail(nameSpace, query, status);
}

void Notebook::FailCall(const std::string& function, unsigned n, uint64_t result, DWORD lastError) {
  RequireKnown(function);
  const NotebookGuard guard(TheLock());
  impl_->faults.push_back({function, n, {result, lastError, std::nullopt}});
}

void Notebook::ThrowFrom(const std::string& function, unsigned n, const std::string& what) {
  RequireKnown(function);
  const NotebookGuard guard(TheLock());
  impl_->faults.push_back({function, n, {0, 0, what}});
}

void Notebook::ClearFaults() {
  const NotebookGuard guard(TheLock());
  impl_->faults.clear();
}

size_t Notebook::CountCalls(const std::string& function) const {
  RequireKnown(function);
  const NotebookGuard guard(TheLock());
  return static_cast<size_t>(
      std::ranges::count_if(calls, [&](const Call& call) { return call.function == function; }));
}

size_t Notebook::CountOpenMonitorArrays() const {
  const NotebookGuard guard(TheLock());
  return static_cast<size_t>(std::ranges::count(monitorArrays, 0U, &MonitorArray::destroyed));
}

size_t Notebook::CountOpen(const std::string& function) const {
  if (std::ranges::count(kGivers, function) == 0) {
    throw std::invalid_argument("the notebook does not count what comes from " + function);
  }
  const NotebookGuard guard(TheLock());
  return impl_->handles.Count(function) + impl_->sensors->references[function];
}

void Notebook::ForgetRecords() {
  const NotebookGuard guard(TheLock());
  log.clear();
  calls.clear();
}

void Notebook::Locked(const std::function<void()>& action) const {
  const NotebookGuard guard(TheLock());
  action();
}

std::vector<LogLine> Notebook::LogNow() const {
  const NotebookGuard guard(TheLock());
  return log;
}

std::vector<Call> Notebook::CallsNow() const {
  const NotebookGuard guard(TheLock());
  return calls;
}

Notebook* Recorder::Current() { return installed; }

std::optional<Fault> Recorder::Record(Notebook& notebook, Call call) {
  RunOnCall(notebook, call);
  const NotebookGuard guard(TheLock());
  std::optional<Fault> due;
  for (PlannedFault& planned : notebook.impl_->faults) {
    if (planned.function == call.function) {
      ++planned.calls;
      if (!due && (planned.n == 0 || planned.n == planned.calls)) {
        due = planned.fault;
      }
    }
  }
  notebook.calls.push_back(std::move(call));
  return due;
}

WmiAnswers& Recorder::Wmi(Notebook& notebook) { return notebook.impl_->wmi; }

GivenHandles& Recorder::Handles(Notebook& notebook) { return notebook.impl_->handles; }

const std::shared_ptr<SensorBoard>& Recorder::Sensors(const Notebook& notebook) {
  return notebook.impl_->sensors;
}

}  // namespace virtualnotebook
