# clang-tidy (see .clang-tidy) runs before each compilation, so that only what changed is checked
# again. It reads the sources for the target, with the cross-compiler's headers in place of this
# machine's; the compiler's own intrinsics headers come from clang.
find_program(CLANG_TIDY NAMES clang-tidy-14 clang-tidy REQUIRED)
set(CMAKE_CXX_CLANG_TIDY ${CLANG_TIDY} --quiet --extra-arg=--target=x86_64-w64-windows-gnu
  --extra-arg=-nostdlibinc)
foreach(dir ${CMAKE_CXX_IMPLICIT_INCLUDE_DIRECTORIES})
  if(NOT dir MATCHES "/gcc/.*/include(-fixed)?$")
    list(APPEND CMAKE_CXX_CLANG_TIDY --extra-arg=-isystem${dir})
  endif()
endforeach()
