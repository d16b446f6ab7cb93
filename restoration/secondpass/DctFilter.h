#pragma once

#include "restoration/planes/Plane.h"
#include "restoration/secondpass/DctVariances.h"
#include "restoration/threads/Cancellation.h"
#include "velimproclib/primitives/base/AlignedFloats.h"

#include <cstddef>

namespace restoration {

/// The positions of the 8x8 blocks on the plane: every `step` rows and columns from (row, column);
/// the columns of every other row of blocks are moved by `shift`. The step is 1, 2 or 4.
struct BlockLattice {
    int step = 2;
    int row = 0;
    int column = 0;
    int shift = 0;
};

/// The noise of a plane.
struct DctNoise {
    DctVariances variances{};
    /// The variances of a block with the mean m are base + slope m times the above. Noise of
    /// constant strength in display values grows like this in light, as does the noise of sensors.
    float base = 1.0f;
    float slope = 0.0f;
};

/// Denoises square planes in overlapping 8x8 blocks. A block is transformed by the cosine transform
/// (DCT-II), coefficients that noise explains are set to zero, and the restored blocks are averaged
/// with the inverse of their remaining noise as weights. The mean of a block is always kept. The
/// plane is one period of a periodic plane: blocks wrap around its edges.
///
/// The shrinkage and the weights are those of the first stage of K. Dabov, A. Foi, V. Katkovnik,
/// K. Egiazarian, Image denoising by sparse 3-D transform-domain collaborative filtering, IEEE
/// Transactions on Image Processing, 2007, without grouping.
///
/// Sums run in the order of the blocks, therefore all processor variants give the same bits. An
/// object is working memory: it serves one thread at a time. Memory is allocated on first use.
class DctFilter {
public:
    /// Sets coefficients of at most `threshold` standard deviations to zero.
    /// @param noisy  square; its side is a power of two, at least 64
    /// @param out    of the same side; may be `noisy`
    /// @throws Failure for a cancelled call; std::bad_alloc
    void shrink(const Plane& noisy, const DctNoise& noise, float threshold,
                const BlockLattice& lattice, Plane& out, const Cancellation& cancellation);

private:
    void allocate(std::size_t side, std::size_t lineFloats);

    vel::AlignedFloats m_noisy;   ///< the noisy plane, the columns of each row sorted by phase
    vel::AlignedFloats m_sum;     ///< weighted sum of the restored blocks, sorted alike
    vel::AlignedFloats m_weights; ///< sum of the weights, sorted alike
    vel::AlignedFloats m_lines;   ///< the row of blocks at hand
};

} // namespace restoration
