#include "restoration/pipeline/restorePicture.h"

#include "restoration/pictures/PictureBuffer.h"
#include "restoration/pipeline/chooseSettings.h"
#include "restoration/pipeline/PictureBlur.h"
#include "restoration/pipeline/PictureModel.h"
#include "restoration/pipeline/pictureNoise.h"
#include "restoration/pipeline/planGrid.h"
#include "restoration/pipeline/TileRestorer.h"
#include "restoration/threads/InOrder.h"
#include "restoration/threads/Team.h"
#include "restoration/tiles/TileMerger.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace restoration {
namespace {

/// Pieces of work that half of the analysis is expected to take.
constexpr std::size_t kAnalysisPieces = 40;

/// The share of a call that the analysis takes: about as long as four megapixels of tiles where it
/// searches for a strength.
double analysisShare(bool searchesStrength, std::size_t tiles, int side) noexcept {
    constexpr double kSearch = 4e6;
    constexpr double kMeasurements = 2e5;
    const double analysis = searchesStrength ? kSearch : kMeasurements;
    return analysis / (analysis + static_cast<double>(tiles) * side * side);
}

class Stopwatch {
public:
    double seconds() const {
        const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - m_start;
        return passed.count();
    }

private:
    std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
};

/// Luminance and chroma need one kernel for all colours.
PlaneLayout layoutFor(const PictureReader& picture, std::size_t kernels) noexcept {
    return picture.colours() == 3 && kernels < 2 ? PlaneLayout::LuminanceChroma
                                                 : PlaneLayout::Channels;
}

Rect rectOf(const VelornRegion& region) noexcept {
    return {region.x, region.y, region.width, region.height};
}

/// Restores tiles and merges them into `result`.
/// @return the number of clipped pixels
double restoreTiles(const RestorationPlan& plan, const std::vector<PlannedTile>& tiles,
                    const Rect& region, const VelornPicture& result, Team& team) {
    double clipped = 0.0;
    TileMerger merger(plan.loader.picture(), PictureWriter(result), region);
    const std::size_t workers = std::min(tiles.size(), static_cast<std::size_t>(team.threads()));
    InOrder<FinishedTile> inOrder(
        workers,
        [&](std::size_t, FinishedTile& tile) {
            merger.merge(tile);
            clipped += tile.clippedPixels;
        },
        team.cancellation());
    // The analysis may have started more workers than there are tiles.
    std::vector<std::unique_ptr<TileRestorer>> restorers(static_cast<std::size_t>(team.threads()));
    team.progress().beginPhase(1.0, tiles.size() * TileRestorer::unitsOfTile(plan));
    team.forEach(tiles.size(), [&](std::size_t piece, int worker) {
        std::unique_ptr<TileRestorer>& restorer = restorers[static_cast<std::size_t>(worker)];
        if (!restorer) {
            restorer = std::make_unique<TileRestorer>(plan, team.cancellation(), team.progress());
        }
        inOrder.put(piece, restorer->restore(tiles[piece], region));
    });
    merger.finish();
    return clipped;
}

VelornRestoreReport reportOf(const Choices& choices, bool isDeconvolved, PlaneLayout layout) {
    VelornRestoreReport report{};
    report.size = sizeof report;
    if (isDeconvolved) {
        report.strength = choices.strength;
        report.alpha = choices.alpha;
        report.limit = choices.limit;
        report.chromaStrength =
            layout == PlaneLayout::LuminanceChroma ? 1.0f / choices.chroma[0].weight : 0.0f;
    }
    return report;
}

TileGrid gridFor(const VelornPicture& source, const PictureBlur& blur) {
    if (const KernelGrid* grid = blur.grid()) {
        return planLocalGrid(
            source.width, source.height, blur.largestSide(),
            std::min(source.width / grid->columns(), source.height / grid->rows()));
    }
    return planGrid(source.width, source.height, blur.largestSide());
}

VelornRestoreReport restored(const VelornPicture& source, const VelornPicture& target,
                             const PictureBlur& blur, const VelornRestoreSettings& settings) {
    const Stopwatch total;
    const PictureReader picture(source);
    const std::span<const Kernel* const> kernels = blur.kernels();
    const TileGrid grid = gridFor(source, blur);
    const Rect region = rectOf(settings.region);
    const std::vector<PlannedTile> tiles = grid.touching(region);

    Team team(settings.threads, {settings.progress, settings.userData});
    const bool searchesStrength = !kernels.empty() && settings.strength < 0.0f;
    team.progress().beginOpenPhase(analysisShare(searchesStrength, tiles.size(), grid.side()),
                                   kAnalysisPieces);
    const NoiseLevels noise = pictureNoise(picture, settings, team);
    const PictureModel model(picture, kernels, settings, noise, team);
    const LoadRules rules{layoutFor(picture, kernels.size()), settings.continueFrame != 0,
                          model.light(), model.clipping()};
    const Choices choices = chooseSettings(picture, rules, kernels, model.noise(), settings, team);
    VelornRestoreReport report = reportOf(choices, !kernels.empty(), rules.layout);
    report.noise = noise.luminance;
    report.light = model.light() != nullptr ? VELORN_LIGHT_LINEAR : VELORN_LIGHT_DISPLAY;
    report.secondsAnalysis = total.seconds();

    const Stopwatch restoring;
    const TileLoader loader(picture, grid.side(), rules);
    std::optional<RestorationPlan> plan;
    std::optional<PictureBuffer> result;
    // Large kernels and pictures take their time here, too: the host hears from the call meanwhile.
    team.run([&] {
        plan.emplace(loader, blur, choices, settings);
        result.emplace(target);
    });
    const double clipped = restoreTiles(*plan, tiles, region, result->picture(), team);
    team.finish();
    result->copyTo(target);
    report.clippedShare = clipped / (static_cast<double>(region.width) * region.height);
    report.tiles = static_cast<std::int32_t>(tiles.size());
    report.secondsTiles = restoring.seconds();
    report.secondsTotal = total.seconds();
    return report;
}

} // namespace

VelornRestoreReport restorePicture(const VelornPicture& source, const VelornPicture& target,
                                   std::span<const Kernel* const> kernels,
                                   const VelornRestoreSettings& settings) {
    return restored(source, target, PictureBlur(kernels), settings);
}

VelornRestoreReport restorePicture(const VelornPicture& source, const VelornPicture& target,
                                   const KernelGrid& grid, const VelornRestoreSettings& settings) {
    if (!grid.isUniform()) {
        return restored(source, target, PictureBlur(grid), settings);
    }
    const Kernel* const kernels[] = {&grid.at(0, 0)};
    const bool blursNothing = kernels[0]->largerSide() == 1;
    return restored(source, target, PictureBlur(std::span(kernels).first(blursNothing ? 0U : 1U)),
                    settings);
}

} // namespace restoration
