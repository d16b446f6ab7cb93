#include "velimproclib/frame/deblurSharpen.h"

#include "velimproclib/frame/hostRows.h"
#include "velimproclib/frame/notifyProgress.h"
#include "velimproclib/primitives/base/failures.h"
#include "velimproclib/tiles/ColorTwistTile.h"

#include <algorithm>
#include <limits>

namespace vel {

namespace {

constexpr std::uint8_t kPlainLayout = 0;
constexpr std::uint8_t kStandardTwist = 0;
constexpr int kTileOverlap = 16;
constexpr int kTaper = 1;
constexpr float kChromaWeight = 0.01f;

bool hasShortStep(const ImageRecord& image, std::int32_t step) {
    return isShorterThanARow(step, image.format, image.width, image.height);
}

void checkKernel(const KernelRecord* kernel, bool runDeconv) {
    if (kernel == nullptr) {
        throw "ornDeblurSharpen - kernel_p ==NULL";
    }
    const std::int32_t leastSide = runDeconv ? 1 : 0;
    if (kernel->width < leastSide || kernel->height < leastSide) {
        throw "ornDeblurSharpen - kernel without elements";
    }
    if (runDeconv && kernel->data == nullptr) {
        throw "ornDeblurSharpen - kernel data ==NULL";
    }
}

void checkRecords(const ImageRecord* image, const KernelRecord* kernel, bool runDeconv) {
    if (image == nullptr) {
        throw "ornDeblurSharpen - image_p ==NULL";
    }
    checkKernel(kernel, runDeconv);
    if (image->width < 1 || image->height < 1) {
        throw kNoPixels;
    }
    if (image->source == nullptr || image->target == nullptr) {
        throw "ornDeblurSharpen - source or target ==NULL";
    }
    if (hasShortStep(*image, image->sourceStep) || hasShortStep(*image, image->targetStep)) {
        throw "ornDeblurSharpen - step shorter than a row";
    }
}

/// A header for the pixels of the host. The step is set after construction, because the constructor
/// rejects odd steps of 16-bit images.
cv::Mat wrapPixels(const ImageRecord& image, const void* pixels, std::int32_t step) {
    const int type = isEightBits(image.format) ? CV_8UC3 : CV_16UC3;
    cv::Mat wrapped(image.height, image.width, type, const_cast<void*>(pixels));
    if (image.height > 1) {
        wrapped.step[0] = static_cast<std::size_t>(step);
        wrapped.updateContinuityFlag();
    }
    return wrapped;
}

int largerSide(const KernelRecord& kernel) {
    return std::max(kernel.width, kernel.height);
}

/// The margin of a tile: twice the kernel plus room for the taper keeps the ringing at the seams
/// out of the useful part.
int borderFor(const KernelRecord& kernel) {
    constexpr int kTaperRoom = 16;
    // Larger than every tile, and small enough that twice the border fits an int.
    constexpr std::int64_t kLargest = std::numeric_limits<int>::max() / 4;
    const std::int64_t border = 2 * std::int64_t{largerSide(kernel)} + kTaperRoom;
    return static_cast<int>(std::min(border, kLargest));
}

void setUpDeconvolution(CDeblurTile& tile, const KernelRecord& kernel,
                        const DeblurSettings& settings) {
    const cv::Mat shape(kernel.height, kernel.width, CV_32FC1, kernel.data);
    const cv::Point anchor(kernel.anchorX, kernel.anchorY);
    const cv::Size tileSize(tile.m_w, tile.m_h);
    tile.m_deconv.setup(shape, anchor, tileSize, settings.deconvLambda, settings.deconvAlpha, true);
    tile.m_chroma.setup(shape, anchor, tileSize, kChromaWeight);
    tile.setLimiter(settings.limitStrength, largerSide(kernel));
}

} // namespace

// The comparisons are of doubles, therefore the floats 1.01 and 0.01 leave the gates closed.
// Negative detail settings alone do not open the last gate, although the stage supports them.
DeblurCall::Gates::Gates(const DeblurSettings& settings)
    : deconv(settings.deconvolve), edge(settings.edgeGain > 1.01 || settings.edgeSlope > 1.01),
      detail(settings.detailGamma > 0.01 || settings.detailGain > 0.01) {}

DeblurCall::SetUpTile::SetUpTile(const ImageRecord& image, const KernelRecord& kernel,
                                 const DeblurSettings& settings) {
    tileSizeFor(cv::Size(image.width, image.height));
    if (settings.deconvolve) {
        setUpDeconvolution(*this, kernel, settings);
    }
    m_edgeRadius = settings.edgeRadius;
    m_edgeSlope = settings.edgeSlope;
    m_edgeGain = settings.edgeGain;
    m_edgeFloor = settings.edgeFloor;
}

DeblurCall::DeblurCall(ProgressRecord* progress, const ImageRecord& image,
                       const KernelRecord& kernel, const DeblurSettings& settings)
    : m_progress(progress), m_settings(settings), m_gates(settings),
      m_tile(image, kernel, settings), m_detail(m_tile.m_w, m_tile.m_h) {
    m_blocks.init(wrapPixels(image, image.source, image.sourceStep),
                  wrapPixels(image, image.target, image.targetStep), m_tile.m_w, m_tile.m_h,
                  kPlainLayout, kTileOverlap, borderFor(kernel), kTaper);
}

int32_t DeblurCall::run() {
    TilePlanes* planes = m_blocks.nextBlock();
    const std::int64_t step = unitsPerStep();
    const std::int32_t base = m_progress->current;
    notify(std::int64_t{base} + 2);
    while (planes != nullptr) {
        restore(*planes);
        if (!notify(m_progress->current + step)) {
            return VELORN_CANCELLED;
        }
        finish(*planes);
        planes = m_blocks.nextBlock();
        if (!notify(m_progress->current + step)) {
            return VELORN_CANCELLED;
        }
    }
    // The steps are rounded; the account still ends at the exact total. The callback can cancel
    // here too, although the image is complete.
    return notify(std::int64_t{m_progress->total} + base) ? VELORN_OK : VELORN_CANCELLED;
}

/// The progress units of a step. Every tile makes two: one after stages 1 and 2, one after it is
/// stored.
std::int64_t DeblurCall::unitsPerStep() const {
    const std::int64_t tiles = std::int64_t{m_blocks.tilesAcross()} * m_blocks.tilesDown();
    return m_progress->total / tiles / 2 + 1;
}

/// Stages 1 and 2. Leaves the planes as luminance and chroma.
void DeblurCall::restore(TilePlanes& planes) {
    rgbToLumaChroma(planes, kStandardTwist);
    m_tile.process(planes, m_gates.deconv, m_gates.edge);
}

/// Stage 3, the twist back to colours, and the store.
void DeblurCall::finish(TilePlanes& planes) {
    if (m_gates.detail) {
        m_detail.Proc(planes[0], m_settings.detailGain, m_settings.detailGamma);
    }
    lumaChromaToRgb(planes, kStandardTwist);
    m_blocks.doneABlock();
}

bool DeblurCall::notify(std::int64_t current) {
    return notifyProgress(*m_progress, current);
}

DeblurCall deblurSharpen(ProgressRecord* progress, const ImageRecord* image,
                         const KernelRecord* kernel, const DeblurSettings& settings) {
    if (progress != nullptr) {
        notifyProgress(*progress, std::int64_t{progress->current} + 1);
    }
    checkRecords(image, kernel, settings.deconvolve);
    return DeblurCall(progress, *image, *kernel, settings);
}

} // namespace vel
