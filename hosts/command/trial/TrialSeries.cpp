#include "hosts/command/trial/TrialSeries.h"

#include "hosts/command/arguments/Numbers.h"
#include "hosts/command/files/fileFailures.h"
#include "hosts/command/terminal/slicedProgress.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

namespace velorn {
namespace {

/// The remarks that are not empty, separated by a semicolon.
std::string joined(const std::string& first, const std::string& second) {
    return first + (first.empty() || second.empty() ? "" : "; ") + second;
}

/// The share of a progress that the work `index` of `count` takes.
api::Progress shareOf(const api::Progress& progress, std::size_t index, std::size_t count) {
    const auto whole = static_cast<double>(count);
    return slicedProgress(progress, static_cast<double>(index) / whole,
                          static_cast<double>(index + 1) / whole);
}

} // namespace

TrialSeries::TrialSeries(const ImageFile& picture, const std::filesystem::path& path,
                         const PictureArea& area, const TrialSettings& settings,
                         const Interrupt& interrupt)
    : m_picture(picture), m_path(path), m_area(area), m_settings(settings), m_interrupt(interrupt) {
}

std::vector<TrialTile> TrialSeries::restored(const std::vector<TrialBlur>& blurs,
                                             const std::vector<TrialStrength>& strengths,
                                             const api::Progress& progress) const {
    std::vector<TrialTile> tiles;
    for (std::size_t i = 0; i < blurs.size(); ++i) {
        auto more = restoredWith(blurs[i], strengths, shareOf(progress, i, blurs.size()));
        std::ranges::move(more, std::back_inserter(tiles));
    }
    return tiles;
}

std::vector<TrialTile> TrialSeries::restoredWith(const TrialBlur& blur,
                                                 const std::vector<TrialStrength>& strengths,
                                                 const api::Progress& progress) const {
    // Multiples need the automatic strength, which the report of a restoration gives.
    const bool needsAutomatic = std::ranges::any_of(strengths, &TrialStrength::isRelative);
    const auto others = static_cast<std::size_t>(
        std::ranges::count_if(strengths, [](const auto& one) { return !one.isAutomatic(); }));
    const std::size_t count = others + (needsAutomatic ? 1 : 0);
    std::size_t next = 0;
    std::optional<RestoredPart> automatic;
    if (needsAutomatic) {
        automatic = part(blur, m_settings.settings.strength, shareOf(progress, next++, count));
    }
    std::vector<TrialTile> tiles;
    for (const TrialStrength& strength : strengths) {
        if (strength.isAutomatic()) {
            tiles.push_back(automaticTile(blur, *automatic));
            continue;
        }
        if (strength.isRelative && !(automatic->report.strength > 0.0f)) {
            throw failureIn(m_path, "strengths have no effect with " + blur.words +
                                        ": the kernel is a single pixel");
        }
        const float value = strength.valueFor(automatic ? automatic->report.strength : 0.0f);
        tiles.push_back(tile(blur, strength, value,
                             part(blur, value, shareOf(progress, next++, count)).pixels));
    }
    return tiles;
}

RestoredPart TrialSeries::part(const TrialBlur& blur, float strength,
                               const api::Progress& progress) const {
    VelornRestoreSettings settings = m_settings.settings;
    settings.strength = strength;
    return restoredPart(m_picture, m_path, m_area, blur.kernel, settings, m_interrupt, progress);
}

TrialTile TrialSeries::automaticTile(const TrialBlur& blur, const RestoredPart& part) const {
    const bool isChosen = m_settings.settings.strength == VELORN_AUTOMATIC;
    const std::string remark =
        isChosen && part.report.strength > 0.0f
            ? "automatic strength: " + numberText(std::round(part.report.strength))
            : "";
    return {part.pixels, blur.words + m_settings.words, joined(blur.remark, remark)};
}

TrialTile TrialSeries::tile(const TrialBlur& blur, const TrialStrength& strength, float value,
                            RgbPixels pixels) const {
    const std::string words =
        blur.words + " --lambda " + numberText(value) + m_settings.strengthWords + m_settings.words;
    return {std::move(pixels), words, joined(blur.remark, strength.remark())};
}

} // namespace velorn
