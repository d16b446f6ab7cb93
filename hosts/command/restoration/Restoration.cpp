#include "hosts/command/restoration/Restoration.h"

#include "hosts/command/terminal/Failure.h"
#include "velorncore10.h"

#include <limits>
#include <string>

namespace velorn {
namespace {

/// Units of progress for a whole call: far more than a picture has tiles.
constexpr std::int32_t kProgressUnits = 1'000'000;

extern "C" std::int32_t reportProgress(std::int32_t current, std::int32_t limit, void* userData) {
    const auto& progress = *static_cast<const ProgressFunction*>(userData);
    return progress(current, limit) ? 1 : 0;
}

std::string reasonOf(std::int32_t status) {
    switch (status) {
    case VELORN_TEXT_FAILURE:
        return getErrMsg();
    case VELORN_TILE_GAP:
        return "the kernel is too large for the picture's tiles";
    case VELORN_NO_PIXELS:
    case VELORN_FAILURE:
    case VELORN_SMOOTHER_MEMORY:
        return "out of memory, or no pixels (status " + std::to_string(status) + ")";
    default:
        return "status " + std::to_string(status);
    }
}

template <class T>
std::int32_t rowStep(const RgbPixels& pixels) {
    const std::int64_t step = std::int64_t{3} * pixels.width * static_cast<int>(sizeof(T));
    if (step > std::numeric_limits<std::int32_t>::max()) {
        throw Failure("the picture is too wide");
    }
    return static_cast<std::int32_t>(step);
}

} // namespace

RestorationSettings deconvolutionOnly(RestorationSettings settings) {
    settings.edgeSlope = 0.0f;
    settings.edgeGain = 1.0f;
    settings.detailGain = 0.0f;
    settings.detailGamma = 0.0f;
    return settings;
}

RgbPixels restore(const RgbPixels& source, const BlurKernel& kernel,
                  const RestorationSettings& settings, const ProgressFunction& progress) {
    RgbPixels target{source.width, source.height, {}};
    ImageRecord image{};
    image.format = source.isEightBit() ? psC3U8 : psC3U16;
    image.width = source.width;
    image.height = source.height;
    std::visit(
        [&]<class T>(const std::vector<T>& samples) {
            auto& room = target.samples.emplace<std::vector<T>>(samples.size());
            image.source = samples.data();
            image.target = room.data();
            image.sourceStep = image.targetStep = rowStep<T>(source);
        },
        source.samples);

    // The record's data is not constant, although a restoration only reads it.
    std::vector<float> weights = kernel.weights;
    KernelRecord record{kernel.width, kernel.height, kernel.width / 2, kernel.height / 2,
                        weights.data()};
    ProgressFunction report = progress;
    ProgressRecord account{kProgressUnits, kProgressUnits + 1, reportProgress, &report, 0};
    const std::int32_t status = ornDeblurSharpen(
        &account, &image, &record, settings.deconvolve ? 1 : 0, settings.lambda, settings.alpha,
        settings.limit, settings.edgeRadius, settings.edgeSlope, settings.edgeGain,
        settings.edgeFloor, settings.detailGain, settings.detailGamma);
    if (status == VELORN_CANCELLED) {
        return {};
    }
    if (status != VELORN_OK) {
        throw Failure(reasonOf(status));
    }
    return target;
}

} // namespace velorn
