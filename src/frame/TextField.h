#pragma once

#include <cstddef>
#include <cstring>
#include <string_view>

#include "frame/BoundedCopy.h"

// Records carry their texts in fixed arrays of chars. A text that fills its array has no
// terminator.
namespace velora {

// The text of a field; never reads beyond its array.
template <size_t N>
std::string_view FieldText(const char (&field)[N]) {
  return {field, strnlen(field, N)};
}

// Copies the characters of a text, without terminator, over the front of a field: what stood behind
// them stays. A text of more than N characters is refused, with a non-zero result and a zeroed
// field. At most N + 1 characters of text are looked at.
template <size_t N>
int CopyToField(char (&field)[N], const char* text) {
  return memcpy_s(field, N, text, strnlen(text, N + 1));
}

}  // namespace velora
