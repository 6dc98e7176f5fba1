#include "veloractl/Registry.h"

#include <cstring>

namespace veloractl {
namespace {

// A key open for reading.
class OpenKey {
 public:
  OpenKey(HKEY root, const std::wstring& path) {
    if (RegOpenKeyExW(root, path.c_str(), 0, KEY_READ, &key_) != ERROR_SUCCESS) {
      key_ = nullptr;
    }
  }
  ~OpenKey() {
    if (key_ != nullptr) {
      RegCloseKey(key_);
    }
  }
  OpenKey(const OpenKey&) = delete;
  OpenKey& operator=(const OpenKey&) = delete;

  HKEY Get() const { return key_; }

 private:
  HKEY key_ = nullptr;
};

constexpr DWORD kLongestName = 16384;  // of a value, in letters

std::string Hexadecimal(const std::vector<uint8_t>& bytes) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (const uint8_t byte : bytes) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 15];
  }
  return text;
}

Json AsJson(DWORD type, const std::vector<uint8_t>& data) {
  if (type == REG_DWORD && data.size() == sizeof(DWORD)) {
    DWORD number = 0;
    std::memcpy(&number, data.data(), sizeof number);
    return static_cast<int32_t>(number);
  }
  if (type == REG_SZ || type == REG_EXPAND_SZ) {
    std::wstring text(data.size() / sizeof(wchar_t), L'\0');
    std::memcpy(text.data(), data.data(), text.size() * sizeof(wchar_t));
    return ToUtf8(text.substr(0, text.find(L'\0')));
  }
  return Hexadecimal(data);
}

}  // namespace

std::wstring Below(const std::wstring& path, const std::wstring& child) {
  return path + L"\\" + child;
}

std::string NameOfKey(HKEY root, const std::wstring& path) {
  const char* const name = root == HKEY_LOCAL_MACHINE  ? "HKEY_LOCAL_MACHINE"
                           : root == HKEY_CURRENT_USER ? "HKEY_CURRENT_USER"
                           : root == HKEY_USERS        ? "HKEY_USERS"
                                                       : "HKEY_CLASSES_ROOT";
  return std::string(name) + "\\" + ToUtf8(path);
}

Json ReadRegistry(HKEY root, const std::wstring& path, const std::wstring& name) {
  const OpenKey key(root, path);
  DWORD type = 0;
  DWORD size = 0;
  if (key.Get() == nullptr ||
      RegQueryValueExW(key.Get(), name.c_str(), nullptr, &type, nullptr, &size) != ERROR_SUCCESS) {
    return nullptr;
  }
  std::vector<uint8_t> data(size);
  if (RegQueryValueExW(key.Get(), name.c_str(), nullptr, &type, data.data(), &size) !=
      ERROR_SUCCESS) {
    return nullptr;
  }
  data.resize(size);
  return AsJson(type, data);
}

std::vector<std::wstring> SubKeys(HKEY root, const std::wstring& path) {
  const OpenKey key(root, path);
  std::vector<std::wstring> names;
  wchar_t name[256];
  for (DWORD index = 0, length = 256;
       key.Get() != nullptr && RegEnumKeyExW(key.Get(), index, name, &length, nullptr, nullptr,
                                             nullptr, nullptr) == ERROR_SUCCESS;
       ++index, length = 256) {
    names.emplace_back(name, length);
  }
  return names;
}

Json ReadTree(HKEY root, const std::wstring& path) {
  const OpenKey key(root, path);
  if (key.Get() == nullptr) {
    return nullptr;
  }
  Json tree = Json::object();
  std::wstring name(kLongestName, L'\0');
  DWORD length = kLongestName;
  for (DWORD index = 0; RegEnumValueW(key.Get(), index, name.data(), &length, nullptr, nullptr,
                                      nullptr, nullptr) == ERROR_SUCCESS;
       ++index, length = kLongestName) {
    const std::wstring value = name.substr(0, length);
    tree[value.empty() ? "(default)" : ToUtf8(value)] = ReadRegistry(root, path, value);
  }
  for (const std::wstring& child : SubKeys(root, path)) {
    tree[ToUtf8(child)] = ReadTree(root, Below(path, child));
  }
  return tree;
}

}  // namespace veloractl
