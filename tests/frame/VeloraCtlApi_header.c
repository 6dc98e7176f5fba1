/* The public header compiles alone, as C and (VeloraCtlApi_header.cpp) as C++, and all compilers
 * lay its records out as hosts that were built long ago know them. The numbers were worked out by
 * hand: natural alignment, fields in their order. */
#include "velora/VeloraCtlApi.h"

#if defined(_WINDOWS_) || defined(_INC_WINDOWS)
#error "the public header brings <windows.h> along"
#endif

#include <stddef.h>

#ifdef __cplusplus
#define ASSERT(condition) static_assert(condition, #condition)
#define ALIGNOF alignof
#else
#define ASSERT(condition) _Static_assert(condition, #condition)
#define ALIGNOF _Alignof
#endif

#define RECORD(record, size, alignment) \
  ASSERT(sizeof(record) == (size) && ALIGNOF(record) == (alignment))
#define FIELD(record, field, offset, size) \
  ASSERT(offsetof(record, field) == (offset) && sizeof(((record*)0)->field) == (size))

ASSERT(sizeof(ResultT) == 4);
ASSERT(sizeof(FeatureType) == 4);
ASSERT(sizeof(bool) == 1);

RECORD(ColorFieldInitInfo, 312, 4);
FIELD(ColorFieldInitInfo, setType, 0, 4);
FIELD(ColorFieldInitInfo, defaultMode, 4, 4);
FIELD(ColorFieldInitInfo, reservedType, 8, 4);
FIELD(ColorFieldInitInfo, pIccCheckFilePath, 12, 100);
FIELD(ColorFieldInitInfo, threeLutBinFilePath, 112, 100);
FIELD(ColorFieldInitInfo, goldenFilePath, 212, 100);

RECORD(ColorFieldModeInfo, 216, 8);
FIELD(ColorFieldModeInfo, mode, 0, 4);
FIELD(ColorFieldModeInfo, iccPath, 4, 100);
FIELD(ColorFieldModeInfo, PlatformPccMatrix, 104, 72);
FIELD(ColorFieldModeInfo, gamma, 176, 8);
FIELD(ColorFieldModeInfo, gamut, 184, 4);
FIELD(ColorFieldModeInfo, temperR, 192, 8);
FIELD(ColorFieldModeInfo, temperG, 200, 8);
FIELD(ColorFieldModeInfo, temperB, 208, 8);

RECORD(UserDesignInfo, 1256, 8);
FIELD(UserDesignInfo, serialNum, 0, 8);
FIELD(UserDesignInfo, mode, 8, 4);
FIELD(UserDesignInfo, description, 12, 401);
FIELD(UserDesignInfo, id, 413, 100);
FIELD(UserDesignInfo, modeName, 513, 100);
FIELD(UserDesignInfo, gamut, 616, 4);
FIELD(UserDesignInfo, whitePointMode, 620, 4);
FIELD(UserDesignInfo, whitePointX, 624, 8);
FIELD(UserDesignInfo, whitePointY, 632, 8);
FIELD(UserDesignInfo, whitePointXStr, 640, 100);
FIELD(UserDesignInfo, whitePointYStr, 740, 100);
FIELD(UserDesignInfo, gammaMode, 840, 4);
FIELD(UserDesignInfo, gamma, 848, 8);
FIELD(UserDesignInfo, gammaStr, 856, 100);
FIELD(UserDesignInfo, iccPath, 956, 100);
FIELD(UserDesignInfo, threeDLutPath, 1056, 100);
FIELD(UserDesignInfo, gammaPath, 1156, 100);

RECORD(WhitePointFineTueInfo, 128, 8);
FIELD(WhitePointFineTueInfo, id, 0, 100);
FIELD(WhitePointFineTueInfo, mode, 100, 4);
FIELD(WhitePointFineTueInfo, r, 104, 8);
FIELD(WhitePointFineTueInfo, g, 112, 8);
FIELD(WhitePointFineTueInfo, b, 120, 8);

RECORD(ColorTemperatureConfig, 16, 8);
FIELD(ColorTemperatureConfig, x, 0, 8);
FIELD(ColorTemperatureConfig, y, 8, 8);

RECORD(ColorTemperatureRgb, 24, 8);
FIELD(ColorTemperatureRgb, r, 0, 8);
FIELD(ColorTemperatureRgb, g, 8, 8);
FIELD(ColorTemperatureRgb, b, 16, 8);

RECORD(Color3DInfo, 40, 8);
FIELD(Color3DInfo, r, 0, 8);
FIELD(Color3DInfo, g, 8, 8);
FIELD(Color3DInfo, b, 16, 8);
FIELD(Color3DInfo, colorBlue, 24, 4);
FIELD(Color3DInfo, protectValue, 32, 8);

RECORD(Color2DInfo, 8, 4);
FIELD(Color2DInfo, temperature, 0, 4);
FIELD(Color2DInfo, colorBlue, 4, 4);

RECORD(FusionInfo, 48, 8);
FIELD(FusionInfo, status, 0, 4);
FIELD(FusionInfo, colorInfo, 8, 40);

RECORD(CctAlgoInfo, 32, 8);
FIELD(CctAlgoInfo, cct, 0, 4);
FIELD(CctAlgoInfo, r, 8, 8);
FIELD(CctAlgoInfo, g, 16, 8);
FIELD(CctAlgoInfo, b, 24, 8);

RECORD(NatureColorDataIn, 48, 8);
FIELD(NatureColorDataIn, frameCount, 0, 4);
FIELD(NatureColorDataIn, frameTime, 4, 4);
FIELD(NatureColorDataIn, dimmingThreshold, 8, 4);
FIELD(NatureColorDataIn, methodVersion, 12, 4);
FIELD(NatureColorDataIn, minLuma, 16, 4);
FIELD(NatureColorDataIn, luminanceThreshold, 20, 4);
FIELD(NatureColorDataIn, monitorType, 24, 4);
FIELD(NatureColorDataIn, executionType, 28, 4);
FIELD(NatureColorDataIn, algoInfo, 32, 8);
FIELD(NatureColorDataIn, algoInfoCnt, 40, 4);
