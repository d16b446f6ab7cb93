#include "velimproclib/veldeblurcv/estimation/BlurEst.h"

#include "velimproclib/primitives/base/toFloat.h"
#include "velimproclib/veldeblurcv/estimation/edges/estEdge.h"
#include "velimproclib/veldeblurcv/estimation/edges/softenEdges.h"
#include "velimproclib/veldeblurcv/estimation/levels/alphaBlend.h"
#include "velimproclib/veldeblurcv/estimation/levels/buildPyramid.h"
#include "velimproclib/veldeblurcv/estimation/levels/deconvLevel.h"
#include "velimproclib/veldeblurcv/estimation/progress/ProgressSpan.h"
#include "velimproclib/veldeblurcv/estimation/solver/estKernel.h"

#include <algorithm>
#include <limits>
#include <numeric>
#include <opencv2/imgproc.hpp>

namespace vel {

namespace {

constexpr int kIterations = 3;
/// Edge prediction, kernel and deconvolution.
constexpr int kStepsPerIteration = 3;
constexpr int kBilateralDiameter = 5;

/// Finer levels take longer and therefore receive larger shares of the progress.
std::array<float, CBlurEst::kMostLevels> levelShares(int coarsest) {
    std::array<double, CBlurEst::kMostLevels> weights{};
    for (int level = 0; level <= coarsest; ++level) {
        weights[static_cast<std::size_t>(level)] = 1.0 / ((level + 1) * (level + 1));
    }
    const double sum = std::accumulate(weights.begin(), weights.end(), 0.0);
    std::array<float, CBlurEst::kMostLevels> shares;
    std::transform(weights.begin(), weights.end(), shares.begin(),
                   [=](double weight) { return toFloat(weight / sum); });
    return shares;
}

/// Standard deviations of the bilateral filter, in grey levels and in pixels.
struct EdgeReach {
    float sigmaColor;
    float sigmaSpace;
};

EdgeReach firstReach(int level, bool isCoarsest, int radius) {
    const float space = !isCoarsest && radius > 1 ? 0.9f * static_cast<float>(radius) : 1.0f;
    return {std::max(5.0f, 80.0f / static_cast<float>(level + 1)), space};
}

/// The square is intended: a wide neighbourhood grows fast, a narrow one shrinks to the floor.
EdgeReach nextReach(EdgeReach reach, float gain) {
    return {std::max(6.0f, reach.sigmaColor * gain),
            std::max(0.5f, reach.sigmaSpace * reach.sigmaSpace)};
}

int pixelsToSelect(int perTap, int side) {
    return static_cast<int>(
        std::min<std::int64_t>(std::int64_t{perTap} * side, std::numeric_limits<int>::max()));
}

/// Share of the renewed image in the blend: about half in the first iteration, all in the last.
float blendWeight(int iteration) {
    const float rest = static_cast<float>(kIterations - iteration) - 0.999f;
    return std::min(1.0f, 1.0f / rest);
}

} // namespace

int CBlurEst::setup(const cv::Mat& image, const cv::Mat& kernel, CProgressSpan& progress) {
    m_progress = &progress;
    if (image.type() != CV_8UC1) {
        throw "CBlurEst:setup - imB is wrong type";
    }
    if (kernel.empty()) {
        throw "CBlurEst:setup - kernel.empty()";
    }
    m_imPyr[0] = image;
    m_kPyr[0] = kernel;
    m_pyrLvls = buildPyramid(m_imPyr, m_kPyr);
    std::fill_n(m_lvlIters.begin(), m_pyrLvls + 1, kIterations);
    return 1;
}

int CBlurEst::estimate(float strength) {
    m_edgeSmooth = strength;
    const auto shares = levelShares(m_pyrLvls);
    for (int level = m_pyrLvls; level >= 0; --level) {
        const auto index = static_cast<std::size_t>(level);
        m_progress->begin(shares[index], kStepsPerIteration * m_lvlIters[index]);
        estimateLvl(level);
    }
    return 1;
}

cv::Mat CBlurEst::firstLatent(int level) const {
    const auto index = static_cast<std::size_t>(level);
    if (level == m_pyrLvls) {
        return m_imPyr[index].clone();
    }
    cv::Mat latent;
    cv::pyrUp(m_imPyr[index + 1], latent, m_imPyr[index].size());
    return latent;
}

void CBlurEst::estimateLvl(int level) {
    const cv::Mat& blurred = m_imPyr[static_cast<std::size_t>(level)];
    cv::Mat& kernel = m_kPyr[static_cast<std::size_t>(level)];
    const int side = std::max(kernel.cols, kernel.rows);
    const KernelSolveSettings solveSettings{m_psfLambda, m_psfW0, m_psfW1, m_psfW2, m_kFloor};
    cv::Mat latent = firstLatent(level);
    cv::Mat edge;
    cv::Mat mask;
    cv::Mat renewed(blurred.size(), CV_8UC1);
    EdgeReach reach = firstReach(level, level == m_pyrLvls, (side - 1) / 2);

    for (int iteration = 0; iteration < kIterations; ++iteration) {
        const bool isLastOfAll = level == 0 && iteration == kIterations - 1;
        estEdge(latent, edge, kBilateralDiameter, reach.sigmaColor, reach.sigmaSpace, 1);
        if (iteration == 0) {
            m_edgeMask.compute(edge, mask, pixelsToSelect(m_maskPerTap, side), side);
        }
        reach = nextReach(reach, m_edgeGain);
        m_progress->advance();

        if (isLastOfAll && m_edgeSmooth > 0.1) {
            softenEdges(edge, latent, m_edgeSmooth);
        }
        estKernel(edge, mask, blurred, kernel, solveSettings, *m_progress);
        m_progress->advance();

        // Nothing reads the latent image after the last kernel.
        if (!isLastOfAll) {
            deconvLevel(blurred, kernel, renewed, *m_progress);
            alphaBlend(renewed, latent, blendWeight(iteration));
        }
        m_progress->advance();
    }
    if (level != 0) {
        m_imPyr[static_cast<std::size_t>(level)] = latent;
    }
}

} // namespace vel
