#include "hosts/command/trial/trialSheet.h"

#include "hosts/command/sheet/Canvas.h"
#include "hosts/command/trial/TrialLayout.h"

#include <algorithm>

namespace velorn {
namespace {

constexpr Colour kBackground{38, 38, 40};
constexpr Colour kInk{225, 225, 225};
constexpr Colour kFaint{165, 165, 170};
constexpr Colour kAccent{255, 190, 70};

constexpr int kWords = TrialLayout::kWords;
constexpr int kRemark = TrialLayout::kRemark;

/// Writes the label of a tile into a column.
/// @param number of the tile; empty for the picture as it is
/// @return the top of what would follow
int writeLabel(Canvas& canvas, const std::string& number, const std::string& words,
               const std::string& remark, int left, int top, int width) {
    const int indent = number.empty() ? 0 : Canvas::textWidth(number + "  ", kWords);
    canvas.write(number, left, top, kWords, kAccent);
    int below = canvas.writeWrapped(words, left + indent, top, width - indent, kWords, kInk);
    if (!remark.empty()) {
        below = canvas.writeWrapped(remark, left + indent, below, width - indent, kRemark, kFaint);
    }
    return below;
}

/// The labels of a sheet: first that of the picture as it is.
class Labels {
public:
    Labels(const std::vector<TrialTile>& tiles, int width) : m_tiles(tiles), m_width(width) {}

    int write(Canvas& canvas, int cell, int left, int top) const {
        if (cell == 0) {
            return writeLabel(canvas, "", "as it is", "", left, top, m_width);
        }
        const TrialTile& tile = m_tiles[static_cast<std::size_t>(cell - 1)];
        return writeLabel(canvas, std::to_string(cell), tile.words, tile.remark, left, top,
                          m_width);
    }

    /// Of the highest label.
    int height() const {
        Canvas nowhere(1, 1, kBackground);
        int highest = 0;
        for (int cell = 0; cell <= static_cast<int>(m_tiles.size()); ++cell) {
            highest = std::max(highest, write(nowhere, cell, 0, 0));
        }
        return highest;
    }

private:
    const std::vector<TrialTile>& m_tiles;
    int m_width;
};

} // namespace

RgbPixels trialSheet(const RgbPixels& unrestored, const std::vector<TrialTile>& tiles,
                     const std::string& caption) {
    const Labels labels(tiles, TrialLayout::cellWidth(unrestored.width));
    const int count = static_cast<int>(tiles.size()) + 1;
    const TrialLayout layout(unrestored.width, unrestored.height, labels.height(), count);
    const int captionWidth = layout.sheetWidth() - 2 * TrialLayout::kMargin;
    Canvas nowhere(1, 1, kBackground);
    const int bottom =
        nowhere.writeWrapped(caption, 0, layout.footer(), captionWidth, kRemark, kFaint);
    Canvas canvas(layout.sheetWidth(), bottom + kRemark, kBackground);
    for (int cell = 0; cell < count; ++cell) {
        const RgbPixels& pixels =
            cell == 0 ? unrestored : tiles[static_cast<std::size_t>(cell - 1)].pixels;
        canvas.paste(pixels, layout.left(cell), layout.top(cell));
        labels.write(canvas, cell, layout.left(cell), layout.label(cell));
    }
    canvas.writeWrapped(caption, TrialLayout::kMargin, layout.footer(), captionWidth, kRemark,
                        kFaint);
    return canvas.pixels();
}

} // namespace velorn
