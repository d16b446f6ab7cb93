#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace vel {

/// Where the normal equations are summed: a dense square matrix and a vector of doubles.
struct NormalSums {
    double* matrix;     ///< `unknowns` rows
    std::size_t stride; ///< doubles from one row of the matrix to the next
    double* rightHand;  ///< `unknowns` values
};

/// Sums the normal equations X^T X and X^T y of the kernel estimate, exactly.
///
/// A pixel contributes six equations, one for each of value, dx, dy, dxx, dyy and dxy (forward
/// differences). Their coefficients are that derivative of the sharp image under every kernel entry
/// and their right-hand side is that derivative of the blurred image. All are integers of at most
/// 510 in magnitude, so a sum over any real image stays an integer far below 2^53 and is the same
/// double in every order of summation: on every processor variant and for every number of threads.
///
/// Use: `pack` up to `batchPixels` pixels, `accumulate` every block, repeat for each batch; at the
/// end `mirror` every block once. Threads may share the calls of a phase in any way, as long as one
/// thread at a time uses a slot, a block and a thread number. Between phases the threads need a
/// barrier.
///
/// Unknown number i * kernelHeight + j is the kernel's entry in row j and column i.
class CNormalEquations {
public:
    /// Allocates at most 8 MB, or 768 bytes for each unknown when that is more (kernels beyond 103
    /// by 103), and for each thread 4 bytes for each unknown.
    /// @param threads number of threads that will call `pack`
    /// @throws std::bad_alloc
    CNormalEquations(int kernelWidth, int kernelHeight, int threads);

    /// Pixels that one batch can hold.
    int batchPixels() const noexcept { return m_batchPixels; }

    /// Number of blocks that the lower half of the matrix and the vector are divided into.
    std::int64_t blockCount() const noexcept { return m_blockCount; }

    /// Writes one pixel's equations into `slot` of the batch.
    /// @param thread   number of the calling thread, below `threads`
    /// @param taps     first sample of the patch under the kernel in the sharp image; two columns
    ///                 and rows after the patch are read as well
    /// @param observed the pixel of the blurred image; two columns and rows after it are read as
    ///                 well
    /// Steps count bytes.
    void pack(int thread, int slot, const std::uint8_t* taps, std::ptrdiff_t tapStep,
              const std::uint8_t* observed, std::ptrdiff_t observedStep) noexcept;

    /// Adds the equations of slots 0 to `pixels` - 1 to the sums of `block`. Elements above the
    /// diagonal are undefined until `mirror` overwrites them.
    void accumulate(std::int64_t block, int pixels, const NormalSums& sums) const noexcept;

    /// Copies the elements of `block` from the lower half of the matrix to the upper half.
    void mirror(std::int64_t block, const NormalSums& sums) const noexcept;

private:
    static constexpr int kLineColumns = 16;

    /// One pair of equations for 16 neighbouring columns of X, each a pair of 16-bit integers.
    struct alignas(64) Line {
        std::int32_t pairs[kLineColumns];
    };
    int m_kernelWidth;
    int m_kernelHeight;
    std::int64_t m_unknowns;
    std::int64_t m_panels;
    int m_batchPixels;
    std::int64_t m_blockCount;
    std::unique_ptr<Line[]> m_lines;
    std::vector<std::vector<std::uint8_t>> m_workspaces; ///< one for each thread
};

} // namespace vel
