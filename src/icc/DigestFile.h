#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

// The digest file: a plain sequence of records, one for each preset ICC profile, without a header.
// A trailing piece shorter than a record is no record.
namespace velora {

inline constexpr size_t kDigestHashSize = 32;  // SHA-256

// Offsets 63 and 99 are never read: the tool that writes the file decides what they hold.
struct DigestRecord {
  uint8_t fileName[63];
  uint8_t unread1[4];
  uint8_t sha256[kDigestHashSize];
  uint8_t unread2[3];
};
static_assert(sizeof(DigestRecord) == 102 && alignof(DigestRecord) == 1);
static_assert(offsetof(DigestRecord, sha256) == 67);

// Whether name is a part of the record's file name, of which 62 characters count. A part is enough:
// a record of "aP3.icc" speaks for "P3.icc" too, and an empty name is part of every record.
bool HoldsName(const DigestRecord& record, const std::string& name);

}  // namespace velora
