#pragma once

#include "velimproclib/primitives/base/Memory.h"

#include <cstdint>
#include <memory>
#include <opencv2/core.hpp>

namespace vel {

/// Selects the pixels on which the kernel equations are written: strong, clean edges.
///
/// Medians smooth the image; the response of a pixel is then its distance from the mean of its 3 by
/// 3 neighbourhood. A histogram of the responses replaces sorting. One thread at a time uses an
/// object.
class EdgeMask {
public:
    /// @throws const char* "CBlurEst::CBlurEst - ippsMalloc_32s failed" when memory is exhausted
    EdgeMask();

    /// Selects about `count` pixels, none of them in the outer band of `max(side, 8)` pixels.
    ///
    /// All pixels of the weakest selected response are selected together, so there may be more than
    /// `count`. Responses below 4 grey levels are never selected.
    /// @param edge CV_8UC1
    /// @param mask CV_8UC1, created; a selected pixel holds its response, the others 0
    /// @param side larger side of the kernel; up to 3 the medians are 3 pixels long, above that 5
    /// @throws cv::Exception when memory is exhausted
    void compute(const cv::Mat& edge, cv::Mat& mask, int count, int side);

private:
    struct AlignedFree {
        void operator()(std::int32_t* block) const noexcept { alignedFree(block); }
    };
    using Buffer = std::unique_ptr<std::int32_t[], AlignedFree>;
    static Buffer allocate();

    void countResponses(const cv::Mat& responses);
    int thresholdFor(int count) const;

    Buffer m_hist;
    Buffer m_histLevels;
};

} // namespace vel
