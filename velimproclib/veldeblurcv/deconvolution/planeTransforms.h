#pragma once

#include "velimproclib/primitives/base/TeamLoop.h"
#include "velimproclib/primitives/fft/RealFft2D.h"
#include "velimproclib/veldeblurcv/deconvolution/ThreadScratch.h"

#include <cstddef>
#include <opencv2/core.hpp>

/// The steps of the transform of a whole plane. Their pieces are tasks of the caller's team
/// (TeamLoop.h).
///
/// Planes are CV_32FC1 and have the size of the transform. `scratch` holds at least
/// `fft.scratchFloats()` floats for each thread of the team. Nothing is allocated.
namespace vel {

/// Transforms all rows of `plane` into `spectrum`.
void forwardRows(const RealFft2D& fft, const cv::Mat& plane, float* spectrum,
                 ThreadScratch& scratch);

/// Undoes `forwardRows`: writes all rows of `plane` from `spectrum`.
void inverseRows(const RealFft2D& fft, const float* spectrum, cv::Mat& plane,
                 ThreadScratch& scratch);

/// work(block, offset) for every block of columns; the block begins `offset` floats after the start
/// of a spectrum.
template <class Work>
void forEachBlock(const RealFft2D& fft, const Work& work) {
    forEachPiece(fft.blockCount(), [&](int block, int) {
        work(block, static_cast<std::size_t>(block) * fft.blockFloats());
    });
}

} // namespace vel
