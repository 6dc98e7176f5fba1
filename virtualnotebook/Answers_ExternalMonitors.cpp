// What monitors answer over DDC/CI.
#include "virtualnotebook/Answers.h"

#include <algorithm>

#include "virtualnotebook/Recorder.h"

namespace virtualnotebook::answers {
namespace {

// Codes of the Windows SDK's winerror.h that the compiler's lacks.
constexpr DWORD kErrorGraphicsI2cNotSupported = 0xC0262580;
constexpr DWORD kErrorGraphicsInvalidPhysicalMonitorHandle = 0xC026258C;

// The first handle of all; none is a small number, null or INVALID_HANDLE_VALUE.
constexpr uintptr_t kFirstHandle = 0x1000;

// A handle that no array has had yet.
HANDLE NextHandle(const Notebook& notebook) {
  uintptr_t next = kFirstHandle;
  for (const MonitorArray& array : notebook.monitorArrays) {
    next += array.handles.size();
  }
  return reinterpret_cast<HANDLE>(next);
}

// Null for a handle of an array that was destroyed.
PhysicalMonitor* FindPhysicalMonitor(Notebook& notebook, HANDLE handle) {
  if (handle == INVALID_HANDLE_VALUE) {
    return nullptr;
  }
  for (const MonitorArray& array : notebook.monitorArrays) {
    const auto found = std::ranges::find(array.handles, handle);
    if (found != array.handles.end() && array.destroyed == 0) {
      return &notebook.desktop[array.desktopIndex]
                  .physicalMonitors[static_cast<size_t>(found - array.handles.begin())];
    }
  }
  return nullptr;
}

// Hands the monitor to command where it listens.
template <typename Command>
BOOL Send(Notebook& notebook, HANDLE handle, Command command) {
  const NotebookGuard guard(TheLock());
  PhysicalMonitor* const monitor = FindPhysicalMonitor(notebook, handle);
  if (monitor == nullptr) {
    return Fail(kErrorGraphicsInvalidPhysicalMonitorHandle);
  }
  if (!monitor->answersDdcci) {
    return Fail(kErrorGraphicsI2cNotSupported);
  }
  command(monitor->taken);
  return TRUE;
}

}  // namespace

BOOL GetNumberOfPhysicalMonitorsFromHMONITOR(Notebook& notebook,
                                             decltype(::GetNumberOfPhysicalMonitorsFromHMONITOR)*,
                                             HMONITOR monitor, DWORD* count) {
  const DesktopMonitor* const found = FindDesktopMonitor(notebook, monitor);
  if (found == nullptr) {
    return Fail(ERROR_INVALID_MONITOR_HANDLE);
  }
  if (count == nullptr) {
    return Fail(ERROR_INVALID_PARAMETER);
  }
  *count = static_cast<DWORD>(found->physicalMonitors.size());
  return TRUE;
}

BOOL GetPhysicalMonitorsFromHMONITOR(Notebook& notebook,
                                     decltype(::GetPhysicalMonitorsFromHMONITOR)*, HMONITOR monitor,
                                     DWORD count, PHYSICAL_MONITOR* monitors) {
  const NotebookGuard guard(TheLock());
  const DesktopMonitor* const found = FindDesktopMonitor(notebook, monitor);
  if (found == nullptr) {
    return Fail(ERROR_INVALID_MONITOR_HANDLE);
  }
  if (monitors == nullptr || count != found->physicalMonitors.size()) {
    return Fail(ERROR_INVALID_PARAMETER);
  }
  MonitorArray array{monitors, static_cast<size_t>(found - notebook.desktop.data()), {}};
  auto handle = reinterpret_cast<uintptr_t>(NextHandle(notebook));
  for (DWORD i = 0; i < count; ++i, ++handle) {
    const PhysicalMonitor& source = found->physicalMonitors[i];
    array.handles.push_back(source.hasHandle ? reinterpret_cast<HANDLE>(handle)
                                             : INVALID_HANDLE_VALUE);
    PHYSICAL_MONITOR record{};
    record.hPhysicalMonitor = array.handles.back();
    source.description.copy(record.szPhysicalMonitorDescription,
                            PHYSICAL_MONITOR_DESCRIPTION_SIZE - 1);
    monitors[i] = record;
  }
  notebook.monitorArrays.push_back(array);
  return TRUE;
}

BOOL DestroyPhysicalMonitors(Notebook& notebook, decltype(::DestroyPhysicalMonitors)*, DWORD count,
                             PHYSICAL_MONITOR* monitors) {
  const NotebookGuard guard(TheLock());
  // The latest: memory that was freed holds other arrays later.
  auto& arrays = notebook.monitorArrays;
  const auto array = std::find_if(arrays.rbegin(), arrays.rend(), [=](const MonitorArray& known) {
    return known.address == monitors && known.handles.size() == count;
  });
  if (array == arrays.rend()) {
    return Fail(ERROR_INVALID_PARAMETER);
  }
  return ++array->destroyed == 1 ? TRUE : Fail(kErrorGraphicsInvalidPhysicalMonitorHandle);
}

BOOL SetVCPFeature(Notebook& notebook, decltype(::SetVCPFeature)*, HANDLE monitor, BYTE code,
                   DWORD value) {
  return Send(notebook, monitor, [=](std::vector<VcpWrite>& taken) {
    taken.push_back({code, static_cast<uint32_t>(value)});
  });
}

BOOL SaveCurrentSettings(Notebook& notebook, decltype(::SaveCurrentSettings)*, HANDLE monitor) {
  return Send(notebook, monitor, [](std::vector<VcpWrite>& taken) {
    for (VcpWrite& write : taken) {
      write.saved = true;
    }
  });
}

}  // namespace virtualnotebook::answers
