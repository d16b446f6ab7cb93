#pragma once

#include "restoration/planes/Plane.h"

#include <opencv2/core.hpp>

namespace restoration {

/// A header for the pixels of a plane, for functions of the core. The plane keeps the memory. The
/// core takes planes that it only reads as non-const matrices, too.
inline cv::Mat matOf(const Plane& plane) {
    return cv::Mat(plane.height(), plane.width(), CV_32FC1, const_cast<float*>(plane.row(0)));
}

} // namespace restoration
