#pragma once

#include <cstdint>

/// Status codes of the primitive operations and the codes of their arguments.
///
/// Every primitive checks its pointers, then its sizes, then its steps. It returns the status of
/// the first check that fails and writes nothing then. Primitives are re-entrant. They neither
/// throw nor allocate unless their docstring says so.
namespace vel {

using Status = std::int32_t;

inline constexpr Status kOk = 0;
inline constexpr Status kDivisionByZero = 6; ///< a warning: the result holds NaN or infinities
inline constexpr Status kBadSize = -6;       ///< a width, height or length below 1
inline constexpr Status kNullPointer = -8;
inline constexpr Status kOutOfMemory = -9;
inline constexpr Status kBadStep = -14; ///< below 1, or below the row length where that is checked
inline constexpr Status kBadFftOrder = -15;   ///< outside 0..30
inline constexpr Status kBadFftSpec = -17;    ///< the magic number of an FftSpec is wrong
inline constexpr Status kBadMask = -33;       ///< an unknown mask, comparison or interpolation code
inline constexpr Status kBadBorderStep = -37; ///< a step too small for the border that is read
inline constexpr Status kDivisorZero = -51;
inline constexpr Status kTooFewLutLevels = -106;
inline constexpr Status kTooFewHistogramLevels = -107;
inline constexpr Status kBadMatrixStride = -182; ///< not a multiple of 4, or below 1
inline constexpr Status kBadMatrixSize = -204;

/// Neighbourhoods, named by their width and height.
enum Mask : std::int32_t {
    kMask13 = 13,
    kMask15 = 15,
    kMask31 = 31,
    kMask33 = 33,
    kMask51 = 51,
    kMask55 = 55
};

enum Comparison : std::int32_t {
    kLess = 0,
    kLessOrEqual = 1,
    kEqual = 2,
    kGreaterOrEqual = 3,
    kGreater = 4
};

/// Float to integer.
enum Rounding : std::int32_t { kTowardZero = 0, kToNearestEven = 1 };

} // namespace vel
