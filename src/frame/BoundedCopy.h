#pragma once

#include <cstddef>
#include <cstdint>

// The bounded copies of ISO C11 Annex K with the standard's own semantics. The C runtimes' versions
// end the process on a refused copy, or leave it to a handler that belongs to the host; here a
// refused copy is a result, and a failure of the calling operation.
//
// All give 0 on success and non-zero on a violated constraint. A refused copy clears the
// destination (memory: all of destinationSize; text: its first character) where there is a
// destination.
namespace velora {

int memcpy_s(void* destination, size_t destinationSize, const void* source, size_t count);
int memset_s(void* destination, size_t destinationSize, int value, size_t count);
int strcpy_s(char* destination, size_t destinationSize, const char* source);

// Copies at most count characters of source and terminates; sizes count characters.
int wcsncpy_s(wchar_t* destination, size_t destinationSize, const wchar_t* source, size_t count);

}  // namespace velora
