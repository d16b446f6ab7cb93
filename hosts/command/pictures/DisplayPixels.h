#pragma once

#include "hosts/command/pictures/RgbPixels.h"

#include <cstdint>
#include <vector>

namespace velorn {

/// An ICC profile as a block of memory; empty when there is none.
using ProfileBytes = std::vector<unsigned char>;

/// What a display shows of a picture: blue, green, red and 255 for each pixel, row after row.
struct DisplayPixels {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> bytes;
};

/// The colour profiles on both sides of a display; an empty one stands for sRGB, and two empty ones
/// for no colour management.
struct DisplayProfiles {
    ProfileBytes picture;
    ProfileBytes display;
};

/// Whether the library can take colours from `profile`, and whether it can bring them there.
bool isSourceProfile(const ProfileBytes& profile);
bool isDisplayProfile(const ProfileBytes& profile);

/// The whole of `pixels` as the library shows it at `scale`, in a buffer that it just fills.
/// @throws Failure when that buffer would be empty or beyond what the library's calls can describe,
///         and with the status of a call that failed. Profiles that the library refuses leave the
///         colours as they are.
DisplayPixels displayPixels(const RgbPixels& pixels, const DisplayProfiles& profiles, float scale);

} // namespace velorn
