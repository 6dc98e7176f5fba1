#include "faults/FaultSweep.h"

#include <winternl.h>

#include <algorithm>
#include <bit>
#include <cstdio>
#include <iterator>
#include <span>
#include <stdexcept>
#include <utility>

#include "support/NotebookTest.h"

namespace faults {
namespace {

constexpr unsigned kMaxCalls = 400;  // of one function in one run

constexpr auto kInvalidHandle = static_cast<uint64_t>(-1);
constexpr auto kMinusOne = static_cast<uint64_t>(-1);

// COM's results are 32 bits wide.
constexpr FaultKind Com(HRESULT result) { return {static_cast<uint32_t>(result)}; }

const std::map<std::string, std::vector<FaultKind>>& AllFaultKinds() {
  static const std::vector<FaultKind> refused = {{FALSE, ERROR_ACCESS_DENIED}};
  static const std::vector<FaultKind> error = {{1}};
  static const std::vector<FaultKind> text = {{0}};  // an empty one
  static const std::vector<FaultKind> platform = {{1}, {7}, {kMinusOne}};
  static const std::vector<FaultKind> minusOne = {{kMinusOne, ERROR_ACCESS_DENIED}};
  static const std::vector<FaultKind> display = {
      {ERROR_ACCESS_DENIED}, {ERROR_GEN_FAILURE}, {ERROR_INSUFFICIENT_BUFFER}};
  static const std::vector<FaultKind> com = {Com(E_FAIL), Com(E_ACCESSDENIED)};
  static const std::map<std::string, std::vector<FaultKind>> kinds = {
      // The registry's functions give their error.
      {"RegOpenKeyW", {{ERROR_FILE_NOT_FOUND}, {ERROR_ACCESS_DENIED}}},
      {"RegOpenKeyExA", {{ERROR_FILE_NOT_FOUND}, {ERROR_ACCESS_DENIED}}},
      {"RegCreateKeyExW", {{ERROR_ACCESS_DENIED}, {ERROR_KEY_DELETED}}},
      {"RegQueryValueExW", {{ERROR_FILE_NOT_FOUND}, {ERROR_MORE_DATA}}},
      {"RegQueryValueExA", {{ERROR_FILE_NOT_FOUND}, {ERROR_MORE_DATA}, {ERROR_ACCESS_DENIED}}},
      {"RegSetValueExW", {{ERROR_ACCESS_DENIED}, {ERROR_NO_SYSTEM_RESOURCES}}},
      {"RegDeleteKeyW", {{ERROR_ACCESS_DENIED}, {ERROR_FILE_NOT_FOUND}}},
      {"RegCloseKey", {{ERROR_INVALID_HANDLE}}},
      {"GetPrivateProfileStringW", {{0, ERROR_FILE_NOT_FOUND}}},

      {"InitializeSecurityDescriptor", {{FALSE, ERROR_UNKNOWN_REVISION}}},
      {"SetSecurityDescriptorDacl", {{FALSE, ERROR_INVALID_SECURITY_DESCR}}},
      {"CreateEventW", {{0, ERROR_ACCESS_DENIED}, {0, ERROR_INVALID_HANDLE}}},
      {"SetEvent", {{FALSE, ERROR_INVALID_HANDLE}}},
      {"WaitForSingleObject",
       {{WAIT_FAILED, ERROR_INVALID_HANDLE}, {WAIT_ABANDONED}, {WAIT_TIMEOUT}}},
      {"CloseHandle", {{FALSE, ERROR_INVALID_HANDLE}}},

      // A read or write that succeeds may have moved nothing.
      {"CreateFileA",
       {{kInvalidHandle, ERROR_ACCESS_DENIED}, {kInvalidHandle, ERROR_FILE_NOT_FOUND}}},
      {"GetFileSizeEx", {{FALSE, ERROR_GEN_FAILURE}}},
      {"ReadFile", {{FALSE, ERROR_READ_FAULT}, {TRUE}}},
      {"WriteFile", {{FALSE, ERROR_DISK_FULL}, {TRUE}}},
      {"CopyFileW", refused},
      {"_access", minusOne},
      {"_mkdir", minusOne},
      {"remove", minusOne},
      {"rename", minusOne},
      {"_beginthreadex", {{0, ERROR_NO_SYSTEM_RESOURCES}}},
      {"GetModuleFileNameW", {{0, ERROR_NOT_ENOUGH_MEMORY}}},

      // None, a header's worth, and more than was asked for.
      {"GetSystemFirmwareTable",
       {{0, ERROR_INVALID_FUNCTION}, {60}, {131124, ERROR_INSUFFICIENT_BUFFER}, {131125}}},

      {"EnumDisplayDevicesW", {{FALSE}}},
      {"EnumDisplayMonitors", {{FALSE}}},
      {"GetMonitorInfoW", {{FALSE, ERROR_INVALID_MONITOR_HANDLE}}},
      {"GetDisplayConfigBufferSizes", display},
      {"QueryDisplayConfig", display},
      {"SetDisplayConfig", display},
      {"GetNumberOfPhysicalMonitorsFromHMONITOR", {{FALSE, ERROR_GEN_FAILURE}}},
      {"GetPhysicalMonitorsFromHMONITOR", {{FALSE, ERROR_GEN_FAILURE}}},
      {"DestroyPhysicalMonitors", {{FALSE, ERROR_INVALID_HANDLE}}},
      {"SetVCPFeature", {{FALSE, ERROR_GEN_FAILURE}}},
      {"SaveCurrentSettings", {{FALSE, ERROR_GEN_FAILURE}}},

      {"WcsGetDefaultColorProfile",
       {{FALSE, ERROR_ACCESS_DENIED}, {FALSE, ERROR_FILE_NOT_FOUND}, {FALSE, ERROR_SUCCESS}}},
      {"WcsAssociateColorProfileWithDevice", refused},
      {"WcsDisassociateColorProfileFromDevice", refused},
      {"InstallColorProfileW", refused},
      {"GetStandardColorSpaceProfileW", {{FALSE, ERROR_FILE_NOT_FOUND}}},
      {"OpenColorProfileW", {{0, ERROR_FILE_CORRUPT}}},
      {"IsColorProfileValid", {{FALSE, ERROR_INVALID_PROFILE}}},
      {"CreateMultiProfileTransform", {{0, ERROR_INVALID_PROFILE}}},
      {"CloseColorProfile", {{FALSE, ERROR_INVALID_HANDLE}}},

      {"WTSEnumerateSessionsW", refused},
      {"WTSQuerySessionInformationW", refused},
      {"OpenSCManagerW", refused},
      {"OpenServiceW", refused},
      {"QueryServiceStatus", refused},
      {"CloseServiceHandle", {{FALSE, ERROR_INVALID_HANDLE}}},
      {"CreateToolhelp32Snapshot", {{kInvalidHandle, ERROR_ACCESS_DENIED}}},
      {"Process32FirstW", {{FALSE, ERROR_NO_MORE_FILES}}},
      {"Process32NextW", {{FALSE, ERROR_NO_MORE_FILES}}},

      // Another apartment, and one that was there already.
      {"CoInitializeEx", {Com(RPC_E_CHANGED_MODE), Com(E_OUTOFMEMORY), Com(S_FALSE)}},
      {"CoCreateInstance", {Com(REGDB_E_CLASSNOTREG), Com(E_ACCESSDENIED)}},
      {"PropVariantClear", {Com(E_INVALIDARG)}},
      {"ISensorManager::GetSensorsByCategory",
       {Com(HRESULT_FROM_WIN32(ERROR_NOT_FOUND)), Com(E_ACCESSDENIED)}},
      {"ISensorCollection::GetCount", com},
      {"ISensorCollection::GetAt", com},
      {"ISensor::SetEventSink", com},
      {"ISensorDataReport::GetSensorValue", com},

      {"PlatformInit", platform},
      {"PlatformFini", platform},
      {"GetPlatform", platform},
      {"PlatformSet3DLut", platform},
      {"PlatformReset3DLut", platform},
      {"PlatformSetGammaLut", platform},
      {"PlatformSetPccMatrixInfo", platform},
      {"PlatformResetPccMatrixInfo", platform},
      {"PlatformSet2DColorTemperature", platform},
      {"PlatformSet3DColorTemperature", platform},

      {"CoreKit::IsAdminPrivilege", text},
      {"CoreKit::GetLogonSessionId", {{0xFFFFFFFF}}},
      {"CoreKit::GetUserSIDBySessionId", error},
      {"CoreKit::GetDisplayType", {{0xFFFFFFFF}}},
      {"CoreKit::BytesToHexString", text},
      {"CoreKit::StringToWString", text},
      {"CoreKit::WStringToString", text},
      {"CoreKit::GetCanonicalizedFilePath", text},
      {"CoreKit::EnableFileUsersPriviledge", {{1}, {2}}},
      {"CoreKit::LoadUserProcessByServerPriviledge", platform},

      // Refused, and no row.
      {"WmiQuery::ExcuteQueryImpl", {{kMinusOne}, {0}}},
      {"WmiQuery::GetResult", text},
      {"BiosWmi::GetBiosInfo", platform},
      {"BiosEventMonitor::StartEventMonitor", platform},
      {"BiosEventMonitor::StopEventMonitor", platform},
  };
  return kinds;
}

// --- The table at the end ---

class FaultTable : public testing::Environment {
 public:
  void TearDown() override {
    if (faults_.empty()) {
      return;
    }
    size_t sum = 0;
    std::printf("Faults injected:\n");
    for (const auto& [name, faults] : faults_) {
      std::printf("  %6zu  %s\n", faults, name.c_str());
      sum += faults;
    }
    std::printf("  %6zu  in all\n", sum);
  }

  void Add(const std::string& name, size_t faults) { faults_[name] += faults; }

 private:
  std::map<std::string, size_t> faults_;
};

FaultTable& TheTable() {
  // googletest owns it.
  static FaultTable& table =
      static_cast<FaultTable&>(*testing::AddGlobalTestEnvironment(new FaultTable));
  return table;
}
const FaultTable& isRegistered = TheTable();

// --- One sweep ---

class Runner {
 public:
  explicit Runner(const Sweep& sweep) : sweep_(sweep) {}

  void Run() {
    RunOnce({});
    std::vector<std::string> functions;  // in the order of their first calls
    for (const std::string& function : called_) {
      if (std::ranges::count(functions, function) == 0 &&
          std::ranges::count(sweep_.without, function) == 0) {
        functions.push_back(function);
      }
    }
    for (const std::string& function : functions) {
      const std::vector<FaultKind>& kinds = FaultKindsOf(function);
      for (const FaultKind& kind : kinds) {
        for (unsigned n = 1; n < kMaxCalls && RunOnce({function, n, kind, {}}); ++n) {
        }
        if (sweep_.also0) {
          RunOnce({function, 0, kind, {}});
        }
        if (testing::Test::HasFatalFailure()) {
          return;
        }
      }
    }
    testing::Test::RecordProperty("faults", static_cast<int>(faults_));
    CountFaults(sweep_.name, faults_);
  }

 private:
  // False when the fault's call did not come.
  bool RunOnce(Fault fault) {
    virtualnotebook::Notebook& notebook = sweep_.start();
    notebook.ForgetRecords();
    if (!fault.function.empty()) {
      notebook.FailCall(fault.function, fault.n, fault.kind.result, fault.kind.lastError);
    }
    if (sweep_.answer) {
      sweep_.answer(notebook);
    }
    sweep_.call();
    notebook.ClearFaults();
    called_.clear();
    const std::vector<virtualnotebook::Call> calls = notebook.CallsNow();
    for (const virtualnotebook::Call& call : calls) {
      called_.push_back(call.function);
    }
    const bool met = Find(calls, fault);
    if (!met) {
      fault = {};
    }
    faults_ += met ? 1 : 0;
    SCOPED_TRACE(sweep_.name + ", " + Describe(fault));
    sweep_.check(fault);
    return met;
  }

  // Fills in the call that failed; false when it did not come.
  static bool Find(const std::vector<virtualnotebook::Call>& calls, Fault& fault) {
    unsigned n = 0;
    for (auto call = calls.begin(); call != calls.end(); ++call) {
      if (call->function == fault.function && ++n == std::max(fault.n, 1U)) {
        fault.call = *call;
        fault.nOfItsKind = static_cast<unsigned>(
            std::count_if(calls.begin(), call + 1, [&](const virtualnotebook::Call& one) {
              return one.function == call->function && one.arguments == call->arguments;
            }));
        const auto opener =
            std::find_if(std::make_reverse_iterator(call), calls.rend(),
                         [&](const virtualnotebook::Call& one) { return Opens(one, *call); });
        if (opener != calls.rend()) {
          fault.opener = opener->arguments;
        }
        return true;
      }
    }
    return false;
  }

  static bool Opens(const virtualnotebook::Call& opener, const virtualnotebook::Call& call) {
    static const std::map<std::string, std::vector<std::string>> openers = {
        {"GetFileSizeEx", {"CreateFileA"}},
        {"ReadFile", {"CreateFileA"}},
        {"WriteFile", {"CreateFileA"}},
        {"CloseHandle", {"CreateFileA"}},
        {"RegQueryValueExW", {"RegOpenKeyW"}},
        {"RegQueryValueExA", {"RegOpenKeyExA"}},
        {"RegSetValueExW", {"RegCreateKeyExW"}},
        {"RegDeleteKeyW", {"RegOpenKeyW"}},
        {"RegCloseKey", {"RegOpenKeyW", "RegOpenKeyExA", "RegCreateKeyExW"}},
        {"WmiQuery::GetResult", {"WmiQuery::ExcuteQueryImpl"}}};
    const auto row = openers.find(call.function);
    return row != openers.end() && std::ranges::count(row->second, opener.function) > 0;
  }

  const Sweep& sweep_;
  std::vector<std::string> called_;  // in the last run
  size_t faults_ = 0;
};

// --- What the process holds ---

// What the library stands on, loaded for good: loading it anew takes most of the time otherwise.
void KeepImportsLoaded() {
  static const bool loaded = [] {
    for (const wchar_t* name :
         {L"mscms.dll", L"dxva2.dll", L"wtsapi32.dll", L"ole32.dll", L"CoreKit.dll", L"LogKit.dll",
          L"VeloraPlatform.dll", L"WmiKit.dll", L"orbevent.dll"}) {
      if (LoadLibraryW(name) == nullptr) {
        throw std::runtime_error("a library can't be loaded");
      }
    }
    return true;
  }();
  static_cast<void>(loaded);
}

// What the system tells of each handle of each process; <winternl.h> has no names for it.
struct SystemHandle {
  void* object;
  ULONG_PTR process;
  ULONG_PTR handle;
  ULONG access;
  USHORT backTrace;
  USHORT type;
  ULONG attributes;
  ULONG reserved;
};
constexpr auto kSystemExtendedHandleInformation = std::bit_cast<SYSTEM_INFORMATION_CLASS>(64);

// All of this process, by their types' numbers. One question for all of them: a process that has
// run many tests holds thousands.
std::map<HANDLE, USHORT> TypesOfHandles() {
  constexpr size_t kHead = 2 * sizeof(ULONG_PTR);  // their count, and nothing
  static std::vector<std::byte> table(1U << 20U);
  while (NtQuerySystemInformation(kSystemExtendedHandleInformation, table.data(),
                                  static_cast<ULONG>(table.size()), nullptr) < 0) {
    table.resize(2 * table.size());
  }
  const auto* const rows = reinterpret_cast<const SystemHandle*>(table.data() + kHead);
  const auto count = *reinterpret_cast<const ULONG_PTR*>(table.data());
  std::map<HANDLE, USHORT> types;
  for (const SystemHandle& row : std::span(rows, count)) {
    if (row.process == GetCurrentProcessId()) {
      types[reinterpret_cast<HANDLE>(row.handle)] = row.type;
    }
  }
  return types;
}

// The numbers of the types of registry keys and files.
std::set<USHORT> CountedTypes() {
  HKEY key = nullptr;
  RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"SOFTWARE", 0, KEY_READ, &key);
  const HANDLE file = CreateFileW(L"NUL", GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
  std::map<HANDLE, USHORT> types = TypesOfHandles();
  const std::set<USHORT> counted = {types.at(key), types.at(file)};
  CloseHandle(file);
  RegCloseKey(key);
  return counted;
}

void AppendTree(HKEY root, const std::wstring& path, RegistryTree& tree) {
  HKEY key = nullptr;
  if (RegOpenKeyExW(root, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) {
    return;
  }
  tree[path] = testsupport::ReadKey(root, path);
  std::vector<std::wstring> names;
  wchar_t name[256];
  for (DWORD i = 0;; ++i) {
    DWORD length = static_cast<DWORD>(std::size(name));
    if (RegEnumKeyExW(key, i, name, &length, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS) {
      break;
    }
    names.emplace_back(name, length);
  }
  RegCloseKey(key);
  for (const std::wstring& child : names) {
    AppendTree(root, path + L"\\" + child, tree);
  }
}

}  // namespace

const std::vector<FaultKind>& FaultKindsOf(const std::string& function) {
  static const std::vector<FaultKind> none;
  const auto row = AllFaultKinds().find(function);
  return row == AllFaultKinds().end() ? none : row->second;
}

bool Fault::Names(const std::wstring& text) const {
  const auto contains = [&](const std::wstring& argument) {
    return argument.find(text) != std::wstring::npos;
  };
  return text.empty() || std::ranges::any_of(call.arguments, contains) ||
         std::ranges::any_of(opener, contains);
}

std::string Describe(const Fault& fault) {
  if (fault.function.empty()) {
    return "no fault";
  }
  return (fault.n == 0 ? "every call" : "call " + std::to_string(fault.n)) + " of " +
         testing::PrintToString(fault.call) +
         (fault.opener.empty()
              ? ""
              : " on " + testsupport::Utf8(fault.opener[1].size() > 8 ? fault.opener[1]
                                                                      : fault.opener[0])) +
         " gives " + std::to_string(static_cast<int64_t>(fault.kind.result)) + ", last error " +
         std::to_string(fault.kind.lastError);
}

void RunSweep(const Sweep& sweep) { Runner(sweep).Run(); }

void CountFaults(const std::string& name, size_t faults) { TheTable().Add(name, faults); }

FreshLibrary::FreshLibrary() {
  KeepImportsLoaded();
  library_.emplace();
}

std::set<HANDLE> OpenHandles() {
  static const std::set<USHORT> counted = CountedTypes();
  std::set<HANDLE> handles;
  for (const auto& [handle, type] : TypesOfHandles()) {
    if (counted.contains(type)) {
      handles.insert(handle);
    }
  }
  return handles;
}

void CloseHandles(const std::set<HANDLE>& handles) {
  for (const HANDLE handle : handles) {
    CloseHandle(handle);
  }
}

RegistryTree ReadTree(HKEY root, const std::wstring& path) {
  RegistryTree tree;
  AppendTree(root, path, tree);
  return tree;
}

void WriteTree(HKEY root, const RegistryTree& tree) {
  for (const auto& [path, values] : tree) {
    testsupport::MakeKey(root, path);
    for (const auto& [name, value] : values) {
      testsupport::WriteValue(root, path, name, value);
    }
  }
}

}  // namespace faults
