/** @file
 * VeloraCtlApi: colour control of a notebook's panel and of the maker's external monitors.
 *
 * Plain C functions over the singletons of VeloraCtlApi.dll. Every logged function writes one line
 * at entry ("mode:2(SetColorField)") through CoreKit's LcdLogMessage and forwards.
 *
 * Results: functions that give a ResultT give 0 (ResultOk) for success; the other numbers are named
 * below. No function catches exceptions: a C++ exception that leaves an operation reaches the host.
 *
 * Order: Init comes ahead of all that shows something on the panel, InitColorFieldInfo ahead of the
 * other colour mode functions, InitConfigSyncObject ahead of rings and waits. Settings, flags and
 * the colour mathematics need nothing before them.
 *
 * Threads: a function may be called from any thread unless it tells otherwise. Colour mode
 * functions must not be called from two threads at once.
 *
 * Settings belong to the machine or, where the feature is multi-user, to the user: see IsMultiUser.
 * Each getter reads the registry anew, and each setter gives ResultFailed when the registry refuses
 * the write.
 *
 * Records are plain, naturally aligned and owned by the caller; the library copies what it keeps.
 * A pointer must not be null unless its function tells what then happens. Texts are in the system's
 * code page. The header needs no <windows.h> and compiles as C11 and as C++.
 */
#ifndef VELORA_VELORACTLAPI_H
#define VELORA_VELORACTLAPI_H

#include <stdbool.h>
#include <stdint.h>

/** Marks an export. */
#if defined(_WIN32) && !defined(VELORA_BUILD)
#define VELORA_API __declspec(dllimport)
#else
#define VELORA_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** Result of most functions: 0 is success, a test for failure is a test for non-zero. */
typedef int32_t ResultT;

/** Numbers of ResultT. */
enum {
  ResultOk = 0,               /**< success */
  ResultFailed = 1,           /**< generic: a missing or unwritable value, a failed system call */
  ResultNotSet = 2,           /**< the stored settings hold no usable reset values */
  ResultOutOfRange = 3,       /**< a setting outside its range */
  ResultKeyNotFound = 4,      /**< a registry key could not be opened */
  ResultCreateFailed = 7,     /**< a named event could not be created */
  ResultAlreadyInit = 10,     /**< the feature's event exists already in this process */
  ResultNotCreated = 11,      /**< the feature's event was not created in this process */
  ResultTimeout = 14,         /**< a wait timed out */
  ResultFileNotFound = 15,    /**< an ICC file that should exist does not */
  ResultIccError = 16,        /**< an ICC file was changed or could not be installed */
  ResultColorFieldError = 17, /**< a colour mode could not be applied or stored */
};

/** Feature numbers: they name a feature in the flags, the settings keys and the change events. */
typedef int32_t FeatureType;

/** Numbers of FeatureType. */
enum {
  FEATURE_TYPE_WHITEPOINT = 0,          /**< correction of the panel's white point */
  FEATURE_TYPE_EYE_PROTECT = 1,         /**< less blue light */
  FEATURE_TYPE_TEMPERATURE = 2,         /**< colour temperature, chosen by the user */
  FEATURE_TYPE_COLOR_FIELD = 3,         /**< colour modes */
  FEATURE_TYPE_NATURAL_COLOR = 4,       /**< colour temperature that follows the room's */
  FEATURE_TYPE_DP_IN_OUT = 5,           /**< DisplayPort in and out: flags and event only */
  FEATURE_TYPE_ESD = 6,                 /**< flags and event only */
  FEATURE_TYPE_USER_DESIGN = 7,         /**< no flags: never supported, never multi-user */
  FEATURE_TYPE_WHITEPOINT_FINE_TUE = 8, /**< no flags: never supported, never multi-user */
};

/** Colour mode numbers. Mode 0 takes the 3D LUT out of the display, mode 7 is the e-book mode, and
 * -1 stands for no mode wherever a mode is returned. */
typedef int32_t ColorFieldMode;

/** Numbers of ColorFieldMode, with the LUT that the firmware has for them. */
enum {
  SrgbMode = 1,       /**< sRGB (IEC 61966-2-1) */
  P3Mode = 2,         /**< P3 */
  WebMode = 3,        /**< sRGB */
  DigitalMode = 4,    /**< P3 */
  PhotoMode = 5,      /**< P3 */
  DesignMode = 6,     /**< P3 */
  HdtvMode = 8,       /**< sRGB, whose primaries are those of ITU-R BT.709 */
  DigitalD65Mode = 9, /**< P3 */
  AdobeMode = 10,     /**< Adobe RGB (1998) */
  USRDESIGN_MODE = 11 /**< any user-designed mode */
};

/** How this machine applies a preset mode, one value for the whole machine: 0 DDC/CI on the maker's
 * external monitors, 1 3D LUT, 2 PCC matrix, 3 gamma LUT and 3D LUT. */
typedef uint32_t ColorFieldSetType;

/** Argument of InitColorFieldInfo. A text of exactly 100 bytes has no terminator. */
typedef struct ColorFieldInitInfo {
  ColorFieldSetType setType;     /**< how this machine applies preset modes */
  ColorFieldMode defaultMode;    /**< the mode of an unknown operating system profile */
  uint32_t reservedType;         /**< stored, never read */
  char pIccCheckFilePath[100];   /**< digest file of the preset ICC profiles */
  char threeLutBinFilePath[100]; /**< directory of LUT bin files after a panel change; ends in a
                                    backslash; empty: the one that they are in before */
  char goldenFilePath[100];      /**< name of the golden file; begins with a backslash */
} ColorFieldInitInfo;

/** Argument of AddColorFieldModeInfo: one preset mode of this machine. */
typedef struct ColorFieldModeInfo {
  ColorFieldMode mode; /**< any but USRDESIGN_MODE */
  char iccPath[100];   /**< full path of the mode's ICC profile; empty: none; one of exactly 100
                          bytes has no terminator */
  double PlatformPccMatrix[9]; /**< the matrix of set type 2, in the platform's order */
  double gamma;   /**< target gamma, 2.2 being the firmware LUT's; 0: the LUT engine does not learn
                     the mode */
  int32_t gamut;  /**< selects the firmware's LUT: 1, 3, 8 sRGB; 2, 4, 5, 6, 9 P3; 7 e-book; 10
                     Adobe. Modes 0, 1, 2, 7 and 10 have their own, whatever stands here */
  double temperR; /**< gain of red in the mode's gamma LUT; 0: as for gamma */
  double temperG; /**< gain of green */
  double temperB; /**< gain of blue */
} ColorFieldModeInfo;

/** A user-designed colour mode. Texts end with a zero within their array. */
typedef struct UserDesignInfo {
  double serialNum;       /**< the mode's number, given by the host */
  ColorFieldMode mode;    /**< USRDESIGN_MODE; stored, never read */
  char description[401];  /**< for the user */
  char id[100];           /**< the mode's key: mode name, "%", suffix; at most 51 bytes */
  char modeName[100];     /**< name shown to the user; at most 46 letters of ASCII */
  int32_t gamut;          /**< target primaries: 1 sRGB, 2 P3, 3 Adobe RGB (1998), 4 ITU-R BT.2020,
                             5 EBU Tech 3213, 6 SMPTE RP 145 */
  int32_t whitePointMode; /**< how the white point was given; the host's number */
  double whitePointX;     /**< CIE 1931 x of the white point */
  double whitePointY;     /**< CIE 1931 y of the white point */
  char whitePointXStr[100]; /**< the user's text for x */
  char whitePointYStr[100]; /**< the user's text for y */
  int32_t gammaMode;        /**< how the gamma was given; the host's number */
  double gamma;             /**< exponent of the mode's tone curve */
  char gammaStr[100];       /**< the user's text for the gamma */
  char iccPath[100];        /**< path of the mode's ICC profile; made by the library */
  char threeDLutPath[100];  /**< path of the mode's 3D LUT file; made by the library */
  char gammaPath[100];      /**< path of the mode's gamma LUT file; made by the library */
} UserDesignInfo;

/** The fine tuning of one mode's white point: gains, 1 leaves the channel as it is. */
typedef struct WhitePointFineTueInfo {
  char id[100];        /**< of a user-designed mode; one of 100 bytes has no terminator */
  ColorFieldMode mode; /**< USRDESIGN_MODE: the mode of this id; else a preset mode, whatever the
                          id */
  double r;            /**< gain of red, 0.89999 to 1.00001 */
  double g;            /**< gain of green, as for red */
  double b;            /**< gain of blue, as for red */
} WhitePointFineTueInfo;

/** A point of the colour temperature circle: centre (80, 80), radius 80, y growing downwards. */
typedef struct ColorTemperatureConfig {
  double x; /**< 0 to 160 */
  double y; /**< 0 to 160 */
} ColorTemperatureConfig;

/** Gains of the three channels: 1 leaves the channel as it is. */
typedef struct ColorTemperatureRgb {
  double r; /**< red */
  double g; /**< green */
  double b; /**< blue */
} ColorTemperatureRgb;

/** Gains and side values of one colour temperature: what the platform takes, 40 bytes. */
typedef struct Color3DInfo {
  double r;            /**< gain of red, 0 to 1: 1 leaves the channel as it is */
  double g;            /**< gain of green */
  double b;            /**< gain of blue */
  uint32_t colorBlue;  /**< 255: eye protection is on; 0: it is off or in the gains already */
  double protectValue; /**< strength of eye protection, 0 to 1: TransEyeProtectSliderValue */
} Color3DInfo;

/** A colour temperature as one number: what the platform takes, 8 bytes. */
typedef struct Color2DInfo {
  uint32_t temperature; /**< position of the slider, 0 to 366 */
  uint32_t colorBlue;   /**< as in Color3DInfo */
} Color2DInfo;

/** What a feature brings into a fusion. */
typedef struct FusionInfo {
  uint32_t status;       /**< the feature's new state: 1 is on */
  Color3DInfo colorInfo; /**< its gains and side values */
} FusionInfo;

/** A point of natural colour's curve: the gains at an ambient colour temperature. */
typedef struct CctAlgoInfo {
  float cct; /**< kelvin */
  double r;  /**< gain of red: 1 leaves the channel as it is */
  double g;  /**< gain of green */
  double b;  /**< gain of blue */
} CctAlgoInfo;

/** Argument of InitNatureColor: factory data of the host. */
typedef struct NatureColorDataIn {
  int32_t frameCount;       /**< steps of a dimming that a reading started; 0: 50 */
  int32_t frameTime;        /**< pause behind each step, in milliseconds */
  float dimmingThreshold;   /**< a change of more kelvin than this starts a dimming */
  int32_t methodVersion;    /**< logged, never read */
  float minLuma;            /**< the colour temperature assumed in the dark, in kelvin */
  float luminanceThreshold; /**< below this illuminance, in lux, the room is dark */
  int32_t monitorType;      /**< readings from 0 the light sensor; 1 the light sensor (lux) and the
                               firmware's event (kelvin); any other value: nowhere */
  int32_t executionType;    /**< delivery by 1 this process; any other value: VeloraAssistant.exe,
                               which stands beside the host's program, in the user's session */
  const CctAlgoInfo* algoInfo; /**< the curve, ascending in cct; read during the call only */
  int32_t algoInfoCnt;         /**< its points: 0, or at least 2 */
} NatureColorDataIn;

/** @name Platform
 * @{ */

/** Starts the platform library; comes ahead of all that shows something. Result: the platform's, 0
 * for success. Not logged. */
VELORA_API int Init(void);

/** Stops the platform library, once for each start. What the panel shows stays. Result: the
 * platform's, 0 for success. Not logged. */
VELORA_API int Fini(void);

/** Sends a colour temperature to the platform, in place of the one before it. Result: the
 * platform's, 0 for success. */
VELORA_API int Set2DColorTemperature(const Color2DInfo* colorInfo);

/** Sends gains to the platform, in place of the colour temperature before them, as Fusion gives
 * them. They are also stored for the printer link, for the whole machine; whether that worked does
 * not matter. Result: the platform's, 0 for success. */
VELORA_API int Set3DColorTemperature(const Color3DInfo* colorInfo);

/** @} */
/** @name Colour mathematics
 * @{ */

/** A point of a colour circle with the centre (radius, radius), y growing downwards, as gains in
 * (0, 1]. Points beyond the rim are the rim's. rgb stays as it is at the centre, for a negative
 * radius, and where no gain can be calculated: preset it to 1, 1, 1, as it is also logged. */
VELORA_API void TransColorTemperatureConfigToRGB(const ColorTemperatureConfig* config,
                                                 double radius, ColorTemperatureRgb* rgb);

/** The one colour temperature that goes to the platform when a feature has changed: its gains
 * multiplied by those of the other features, as the settings hold them. feature:
 *   - FEATURE_TYPE_WHITEPOINT     reads input's status
 *   - FEATURE_TYPE_TEMPERATURE    reads input's colorInfo
 *   - FEATURE_TYPE_NATURAL_COLOR  reads r, g and b of it
 *
 * Any other gives neutral gains, and so does the white point on a platform that takes no fusion.
 * Not logged. */
VELORA_API void Fusion(uint32_t feature, const FusionInfo* input, Color3DInfo* output);

/** @} */
/** @name Displays
 * @{ */

/** Extends the desktop over all displays, then writes the former first display path back into the
 * new arrangement. Blocks for 3 seconds. False: the arrangement could not be read, or the former
 * path not written back, as on a machine with one display; a switch that was made stays. */
VELORA_API bool SetMonitorExtendMode(void);

/** @} */
/** @name Panel
 * @{ */

/** Writes the panel's manufacturer, three PNP letters (VESA E-EDID) and "#", as a terminated text
 * into vendorBuf of vendorBufLength bytes (5 are enough). The buffer stays as it is when the panel
 * cannot be identified. A panel that was identified is not looked at again in this process. From
 * one thread at a time. */
VELORA_API void GetVendor(char* vendorBuf, int vendorBufLength);

/** @} */
/** @name Users
 * @{ */

/** Tells a service that another user logged on: the white point settings move to that user's hive,
 * and no others. Does nothing in a process without administrator rights or for a single-user
 * feature. */
VELORA_API void SwitchUser(void);

/** @} */
/** @name White point settings
 * @{ */

/** The stored status, or defaultWhitePointEnable where none is stored. */
VELORA_API int GetWhitePointStatus(int defaultWhitePointEnable);

/** Stores the status: 1 on, 0 off. Fusion shows it. */
VELORA_API ResultT SetWhitePointStatus(int whitePointEnable);

/** @} */
/** @name User-designed modes and fine tuning
 * One store for all users of the machine. DeleteUserDesignReg and EditUserSerialNumReg must not be
 * called from two threads at once.
 * @{ */

/** Deletes the stored mode of the record's id, with its fine tuning. ResultOk also where there is
 * no such mode. ResultFailed: its key could not be deleted; ResultKeyNotFound: no mode is stored.
 */
VELORA_API ResultT DeleteUserDesignReg(UserDesignInfo* userDesignInfo);

/** Stores the record's serialNum for the mode of its id, and nothing else of it. ResultFailed: an
 * empty id, or the registry refused the write. */
VELORA_API ResultT EditUserSerialNumReg(UserDesignInfo* userDesignInfo);

/** The root of the stored modes: 1 HKEY_CURRENT_USER, 2 HKEY_LOCAL_MACHINE, 3 HKEY_USERS. */
VELORA_API int GetUserRegHkey(void);

/** Reads the gains of the record's mode into the record. Its r, g and b must hold numbers ahead of
 * it: they are logged. A mode that is neither named above nor 0 or 7 throws std::out_of_range
 * ("invalid map<K, T> key"). ResultFailed: a gain is not stored or no number; what was read ahead
 * of it stays. */
VELORA_API ResultT GetWhitePointTueValue(WhitePointFineTueInfo* whitePoint);

/** Stores the gains of the record's mode, with six decimals; WhitePointFineTue shows them. Modes as
 * for GetWhitePointTueValue. ResultFailed: the registry refused a write; those ahead of it stay. */
VELORA_API ResultT SetWhitePointTueValue(WhitePointFineTueInfo* whitePoint);

/** @} */
/** @name Change events between processes
 * A doorbell for each of the features 0 to 6: one process stores a setting and rings, another waits
 * and reads the setting. A ring wakes one waiter and stays pending until there is one; several
 * rings ahead of a wait count once.
 * @{ */

/** Opens the event in this process; every process that rings or waits opens it first, in any order.
 * ResultAlreadyInit: it is open already. ResultCreateFailed: the system refused, or the feature has
 * no event. From one thread at a time. */
VELORA_API ResultT InitConfigSyncObject(int type);

/** Closes the event in this process, while no thread waits for it. ResultNotCreated: it is not
 * open. ResultFailed: it could not be closed. From one thread at a time. */
VELORA_API ResultT FiniConfigSyncObject(int type);

/** Rings. ResultNotCreated: the event is not open in this process; ResultFailed: the system
 * refused.
 */
VELORA_API ResultT NotifyConfigChange(int type);

/** Waits for a ring, at most timeout milliseconds; 0: without limit. ResultTimeout: nobody rang.
 * ResultNotCreated: the event is not open in this process; ResultFailed: the wait failed. */
VELORA_API ResultT WaitConfigChangeSync(int type, uint32_t timeout);

/** @} */
/** @name Eye protection settings
 * @{ */

/** 1 on, 0 off. Where nothing is stored, the INI file's value or the default is given and stored.
 */
VELORA_API int GetEyeProtectStatus(int defaultEyeProtectEnable);

/** Stores the status: 1 on, 0 off. */
VELORA_API ResultT SetEyeProtectStatus(int eyeProtectEnable);

/** Position of the slider, 0 to 366. Where nothing is stored, or a position out of range, the INI
 * file's or the default is given and stored. */
VELORA_API int GetEyeProtectValue(int defaultSliderValue);

/** Stores the position of the slider, 0 to 366. ResultOutOfRange: nothing was stored. */
VELORA_API ResultT SetEyeProtectValue(int eyeProtectValue);

/** The PSR setting, which the library stores and hands back; the default where none is stored. */
VELORA_API int GetPSRStatusValue(int defaultPSREnable);

/** Stores the PSR setting. */
VELORA_API ResultT SetPSRStatusValue(int PSREnable);

/** Base of the slider's strength; the default where none is stored. */
VELORA_API double GetRhineValue(double defaultRhineValue);

/** Stores the base of the slider's strength, 0 to 1, with six decimals. */
VELORA_API ResultT SetRhineValue(double rhineValue);

/** The platform's blue value of an eye protection status: 255 for 1, else 0. */
VELORA_API int GetColorBlueValue(int value);

/** Strength of eye protection at a slider position: from R + 0.65 (1 - R) at 0 to R at 180, flat to
 * 195, to 0.9 R at 366; R is the stored Rhine value or 0.82. R everywhere where the machine does
 * not support eye protection. */
VELORA_API double TransEyeProtectSliderValue(int sliderValue);

/** Stores who applies eye protection: 0 the platform, by colorBlue and protectValue; any other
 * number Fusion, by the gains of SetEyeProtectRGB. */
VELORA_API ResultT SetEyeProtectHandleType(int handleType);

/** Stores the gains of eye protection, with six decimals. The first write that fails is the result;
 * those ahead of it stay. */
VELORA_API ResultT SetEyeProtectRGB(double r, double g, double b);

/** @} */
/** @name Colour temperature settings
 * @{ */

/** Position of the slider, 0 to 366. Where nothing is stored, the INI file's or the default is
 * given and stored. */
VELORA_API int GetTemperatureValue(int defaultTemperatureValue);

/** Stores the position of the slider, 0 to 366. ResultOutOfRange: nothing was stored. */
VELORA_API ResultT SetTemperatureValue(int value);

/** 0 default, 1 warm, 2 cold, 255 unknown. Where nothing is stored, the INI file's type or 255 is
 * given and stored, whatever the default. */
VELORA_API int GetColorTemperatureType(int defaultColorType);

/** Stores the type, one of those numbers. */
VELORA_API ResultT SetColorTemperatureType(int colorType);

/** The point of the colour temperature circle. Where none is stored, the INI file's is given and
 * stored; ResultFailed, and the record stays as it was, where the INI file has none either. The
 * record must hold numbers ahead of it: they are logged. */
VELORA_API ResultT GetColorTemperatureConfig(ColorTemperatureConfig* colorConfig);

/** Stores the point, with six decimals, x first. */
VELORA_API ResultT SetColorTemperatureConfig(const ColorTemperatureConfig* colorConfig);

/** @} */
/** @name Natural colour settings
 * @{ */

/** 1 on, 0 off. Where nothing is stored, the INI file's value or the default, as 0 or 1, is given
 * and stored. */
VELORA_API int GetNatureColorStatus(int defaultStatus);

/** Stores the status: 1 on, 0 off. NotifyConfigChange(FEATURE_TYPE_NATURAL_COLOR) shows it. */
VELORA_API ResultT SetNatureColorStatus(int status);

/** @} */
/** @name Natural colour
 * One thread, start ahead of stop.
 * @{ */

/** Starts natural colour in this process, the only one of the machine to run it: from now on the
 * panel's colour temperature follows the room's while the setting is on and the e-book mode is not
 * set. A host that changes either rings FEATURE_TYPE_NATURAL_COLOR. Starts two threads and, on the
 * calling one, a multithreaded apartment. With natural colour off, the panel goes to the curve's
 * neutral point (the first whose gains are all 1) at once.
 * No result: whatever fails is logged, and the rest goes on. dataIn must not be null. A second
 * start without a stop ends the process. */
VELORA_API void InitNatureColor(const NatureColorDataIn* dataIn);

/** Stops it, on the thread that started it: waits for the frame under way. The panel stays as it
 * is. Also safe without a start. A host calls it before it frees the library: threads that still
 * run then end the process. */
VELORA_API void FiniNatureColor(void);

/** @} */
/** @name Colour mode settings
 * Plain values, stored by the host.
 * @{ */

/** The mode in force, or the default where none is stored. */
VELORA_API int GetColorFieldCurrentMode(int defaultMode);

/** Stores the mode in force: the host does so after each switch that has succeeded. */
VELORA_API ResultT SetColorFieldCurrentMode(int mode);

/** The mode to return to on reset, or the default where none is stored. */
VELORA_API int GetColorFieldResetMode(int defaultMode);

/** Stores the mode to return to on reset; -1: none. */
VELORA_API ResultT SetColorFieldResetMode(int config);

/** The ColorFieldSetType of ResetColorField, or the default where none is stored. */
VELORA_API int GetColorFieldSetType(int defaultType);

/** Stores the ColorFieldSetType of ResetColorField; 4: none. */
VELORA_API ResultT SetColorFieldSetType(int setType);

/** @} */
/** @name Feature flags
 * The flags of this machine, read from the registry once a process. A flag that was read is 0 or 1;
 * a flag set in this process is the value given. featureType outside 0 to 8 reads as 0; to store a
 * flag of one outside 0 to 6 gives ResultFailed.
 * @{ */

/** Whether the machine has the feature; 0 where nothing is stored. */
VELORA_API int IsFeatureSupport(int featureType);

/** Whether each user has settings of his own for the feature; 0 where nothing is stored. Each
 * feature's settings ask once a process, at their first use. */
VELORA_API int IsMultiUser(int featureType);

/** Whether the feature takes part in the display check, which is the host's; 0 where nothing is
 * stored. */
VELORA_API int IsDisplayerCheck(int featureType);

/** Whether the feature was never used; 1 where nothing is stored. Of a multi-user feature: by the
 * user. */
VELORA_API int IsFirstUse(int featureType);

/** Stores whether the machine has the feature. */
VELORA_API ResultT SetFeatureSupport(int featureType, int value);

/** Stores whether each user has settings of his own for the feature. */
VELORA_API ResultT SetMultiUser(int featureType, int value);

/** Stores whether the feature takes part in the display check. */
VELORA_API ResultT SetDisplayerCheck(int featureType, int value);

/** Stores whether the feature was never used, for the user where IsMultiUser was read as 1 ahead of
 * it. */
VELORA_API ResultT SetFirstUseState(int featureType, int value);

/** A number that the library stores and hands back (0 where none is stored), read anew each time.
 */
VELORA_API int GetFrameWorkType(void);

/** Stores that number. */
VELORA_API ResultT SetFrameWorkType(int type);

/** @} */
/** @name Colour modes
 * One calling thread at a time.
 * @{ */

/** Tells how this machine applies colour modes and empties the table of preset modes. Comes first.
 * ResultFailed: a null record, or a digest path of more than 100 bytes. */
VELORA_API ResultT InitColorFieldInfo(const ColorFieldInitInfo* info);

/** Registers a preset mode; of two rows for one mode the earlier wins.
 * ResultFailed: a null record, or a profile path of more than 100 bytes. */
VELORA_API ResultT AddColorFieldModeInfo(const ColorFieldModeInfo* modeInfo);

/** Registers a user-designed mode, as it is stored; of two rows for one id the earlier wins.
 * ResultFailed: a null record. */
VELORA_API ResultT AddUsrDesignInfo(const UserDesignInfo* modeInfo);

/** Switches to a preset mode: the operating system's ICC profile and the display's output together.
 * The host stores the mode afterwards. ResultFailed: the monitor or its present profile could not
 * be found; ResultFileNotFound, ResultIccError: the mode's profile is missing or was changed,
 * nothing was switched; ResultColorFieldError: the output could not be set, the old profile was put
 * back.
 *
 * With set type 0 there are SrgbMode and P3Mode only; other modes give ResultFailed. Each call
 * writes VCP feature 224 (VESA MCCS: the maker's own) of the maker's external monitors, 6 for sRGB
 * and 1 for P3, over DDC/CI and has them store it in their memory, which wears: never tie it to a
 * slider. */
VELORA_API ResultT SetColorField(int mode);

/** Switches to the registered user mode of this id, by its own profile and LUT files, and makes it
 * the current user mode. On failure the old profile is put back.
 * ResultFailed: no mode of this name is registered; ResultFileNotFound, ResultIccError: its profile
 * is missing, changed or refused; ResultColorFieldError: no target monitor, or a LUT could not be
 * set. */
VELORA_API ResultT SetUserColorField(const char* id);

/** Shows the record's gains, 0.89999 to 1.00001 each, on its mode's gamma LUT at once; gains out of
 * range become 1, in the record and in the store. Stores nothing else. A user mode must have been
 * switched to in this process.
 * ResultFailed: the mode's gamma LUT is not there or is dark; else the platform's result. */
VELORA_API ResultT WhitePointFineTue(WhitePointFineTueInfo* whitePoint);

/** Designs a user mode: calculates its 3D LUT and gamma LUT from the panel's EDID and the record's
 * gamut (1 to 6), white point and gamma, makes its profile (ICC.1), stores all of it, registers the
 * mode and switches to it. Needs write access to the system's profile directory and to
 * HKEY_LOCAL_MACHINE. Ids have at most 51 bytes, mode names at most 46 letters of ASCII: the
 * profile of a longer name never passes its check. A failure leaves what was done before it.
 * ResultColorFieldError: no valid LUT, or a file or a text field refused; ResultFailed: the
 * registry refused; else the switch's result. */
VELORA_API ResultT SaveUserSelfColor(const UserDesignInfo* userDesignInfo);

/** Changes the registered user mode oldId and switches to it. Other colours make all files anew;
 * another id, name or description renames the LUT files and makes the profile anew, and a failure
 * of that puts the old names back. ResultColorFieldError: nothing was stored; else the switch's
 * result, and the change stays. */
VELORA_API ResultT EditUserColorField(const UserDesignInfo* userDesignInfo, const char* oldId);

/** Takes a user mode out of the table. Files, output and profile stay; the stored record goes with
 * DeleteUserDesignReg. ResultFailed: no such mode. */
VELORA_API ResultT DeleteUserSelfColor(const char* id);

/** @} */
/** @name Colour modes and the system's profile
 * One calling thread at a time, together with the colour modes.
 * @{ */

/** The system's profile decides: works out which registered mode it belongs to and switches the
 * output to it, unless that mode is the stored one. A user mode is switched to in any case. The
 * mode, for the host to store: USRDESIGN_MODE for a user mode, the default mode for an unknown
 * profile, the stored mode (or -1) where the monitor has no profile; -1 on failure. */
VELORA_API int SyncSysColorField(void);

/** The stored mode decides: a monitor without any profile gets the one of the stored mode. false
 * when that failed. */
VELORA_API bool SyncCurrentModeIccFile(void);

/** Takes the output back to the stored reset mode, by the stored set type: with 0 over DDC/CI as
 * SetColorField does, with 1 and 3 the 3D LUT is taken out, with 2 the matrix. The profile and a
 * gamma LUT stay. ResultNotSet: no reset mode is stored, or set type 4; ResultColorFieldError: a
 * set type beyond 4; else the way's result. */
VELORA_API ResultT ResetColorField(void);

/** @} */
/** @name Telemetry
 * Events through the telemetry library, which leaves out a pair whose key is empty or has more than
 * 32 bytes or whose value has more than 1024. Texts are in the system's code page; a null one
 * throws std::logic_error. Not logged: whether an event arrived can't be seen.
 * @{ */

/** Reports an event of this number with one key and its value, ahead of its return. */
VELORA_API void OrbviewReportDataSync(int eventId, const char* key, const char* value);

/** The same on a thread of its own, one for each event and without a limit; the texts are copied.
 * std::system_error when the thread can't be started. Nothing waits for it: a host that unloads
 * this library gives its last events time to end first. */
VELORA_API void OrbviewReportDataAsync(int eventId, const char* key, const char* value);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
