#pragma once

#include <array>
#include <cstdint>
#include <opencv2/core.hpp>

namespace vel {

class CProgressSpan;

/// Solves for the kernel that best explains a blurred image from a predicted sharp one.
///
/// On the selected pixels the kernel k minimises the sum over six derivative orders d (value, dx,
/// dy, dxx, dyy, dxy, all of weight 1) of ((D_d sharp) * k - D_d blurred)^2, plus
/// 255 * lambda * pixels * |k|^2. The model is a correlation: the kernel is not turned over. The
/// patch under the kernel starts at row y - anchor.x and column x - anchor.y. That crossing makes
/// no difference for square kernels and is part of the model for the others.
///
/// Set up, used for one accumulation and one solve, and destroyed. One thread uses an object;
/// `computeLA8U` opens a parallel region of its own.
///
/// Memory grows with the fourth power of the kernel's side: the normal matrix takes 8 * n^2 bytes
/// with n = rows * columns unknowns (7 MB for 31 by 31, 126 MB for 63 by 63), solving needs one
/// such matrix more, or about three more when singular values are called for. Threads add 4 bytes
/// for each unknown, not matrices. Memory that cannot be had is an exception on the calling thread
/// (std::bad_alloc or cv::Exception).
class CPSFEst {
public:
    CPSFEst() = default;
    CPSFEst(const CPSFEst&) = delete;
    CPSFEst& operator=(const CPSFEst&) = delete;

    /// Sets the sizes and clears the sums.
    /// @param kernelSize columns and rows of the kernel
    /// @param imageSize  columns and rows of the images that follow
    /// @param anchor     (columns / 2, rows / 2) of the kernel
    /// @param lambda     Tikhonov weight
    /// @param w0,w1,w2,w3,w4,w5 one weight for each derivative order: kept, but not used, since
    ///                   all orders count alike
    void setup(cv::Size kernelSize, cv::Size imageSize, cv::Point anchor, float lambda, float w0,
               float w1, float w2, float w3, float w4, float w5);

    /// The progress that `computeLA8U` reports to; null, as at first, reports nothing. A span must
    /// have a record.
    void setProgress(CProgressSpan* progress) noexcept { m_progress = progress; }

    /// Sums the normal equations. Forwards to `computeLA8U`.
    void computeLA(const cv::Mat& edge, const cv::Mat& blurred, const cv::Mat& mask);

    /// Adds the equations of the pixels that `mask` selects (not 0) to the normal matrix and the
    /// right-hand side, and counts them. Pixels closer than kernel height + 2 rows or kernel width
    /// + 2 columns to the image's edge are left out, and so are those whose patch would leave the
    /// image. The sums are exact integers: the same for every number of threads.
    ///
    /// While it works, thread number 0 of the region advances the progress, once for each row of
    /// its even share of the rows.
    /// @throws const char* when an image is not CV_8UC1
    /// @throws cv::Exception when an image is smaller than set up
    void computeLA8U(const cv::Mat& image, const cv::Mat& blur, const cv::Mat& mask);

    /// Solves, and changes the normal matrix by the Tikhonov term on its diagonal. Without any
    /// pixel the kernel is 0.
    /// @return the kernel, CV_32FC1, as solved: not normalised, of either sign
    const cv::Mat& computePSF();

    /// n by n, CV_64FC1. Unknown number i * rows + j is the kernel's entry in row j, column i.
    const cv::Mat& normalMatrix() const noexcept { return m_A; }
    /// n by 1, CV_64FC1.
    const cv::Mat& rightHandSide() const noexcept { return m_b; }
    /// Pixels of the last accumulation.
    int pixelCount() const noexcept { return m_count; }

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
    CProgressSpan* m_progress = nullptr;
};

} // namespace vel
