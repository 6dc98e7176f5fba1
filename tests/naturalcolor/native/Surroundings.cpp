#include "naturalcolor/native/Surroundings.h"

#include <unistd.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <mutex>
#include <string_view>
#include <utility>

#include "CoreKit/CoreKit.h"
#include "VeloraPlatform/VeloraPlatform.h"
#include "naturalcolor/NaturalColorAdjustAlgorithm.h"
#include "naturalcolor/RunningSystem.h"
#include "settings/NaturalColorReg.h"
#include "settings/PrinterReg.h"

namespace surroundings {

using testsupport::Event;
using testsupport::What;

namespace {

constexpr auto kRelaxed = std::memory_order_relaxed;

using Record = std::vector<Event>;

std::mutex recordsMutex;  // taken once in a thread's life
std::vector<std::unique_ptr<Record>> records;
std::atomic<uint64_t> nextOrder = 0;

Record& MakeRecord() {
  const std::lock_guard lock(recordsMutex);
  return *records.emplace_back(std::make_unique<Record>());
}

// The thread that waits for the service asks for it outside a delivery.
thread_local bool isDelivering = false;

void Note(What what, double value, std::wstring text = {}) {
  thread_local Record& record = MakeRecord();
  record.push_back({nextOrder.fetch_add(1, kRelaxed), what, value, std::move(text)});
}

bool IsRefused() {
  static std::atomic<uint64_t> deliveries = 0;
  uint64_t mixed = (deliveries.fetch_add(1, kRelaxed) + 1) * 0x9E3779B97F4A7C15U;
  mixed = (mixed ^ (mixed >> 31)) * 0x94D049BB133111EBU;
  return (mixed >> 33) % 1000 < failedDeliveries.load(kRelaxed);
}

bool Deliver(const Color3DInfo& info) {
  const bool refused = IsRefused();
  Note(refused ? What::Refused : What::Delivered, info.r);
  return !refused;
}

}  // namespace

std::vector<Event> TakeEvents() {
  const std::lock_guard lock(recordsMutex);
  std::vector<Event> all;
  for (const auto& record : records) {
    std::ranges::move(*record, std::back_inserter(all));
    record->clear();
  }
  std::ranges::sort(all, {}, &Event::order);
  return all;
}

}  // namespace surroundings

using surroundings::kRelaxed;
using surroundings::Note;
using testsupport::What;

// --- The log ---

void LcdLogMessage(int level, const wchar_t* text) {
  constexpr std::wstring_view kFrame = L"frameIndex_ = ";
  const std::wstring_view line(text);
  Note(What::LogLine, level, std::wstring(line));
  if (line.starts_with(kFrame)) {
    surroundings::dimmingThread.store(gettid(), kRelaxed);
    surroundings::frames.fetch_add(1, kRelaxed);
  }
}

// --- The platform and the exports ---

int PlatformInit() { return 0; }
int PlatformFini() { return 0; }

int GetNatureColorStatus(int) {
  const int status = surroundings::naturalColorStatus.load(kRelaxed);
  Note(What::StatusRead, status);
  return status;
}

void Fusion(uint32_t, const FusionInfo* input, Color3DInfo* output) { *output = input->colorInfo; }

namespace velora {

// --- Settings ---

void NaturalColorReg::GetSensorColor(double* value, double) const {
  *value = surroundings::sensorColor.load(kRelaxed);
}

ResultT NaturalColorReg::SetSensorColor(double value) {
  Note(What::SensorColor, value);
  surroundings::sensorColor.store(value, kRelaxed);
  return ResultOk;
}

ResultT NaturalColorReg::SetNaturalColorRGB(double, double, double) { return ResultOk; }

PrinterReg& PrinterReg::GetInstance() {
  static PrinterReg instance;
  return instance;
}

ResultT PrinterReg::SetPrinterCcts(float cct) {
  Note(What::PrinterCct, cct);
  return ResultOk;
}

// --- The two ways to the panel ---

bool NaturalColorAdjustAlgorithm::IsFoundActiveSession() const {
  return surroundings::isSessionActive.load(kRelaxed);
}

bool NaturalColorAdjustAlgorithm::SetColorTemperByPlatform(const Color3DInfo* info) const {
  return surroundings::Deliver(*info);
}

bool NaturalColorAdjustAlgorithm::SetColorTemperByVeloraAssistant(const Color3DInfo* info) {
  surroundings::isDelivering = true;
  const bool isThere = IsWinmgmtThere();
  surroundings::isDelivering = false;
  return isThere && surroundings::Deliver(*info);
}

bool IsServiceRunning() {
  const bool isRunning = surroundings::isServiceRunning.load(kRelaxed);
  if (!surroundings::isDelivering) {
    surroundings::looksAtService.fetch_add(1, kRelaxed);
    if (isRunning) {
      Note(What::ServiceFound, 0);
    }
  }
  return isRunning;
}

}  // namespace velora
