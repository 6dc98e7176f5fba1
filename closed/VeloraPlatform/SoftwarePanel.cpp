#include "VeloraPlatform/SoftwarePanel.h"

#include <windows.h>

#include <string>

#include "common/UsersAccess.h"

namespace softwarepanel {

struct SoftwarePanel::Memory {
  std::atomic<uint64_t> sequence;
  uint8_t unused[64 - sizeof(std::atomic<uint64_t>)];
  State slots[2];

  State& SlotOf(uint64_t number) { return slots[number % 2]; }
};

namespace {

static_assert(std::atomic<uint64_t>::is_always_lock_free, "processes share it");

const std::wstring kName = L"NxVelora.SoftwarePanel.1";

// Opening comes first: everybody may open a global object, but only services and administrators may
// make one.
HANDLE OpenMemory(size_t size, std::wstring& nameSpace) {
  const closed::SharedWithUsers security;
  for (const wchar_t* candidate : {L"Global\\", L"Local\\"}) {
    nameSpace = candidate;
    HANDLE mapping =
        OpenFileMappingW(FILE_MAP_READ | FILE_MAP_WRITE, FALSE, (nameSpace + kName).c_str());
    if (!mapping) {
      mapping = CreateFileMappingW(INVALID_HANDLE_VALUE, security.Get(), PAGE_READWRITE, 0,
                                   static_cast<DWORD>(size), (nameSpace + kName).c_str());
    }
    if (mapping) {
      return mapping;
    }
  }
  return nullptr;
}

}  // namespace

SoftwarePanel::SoftwarePanel() {
  static_assert(sizeof(Memory) == 64 + 2 * sizeof(State));
  std::wstring nameSpace;
  mapping_ = OpenMemory(sizeof(Memory), nameSpace);
  if (!mapping_) {
    return;
  }
  const closed::SharedWithUsers security;
  writerMutex_ = CreateMutexW(security.Get(), FALSE, (nameSpace + kName + L".Writer").c_str());
  if (!writerMutex_) {
    return;
  }
  memory_ = static_cast<Memory*>(
      MapViewOfFile(mapping_, FILE_MAP_READ | FILE_MAP_WRITE, 0, 0, sizeof(Memory)));
}

SoftwarePanel::~SoftwarePanel() {
  if (memory_) {
    UnmapViewOfFile(memory_);
  }
  if (writerMutex_) {
    CloseHandle(writerMutex_);
  }
  if (mapping_) {
    CloseHandle(mapping_);
  }
}

uint64_t SoftwarePanel::Sequence() const {
  return memory_ ? memory_->sequence.load(std::memory_order_acquire) : 0;
}

uint64_t SoftwarePanel::Read(State& state) const {
  for (;;) {
    const uint64_t sequence = Sequence();
    if (sequence == 0) {
      state = State{};
      return 0;
    }
    state = memory_->SlotOf(sequence);
    // Only the writer after next fills this slot, and it starts when the sequence has moved on.
    std::atomic_thread_fence(std::memory_order_acquire);
    if (memory_->sequence.load(std::memory_order_relaxed) == sequence) {
      return sequence;
    }
  }
}

// A writer that died has left its slot unpublished: an abandoned mutex is as good.
SoftwarePanel::Writer::Writer(SoftwarePanel& panel) : panel_(panel) {
  if (panel_.memory_) {
    WaitForSingleObject(panel_.writerMutex_, INFINITE);
    next_ = &panel_.memory_->SlotOf(panel_.Sequence() + 1);
    panel_.Read(*next_);
  }
}

bool SoftwarePanel::Writer::Publish() const {
  panel_.memory_->sequence.fetch_add(1, std::memory_order_release);
  return true;
}

SoftwarePanel::Writer::~Writer() {
  if (next_) {
    ReleaseMutex(panel_.writerMutex_);
  }
}

}  // namespace softwarepanel
