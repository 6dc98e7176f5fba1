#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace velora {

// The SHA-256 of the bytes into hash, 32 bytes. False without memory. Any thread.
bool Sha256(std::span<const uint8_t> bytes, uint8_t* hash);

}  // namespace velora
