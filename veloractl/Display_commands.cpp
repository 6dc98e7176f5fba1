// Displays: which there are, what the way to external monitors would do, and the extended desktop.
#include <windows.h>

#include <physicalmonitorenumerationapi.h>

#include <chrono>
#include <functional>

#include "colorfield/MonitorConfiguration.h"
#include "veloractl/Application.h"
#include "veloractl/Commands.h"
#include "veloractl/Features.h"
#include "veloractl/Shown.h"
#include "veloractl/VirtualMachine.h"
#include "virtualnotebook/TestChart.h"
#include "virtualnotebook/tour/Pipeline.h"

namespace veloractl {
namespace {

// What the library looks for in a monitor's description or interface path, and what it writes.
constexpr wchar_t kMakerMark[] = L"NVX";
constexpr BYTE kColorModeCode = 0xE0;
struct ColorModeValue {
  const char* mode;
  DWORD value;
};
constexpr ColorModeValue kColorModeValues[] = {{"srgb", 6}, {"p3", 1}};

bool IsMakers(const std::wstring& name) { return name.find(kMakerMark) != std::wstring::npos; }

std::vector<HMONITOR> DesktopMonitors() {
  std::vector<HMONITOR> monitors;
  EnumDisplayMonitors(
      nullptr, nullptr,
      [](HMONITOR monitor, HDC, RECT*, LPARAM list) -> BOOL {
        reinterpret_cast<std::vector<HMONITOR>*>(list)->push_back(monitor);
        return TRUE;
      },
      reinterpret_cast<LPARAM>(&monitors));
  return monitors;
}

std::vector<DISPLAY_DEVICEW> DevicesBelow(const wchar_t* parent, DWORD flags) {
  std::vector<DISPLAY_DEVICEW> devices;
  DISPLAY_DEVICEW device = {};
  device.cb = sizeof device;
  for (DWORD index = 0; EnumDisplayDevicesW(parent, index, &device, flags); ++index) {
    devices.push_back(device);
    device.cb = sizeof device;
  }
  return devices;
}

std::string Text(const wchar_t* text) { return ToUtf8(std::wstring(text)); }

// A call of the system, with what it gave and how long it took.
Json Timed(const char* call, const std::function<BOOL()>& run, bool& succeeded) {
  SetLastError(ERROR_SUCCESS);
  const auto start = std::chrono::steady_clock::now();
  succeeded = run() == TRUE;
  const DWORD error = GetLastError();
  const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - start;
  return {{"call", call},
          {"succeeded", succeeded},
          {"lastError", succeeded ? 0 : error},
          {"milliseconds", time.count()}};
}

// The library's two passes over the monitors, call by call. Without a value nothing is written, and
// each of the maker's monitors counts as one that takes the value.
class Probe {
 public:
  explicit Probe(const ColorModeValue* write) : write_(write) {}

  Json Run() {
    const std::vector<HMONITOR> monitors = DesktopMonitors();
    for (const bool byIdentity : {false, true}) {
      isReached_ = !(byIdentity && matched_);
      for (size_t i = 0; i < monitors.size(); ++i) {
        LookAt(monitors[i], i, byIdentity);
        PrintProgress("pass " + std::string(byIdentity ? "identity" : "description") + ": " +
                      std::to_string(i + 1) + " of " + std::to_string(monitors.size()));
      }
    }
    return {{"written", write_ == nullptr ? Json() : Json(write_->mode)},
            {"matched", matched_},
            {"monitors", rows_},
            {"calls", calls_}};
  }

 private:
  struct Row {
    std::string display;
    const char* pass;
    Json descriptions = Json::array();
    bool matches = false;
    bool goesOn = false;
    std::string why;
  };

  void Call(const Row& row, const char* name, const std::function<BOOL()>& run, bool& succeeded) {
    Json call = {{"pass", row.pass}, {"display", row.display}};
    call.update(Timed(name, run, succeeded));
    calls_.push_back(std::move(call));
  }

  void LookAt(HMONITOR monitor, size_t index, bool byIdentity) {
    MONITORINFOEXW info = {};
    info.cbSize = sizeof info;
    const bool known = GetMonitorInfoW(monitor, &info) != FALSE;
    Row row;
    row.display = known ? Text(info.szDevice) : "monitor " + std::to_string(index + 1);
    row.pass = byIdentity ? "identity" : "description";
    Walk(monitor, byIdentity, known ? info.szDevice : L"", row);
    rows_.push_back({{"pass", row.pass},
                     {"display", row.display},
                     {"descriptions", row.descriptions},
                     {"matches", row.matches},
                     {"reached", isReached_},
                     {"outcome", row.why}});
    matched_ = matched_ || (isReached_ && row.matches);
    isReached_ = isReached_ && row.goesOn;
  }

  void Walk(HMONITOR monitor, bool byIdentity, const wchar_t* device, Row& row) {
    if (byIdentity && !HasMakersIdentity(device)) {
      row.why = "its interface path isn't the maker's: the library stops here";
      return;
    }
    DWORD count = 0;
    bool succeeded = false;
    Call(
        row, "GetNumberOfPhysicalMonitorsFromHMONITOR",
        [&] { return GetNumberOfPhysicalMonitorsFromHMONITOR(monitor, &count); }, succeeded);
    std::vector<PHYSICAL_MONITOR> monitors(count);
    if (succeeded) {
      Call(
          row, "GetPhysicalMonitorsFromHMONITOR",
          [&] { return GetPhysicalMonitorsFromHMONITOR(monitor, count, monitors.data()); },
          succeeded);
    }
    if (!succeeded) {
      row.why = "the system doesn't tell its monitors: the library stops here";
      return;
    }
    row.why = "not the maker's: the library stops here";
    for (const PHYSICAL_MONITOR& physical : monitors) {
      LookAt(physical, byIdentity, row);
    }
    DestroyPhysicalMonitors(count, monitors.data());
  }

  void LookAt(const PHYSICAL_MONITOR& physical, bool byIdentity, Row& row) {
    const PHYSICAL_MONITOR copy = physical;  // a packed record
    const std::wstring description = copy.szPhysicalMonitorDescription;
    row.descriptions.push_back(ToUtf8(description));
    const HANDLE handle = copy.hPhysicalMonitor;
    if (handle == INVALID_HANDLE_VALUE) {
      row.why = "no handle: passed over";
      return;
    }
    if (!byIdentity && !IsMakers(description)) {
      return;
    }
    row.matches = true;
    if (write_ == nullptr || !isReached_) {
      row.goesOn = true;
      row.why = "would get the value, and the library goes on if it takes it";
      return;
    }
    bool succeeded = false;
    Call(
        row, "SetVCPFeature", [&] { return SetVCPFeature(handle, kColorModeCode, write_->value); },
        succeeded);
    row.why = "it refused the value: the library stops here";
    if (succeeded) {
      Call(
          row, "SaveCurrentSettings", [&] { return SaveCurrentSettings(handle); }, succeeded);
      row.goesOn = succeeded;
      row.why = succeeded ? "it took the value and keeps it"
                          : "it took the value and didn't keep it: the library stops here";
    }
  }

  static bool HasMakersIdentity(const wchar_t* device) {
    for (const DISPLAY_DEVICEW& monitor : DevicesBelow(device, EDD_GET_DEVICE_INTERFACE_NAME)) {
      if (IsMakers(monitor.DeviceID)) {
        return true;
      }
    }
    return false;
  }

  const ColorModeValue* write_;
  bool matched_ = false;
  bool isReached_ = true;
  Json rows_ = Json::array();
  Json calls_ = Json::array();
};

Json AllMonitors() {
  Json rows = Json::array();
  for (const DISPLAY_DEVICEW& adapter : DevicesBelow(nullptr, 0)) {
    for (const DISPLAY_DEVICEW& monitor : DevicesBelow(adapter.DeviceName, 0)) {
      constexpr DWORD kInUse = DISPLAY_DEVICE_ACTIVE | DISPLAY_DEVICE_ATTACHED;
      rows.push_back({{"display", Text(adapter.DeviceName)},
                      {"adapter", Text(adapter.DeviceString)},
                      {"monitor", Text(monitor.DeviceString)},
                      {"id", Text(monitor.DeviceID)},
                      {"inUse", (monitor.StateFlags & kInUse) == kInUse}});
    }
  }
  return rows;
}

struct MonitorsArguments {
  bool probe = false;
  std::string write;
};

Report Monitors(const MonitorsArguments& arguments, Session& session) {
  session.Library();  // a virtual notebook has its displays from then on
  const ColorModeValue* write = nullptr;
  for (const ColorModeValue& value : kColorModeValues) {
    write = arguments.write == value.mode ? &value : write;
  }
  if (!arguments.write.empty() && write == nullptr) {
    throw Failure(kBadArguments, "monitors know the modes srgb and p3 only");
  }
  Json report = {{"monitors", AllMonitors()}};
  if (arguments.probe || write != nullptr) {
    report["probe"] = Probe(write).Run();
  }
  return report;
}

Report Extend(Session& session) {
  PrintProgress("extending takes three seconds");
  if (!session.Library().SetMonitorExtendMode()) {
    throw Failure(kRefused,
                  "SetMonitorExtendMode: the arrangement could not be read or written back, as on "
                  "a machine with one display");
  }
  return Json{{"extended", true}};
}

Report Vendor(Session& session) {
  char vendor[5] = "";
  session.StartedLibrary().GetVendor(vendor, sizeof vendor);
  if (vendor[0] == '\0') {
    throw Failure(kRefused, "GetVendor: the panel could not be identified");
  }
  return Json{{"vendor", vendor}};
}

// --- shown ---

Report ShowPanel(const std::string& png, Session& session) {
  VirtualMachine* const machine = session.Virtual();
  if (machine == nullptr) {
    throw Failure(kBadArguments, "only a virtual notebook's panel can be looked at: --virtual");
  }
  Json report = WithShown(session, Json::object());
  if (!png.empty()) {
    const virtualnotebook::Image chart = virtualnotebook::DrawTestChart();
    virtualnotebook::Image shown = chart;
    const auto pipeline = std::make_unique<softwarepanel::State>();
    tour::TakePipeline(machine->Notebook(), *pipeline);
    softwarepanel::Render(*pipeline, chart.pixels, shown.pixels);
    try {
      virtualnotebook::WritePng(ToCodePage(png), shown, machine->Data().panel);
    } catch (const std::runtime_error&) {
      throw Failure(kUnavailable, "can't write " + png);
    }
    report["png"] = png;
  }
  return report;
}

}  // namespace

void AddDisplayCommands(const CommandSet& commands) {
  commands.Add(
      "monitors", "The displays; --probe: what the way to external monitors would do",
      [](CLI::App& app) -> Action {
        const auto arguments = std::make_shared<MonitorsArguments>();
        app.add_flag("--probe", arguments->probe,
                     "Both passes over the monitors, call by call; writes nothing");
        app.add_option("--write", arguments->write,
                       "srgb or p3: the probe writes it, into a memory that wears");
        app.footer(
            "The library asks the monitors in the system's order, first by description,\n"
            "then, if none matched, by interface path, and stops at the first that is not\n"
            "the maker's or that refuses. \"reached\" says how far it would come.");
        return [arguments](Session& session) { return Monitors(*arguments, session); };
      });
  commands.Add("extend", "Extends the desktop over all displays",
               [](CLI::App&) -> Action { return Extend; });
  commands.Add("vendor", "The panel's maker, three letters and #",
               [](CLI::App&) -> Action { return Vendor; });
  commands.Add("shown", "What a virtual notebook's panel shows", [](CLI::App& app) -> Action {
    const auto png = std::make_shared<std::string>();
    app.add_option("--png", *png, "A picture of a test chart on the panel")->type_name("FILE");
    return [png](Session& session) { return ShowPanel(*png, session); };
  });
}

}  // namespace veloractl
