#include "BlindTrial.h"

#include "KernelLikeness.h"
#include "restored.h"

#include <cmath>
#include <ctime>

namespace velorn::tools {
namespace {

/// Empty when the picture has too few edges.
std::optional<api::FoundKernel> foundIn(const RgbPixels& pixels) {
    const auto& samples = std::get<std::vector<std::uint8_t>>(pixels.samples);
    VelornFindSettings settings = api::findSettings();
    settings.threads = 1;
    try {
        return api::findKernel(api::pictureOf(samples.data(), pixels.width, pixels.height, 3),
                               settings);
    } catch (const api::Failure&) {
        return std::nullopt;
    }
}

} // namespace

double BlindTrial::errorRatio() const {
    return std::pow(10.0, (known - blind) / 10.0);
}

std::optional<BlindTrial> blindTrial(const Photograph& photograph, const BlurKernel& truth) {
    const std::clock_t start = std::clock();
    const auto found = foundIn(photograph.taken);
    const std::clock_t end = std::clock();
    if (!found) {
        return std::nullopt;
    }
    const RgbPixels blind = restored(photograph.taken, found->kernel);
    BlindTrial trial;
    trial.blurred = photograph.decibels();
    trial.blind = photograph.decibelsWhenMoved(blind);
    trial.inPlace = photograph.decibelsOf(blind);
    trial.known =
        truth.width == 1
            ? trial.blurred
            : photograph.decibelsWhenMoved(restored(photograph.taken, libraryKernel(truth)));
    trial.likeness = likeness(blurKernelOf(found->kernel), truth);
    trial.seconds = static_cast<double>(end - start) / CLOCKS_PER_SEC;
    trial.confidence = found->report.confidence;
    return trial;
}

} // namespace velorn::tools
