// A golden file: a table without its prefix, so that it gives what the table gives.
#include <algorithm>
#include <string>

#include "fuzz/PlainBlocks.h"
#include "fuzz/TableCheck.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  constexpr size_t kPrefix = 52;
  const std::string file = fuzz::ToBuffer({data, size});
  std::string padded = file;
  velora::ColorField3DLut().PadFirmwarePrefix(padded);
  fuzz::Require(padded.size() == kPrefix + size, "the prefix is added");
  fuzz::Require(std::ranges::count(padded.substr(0, kPrefix), '0') == kPrefix, "it is filling");
  fuzz::Require(padded.compare(kPrefix, size, file) == 0, "the file stands behind it");
  fuzz::Bytes table(velora::BytesOf(padded), velora::BytesOf(padded) + padded.size());
  fuzz::CheckTable(table);
  fuzz::RepairTable(table);
  fuzz::CheckTable(table);
  return 0;
}
