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

/* --- Platform ------------------------------------------------------------------------------- */

/* Starts and stops the platform library. Result: the platform's, 0 for success. Not logged. */
VELORA_API int Init(void);
VELORA_API int Fini(void);

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
 * back. */
VELORA_API ResultT SetColorField(int mode);

#ifdef __cplusplus
}
#endif

#endif
