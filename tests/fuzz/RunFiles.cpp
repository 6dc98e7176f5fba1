// Stands in for libFuzzer where there is none: runs a fuzzer over files, and over those in folders.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "fuzz/Fuzz.h"

namespace {

void Run(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  const fuzz::Bytes bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  fuzz::Require(file.good() || file.eof(), path.string().c_str());
  // Named first: a crash names nothing.
  std::printf("%s, %zu bytes\n", path.string().c_str(), bytes.size());
  std::fflush(stdout);
  LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
}

}  // namespace

int main(int argc, char** argv) {
  int files = 0;
  for (int i = 1; i < argc; ++i) {
    if (!std::filesystem::is_directory(argv[i])) {
      Run(argv[i]);
      ++files;
      continue;
    }
    for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
      Run(entry.path());
      ++files;
    }
  }
  std::printf("%d files\n", files);
  return files > 0 ? 0 : 1;
}
