#include "support/Holdings.h"

#include <windows.h>

#include <tlhelp32.h>
#include <winternl.h>

#include <array>
#include <cstdint>
#include <ostream>
#include <string_view>

namespace testsupport {
namespace {

bool IsRegistryKey(HANDLE handle) {
  constexpr auto kTypeInformation = static_cast<OBJECT_INFORMATION_CLASS>(2);
  alignas(UNICODE_STRING) std::array<std::byte, 512> information{};
  if (NtQueryObject(handle, kTypeInformation, information.data(),
                    static_cast<ULONG>(information.size()), nullptr) < 0) {
    return false;
  }
  const auto* const name = reinterpret_cast<const UNICODE_STRING*>(information.data());
  return std::wstring_view(name->Buffer, name->Length / sizeof(wchar_t)) == L"Key";
}

// One by one: Wine's GetProcessHandleCount always gives 0.
void CountHandles(Holdings& held) {
  constexpr uintptr_t kStep = 4;
  constexpr uintptr_t kEnd = 0x8000;  // far above the few hundred that a test needs
  for (uintptr_t value = kStep; value < kEnd; value += kStep) {
    const auto handle = reinterpret_cast<HANDLE>(value);
    DWORD flags = 0;
    if (GetHandleInformation(handle, &flags)) {
      ++held.handles;
      held.keys += IsRegistryKey(handle) ? 1U : 0U;
    }
  }
}

void CountThreads(Holdings& held) {
  const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
  THREADENTRY32 entry{};
  entry.dwSize = sizeof entry;
  for (BOOL more = Thread32First(snapshot, &entry); more; more = Thread32Next(snapshot, &entry)) {
    held.threads += entry.th32OwnerProcessID == GetCurrentProcessId() ? 1U : 0U;
  }
  CloseHandle(snapshot);
}

void CountBlocks(Holdings& held) {
  std::array<HANDLE, 64> heaps{};
  const DWORD count = GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data());
  for (DWORD i = 0; i < count; ++i) {
    HeapLock(heaps[i]);
    PROCESS_HEAP_ENTRY entry{};
    while (HeapWalk(heaps[i], &entry)) {
      if ((entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0) {
        ++held.blocks;
        held.bytes += entry.cbData;
      }
    }
    HeapUnlock(heaps[i]);
  }
}

}  // namespace

Holdings Holdings::Now() {
  Holdings held;
  CountHandles(held);
  CountThreads(held);
  CountBlocks(held);
  return held;
}

Holdings Holdings::With(size_t times, std::initializer_list<size_t> sizes) const {
  Holdings more = *this;
  for (const size_t size : sizes) {
    more.blocks += times;
    more.bytes += times * size;
  }
  return more;
}

void PrintTo(const Holdings& held, std::ostream* out) {
  *out << held.handles << " handles, " << held.keys << " of them registry keys, " << held.threads
       << " threads, " << held.bytes << " bytes in " << held.blocks << " blocks";
}

}  // namespace testsupport
