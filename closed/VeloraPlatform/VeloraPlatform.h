/* VeloraPlatform.dll: the maker's display platform. This header is the binding interface; the
 * reference build beside it, a software panel, stands in for the closed one.
 *
 * All functions give 0 on success and may be called from any thread. What they are given is only
 * read, and not kept beyond the call. The reference build refuses a null pointer, a wrong count, a
 * value that is no number and one outside the range told here, and then leaves the panel as it was;
 * no function needs PlatformInit first. See SoftwarePanel.h for the pipeline and for a viewer.
 */
#ifndef VELORAPLATFORM_H
#define VELORAPLATFORM_H

#include <stdint.h>

#include "velora/VeloraCtlApi.h"

#if !defined(_WIN32)
#define VELORAPLATFORM_API
#elif defined(VELORAPLATFORM_BUILD)
#define VELORAPLATFORM_API __declspec(dllexport)
#else
#define VELORAPLATFORM_API __declspec(dllimport)
#endif

#ifdef __cplusplus
extern "C" {
#endif

typedef struct PlatformInfo {
  uint32_t platformType; /* the display hardware's generation */
  uint32_t second;       /* stored and handed back, without a meaning here */
} PlatformInfo;

/* A 3x3 matrix by rows: R' = values[0] R + values[1] G + values[2] B, and so on. */
typedef struct PlatformPccMatrix {
  double values[9];
} PlatformPccMatrix;

/* Start and stop. The platform counts: PlatformFini without a PlatformInit before it fails. */
VELORAPLATFORM_API int PlatformInit(void);
VELORAPLATFORM_API int PlatformFini(void);

VELORAPLATFORM_API int GetPlatform(PlatformInfo* info);

/* lut: count = 4913 triples R, G, B in grid order, blue fastest, values 0 to 1023. */
VELORAPLATFORM_API int PlatformSet3DLut(const double* lut, int count);
VELORAPLATFORM_API int PlatformReset3DLut(void);

/* lut: count = 1024 triples R, G, B by input level, values 0 to 4095. */
VELORAPLATFORM_API int PlatformSetGammaLut(const double* lut, int count);

VELORAPLATFORM_API int PlatformSetPccMatrixInfo(const PlatformPccMatrix* matrix);
VELORAPLATFORM_API int PlatformResetPccMatrixInfo(void);

/* The panel has one colour temperature: each of the two replaces what the other set.
 * temperature 0 to 366, colorBlue 0 to 255; gains and protectValue 0 to 1. */
VELORAPLATFORM_API int PlatformSet2DColorTemperature(const Color2DInfo* info);
VELORAPLATFORM_API int PlatformSet3DColorTemperature(const Color3DInfo* info);

#ifdef __cplusplus
}
#endif

#endif
