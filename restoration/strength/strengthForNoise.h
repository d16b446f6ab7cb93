#pragma once

namespace restoration {

/// The strength that suits the noise of a plane, in levels of 255: 30000 / noise^2, limited to
/// 500..50000. With normal noise the weight of the data against the prior is the inverse of the
/// variance; the factor was measured (docs/default-strength.md). Pictures full of edges are
/// restored best with this strength, softer ones with less.
///
/// These numbers hold for the exponent 0.5 of the prior. `alpha` is the exponent in use, 0..1: the
/// prior weighs more with low exponents, and the strength is scaled to balance it.
float strengthForNoise(float noise, float alpha) noexcept;

} // namespace restoration
