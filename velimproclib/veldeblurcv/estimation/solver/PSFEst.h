#pragma once

#include <array>
#include <opencv2/core.hpp>

namespace vel {

class CProgressSpan;

/// Solves for the kernel that best explains a blurred image from a predicted sharp one.
///
/// On the selected pixels the kernel k minimises the sum over six derivative orders d (value, dx,
/// dy, dxx, dyy, dxy, all of weight 1) of ((D_d sharp) * k - D_d blurred)^2, plus
/// 255 * lambda * pixels * |k|^2. The model is a correlation: the kernel is not rotated by 180
/// degrees. The patch under the kernel starts at row y - anchor.x and column x - anchor.y. This
/// exchange makes no difference for square kernels and is part of the model for the others.
///
/// Use: set up, accumulate once, solve once, destroy. One thread uses an object; `computeLA8U`
/// opens a parallel region of its own.
///
/// Memory grows with the fourth power of the kernel's side: the normal matrix takes 8 * n^2 bytes
/// with n = rows * columns unknowns (7 MB for 31 by 31, 126 MB for 63 by 63). Solving needs half as
/// much again. Each thread adds 4 bytes per unknown. Exhausted memory is an exception on the
/// calling thread (std::bad_alloc or cv::Exception).
class CPSFEst {
public:
    /// @param progress advanced by `computeLA8U`; must outlive the object
    explicit CPSFEst(CProgressSpan& progress) noexcept : m_progress(progress) {}

    /// Sets the sizes and clears the sums.
    /// @param kernelSize columns and rows of the kernel
    /// @param imageSize  columns and rows of the images that follow
    /// @param anchor     (columns / 2, rows / 2) of the kernel
    /// @param lambda     Tikhonov weight
    /// @param w0,w1,w2,w3,w4,w5 one weight for each derivative order: stored, but not used, because
    ///                   all orders count alike
    void setup(cv::Size kernelSize, cv::Size imageSize, cv::Point anchor, float lambda, float w0,
               float w1, float w2, float w3, float w4, float w5);

    /// Sums the normal equations. Forwards to `computeLA8U`.
    void computeLA(const cv::Mat& edge, const cv::Mat& blurred, const cv::Mat& mask);

    /// Adds the equations of the pixels that `mask` selects (not 0) to the normal equations, and
    /// counts the pixels (sumEquations.h).
    /// @throws const char* when an image is not CV_8UC1; cv::Exception when an image is smaller
    /// than
    ///         set up
    void computeLA8U(const cv::Mat& image, const cv::Mat& blur, const cv::Mat& mask);

    /// Adds the Tikhonov term to the normal matrix and solves. Without any pixel the kernel is 0.
    /// @return the kernel, CV_32FC1, as solved: not normalised, of either sign
    const cv::Mat& computePSF();

private:
    int m_anchorX = 0;
    int m_anchorY = 0;
    int m_imH = 0;
    int m_imW = 0;
    float m_lambda = 0.0f;
    std::array<float, 6> m_weights{};
    int m_kW = 0;
    int m_kH = 0;
    int m_n = 0;
    cv::Mat m_kernel;
    int m_count = 0;
    cv::Mat m_b;
    cv::Mat m_A;
    CProgressSpan& m_progress;
};

} // namespace vel
