// What the tests of the settings classes share.
#pragma once

#include <string>

#include "settings/FeatureManager.h"
#include "support/IniFile.h"
#include "support/NotebookTest.h"
#include "support/Registry.h"

namespace velora {

using testsupport::DwordValue;
using testsupport::RegistryValue;
using testsupport::RegistryValues;
using testsupport::TextValue;

// A machine without settings, flags and INI file. The settings of T, single-user, are at kKey.
template <typename T>
class SettingsTest : public testsupport::NotebookTest {
 protected:
  explicit SettingsTest(const std::wstring& name)
      : key(L"SOFTWARE\\Norvex\\Velora\\" + name), settings(Construct()) {
    notebook.ForgetRecords();
  }

  RegistryValues Stored() const { return testsupport::ReadKey(HKEY_LOCAL_MACHINE, key); }
  void Store(const std::wstring& name, const RegistryValue& value) const {
    testsupport::WriteValue(HKEY_LOCAL_MACHINE, key, name, value);
  }
  void Delete(const std::wstring& name) const {
    ASSERT_EQ(RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, key.c_str(), name.c_str()), ERROR_SUCCESS);
  }

  // The lines of the layers below.
  testsupport::LogLine IniLine(const std::wstring& section, const std::wstring& name) const {
    return {1, L"get key:" + name + L" from section:" + section +
                   L" failed in file:C:\\ProgramData\\Comms\\NxVelora\\SetColor.ini"
                   L"(IniHelper::GetValue)"};
  }
  testsupport::LogLine NoKeyLine(const std::wstring& label) const {
    return {3, label + key + L" not exists!(RegisterHelper::RegReadValue)"};
  }
  testsupport::LogLine NoValueLine(const std::wstring& name) const {
    return {3, L"itemName:" + name + L" not exist in subKey:" + key +
                   L"(RegisterHelper::RegReadValue)"};
  }
  testsupport::LogLine NoNumberLine() const {
    return {3, L"RegReadValue failed!(RegisterHelper::RegReadValue)"};
  }
  testsupport::LogLine NotCreatedLine() const {
    return {3, L"RegCreateKeyEx:" + key + L" failed!(RegisterHelper::RegWriteValue)"};
  }

  const std::wstring key;
  const testsupport::ScopedKey machine{HKEY_LOCAL_MACHINE, L"SOFTWARE\\Norvex\\Velora"};
  const testsupport::IniFile ini;
  T settings;

 private:
  static T Construct() {
    for (int type = 0; type < 7; ++type) {
      FeatureManager::GetInstance().IsMultiUser(type);
      FeatureManager::GetInstance().SetMultiUser(type, 0);
    }
    return T();
  }
};

}  // namespace velora
