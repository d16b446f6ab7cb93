#pragma once

#include "velimproclib/images/Image.h"

#include <cstdint>

/// Tiles between host pixels and float images of the scale 0 to 1.
///
/// A host value v of 8 bits becomes v/256, a value of the 15-bit scale v/32768. The routines marked
/// below add 0.49 of a level: a value near the middle of its step survives any later truncation or
/// rounding. The reverse routines do not subtract it: 256 or 32768 times the float is rounded to
/// the nearest level, ties to even, and clamped to 255 or 32768.
///
///     routine              formats        beyond the image           0.49 of a level
///     psTileToF32C3Dup     1, 3           repeated, corner included  added
///     psTileToF32C3        1, 3, 5, 6     not allowed                added
///     psTileToF32Grey      7, 8           not allowed                added
///     psTileToF32GreyDup   7, 8           repeated, corner left out  not added
///     psTileToPlanes       1, 3, 5, 6     not allowed                added
///     psTileToPlanesDup    1, 3           repeated, corner included  added
///     psTileToPlanesDupRaw 1, 3, 5, 6     repeated, corner left out  not added
///
/// The differences between the rows of the table are intended. Pixels of a corner that is left out
/// are multiplied by the scale like all others and do not change otherwise.
///
/// Every routine returns 1, or 0 for a format that it does not support, and writes nothing then. A
/// float image has the size of its tile, and its region of interest is the whole image; three
/// planes have the same size. `x` and `y`, not negative, are the tile's top-left pixel in the host
/// image; `imageW` and `imageH` are the size of that image. From a tile completely beyond the image
/// nothing is read. Steps are bytes between rows, of any alignment. `m_status` of the float image
/// holds the result of the last primitive that ran over it in place.
///
/// Re-entrant: calls on disjoint memory may run at the same time.
/// @throws `kNoPixels` and `kGuardOverwritten` of the scratch images that the four-channel and the
/// plane forms use
namespace vel {

std::int32_t psTileToF32C3Dup(std::int32_t format, const void* base, std::int32_t step,
                              std::int32_t imageW, std::int32_t imageH, std::int32_t x,
                              std::int32_t y, IMG<float, 3>& img);

std::int32_t psTileToF32C3(std::int32_t format, const void* base, std::int32_t step, std::int32_t x,
                           std::int32_t y, IMG<float, 3>& img);

/// `src` is the tile's first pixel.
std::int32_t psTileToF32Grey(std::int32_t format, const void* src, std::int32_t srcStep,
                             GIMG<float>& img);

std::int32_t psTileToF32GreyDup(std::int32_t format, const void* base, std::int32_t step,
                                std::int32_t imageW, std::int32_t imageH, std::int32_t x,
                                std::int32_t y, GIMG<float>& img);

/// `src` is the tile's first pixel.
std::int32_t psTileToPlanes(std::int32_t format, const void* src, std::int32_t srcStep,
                            GIMG<float>* const planes[3]);

std::int32_t psTileToPlanesDup(std::int32_t format, const void* base, std::int32_t step,
                               std::int32_t imageW, std::int32_t imageH, std::int32_t x,
                               std::int32_t y, GIMG<float>* const planes[3]);

std::int32_t psTileToPlanesDupRaw(std::int32_t format, const void* base, std::int32_t step,
                                  std::int32_t imageW, std::int32_t imageH, std::int32_t x,
                                  std::int32_t y, GIMG<float>* const planes[3]);

/// Formats 1, 3, 5, 6. `dst` is the tile's first pixel in the host image. Alpha keeps its value
/// with one exception: for format 6, the first three quarters of each row's elements are clamped to
/// 32768, alpha included, and the last quarter is not. Multiplies `img` by 256 or 32768.
std::int32_t psTileFromF32C3(IMG<float, 3>& img, std::int32_t format, void* dst,
                             std::int32_t dstStep);

/// Formats 1, 3, 5, 6. Alpha keeps its value. Multiplies the planes by 256 or 32768.
std::int32_t psTileFromPlanes(GIMG<float>* const planes[3], std::int32_t format, void* dst,
                              std::int32_t dstStep);

/// Formats 7, 8. Multiplies `img` by 256 or 32768.
std::int32_t psGreyFromF32(GIMG<float>& img, std::int32_t format, void* dst, std::int32_t dstStep);

/// Provides three planes of `width` by `height` and fills them by `psTileToPlanes` with the tile at
/// (`x`, `y`). Keeps planes of that size, deletes others, and allocates missing planes with `new`.
/// The planes belong to the caller. Ignores `imageW` and `imageH`.
/// @return 3, always
/// @throws `kNoPixels` or std::bad_alloc, and `kGuardOverwritten` when a plane that is replaced
/// finds its guard row overwritten; the entry is then null
std::int32_t psEnsurePlanes(std::int32_t format, const void* base, std::int32_t step,
                            std::int32_t imageW, std::int32_t imageH, std::int32_t x,
                            std::int32_t y, std::int32_t width, std::int32_t height,
                            GIMG<float>* planes[3]);

} // namespace vel
