#include "velimproclib/veldeblurcv/estimation/BlurEst.h"

#include "velimproclib/images/InnerRegion.h"
#include "velimproclib/primitives/arithmetic/AbsoluteDifference.h"
#include "velimproclib/primitives/arithmetic/Histogram.h"
#include "velimproclib/primitives/base/Status.h"
#include "velimproclib/primitives/base/Team.h"
#include "velimproclib/primitives/filters/LinearFilters.h"
#include "velimproclib/primitives/filters/MeanFilter.h"
#include "velimproclib/primitives/filters/Medians.h"
#include "velimproclib/tiles/BlockProcP1.h"
#include "velimproclib/tiles/tileSide.h"
#include "velimproclib/veldeblurcv/deconvolution/DeconvHL.h"
#include "velimproclib/veldeblurcv/estimation/AlphaBlend.h"
#include "velimproclib/veldeblurcv/estimation/EdgePrediction.h"
#include "velimproclib/veldeblurcv/estimation/estKernel.h"
#include "velimproclib/veldeblurcv/kernels/Gaussian1D.h"

#include <algorithm>
#include <limits>
#include <numeric>
#include <opencv2/imgproc.hpp>

namespace vel {

namespace {

constexpr int kIterations = 3;
constexpr int kHistogramEntries = 260;
constexpr int kHistogramLevels = 257;
constexpr int kLeastThreshold = 4;
constexpr int kLeastBand = 8;
constexpr int kSmallestLevelSide = 32;
constexpr int kBilateralDiameter = 5;

// The strength of the estimator's own deconvolution, whatever the host deblurs with later.
constexpr float kLevelLambda = 2000.0f;
constexpr float kLevelAlpha = 0.5f;
constexpr int kLevelOverlap = 8;
constexpr int kLevelBorder = 16;
constexpr int kLevelTaper = 1;

// Modes of `deconvLevel`.
constexpr int kCopyOnly = 0;
constexpr int kDeconvolve = 2;

int largerSide(const cv::Mat& kernel) {
    return std::max(kernel.cols, kernel.rows);
}

using PixelFilter = decltype(medianHorizU8);

/// Runs a neighbourhood filter on all pixels of `src` whose neighbourhood lies inside it.
void filterInsideRing(PixelFilter* filter, int mask, int ring, const cv::Mat& src, cv::Mat& dst) {
    const InnerRegion<std::uint8_t> from(src, ring, ring);
    const InnerRegion<std::uint8_t> to(dst, ring, ring);
    filter(from.data, from.step, to.data, to.step, from.w, from.h, mask);
}

void clearBelow(int threshold, cv::Mat& mask) {
    forEachRow(mask.rows, [&](int y) {
        std::uint8_t* const pixels = mask.ptr<std::uint8_t>(y);
        std::replace_if(
            pixels, pixels + mask.cols, [=](int pixel) { return pixel < threshold; },
            std::uint8_t{0});
    });
}

void clearBand(int band, cv::Mat& mask) {
    const int rows = std::min(band, mask.rows);
    const int columns = std::min(band, mask.cols);
    mask.rowRange(0, rows).setTo(0);
    mask.rowRange(mask.rows - rows, mask.rows).setTo(0);
    mask.colRange(0, columns).setTo(0);
    mask.colRange(mask.cols - columns, mask.cols).setTo(0);
}

/// How far the bilateral filter of the edge prediction reaches, in grey levels and in pixels.
struct EdgeReach {
    float sigmaColor;
    float sigmaSpace;
};

EdgeReach firstReach(int level, bool coarsest, int radius) {
    const float space = !coarsest && radius > 1 ? 0.9f * static_cast<float>(radius) : 1.0f;
    return {std::max(5.0f, 80.0f / static_cast<float>(level + 1)), space};
}

/// The square is meant: a wide neighbourhood grows fast, a narrow one shrinks to the floor.
EdgeReach nextReach(EdgeReach reach, float gain) {
    return {std::max(6.0f, reach.sigmaColor * gain),
            std::max(0.5f, reach.sigmaSpace * reach.sigmaSpace)};
}

int pixelsToKeep(int perTap, int side) {
    return static_cast<int>(
        std::min<std::int64_t>(std::int64_t{perTap} * side, std::numeric_limits<int>::max()));
}

/// Share of the fresh image in the blend: half in the first iteration, all in the last.
float blendWeight(int iteration) {
    const float rest = static_cast<float>(kIterations - iteration) - 0.999f;
    return std::min(1.0f, 1.0f / rest);
}

} // namespace

CBlurEst::CBlurEst()
    : m_hist(reinterpret_cast<std::int32_t*>(alignedAllocF32(kHistogramEntries))),
      m_histLevels(reinterpret_cast<std::int32_t*>(alignedAllocF32(kHistogramEntries))) {
    if (!m_hist || !m_histLevels) {
        throw "CBlurEst::CBlurEst - ippsMalloc_32s failed";
    }
}

int CBlurEst::setup(const cv::Mat& image, const cv::Mat& kernel, CProgressSpan* progress) {
    m_progress = progress;
    if (image.type() != CV_8UC1) {
        throw "CBlurEst:setup - imB is wrong type";
    }
    if (kernel.empty()) {
        throw "CBlurEst:setup - kernel.empty()";
    }
    m_imPyr[0] = image;
    m_kPyr[0] = kernel;
    buildPyramid();
    std::fill_n(m_lvlIters.begin(), m_pyrLvls + 1, kIterations);
    return 1;
}

void CBlurEst::buildPyramid() {
    m_pyrLvls = 0;
    const int side = largerSide(m_kPyr[0]);
    if (side <= 3) {
        return;
    }
    // Kernels of more than 511 pixels would halve more often than there is room for levels.
    int extent = ((side - 1) / 2) / 2;
    while (extent > 0 && m_pyrLvls + 1 < kMostLevels) {
        const int level = ++m_pyrLvls;
        cv::pyrDown(m_imPyr[level - 1], m_imPyr[level]);
        m_kPyr[level].create(2 * extent + 1, 2 * extent + 1, CV_32FC1);
        extent /= 2;
        // The image that is found too small stays, as the coarsest level.
        if (m_imPyr[level].cols < kSmallestLevelSide || m_imPyr[level].rows < kSmallestLevelSide) {
            break;
        }
    }
}

int CBlurEst::estimate(float strength) {
    m_edgeSmooth = strength;
    std::array<float, kMostLevels> share{};
    for (int level = 0; level <= m_pyrLvls; ++level) {
        share[level] = 1.0f / static_cast<float>((level + 1) * (level + 1));
    }
    const float sum = std::accumulate(share.begin(), share.end(), 0.0f);
    for (int level = m_pyrLvls; level >= 0; --level) {
        if (m_progress != nullptr) {
            m_progress->begin(share[level] / sum, 3 * m_lvlIters[level]);
        }
        estimateLvl(level);
    }
    return 1;
}

cv::Mat CBlurEst::firstLatent(int level) const {
    cv::Mat latent;
    if (level < m_pyrLvls) {
        cv::pyrUp(m_imPyr[level + 1], latent, m_imPyr[level].size());
    } else {
        m_imPyr[level].copyTo(latent);
    }
    return latent;
}

void CBlurEst::estimateLvl(int level) {
    const cv::Mat& blurred = m_imPyr[level];
    cv::Mat& kernel = m_kPyr[level];
    const int side = largerSide(kernel);
    cv::Mat latent = firstLatent(level);
    cv::Mat edge(blurred.size(), CV_8UC1);
    cv::Mat mask(blurred.size(), CV_8UC1);
    cv::Mat deconvImg(blurred.size(), CV_8UC1);
    EdgeReach reach = firstReach(level, level == m_pyrLvls, (side - 1) / 2);

    for (int iteration = 0; iteration < kIterations; ++iteration) {
        const bool lastOfAll = level == 0 && iteration == kIterations - 1;
        estEdge(latent, edge, kBilateralDiameter, reach.sigmaColor, reach.sigmaSpace, 1);
        if (iteration == 0) {
            computeMask(edge, mask, pixelsToKeep(m_maskPerTap, side), side);
        }
        reach = nextReach(reach, m_edgeGain);
        advanceProgress();
        if (lastOfAll && m_edgeSmooth > 0.1) {
            softenEdges(edge, latent);
        }
        estKernel(edge, mask, blurred, kernel);
        advanceProgress();
        // From the last kernel on only the kernel is wanted: nothing reads that latent image.
        deconvLevel(lastOfAll ? kCopyOnly : kDeconvolve, blurred, kernel, deconvImg);
        alphaBlend(deconvImg, latent, blendWeight(iteration));
        advanceProgress();
    }
    if (level != 0) {
        m_imPyr[level] = latent;
    }
}

void CBlurEst::advanceProgress() {
    if (m_progress != nullptr) {
        m_progress->advance();
    }
}

void CBlurEst::softenEdges(cv::Mat& edge, cv::Mat& scratch) const {
    constexpr int kTaps = 5;
    constexpr int kRing = 2;
    std::array<std::int32_t, kTaps> taps;
    std::int32_t divisor = 0;
    gaussian1D(taps.data(), &divisor, kTaps, m_edgeSmooth);
    const InnerRegion<std::uint8_t> pixels(edge, kRing, kRing);
    const InnerRegion<std::uint8_t> between(scratch, kRing, kRing);
    filterRowU8(pixels.data, pixels.step, between.data, between.step, pixels.w, pixels.h,
                taps.data(), kTaps, kRing, divisor);
    filterColumnU8(between.data, between.step, pixels.data, pixels.step, pixels.w, pixels.h,
                   taps.data(), kTaps, kRing, divisor);
}

void CBlurEst::computeMask(const cv::Mat& edge, cv::Mat& mask, int count, int side) {
    cv::Mat smoothed = edge.clone();
    cv::Mat means = cv::Mat::zeros(edge.size(), CV_8UC1);
    mask.create(edge.size(), CV_8UC1);
    mask.setTo(0);

    const bool smallKernel = side <= 3;
    const int ring = smallKernel ? 1 : 2;
    filterInsideRing(medianHorizU8, smallKernel ? kMask31 : kMask51, ring, smoothed, mask);
    filterInsideRing(medianVertU8, smallKernel ? kMask13 : kMask15, ring, mask, smoothed);
    filterInsideRing(meanFilterU8, kMask33, 1, smoothed, means);

    const InnerRegion<std::uint8_t> values(smoothed, 1, 1);
    const InnerRegion<std::uint8_t> localMeans(means, 1, 1);
    const InnerRegion<std::uint8_t> response(mask, 1, 1);
    absDiffU8(values.data, values.step, localMeans.data, localMeans.step, response.data,
              response.step, values.w, values.h);

    std::fill_n(m_hist.get(), kHistogramEntries, 0);
    const InnerRegion<std::uint8_t> counted(mask, 2, 2);
    histogramEvenU8(counted.data, counted.step, counted.w, counted.h, m_hist.get(),
                    m_histLevels.get(), kHistogramLevels, 0, 256);
    clearBelow(thresholdFor(count), mask);
    clearBand(std::max(side, kLeastBand), mask);
}

int CBlurEst::thresholdFor(int count) const {
    std::int64_t sum = 0;
    for (int bin = 255; bin >= 1; --bin) {
        sum += m_hist[static_cast<std::size_t>(bin)];
        if (sum > count) {
            return std::max(bin, kLeastThreshold);
        }
    }
    return kLeastThreshold;
}

int CBlurEst::estKernel(const cv::Mat& edge, const cv::Mat& mask, const cv::Mat& blurred,
                        cv::Mat& kernel) {
    const KernelSolveSettings settings{m_psfLambda, m_psfW0, m_psfW1, m_psfW2, m_kFloor};
    return vel::estKernel(edge, mask, blurred, kernel, settings, m_progress);
}

int CBlurEst::deconvBlockSize(int width, int height) {
    return tileSideFor(width, height);
}

void CBlurEst::deconvLevel(int mode, const cv::Mat& in, const cv::Mat& kernel, cv::Mat& out) {
    if (mode == kCopyOnly) {
        in.copyTo(out);
        return;
    }
    const int side = deconvBlockSize(in.cols, in.rows);
    CBlockProcP1 blocks;
    blocks.init(in, out, side, side, false, kLevelOverlap, kLevelBorder, kLevelTaper);
    if (m_progress != nullptr) {
        m_progress->beginSub(blocks.blocksAcross() * blocks.blocksDown());
    }
    CDeconvHL deconv;
    deconv.setup(kernel, cv::Point(kernel.cols / 2, kernel.rows / 2), cv::Size(side, side),
                 kLevelLambda, kLevelAlpha, true);
    cv::Mat* block = blocks.nextBlock();
    cv::Mat restored(block->size(), CV_32FC1);
    while (block != nullptr) {
        deconv.Proc(*block, restored);
        restored.copyTo(*block);
        blocks.doneABlock();
        block = blocks.nextBlock();
        advanceProgress();
    }
    if (m_progress != nullptr) {
        m_progress->endSub();
    }
}

} // namespace vel
