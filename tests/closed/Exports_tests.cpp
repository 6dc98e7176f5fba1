// The names in the DLLs' export tables, as clients of this project's compiler ask for them.
#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

// Names of a loaded module's export table, in its order: sorted.
std::vector<std::string> ExportedNames(const wchar_t* module) {
  const auto* base = reinterpret_cast<const uint8_t*>(LoadLibraryW(module));
  if (!base) {
    return {"no such module"};
  }
  const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
  const auto* nt = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
  const auto* exports = reinterpret_cast<const IMAGE_EXPORT_DIRECTORY*>(
      base + nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT].VirtualAddress);
  const auto* names = reinterpret_cast<const DWORD*>(base + exports->AddressOfNames);
  std::vector<std::string> result;
  for (DWORD i = 0; i < exports->NumberOfNames; ++i) {
    result.emplace_back(reinterpret_cast<const char*>(base + names[i]));
  }
  return result;
}

const std::string kString = "NSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE";
const std::string kWString = "NSt7__cxx1112basic_stringIwSt11char_traitsIwESaIwEEE";

}  // namespace

TEST(Exports, VeloraPlatform) {
  EXPECT_THAT(ExportedNames(L"VeloraPlatform.dll"),
              testing::UnorderedElementsAre("GetPlatform", "PlatformFini", "PlatformInit",
                                            "PlatformReset3DLut", "PlatformResetPccMatrixInfo",
                                            "PlatformSet2DColorTemperature",
                                            "PlatformSet3DColorTemperature", "PlatformSet3DLut",
                                            "PlatformSetGammaLut", "PlatformSetPccMatrixInfo"));
}

TEST(Exports, CoreKit) {
  EXPECT_THAT(
      ExportedNames(L"CoreKit.dll"),
      testing::UnorderedElementsAre(
          "LcdLogMessage", "_ZN7CoreKit16IsAdminPrivilegeEv", "_ZN7CoreKit17GetLogonSessionIdEv",
          "_ZN7CoreKit21GetUserSIDBySessionIdEjR" + kWString,
          "_ZN7CoreKit16BytesToHexStringB5cxx11EPKhy", "_ZN7CoreKit15StringToWStringERK" + kString,
          "_ZN7CoreKit15WStringToStringERK" + kWString,
          "_ZN7CoreKit24GetCanonicalizedFilePathERK" + kString,
          "_ZN7CoreKit25EnableFileUsersPriviledgeERK" + kString, "_ZN7CoreKit14GetDisplayTypeEv",
          "_ZN7CoreKit33LoadUserProcessByServerPriviledgeERK" + kWString + "S7_"));
}

TEST(Exports, LogKit) {
  EXPECT_THAT(ExportedNames(L"LogKit.dll"),
              testing::UnorderedElementsAre(
                  "_ZN8NxLogger11GetInstanceEv",
                  "_ZN8NxLogger3LogE17LOG_MESSAGE_LEVELRNSt7__cxx1118basic_stringstreamIw"
                  "St11char_traitsIwESaIwEEE"));
}

// Of a constructor and a destructor the compiler makes two: of whole objects and of bases.
TEST(Exports, WmiKit) {
  EXPECT_THAT(ExportedNames(L"WmiKit.dll"),
              testing::UnorderedElementsAre(
                  "_ZN5NxSDK8WmiQuery15ExcuteQueryImplERK" + kWString +
                      "S8_RKSt8functionIFvRK10tagVARIANTEEb",
                  "_ZN5NxSDK8WmiQuery9GetResultERK10tagVARIANTR" + kWString,
                  "_ZN5NxSDK7BiosWmi11GetBiosInfoERNS_14WmiInputParamsERNS_15WmiOutputParamsE",
                  "_ZN5NxSDK16BiosEventMonitorC1Ev", "_ZN5NxSDK16BiosEventMonitorC2Ev",
                  "_ZN5NxSDK16BiosEventMonitorD1Ev", "_ZN5NxSDK16BiosEventMonitorD2Ev",
                  "_ZN5NxSDK16BiosEventMonitor17StartEventMonitorEPFvjE",
                  "_ZN5NxSDK16BiosEventMonitor16StopEventMonitorEv"));
}

TEST(Exports, orbevent) {
  EXPECT_THAT(ExportedNames(L"orbevent.dll"),
              testing::UnorderedElementsAre(
                  "_ZN8OrbEventC1Ei", "_ZN8OrbEventC2Ei", "_ZN8OrbEventD1Ev", "_ZN8OrbEventD2Ev",
                  "_ZN8OrbEvent9PutStringERK" + kString + "S7_", "_ZN7OrbView6ReportER8OrbEvent"));
}

// A module that includes the headers without using them can export what they emit into it.
TEST(Exports, AClientCanExportWhatTheHeadersEmit) {
  const HMODULE client = LoadLibraryW(L"closed_tests_client.dll");
  ASSERT_NE(client, nullptr);
  const auto constant = [client]<typename T>(const char* name, T) {
    const auto* value =
        reinterpret_cast<const T*>(reinterpret_cast<const void*>(GetProcAddress(client, name)));
    return value ? *value : T{77};
  };
  EXPECT_EQ(constant("_ZN8OrbEvent11MAX_KEY_LENE", uint64_t{}), 32u);
  EXPECT_EQ(constant("_ZN8OrbEvent13MAX_VALUE_LENE", uint64_t{}), 1024u);
  EXPECT_EQ(constant("_ZN8OrbEvent12MAX_PAIR_NUME", uint64_t{}), 256u);
  EXPECT_EQ(constant("_ZN8OrbEvent12MAX_ARR_SIZEE", uint64_t{}), 100u);
  EXPECT_EQ(constant("_ZN8OrbEvent12MAX_PATH_LENE", uint64_t{}), 256u);
  EXPECT_EQ(constant("_ZN8OrbEvent12MAX_FILE_NUME", uint64_t{}), 10u);
  EXPECT_EQ(constant("_ZN8OrbEvent11INVALID_NUME", int32_t{}), -1);
  EXPECT_EQ(ExportedNames(L"closed_tests_client.dll").size(), 14u);
}
