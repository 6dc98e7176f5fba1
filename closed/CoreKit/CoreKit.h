// CoreKit.dll: the maker's system utilities. This header is the binding interface; the reference
// build beside it stands in for the closed one and is real, on the documented Windows calls.
//
// All functions may be called from any thread; only LcdLogMessage writes to the log.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#if !defined(_WIN32)
#define COREKIT_API
#elif defined(COREKIT_BUILD)
#define COREKIT_API __declspec(dllexport)
#else
#define COREKIT_API __declspec(dllimport)
#endif

using ResultT = int32_t;

// Appends one line to the log. Levels: 0 debug, 1 information, 2 warning, 3 error; another number
// stands in the line as it is. A null text counts as empty.
//
// The reference build: UTF-8 lines of time (UTC), process, thread, level and text in
// "C:\ProgramData\Comms\NxVelora\Log\velora.log", safe from several processes too. A file of 1 MiB
// becomes "velora.log.1".
extern "C" COREKIT_API void LcdLogMessage(int level, const wchar_t* text);

namespace CoreKit {

// Whether the process may act for other users: 1 for an elevated administrator and for the system,
// else 0. Only the low byte counts.
COREKIT_API int IsAdminPrivilege();

// Session of the logged-on user: the one at the console. 0xFFFFFFFF while none is attached.
COREKIT_API unsigned int GetLogonSessionId();

// On 0, sid holds the textual SID ("S-1-5-21-...") of the session's user; otherwise it is as it
// was. The system may be asked about any session, other callers about their own.
COREKIT_API ResultT GetUserSIDBySessionId(unsigned int sessionId, std::wstring& sid);

// Two hexadecimal digits a byte, in order; the reference build's are in lower case. Null gives an
// empty text.
COREKIT_API std::string BytesToHexString(const uint8_t* bytes, size_t count);

// Conversions through the system code page. Embedded zeros stay.
COREKIT_API std::wstring StringToWString(const std::string& text);
COREKIT_API std::string WStringToString(const std::wstring& text);

// Absolute, "." and ".." resolved, "/" as "\", without the blanks and dots that the system drops
// from the end. Empty for a path that it refuses: an empty one, one with a control character or one
// of <>"|?*, with a colon elsewhere than behind the drive letter, a device such as "NUL", and one
// that comes out longer than 259 characters. The file need not exist.
COREKIT_API std::string GetCanonicalizedFilePath(const std::string& path);

// Gives all local users full access to the file, or to the directory and what will lie in it.
// 0 on success, 1 on failure.
COREKIT_API int EnableFileUsersPriviledge(const std::string& path);

// How the panel is connected: a DISPLAYCONFIG_VIDEO_OUTPUT_TECHNOLOGY of wingdi.h. The reference
// build takes the first active internal display (0x80000000 internal, 6 LVDS, 11 embedded
// DisplayPort, 13 embedded UDI), else the first active one. Where the display configuration can't
// be read, a display on the desktop counts as internal. 0xFFFFFFFF: the type can't be told.
COREKIT_API unsigned int GetDisplayType();

// Starts the program at exePath, without a window of its own, in the session at the console and as
// its user; commandLine is handed to it as it is, program name included. 0 when started, 1 on
// failure. The system reaches any user's session, other callers only their own.
COREKIT_API ResultT LoadUserProcessByServerPriviledge(const std::wstring& exePath,
                                                      const std::wstring& commandLine);

}  // namespace CoreKit
