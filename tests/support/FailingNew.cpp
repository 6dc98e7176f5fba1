#include "support/FailingNew.h"

#include <cstddef>
#include <new>

namespace {

unsigned untilFailure = 0;  // 0: none is to fail
bool failed = false;

}  // namespace

void* operator new[](size_t size, const std::nothrow_t&) noexcept {
  if (untilFailure != 0 && --untilFailure == 0) {
    failed = true;
    return nullptr;
  }
  try {
    return operator new[](size);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

namespace testsupport {

FailingNew::FailingNew(unsigned n) {
  untilFailure = n;
  failed = false;
}
FailingNew::~FailingNew() { untilFailure = 0; }
bool FailingNew::HasFailed() const { return failed; }

}  // namespace testsupport
