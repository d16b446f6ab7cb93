// The exported functions: a thin layer that opens the call frame of the guarded calls.
#include "velimproclib/bridge/DisplayImage.h"
#include "velimproclib/bridge/IccTransform.h"
#include "velimproclib/frame/blurEstimate.h"
#include "velimproclib/frame/CallFrame.h"
#include "velimproclib/frame/createKernel.h"
#include "velimproclib/frame/deblurSharpen.h"
#include "velimproclib/images/ScaleConverters.h"
#include "velorncore10.h"

#include <cstdint>

// 32-bit hosts written in other languages fill these records by offset.
static_assert(sizeof(void*) != 4 || (sizeof(ProgressRecord) == 20 && sizeof(ImageRecord) == 28 &&
                                     sizeof(PlaneRecord) == 20 && sizeof(KernelRecord) == 20 &&
                                     sizeof(PSProfilesRecord) == 16));

int32_t ornDeblurSharpen(ProgressRecord* progress, ImageRecord* image, KernelRecord* kernel,
                         int32_t deconvolve, float deconvLambda, float deconvAlpha,
                         float limitStrength, float edgeRadius, float edgeSlope, float edgeGain,
                         float edgeFloor, float detailGain, float detailGamma) {
    const vel::DeblurSettings settings{deconvolve != 0, deconvLambda, deconvAlpha, limitStrength,
                                       edgeRadius,      edgeSlope,    edgeGain,    edgeFloor,
                                       detailGain,      detailGamma};
    return vel::runGuardedCall(
        [&] { return vel::deblurSharpen(progress, image, kernel, settings); });
}

int32_t ornBlurEstimate(ProgressRecord* progress, PlaneRecord* image, KernelRecord* kernel,
                        float strength) {
    return vel::runGuarded([&] { return vel::blurEstimate(progress, image, kernel, strength); });
}

int32_t ornCreateKernel(int32_t type, float paramA, float paramB, KernelRecord* kernel) {
    return vel::runGuarded([&] { return vel::createKernel(type, paramA, paramB, kernel); });
}

const char* getErrMsg(void) {
    return vel::errorText();
}

int32_t velSetupLib(int32_t, int32_t) {
    return 0;
}

int32_t setDebugTrace(...) {
    return 0;
}

int32_t PSImage2QImage(PlaneRecord* image, void* dst, int32_t dstStep, int32_t dstWidth,
                       int32_t dstHeight, float scale) {
    return vel::displayImage(image, dst, dstStep, dstWidth, dstHeight, scale);
}

int32_t PSImageICC2QImage(PSProfilesRecord* profiles, PlaneRecord* image, void* dst,
                          int32_t dstStep, int32_t dstWidth, int32_t dstHeight, float scale) {
    return vel::displayImageWithProfiles(profiles, image, dst, dstStep, dstWidth, dstHeight, scale);
}

int32_t psC1U8toU15(const void* src, int32_t srcStep, int32_t width, int32_t height, void* dst,
                    int32_t dstStep) {
    vel::convertU8toU15(static_cast<const std::uint8_t*>(src), srcStep, width, height,
                        static_cast<vel::Unaligned<std::uint16_t>*>(dst), dstStep);
    return VELORN_OK;
}

int32_t psC1U15toU8(const void* src, int32_t srcStep, int32_t width, int32_t height, void* dst,
                    int32_t dstStep) {
    try {
        vel::convertU15toU8(static_cast<const vel::Unaligned<std::uint16_t>*>(src), srcStep, width,
                            height, static_cast<std::uint8_t*>(dst), dstStep);
    } catch (...) {
        // The result is always 1. Exhausted memory leaves the target unchanged.
    }
    return VELORN_OK;
}
