// The library's own computations beside the peers that do the same.
#include "Harness.h"
#include "Jobs.h"

#ifdef _WIN32
#include <windows.h>

#include "virtualnotebook/ImportRedirection.h"

namespace {

void Discard(int, const wchar_t*) {}

void* logFunction;
const virtualnotebook::ImportedFunction kLog[] = {{"CoreKit.dll", "LcdLogMessage", "LcdLogMessage",
                                                   reinterpret_cast<void*>(Discard), &logFunction}};

}  // namespace
#endif

int main(int argc, char** argv) {
#ifdef _WIN32
  // On this machine CoreKit.cpp's lines go nowhere; here they shall not go into a file either.
  const virtualnotebook::ImportRedirection noLog(GetModuleHandleW(nullptr), kLog);
#endif
  bench::AddLutRows();
  bench::AddPanelRows();
  bench::AddMathsRows();
  bench::AddLogRows();
#ifdef _WIN32
  bench::AddProfileRows();
#endif
#ifdef BENCH_LCMS2
  bench::AddLcms2Rows();
#endif
#ifdef BENCH_OPENCOLORIO
  bench::AddOpenColorIORows();
#endif
#ifdef BENCH_LIBDISPLAYINFO
  bench::AddDisplayInfoRows();
#endif
  return bench::Run(argc, argv);
}
