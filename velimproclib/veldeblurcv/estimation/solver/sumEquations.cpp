#include "velimproclib/veldeblurcv/estimation/solver/sumEquations.h"

#include "velimproclib/primitives/base/FailureRelay.h"
#include "velimproclib/primitives/base/Team.h"
#include "velimproclib/veldeblurcv/estimation/progress/ProgressSpan.h"
#include "velimproclib/veldeblurcv/estimation/solver/NormalEquations.h"
#include "velimproclib/veldeblurcv/estimation/solver/SelectedPixels.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <omp.h>
#include <vector>

namespace vel {

namespace {

/// Pixels along one axis that have equations of their own.
PixelRange withinMargin(int kernelSide, int imageSide) {
    return {std::int64_t{kernelSide} + 2, std::int64_t{imageSide} - kernelSide - 2};
}

/// Pixels of `range` whose patch stays in the image. The patch starts `before` pixels before its
/// pixel and is `kernelSide` long, plus 2 for the differences. Long thin kernels need this: half
/// the longer side may exceed the margin of the shorter one.
PixelRange withPatchInside(PixelRange range, int before, int kernelSide, int imageSide) {
    const std::int64_t last = std::int64_t{imageSide} - kernelSide - 2 + before;
    return {std::max<std::int64_t>(range.begin, before), std::min(range.end, last + 1)};
}

/// Advances the progress as if thread number 0 took an even share of the rows, spread over all of
/// them.
class RowProgress {
public:
    RowProgress(CProgressSpan& span, std::int64_t rows) : m_span(span), m_rows(rows) {}

    /// A team of `threads` takes one more row.
    void rowTaken(int threads) {
        ++m_taken;
        const std::int64_t share = (m_rows + threads - 1) / threads;
        while (m_reported * m_rows < m_taken * share) {
            ++m_reported;
            m_span.advance();
        }
    }

private:
    CProgressSpan& m_span;
    std::int64_t m_rows;
    std::int64_t m_taken = 0;
    std::int64_t m_reported = 0;
};

/// Sums the equations batch by batch. Two batches alternate, so that thread number 0 gathers the
/// next one while the others still multiply.
class BatchedSum {
public:
    BatchedSum(const EquationImages& images, const EquationGeometry& geometry,
               CNormalEquations& equations, SelectedPixels& pixels, RowProgress& progress)
        : m_images(images), m_geometry(geometry), m_equations(equations), m_pixels(pixels),
          m_progress(progress) {
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

    /// Only the host's progress callback can fail here. A failure ends the sum.
    void gather(Batch& batch) noexcept {
        bool isComplete = false;
        m_failures.run([&] {
            m_pixels.next(batch, [&] { m_progress.rowTaken(omp_get_num_threads()); });
            isComplete = true;
        });
        if (!isComplete) {
            batch.clear();
        }
        m_count += static_cast<std::int64_t>(batch.size());
    }

    // The team that calls one of these three phases shares its pieces. A phase ends when all pieces
    // are done.

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
        m_equations.pack(omp_get_thread_num(), slot,
                         sharp.ptr(pixel.row - m_geometry.rowsBefore) +
                             (pixel.column - m_geometry.columnsBefore),
                         static_cast<std::ptrdiff_t>(sharp.step[0]),
                         blurred.ptr(pixel.row) + pixel.column,
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

    const EquationImages& m_images;
    const EquationGeometry& m_geometry;
    CNormalEquations& m_equations;
    SelectedPixels& m_pixels;
    RowProgress& m_progress;
    std::array<Batch, 2> m_batches;
    std::int64_t m_count = 0;
    FailureRelay m_failures;
};

} // namespace

std::int64_t sumEquations(const EquationImages& images, const EquationGeometry& geometry,
                          CProgressSpan& progress, const NormalSums& sums) {
    const auto [kernel, image, rowsBefore, columnsBefore] = geometry;
    const int threads = omp_get_max_threads();
    CNormalEquations equations(kernel.width, kernel.height, threads);
    const PixelRange rows = withinMargin(kernel.height, image.height);
    const PixelRange columns = withinMargin(kernel.width, image.width);
    SelectedPixels pixels(images.mask, rows,
                          withPatchInside(rows, rowsBefore, kernel.height, image.height),
                          withPatchInside(columns, columnsBefore, kernel.width, image.width),
                          equations.batchPixels());
    RowProgress rowProgress(progress, rows.end - rows.begin);
    BatchedSum sum(images, geometry, equations, pixels, rowProgress);
    progress.beginSub(std::max(1, (image.height - 2 * kernel.height) / threads));
    const std::int64_t count = sum.addTo(sums);
    progress.endSub();
    return count;
}

} // namespace vel
