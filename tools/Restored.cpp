#include "Restored.h"

#include "restoration/boundary/restoreSettings.h"
#include "restoration/kernels/Kernel.h"
#include "restoration/pipeline/restorePicture.h"
#include "velorn.h"

namespace velorn::tools {
namespace {

VelornPicture viewOf(const RgbPixels& pixels) {
    const auto& samples = std::get<std::vector<std::uint8_t>>(pixels.samples);
    VelornPicture view{};
    view.data = const_cast<std::uint8_t*>(samples.data()); // a source is only read
    view.rowStride = static_cast<std::ptrdiff_t>(pixels.width) * 3;
    view.width = pixels.width;
    view.height = pixels.height;
    view.channels = 3;
    view.samples = VELORN_SAMPLES_U8;
    return view;
}

} // namespace

RgbPixels restoredWith(const RgbPixels& pixels, const BlurKernel& kernel, bool isFound) {
    const restoration::Kernel blur{kernel.width, kernel.height, kernel.weights, isFound};
    const restoration::Kernel* kernels[] = {&blur};
    RgbPixels result = pixels;
    VelornRestoreSettings settings = restoration::restoreDefaults();
    settings.threads = 1;
    settings.region = {0, 0, pixels.width, pixels.height};
    const VelornPicture source = viewOf(pixels);
    restoration::restorePicture(source, viewOf(result), kernels, settings);
    return result;
}

} // namespace velorn::tools
