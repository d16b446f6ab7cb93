#pragma once

#include "velorncore10.h"

/// Colour conversions between ICC profiles, relative colorimetric. Profiles are blocks of host
/// memory; a null pointer or a size below 1 means sRGB on that side. A call opens its profiles,
/// creates one transform for all threads and closes everything before it returns. A team of at most
/// 32 threads shares the rows. The settings of the colour library are not changed.
namespace vel {

/// Converts display pixels (bytes blue, green, red, alpha) from the source profile to the target
/// profile, in place. Alpha is unchanged.
/// @return 1 when done, or if both pointers are null or both sizes are below 1; 0 if a profile
///         cannot be read or the transform cannot be created, with the pixels unchanged
/// @throws std::bad_alloc
int32_t iccTransformDisplayRows(const PSProfilesRecord& profiles, void* dst, int32_t dstStep,
                                int32_t width, int32_t height);

/// Body of `PSImageICC2QImage`: runs `displayImage`, then converts the colours of the whole display
/// buffer. A null record means no profiles.
/// @return the result of `displayImage` if that is not 1, otherwise the result of the conversion;
///         VELORN_COLOUR_FAILURE if the conversion fails
int32_t displayImageWithProfiles(const PSProfilesRecord* profiles, const PlaneRecord* image,
                                 void* dst, int32_t dstStep, int32_t dstWidth, int32_t dstHeight,
                                 float scale) noexcept;

} // namespace vel
