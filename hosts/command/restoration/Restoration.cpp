#include "hosts/command/restoration/Restoration.h"

#include "hosts/command/library/statusText.h"
#include "hosts/command/pictures/planeRecord.h"
#include "hosts/command/terminal/Failure.h"
#include "velorncore10.h"

namespace velorn {

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
    void* targetPixels = std::visit(
        [&]<class T>(const std::vector<T>& samples) -> void* {
            return target.samples.emplace<std::vector<T>>(samples.size()).data();
        },
        source.samples);
    const PlaneRecord plane = planeRecord(source);
    ImageRecord image{plane.format, plane.data,  plane.step,  targetPixels,
                      plane.step,   plane.width, plane.height};
    // The record takes mutable data, although a restoration only reads it.
    std::vector<float> weights = kernel.weights;
    KernelRecord record{kernel.width, kernel.height, kernel.width / 2, kernel.height / 2,
                        weights.data()};
    ProgressAccount account(progress);
    const std::int32_t status = ornDeblurSharpen(
        account.record(), &image, &record, settings.deconvolve ? 1 : 0, settings.lambda,
        settings.alpha, settings.limit, settings.edgeRadius, settings.edgeSlope, settings.edgeGain,
        settings.edgeFloor, settings.detailGain, settings.detailGamma);
    if (status == VELORN_CANCELLED) {
        return {};
    }
    if (status != VELORN_OK) {
        throw Failure(statusText(status));
    }
    return target;
}

} // namespace velorn
