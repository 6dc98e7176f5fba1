#include "Parts.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace bench {
namespace {

constexpr char kOwn[] = "its own";

std::string PartOf(const ImportStopwatch::Function& function) {
  const auto is = [&](const char* library) {
    return _stricmp(function.library.c_str(), library) == 0;
  };
  if (function.name == "LcdLogMessage") return "log lines";
  if (function.name.starts_with("Reg")) return "registry";
  if (is("mscms.dll")) return "colour system";
  if (is("VeloraPlatform.dll")) return "platform";
  if (is("WmiKit.dll") || is("USER32.dll") || is("dxva2.dll")) return "displays and WMI";
  if (is("KERNEL32.dll")) return "files and processes";
  return is("CoreKit.dll") ? "CoreKit" : "other";
}

}  // namespace

double MedianSeconds(std::vector<Ticks> times) {
  const auto middle = times.begin() + static_cast<ptrdiff_t>(times.size() / 2);
  std::ranges::nth_element(times, middle);
  return Seconds(*middle);
}

void Parts::Add(const ImportStopwatch& stopwatch, Ticks all) {
  all_.push_back(all);
  parts_[kOwn].push_back(all - std::min(all, stopwatch.Spent() + stopwatch.Overhead()));
  std::map<std::string, Ticks> elsewhere;
  for (const auto& function : stopwatch.Functions()) {
    elsewhere[PartOf(function)] += function.ticks;
  }
  for (const auto& [part, ticks] : elsewhere) {
    parts_[part].push_back(ticks);
  }
}

double Parts::Report(benchmark::State& state) const {
  for (const auto& [part, ticks] : parts_) {
    state.counters["part " + part] = MedianSeconds(ticks);
  }
  return MedianSeconds(all_);
}

}  // namespace bench
