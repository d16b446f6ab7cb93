#pragma once

#include "restoration/planes/Plane.h"
#include "velimproclib/veldeblurcv/sharpening/SharpLimit.h"

namespace restoration {

/// Limits the overshoot of a deconvolved plane: a pixel outside the range of its neighbourhood
/// before and after the deconvolution is drawn back to that range (`vel::CSharpLimit`). Results
/// depend on pixels up to 7 away; rows and columns at the plane's edge are less exact.
///
/// Serial; an instance belongs to one worker.
class OvershootLimiter {
public:
    /// @param strength    0..1: 1 allows no overshoot; below 0.1 nothing is limited
    /// @param kernelSide  the larger side of the kernel
    OvershootLimiter(float strength, int kernelSide) noexcept;

    bool isOn() const noexcept { return m_limit.m_mix < 0.99f; }

    /// Bounds are multiples of 1/255 from 0 to 1: at 0.1 or more, brighter pixels are limited to a
    /// multiple of white, too. Call only if `isOn`.
    /// @param blurred    the plane before deconvolution
    /// @param deblurred  the plane after it
    /// @param limited    receives the result; neither of the others; all have the same size
    /// @throws std::bad_alloc
    void limit(const Plane& blurred, const Plane& deblurred, Plane& limited);

private:
    vel::CSharpLimit m_limit;
};

} // namespace restoration
