#pragma once

// Paths and names that the whole library shares: one definition of each.
namespace velora {

// Factory defaults of the settings; read-only to this library.
inline constexpr wchar_t kIniFilePath[] = L"C:\\ProgramData\\Comms\\NxVelora\\SetColor.ini";

// Default directory of the LUT bin files.
inline constexpr char kDataDir[] = "C:\\ProgramData\\Comms\\NxVelora\\";

// User colour data.
inline constexpr char userRootDir[] = "C:\\ProgramData\\Comms\\NxVelora\\User";
inline constexpr char userGammaLutDir[] = "C:\\ProgramData\\Comms\\NxVelora\\User\\gammalut";
inline constexpr char user3DLutDir[] = "C:\\ProgramData\\Comms\\NxVelora\\User\\3dlut";
inline constexpr char userTempDir[] = "C:\\ProgramData\\Comms\\NxVelora\\User\\temp";

// The system's ICC profiles.
inline constexpr char colorProfileDir[] = "C:\\Windows\\System32\\spool\\drivers\\color";

inline constexpr char kInstallDir[] = "C:\\Program Files\\Norvex\\NxVelora";

// Below HKEY_CLASSES_ROOT; the default value names the installed program.
inline constexpr wchar_t kShellCommandKey[] = L"DesktopBackground\\Shell\\NxVelora\\command";

// Sub keys of the white point's fine tuning: one key in them for each mode.
inline constexpr wchar_t kPresetModeKey[] = L"PresetMode";
inline constexpr wchar_t kUserDesignModeKey[] = L"UserDesignMode";

inline constexpr wchar_t kWmiCimV2[] = L"ROOT\\CIMV2";
inline constexpr wchar_t kWmiWmi[] = L"ROOT\\WMI";

}  // namespace velora
