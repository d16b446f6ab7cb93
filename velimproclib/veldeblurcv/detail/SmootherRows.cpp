#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "velimproclib/veldeblurcv/detail/SmootherRows.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "velimproclib/veldeblurcv/detail/SmootherRows.h"

HWY_BEFORE_NAMESPACE();
namespace vel::HWY_NAMESPACE {

namespace {

namespace hn = hwy::HWY_NAMESPACE;

constexpr std::size_t kSumLanes = 8;

double addLanes(const double* lanes) {
    return ((lanes[0] + lanes[1]) + (lanes[2] + lanes[3])) +
           ((lanes[4] + lanes[5]) + (lanes[6] + lanes[7]));
}

/// The columns of a row that `sumColumns` may process in blocks of eight.
struct Blocks {
    std::size_t begin; ///< a multiple of eight
    std::size_t end;
};

/// Adds the columns from `begin` to `end` to the lanes, one at a time.
template <std::size_t kSums, class Terms>
HWY_INLINE void addColumns(std::size_t begin, std::size_t end, double (&lanes)[kSums][kSumLanes],
                           const Terms& terms) {
    const hn::CappedTag<double, 1> one;
    for (std::size_t c = begin; c < end; ++c) {
        hn::Vec<decltype(one)> term[kSums];
        terms(one, c, term);
        for (std::size_t s = 0; s < kSums; ++s) {
            lanes[s][c % kSumLanes] += hn::GetLane(term[s]);
        }
    }
}

/// Adds whole blocks of eight columns between `begin` and `end` to the lanes. `begin` is a multiple
/// of eight when at least one block follows.
/// @return the first column that no block contains
template <std::size_t kSums, class Terms>
HWY_INLINE std::size_t addBlocks(std::size_t begin, std::size_t end,
                                 double (&lanes)[kSums][kSumLanes], const Terms& terms) {
    const hn::CappedTag<double, kSumLanes> d;
    constexpr std::size_t kStep = hn::MaxLanes(d);
    constexpr std::size_t kParts = kSumLanes / kStep;
    using Vector = hn::Vec<decltype(d)>;
    Vector sums[kSums][kParts];
    for (std::size_t s = 0; s < kSums; ++s) {
        for (std::size_t part = 0; part < kParts; ++part) {
            sums[s][part] = hn::Load(d, lanes[s] + part * kStep);
        }
    }
    std::size_t c = begin;
    for (; c + kSumLanes <= end; c += kSumLanes) {
        for (std::size_t part = 0; part < kParts; ++part) {
            Vector term[kSums];
            terms(d, c + part * kStep, term);
            for (std::size_t s = 0; s < kSums; ++s) {
                sums[s][part] = hn::Add(sums[s][part], term[s]);
            }
        }
    }
    for (std::size_t s = 0; s < kSums; ++s) {
        for (std::size_t part = 0; part < kParts; ++part) {
            hn::Store(sums[s][part], d, lanes[s] + part * kStep);
        }
    }
    return c;
}

/// Adds up `kSums` sums over all columns of a row. `terms(d, c, t)` stores in `t` one vector for
/// each sum: the terms of the columns from c on. Columns outside of `blocks` are added one at a
/// time.
template <std::size_t kSums, class Terms>
HWY_INLINE void sumColumns(std::size_t count, const Blocks& blocks, double* sums,
                           const Terms& terms) {
    alignas(64) double lanes[kSums][kSumLanes] = {};
    const std::size_t first = blocks.begin < count ? blocks.begin : count;
    addColumns(0, first, lanes, terms);
    const std::size_t rest = addBlocks(first, blocks.end, lanes, terms);
    addColumns(rest, count, lanes, terms);
    for (std::size_t s = 0; s < kSums; ++s) {
        sums[s] = addLanes(lanes[s]);
    }
}

template <class D>
HWY_INLINE hn::Vec<D> power(D d, hn::Vec<D> base, std::int32_t exponent) {
    const auto unsignedExponent = static_cast<std::uint32_t>(exponent);
    std::uint32_t rest = exponent < 0 ? 0u - unsignedExponent : unsignedExponent;
    auto result = hn::Set(d, 1.0);
    while (rest != 0) {
        if ((rest & 1u) != 0) {
            result = hn::Mul(result, base);
        }
        rest >>= 1;
        base = hn::Mul(base, base);
    }
    return exponent < 0 ? hn::Div(hn::Set(d, 1.0), result) : result;
}

template <class D>
HWY_INLINE hn::Vec<D> couplingAt(D d, const CouplingRule& rule, const double* a, const double* b) {
    const auto step = hn::Abs(hn::Sub(hn::LoadU(d, b), hn::LoadU(d, a)));
    const auto hold = hn::Add(power(d, step, rule.exponent), hn::Set(d, rule.epsilon));
    return hn::Div(hn::Set(d, -rule.lambda), hold);
}

/// coupling*(neighbour - here)
template <class D>
HWY_INLINE hn::Vec<D> pull(D d, const double* coupling, const double* neighbour, hn::Vec<D> here) {
    return hn::Mul(hn::LoadU(d, coupling), hn::Sub(hn::LoadU(d, neighbour), here));
}

/// r . D^-1 r and r . r from D^-1 r
template <class D>
HWY_INLINE void residualTerms(hn::Vec<D> diagonal, hn::Vec<D> scaled, hn::Vec<D>* terms) {
    const auto residual = hn::Mul(diagonal, scaled);
    terms[0] = hn::Mul(residual, scaled);
    terms[1] = hn::Mul(residual, residual);
}

} // namespace

void couplingLanes(const CouplingRule& rule, const double* a, const double* b, double* coupling,
                   std::size_t count) {
    const hn::ScalableTag<double> d;
    const hn::CappedTag<double, 1> one;
    const std::size_t lanes = hn::Lanes(d);
    std::size_t c = 0;
    for (; c + lanes <= count; c += lanes) {
        hn::StoreU(couplingAt(d, rule, a + c, b + c), d, coupling + c);
    }
    for (; c < count; ++c) {
        hn::StoreU(couplingAt(one, rule, a + c, b + c), one, coupling + c);
    }
}

void diagonalLanes(const CouplingRows& coupling, double* HWY_RESTRICT diagonal, std::size_t count) {
    const double* right = coupling.right;
    const double* below = coupling.below;
    const double* above = coupling.above;
    diagonal[0] = 1.0 - right[0] - below[0] - above[0];
    for (std::size_t c = 1; c < count; ++c) {
        diagonal[c] = 1.0 - right[c] - below[c] - right[c - 1] - above[c];
    }
}

double productLanes(const CouplingRows& coupling, const NeighbourRows& v, double* product,
                    std::size_t count) {
    const CouplingRows w = coupling;
    const NeighbourRows rows = v;
    double sum;
    // The first and the last column have one neighbour less, therefore no block contains them.
    sumColumns<1>(
        count, {kSumLanes, count - 1}, &sum, [=](auto d, std::size_t c, auto* term) HWY_ATTR {
            const double* p = rows.here + c;
            const auto here = hn::LoadU(d, p);
            const auto right = c + 1 < count ? pull(d, w.right + c, p + 1, here) : hn::Zero(d);
            const auto left = c > 0 ? pull(d, w.right + c - 1, p - 1, here) : hn::Zero(d);
            const auto below = pull(d, w.below + c, rows.below + c, here);
            const auto above = pull(d, w.above + c, rows.above + c, here);
            const auto pulls = hn::Add(hn::Add(right, left), hn::Add(below, above));
            const auto result = hn::Add(here, pulls);
            hn::StoreU(result, d, product + c);
            term[0] = hn::Mul(here, result);
        });
    return sum;
}

ResidualSums startLanes(const double* product, const double* diagonal, double* residual,
                        double* direction, std::size_t count) {
    double sums[2];
    sumColumns<2>(count, {0, count}, sums, [=](auto d, std::size_t c, auto* terms) HWY_ATTR {
        const auto scale = hn::LoadU(d, diagonal + c);
        const auto rest = hn::Sub(hn::LoadU(d, residual + c), hn::LoadU(d, product + c));
        const auto scaled = hn::Div(rest, scale);
        hn::StoreU(scaled, d, residual + c);
        hn::StoreU(scaled, d, direction + c);
        residualTerms<decltype(d)>(scale, scaled, terms);
    });
    return {sums[0], sums[1]};
}

ResidualSums residualLanes(double length, const double* product, const double* diagonal,
                           double* residual, std::size_t count) {
    double sums[2];
    sumColumns<2>(count, {0, count}, sums, [=](auto d, std::size_t c, auto* terms) HWY_ATTR {
        const auto scale = hn::LoadU(d, diagonal + c);
        const auto change = hn::Div(hn::LoadU(d, product + c), scale);
        const auto scaled =
            hn::Sub(hn::LoadU(d, residual + c), hn::Mul(hn::Set(d, length), change));
        hn::StoreU(scaled, d, residual + c);
        residualTerms<decltype(d)>(scale, scaled, terms);
    });
    return {sums[0], sums[1]};
}

void advanceLanes(double length, double turn, const double* residual, double* HWY_RESTRICT solution,
                  double* HWY_RESTRICT direction, std::size_t count) {
    for (std::size_t c = 0; c < count; ++c) {
        solution[c] = solution[c] + length * direction[c];
        direction[c] = residual[c] + turn * direction[c];
    }
}

} // namespace vel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vel {

HWY_EXPORT(couplingLanes);
HWY_EXPORT(diagonalLanes);
HWY_EXPORT(productLanes);
HWY_EXPORT(startLanes);
HWY_EXPORT(residualLanes);
HWY_EXPORT(advanceLanes);

void couplingRow(const CouplingRule& rule, const double* a, const double* b, double* coupling,
                 std::size_t count) noexcept {
    HWY_DYNAMIC_DISPATCH(couplingLanes)(rule, a, b, coupling, count);
}

void diagonalRow(const CouplingRows& coupling, double* diagonal, std::size_t count) noexcept {
    HWY_DYNAMIC_DISPATCH(diagonalLanes)(coupling, diagonal, count);
}

double productRow(const CouplingRows& coupling, const NeighbourRows& v, double* product,
                  std::size_t count) noexcept {
    return HWY_DYNAMIC_DISPATCH(productLanes)(coupling, v, product, count);
}

ResidualSums startRow(const double* product, const double* diagonal, double* residual,
                      double* direction, std::size_t count) noexcept {
    return HWY_DYNAMIC_DISPATCH(startLanes)(product, diagonal, residual, direction, count);
}

ResidualSums residualRow(double length, const double* product, const double* diagonal,
                         double* residual, std::size_t count) noexcept {
    return HWY_DYNAMIC_DISPATCH(residualLanes)(length, product, diagonal, residual, count);
}

void advanceRow(double length, double turn, const double* residual, double* solution,
                double* direction, std::size_t count) noexcept {
    HWY_DYNAMIC_DISPATCH(advanceLanes)(length, turn, residual, solution, direction, count);
}

} // namespace vel
#endif
