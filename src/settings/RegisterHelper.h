#pragma once

#include <windows.h>

#include <cstdint>
#include <string>
#include <type_traits>

#include "velora/VeloraCtlApi.h"

namespace velora {

// Typed access to single registry values. Stateless; a key is opened and closed by each operation.
//
//   value                                stored as
//   32-bit integers and enumerations     REG_DWORD
//   double                               REG_SZ, "%f" text: six decimals
//   wide text                            REG_SZ with its terminator
class RegisterHelper {
 public:
  // --- Reading: ResultOk, ResultKeyNotFound (no such key), ResultFailed (no such value) ---

  // A value of at most four bytes, whatever its registry type, into the four bytes at value. With
  // logFailure a failure is logged.
  ResultT RegReadValue(HKEY root, const std::wstring& subKey, const std::wstring& itemName,
                       void* value, bool logFailure) const;

  // The stored 32-bit value, or defaultValue; nothing is logged.
  template <typename T>
  requires(sizeof(T) == 4 && (std::is_integral_v<T> || std::is_enum_v<T>)) T
      RegReadValue(HKEY root, const std::wstring& subKey, const std::wstring& itemName,
                   T defaultValue)
  const {
    T value = defaultValue;
    return RegReadValue(root, subKey, itemName, &value, false) == ResultOk ? value : defaultValue;
  }

  // A text of at most 259 characters.
  ResultT RegReadValue(HKEY root, const std::wstring& subKey, const std::wstring& itemName,
                       std::wstring& value, bool logFailure) const;

  // A text that starts with a number. A failure is always logged and leaves value alone.
  ResultT RegReadValue(HKEY root, const std::wstring& subKey, const std::wstring& itemName,
                       double* value) const;

  // --- Writing: ResultOk or ResultFailed (logged); keys are made on demand ---

  ResultT RegWriteValue(HKEY root, const std::wstring& subKey, const std::wstring& itemName,
                        uint32_t value) const;
  ResultT RegWriteValue(HKEY root, const std::wstring& subKey, const std::wstring& itemName,
                        double value) const;
  ResultT RegWriteValue(HKEY root, const std::wstring& subKey, const std::wstring& itemName,
                        const std::wstring& value) const;
  template <typename T>
  requires(sizeof(T) == 4 && std::is_enum_v<T>) ResultT
      RegWriteValue(HKEY root, const std::wstring& subKey, const std::wstring& itemName, T value)
  const { return WriteEnumeration(root, subKey, itemName, static_cast<int32_t>(value)); }

  // --- Keys ---

  // Deletes keyName below parent; ResultFailed for a key that has sub keys.
  ResultT RegDeleteKeyW(HKEY root, const std::wstring& parent, const std::wstring& keyName) const;
  bool IsRegKeyExists(HKEY root, const std::wstring& subKey) const;

 private:
  // Stored as the unsigned integers are; a failure line shows the sign.
  ResultT WriteEnumeration(HKEY root, const std::wstring& subKey, const std::wstring& itemName,
                           int32_t value) const;
};

}  // namespace velora
