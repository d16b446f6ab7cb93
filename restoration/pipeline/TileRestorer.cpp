#include "restoration/pipeline/TileRestorer.h"

#include "restoration/chroma/restoreChroma.h"
#include "restoration/clipping/fillHollows.h"
#include "restoration/deconvolution/deconvolveHyperLaplacian.h"
#include "restoration/deconvolution/estimateUnknown.h"
#include "restoration/deconvolution/taperEdges.h"
#include "restoration/planes/luminanceChroma.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

namespace restoration {
namespace {

EdgeSettings edgeSettings(const VelornRestoreSettings& settings) noexcept {
    return {settings.edgeRadius, settings.edgeSlope, settings.edgeGain, settings.edgeFloor};
}

/// Gives `plane` the side of the tiles on first use.
void allocate(Plane& plane, int side) {
    if (plane.isEmpty()) {
        plane = Plane(side, side);
    }
}

} // namespace

TileRestorer::TileRestorer(const RestorationPlan& plan, const Cancellation& cancellation,
                           ProgressMeter& progress)
    : m_plan(plan), m_cancellation(cancellation), m_progress(progress),
      m_scratch(plan.loader.side()), m_limiter(plan.choices.limit, plan.blur.largestSide()),
      m_sharpener(edgeSettings(plan.settings)),
      m_detail({plan.settings.detailGain, plan.settings.detailGamma}) {}

FinishedTile TileRestorer::restore(const PlannedTile& planned, const Rect& region) {
    m_plan.loader.load(planned.window(), m_tile);
    m_cancellation.check();
    if (!m_plan.isDeconvolved()) {
        m_progress.advance(m_tile.planes.size());
    } else {
        if (m_plan.blur.grid() != nullptr) {
            m_local = m_plan.localModel(planned);
        }
        if (model().blurs.empty()) {
            m_progress.advance(m_tile.planes.size());
        } else {
            deconvolve();
            fillLamps();
        }
        toDisplay();
    }
    sharpen();
    FinishedTile finished = cut(planned, intersection(planned.kept(), region));
    m_progress.advance();
    return finished;
}

void TileRestorer::deconvolve() {
    allocate(m_restored, m_tile.side);
    for (std::size_t i = 0; i < m_tile.planes.size(); ++i) {
        deconvolvePlane(i);
        m_progress.advance();
    }
}

/// Replaces plane `i` by its restoration.
void TileRestorer::deconvolvePlane(std::size_t i) {
    const BlurSpectrum& blur = model().blurs[model().blurs.size() > 1 ? i : 0];
    const Choices& choices = m_plan.choices;
    Plane& plane = m_tile.planes[i];
    if (m_tile.isIncomplete) {
        estimateUnknown(plane, m_tile.known, blur, m_scratch, m_cancellation);
        if (m_tile.hidesLight) {
            estimateClipped(plane, m_tile.known, blur, m_scratch, m_cancellation);
        }
    } else {
        taperEdges(plane, m_tile.window.width, m_tile.window.height, blur, m_scratch,
                   m_cancellation);
    }
    if (isChroma(i)) {
        restoreChroma(plane, blur, choices.chroma[i - 1], m_restored, m_scratch, m_cancellation);
        improve(i, blur);
        std::swap(plane, m_restored);
        return;
    }
    deconvolveHyperLaplacian(plane, m_tile.isIncomplete ? &m_tile.known : nullptr, blur,
                             {choices.strength, choices.alpha}, m_restored, m_scratch,
                             m_cancellation);
    improve(i, blur);
    if (m_limiter.isOn()) {
        m_cancellation.check();
        allocate(m_limited, m_tile.side);
        m_limiter.limit(plane, m_restored, m_limited);
        std::swap(plane, m_limited);
    } else {
        std::swap(plane, m_restored);
    }
}

/// Runs the second pass of plane `i`, if there is one, on its restoration.
void TileRestorer::improve(std::size_t i, const BlurSpectrum& blur) {
    if (i < model().secondPasses.size()) {
        model().secondPasses[i].improve(m_tile.planes[i], blur, m_restored, m_scratch, m_filter,
                                        m_cancellation);
    }
}

/// Fills the dark centres of lamps, colour by colour.
void TileRestorer::fillLamps() {
    if (!m_tile.hidesLight) {
        return;
    }
    const PictureReader& picture = m_plan.loader.picture();
    const Rect inside = intersection(m_tile.window, {0, 0, picture.width(), picture.height()});
    const Rect part{inside.x - m_tile.window.x, inside.y - m_tile.window.y, inside.width,
                    inside.height};
    const bool hasChroma = m_plan.loader.rules().layout == PlaneLayout::LuminanceChroma;
    std::vector<Plane>& planes = m_tile.planes;
    if (hasChroma) {
        fromLuminanceChroma(planes[0].values(), planes[1].values(), planes[2].values());
    }
    for (std::size_t i = 0; i < planes.size(); ++i) {
        markDark(static_cast<int>(i), inside);
        fillHollows(planes[i], m_dark, part, m_restored, m_cancellation);
    }
    if (hasChroma) {
        toLuminanceChroma(planes[0].values(), planes[1].values(), planes[2].values());
    }
}

/// Marks all pixels but the unknown ones where a channel is nearly white as dark: small dark
/// features before a clipped background are unknown, too, and must not be filled.
void TileRestorer::markDark(int channel, const Rect& inside) {
    constexpr float kNearlyWhite = 0.95f;
    const float least = kNearlyWhite * m_plan.loader.rules().clipping->white();
    m_dark = Mask(m_tile.side, m_tile.side);
    std::vector<float> stored(static_cast<std::size_t>(inside.width));
    for (int y = inside.y; y < inside.bottom(); ++y) {
        m_cancellation.check();
        m_plan.loader.picture().readChannel(channel, y, inside.x, inside.width, stored.data());
        const int first = inside.x - m_tile.window.x;
        const std::uint8_t* known = m_tile.known.row(y - m_tile.window.y) + first;
        std::uint8_t* dark = m_dark.row(y - m_tile.window.y) + first;
        for (std::size_t x = 0; x < stored.size(); ++x) {
            dark[x] = known[x] != 0 || stored[x] < least ? 1 : 0;
        }
    }
}

/// Turns light into the values that the result stores.
void TileRestorer::toDisplay() {
    const ToneCurves* light = m_plan.loader.rules().light;
    if (light == nullptr) {
        return;
    }
    const auto columns = static_cast<std::size_t>(m_tile.window.width);
    for (int y = 0; y < m_tile.window.height; ++y) {
        m_cancellation.check();
        std::array<std::span<float>, 4> rows;
        for (std::size_t i = 0; i < m_tile.planes.size(); ++i) {
            rows[i] = {m_tile.planes[i].row(y), columns};
        }
        if (m_plan.loader.rules().layout == PlaneLayout::LuminanceChroma) {
            fromLuminanceChroma(rows[0], rows[1], rows[2]);
        }
        for (std::size_t i = 0; i < m_tile.planes.size(); ++i) {
            light->of(i).toDisplay(rows[i]);
        }
        if (m_plan.loader.rules().layout == PlaneLayout::LuminanceChroma) {
            toLuminanceChroma(rows[0], rows[1], rows[2]);
        }
    }
}

/// Sharpens edges and enhances detail of all planes but chroma.
void TileRestorer::sharpen() {
    const VelornRestoreSettings& settings = m_plan.settings;
    const bool sharpensEdges = edgeSettings(settings).isOn();
    const bool enhancesDetail = DetailSettings{settings.detailGain, settings.detailGamma}.isOn();
    for (std::size_t i = 0; i < m_tile.planes.size() && !isChroma(i); ++i) {
        Plane& plane = m_tile.planes[i];
        if (sharpensEdges) {
            m_cancellation.check();
            allocate(m_restored, m_tile.side);
            m_sharpener.sharpen(plane, m_restored);
            std::swap(plane, m_restored);
        }
        if (enhancesDetail) {
            m_cancellation.check();
            m_detail.enhance(plane, m_cancellation);
        }
    }
}

const TileModel& TileRestorer::model() const noexcept {
    return m_plan.blur.grid() != nullptr ? m_local : m_plan.model;
}

bool TileRestorer::isChroma(std::size_t i) const noexcept {
    return i > 0 && m_plan.loader.rules().layout == PlaneLayout::LuminanceChroma;
}

/// Draws the colours of `part` towards the picture where the kernel deserves little trust.
void TileRestorer::mixWithPicture(std::vector<Plane>& colours, const Rect& part) const {
    const float share = model().share;
    if (share >= 1.0f) {
        return;
    }
    std::vector<float> stored(static_cast<std::size_t>(part.width));
    for (std::size_t i = 0; i < colours.size(); ++i) {
        for (int y = 0; y < part.height; ++y) {
            m_plan.loader.picture().readChannel(static_cast<int>(i), part.y + y, part.x, part.width,
                                                stored.data());
            float* row = colours[i].row(y);
            for (std::size_t x = 0; x < stored.size(); ++x) {
                row[x] = share * row[x] + (1.0f - share) * stored[x];
            }
        }
    }
}

/// The colours of `part`, from the planes of the tile.
FinishedTile TileRestorer::cut(const PlannedTile& planned, const Rect& part) const {
    FinishedTile finished{planned, part, {}};
    for (const Plane& plane : m_tile.planes) {
        Plane& colour = finished.colours.emplace_back(part.width, part.height);
        for (int y = 0; y < part.height; ++y) {
            const float* row = plane.row(part.y - m_tile.window.y + y) + part.x - m_tile.window.x;
            std::copy_n(row, part.width, colour.row(y));
        }
    }
    if (m_plan.loader.rules().layout == PlaneLayout::LuminanceChroma) {
        fromLuminanceChroma(finished.colours[0].values(), finished.colours[1].values(),
                            finished.colours[2].values());
    }
    mixWithPicture(finished.colours, part);
    finished.clippedPixels = clippedPixels(planned, part);
    return finished;
}

/// The clipped pixels of `part`, those in cross-fades with their weights.
double TileRestorer::clippedPixels(const PlannedTile& planned, const Rect& part) const {
    double sum = 0.0;
    for (int y = part.y; m_tile.hidesLight && y < part.bottom(); ++y) {
        const std::uint8_t* known = m_tile.known.row(y - m_tile.window.y) - m_tile.window.x;
        double row = 0.0;
        for (int x = part.x; x < part.right(); ++x) {
            row += known[x] == 0 ? static_cast<double>(axisWeight(planned.columns, x)) : 0.0;
        }
        sum += row * static_cast<double>(axisWeight(planned.rows, y));
    }
    return sum;
}

} // namespace restoration
