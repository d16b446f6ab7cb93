#include "hosts/command/blind/BlindEstimate.h"

#include "hosts/command/terminal/Failure.h"
#include "velorncore10.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

namespace velorn {
namespace {

constexpr std::int32_t kProgressUnits = 1'000'000;

extern "C" std::int32_t reportEstimate(std::int32_t current, std::int32_t limit, void* userData) {
    (*static_cast<const ProgressFunction*>(userData))(current, limit);
    return 1;
}

PlaneRecord planeOf(const RgbPixels& pixels) {
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

} // namespace

KernelSize asStored(KernelSize size, int orientation) {
    return orientation >= 5 ? KernelSize{size.height, size.width} : size;
}

std::optional<BlurKernel> estimateKernel(const RgbPixels& pixels, KernelSize size, float strength,
                                         const ProgressFunction& progress) {
    BlurKernel kernel{size.width, size.height, {}};
    kernel.weights.resize(static_cast<std::size_t>(size.width) *
                          static_cast<std::size_t>(size.height));
    KernelRecord record{size.width, size.height, size.width / 2, size.height / 2,
                        kernel.weights.data()};
    PlaneRecord plane = planeOf(pixels);
    ProgressFunction report = progress;
    ProgressRecord account{kProgressUnits, kProgressUnits, reportEstimate, &report, 0};
    const std::int32_t status = ornBlurEstimate(&account, &plane, &record, strength);
    if (status != VELORN_OK) {
        throw Failure("the blur could not be estimated: " +
                      (status == VELORN_TEXT_FAILURE ? std::string(getErrMsg())
                                                     : "status " + std::to_string(status)));
    }
    if (!std::ranges::all_of(kernel.weights, [](float w) { return std::isfinite(w); })) {
        return std::nullopt;
    }
    return checkedKernel(std::move(kernel), "the estimate");
}

} // namespace velorn
