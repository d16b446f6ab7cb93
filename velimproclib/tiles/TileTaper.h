#pragma once

#include <cstdint>
#include <opencv2/core.hpp>
#include <span>
#include <vector>

namespace vel {

/// Makes tiles periodic. The transforms treat a tile's opposite edges as neighbours, and the jump
/// where they meet would ring through the whole tile. The taper joins opposite edges, blurs across
/// the join and fades that blurred seam into the tile's margin; the useful part inside the margin
/// keeps its bits.
///
/// An object keeps its scratch strips from tile to tile and serves one thread at a time; inside, it
/// works on planes and parts of strips in parallel. The results do not depend on the number of
/// threads.
class CTileTaper {
public:
    /// Tapers the outer `border` pixels of every edge of each plane (CV_32FC1, all of one size):
    /// the rows first, then the columns on what the rows pass has left.
    ///
    /// A plane smaller than the strip taken from an edge, 1.5 `border` and a pixel, stays as it is.
    /// @throws cv::Exception or std::bad_alloc when memory is exhausted
    void taperBlock(std::span<cv::Mat> planes, std::int32_t border);

private:
    /// Two opposite edges of a plane, joined at the seam, and the blur of what the fade reads.
    struct Seam {
        cv::Mat joined;
        cv::Mat blurred;
    };

    /// Blurs `part` of `seam.blurred`, which stands at `offset` in the joined edges.
    void blurPart(const Seam& seam, cv::Rect part, cv::Point offset) const;
    void taperRows(cv::Mat& plane, Seam& seam) const;
    void taperColumns(cv::Mat& plane, Seam& seam) const;

    std::int32_t m_edge = 0; ///< rows or columns taken from each edge
    cv::Size m_blurSize;
    double m_sigma = 0;
    std::vector<float> m_fade; ///< weight of the plane by distance from the edge
    std::vector<Seam> m_rowSeams;
    std::vector<Seam> m_columnSeams;
};

} // namespace vel
