#include "velimproclib/veldeblurcv/estimation/PSFEst.h"

#include "velimproclib/primitives/base/FailureRelay.h"
#include "velimproclib/primitives/base/Team.h"
#include "velimproclib/veldeblurcv/estimation/NormalEquations.h"
#include "velimproclib/veldeblurcv/estimation/ProgressSpan.h"
#include "velimproclib/veldeblurcv/estimation/SelectedPixels.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <new>
#include <omp.h>
#include <vector>

namespace vel {

namespace {

constexpr int kTikhonovScale = 255;
/// Below this fraction of its trace a Tikhonov term leaves the matrix so ill-conditioned that
/// Cholesky and singular values may part ways.
constexpr double kLeastTikhonovShare = 1e-10;

/// Pixels along one axis that have equations of their own.
PixelRange margin(int kernelSide, int imageSide) {
    return {std::int64_t{kernelSide} + 2, std::int64_t{imageSide} - kernelSide - 2};
}

/// Pixels along one axis whose patch, `offset` before the pixel and `kernelSide` plus 2 for the
/// differences long, stays in the image. For long thin kernels this is less than `margin` allows.
PixelRange insideImage(PixelRange range, int offset, int kernelSide, int imageSide) {
    const std::int64_t last = std::int64_t{imageSide} - kernelSide - 2 + offset;
    return {std::max<std::int64_t>(range.begin, offset), std::min(range.end, last + 1)};
}

/// Advances the progress of thread number 0 as if it took up an even share of the rows, spread over
/// all of them.
class RowProgress {
public:
    RowProgress(CProgressSpan* span, std::int64_t rows) : m_span(span), m_rows(rows) {}

    /// A team of `threads` takes up one more row.
    void rowTaken(int threads) {
        ++m_taken;
        if (m_span == nullptr) {
            return;
        }
        const std::int64_t share = (m_rows + threads - 1) / threads;
        while (m_told * m_rows < m_taken * share) {
            ++m_told;
            m_span->advance();
        }
    }

private:
    CProgressSpan* m_span;
    std::int64_t m_rows;
    std::int64_t m_taken = 0;
    std::int64_t m_told = 0;
};

/// The images that equations are read from.
struct EquationImages {
    const cv::Mat& sharp;
    const cv::Mat& blurred;
    int rowsBefore; ///< from a pixel up to the first row of its patch
    int columnsBefore;
};

/// Sums the equations of the selected pixels in one parallel region, batch by batch. Two batches
/// take turns, so that the next is gathered while the threads still multiply.
class BatchedSum {
public:
    BatchedSum(const EquationImages& images, CNormalEquations& equations, SelectedPixels& pixels,
               RowProgress& progress)
        : m_images(images), m_equations(equations), m_pixels(pixels), m_progress(progress) {
        for (Batch& batch : m_batches) {
            batch.reserve(pixels.capacity());
        }
    }

    /// Adds all equations to `sums`.
    /// @return the number of pixels
    std::int64_t addTo(const NormalSums& sums) {
        openTeam([&]() noexcept {
#pragma omp master
            gather(m_batches[0]);
#pragma omp barrier
            for (std::size_t turn = 0; !m_batches[turn].empty(); turn = 1 - turn) {
                pack(m_batches[turn]);
#pragma omp master
                gather(m_batches[1 - turn]);
                accumulate(static_cast<int>(m_batches[turn].size()), sums);
            }
            mirror(sums);
        });
        m_failures.rethrow();
        return m_count;
    }

private:
    using Batch = std::vector<PixelPosition>;

    /// A failure, which only the host's progress callback can bring about, ends the sum.
    void gather(Batch& batch) noexcept {
        bool complete = false;
        m_failures.run([&] {
            m_pixels.next(batch, [&] { m_progress.rowTaken(omp_get_num_threads()); });
            complete = true;
        });
        if (!complete) {
            batch.clear();
        }
        m_count += static_cast<std::int64_t>(batch.size());
    }

    // Each of the three phases shares its pieces out among the team that calls it, and ends when
    // all pieces are done.

    void pack(const Batch& batch) noexcept {
        const int taken = static_cast<int>(batch.size());
#pragma omp for schedule(dynamic, 16)
        for (int slot = 0; slot < taken; ++slot) {
            packPixel(slot, batch[static_cast<std::size_t>(slot)]);
        }
    }

    void packPixel(int slot, const PixelPosition& pixel) noexcept {
        const cv::Mat& sharp = m_images.sharp;
        const cv::Mat& blurred = m_images.blurred;
        m_equations.pack(
            omp_get_thread_num(), slot,
            sharp.ptr(pixel.row - m_images.rowsBefore) + (pixel.column - m_images.columnsBefore),
            static_cast<std::ptrdiff_t>(sharp.step[0]), blurred.ptr(pixel.row) + pixel.column,
            static_cast<std::ptrdiff_t>(blurred.step[0]));
    }

    void accumulate(int taken, const NormalSums& sums) const noexcept {
#pragma omp for schedule(dynamic)
        for (std::int64_t block = 0; block < m_equations.blockCount(); ++block) {
            m_equations.accumulate(block, taken, sums);
        }
    }

    void mirror(const NormalSums& sums) const noexcept {
#pragma omp for schedule(dynamic)
        for (std::int64_t block = 0; block < m_equations.blockCount(); ++block) {
            m_equations.mirror(block, sums);
        }
    }

    EquationImages m_images;
    CNormalEquations& m_equations;
    SelectedPixels& m_pixels;
    RowProgress& m_progress;
    std::array<Batch, 2> m_batches;
    std::int64_t m_count = 0;
    FailureRelay m_failures;
};

bool holdsBytes(const cv::Mat& image) {
    return image.type() == CV_8UC1;
}

} // namespace

void CPSFEst::setup(cv::Size kernelSize, cv::Size imageSize, cv::Point anchor, float lambda,
                    float w0, float w1, float w2, float w3, float w4, float w5) {
    const std::int64_t unknowns = std::int64_t{kernelSize.width} * kernelSize.height;
    // cv::Mat multiplies its sides without a check in 64 bits.
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
    // The matrix first: a kernel too large for it fails before any other memory is touched.
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
    const int threads = omp_get_max_threads();
    CNormalEquations equations(m_kW, m_kH, threads);
    const PixelRange walked = margin(m_kH, m_imH);
    SelectedPixels pixels(mask, walked, insideImage(walked, m_anchorX, m_kH, m_imH),
                          insideImage(margin(m_kW, m_imW), m_anchorY, m_kW, m_imW),
                          equations.batchPixels());
    RowProgress progress(m_progress, walked.end - walked.begin);
    BatchedSum sum({image, blur, m_anchorX, m_anchorY}, equations, pixels, progress);
    if (m_progress != nullptr) {
        m_progress->beginSub(std::max(1, (m_imH - 2 * m_kH) / threads));
    }
    const std::int64_t count = sum.addTo({m_A.ptr<double>(), m_A.step1(), m_b.ptr<double>()});
    if (m_progress != nullptr) {
        m_progress->endSub();
    }
    m_count = static_cast<int>(count);
}

const cv::Mat& CPSFEst::computePSF() {
    cv::Mat x = cv::Mat::zeros(m_n, 1, CV_64FC1);
    const double tikhonov =
        static_cast<double>(m_count) * kTikhonovScale * static_cast<double>(m_lambda);
    double trace = 0.0;
    for (int i = 0; i < m_n; ++i) {
        m_A.at<double>(i, i) += tikhonov;
        trace += m_A.at<double>(i, i);
    }
    // The normal matrix has no eigenvalue below the Tikhonov term and none above the trace. Where
    // the two are not too far apart, Cholesky gives the same kernel much faster.
    const bool wellConditioned = tikhonov > 0.0 && tikhonov >= kLeastTikhonovShare * trace;
    // Without equations the solution of least norm is zero; singular values would take as long as
    // ever to say so.
    const bool hasEquations = trace != 0.0;
    if (hasEquations && (!wellConditioned || !cv::solve(m_A, m_b, x, cv::DECOMP_CHOLESKY))) {
        cv::solve(m_A, m_b, x, cv::DECOMP_SVD);
    }
    for (int i = 0; i < m_kW; ++i) {
        for (int j = 0; j < m_kH; ++j) {
            m_kernel.at<float>(j, i) = static_cast<float>(x.at<double>(i * m_kH + j));
        }
    }
    return m_kernel;
}

} // namespace vel
