#pragma once

#include "restoration/planes/Plane.h"
#include "restoration/threads/Cancellation.h"
#include "velimproclib/primitives/base/AlignedFloats.h"
#include "velimproclib/primitives/fft/RealFft2D.h"

#include <cstddef>

namespace restoration {

/// The transform of square planes whose side is a power of two, on the calling thread.
///
/// Half spectra are stored as `vel::RealFft2D` describes. An object has scratch memory of its own:
/// only one thread may use it at a time. All functions check the cancellation at least once per 16
/// rows.
class SquareTransform {
public:
    /// @throws std::bad_alloc
    SquareTransform(int side, const Cancellation& cancellation);

    int side() const noexcept { return m_fft.height(); }
    const vel::RealFft2D& fft() const noexcept { return m_fft; }
    const Cancellation& cancellation() const noexcept { return m_cancellation; }

    /// Transforms the first `rows` rows of `plane`; the others count as zero.
    /// @param spectrum `fft().spectrumFloats()` floats
    void forward(const Plane& plane, int rows, float* spectrum);
    void forward(const Plane& plane, float* spectrum) { forward(plane, side(), spectrum); }

    /// The first half of a forward transform for 16 rows: `rows` points at the first of them.
    void forwardGroup(const float* rows, int group, float* spectrum);

    /// The squared magnitude of a forward transform at row v and column u of frequencies, 0 <= v <
    /// side and 0 <= u < side / 2. Column 0 holds parts of two columns (`vel::RealFft2D`).
    double powerAt(int v, int u, const float* spectrum) const noexcept;

    /// Calls work(block, float* columns) for every block of the spectrum in turn.
    template <class Work>
    void forEachBlock(float* spectrum, const Work& work) const {
        for (int block = 0; block < m_fft.blockCount(); ++block) {
            m_cancellation.check();
            work(block, spectrum + static_cast<std::size_t>(block) * m_fft.blockFloats());
        }
    }

    /// The slots of a half spectrum: complex numbers, of which two real ones share some.
    std::size_t slotCount() const noexcept {
        return static_cast<std::size_t>(m_fft.blockCount()) * static_cast<std::size_t>(side()) *
               vel::RealFft2D::kLanes;
    }

    /// Calls work(number, float* slot) for every slot of the spectrum in turn. The imaginary part
    /// follows the real one at a distance of `vel::RealFft2D::kLanes`.
    template <class Work>
    void forEachSlot(float* spectrum, const Work& work) const {
        std::size_t number = 0;
        forEachBlock(spectrum, [&](int, float* columns) {
            for (int row = 0; row < side(); ++row) {
                for (int lane = 0; lane < vel::RealFft2D::kLanes; ++lane, ++number) {
                    work(number, columns + row * vel::RealFft2D::kRowFloats + lane);
                }
            }
        });
    }

    /// The squared magnitude of the number in a slot.
    static double powerIn(const float* slot) noexcept {
        const auto re = static_cast<double>(slot[0]);
        const auto im = static_cast<double>(slot[vel::RealFft2D::kLanes]);
        return re * re + im * im;
    }

    /// The second half of an inverse transform: writes the rows `first` to `last` of `plane`, and
    /// others of the same groups of 16.
    void inverseRows(const float* spectrum, int first, int last, Plane& plane);

private:
    vel::RealFft2D m_fft;
    const Cancellation& m_cancellation;
    vel::AlignedFloats m_scratch;
};

/// The smallest power of two that is at least `length`.
int powerOfTwoFrom(int length) noexcept;

} // namespace restoration
