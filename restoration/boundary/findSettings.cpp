#include "restoration/boundary/findSettings.h"

#include "restoration/boundary/argumentChecks.h"
#include "restoration/boundary/checkedRegion.h"
#include "restoration/boundary/records.h"
#include "restoration/boundary/VelornKernel.h"

#include <limits>

namespace restoration {
namespace {

constexpr std::int64_t kNoLimit = std::numeric_limits<std::int32_t>::max();

/// 0 leaves the choice to the library.
void requireZeroOrRange(std::int32_t value, std::int64_t least, std::int64_t most,
                        const char* name) {
    if (value != 0) {
        requireRange(value, least, most, name);
    }
}

} // namespace

VelornFindSettings findDefaults() noexcept {
    VelornFindSettings settings{};
    settings.size = sizeof settings;
    return settings;
}

VelornFindSettings checkedSettings(const VelornFindSettings* settings,
                                   const VelornPicture& picture) {
    VelornFindSettings checked = findDefaults();
    if (settings != nullptr) {
        requireRecord(settings, "settings");
        checked = readRecord(*settings, checked);
    }
    constexpr int kSmallestSide = 3;
    constexpr int kSmallestPart = 64;
    requireZeroOrRange(checked.maxWidth, kSmallestSide, VELORN_LARGEST_KERNEL_SIDE,
                       "settings->maxWidth");
    requireZeroOrRange(checked.maxHeight, kSmallestSide, VELORN_LARGEST_KERNEL_SIDE,
                       "settings->maxHeight");
    requireZeroOrRange(checked.partSide, kSmallestPart, kNoLimit, "settings->partSide");
    constexpr FloatRange kSmoothing{.most = 2.0f};
    requireRange(checked.smoothing, kSmoothing, "settings->smoothing");
    requireRange(checked.threads, 0, kNoLimit, "settings->threads");
    if (checked.region.width != 0) {
        checkedRegion(checked.region, picture);
    }
    return checked;
}

FindSettings searchOf(const VelornFindSettings& settings) noexcept {
    const VelornRegion& region = settings.region;
    FindSettings search{settings.maxWidth, settings.maxHeight, settings.partSide,
                        static_cast<double>(settings.smoothing),
                        Rect{region.x, region.y, region.width, region.height}};
    search.start = settings.start != nullptr ? &settings.start->kernel : nullptr;
    return search;
}

} // namespace restoration
