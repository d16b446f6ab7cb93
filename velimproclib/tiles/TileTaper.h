#pragma once

#include "velimproclib/tiles/GaussianBlur.h"

#include <cstdint>
#include <opencv2/core.hpp>
#include <span>
#include <vector>

namespace vel {

/// Makes tiles periodic. The transforms treat opposite edges of a tile as neighbours, and the jump
/// where they meet would ring through the whole tile. The taper joins opposite edges, blurs across
/// the seam and fades the blurred seam into the margin of the tile; the useful part inside the
/// margin keeps its bits.
///
/// An object keeps its scratch planes from tile to tile. One thread at a time may use it; inside,
/// it works on planes and bands in parallel. The results do not depend on the number of threads.
class CTileTaper {
public:
    /// Tapers the outer `border` pixels of every edge of each plane (CV_32FC1, all of one size):
    /// the rows first, then the columns of the result.
    ///
    /// A plane smaller than the strip taken from an edge, 1.5 `border` and a pixel, stays as it is.
    /// @throws cv::Exception or std::bad_alloc when memory is exhausted
    void taperBlock(std::span<cv::Mat> planes, std::int32_t border);

private:
    /// The scratch of one pass over one plane.
    struct Seam {
        cv::Mat joined;  ///< two opposite edges of the plane, with what the blur reads around them
        cv::Mat along;   ///< the first pass of the blur
        cv::Mat blurred; ///< as many pixels on each side of the seam as the margin has
    };

    std::vector<Seam> m_rowSeams;
    std::vector<Seam> m_columnSeams;
};

} // namespace vel
