#include "restoration/boundary/checkedRegion.h"

#include "restoration/boundary/argumentChecks.h"

#include <cstdint>
#include <string>

namespace restoration {
namespace {

void checkSpan(std::int32_t start, std::int32_t length, std::int32_t whole, const char* startName,
               const char* lengthName) {
    const std::string settings = "settings->region.";
    requireRange(start, 0, std::int64_t{whole} - 1, settings + startName);
    requireRange(length, 1, std::int64_t{whole} - start, settings + lengthName);
}

} // namespace

VelornRegion checkedRegion(const VelornRegion& region, const VelornPicture& picture) {
    if (region.width == 0) {
        return {0, 0, picture.width, picture.height};
    }
    checkSpan(region.x, region.width, picture.width, "x", "width");
    checkSpan(region.y, region.height, picture.height, "y", "height");
    return region;
}

} // namespace restoration
