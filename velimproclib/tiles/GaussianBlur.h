#pragma once

#include <opencv2/core.hpp>
#include <vector>

namespace vel {

/// The weights of a Gaussian at the whole distances 0 .. (side - 1) / 2 from its centre, scaled so
/// that all `side` weights sum to 1 before they are rounded to single precision. `side` is odd.
std::vector<float> gaussianHalfTaps(int side, double sigma);

/// Blurs planes of floats with a Gaussian, in two passes. Let r = (side - 1) / 2 and t[d] be the
/// tap at distance d from the centre. Each pixel of the result is
///
///     along(y, x)   = t[r] s(y, x) + t[r-1] s(y, x+1) + ... + t[0] s(y, x+r) + ...
///                     + t[r] s(y, x+2r)
///     blurred(y, x) = t[0] along(y+r, x) + t[1] (along(y+r-1, x) + along(y+r+1, x)) + ...
///                     + t[r] (along(y, x) + along(y+2r, x))
///
/// where every sum runs from left to right and every product and every sum is rounded to single
/// precision. No operation is fused, therefore the result has the same bits on every processor.
///
/// An object is constant after construction; threads may share it. `blur` works on bands of rows in
/// parallel when it runs inside a team.
class GaussianBlur {
public:
    /// @param side  taps in each direction, odd and at least 3
    /// @param sigma standard deviation in pixels, above 0
    GaussianBlur(int side, double sigma) : m_halfTaps(gaussianHalfTaps(side, sigma)) {}

    /// Pixels between the edge of `source` and the first pixel that `blur` can make.
    int reach() const noexcept { return static_cast<int>(m_halfTaps.size()) - 1; }

    /// Blurs the part of `source` (CV_32FC1) that is `reach` pixels or more from its edges.
    /// @param along   receives the result of the first pass: the rows of `source`, the columns of
    ///                `blurred`
    /// @param blurred receives the blurred part, 2 * `reach` rows and columns smaller than `source`
    /// @throws cv::Exception or std::bad_alloc when memory is exhausted
    void blur(const cv::Mat& source, cv::Mat& along, cv::Mat& blurred) const;

private:
    std::vector<float> m_halfTaps;
};

} // namespace vel
