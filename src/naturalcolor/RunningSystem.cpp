#include "naturalcolor/RunningSystem.h"

#include <windows.h>

#include <tlhelp32.h>

#include <memory>
#include <type_traits>

namespace velora {
namespace {

struct ServiceCloser {
  void operator()(SC_HANDLE handle) const { CloseServiceHandle(handle); }
};
using ServiceHandle = std::unique_ptr<std::remove_pointer_t<SC_HANDLE>, ServiceCloser>;

}  // namespace

bool IsServiceRunning() {
  const ServiceHandle manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_ALL_ACCESS));
  if (!manager) {
    return false;
  }
  const ServiceHandle service(
      OpenServiceW(manager.get(), L"Winmgmt", SERVICE_QUERY_STATUS | SERVICE_ENUMERATE_DEPENDENTS));
  if (!service) {
    return false;
  }
  SERVICE_STATUS status = {};
  return QueryServiceStatus(service.get(), &status) && status.dwCurrentState == SERVICE_RUNNING;
}

int CountProcess(const std::wstring& name) {
  HANDLE const snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
  if (snapshot == INVALID_HANDLE_VALUE) {
    return 0;
  }
  int count = 0;
  PROCESSENTRY32W process = {};
  process.dwSize = sizeof process;
  for (BOOL more = Process32FirstW(snapshot, &process); more;
       more = Process32NextW(snapshot, &process)) {
    count += name == process.szExeFile ? 1 : 0;
  }
  CloseHandle(snapshot);
  return count;
}

}  // namespace velora
