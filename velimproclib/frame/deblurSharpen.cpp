#include "velimproclib/frame/deblurSharpen.h"

#include "velimproclib/frame/CallFrame.h"
#include "velimproclib/frame/notifyProgress.h"
#include "velimproclib/primitives/base/failures.h"
#include "velimproclib/tiles/BlockProcP3.h"
#include "velimproclib/tiles/ColorTwistTile.h"
#include "velimproclib/veldeblurcv/DeblurTile.h"
#include "velimproclib/veldeblurcv/detail/DetailStage.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace vel {

namespace {

constexpr std::uint8_t kPlainLayout = 0;
constexpr std::uint8_t kStandardTwist = 0;
constexpr int kTileOverlap = 16;
constexpr int kTaper = 1;
constexpr float kChromaWeight = 0.01f;

struct Gates {
    bool deconv;
    bool edge;
    bool detail;
};

/// The comparisons are of doubles: the floats 1.01 and 0.01 lie below the doubles and stay closed.
/// Negative detail settings alone do not open the last gate, although the stage has a meaning for
/// them.
Gates gatesOf(const DeblurSettings& settings) {
    return {settings.deconvolve, settings.edgeGain > 1.01 || settings.edgeSlope > 1.01,
            settings.detailGamma > 0.01 || settings.detailGain > 0.01};
}

bool stepIsTooShort(std::int32_t step, const ImageRecord& image) {
    const std::int64_t pixelBytes = image.format == psC3U8 ? 3 : 6;
    return image.height > 1 && step < image.width * pixelBytes;
}

void checkRecords(const ImageRecord* image, const KernelRecord* kernel, bool runDeconv) {
    if (image == nullptr) {
        throw "ornDeblurSharpen - image_p ==NULL";
    }
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
    if (image->width < 1 || image->height < 1) {
        throw kNoPixels;
    }
    if (image->source == nullptr || image->target == nullptr) {
        throw "ornDeblurSharpen - source or target ==NULL";
    }
    if (stepIsTooShort(image->sourceStep, *image) || stepIsTooShort(image->targetStep, *image)) {
        throw "ornDeblurSharpen - step shorter than a row";
    }
}

/// Header over the host's pixels. The step is set afterwards: rows of 16-bit elements may stand at
/// odd addresses, which the header's constructor would refuse.
cv::Mat wrapPixels(const ImageRecord& image, const void* pixels, std::int32_t step) {
    const int type = image.format == psC3U8 ? CV_8UC3 : CV_16UC3;
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

/// Twice the kernel, and room for the taper, keep what rings at the seams out of the useful part.
int borderFor(const KernelRecord& kernel) {
    constexpr int kTaperRoom = 16;
    // Far beyond every tile, and small enough that twice the border fits an int.
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

void setUpEdges(CDeblurTile& tile, const DeblurSettings& settings) {
    tile.m_edgeRadius = settings.edgeRadius;
    tile.m_edgeSlope = settings.edgeSlope;
    tile.m_edgeGain = settings.edgeGain;
    tile.m_edgeFloor = settings.edgeFloor;
}

} // namespace

int32_t deblurSharpen(ProgressRecord* progress, const ImageRecord* image,
                      const KernelRecord* kernel, const DeblurSettings& settings) {
    if (progress != nullptr) {
        notifyProgress(*progress, std::int64_t{progress->current} + 1);
    }
    const Gates gates = gatesOf(settings);
    checkRecords(image, kernel, gates.deconv);

    CDeblurTile tile;
    tile.tileSizeFor(cv::Size(image->width, image->height));
    if (gates.deconv) {
        setUpDeconvolution(tile, *kernel, settings);
    }
    setUpEdges(tile, settings);
    CDetailStage detailStage(tile.m_w, tile.m_h);

    CBlockProcP3 blocks;
    blocks.init(wrapPixels(*image, image->source, image->sourceStep),
                wrapPixels(*image, image->target, image->targetStep), tile.m_w, tile.m_h,
                kPlainLayout, kTileOverlap, borderFor(*kernel), kTaper);
    TilePlanes* planes = blocks.nextBlock();

    // Two steps a tile: one behind the stages, one behind the store.
    const std::int64_t share =
        progress->total / (std::int64_t{blocks.tilesAcross()} * blocks.tilesDown());
    const std::int64_t step = share / 2 + 1;
    const std::int32_t base = progress->current;
    notifyProgress(*progress, std::int64_t{base} + 2);
    const auto stepIsCancelled = [&] {
        return !notifyProgress(*progress, std::int64_t{progress->current} + step);
    };
    const auto walkIsCancelled = [&] {
        while (planes != nullptr) {
            rgbToLumaChroma(*planes, kStandardTwist);
            tile.process(*planes, gates.deconv, gates.edge);
            if (stepIsCancelled()) {
                return true;
            }
            if (gates.detail) {
                detailStage.Proc((*planes)[0], settings.detailGain, settings.detailGamma);
            }
            lumaChromaToRgb(*planes, kStandardTwist);
            blocks.doneABlock();
            planes = blocks.nextBlock();
            if (stepIsCancelled()) {
                return true;
            }
        }
        return false;
    };
    if (walkIsCancelled()) {
        busyByte().clear();
        return VELORN_CANCELLED;
    }
    // The end is told exactly, whatever the rounding of the steps; the image is complete even when
    // the host cancels here.
    return notifyProgress(*progress, std::int64_t{progress->total} + base) ? VELORN_OK
                                                                           : VELORN_CANCELLED;
}

} // namespace vel
