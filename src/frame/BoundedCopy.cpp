#include "frame/BoundedCopy.h"

#include <cerrno>
#include <cstring>
#include <functional>

namespace velora {
namespace {

// Sizes above this are negative numbers in disguise (C11 calls it RSIZE_MAX).
constexpr size_t kMaxSize = SIZE_MAX / 2;

// The ranges [a, a + size) and [b, b + size) share a byte.
bool Overlap(const void* a, const void* b, size_t size) {
  const auto* first = static_cast<const unsigned char*>(a);
  const auto* second = static_cast<const unsigned char*>(b);
  const std::less<> before;
  return before(first, second + size) && before(second, first + size);
}

}  // namespace

int memcpy_s(void* destination, size_t destinationSize, const void* source, size_t count) {
  if (destination == nullptr || destinationSize > kMaxSize) {
    return EINVAL;
  }
  if (source == nullptr || count > destinationSize || Overlap(destination, source, count)) {
    std::memset(destination, 0, destinationSize);
    return source == nullptr ? EINVAL : ERANGE;
  }
  std::memcpy(destination, source, count);
  return 0;
}

int memset_s(void* destination, size_t destinationSize, int value, size_t count) {
  if (destination == nullptr || destinationSize > kMaxSize) {
    return EINVAL;
  }
  if (count > destinationSize) {
    std::memset(destination, value, destinationSize);
    return ERANGE;
  }
  std::memset(destination, value, count);
  return 0;
}

int strcpy_s(char* destination, size_t destinationSize, const char* source) {
  if (destination == nullptr || destinationSize == 0 || destinationSize > kMaxSize) {
    return EINVAL;
  }
  const size_t length = source == nullptr ? 0 : strnlen(source, destinationSize);
  if (source == nullptr || length == destinationSize) {
    destination[0] = '\0';
    return source == nullptr ? EINVAL : ERANGE;
  }
  std::memcpy(destination, source, length + 1);
  return 0;
}

int wcsncpy_s(wchar_t* destination, size_t destinationSize, const wchar_t* source, size_t count) {
  if (destination == nullptr || destinationSize == 0 || destinationSize > kMaxSize) {
    return EINVAL;
  }
  if (source == nullptr) {
    destination[0] = L'\0';
    return EINVAL;
  }
  size_t length = 0;
  while (length < count && source[length] != L'\0') {
    if (++length == destinationSize) {
      destination[0] = L'\0';
      return ERANGE;
    }
  }
  std::memcpy(destination, source, length * sizeof(wchar_t));
  destination[length] = L'\0';
  return 0;
}

}  // namespace velora
