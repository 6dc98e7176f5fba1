// The settings store and the colour mathematics as they are described, written a second time in the
// plainest way, on a registry and an INI file of its own: the oracle of the sweeps. It meets the
// same fault as the library.
#pragma once

#include <windows.h>

#include <array>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "faults/FaultSweep.h"
#include "velora/VeloraCtlApi.h"
#include "virtualnotebook/Notebook.h"

namespace faults {

class SettingsModel {
 public:
  // --- The machine ---

  RegistryTree machine;                      // HKEY_LOCAL_MACHINE, below SOFTWARE\Norvex\Velora
  RegistryTree user;                         // HKEY_CURRENT_USER, or the user's hive of HKEY_USERS
  std::map<std::wstring, std::wstring> ini;  // "SECTION\Key"
  std::wstring sid;                          // of the logged-on user
  bool administrator = false;
  uint32_t platformType = 0;

  // --- One run ---

  Fault fault;
  std::vector<virtualnotebook::LogLine> log;
  std::vector<std::string> calls;  // without those of the log

  // The calls of the run before are forgotten, what the process has built is not.
  void Begin(const Fault& next);

  // --- The exports ---

  int GetWhitePointStatus(int value);
  ResultT SetWhitePointStatus(int value);
  int GetEyeProtectStatus(int value);
  ResultT SetEyeProtectStatus(int value);
  int GetEyeProtectValue(int value);
  ResultT SetEyeProtectValue(int value);
  int GetPSRStatusValue(int value);
  ResultT SetPSRStatusValue(int value);
  double GetRhineValue(double value);
  ResultT SetRhineValue(double value);
  int GetColorBlueValue(int value);
  double TransEyeProtectSliderValue(int slider);
  ResultT SetEyeProtectHandleType(int value);
  ResultT SetEyeProtectRGB(double r, double g, double b);
  int GetTemperatureValue(int value);
  ResultT SetTemperatureValue(int value);
  int GetColorTemperatureType(int value);
  ResultT SetColorTemperatureType(int value);
  ResultT GetColorTemperatureConfig(ColorTemperatureConfig* point);
  ResultT SetColorTemperatureConfig(const ColorTemperatureConfig* point);
  int GetNatureColorStatus(int value);
  ResultT SetNatureColorStatus(int value);
  int GetColorFieldCurrentMode(int value);
  ResultT SetColorFieldCurrentMode(int value);
  int GetColorFieldResetMode(int value);
  ResultT SetColorFieldResetMode(int value);
  int GetColorFieldSetType(int value);
  ResultT SetColorFieldSetType(int value);
  ResultT GetWhitePointTueValue(WhitePointFineTueInfo* info);
  ResultT SetWhitePointTueValue(const WhitePointFineTueInfo* info);
  ResultT EditUserSerialNumReg(const UserDesignInfo* info);
  ResultT DeleteUserDesignReg(const UserDesignInfo* info);
  int GetUserRegHkey();
  void SwitchUser();

  int IsFeatureSupport(int type) { return IsFeature(type, support_); }
  int IsMultiUser(int type) { return IsFeature(type, multiUser_); }
  int IsDisplayerCheck(int type) { return IsFeature(type, lcdCheck_); }
  int IsFirstUse(int type) { return IsFeature(type, firstUse_); }
  ResultT SetFeatureSupport(int type, int value) {
    return SetFeature(false, type, value, support_, L"Support");
  }
  ResultT SetMultiUser(int type, int value) {
    return SetFeature(false, type, value, multiUser_, L"MultiUser");
  }
  ResultT SetDisplayerCheck(int type, int value) {
    return SetFeature(false, type, value, lcdCheck_, L"LcdCheck");
  }
  ResultT SetFirstUseState(int type, int value);
  int GetFrameWorkType();
  ResultT SetFrameWorkType(int value);

  void TransColorTemperatureConfigToRGB(const ColorTemperatureConfig* point, double radius,
                                        ColorTemperatureRgb* rgb);
  void Fusion(uint32_t feature, const FusionInfo* input, Color3DInfo* output);
  int Set2DColorTemperature(const Color2DInfo* info);
  int Set3DColorTemperature(const Color3DInfo* info);

 private:
  using Flags = std::array<uint32_t, 9>;
  using Gains = std::array<double, 3>;

  // Where a settings class has its values.
  struct Place {
    bool ofUser = false;     // not HKEY_LOCAL_MACHINE
    bool ofService = false;  // HKEY_USERS
    bool multiUser = false;
    std::wstring path;
  };

  // A line of the log; a function's name alone stands for an export.
  template <typename... Parts>
  void Line(int level, const char* function, const Parts&... parts) {
    std::wostringstream text;
    static_cast<void>((text << ... << parts));
    text << '(' << function << ')';
    log.push_back({level, text.str()});
  }

  // Notes a call; false when it fails.
  bool Calls(const std::string& function);
  // What a call gives that is no success but for 0.
  int ResultOf(const std::string& function);
  // A conversion between narrow and wide.
  std::wstring Wide(const std::string& text);

  Place& PlaceOf(int feature);  // of the class, which is built if need be
  void ResolveUser(Place& place);
  RegistryTree& TreeOf(const Place& place) { return place.ofUser ? user : machine; }
  std::wstring KeyOf(const Place& place) const;  // in the tree

  ResultT Read(const Place& place, const std::wstring& name, DWORD size,
               std::vector<uint8_t>& bytes, const wchar_t* keyLabel, bool logged);
  ResultT ReadNumber(const Place& place, const std::wstring& name, uint32_t& value,
                     bool logged = false);
  ResultT ReadDouble(const Place& place, const std::wstring& name, double& value);
  ResultT Write(const Place& place, const std::wstring& name,
                const testsupport::RegistryValue& value, const std::wstring& shown);
  ResultT WriteNumber(const Place& place, const std::wstring& name, int value);
  ResultT WriteText(const Place& place, const std::wstring& name, const std::wstring& text);
  ResultT WriteDouble(const Place& place, const std::wstring& name, double value);
  ResultT WriteGains(const Place& place, const Gains& gains);
  ResultT ReadGains(const Place& place, Gains& gains);
  bool KeyExists(const Place& place);
  ResultT DeleteKey(const Place& parent, const std::wstring& name);
  template <typename T>
  bool ReadIni(const wchar_t* section, const wchar_t* key, T& value);

  int PlainGet(int feature, const wchar_t* name, int value);
  Place FineTuning(Place place, int mode, const std::string& id);

  void LoadFlags();
  int IsFeature(int type, const Flags& flags);
  ResultT SetFeature(bool ofUser, int type, int value, Flags& flags, const wchar_t* key);

  // Of the fusion.
  bool IsFusionNeeded(int feature);
  void MergeColorTemperature(Color3DInfo& output);
  void MergeWhitePoint(uint32_t status, Color3DInfo& output);
  void MergeNaturalColor(uint32_t status, Color3DInfo& output);
  bool EyeProtectGain(uint32_t colorBlue, Gains& gains);

  std::map<std::string, unsigned> counts_;
  std::map<int, Place> places_;
  bool isUserDesignBuilt_ = false;
  bool areFlagsLoaded_ = false;
  Flags support_{}, multiUser_{}, lcdCheck_{}, firstUse_{};
  std::array<double, 6> alphas_ = {0.93F, 0.92F, 0.88F, 0.92F, 0.93F, 0.90F};  // R G B C M Y
  bool areAlphasLoaded_ = false;
};

}  // namespace faults
