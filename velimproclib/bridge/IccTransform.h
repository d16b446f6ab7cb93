#pragma once

#include "velorncore10.h"

/// Colour passes between ICC profiles, relative colorimetric. Profiles are blocks of the host's
/// memory; a null pointer or a size below 1 stands for sRGB. Nothing is kept between calls: a call
/// opens its profiles, makes one transform that all its threads share, and closes both. Rows are
/// spread over a team of at most 32 threads. Nothing of the colour library's settings is changed.
namespace vel {

/// Carries the colours of display pixels (bytes blue, green, red, alpha) from the source profile to
/// the target profile, in place. Alpha keeps its value.
/// @return 1 when done, or when neither profile has a pointer or neither has a size; 0 when a
/// profile cannot be read or there is no such transform: the pixels are then as they were
/// @throws std::bad_alloc
int32_t iccTransformDisplayRows(const PSProfilesRecord& profiles, void* dst, int32_t dstStep,
                                int32_t width, int32_t height);

/// The same for host rows of three interleaved elements, in place: 8 bits each, or 16 bits on the
/// 15-bit scale. These are cut at 32767 and doubled for the transform, and halved again, so that
/// white, 32768, comes back as 32767 at most. Rows stand at any address.
/// @return as above, except that 16-bit rows for which there is no transform stay as they are and
/// give 1
/// @throws std::bad_alloc
int32_t iccTransformHostRows(const PSProfilesRecord& profiles, void* data, bool is8, int32_t step,
                             int32_t width, int32_t height);

/// Body of `PSImageICC2QImage`: the display image, then the colour pass over all of the display
/// buffer. A null record counts as one without profiles.
/// @return what `displayImage` gave when that is not 1; then the colour pass's result, and
/// VELORN_COLOUR_FAILURE for any failure in it
int32_t displayImageWithProfiles(const PSProfilesRecord* profiles, const PlaneRecord* image,
                                 void* dst, int32_t dstStep, int32_t dstWidth, int32_t dstHeight,
                                 float scale) noexcept;

} // namespace vel
