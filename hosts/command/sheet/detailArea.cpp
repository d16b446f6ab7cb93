#include "hosts/command/sheet/detailArea.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

namespace velorn {
namespace {

/// Changes are summed in squares of this side, and areas begin at squares.
constexpr int kSquare = 16;
/// Of 255 levels.
constexpr int kNoise = 6;

/// The changes in the squares of an area, row by row.
struct Changes {
    int columns = 0;
    int rows = 0;
    std::vector<std::uint64_t> sums;

    std::uint64_t& at(int column, int row) {
        return sums[static_cast<std::size_t>(row) * static_cast<std::size_t>(columns) +
                    static_cast<std::size_t>(column)];
    }
    std::uint64_t at(int column, int row) const {
        return const_cast<Changes&>(*this).at(column, row);
    }
};

Changes changesIn(const ImageFile& picture, const PictureArea& area, const Interrupt& interrupt) {
    Changes changes{
        (area.width + kSquare - 1) / kSquare, (area.height + kSquare - 1) / kSquare, {}};
    changes.sums.resize(static_cast<std::size_t>(changes.columns) *
                        static_cast<std::size_t>(changes.rows));
    // Green of colours.
    const int offset = picture.isGrey() ? 0 : 1;
    std::visit(
        [&]<class T>(const std::vector<T>& samples) {
            const auto at = [&](int x, int y) {
                const T sample = samples[(static_cast<std::size_t>(y) *
                                              static_cast<std::size_t>(picture.width()) +
                                          static_cast<std::size_t>(x)) *
                                             static_cast<std::size_t>(picture.channels()) +
                                         static_cast<std::size_t>(offset)];
                return static_cast<int>(sizeof(T) == 1 ? sample : sample / 257);
            };
            for (int y = 0; y + 1 < area.height; ++y) {
                interrupt.check();
                for (int x = 0; x + 1 < area.width; ++x) {
                    const int here = at(area.x + x, area.y + y);
                    const int change = std::abs(at(area.x + x + 1, area.y + y) - here) +
                                       std::abs(at(area.x + x, area.y + y + 1) - here) - kNoise;
                    changes.at(x / kSquare, y / kSquare) +=
                        static_cast<std::uint64_t>(std::max(change, 0));
                }
            }
        },
        picture.samples());
    return changes;
}

std::uint64_t sumOf(const Changes& changes, int column, int row, int columns, int rows) {
    std::uint64_t sum = 0;
    for (int r = row; r < row + rows; ++r) {
        for (int c = column; c < column + columns; ++c) {
            sum += changes.at(c, r);
        }
    }
    return sum;
}

} // namespace

PictureArea detailArea(const ImageFile& picture, const PictureArea& within, int width, int height,
                       const Interrupt& interrupt) {
    PictureArea best{within.x, within.y, std::min(width, within.width),
                     std::min(height, within.height)};
    const Changes changes = changesIn(picture, within, interrupt);
    const int columns = std::max(best.width / kSquare, 1);
    const int rows = std::max(best.height / kSquare, 1);
    std::uint64_t most = 0;
    for (int row = 0; row * kSquare <= within.height - best.height; ++row) {
        interrupt.check();
        for (int column = 0; column * kSquare <= within.width - best.width; ++column) {
            const std::uint64_t sum = sumOf(changes, column, row, columns, rows);
            if (sum > most) {
                most = sum;
                best.x = within.x + column * kSquare;
                best.y = within.y + row * kSquare;
            }
        }
    }
    return best;
}

} // namespace velorn
