#pragma once

#include "velimproclib/images/Image.h"

#include <cstdint>

/// Tiles between host pixels and float images of the scale 0 to 1.
///
/// A host value v of 8 bits becomes v/256, one of the 15-bit scale v/32768, plus 0.49 of a level
/// where the table says so: a value near the middle of its step survives any later truncation or
/// rounding. On the way back it is not taken off: 256 or 32768 times the float is rounded to the
/// nearest level, ties to even, and cut at 255 or 32768.
///
///     routine              formats        beyond the image           0.49 of a level
///     psTileToF32C3Dup     1, 3           repeated, corner included  added
///     psTileToF32C3        1, 3, 5, 6     nothing may lie there      added
///     psTileToF32Grey      7, 8           nothing may lie there      added
///     psTileToF32GreyDup   7, 8           repeated, corner left out  not added
///     psTileToPlanes       1, 3, 5, 6     nothing may lie there      added
///     psTileToPlanesDup    1, 3           repeated, corner included  added
///     psTileToPlanesDupRaw 1, 3, 5, 6     repeated, corner left out  not added
///
/// The differences between the rows are wanted. Where the corner is left out, its pixels are
/// multiplied by the scale like all others and are otherwise as they were.
///
/// Every routine returns 1, or 0 for a format that it does not take, and then has written nothing.
/// A float image is as large as its tile and its region of interest is the whole of it; three
/// planes have one size. `x` and `y`, not negative, are the tile's top-left pixel in the host
/// image, `imageW` and `imageH` that image's size; a tile that lies beyond it altogether takes
/// nothing from it. Steps are bytes between rows and of any alignment. `m_status` of the float
/// image holds the result of the last primitive that ran over it in place.
///
/// No threads, no state: calls on disjoint memory may run at once.
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

/// Formats 1, 3, 5, 6. `dst` is the tile's first pixel in the host image; alpha keeps what it held,
/// except that for format 6 the cut at 32768 runs over the first three quarters of each row's
/// elements, alpha among them, and not over the last quarter. `img` comes back multiplied by 256 or
/// 32768.
std::int32_t psTileFromF32C3(IMG<float, 3>& img, std::int32_t format, void* dst,
                             std::int32_t dstStep);

/// Formats 1, 3, 5, 6. Alpha keeps what it held. The planes come back multiplied by 256 or 32768.
std::int32_t psTileFromPlanes(GIMG<float>* const planes[3], std::int32_t format, void* dst,
                              std::int32_t dstStep);

/// Formats 7, 8. `img` comes back multiplied by 256 or 32768.
std::int32_t psGreyFromF32(GIMG<float>& img, std::int32_t format, void* dst, std::int32_t dstStep);

/// Sees to three planes of `width` by `height` and fills them by `psTileToPlanes` with the tile at
/// (`x`, `y`). A plane of that size is kept; another one is deleted and a null one made, with
/// `new`: the planes belong to the caller. `imageW` and `imageH` are not looked at.
/// @return 3, always
/// @throws `kNoPixels` or std::bad_alloc, and `kGuardOverwritten` when a plane that is replaced
/// finds its guard row overwritten; the entry is then null
std::int32_t psEnsurePlanes(std::int32_t format, const void* base, std::int32_t step,
                            std::int32_t imageW, std::int32_t imageH, std::int32_t x,
                            std::int32_t y, std::int32_t width, std::int32_t height,
                            GIMG<float>* planes[3]);

} // namespace vel
