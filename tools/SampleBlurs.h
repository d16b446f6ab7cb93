#pragma once

#include "hosts/command/kernels/BlurKernel.h"

#include <span>
#include <string>
#include <vector>

namespace velorn::tools {

/// A blur with the name that tables call it by.
struct NamedBlur {
    std::string name;
    BlurKernel kernel;
};

/// A place on the way of a shaken camera, in pixels to the right and down, and how long the camera
/// stayed there, in any unit.
struct PathPoint {
    double right;
    double down;
    double stay;
};

/// The kernel of a camera that moved along straight lines from point to point. Its centre of mass
/// lies in the kernel's middle, so that a restoration with it does not move the picture.
/// @param side odd; what lies further out than the kernel reaches is lost.
BlurKernel pathKernel(std::span<const PathPoint> path, int side);

/// A camera shake along an arc that slows down at one end: 13 by 13, and not symmetric.
BlurKernel curvedShake();

/// One blur of each kind: straight motion, curved shake, disc, Gaussian, and two uneven lobes. None
/// is wider than 13 pixels.
std::vector<NamedBlur> studiedBlurs();

/// Blurs that a turn by 180 degrees changes. None is wider than 13 pixels.
std::vector<NamedBlur> unevenBlurs();

} // namespace velorn::tools
