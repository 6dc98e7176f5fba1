#pragma once

namespace testsupport {

// While the object lives, the n-th (from 1) array allocation of this program that asks for null
// instead of an exception gets null. One at a time.
class FailingNew {
 public:
  explicit FailingNew(unsigned n);
  ~FailingNew();
  FailingNew(const FailingNew&) = delete;
  FailingNew& operator=(const FailingNew&) = delete;

  // Whether the allocation was asked for.
  bool HasFailed() const;
};

}  // namespace testsupport
