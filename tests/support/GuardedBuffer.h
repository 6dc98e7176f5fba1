#pragma once

#if defined(_WIN32)
#include <windows.h>
#else
#include <sys/mman.h>
#include <unistd.h>
#endif

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>

namespace testsupport {

// A copy of some bytes that ends at a page without access: reading one byte too many ends the test
// program, whichever way the program was built.
class GuardedBuffer {
 public:
  explicit GuardedBuffer(std::span<const uint8_t> bytes) : GuardedBuffer(bytes, bytes.size()) {}
  // The first size bytes.
  GuardedBuffer(std::span<const uint8_t> bytes, size_t size) : size_(size) {
    const size_t pageSize = PageSize();
    const size_t accessible = (size_ + pageSize - 1) / pageSize * pageSize;
    mappedSize_ = accessible + pageSize;
    pages_ = Map(mappedSize_, accessible, pageSize);
    data_ = pages_ + accessible - size_;
    std::copy_n(bytes.begin(), size, data_);
  }
  ~GuardedBuffer() { Unmap(pages_, mappedSize_); }
  GuardedBuffer(const GuardedBuffer&) = delete;
  GuardedBuffer& operator=(const GuardedBuffer&) = delete;

  uint8_t* data() const { return data_; }
  size_t size() const { return size_; }
  std::span<const uint8_t> Bytes() const { return {data_, size_}; }

 private:
  static uint8_t* OrAbort(void* pages, bool good) {
    if (!good) {
      std::abort();
    }
    return static_cast<uint8_t*>(pages);
  }

#if defined(_WIN32)
  static size_t PageSize() {
    SYSTEM_INFO info;
    GetSystemInfo(&info);
    return info.dwPageSize;
  }
  static uint8_t* Map(size_t size, size_t accessible, size_t guard) {
    void* const pages = VirtualAlloc(nullptr, size, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
    DWORD before = 0;
    return OrAbort(
        pages, pages != nullptr && VirtualProtect(static_cast<uint8_t*>(pages) + accessible, guard,
                                                  PAGE_NOACCESS, &before));
  }
  static void Unmap(uint8_t* pages, size_t) { VirtualFree(pages, 0, MEM_RELEASE); }
#else
  static size_t PageSize() { return static_cast<size_t>(sysconf(_SC_PAGESIZE)); }
  static uint8_t* Map(size_t size, size_t accessible, size_t guard) {
    void* const pages =
        mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return OrAbort(pages, pages != MAP_FAILED && mprotect(static_cast<uint8_t*>(pages) + accessible,
                                                          guard, PROT_NONE) == 0);
  }
  static void Unmap(uint8_t* pages, size_t size) { munmap(pages, size); }
#endif

  size_t size_;
  size_t mappedSize_;
  uint8_t* pages_;
  uint8_t* data_;
};

}  // namespace testsupport
