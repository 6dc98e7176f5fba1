#include "frame/Sha256.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "support/GuardedBuffer.h"

namespace velora {
namespace {

std::string HashOf(std::string_view text) {
  const testsupport::GuardedBuffer bytes(
      {reinterpret_cast<const uint8_t*>(text.data()), text.size()});
  const testsupport::GuardedBuffer hash(std::vector<uint8_t>(32));
  EXPECT_TRUE(Sha256(bytes.Bytes(), hash.data()));
  std::string digits;
  for (const uint8_t byte : hash.Bytes()) {
    digits += "0123456789abcdef"[byte / 16];
    digits += "0123456789abcdef"[byte % 16];
  }
  return digits;
}

// The examples of FIPS 180-2, appendix B, and the empty message.
TEST(Sha256, PublishedValues) {
  EXPECT_EQ(HashOf(""), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
  EXPECT_EQ(HashOf("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
  EXPECT_EQ(HashOf("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq"),
            "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
  EXPECT_EQ(HashOf(std::string(1000000, 'a')),
            "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}

}  // namespace
}  // namespace velora
