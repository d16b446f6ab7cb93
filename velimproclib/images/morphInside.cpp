#include "velimproclib/images/morphInside.h"

#include "velimproclib/images/InnerRegion.h"

#include <new>

namespace vel {

void morphInside(cv::Mat& plane, std::int32_t passes, MorphInPlace* morph) {
    const InnerRegion<std::uint8_t> inside(plane, 1, 1);
    for (std::int32_t pass = 0; pass < passes; ++pass) {
        if (morph(inside.data, inside.step, inside.w, inside.h) == kOutOfMemory) {
            throw std::bad_alloc();
        }
    }
}

} // namespace vel
