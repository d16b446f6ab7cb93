#include "restoration/boundary/findSettings.h"

#include "restoration/boundary/argumentChecks.h"
#include "restoration/boundary/records.h"

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

VelornFindSettings checkedSettings(const VelornFindSettings* settings) {
    if (settings == nullptr) {
        return findDefaults();
    }
    requireRecord(settings, "settings");
    const VelornFindSettings checked = readRecord(*settings, findDefaults());
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
    return checked;
}

} // namespace restoration
