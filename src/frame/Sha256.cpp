#include "frame/Sha256.h"

#include <openssl/crypto.h>
#include <openssl/sha.h>

namespace velora {
namespace {

// libcrypto sets itself up on first use and leaves its clean-up to the C runtime, which keeps it
// beyond the unloading of this library: the process would end in a call to code that is gone, and
// each loading would cost it some of its thread-local slots. So the clean-up is this object's,
// which ends with the library. libcrypto is linked statically: nobody else uses this copy.
class Libcrypto {
 public:
  Libcrypto() { OPENSSL_init_crypto(OPENSSL_INIT_NO_ATEXIT, nullptr); }
  ~Libcrypto() { OPENSSL_cleanup(); }
  Libcrypto(const Libcrypto&) = delete;
  Libcrypto& operator=(const Libcrypto&) = delete;
};

}  // namespace

bool Sha256(std::span<const uint8_t> bytes, uint8_t* hash) {
  static const Libcrypto libcrypto;
  return SHA256(bytes.data(), bytes.size(), hash) != nullptr;
}

}  // namespace velora
