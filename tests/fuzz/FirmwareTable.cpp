// A firmware table, all the way: its block, the block's proof, the LUT. Each result is compared
// with the plain form's, as the input stands and with its sums and hashes put right.
#include "fuzz/PlainBlocks.h"
#include "fuzz/TableCheck.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::Bytes table(data, data + size);
  fuzz::CheckTable(table);
  fuzz::RepairTable(table);
  fuzz::CheckTable(table);
  return 0;
}
