#pragma once

namespace vel {

/// old * (1 - weight) + fresh * weight in double precision, for a weight within 0..1.
///
/// Where both values are the same 8-bit or 16-bit level the result is that level, which sums of
/// singles do not guarantee.
inline double blendInDouble(double old, double fresh, float weight) noexcept {
    const auto share = static_cast<double>(weight);
    return old * (1.0 - share) + fresh * share;
}

/// The same sum, rounded to single precision once: the blend of float planes.
inline float blend(double old, double fresh, float weight) noexcept {
    return static_cast<float>(blendInDouble(old, fresh, weight));
}

} // namespace vel
