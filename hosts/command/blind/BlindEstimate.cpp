#include "hosts/command/blind/BlindEstimate.h"

#include "hosts/command/library/statusText.h"
#include "hosts/command/pictures/planeRecord.h"
#include "hosts/command/terminal/Failure.h"
#include "velorncore10.h"

#include <algorithm>
#include <cmath>

namespace velorn {

std::optional<BlurKernel> estimateKernel(const RgbPixels& pixels, KernelSize size, float strength,
                                         const ProgressFunction& progress) {
    BlurKernel kernel{size.width, size.height, {}};
    kernel.weights.resize(static_cast<std::size_t>(size.width) *
                          static_cast<std::size_t>(size.height));
    KernelRecord record{size.width, size.height, size.width / 2, size.height / 2,
                        kernel.weights.data()};
    PlaneRecord plane = planeRecord(pixels);
    ProgressAccount account(progress);
    const std::int32_t status = ornBlurEstimate(account.record(), &plane, &record, strength);
    if (status != VELORN_OK) {
        throw Failure("the blur cannot be estimated: " + statusText(status));
    }
    if (!std::ranges::all_of(kernel.weights, [](float w) { return std::isfinite(w); })) {
        return std::nullopt;
    }
    return checkedKernel(std::move(kernel), "the estimate");
}

} // namespace velorn
