#include "settings/RegisterHelper.h"

#include <array>
#include <cstring>
#include <cwchar>
#include <utility>

#include "frame/Log.h"
#include "settings/NumberText.h"

namespace velora {
namespace {

constexpr FunctionLog kReadLog("RegisterHelper::RegReadValue");
constexpr FunctionLog kWriteLog("RegisterHelper::RegWriteValue");

constexpr size_t kMaxText = 260;  // characters, with the terminator

// An open registry key; closed with the object.
class Key {
 public:
  static Key Open(HKEY root, const std::wstring& subKey) {
    Key key;
    if (RegOpenKeyW(root, subKey.c_str(), &key.handle_) != ERROR_SUCCESS) {
      key.handle_ = nullptr;
    }
    return key;
  }

  // Opens the key for writing and makes it, and those above it, where they are missing.
  static Key Create(HKEY root, const std::wstring& subKey) {
    constexpr DWORD reserved = 0;
    constexpr DWORD nonVolatile = REG_OPTION_NON_VOLATILE;
    wchar_t* const noClass = nullptr;
    SECURITY_ATTRIBUTES* const defaultSecurity = nullptr;
    DWORD* const noDisposition = nullptr;
    Key key;
    if (RegCreateKeyExW(root, subKey.c_str(), reserved, noClass, nonVolatile, KEY_WRITE,
                        defaultSecurity, &key.handle_, noDisposition) != ERROR_SUCCESS) {
      key.handle_ = nullptr;
    }
    return key;
  }

  Key(Key&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
  Key& operator=(Key&&) = delete;
  ~Key() {
    if (IsOpen()) {
      RegCloseKey(handle_);
    }
  }

  bool IsOpen() const { return handle_ != nullptr; }
  HKEY Handle() const { return handle_; }

 private:
  Key() = default;

  HKEY handle_ = nullptr;
};

// At most size bytes of a value, whatever its registry type. The two reads word a key that can't be
// opened differently: keyLabel.
ResultT Read(HKEY root, const std::wstring& subKey, const std::wstring& itemName, void* bytes,
             DWORD size, const wchar_t* keyLabel, bool logFailure) {
  const Key key = Key::Open(root, subKey);
  if (!key.IsOpen()) {
    if (logFailure) {
      kReadLog.Error(keyLabel, subKey, L" not exists!");
    }
    return ResultKeyNotFound;
  }
  DWORD* const anyType = nullptr;
  if (RegQueryValueExW(key.Handle(), itemName.c_str(), nullptr, anyType, static_cast<BYTE*>(bytes),
                       &size) != ERROR_SUCCESS) {
    if (logFailure) {
      kReadLog.Error(L"itemName:", itemName, L" not exist in subKey:", subKey);
    }
    return ResultFailed;
  }
  return ResultOk;
}

// shown is the value as a failure line has it.
template <typename Shown>
ResultT Write(HKEY root, const std::wstring& subKey, const std::wstring& itemName, DWORD type,
              const void* bytes, size_t size, const Shown& shown) {
  const Key key = Key::Create(root, subKey);
  if (!key.IsOpen()) {
    kWriteLog.Error(L"RegCreateKeyEx:", subKey, L" failed!");
    return ResultFailed;
  }
  if (RegSetValueExW(key.Handle(), itemName.c_str(), 0, type, static_cast<const BYTE*>(bytes),
                     static_cast<DWORD>(size)) != ERROR_SUCCESS) {
    kWriteLog.Error(L"Write key:", subKey, L", itemName:", itemName, L", value:", shown,
                    L" failed!");
    return ResultFailed;
  }
  return ResultOk;
}

}  // namespace

ResultT RegisterHelper::RegReadValue(HKEY root, const std::wstring& subKey,
                                     const std::wstring& itemName, void* value,
                                     bool logFailure) const {
  uint32_t number = 0;
  const ResultT result =
      Read(root, subKey, itemName, &number, sizeof(number), L"Open key:", logFailure);
  if (result == ResultOk) {
    std::memcpy(value, &number, sizeof(number));
  }
  return result;
}

ResultT RegisterHelper::RegReadValue(HKEY root, const std::wstring& subKey,
                                     const std::wstring& itemName, std::wstring& value,
                                     bool logFailure) const {
  std::array<wchar_t, kMaxText> text{};
  const ResultT result =
      Read(root, subKey, itemName, text.data(), sizeof(text), L"Reg key:", logFailure);
  if (result == ResultOk) {
    // A value that fills the buffer may lack its terminator.
    value.assign(text.data(), wcsnlen(text.data(), text.size()));
  }
  return result;
}

ResultT RegisterHelper::RegReadValue(HKEY root, const std::wstring& subKey,
                                     const std::wstring& itemName, double* value) const {
  try {
    std::wstring text;
    const ResultT result = RegReadValue(root, subKey, itemName, text, true);
    if (result == ResultOk) {
      *value = ParseDouble(text);
    }
    return result;
  } catch (...) {  // text that is no number, or out of a double's range
    kReadLog.Error(L"RegReadValue failed!");
    return ResultFailed;
  }
}

ResultT RegisterHelper::RegWriteValue(HKEY root, const std::wstring& subKey,
                                      const std::wstring& itemName, uint32_t value) const {
  return Write(root, subKey, itemName, REG_DWORD, &value, sizeof(value), value);
}

ResultT RegisterHelper::WriteEnumeration(HKEY root, const std::wstring& subKey,
                                         const std::wstring& itemName, int32_t value) const {
  return Write(root, subKey, itemName, REG_DWORD, &value, sizeof(value), value);
}

ResultT RegisterHelper::RegWriteValue(HKEY root, const std::wstring& subKey,
                                      const std::wstring& itemName, double value) const {
  return RegWriteValue(root, subKey, itemName, FormatDouble(value));
}

ResultT RegisterHelper::RegWriteValue(HKEY root, const std::wstring& subKey,
                                      const std::wstring& itemName,
                                      const std::wstring& value) const {
  const size_t size = (value.size() + 1) * sizeof(wchar_t);
  return Write(root, subKey, itemName, REG_SZ, value.c_str(), size, value);
}

ResultT RegisterHelper::RegDeleteKeyW(HKEY root, const std::wstring& parent,
                                      const std::wstring& keyName) const {
  const Key key = Key::Open(root, parent);
  if (!key.IsOpen()) {
    constexpr FunctionLog log("RegisterHelper::RegDeleteKeyW");
    log.Error(L"Open key:", parent, L" not exists!");
    return ResultKeyNotFound;
  }
  return ::RegDeleteKeyW(key.Handle(), keyName.c_str()) == ERROR_SUCCESS ? ResultOk : ResultFailed;
}

bool RegisterHelper::IsRegKeyExists(HKEY root, const std::wstring& subKey) const {
  return Key::Open(root, subKey).IsOpen();
}

}  // namespace velora
