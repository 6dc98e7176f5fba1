#include "HeapMeter.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <unordered_map>

namespace bench {
namespace {

void* (*originalMalloc)(size_t);
void* (*originalCalloc)(size_t, size_t);
void* (*originalRealloc)(void*, size_t);
void (*originalFree)(void*);

// Blocks that the module has taken; those that other libraries took for it are not among them.
std::unordered_map<void*, int64_t> blocks;
int64_t bytesOut = 0;
int64_t bytesAtReset = 0;
int64_t peak = 0;

void* Count(void* block, size_t size) {
  if (block != nullptr) {
    blocks[block] = static_cast<int64_t>(size);
    bytesOut += static_cast<int64_t>(size);
    peak = std::max(peak, bytesOut);
  }
  return block;
}

void Uncount(void* block) {
  const auto found = blocks.find(block);
  if (found != blocks.end()) {
    bytesOut -= found->second;
    blocks.erase(found);
  }
}

void* CountingMalloc(size_t size) { return Count(originalMalloc(size), size); }

void* CountingCalloc(size_t count, size_t size) {
  return Count(originalCalloc(count, size), count * size);
}

void* CountingRealloc(void* block, size_t size) {
  Uncount(block);
  return Count(originalRealloc(block, size), size);
}

void CountingFree(void* block) {
  Uncount(block);
  originalFree(block);
}

template <typename Function>
virtualnotebook::ImportedFunction Redirected(const char* name, Function* standIn,
                                             Function** original) {
  return {"msvcrt.dll", name, name, reinterpret_cast<void*>(standIn),
          reinterpret_cast<void**>(original)};
}

}  // namespace

HeapMeter::HeapMeter(HMODULE module) {
  const virtualnotebook::ImportedFunction functions[] = {
      Redirected("malloc", CountingMalloc, &originalMalloc),
      Redirected("calloc", CountingCalloc, &originalCalloc),
      Redirected("realloc", CountingRealloc, &originalRealloc),
      Redirected("free", CountingFree, &originalFree)};
  redirection_ = std::make_unique<virtualnotebook::ImportRedirection>(module, functions);
}

void HeapMeter::Reset() const { bytesAtReset = peak = bytesOut; }

int64_t HeapMeter::Peak() const { return peak - bytesAtReset; }
int64_t HeapMeter::Kept() const { return bytesOut - bytesAtReset; }

}  // namespace bench
