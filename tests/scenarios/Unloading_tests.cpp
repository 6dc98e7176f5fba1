// What a host keeps of the library after it has freed it.
#include <windows.h>

#include <gtest/gtest.h>

#include <vector>

#include "scenarios/BrokenMachine.h"

namespace scenarios {
namespace {

class Unloading : public BrokenMachine {};

size_t CountFreeThreadLocalSlots() {
  std::vector<DWORD> slots;
  for (DWORD slot = TlsAlloc(); slot != TLS_OUT_OF_INDEXES; slot = TlsAlloc()) {
    slots.push_back(slot);
  }
  for (const DWORD slot : slots) {
    TlsFree(slot);
  }
  return slots.size();
}

// Hashing sets libcrypto up, which takes slots of its own. It must give them back with the library,
// not with the process: the call would then go to code that is gone, and this program would not end
// well. The C++ runtime within the library keeps what it took, with or without hashing.
TEST_F(Unloading, LibcryptoLeavesWithTheLibrary) {
  const auto slotsLost = [](auto&& useLibrary) {
    const size_t before = CountFreeThreadLocalSlots();
    useLibrary();
    return before - CountFreeThreadLocalSlots();
  };
  const auto ask = [] { virtualnotebook::HostedLibrary().IsMultiUser(FEATURE_TYPE_WHITEPOINT); };
  const auto hash = [this] {
    RemoveBinFiles();
    ExpectFirmwareLut(SetP3Mode());
  };
  hash();  // what the system's own DLLs take on first use, they keep
  const size_t lostByRuntime = slotsLost(ask);
  EXPECT_EQ(slotsLost(hash), lostByRuntime);
  EXPECT_EQ(slotsLost(hash), lostByRuntime);
}

}  // namespace
}  // namespace scenarios
