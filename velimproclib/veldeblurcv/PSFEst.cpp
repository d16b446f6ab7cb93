#include "velimproclib/veldeblurcv/PSFEst.h"

#include "velimproclib/primitives/FailureRelay.h"
#include "velimproclib/veldeblurcv/NormalEquations.h"
#include "velimproclib/veldeblurcv/ProgressSpan.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
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

/// Rows or columns from `begin` up to but not including `end`.
struct Range {
    std::int64_t begin;
    std::int64_t end;
};

/// Pixels along one axis that have equations of their own.
Range margin(int kernelSide, int imageSide) {
    return {std::int64_t{kernelSide} + 2, std::int64_t{imageSide} - kernelSide - 2};
}

/// Pixels along one axis whose patch, `offset` before the pixel and `kernelSide` plus 2 for the
/// differences long, stays in the image. For long thin kernels this is less than `margin` allows.
Range insideImage(Range range, int offset, int kernelSide, int imageSide) {
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

/// The first byte that is not 0, else `end`. Masks are mostly empty: eight bytes at a time.
const unsigned char* firstSelected(const unsigned char* at, const unsigned char* end) {
    for (std::uint64_t eight = 0; end - at >= 8; at += 8) {
        std::memcpy(&eight, at, 8);
        if (eight != 0) {
            break;
        }
    }
    return std::find_if(at, end, [](unsigned char m) { return m != 0; });
}

struct PixelPosition {
    int row;
    int column;
};

/// Hands out the selected pixels row by row, a batch at a time.
class SelectedPixels {
public:
    /// @param walked  rows that are taken up, one after the other
    /// @param rows    those of them that may hold pixels
    /// @param columns columns that may hold pixels
    SelectedPixels(const cv::Mat& mask, Range walked, Range rows, Range columns, int batchPixels)
        : m_mask(mask), m_walkedEnd(walked.end), m_rows(rows), m_columns(columns),
          m_capacity(static_cast<std::size_t>(batchPixels)), m_row(walked.begin - 1),
          m_column(columns.end) {}

    std::size_t capacity() const noexcept { return m_capacity; }

    /// Replaces `batch`, which has room for `capacity` pixels; it stays empty when all rows are
    /// walked. Calls `rowTaken` before it looks for pixels in a row.
    template <class RowTaken>
    void next(std::vector<PixelPosition>& batch, RowTaken&& rowTaken) {
        batch.clear();
        while (batch.size() < m_capacity && reachPixel(rowTaken)) {
            batch.push_back({static_cast<int>(m_row), static_cast<int>(m_column)});
            ++m_column;
        }
    }

private:
    template <class RowTaken>
    bool reachPixel(RowTaken& rowTaken) {
        while (!reachPixelInRow()) {
            if (m_row + 1 >= m_walkedEnd) {
                return false;
            }
            ++m_row;
            m_column = m_columns.begin;
            rowTaken();
        }
        return true;
    }

    bool reachPixelInRow() {
        if (m_row < m_rows.begin || m_row >= m_rows.end || m_column >= m_columns.end) {
            return false;
        }
        const unsigned char* row = m_mask.ptr(static_cast<int>(m_row));
        const unsigned char* end = row + m_columns.end;
        const unsigned char* found = firstSelected(row + m_column, end);
        m_column = found - row;
        return found != end;
    }

    const cv::Mat& m_mask;
    std::int64_t m_walkedEnd;
    Range m_rows;
    Range m_columns;
    std::size_t m_capacity;
    std::int64_t m_row;
    std::int64_t m_column;
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
    const Range walked = margin(m_kH, m_imH);
    SelectedPixels pixels(mask, walked, insideImage(walked, m_anchorX, m_kH, m_imH),
                          insideImage(margin(m_kW, m_imW), m_anchorY, m_kW, m_imW),
                          equations.batchPixels());
    if (m_progress != nullptr) {
        m_progress->beginSub(std::max(1, (m_imH - 2 * m_kH) / threads));
    }
    RowProgress progress(m_progress, walked.end - walked.begin);
    const NormalSums sums{m_A.ptr<double>(), m_A.step1(), m_b.ptr<double>()};
    // Two batches take turns, so that the next is gathered while the threads still multiply.
    std::array<std::vector<PixelPosition>, 2> batches;
    for (std::vector<PixelPosition>& batch : batches) {
        batch.reserve(pixels.capacity());
    }
    std::int64_t count = 0;
    FailureRelay failures;
    const auto gather = [&](std::vector<PixelPosition>& batch) {
        bool complete = false;
        failures.run([&] {
            pixels.next(batch, [&] { progress.rowTaken(omp_get_num_threads()); });
            complete = true;
        });
        if (!complete) {
            batch.clear();
        }
        count += static_cast<std::int64_t>(batch.size());
    };
    const auto pack = [&](int slot, const PixelPosition& pixel) {
        equations.pack(omp_get_thread_num(), slot,
                       image.ptr(pixel.row - m_anchorX) + (pixel.column - m_anchorY),
                       static_cast<std::ptrdiff_t>(image.step[0]),
                       blur.ptr(pixel.row) + pixel.column,
                       static_cast<std::ptrdiff_t>(blur.step[0]));
    };
#pragma omp parallel
    {
#pragma omp master
        gather(batches[0]);
#pragma omp barrier
        for (std::size_t turn = 0; !batches[turn].empty(); turn = 1 - turn) {
            const std::vector<PixelPosition>& batch = batches[turn];
            const int taken = static_cast<int>(batch.size());
#pragma omp for schedule(dynamic, 16)
            for (int slot = 0; slot < taken; ++slot) {
                pack(slot, batch[static_cast<std::size_t>(slot)]);
            }
#pragma omp master
            gather(batches[1 - turn]);
#pragma omp for schedule(dynamic)
            for (std::int64_t block = 0; block < equations.blockCount(); ++block) {
                equations.accumulate(block, taken, sums);
            }
        }
#pragma omp for schedule(dynamic)
        for (std::int64_t block = 0; block < equations.blockCount(); ++block) {
            equations.mirror(block, sums);
        }
    }
    failures.rethrow();
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
