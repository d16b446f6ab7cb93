#pragma once

#include "restoration/deconvolution/TileScratch.h"
#include "restoration/finishing/DetailEnhancer.h"
#include "restoration/finishing/EdgeSharpener.h"
#include "restoration/finishing/OvershootLimiter.h"
#include "restoration/pipeline/RestorationPlan.h"
#include "restoration/secondpass/DctFilter.h"
#include "restoration/threads/Cancellation.h"
#include "restoration/threads/ProgressMeter.h"
#include "restoration/tiles/TileMerger.h"

namespace restoration {

/// Restores tiles from pixels to their parts of the result. One object for each thread: it keeps
/// its scratch from tile to tile.
class TileRestorer {
public:
    /// Units of progress that a tile takes: one for each plane and one for the rest.
    static std::size_t unitsOfTile(const RestorationPlan& plan) noexcept {
        return static_cast<std::size_t>(plan.loader.picture().colours()) + 1;
    }

    TileRestorer(const RestorationPlan& plan, const Cancellation& cancellation,
                 ProgressMeter& progress);

    /// The part of the tile that lies in `region`.
    /// @throws Failure VELORN_STATUS_CANCELLED, std::bad_alloc
    FinishedTile restore(const PlannedTile& planned, const Rect& region);

private:
    void deconvolve();
    void deconvolvePlane(std::size_t i);
    void improve(std::size_t i, const BlurSpectrum& blur);
    void fillLamps();
    void markDark(int channel, const Rect& inside);
    void toDisplay();
    void sharpen();
    const TileModel& model() const noexcept;
    bool isChroma(std::size_t i) const noexcept;
    void mixWithPicture(std::vector<Plane>& colours, const Rect& part) const;
    FinishedTile cut(const PlannedTile& planned, const Rect& part) const;
    double clippedPixels(const PlannedTile& planned, const Rect& part) const;

    const RestorationPlan& m_plan;
    const Cancellation& m_cancellation;
    ProgressMeter& m_progress;
    Tile m_tile;
    TileModel m_local; ///< of the tile in work, where the blur differs from place to place
    TileScratch m_scratch;
    DctFilter m_filter;
    Plane m_restored; ///< what a stage makes of a plane
    Plane m_limited;
    Mask m_dark; ///< 0 at unknown pixels where a channel is nearly white
    OvershootLimiter m_limiter;
    EdgeSharpener m_sharpener;
    DetailEnhancer m_detail;
};

} // namespace restoration
