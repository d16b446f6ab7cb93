#pragma once

#include <cstdint>
#include <opencv2/core.hpp>

namespace vel {

class CProgressSpan;
struct NormalSums;

/// The images that the kernel equations are read from, all CV_8UC1 and at least `EquationGeometry::
/// image` in size.
struct EquationImages {
    const cv::Mat& sharp;
    const cv::Mat& blurred;
    const cv::Mat& mask; ///< pixels that are not 0 are selected
};

struct EquationGeometry {
    cv::Size kernel;
    cv::Size image;
    int rowsBefore;    ///< from a pixel up to the first row of its patch
    int columnsBefore; ///< from a pixel left to the first column of its patch
};

/// Adds the equations of the selected pixels to `sums`, in one parallel region. Pixels closer than
/// kernel height + 2 rows or kernel width + 2 columns to the image's border are omitted, and so are
/// those whose patch would leave the image. The sums are exact integers: the same for every number
/// of threads.
///
/// Meanwhile thread number 0 of the region advances `progress`, once for each row of an even share
/// of the rows.
/// @return the number of pixels
/// @throws whatever the host's progress callback throws; std::bad_alloc
std::int64_t sumEquations(const EquationImages& images, const EquationGeometry& geometry,
                          CProgressSpan& progress, const NormalSums& sums);

} // namespace vel
