#include "icc/DigestFile.h"

#include <cstring>

#include "frame/BoundedCopy.h"

namespace velora {

bool HoldsName(const DigestRecord& record, const std::string& name) {
  char text[sizeof record.fileName];
  // Of one size, so the copy can't be refused.
  memcpy_s(text, sizeof text, record.fileName, sizeof record.fileName);
  text[sizeof text - 1] = '\0';
  return std::strstr(text, name.c_str()) != nullptr;
}

}  // namespace velora
