#include "ImportStopwatch.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <stdexcept>
#include <string_view>

namespace {

constexpr size_t kMaxFunctions = 512;
constexpr size_t kMaxDepth = 64;

struct OpenCall {
  bench::Ticks start;
  void* returnAddress;
  uint64_t index;
};

}  // namespace

// The assembly below works on these.
extern "C" {
DWORD stopwatchThread;
void* stopwatchOriginals[kMaxFunctions];
bench::Ticks stopwatchTicks[kMaxFunctions];
uint64_t stopwatchCalls[kMaxFunctions];
OpenCall stopwatchOpen[kMaxDepth];
OpenCall* stopwatchTop = stopwatchOpen;
bench::Ticks stopwatchOutermost;  // ticks of calls that are within no other
void StopwatchEnter();
}

// Each redirected import comes here with its index in r11. It takes the return address off the
// stack, so that the function finds its arguments where the caller put them, and puts it back
// behind the call. Before the call rax, r10 and r11 are free, behind it all but the result's are.
asm(R"(
    .text
    .globl StopwatchEnter
StopwatchEnter:
    movl %gs:0x48, %eax                  # the thread's id
    cmpl stopwatchThread(%rip), %eax
    je 1f
    leaq stopwatchOriginals(%rip), %rax
    jmp *(%rax,%r11,8)
1:  movq stopwatchTop(%rip), %r10
    popq 8(%r10)
    movq %r11, 16(%r10)
    addq $24, %r10
    movq %r10, stopwatchTop(%rip)
    movq %rdx, %r10
    rdtsc
    shlq $32, %rdx
    orq %rdx, %rax
    movq %r10, %rdx
    movq stopwatchTop(%rip), %r10
    movq %rax, -24(%r10)
    leaq stopwatchOriginals(%rip), %rax
    call *(%rax,%r11,8)
    movq %rax, %r8
    rdtsc
    shlq $32, %rdx
    orq %rdx, %rax
    movq stopwatchTop(%rip), %r10
    subq $24, %r10
    movq %r10, stopwatchTop(%rip)
    subq (%r10), %rax
    movq 16(%r10), %r11
    leaq stopwatchTicks(%rip), %rcx
    addq %rax, (%rcx,%r11,8)
    leaq stopwatchCalls(%rip), %rcx
    incq (%rcx,%r11,8)
    leaq stopwatchOpen(%rip), %rcx
    cmpq %rcx, %r10
    jne 2f
    addq %rax, stopwatchOutermost(%rip)
2:  pushq 8(%r10)
    movq %r8, %rax
    ret
)");

namespace bench {
namespace {

using virtualnotebook::ImportedFunction;

// Never leave the process: the C++ runtime's locks, thread slots and questions.
constexpr std::string_view kOwn[] = {"AcquireSRWLockExclusive",
                                     "AcquireSRWLockShared",
                                     "DeleteCriticalSection",
                                     "EnterCriticalSection",
                                     "GetCurrentProcess",
                                     "GetCurrentProcessId",
                                     "GetCurrentThread",
                                     "GetCurrentThreadId",
                                     "GetLastError",
                                     "InitializeCriticalSection",
                                     "InitializeSRWLock",
                                     "LeaveCriticalSection",
                                     "ReleaseSRWLockExclusive",
                                     "ReleaseSRWLockShared",
                                     "SetLastError",
                                     "TlsAlloc",
                                     "TlsFree",
                                     "TlsGetValue",
                                     "TlsSetValue",
                                     "TryEnterCriticalSection"};

bool IsOwn(std::string_view library, std::string_view function) {
  // Exceptions are unwound through what is on the stack: a return address must stay there.
  return _stricmp(library.data(), "msvcrt.dll") == 0 || function.starts_with("Rtl") ||
         function == "RaiseException" || function == "__C_specific_handler" ||
         std::ranges::count(kOwn, function) != 0;
}

// mov $index, %r11d; mov $StopwatchEnter, %r10; jmp *%r10
constexpr size_t kThunkSize = 32;
void WriteThunk(uint32_t index, uint8_t* code) {
  const auto target = reinterpret_cast<uint64_t>(StopwatchEnter);
  code[0] = 0x41;
  code[1] = 0xBB;
  std::memcpy(code + 2, &index, sizeof index);
  code[6] = 0x49;
  code[7] = 0xBA;
  std::memcpy(code + 8, &target, sizeof target);
  code[16] = 0x41;
  code[17] = 0xFF;
  code[18] = 0xE2;
}

std::vector<ImportedFunction> ImportsOf(HMODULE module) {
  auto* const base = reinterpret_cast<uint8_t*>(module);
  const auto* dos = reinterpret_cast<IMAGE_DOS_HEADER*>(base);
  const auto* headers = reinterpret_cast<IMAGE_NT_HEADERS64*>(base + dos->e_lfanew);
  const auto* library = reinterpret_cast<IMAGE_IMPORT_DESCRIPTOR*>(
      base + headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress);
  std::vector<ImportedFunction> functions;
  for (; library->Name != 0; ++library) {
    const auto* libraryName = reinterpret_cast<char*>(base + library->Name);
    const auto* names = reinterpret_cast<IMAGE_THUNK_DATA64*>(base + library->OriginalFirstThunk);
    for (; names->u1.AddressOfData != 0; ++names) {
      const auto* function =
          reinterpret_cast<IMAGE_IMPORT_BY_NAME*>(base + names->u1.AddressOfData)->Name;
      if (!IsOwn(libraryName, function)) {
        functions.push_back({libraryName, function, function, nullptr, nullptr});
      }
    }
  }
  return functions;
}

void Nothing() {}

double MeasureTicksPerSecond() {
  LARGE_INTEGER frequency;
  LARGE_INTEGER start;
  LARGE_INTEGER end;
  QueryPerformanceFrequency(&frequency);
  QueryPerformanceCounter(&start);
  const Ticks ticks = Now();
  Sleep(100);
  QueryPerformanceCounter(&end);
  return static_cast<double>(Now() - ticks) * static_cast<double>(frequency.QuadPart) /
         static_cast<double>(end.QuadPart - start.QuadPart);
}

}  // namespace

Ticks Now() { return __builtin_ia32_rdtsc(); }

double Seconds(Ticks ticks) {
  static const double ticksPerSecond = MeasureTicksPerSecond();
  return static_cast<double>(ticks) / ticksPerSecond;
}

ImportStopwatch::ImportStopwatch(HMODULE module) : functions_(ImportsOf(module)) {
  if (functions_.size() >= kMaxFunctions) {
    throw std::runtime_error("more imports than the stopwatch has room for");
  }
  code_ = VirtualAlloc(nullptr, (functions_.size() + 1) * kThunkSize, MEM_COMMIT,
                       PAGE_EXECUTE_READWRITE);
  auto* thunk = static_cast<uint8_t*>(code_);
  uint32_t index = 0;
  for (ImportedFunction& function : functions_) {
    WriteThunk(index, thunk);
    function.standIn = thunk;
    function.original = &stopwatchOriginals[index];
    ++index;
    thunk += kThunkSize;
  }
  WriteThunk(index, thunk);
  stopwatchOriginals[index] = reinterpret_cast<void*>(Nothing);
  Calibrate();
  redirection_ = std::make_unique<virtualnotebook::ImportRedirection>(module, functions_);
}

ImportStopwatch::~ImportStopwatch() {
  redirection_.reset();
  VirtualFree(code_, 0, MEM_RELEASE);
}

// By the last thunk, whose function does nothing.
void ImportStopwatch::Calibrate() {
  constexpr Ticks kCalls = 10000;
  auto* const last = static_cast<uint8_t*>(code_) + functions_.size() * kThunkSize;
  void (*volatile call)() = reinterpret_cast<void (*)()>(last);
  Reset();
  const Ticks start = Now();
  for (Ticks i = 0; i < kCalls; ++i) {
    call();
  }
  const Ticks all = Now() - start;
  insidePerCall_ = stopwatchOutermost / kCalls;
  outsidePerCall_ = (all - stopwatchOutermost) / kCalls;
  stopwatchThread = 0;
}

void ImportStopwatch::Reset() {
  stopwatchThread = GetCurrentThreadId();
  std::ranges::fill(stopwatchTicks, 0);
  std::ranges::fill(stopwatchCalls, 0);
  stopwatchTop = stopwatchOpen;
  stopwatchOutermost = 0;
}

void ImportStopwatch::Follow() const {
  if (stopwatchThread != GetCurrentThreadId()) {
    stopwatchTop = stopwatchOpen;
    stopwatchThread = GetCurrentThreadId();
  }
}

uint64_t ImportStopwatch::Calls() const {
  uint64_t calls = 0;
  for (const uint64_t each : stopwatchCalls) {
    calls += each;
  }
  return calls;
}

Ticks ImportStopwatch::Spent() const {
  return stopwatchOutermost - std::min(stopwatchOutermost, Calls() * insidePerCall_);
}

Ticks ImportStopwatch::Overhead() const { return Calls() * (insidePerCall_ + outsidePerCall_); }

std::vector<ImportStopwatch::Function> ImportStopwatch::Functions() const {
  std::vector<Function> called;
  for (size_t i = 0; i < functions_.size(); ++i) {
    if (stopwatchCalls[i] != 0) {
      called.push_back(
          {functions_[i].library, functions_[i].name, stopwatchTicks[i], stopwatchCalls[i]});
    }
  }
  return called;
}

}  // namespace bench
