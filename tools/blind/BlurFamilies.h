#pragma once

#include "SampleBlurs.h"

#include <cstdint>
#include <string>
#include <vector>

namespace velorn::tools {

/// A blur of one kind.
struct FamilyBlur {
    std::string family;
    NamedBlur blur;
};

/// The path of a shaken hand: a smooth random walk of `extent` pixels in its larger direction.
/// The same arguments give the same bits on every system.
BlurKernel randomShake(int extent, std::uint32_t seed);

/// Lines, discs, Gaussians, shakes, hooks and lobes, and no blur at all, of 1 to 51 pixels. The
/// halves 0 and 1 have no blur in common: settings are tuned on one and measured on the other.
std::vector<FamilyBlur> blurFamilies(int half);

} // namespace velorn::tools
