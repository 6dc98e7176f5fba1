/* VeloraCtlApi: colour control of a notebook's panel and of the maker's external monitors.
 *
 * Plain C functions over the singletons of VeloraCtlApi.dll. Every logged function writes one line
 * at entry ("mode:2(SetColorField)") through CoreKit's LcdLogMessage and forwards.
 *
 * Results: functions that give a ResultT give 0 (ResultOk) for success; the other numbers are named
 * below. No function catches exceptions: a C++ exception that leaves an operation reaches the host.
 *
 * Threads: settings and feature flag functions may be called from any thread. Colour mode functions
 * must not be called from two threads at once.
 *
 * Records are plain, naturally aligned and owned by the caller; the library copies what it keeps.
 * The header needs no <windows.h> and compiles as C11 and as C++.
 */
#ifndef VELORA_VELORACTLAPI_H
#define VELORA_VELORACTLAPI_H

#include <stdbool.h>
#include <stdint.h>

#if defined(_WIN32) && !defined(VELORA_BUILD)
#define VELORA_API __declspec(dllimport)
#else
#define VELORA_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Result of most functions: 0 is success, a test for failure is a test for non-zero. */
typedef int32_t ResultT;

enum {
  ResultOk = 0,               /* success */
  ResultFailed = 1,           /* generic: a missing or unwritable value, a failed system call */
  ResultNotSet = 2,           /* the stored settings hold no usable reset values */
  ResultOutOfRange = 3,       /* a setting outside its range */
  ResultKeyNotFound = 4,      /* a registry key could not be opened */
  ResultCreateFailed = 7,     /* a named event could not be created */
  ResultAlreadyInit = 10,     /* the feature's event exists already in this process */
  ResultNotCreated = 11,      /* the feature's event was not created in this process */
  ResultTimeout = 14,         /* a wait timed out */
  ResultFileNotFound = 15,    /* an ICC file that should exist does not */
  ResultIccError = 16,        /* an ICC file was changed or could not be installed */
  ResultColorFieldError = 17, /* a colour mode could not be applied or stored */
};

/* Feature numbers: they name a feature in the flags, the settings keys and the change events. */
typedef int32_t FeatureType;

enum {
  FEATURE_TYPE_WHITEPOINT = 0,
  FEATURE_TYPE_EYE_PROTECT = 1,
  FEATURE_TYPE_TEMPERATURE = 2,
  FEATURE_TYPE_COLOR_FIELD = 3,
  FEATURE_TYPE_NATURAL_COLOR = 4,
  FEATURE_TYPE_DP_IN_OUT = 5,
  FEATURE_TYPE_ESD = 6,
  FEATURE_TYPE_USER_DESIGN = 7,         /* no flags: never supported, never multi-user */
  FEATURE_TYPE_WHITEPOINT_FINE_TUE = 8, /* no flags: never supported, never multi-user */
};

/* Colour mode numbers. Mode 0 takes the 3D LUT out of the display, mode 7 is the e-book mode, and
 * -1 stands for no mode wherever a mode is returned. */
typedef int32_t ColorFieldMode;

enum {
  SrgbMode = 1,
  P3Mode = 2,
  WebMode = 3,
  DigitalMode = 4,
  PhotoMode = 5,
  DesignMode = 6,
  HdtvMode = 8,
  DigitalD65Mode = 9,
  AdobeMode = 10,
  USRDESIGN_MODE = 11
};

/* How this machine applies a preset mode: one value for the whole machine. */
typedef uint32_t ColorFieldSetType;

/* Argument of InitColorFieldInfo. A text of exactly 100 bytes has no terminator. */
typedef struct ColorFieldInitInfo {
  ColorFieldSetType setType;     /* 0 DDC/CI, 1 3D LUT, 2 PCC matrix, 3 gamma LUT and 3D LUT */
  ColorFieldMode defaultMode;    /* the mode of an unknown operating system profile */
  uint32_t reservedType;         /* stored, never read */
  char pIccCheckFilePath[100];   /* digest file of the preset ICC profiles */
  char threeLutBinFilePath[100]; /* directory of LUT bin files after a panel change; ends in "\" */
  char goldenFilePath[100];      /* name of the golden file; begins with "\" */
} ColorFieldInitInfo;

/* Argument of AddColorFieldModeInfo: one preset mode of this machine. */
typedef struct ColorFieldModeInfo {
  ColorFieldMode mode;
  char iccPath[100];           /* full path of the mode's ICC profile; empty: none */
  double PlatformPccMatrix[9]; /* the matrix of set type 2, in the platform's order */
  double gamma;                /* target gamma; 0: the LUT engine does not learn the mode */
  int32_t gamut;               /* gamut number, selects the firmware's LUT type */
  double temperR;              /* colour temperature gains; 0: as for gamma */
  double temperG;
  double temperB;
} ColorFieldModeInfo;

/* A user-designed colour mode. Texts end with a zero within their array. */
typedef struct UserDesignInfo {
  double serialNum; /* the mode's number, given by the host */
  ColorFieldMode mode;
  char description[401];
  char id[100];             /* the mode's key: mode name, "%", suffix */
  char modeName[100];       /* name shown to the user */
  int32_t gamut;            /* gamut choice */
  int32_t whitePointMode;   /* how the white point was given; the host's number */
  double whitePointX;       /* CIE x of the white point */
  double whitePointY;       /* CIE y of the white point */
  char whitePointXStr[100]; /* the user's text for x */
  char whitePointYStr[100]; /* the user's text for y */
  int32_t gammaMode;        /* how the gamma was given; the host's number */
  double gamma;
  char gammaStr[100];      /* the user's text for the gamma */
  char iccPath[100];       /* path of the mode's ICC profile */
  char threeDLutPath[100]; /* path of the mode's 3D LUT file */
  char gammaPath[100];     /* path of the mode's gamma LUT file */
} UserDesignInfo;

/* The fine tuning of one mode's white point: gains, 1 leaves the channel as it is. */
typedef struct WhitePointFineTueInfo {
  char id[100]; /* of a user-designed mode; one of 100 bytes has no terminator */
  ColorFieldMode
      mode; /* USRDESIGN_MODE: the mode of this id; else a preset mode, whatever the id */
  double r;
  double g;
  double b;
} WhitePointFineTueInfo;

/* A point of the colour temperature circle: centre (80, 80), radius 80. */
typedef struct ColorTemperatureConfig {
  double x;
  double y;
} ColorTemperatureConfig;

/* Gains of the three channels: 1 leaves the channel as it is. */
typedef struct ColorTemperatureRgb {
  double r;
  double g;
  double b;
} ColorTemperatureRgb;

/* Gains and side values of one colour temperature: what the platform takes, 40 bytes. */
typedef struct Color3DInfo {
  double r; /* gains: 1 leaves the channel as it is */
  double g;
  double b;
  uint32_t colorBlue;  /* 255: eye protection is on; 0: it is off or in the gains already */
  double protectValue; /* strength of eye protection */
} Color3DInfo;

/* A colour temperature as one number: what the platform takes, 8 bytes. */
typedef struct Color2DInfo {
  uint32_t temperature; /* position of the slider, 0 to 366 */
  uint32_t colorBlue;   /* as in Color3DInfo */
} Color2DInfo;

/* What a feature brings into a fusion. */
typedef struct FusionInfo {
  uint32_t status;       /* the feature's new state: 1 is on */
  Color3DInfo colorInfo; /* its gains and side values */
} FusionInfo;

/* --- Platform ------------------------------------------------------------------------------- */

/* Starts and stops the platform library. Result: the platform's, 0 for success. Not logged. */
VELORA_API int Init(void);
VELORA_API int Fini(void);

/* Send a colour temperature to the platform; the result is the platform's, 0 for success. The gains
 * are also stored for the printer link. */
VELORA_API int Set2DColorTemperature(const Color2DInfo* colorInfo);
VELORA_API int Set3DColorTemperature(const Color3DInfo* colorInfo);

/* --- Colour mathematics ----------------------------------------------------------------------- */

/* A point of a colour circle with the centre (radius, radius), y growing downwards, as gains in
 * (0, 1]. Points beyond the rim are the rim's. rgb stays as it is at the centre, for a negative
 * radius, and where no gain can be calculated: preset it to 1, 1, 1. No record may be null. */
VELORA_API void TransColorTemperatureConfigToRGB(const ColorTemperatureConfig* config,
                                                 double radius, ColorTemperatureRgb* rgb);

/* The one colour temperature that goes to the platform when a feature has changed: its gains
 * multiplied by those of the other features, as the settings hold them. feature:
 *   FEATURE_TYPE_WHITEPOINT     reads input's status
 *   FEATURE_TYPE_TEMPERATURE    reads input's colorInfo
 *   FEATURE_TYPE_NATURAL_COLOR  reads r, g and b of it
 * Any other gives neutral gains, and so does the white point on a platform that takes no fusion.
 * Not logged. Any thread; neither record may be null. */
VELORA_API void Fusion(uint32_t feature, const FusionInfo* input, Color3DInfo* output);

/* --- Displays ------------------------------------------------------------------------------- */

/* Extends the desktop over all displays, then writes the former first display path back into the
 * new arrangement. Blocks for 3 seconds. False: the arrangement could not be read, or the former
 * path not written back, as on a machine with one display; a switch that was made stays. */
VELORA_API bool SetMonitorExtendMode(void);

/* --- Panel ---------------------------------------------------------------------------------- */

/* Writes the panel's manufacturer, three PNP letters (VESA E-EDID) and "#", as a terminated text
 * into vendorBuf of vendorBufLength bytes (5 are enough). The buffer stays as it is when the panel
 * cannot be identified. */
VELORA_API void GetVendor(char* vendorBuf, int vendorBufLength);

/* --- Users ---------------------------------------------------------------------------------- */

/* Tells a service that another user logged on: the white point settings move to that user's hive.
 * Does nothing in a process without administrator rights or for a single-user feature. */
VELORA_API void SwitchUser(void);

/* --- White point settings -------------------------------------------------------------------- */

/* The stored status, or defaultWhitePointEnable where none is stored. */
VELORA_API int GetWhitePointStatus(int defaultWhitePointEnable);
VELORA_API ResultT SetWhitePointStatus(int whitePointEnable);

/* --- User-designed modes and fine tuning ------------------------------------------------------ */

/* One store for all users of the machine. Records must not be null. DeleteUserDesignReg and
 * EditUserSerialNumReg must not be called from two threads at once. */

/* Deletes the stored mode of the record's id, with its fine tuning. ResultOk also where there is no
 * such mode. ResultFailed: its key could not be deleted; ResultKeyNotFound: no mode is stored. */
VELORA_API ResultT DeleteUserDesignReg(UserDesignInfo* userDesignInfo);

/* Stores the record's serialNum for the mode of its id, and nothing else of it. ResultFailed: an
 * empty id, or the registry refused the write. */
VELORA_API ResultT EditUserSerialNumReg(UserDesignInfo* userDesignInfo);

/* The root of the stored modes: 1 HKEY_CURRENT_USER, 2 HKEY_LOCAL_MACHINE, 3 HKEY_USERS. */
VELORA_API int GetUserRegHkey(void);

/* Read and store the gains of the record's mode, with six decimals. r, g and b must hold numbers
 * for a read too: they are logged. A mode that is neither named above nor 0 or 7 throws
 * std::out_of_range ("invalid map<K, T> key"). ResultFailed: a gain is not stored or no number, or
 * the registry refused a write; what was read or written ahead of it stays. */
VELORA_API ResultT GetWhitePointTueValue(WhitePointFineTueInfo* whitePoint);
VELORA_API ResultT SetWhitePointTueValue(WhitePointFineTueInfo* whitePoint);

/* --- Change events between processes ---------------------------------------------------------- */

/* A doorbell for each of the features 0 to 6: one process stores a setting and rings, another waits
 * and reads the setting. A ring wakes one waiter and stays pending until there is one; several
 * rings ahead of a wait count once. Rings and waits may come from any thread. */

/* Opens and closes the event in this process; every process that rings or waits opens it first, in
 * any order. ResultAlreadyInit: it is open already. ResultCreateFailed: the system refused, or the
 * feature has no event. ResultNotCreated: it is not open. ResultFailed: it could not be closed. */
VELORA_API ResultT InitConfigSyncObject(int type);
VELORA_API ResultT FiniConfigSyncObject(int type);

/* Rings. ResultNotCreated: the event is not open in this process; ResultFailed: the system refused.
 */
VELORA_API ResultT NotifyConfigChange(int type);

/* Waits for a ring, at most timeout milliseconds; 0: without limit. ResultTimeout: nobody rang.
 * ResultNotCreated: the event is not open in this process; ResultFailed: the wait failed. */
VELORA_API ResultT WaitConfigChangeSync(int type, uint32_t timeout);
/* --- Eye protection settings ----------------------------------------------------------------- */

/* On or off. Where nothing is stored, the INI file's value or the default is given and stored. */
VELORA_API int GetEyeProtectStatus(int defaultEyeProtectEnable);
VELORA_API ResultT SetEyeProtectStatus(int eyeProtectEnable);

/* Position of the slider, 0 to 366. Where nothing is stored, or a position out of range, the INI
 * file's or the default is given and stored. ResultOutOfRange: nothing was stored. */
VELORA_API int GetEyeProtectValue(int defaultSliderValue);
VELORA_API ResultT SetEyeProtectValue(int eyeProtectValue);

/* The PSR setting: stored and handed back. */
VELORA_API int GetPSRStatusValue(int defaultPSREnable);
VELORA_API ResultT SetPSRStatusValue(int PSREnable);

/* Base of the slider's strength, kept with six decimals. */
VELORA_API double GetRhineValue(double defaultRhineValue);
VELORA_API ResultT SetRhineValue(double rhineValue);

/* The platform's blue value of an eye protection status: 255 for 1, else 0. */
VELORA_API int GetColorBlueValue(int value);

/* Strength of eye protection at a slider position: from R + 0.65 (1 - R) at 0 to R at 180, flat to
 * 195, to 0.9 R at 366; R is the stored Rhine value or 0.82. R everywhere where the machine does
 * not support eye protection. */
VELORA_API double TransEyeProtectSliderValue(int sliderValue);

/* Non-zero: the gains of eye protection are merged into the display's. */
VELORA_API ResultT SetEyeProtectHandleType(int handleType);

/* The gains of eye protection. The first write that fails is the result; those ahead of it stay. */
VELORA_API ResultT SetEyeProtectRGB(double r, double g, double b);

/* --- Colour temperature settings ---------------------------------------------------------------
 */

/* Position of the slider, 0 to 366. Where nothing is stored, the INI file's or the default is given
 * and stored. ResultOutOfRange: nothing was stored. */
VELORA_API int GetTemperatureValue(int defaultTemperatureValue);
VELORA_API ResultT SetTemperatureValue(int value);

/* 0 default, 1 warm, 2 cold, 255 unknown. Where nothing is stored, the INI file's type or 255 is
 * given and stored, whatever the default. */
VELORA_API int GetColorTemperatureType(int defaultColorType);
VELORA_API ResultT SetColorTemperatureType(int colorType);

/* The point of the colour temperature circle. Where none is stored, the INI file's is given and
 * stored; ResultFailed, and the record stays as it was, where the INI file has none either. */
VELORA_API ResultT GetColorTemperatureConfig(ColorTemperatureConfig* colorConfig);
VELORA_API ResultT SetColorTemperatureConfig(const ColorTemperatureConfig* colorConfig);

/* --- Natural colour settings -------------------------------------------------------------------
 */

/* On or off. Where nothing is stored, the INI file's value or the default, as 0 or 1, is given and
 * stored. */
VELORA_API int GetNatureColorStatus(int defaultStatus);
VELORA_API ResultT SetNatureColorStatus(int status);

/* --- Colour mode settings ----------------------------------------------------------------------
 */

/* Plain values, stored by the host: the mode in force, the mode to return to on reset, the way of
 * applying a mode. The getters give the default where none is stored. */
VELORA_API int GetColorFieldCurrentMode(int defaultMode);
VELORA_API ResultT SetColorFieldCurrentMode(int mode);
VELORA_API int GetColorFieldResetMode(int defaultMode);
VELORA_API ResultT SetColorFieldResetMode(int config);
VELORA_API int GetColorFieldSetType(int defaultType);
VELORA_API ResultT SetColorFieldSetType(int setType);

/* --- Feature flags --------------------------------------------------------------------------- */

/* The flags of this machine, read from the registry once a process. featureType outside 0 to 8
 * gives 0. A flag that was read is 0 or 1; a flag set in this process is the value given. */
VELORA_API int IsFeatureSupport(int featureType);
VELORA_API int IsMultiUser(int featureType);
VELORA_API int IsDisplayerCheck(int featureType);
VELORA_API int IsFirstUse(int featureType);

/* Store a flag. ResultFailed: featureType outside 0 to 6, or the registry refused the write. */
VELORA_API ResultT SetFeatureSupport(int featureType, int value);
VELORA_API ResultT SetMultiUser(int featureType, int value);
VELORA_API ResultT SetDisplayerCheck(int featureType, int value);
VELORA_API ResultT SetFirstUseState(int featureType, int value);

/* A number that the library stores and hands back (0 where none is stored), read anew each time. */
VELORA_API int GetFrameWorkType(void);
VELORA_API ResultT SetFrameWorkType(int type);

/* --- Colour modes: one calling thread at a time ---------------------------------------------- */

/* Tells how this machine applies colour modes and empties the table of preset modes. Comes first.
 * ResultFailed: a null record, or a digest path of more than 100 bytes. */
VELORA_API ResultT InitColorFieldInfo(const ColorFieldInitInfo* info);

/* Registers a preset mode; of two rows for one mode the earlier wins.
 * ResultFailed: a null record, or a profile path of more than 100 bytes. */
VELORA_API ResultT AddColorFieldModeInfo(const ColorFieldModeInfo* modeInfo);

/* Registers a user-designed mode. ResultFailed: a null record. */
VELORA_API ResultT AddUsrDesignInfo(const UserDesignInfo* modeInfo);

/* Switches to a preset mode: the operating system's ICC profile and the display's output together.
 * The host stores the mode afterwards. ResultFailed: the monitor or its present profile could not
 * be found; ResultFileNotFound, ResultIccError: the mode's profile is missing or was changed,
 * nothing was switched; ResultColorFieldError: the output could not be set, the old profile was put
 * back.
 *
 * With set type 0 there are SrgbMode and P3Mode only; other modes give ResultFailed. Each call
 * writes VCP feature 224 of the maker's external monitors (6 for sRGB, 1 for P3) and has them store
 * it in their memory, which wears: never tie it to a slider. */
VELORA_API ResultT SetColorField(int mode);

/* Switches to the registered user mode of this id, by its own profile and LUT files, and makes it
 * the current user mode. On failure the old profile is put back.
 * ResultFailed: no mode of this name is registered; ResultFileNotFound, ResultIccError: its profile
 * is missing, changed or refused; ResultColorFieldError: no target monitor, or a LUT could not be
 * set. */
VELORA_API ResultT SetUserColorField(const char* id);

/* Shows the record's gains, 0.89999 to 1.00001 each, on its mode's gamma LUT at once; gains out of
 * range become 1, in the record and in the store. Stores nothing else.
 * ResultFailed: the mode's gamma LUT is not there or is dark; else the platform's result. */
VELORA_API ResultT WhitePointFineTue(WhitePointFineTueInfo* whitePoint);

/* Designs a user mode: calculates its 3D LUT and gamma LUT from the panel's EDID and the record's
 * gamut (1 to 6; 1 sRGB, 2 P3), white point (CIE xy) and gamma, makes its profile, stores all of
 * it, registers the mode and switches to it. Needs write access to the system's profile directory
 * and to HKEY_LOCAL_MACHINE. Ids have at most 51 bytes, mode names at most 46 letters of ASCII: the
 * profile of a longer name never passes its check.
 * A failure leaves what was done before it. ResultColorFieldError: no valid LUT, or a file or a
 * text field refused; ResultFailed: the registry refused; else the switch's result. */
VELORA_API ResultT SaveUserSelfColor(const UserDesignInfo* userDesignInfo);

/* Changes the registered user mode oldId and switches to it. Other colours make all files anew;
 * another id, name or description renames the LUT files and makes the profile anew, and a failure
 * of that puts the old names back. ResultColorFieldError: nothing was stored; else the switch's
 * result, and the change stays. */
VELORA_API ResultT EditUserColorField(const UserDesignInfo* userDesignInfo, const char* oldId);

/* Takes a user mode out of the table. Files, output and profile stay; the stored record goes with
 * DeleteUserDesignReg. ResultFailed: no such mode. */
VELORA_API ResultT DeleteUserSelfColor(const char* id);

/* --- Colour modes and the system's profile: one calling thread at a time -----------------------
 */

/* The system's profile decides: works out which registered mode it belongs to and switches the
 * output to it, unless that mode is the stored one. A user mode is switched to in any case. The
 * mode, for the host to store: USRDESIGN_MODE for a user mode, the default mode for an unknown
 * profile, the stored mode (or -1) where the monitor has no profile; -1 on failure. */
VELORA_API int SyncSysColorField(void);

/* The stored mode decides: a monitor without any profile gets the one of the stored mode. false
 * when that failed. */
VELORA_API bool SyncCurrentModeIccFile(void);

/* Takes the output back to the stored reset mode, by the stored set type. ResultNotSet: none is
 * stored, or set type 4; ResultColorFieldError: a set type beyond 4; else the way's result. */
VELORA_API ResultT ResetColorField(void);

#ifdef __cplusplus
}
#endif

#endif
