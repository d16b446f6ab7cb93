#include "hosts/command/pictures/planeRecord.h"

#include "hosts/command/terminal/Failure.h"

#include <limits>

namespace velorn {

PlaneRecord planeRecord(const RgbPixels& pixels) {
    return std::visit(
        [&]<class T>(const std::vector<T>& samples) {
            const std::int64_t step = std::int64_t{3} * pixels.width * static_cast<int>(sizeof(T));
            if (step > std::numeric_limits<std::int32_t>::max()) {
                throw Failure("the picture is too wide");
            }
            return PlaneRecord{pixels.isEightBit() ? psC3U8 : psC3U16, samples.data(),
                               static_cast<std::int32_t>(step), pixels.width, pixels.height};
        },
        pixels.samples);
}

} // namespace velorn
