#pragma once

#include "velorncore10.h"

namespace vel {

/// The settings of `ornDeblurSharpen`, in the order of its arguments; the header of the library
/// tells what each does to the picture.
struct DeblurSettings {
    bool deconvolve;
    float deconvLambda;
    float deconvAlpha;
    float limitStrength;
    float edgeRadius;
    float edgeSlope;
    float edgeGain;
    float edgeFloor;
    float detailGain;
    float detailGamma;
};

/// Body of `ornDeblurSharpen`: walks the image tile by tile through the stages whose gates the
/// settings open, and keeps the host's progress account.
/// @param progress must not be null; its callback may be
/// @return VELORN_OK, or VELORN_CANCELLED when the callback said so; cancelled, the busy byte is
/// clear before the call's objects go
/// @throws const char* for records that cannot be used, `kNoPixels` for an image without pixels,
/// `kColumnGap` for a kernel too large for the tiles, and whatever the stages throw
int32_t deblurSharpen(ProgressRecord* progress, const ImageRecord* image,
                      const KernelRecord* kernel, const DeblurSettings& settings);

} // namespace vel
