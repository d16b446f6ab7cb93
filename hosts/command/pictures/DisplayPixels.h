#pragma once

#include "hosts/command/pictures/RgbPixels.h"

#include <cstdint>
#include <vector>

namespace velorn {

/// An ICC profile as a block of memory; empty when there is none.
using ProfileBytes = std::vector<unsigned char>;

/// Pixels for a display: blue, green, red and 255 for each pixel, row after row.
struct DisplayPixels {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> bytes;
};

/// The colour profiles of a picture and of the display that shows it. If one is empty, sRGB takes
/// its place; if both are empty, colours are not converted.
struct DisplayProfiles {
    ProfileBytes picture;
    ProfileBytes display;
};

/// Whether the library can convert colours from `profile`.
bool isSourceProfile(const ProfileBytes& profile);

/// Whether the library can convert colours to `profile`.
bool isDisplayProfile(const ProfileBytes& profile);

/// The whole of `pixels` as the library displays it at `scale`, in a buffer of exactly that size.
/// Profiles that the library refuses leave the colours unchanged.
/// @throws Failure when the buffer would be empty or larger than the library's records can
///         describe, and when the library fails.
DisplayPixels displayPixels(const RgbPixels& pixels, const DisplayProfiles& profiles, float scale);

} // namespace velorn
