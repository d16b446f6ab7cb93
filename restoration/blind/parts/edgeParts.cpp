#include "restoration/blind/parts/edgeParts.h"

#include "restoration/blind/parts/usablePart.h"
#include "restoration/blind/runs/KernelRun.h"
#include "restoration/blind/runs/LatentGradients.h"
#include "restoration/blind/runs/pyramid.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace restoration {
namespace {

/// The longer side of the reduced copy, at most.
constexpr int kReducedSide = 480;
constexpr float kLambda = 4e-3f;
/// The first part has at most so many times the edges of another.
constexpr std::uint32_t kLeastShare = 3;

/// Means of squares of `factor` by `factor` pixels.
Plane meansOfSquares(const Plane& plane, int factor, Team& team) {
    Plane means(plane.width() / factor, plane.height() / factor);
    team.forEach(static_cast<std::size_t>(means.height()), [&](std::size_t piece, int) {
        team.cancellation().check();
        const int row = static_cast<int>(piece);
        float* target = means.row(row);
        std::fill_n(target, means.width(), 0.0f);
        for (int y = row * factor; y < (row + 1) * factor; ++y) {
            const float* source = plane.row(y);
            for (int x = 0; x < means.width(); ++x) {
                for (int k = 0; k < factor; ++k) {
                    target[x] += kDisplayRange.usable(*source++);
                }
            }
        }
        const float area = static_cast<float>(factor) * static_cast<float>(factor);
        for (int x = 0; x < means.width(); ++x) {
            target[x] /= area;
        }
    });
    return means;
}

/// How many pixels of a picture lie on an edge, for any rectangle.
class EdgeCounts {
public:
    EdgeCounts(Plane picture, const Cancellation& cancellation)
        : m_width(picture.width()), m_height(picture.height()),
          m_sums(static_cast<std::size_t>(m_width + 1) * static_cast<std::size_t>(m_height + 1)) {
        SquareTransform transform(transformSide(std::max(m_width, m_height), 1), cancellation);
        LatentGradients gradients(transform, wrappedAround(picture, transform.side(), cancellation),
                                  m_width, m_height);
        SquareKernel identity(1);
        identity.at(0, 0) = 1.0;
        gradients.find(identity, kLambda);
        for (int y = 0; y < m_height; ++y) {
            std::uint32_t inRow = 0;
            for (int x = 0; x < m_width; ++x) {
                inRow += gradients.right().row(y)[x] != 0.0f || gradients.down().row(y)[x] != 0.0f
                             ? 1U
                             : 0U;
                m_sums[index(x + 1, y + 1)] = m_sums[index(x + 1, y)] + inRow;
            }
        }
    }

    std::uint32_t in(const Rect& rect) const {
        return m_sums[index(rect.right(), rect.bottom())] - m_sums[index(rect.x, rect.bottom())] -
               m_sums[index(rect.right(), rect.y)] + m_sums[index(rect.x, rect.y)];
    }

    int width() const { return m_width; }
    int height() const { return m_height; }

private:
    std::size_t index(int x, int y) const {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(m_width + 1) +
               static_cast<std::size_t>(x);
    }

    int m_width;
    int m_height;
    std::vector<std::uint32_t> m_sums;
};

/// Whether `rect` shares more than a quarter of its area with one of `others`.
bool overlaps(const Rect& rect, const std::vector<Rect>& others) {
    return std::ranges::any_of(others, [&](const Rect& other) {
        const Rect common = intersection(rect, other);
        return !common.isEmpty() && 4 * common.width * common.height > rect.width * rect.height;
    });
}

/// The window with the most edges that does not overlap `others`; empty where there is none.
Rect bestWindow(const EdgeCounts& counts, int width, int height, const std::vector<Rect>& others) {
    Rect best;
    std::uint32_t most = 0;
    for (int y = 0; y + height <= counts.height(); ++y) {
        for (int x = 0; x + width <= counts.width(); ++x) {
            const Rect window{x, y, width, height};
            const std::uint32_t edges = counts.in(window);
            if ((edges > most || best.isEmpty()) && !overlaps(window, others)) {
                most = edges;
                best = window;
            }
        }
    }
    return best;
}

std::vector<Rect> bestWindows(const EdgeCounts& counts, int width, int height, int count) {
    std::vector<Rect> windows{bestWindow(counts, width, height, {})};
    while (static_cast<int>(windows.size()) < count) {
        const Rect window = bestWindow(counts, width, height, windows);
        if (window.isEmpty() || kLeastShare * counts.in(window) < counts.in(windows.front())) {
            break;
        }
        windows.push_back(window);
    }
    return windows;
}

} // namespace

std::vector<Rect> edgeParts(const Plane& luminance, int width, int height, int count, Team& team) {
    const int longer = std::max(luminance.width(), luminance.height());
    const int factor = (longer + kReducedSide - 1) / kReducedSide;
    if (width == luminance.width() && height == luminance.height()) {
        return {{0, 0, width, height}};
    }
    Plane means = meansOfSquares(luminance, factor, team);
    std::vector<Rect> parts;
    team.run([&] {
        const EdgeCounts counts(std::move(means), team.cancellation());
        parts = bestWindows(counts, std::clamp(width / factor, 1, counts.width()),
                            std::clamp(height / factor, 1, counts.height()), count);
    });
    for (Rect& part : parts) {
        part = {std::min(part.x * factor, luminance.width() - width),
                std::min(part.y * factor, luminance.height() - height), width, height};
    }
    return parts;
}

} // namespace restoration
