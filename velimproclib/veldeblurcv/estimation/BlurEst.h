#pragma once

#include "velimproclib/veldeblurcv/estimation/edges/EdgeMask.h"

#include <array>
#include <cstdint>
#include <opencv2/core.hpp>

namespace vel {

class CProgressSpan;

/// Estimates the blur kernel of an image from the image alone, coarse to fine.
///
/// The levels of an image pyramid (levels/buildPyramid) are processed from the coarsest to the
/// finest, three iterations on each. An iteration
///   1. predicts sharp edges from the latent image (edges/estEdge),
///   2. in the first iteration selects the pixels of the kernel equations (edges/EdgeMask),
///   3. solves the kernel from edge image and blurred image and normalises it (solver/estKernel),
///   4. renews the latent image by deconvolution with that kernel (levels/deconvLevel) and blends
///      it with the previous one (levels/alphaBlend).
/// The next finer level starts from the latent image, enlarged. Kernels do not pass between levels.
///
/// One object serves one call on the calling thread: construct, `setup`, `estimate`, read
/// `m_kPyr[0]`.
class CBlurEst {
public:
    static constexpr int kMostLevels = 8;

    /// Builds the pyramid.
    /// @param image CV_8UC1 of at least one pixel, shared
    /// @param kernel CV_32FC1 of odd sides, shared: it receives the result
    /// @param progress receives the progress of `estimate`; must outlive it
    /// @return 1
    /// @throws const char* for an image of another type or a kernel without data; cv::Exception
    ///         when memory is exhausted
    int setup(const cv::Mat& image, const cv::Mat& kernel, CProgressSpan& progress);

    /// Estimates the kernel into `m_kPyr[0]`, once: sum 1 and no negative entries, or NaN
    /// entries when the image has no edge.
    /// @param strength sigma that softens the last edge image of the finest level; 0.1 and below
    ///                 leaves it as it is
    /// @return 1
    /// @throws const char* from the stages; cv::Exception or std::bad_alloc when memory is
    /// exhausted
    int estimate(float strength);

    /// The three iterations of one level. Reads the latent image of the coarser level in
    /// `m_imPyr[level + 1]`, writes `m_kPyr[level]` and, above level 0, replaces `m_imPyr[level]`
    /// by the level's latent image.
    void estimateLvl(int level);

    std::int32_t m_pyrLvls = 0; ///< index of the coarsest level; 0 is the finest
    std::array<cv::Mat, kMostLevels> m_imPyr;
    std::array<cv::Mat, kMostLevels> m_kPyr;
    std::array<std::int32_t, kMostLevels> m_lvlIters{}; ///< scales the progress, not the loop
    float m_psfLambda = 0.001f;
    float m_psfW0 = 0.0f;
    float m_psfW1 = 1.0f;
    float m_psfW2 = 1.0f;
    float m_edgeGain = 1.0f;
    float m_edgeSmooth = 0.0f;
    std::int32_t m_maskPerTap = 2000; ///< pixels selected per unit of kernel side
    float m_kFloor = 0.05f;           ///< kernel floor as a fraction of the peak

private:
    cv::Mat firstLatent(int level) const;

    EdgeMask m_edgeMask;
    [[maybe_unused]] float m_altWeight = 0.01f; ///< read by nothing
    CProgressSpan* m_progress = nullptr;
};

} // namespace vel
