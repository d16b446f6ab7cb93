/* Compiles the header as C99 and checks the record layout that hosts in other languages rely on. */
#include "velorn.h"

#define HOLDS(name, condition) typedef char name[(condition) ? 1 : -1]
#define AT(record, member, offset)                                                                 \
    HOLDS(record##_##member, offsetof(Velorn##record, member) == offset)

enum { kPointer = sizeof(void*) };

AT(Picture, data, 0);
AT(Picture, rowStride, kPointer);
AT(Picture, width, 2 * kPointer);
AT(Picture, height, 2 * kPointer + 4);
AT(Picture, channels, 2 * kPointer + 8);
AT(Picture, hasAlpha, 2 * kPointer + 12);
AT(Picture, samples, 2 * kPointer + 16);

AT(Region, x, 0);
AT(Region, y, 4);
AT(Region, width, 8);
AT(Region, height, 12);

AT(RestoreSettings, size, 0);
AT(RestoreSettings, strength, 4);
AT(RestoreSettings, chromaStrength, 8);
AT(RestoreSettings, alpha, 12);
AT(RestoreSettings, limit, 16);
AT(RestoreSettings, edgeRadius, 20);
AT(RestoreSettings, edgeSlope, 24);
AT(RestoreSettings, edgeGain, 28);
AT(RestoreSettings, edgeFloor, 32);
AT(RestoreSettings, detailGain, 36);
AT(RestoreSettings, detailGamma, 40);
AT(RestoreSettings, noise, 44);
AT(RestoreSettings, light, 48);
AT(RestoreSettings, quality, 52);
AT(RestoreSettings, continueFrame, 56);
AT(RestoreSettings, recoverClipped, 60);
AT(RestoreSettings, region, 64);
AT(RestoreSettings, threads, 80);
HOLDS(RestoreSettings_progress,
      offsetof(VelornRestoreSettings, progress) == (kPointer == 8 ? 88 : 84));
AT(RestoreSettings, userData, offsetof(VelornRestoreSettings, progress) + kPointer);
AT(RestoreSettings, profile, offsetof(VelornRestoreSettings, progress) + 2 * kPointer);
AT(RestoreSettings, profileSize, offsetof(VelornRestoreSettings, progress) + 3 * kPointer);

AT(RestoreReport, noise, 4);
AT(RestoreReport, strength, 8);
AT(RestoreReport, chromaStrength, 12);
AT(RestoreReport, alpha, 16);
AT(RestoreReport, limit, 20);
AT(RestoreReport, light, 24);
AT(RestoreReport, tiles, 28);
AT(RestoreReport, clippedShare, 32);
AT(RestoreReport, secondsAnalysis, 40);
AT(RestoreReport, secondsTiles, 48);
AT(RestoreReport, secondsTotal, 56);

AT(NoiseReport, luminance, 4);
AT(NoiseReport, channels, 8);

AT(FindSettings, maxWidth, 4);
AT(FindSettings, maxHeight, 8);
AT(FindSettings, partSide, 12);
AT(FindSettings, smoothing, 16);
AT(FindSettings, threads, 20);
HOLDS(FindSettings_progress, offsetof(VelornFindSettings, progress) == 24);
AT(FindSettings, userData, offsetof(VelornFindSettings, progress) + kPointer);

AT(FindSettings, region, offsetof(VelornFindSettings, progress) + 2 * kPointer);
AT(FindSettings, start, offsetof(VelornFindSettings, region) + 16);

AT(FindReport, confidence, 4);
AT(FindReport, agreement, 8);
AT(FindReport, misfit, 12);
AT(FindReport, kind, 16);
AT(FindReport, extent, 20);
AT(FindReport, angle, 24);
AT(FindReport, score, 28);
AT(FindReport, parts, 32);
AT(FindReport, partAgreement, 36);
AT(FindReport, candidates, 40);

/* A host without a C++ compiler. */
int makeKernelInC(void) {
    VelornKernel* kernel = NULL;
    const VelornStatus status = velornMakeKernel(VELORN_BLUR_DISC, 4.0f, 0.0f, &kernel);
    const int side = velornKernelWidth(kernel);
    velornFreeKernel(kernel);
    return status == VELORN_STATUS_OK ? side : 0;
}
