#pragma once

#include "restoration/blind/squares/SquareKernel.h"
#include "restoration/planes/Plane.h"

#include <cstdint>
#include <vector>

/// Pictures with known blurs, made of whole numbers: the same on every system and in every
/// language.
namespace restoration {

/// A kernel of whole weights.
struct WholeKernel {
    int side = 0;
    std::vector<std::int64_t> weights;

    explicit WholeKernel(int s) : side(s), weights(static_cast<std::size_t>(s * s)) {}
    std::int64_t& at(int row, int column) {
        return weights[static_cast<std::size_t>(row * side + column)];
    }
    std::int64_t sum() const;
    SquareKernel scaled() const;
};

/// A point of a camera's path, in pixels, and the time spent there.
struct PathStop {
    int right;
    int down;
    int weight;
};

WholeKernel discOfRadius3();
WholeKernel pathKernel(int side, const std::vector<PathStop>& stops);
/// A straight line of 11 pixels, rising to the right by 22 degrees.
WholeKernel line11();
/// Down, and then to the right: neither symmetric nor equal to itself turned by 180 degrees.
WholeKernel hook();

/// Boxes, discs and tilted bars of random levels 0..255.
class DrawnScene {
public:
    DrawnScene(int width, int height, std::uint32_t seed);

    int width() const { return m_width; }
    int height() const { return m_height; }
    std::int64_t at(int row, int column) const {
        return m_levels[static_cast<std::size_t>(row * m_width + column)];
    }
    Plane plane() const;

private:
    int m_width;
    int m_height;
    std::vector<std::int64_t> m_levels;
};

/// The scene blurred by `kernel`, without the rim that the kernel needs, rounded to levels, with
/// noise of -`noise`..`noise` levels; 1.0 = 255.
Plane blurredPicture(const DrawnScene& scene, const WholeKernel& kernel, std::uint32_t noise,
                     std::uint32_t seed);

} // namespace restoration
