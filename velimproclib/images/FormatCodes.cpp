#include "velimproclib/images/FormatCodes.h"

namespace vel {

std::int32_t psChannels(std::int32_t format) noexcept {
    switch (format) {
    case psC3U8:
    case psC3U16:
    case psC4U8:
    case psC4U16:
        return 3;
    case psC1U8:
    case psC1U16:
        return 1;
    default:
        return 0;
    }
}

std::int32_t psBytesPerChannel(std::int32_t format) noexcept {
    return format == psC3U16 || format == psC4U16 || format == psC1U16 ? 2 : 1;
}

} // namespace vel
