// The exported functions: a thin layer that opens the call frame and hands on.
#include "velimproclib/frame/blurEstimate.h"
#include "velimproclib/frame/CallFrame.h"
#include "velimproclib/frame/createKernel.h"
#include "velimproclib/frame/deblurSharpen.h"
#include "velorncore10.h"

int32_t ornDeblurSharpen(ProgressRecord* progress, ImageRecord* image, KernelRecord* kernel,
                         int32_t deconvolve, float deconvLambda, float deconvAlpha,
                         float limitStrength, float edgeRadius, float edgeSlope, float edgeGain,
                         float edgeFloor, float detailGain, float detailGamma) {
    const vel::DeblurSettings settings{deconvolve != 0, deconvLambda, deconvAlpha, limitStrength,
                                       edgeRadius,      edgeSlope,    edgeGain,    edgeFloor,
                                       detailGain,      detailGamma};
    return vel::runGuarded([&] { return vel::deblurSharpen(progress, image, kernel, settings); });
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
