#pragma once

// The fast ways of the arithmetic use AVX2 and FMA, which a processor has both or neither. They are
// asked for at run time: the library is built for any x86-64, and a plain way stands beside each
// fast one.
//
// Functions are marked one by one, instead of compiling their files for AVX2: of an inline function
// of a header the linker keeps one copy for all, and it could be such a file's.
#define VELORA_AVX2 [[gnu::target("avx2,fma")]]

namespace velora {

inline bool HasAvx2() { return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma"); }

}  // namespace velora
