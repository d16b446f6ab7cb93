#include "velimproclib/veldeblurcv/estimation/solver/PSFEst.h"

#include "velimproclib/veldeblurcv/estimation/solver/NormalEquations.h"
#include "velimproclib/veldeblurcv/estimation/solver/solvePositiveDefinite.h"
#include "velimproclib/veldeblurcv/estimation/solver/sumEquations.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <new>

namespace vel {

namespace {

constexpr double kTikhonovScale = 255.0;
/// With a Tikhonov term below this fraction of the trace, the matrix may be too ill-conditioned for
/// Cholesky's method. The estimator's term, with a weight of 0.001, is at least 2.6e-7 / n of the
/// trace, since one pixel adds at most 3 * (255^2 + 510^2) to a diagonal element.
constexpr double kLeastTikhonovShare = 1e-12;

bool holdsBytes(const cv::Mat& image) {
    return image.type() == CV_8UC1;
}

} // namespace

void CPSFEst::setup(cv::Size kernelSize, cv::Size imageSize, cv::Point anchor, float lambda,
                    float w0, float w1, float w2, float w3, float w4, float w5) {
    const std::int64_t unknowns = std::int64_t{kernelSize.width} * kernelSize.height;
    // cv::Mat multiplies its sides in 64 bits without a check.
    constexpr std::int64_t kMostBytes = std::numeric_limits<std::ptrdiff_t>::max();
    if (unknowns > std::numeric_limits<int>::max() ||
        unknowns * unknowns > kMostBytes / std::int64_t{sizeof(double)}) {
        throw std::bad_alloc();
    }
    m_anchorX = anchor.x;
    m_anchorY = anchor.y;
    m_imH = imageSize.height;
    m_imW = imageSize.width;
    m_lambda = lambda;
    m_weights = {w0, w1, w2, w3, w4, w5};
    m_kW = kernelSize.width;
    m_kH = kernelSize.height;
    m_n = static_cast<int>(unknowns);
    m_count = 0;
    // The matrix is allocated first: a kernel too large for it fails before other memory is used.
    m_A = cv::Mat::zeros(m_n, m_n, CV_64FC1);
    m_b = cv::Mat::zeros(m_n, 1, CV_64FC1);
    m_kernel = cv::Mat::zeros(m_kH, m_kW, CV_32FC1);
}

void CPSFEst::computeLA(const cv::Mat& edge, const cv::Mat& blurred, const cv::Mat& mask) {
    computeLA8U(edge, blurred, mask);
}

void CPSFEst::computeLA8U(const cv::Mat& image, const cv::Mat& blur, const cv::Mat& mask) {
    if (!holdsBytes(image) || !holdsBytes(blur) || !holdsBytes(mask)) {
        throw "CPSFEst::computeLA8U - image/blur/mask.type() != CV_8UC1";
    }
    for (const cv::Mat* given : {&image, &blur, &mask}) {
        CV_Assert(given->rows >= m_imH && given->cols >= m_imW);
    }
    const EquationGeometry geometry{cv::Size(m_kW, m_kH), cv::Size(m_imW, m_imH), m_anchorX,
                                    m_anchorY};
    m_count = static_cast<int>(sumEquations({image, blur, mask}, geometry, m_progress,
                                            {m_A.ptr<double>(), m_A.step1(), m_b.ptr<double>()}));
}

const cv::Mat& CPSFEst::computePSF() {
    const double tikhonov =
        static_cast<double>(m_count) * kTikhonovScale * static_cast<double>(m_lambda);
    double trace = 0.0;
    for (int i = 0; i < m_n; ++i) {
        m_A.at<double>(i, i) += tikhonov;
        trace += m_A.at<double>(i, i);
    }
    cv::Mat x = cv::Mat::zeros(m_n, 1, CV_64FC1);
    // Without equations the solution of least norm is zero.
    if (trace != 0.0) {
        // The normal matrix has no eigenvalue below the Tikhonov term and none above the trace.
        const bool isWellConditioned = tikhonov > 0.0 && tikhonov >= kLeastTikhonovShare * trace;
        if (!isWellConditioned || !solvePositiveDefinite(m_A, m_b, x)) {
            cv::solve(m_A, m_b, x, cv::DECOMP_SVD);
        }
    }
    for (int i = 0; i < m_kW; ++i) {
        for (int j = 0; j < m_kH; ++j) {
            m_kernel.at<float>(j, i) = static_cast<float>(x.at<double>(i * m_kH + j));
        }
    }
    return m_kernel;
}

} // namespace vel
