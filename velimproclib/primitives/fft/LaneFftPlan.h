#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vel {

/// The roots of unity exp(-2 pi i k / n) in double precision, for any k, with n a power of two.
///
/// A root is the product of one entry from each of two tables of about sqrt(n) entries. Therefore
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

/// The constant tables of a 16-lane complex transform of a power-of-two length.
///
/// The transform decimates in frequency, in place. A pass of radix r over n elements, with
/// m = n / r, produces r contiguous parts of m elements; output k of the butterfly at j is
/// multiplied by exp(-2 pi i j k / n). The inverse runs the passes in the opposite order, with the
/// conjugate factors on the operands.
struct LaneFftPlan {
    /// @throws std::bad_alloc when memory is exhausted, std::length_error when a table exceeds the
    /// largest size of a vector
    explicit LaneFftPlan(int log2Length);

    std::size_t length;
    /// Radices of the passes, first pass first; 8 comes first for lengths from 32 on.
    std::vector<int> radices;
    /// The factors of each pass as pairs (re, im) for j = 1..m-1, k = 1..r-1, k fastest; the last
    /// pass has none.
    std::vector<std::vector<float>> twiddles;
    /// Frequency k ends up in element places[k]; frequency 0 in element 0.
    std::vector<std::uint32_t> places;
};

} // namespace vel
