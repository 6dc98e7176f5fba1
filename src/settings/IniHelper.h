#pragma once

#include <string>

namespace velora {

// Reads single values of one INI file.
class IniHelper {
 public:
  explicit IniHelper(const std::wstring& filePath) : filePath_(filePath) {}
  virtual ~IniHelper() = default;

  // The value for T = unsigned long, int or double, as a stream's >> takes it from the text:
  // "12abc" gives 12, text without a number gives 0. 0: found, whatever the text was. 1: no such
  // value, or an empty one (logged); *value stays.
  template <typename T>
  int GetValue(const std::wstring& section, const std::wstring& key, T* value) const;

  // An unsigned value in the bits of an int, as the registry keeps it; else defaultValue.
  int GetUnsigned(const std::wstring& section, const std::wstring& key, int defaultValue) const;

 private:
  const std::wstring filePath_;
};

}  // namespace velora
