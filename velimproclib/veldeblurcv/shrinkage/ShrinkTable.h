#pragma once

#include <array>
#include <cstddef>

/// The shrink function of the hyper-Laplacian prior,
///
///     w(v) = argmin over w of |w|^alpha + (beta / 2) (w - v)^2.
///
/// It is odd in v, 0 around 0 and jumps at the threshold. At alpha = 0 it is the hard threshold; at
/// alpha = 1 it is the soft threshold and has no jump. Two tables hold it: the stored table,
/// polylines for eleven alphas and six betas, and the built table, a fine grid for any alpha, which
/// defines the function that the stored table approximates (BuiltShrinkTable.h).
namespace vel {

/// Levels of the tables: level i belongs to beta = (2 sqrt 2)^i.
inline constexpr int kShrinkLevels = 6;
inline constexpr int kShrinkAlphas = 11;
inline constexpr int kShrinkRows = 2 * kShrinkLevels * kShrinkAlphas;
inline constexpr int kShrinkColumns = 23;

/// The stored table. Row 22 i + 2 a and the next row belong to level i and alpha = a / 10. The
/// first holds the abscissas, increasing from -10 to 10, followed by alpha; the second holds as
/// many ordinates, followed by their count. The rest of a row is 0. tools/makeShrinkTable.cpp
/// writes the table and explains the method.
///
/// Away from the jump a polyline is within 0.065 of the exact function at level 0 and within 0.0135
/// at level 4; most are far closer. On the negative side the error bound of a segment is
/// proportional to the gradient at its begin, which makes the table most accurate for small
/// gradients next to the threshold; on the positive side all segments have the same bound. The rows
/// of alpha = 0.5 are fixed values that do not follow these rules.
extern const float kStoredShrinkTable[kShrinkRows][kShrinkColumns];

/// trunc(10 alpha) for alpha in 0..1, computed from the double that holds the float: 0.7f lies
/// below 0.7 and has index 6. The result is clamped to 0..10; a NaN has index 0.
int shrinkAlphaIndex(double alpha) noexcept;

/// Knots of the stored rows of `alphaIndex`, 0..10.
constexpr int shrinkKnots(int alphaIndex) noexcept {
    constexpr std::array<int, kShrinkAlphas> kKnots = {6, 6, 8, 8, 10, 12, 14, 16, 18, 22, 6};
    return kKnots[static_cast<std::size_t>(alphaIndex)];
}

/// The level i of `beta` = `rate`^i, clamped to 0..5.
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
