#pragma once

#include "hosts/command/kernels/BlurKernel.h"

#include <span>
#include <string>
#include <vector>

namespace velorn::tools {

/// A blur and its name in tables.
struct NamedBlur {
    std::string name;
    BlurKernel kernel;
};

/// A point on the path of a shaken camera, in pixels to the right and down, and the time that the
/// camera spent there, in any unit.
struct PathPoint {
    double right;
    double down;
    double stay;
};

/// The kernel of a camera that moves along straight lines from point to point. Its centre of mass
/// is the kernel's centre, so that a restoration with it does not move the picture.
/// @param side odd; parts of the path outside the kernel are lost.
BlurKernel pathKernel(std::span<const PathPoint> path, int side);

/// A camera shake along an arc that slows down at one end: 13 by 13, and not symmetric.
BlurKernel curvedShake();

} // namespace velorn::tools
