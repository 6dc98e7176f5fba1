// A notebook in software: it stands in for the hardware, and for what Wine lacks, beneath one
// module.
#pragma once

#include <windows.h>

#include <propidl.h>
#include <winsvc.h>
#include <wtsapi32.h>

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "velora/VeloraCtlApi.h"

struct ISensorEvents;

namespace virtualnotebook {

// One line that the module gave to LcdLogMessage.
struct LogLine {
  int level;
  std::wstring text;

  friend bool operator==(const LogLine&, const LogLine&) = default;
};

// One call that the module made through its import table, or of a sensor object's method, with its
// arguments as text: numbers in decimal, texts as they are, predefined registry keys by name
// ("HKEY_LOCAL_MACHINE"), property keys by their number, other pointers, records and what is only
// written as "null" or "pointer". A method's first argument is its object. Functions have the names
// of their headers, methods and CoreKit's functions one qualification: "CoreKit::GetDisplayType",
// "WmiQuery::ExcuteQueryImpl", "ISensorDataReport::GetSensorValue".
struct Call {
  std::string function;
  std::vector<std::wstring> arguments;
};

struct Monitor {
  std::wstring deviceName;    // "\\.\DISPLAY1\Monitor0"
  std::wstring deviceString;  // "Generic PnP Monitor"
  std::wstring deviceID;      // "MONITOR\BOE05EF\{4d36e96e-...}\0001"
  std::wstring deviceKey;
  std::wstring interfacePath;  // takes deviceID's place when a query asks for the device interface
  DWORD stateFlags = DISPLAY_DEVICE_ACTIVE | DISPLAY_DEVICE_ATTACHED;
};

struct Adapter {
  std::wstring deviceName;  // "\\.\DISPLAY1"
  std::wstring deviceString;
  std::vector<Monitor> monitors;
  DWORD stateFlags = DISPLAY_DEVICE_ATTACHED_TO_DESKTOP;
};

// A value that a monitor took over DDC/CI.
struct VcpWrite {
  uint8_t code;
  uint32_t value;
  bool saved = false;  // in the monitor's memory too

  friend bool operator==(const VcpWrite&, const VcpWrite&) = default;
};

// A device behind an HMONITOR as dxva2 knows it.
struct PhysicalMonitor {
  std::wstring description;  // "NVX Studio 27"; cut to 127 characters
  bool hasHandle = true;     // false: shown with INVALID_HANDLE_VALUE
  bool answersDdcci = true;  // false: a built-in panel, or switched off in the monitor's menu
  std::vector<VcpWrite> taken = {};  // in their order

  // What it shows: the value taken last.
  std::optional<uint32_t> Value(uint8_t code) const;
};

// One HMONITOR. Handles are 1, 2, ... in the order of Notebook::desktop.
struct DesktopMonitor {
  std::wstring adapterName;  // szDevice
  DWORD flags = 0;           // MONITORINFOF_PRIMARY: the primary monitor
  std::vector<PhysicalMonitor> physicalMonitors = {};
};

// An array of PHYSICAL_MONITOR that the module got. Its handles are its own and good until it is
// destroyed, by the array at the same address.
struct MonitorArray {
  const void* address;
  size_t desktopIndex;  // of the HMONITOR, in Notebook::desktop
  std::vector<HANDLE> handles;
  unsigned destroyed = 0;  // how often; the module owes one
};

// How the displays are arranged.
struct DisplayTopology {
  std::vector<DISPLAYCONFIG_PATH_INFO> paths;
  std::vector<DISPLAYCONFIG_MODE_INFO> modes;
};

// The colour system's associations, by device name: bare file names. The first profile of a device
// is its default; a device without one answers ERROR_FILE_NOT_FOUND.
using ProfileAssociations = std::map<std::wstring, std::vector<std::wstring>>;

// The display pipeline as the platform's calls left it.
struct PlatformState {
  std::vector<double> lut3D;     // 14739 values; empty: no 3D LUT
  std::vector<double> gammaLut;  // 3072 values; empty: none was set
  std::optional<std::array<double, 9>> pccMatrix;
  std::vector<Color3DInfo> temperatures3D;  // all that were accepted, in their order
  bool initialised = false;
};

// A session that Windows keeps.
struct Session {
  DWORD id;
  WTS_CONNECTSTATE_CLASS state;
};

// A program that was started in the user's session.
struct StartedProcess {
  std::wstring path;
  std::wstring commandLine;

  friend bool operator==(const StartedProcess&, const StartedProcess&) = default;
};

// A question to the firmware.
struct BiosQuery {
  std::array<uint8_t, 64> request;
  bool outputWasZero;  // all of the answer's record, before the call
};

using BiosEventCallback = void (*)(uint32_t eventId);

// What a light sensor reports; a field without a value is not in the report. Values that hold
// memory are copied when the module asks for them, and stay the test's.
struct LightReading {
  std::optional<PROPVARIANT> lux;
  std::optional<PROPVARIANT> kelvin;
};

// A value as light sensors give it: VT_R4.
PROPVARIANT SensorFloat(float value);

// Installed for as long as the object lives; one at a time (std::logic_error). It rewrites the
// import table of one module, so that every import of the module that it knows is recorded, can be
// told to fail, and is answered by the state below where the hardware or Wine has no answer.
// Everything else goes on to the real function. State may be changed, and state and records read,
// at any time when no other thread is in the module, and under Locked() otherwise. The module stays
// loaded for as long as its notebook lives.
class Notebook {
 public:
  explicit Notebook(HMODULE module);
  ~Notebook();

  // Puts it beneath another module too, for the same time: a program that looks at the machine by
  // itself.
  void AlsoBeneath(HMODULE module);

  Notebook(const Notebook&) = delete;
  Notebook& operator=(const Notebook&) = delete;

  // --- The machine ---

  std::vector<uint8_t> firmwareTable;        // "DLUT"; empty: the machine has none
  std::optional<UINT> reportedFirmwareSize;  // what the size query says instead

  std::vector<Adapter> adapters;
  std::vector<DesktopMonitor> desktop;
  DisplayTopology topology;                         // now
  std::optional<DisplayTopology> extendedTopology;  // what extending makes of it; none: the same
  UINT32 topologySlack = 0;  // how many paths and modes more than there are the size query says
  bool sleeps = true;        // false: Sleep returns at once
  ProfileAssociations profiles;
  ProfileAssociations systemProfiles;  // for all users
  bool perUserProfiles = true;         // false: the system takes those for all users
  PlatformState platform;
  uint32_t platformType = 0;
  bool forwardPlatform = false;  // the platform library gets the calls too, and gives the result
  bool forwardLog = false;       // CoreKit gets the log lines too

  bool administrator = false;
  unsigned sessionId = 1;
  std::wstring userSid;  // empty: the look-up fails
  unsigned displayType = 0;

  std::vector<Session> sessions = {{1, WTSActive}};
  std::map<std::wstring, DWORD> services = {{L"Winmgmt", SERVICE_RUNNING}};  // by name: the state
  std::vector<std::wstring> processes;  // image names of the programs that run
  std::wstring hostProgram;             // path of the host's program; empty: this program's own
  bool forwardProcessStart = false;     // CoreKit starts processes, and gives the result

  std::vector<uint8_t> biosAnswer;                // the output's first bytes; empty: WmiKit answers
  BiosEventCallback biosEventCallback = nullptr;  // set while the module's monitor is started

  size_t lightSensors = 1;

  // Where the module's files lie instead: paths that begin with the first, whatever the case, begin
  // with the second. A machine whose profiles' folder is moved installs them there.
  std::map<std::wstring, std::wstring> movedFolders;
  std::wstring Moved(const std::wstring& path) const;
  std::string Moved(const std::string& path) const;

  // In place of "Global\" ahead of the names of events; empty: the machine's own events.
  std::wstring eventPrefix;

  // Values of one property that a WMI query gives, row by row. A query that was not told has no
  // row.
  void AnswerWmi(const std::wstring& nameSpace, const std::wstring& query,
                 const std::wstring& property, std::vector<std::wstring> values);
  void FailWmi(const std::wstring& nameSpace, const std::wstring& query, int status);

  // The firmware's event, on this thread; false when nobody listens.
  bool FireBiosEvent(uint32_t eventId) const;

  // A light sensor's events, on this thread: what the sink that the module set says. None without a
  // sink. state: SensorState of <sensorsapi.h>.
  std::optional<HRESULT> ReportLight(const LightReading& reading, size_t sensor = 0) const;
  std::optional<HRESULT> ReportSensorState(int state, size_t sensor = 0) const;
  ISensorEvents* LightSensorSink(size_t sensor = 0) const;  // null without one

  // --- Faults ---

  // The n-th call (from 1) of the function from now on gives result with this last error instead of
  // doing anything. 0 for n: every call. A registry function's result is its error number.
  // std::invalid_argument for a function that the notebook does not stand in for.
  void FailCall(const std::string& function, unsigned n, uint64_t result, DWORD lastError = 0);
  void ClearFaults();

  // The n-th call of the function throws std::runtime_error(what).
  void ThrowFrom(const std::string& function, unsigned n, const std::string& what);

  // --- Records ---

  std::vector<LogLine> log;
  std::vector<Call> calls;
  std::vector<MonitorArray> monitorArrays;  // all that there were
  std::vector<StartedProcess> startedProcesses;
  std::vector<BiosQuery> biosQueries;

  // Runs ahead of each call's record, on the call's thread; also of the calls that the module's C++
  // runtime makes to wait. It may call anything: its own calls are recorded, and don't run it
  // again.
  std::function<void(const Call&)> onCall;

  size_t CountCalls(const std::string& function) const;
  size_t CountOpenMonitorArrays() const;

  // Handles, memory blocks and references to COM objects that this function or method gave and that
  // have not come back, such as "WTSEnumerateSessionsW" and "ISensorCollection::GetAt". What a sink
  // keeps of an event's objects: "ISensorEvents". std::invalid_argument for a function that gives
  // nothing that is counted.
  size_t CountOpen(const std::string& function) const;

  void ForgetRecords();  // empties log and calls; arrays may still be open

  // Runs action while no stand-in reads or changes state or records; for while the module's threads
  // run. Firmware table, displays and colour system are not guarded. action must call neither the
  // module nor, on a notebook beneath its own program, a function that the notebook stands in for.
  void Locked(const std::function<void()>& action) const;

  // Copies that were made under the same guard.
  std::vector<LogLine> LogNow() const;
  std::vector<Call> CallsNow() const;

 private:
  friend class Recorder;
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace virtualnotebook
