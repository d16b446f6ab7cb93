#pragma once

namespace restoration {

/// The blur that a kernel is, or resembles.
struct KernelKind {
    enum class Shape {
        None,     ///< a single pixel
        Gaussian, ///< `extent` is the standard deviation
        Disc,     ///< `extent` is the radius
        Motion,   ///< along a straight line; `extent` is the length
        Free      ///< none of these
    };

    Shape shape = Shape::Free;
    float extent = 0.0f; ///< in pixels
    /// Of motion: degrees counter-clockwise from the horizontal, above -90, at most 90.
    float angle = 0.0f;
};

/// `degrees` turned by multiples of 180 to above -90, at most 90.
float undirectedAngle(float degrees) noexcept;

} // namespace restoration
