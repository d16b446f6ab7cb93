#pragma once

#include <cstddef>
#include <vector>

namespace vel {

/// The roots of unity exp(-2 pi i k / n) in double precision, for any k, with n a power of two.
///
/// Two tables of about sqrt(n) entries each; a root is the product of one entry of each, so that
/// the set-up of long transforms needs few calls of sine and cosine. Multiples of a quarter turn
/// are exact.
class RootsOfUnity {
public:
    struct Root {
        double re, im;
    };

    explicit RootsOfUnity(int log2Count);
    Root operator()(std::size_t k) const;

private:
    std::size_t m_count;
    int m_fineBits;
    std::vector<Root> m_coarse;
    std::vector<Root> m_fine;
};

/// What a 16-lane complex transform of a power-of-two length needs to know: the radices of its
/// passes, first pass first, and the twiddle factors of each pass.
///
/// The transform decimates in frequency. A pass of radix r over n elements, with m = n / r, leaves
/// r contiguous parts of m elements; output k of the butterfly at j is multiplied by
/// exp(-2 pi i j k / n). `twiddles[pass]` holds these factors as pairs (re, im) for j = 1..m-1,
/// k = 1..r-1, k fastest; the last pass has none.
struct LaneFftPlan {
    /// @throws std::bad_alloc when the tables do not fit in memory.
    explicit LaneFftPlan(int log2Length);

    std::size_t length;
    std::vector<int> radices;
    std::vector<std::vector<float>> twiddles;
};

} // namespace vel
