#pragma once

namespace vel {

/// old * (1 - weight) + fresh * weight: the blend of the tile pipeline, for a weight within 0..1.
///
/// Weights and products are doubles and the sum is rounded to single precision once. Where both
/// values are the same 8-bit or 16-bit level the result is that level, which sums of singles would
/// not grant.
inline float blend(double old, double fresh, float weight) noexcept {
    const auto share = static_cast<double>(weight);
    return static_cast<float>(old * (1.0 - share) + fresh * share);
}

} // namespace vel
