#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "velora/VeloraCtlApi.h"

namespace velora {

// The ICC profile of a user-designed mode: an ICC.1 matrix/shaper RGB display profile, made by
// lcms2, that carries its own proof.
//
//   offset  size    contents
//   0       4       profile size N, big-endian; the hash is not in it
//   4       4       preferred CMM, "MSFT"
//   80      4       profile creator, "MSFT"
//   128     4       tag count, 11
//   132     12      the first tag: "desc", its offset, its size S
//   264     28      heading of the description's multi-localised text
//   292     S - 28  the mode's name, UTF-16, big-endian
//   ...             the other tags
//   N       32      SHA-256 of bytes 0 to N - 1
//
// Sources by topic:
//   ICCProfileOperation_Create.cpp  making and saving
//   ICCProfileOperation_Check.cpp   the proof
class ICCProfileOperation {
 public:
  // Makes the profile of gamut, white point, gamma and name, and saves it in the user's temporary
  // directory; its path goes to info.iccPath. 0, or 1; a failure leaves what it has written.
  int CreateAndSaveIccProfile(UserDesignInfo& info) const;

  // True when the file is an unchanged profile of this mode. What stands behind the hash is not
  // looked at; a mode name that goes on behind the stored one passes.
  bool ICCProfileSha256Check(const std::string& path, const std::string& modeName) const;

  // The same for the file's first kProfileHead bytes, zeros where it is shorter.
  static constexpr size_t kProfileHead = 1032;
  bool CheckProfile(std::span<const uint8_t, kProfileHead> file, const std::string& modeName) const;
  bool IsfileMatchId(std::span<const uint8_t, kProfileHead> file,
                     const std::string& modeName) const;

  // Patches a saved profile and appends its hash.
  bool ModifyICCProfile(const std::string& path) const;
};

}  // namespace velora
