#pragma once

/// The shrink function of the hyper-Laplacian prior,
///
///     w(v) = argmin over w of |w|^alpha + (beta / 2) (w - v)^2,
///
/// odd in v, 0 around 0, with a jump at the threshold (none at alpha = 1, the soft threshold; at
/// alpha = 0 it is the hard threshold). It is tabulated in two ways: the stored table, polylines
/// for eleven alphas and six betas, and the built table, a fine grid for any alpha, which defines
/// what the stored one approximates (BuiltShrinkTable.h).
namespace vel {

/// Levels of the tables: level i belongs to beta = (2 sqrt 2)^i.
inline constexpr int kShrinkLevels = 6;
inline constexpr int kShrinkAlphas = 11;
inline constexpr int kShrinkRows = 2 * kShrinkLevels * kShrinkAlphas;
inline constexpr int kShrinkColumns = 23;

/// The stored table. Rows 22 i + 2 a and the next one belong to level i and alpha = a / 10: first
/// the abscissas, increasing from -10 to 10, followed by alpha; then as many ordinates, followed by
/// their count. The rest of a row is 0. Written by tools/makeShrinkTable.cpp, where the method is.
///
/// Away from the jump a polyline is within 0.065 of the exact function at level 0 and within
/// 0.0135 at level 4; most are far closer. On the negative side the bound of a segment is
/// proportional to the gradient at which it begins, so that small gradients next to the threshold
/// are met most closely; on the positive side all segments have the same bound. The rows of alpha =
/// 0.5 are given values, not laid by these rules.
extern const float kStoredShrinkTable[kShrinkRows][kShrinkColumns];

/// trunc(10 alpha) for alpha in 0..1, taken from the double that holds the float: 0.7f lies below
/// 0.7 and has index 6. Not-a-number has index 0; everything is held to 0..10.
int shrinkAlphaIndex(double alpha) noexcept;

/// Knots of the stored rows of `alphaIndex`, 0..10.
int shrinkKnots(int alphaIndex) noexcept;

/// The level of `beta` = `rate`^i, held to 0..5.
int shrinkLevel(double beta, double rate) noexcept;

/// One polyline of the stored table.
struct StoredShrink {
    const float* levels;
    const float* values;
    int knots;
};

/// The polyline of `level`, 0..5, and `alphaIndex`, 0..10.
StoredShrink storedShrink(int level, int alphaIndex) noexcept;

} // namespace vel
