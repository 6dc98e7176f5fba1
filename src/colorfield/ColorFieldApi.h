#pragma once

#include <windows.h>

#include <icm.h>

#include <string>
#include <vector>

#include "VeloraPlatform/VeloraPlatform.h"
#include "colormath/UsrDesignAlgo.h"
#include "frame/Log.h"
#include "icc/ICCProfileOperation.h"
#include "icc/IccFileCheck.h"
#include "lut/ColorField3DLut.h"
#include "settings/UserDesignReg.h"
#include "velora/VeloraCtlApi.h"

namespace velora {

// Values of ColorFieldSetType.
enum : ColorFieldSetType {
  SetTypeDdcci = 0,      // external monitor
  SetType3DLut = 1,      // 3D LUT through the display driver
  SetTypePccMatrix = 2,  // PCC matrix through the display driver
  SetTypeGammaLut = 3,   // gamma LUT and 3D LUT through the display driver
};

// One display device as the system lists it.
struct MonitorInfo {
  std::wstring deviceName;
  std::wstring deviceID;     // the name that the colour system knows the monitor by
  std::wstring modelDriver;  // the model code in deviceID
  std::wstring deviceString;
  std::wstring deviceKey;
};

class ColorFieldApi;

// What travels through the enumeration of external monitors.
struct DdcciRequest {
  uint8_t vcpCode;
  uint32_t vcpValue;
  bool succeeded;              // a monitor has taken the value and kept it
  bool matched;                // a monitor was taken as the maker's
  uint32_t byMonitorIdentity;  // 0: the maker is told by the description, 1: by the interface path
  const ColorFieldApi* owner;
};

// Switches colour modes: the ICC profile that the operating system associates with the target
// monitor, and the output of the panel. It knows nothing of the machine until the host has told it.
// There is one instance, without a lock: it must be used from one thread at a time.
//
// A ResultT is 0 for success. Sources by topic:
//   ColorFieldApi_ModeTables.cpp     registration of modes, look-ups
//   ColorFieldApi_EnableMode.cpp     the sequence of a switch, the ways of the output
//   ColorFieldApi_UserModes.cpp      the same for user modes, and the white point's fine tuning
//   ColorFieldApi_UserDesign.cpp     saving, editing and deleting user modes
//   ColorFieldApi_Sync.cpp           mode and system profile brought together
//   ColorFieldApi_Ddcci.cpp          external monitors
//   ColorFieldApi_TargetMonitor.cpp  which monitor profiles are associated with
//   ColorFieldApi_OsProfile.cpp      the profile: query, check, install, associate, put back
class ColorFieldApi {
 public:
  static ColorFieldApi& GetInstance();

  ColorFieldApi() = default;
  ColorFieldApi(const ColorFieldApi&) = delete;
  ColorFieldApi& operator=(const ColorFieldApi&) = delete;
  ~ColorFieldApi();

  // --- Mode tables ---

  // Empties the table of preset modes, but not that of user modes.
  ResultT InitColorFieldInfo(const ColorFieldInitInfo* info);
  ResultT AddColorFieldModeInfo(const ColorFieldModeInfo* modeInfo);
  ResultT AddUsrDesignInfo(const UserDesignInfo* modeInfo);

  // False for a mode without a row or without a profile. Of several rows the earliest counts.
  bool FindIccFilePathByMode(ColorFieldMode mode, std::string& path) const;
  bool FindIccFilePathByModeName(const std::string& modeName, std::string& path) const;
  // The user mode whose profile path contains the file name.
  bool FindUserModeByIcc(const std::wstring& iccFileName, std::string& id) const;
  bool FindPccMatrixByMode(ColorFieldMode mode, PlatformPccMatrix& matrix) const;

  // --- Switching ---

  // Profile and output; a failure of the output puts the old profile back.
  ResultT SetColorField(ColorFieldMode mode);
  // Output only, by the way of this machine.
  ResultT EnableColorFieldMode(ColorFieldMode mode);
  ResultT EnableColorFieldByDriver(ColorFieldMode mode);
  ResultT EnableColorFieldByPcc(ColorFieldMode mode) const;
  ResultT EnableColorFieldByGamma(ColorFieldMode mode);

  // Profile and output of a user mode; a failure of either puts the old profile back.
  ResultT SetUserColorField(const std::string& id);
  // The same, and a failure of the output leaves the new profile. A success makes it the current
  // user mode. reload reads the LUT files again.
  ResultT EnableUserColorField(const std::string& id, bool reload);
  ResultT EnableUsrICCProfile(const std::string& modeName);

  // --- User-designed modes ---

  // Makes the three files of a new mode, stores it, adds it to the table and switches to it. A
  // failure leaves what was done before it.
  ResultT SaveUserSelfColor(const UserDesignInfo& info);
  // The same for a mode that has the id oldId; a change of id or name alone calculates no LUT.
  ResultT EditUserColorField(const UserDesignInfo& info, const std::string& oldId);
  // From the table only. ResultFailed for an id without a row.
  ResultT DeleteUserSelfColor(const std::string& id);

  // Shows the gains on the panel at once; gains out of range become 1, in the record and the store.
  ResultT WhitePointFineTue(WhitePointFineTueInfo* whitePoint);

  // --- External monitors ---

  // ResultFailed for any mode but sRGB and P3, ResultColorFieldError when no monitor of the maker
  // takes the mode's value. The monitors tell the maker by their description; when none does, by
  // the identity in their interface path.
  ResultT EnableColorFieldByDdcci(ColorFieldMode mode) const;
  // Writes and saves the value on the maker's physical monitors behind one HMONITOR. Gives what the
  // enumeration wants to know: 0 to stop.
  BOOL SetMonitorColorField(HMONITOR monitor, DdcciRequest& request) const;
  // The same for EnumDisplayMonitors; data is a DdcciRequest*.
  static BOOL CALLBACK SetMonitorColorFieldProc(HMONITOR monitor, HDC, RECT*, LPARAM data);
  // By the interface paths of its adapter's monitors.
  bool IsNorvexMonitorByHmonitor(HMONITOR monitor) const;
  static bool IsNorvexMonitorName(const std::wstring& name);

  // --- In line with the system ---

  // Switches the output to the mode of the system's profile. That mode, USRDESIGN_MODE for a user
  // mode, the stored mode where there is no profile, -1 on failure. Stores nothing.
  ColorFieldMode SyncSysColorField();
  // Associates the stored mode's profile with a monitor that has none. False when that failed.
  bool SyncCurrentModeIccFile();
  // Takes the output back to the stored reset mode. ResultNotSet where none is stored.
  ResultT ResetColorField() const;

  // --- Target monitor ---

  // Chooses the monitor anew and gives its device id, which may be empty.
  ResultT GetTargetMonitorName(std::wstring& name);
  // The model code of the built-in panel.
  ResultT GetTargetMonitorNameByWmi(std::wstring& name) const;
  // Appends the adapter's monitors that are active and attached.
  void EnumerateCurrentAdapters(const DISPLAY_DEVICEW& adapter,
                                std::vector<MonitorInfo>& monitors) const;
  // At most 7 characters of what stands between the first two backslashes.
  bool GetModelDriverFromDeviceID(const wchar_t* deviceID, std::wstring& model) const;

  // --- The operating system's profile; all calls are in the scope of the current user ---

  // The file name of the target monitor's default profile, empty without one. Chooses the target
  // monitor for all operations below.
  ResultT GetDefaultIccFile(std::wstring& name);
  // The same question for a given device and profile id 1.
  bool QueryIccFile(const std::wstring& deviceName, std::wstring& name) const;
  // True when current contains the file name of target; an empty file name is in every text.
  bool IsIccAlreadyAssociated(const std::wstring& current, const std::string& target) const;

  // For preset profiles: the file must match its digest record.
  ResultT SetOsIccFileWithCheck(const std::string& path);
  ResultT CheckTargetIccFileIsValid(const std::string& path, const char* digestPath) const;

  // For user profiles: the file must carry its own hash, and the mode's name.
  ResultT SetUsrIccFileWithCheck(const std::string& path, const std::string& modeName);

  // Installs and associates without a check.
  ResultT SetOsIccFile(const std::wstring& path);
  // A failure leaves the handles open that it has opened.
  ResultT InstallIccFile(const std::wstring& path);
  bool AssociateIccFile(const std::wstring& fileName) const;
  // An open and valid profile, or null.
  HPROFILE GetProfileHandle(const std::wstring& path) const;

  // Puts back what GetDefaultIccFile gave.
  void ResetOsIccField(const std::wstring& previousIcc);

 private:
  static BOOL CALLBACK StorePrimaryDisplayName(HMONITOR monitor, HDC, RECT*, LPARAM self);
  MonitorInfo ChooseMonitor(const std::vector<MonitorInfo>& monitors,
                            const std::wstring& modelName) const;
  void CloseProfileHandles();

  // Makes all files of a mode; its iccPath becomes that of the profile in the temporary directory.
  ResultT CreateFileByUsrDesignInfo(UserDesignInfo& info);
  bool IsUserDesignDataChange(const UserDesignInfo& info, const std::string& oldId) const;
  ResultT EditUserDesignData(UserDesignInfo& info, const std::string& oldId, UserDesignInfo& out);
  ResultT EditUserDesignDescription(UserDesignInfo& info, const std::string& oldId,
                                    UserDesignInfo& out);

  // The first preset mode whose profile path contains the file name.
  std::vector<ColorFieldModeInfo>::const_iterator FindPresetByIcc(const std::string& iccName) const;
  // Parts of SyncCurrentModeIccFile, with its log.
  bool AssociatePreset(ColorFieldMode mode, const FunctionLog& log);
  bool AssociateCurrentUserMode(const FunctionLog& log);

  MonitorInfo targetMonitorInfo_;
  HPROFILE profileHandles_[2] = {};   // the profile being installed; the standard sRGB profile
  std::wstring primaryDisplayName_;   // adapter of the primary monitor seen last
  std::wstring alternateDeviceName_;  // nothing assigns it
  ColorFieldSetType setType_ = 0;
  ColorFieldMode defaultMode_ = 0;
  uint32_t reservedType_ = 0;                   // never read
  char iccCheckFilePath_[100] = {};             // the digest file; without terminator when full
  std::vector<ColorFieldModeInfo> modeIccVec_;  // mode, iccPath and PlatformPccMatrix only
  std::vector<UserDesignInfo> modeUsrDesignVec_;
  ColorField3DLut colorField3DLut_;
  IccFileCheck iccFileCheck_;
  UsrDesignAlgo usrDesignAlgo_;
  UserDesignReg userDesignReg_;
  ICCProfileOperation iccProfileOperation_;
};

}  // namespace velora
