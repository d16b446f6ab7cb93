#pragma once

#include "restoration/planes/Plane.h"
#include "restoration/threads/Cancellation.h"
#include "velimproclib/primitives/fft/RealFft2D.h"

#include <cstddef>

/// The steps of the transform of a tile, on one thread. `rowMemory` holds `fft.scratchFloats()`
/// floats. All steps throw a cancelled call's Failure.
namespace restoration {

inline std::ptrdiff_t rowBytes(const vel::RealFft2D& fft) noexcept {
    return static_cast<std::ptrdiff_t>(sizeof(float)) * fft.width();
}

/// Transforms the rows of a plane.
inline void forwardRows(const vel::RealFft2D& fft, const Plane& plane, float* spectrum,
                        float* rowMemory, const Cancellation& cancellation) {
    for (int group = 0; group < fft.groupCount(); ++group) {
        cancellation.check();
        fft.forwardRows(plane.row(0), rowBytes(fft), group, spectrum, rowMemory);
    }
}

/// Undoes `forwardRows`.
inline void inverseRows(const vel::RealFft2D& fft, const float* spectrum, Plane& plane,
                        float* rowMemory, const Cancellation& cancellation) {
    for (int group = 0; group < fft.groupCount(); ++group) {
        cancellation.check();
        fft.inverseRows(spectrum, group, plane.row(0), rowBytes(fft), rowMemory);
    }
}

/// work(block, offset) for every column block; it begins `offset` floats after the start of a
/// spectrum.
template <class Work>
void forEachBlock(const vel::RealFft2D& fft, const Cancellation& cancellation, const Work& work) {
    for (int block = 0; block < fft.blockCount(); ++block) {
        cancellation.check();
        work(block, static_cast<std::size_t>(block) * fft.blockFloats());
    }
}

} // namespace restoration
