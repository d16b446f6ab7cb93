#pragma once

#include "restoration/clipping/PictureClipping.h"
#include "restoration/light/ToneCurves.h"
#include "restoration/pictures/PictureReader.h"
#include "restoration/tiles/Tile.h"

namespace restoration {

/// What the planes of a tile hold.
enum class PlaneLayout {
    LuminanceChroma, ///< three planes from red, green and blue
    Channels         ///< a plane for each colour channel
};

/// How pixels become tiles.
struct LoadRules {
    PlaneLayout layout = PlaneLayout::Channels;
    /// Pixels beyond the picture repeat its border. Unknown: they are a first estimate. Otherwise
    /// they count as known.
    bool isBeyondUnknown = true;
    /// The curves to undo; null: planes hold the values that the picture stores. Outlive the
    /// loader.
    const ToneCurves* light = nullptr;
    /// Finds clipped pixels, which are unknown; null: all pixels of the picture are known. Outlives
    /// the loader.
    const PictureClipping* clipping = nullptr;
};

/// Loads tiles of a picture. Const functions may run on any number of threads.
class TileLoader {
public:
    /// @param side  columns and rows of the tiles
    TileLoader(const PictureReader& picture, int side, const LoadRules& rules)
        : m_picture(picture), m_side(side), m_rules(rules) {}

    const PictureReader& picture() const noexcept { return m_picture; }
    int side() const noexcept { return m_side; }
    const LoadRules& rules() const noexcept { return m_rules; }

    /// Loads the window, which holds at least one pixel of the picture and fits the tile, and joins
    /// its edges in the ring. Reuses the memory of `tile`.
    /// @throws std::bad_alloc
    void load(const Rect& window, Tile& tile) const;

private:
    void allocate(Tile& tile) const;
    void readRow(int y, const Rect& inside, Tile& tile) const;
    void finishRow(int y, const Rect& inside, Tile& tile) const;
    void markKnownPixels(const Rect& inside, Tile& tile) const;

    PictureReader m_picture;
    int m_side;
    LoadRules m_rules;
};

} // namespace restoration
