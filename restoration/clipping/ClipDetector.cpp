#include "restoration/clipping/ClipDetector.h"

#include <algorithm>
#include <cstddef>

namespace restoration {
namespace {

constexpr int kGrowth = 2;
constexpr int kLargestSquaredGrowth = 5;

/// Marks a pixel and the ones around it.
void markAround(Mask& known, const Rect& part, int x, int y) {
    for (int dy = -kGrowth; dy <= kGrowth; ++dy) {
        for (int dx = -kGrowth; dx <= kGrowth; ++dx) {
            const bool isNear = dx * dx + dy * dy <= kLargestSquaredGrowth;
            const int column = x + dx;
            const int row = y + dy;
            if (isNear && part.x <= column && column < part.right() && part.y <= row &&
                row < part.bottom()) {
                known.row(row)[column] = 0;
            }
        }
    }
}

} // namespace

ClipDetector::ClipDetector(const Kernel& kernel, const ClipLevel& level)
    : m_level(level),
      m_white(kernel, (level.white - level.least + 2.0f * level.noise) / level.white),
      m_margin(4.0f * level.noise + 0.02f * level.white), m_reach(kernel.largerSide() / 2) {}

/// A neighbour is darker than white light allows.
bool ClipDetector::hidesLight(const Plane& channel, const Rect& part, int x, int y) const noexcept {
    for (const WhiteNeighbours::Neighbour& neighbour : m_white.neighbours()) {
        const int column = std::clamp(x + neighbour.x, part.x, part.right() - 1);
        const int row = std::clamp(y + neighbour.y, part.y, part.bottom() - 1);
        if (channel.row(row)[column] < m_level.white * neighbour.least - m_margin) {
            return true;
        }
    }
    return false;
}

/// The pixels that hide light, as offsets in `part`, in the order of their distance from a darker
/// neighbour.
std::vector<std::uint32_t> ClipDetector::brightPixels(const Plane& channel,
                                                      const Rect& part) const {
    const auto columns = static_cast<std::uint32_t>(part.width);
    std::vector<std::uint32_t> found;
    for (int y = 0; y < part.height; ++y) {
        const float* row = channel.row(part.y + y) + part.x;
        for (int x = 0; x < part.width; ++x) {
            if (isClipped(row[x]) && hidesLight(channel, part, part.x + x, part.y + y)) {
                found.push_back(static_cast<std::uint32_t>(y) * columns +
                                static_cast<std::uint32_t>(x));
            }
        }
    }
    if (found.empty()) {
        return found;
    }

    std::vector<std::uint8_t> isFound(static_cast<std::size_t>(part.width) *
                                      static_cast<std::size_t>(part.height));
    for (const std::uint32_t at : found) {
        isFound[at] = 1;
    }
    std::size_t begin = 0;
    for (int step = 0; step < m_reach && begin < found.size(); ++step) {
        const std::size_t end = found.size();
        for (; begin < end; ++begin) {
            const int x = static_cast<int>(found[begin] % columns);
            const int y = static_cast<int>(found[begin] / columns);
            for (int row = std::max(y - 1, 0); row <= std::min(y + 1, part.height - 1); ++row) {
                const float* values = channel.row(part.y + row) + part.x;
                for (int column = std::max(x - 1, 0); column <= std::min(x + 1, part.width - 1);
                     ++column) {
                    const std::uint32_t at = static_cast<std::uint32_t>(row) * columns +
                                             static_cast<std::uint32_t>(column);
                    if (isFound[at] == 0 && isClipped(values[column])) {
                        isFound[at] = 1;
                        found.push_back(at);
                    }
                }
            }
        }
    }
    return found;
}

std::size_t ClipDetector::mark(const Plane& channel, const Rect& part, Mask& known) const {
    const std::vector<std::uint32_t> found = brightPixels(channel, part);
    const auto columns = static_cast<std::uint32_t>(part.width);
    for (const std::uint32_t at : found) {
        markAround(known, part, part.x + static_cast<int>(at % columns),
                   part.y + static_cast<int>(at / columns));
    }
    return found.size();
}

} // namespace restoration
