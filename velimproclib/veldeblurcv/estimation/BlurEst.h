#pragma once

#include "velimproclib/primitives/base/Memory.h"
#include "velimproclib/veldeblurcv/estimation/ProgressSpan.h"

#include <array>
#include <cstdint>
#include <memory>
#include <opencv2/core.hpp>

namespace vel {

/// Estimates the blur kernel of an image from the image alone, coarse to fine.
///
/// On each level of an image pyramid three iterations alternate: predict sharp edges from the
/// latent image (bilateral filter and shock step), solve the kernel from the edge image and the
/// blurred image on the strongest edge pixels, and renew the latent image by deconvolution. The
/// latent image is carried to the next finer level; kernels are not. One object serves one call,
/// from the calling thread: construct, `setup`, `estimate`, read `m_kPyr[0]`.
class CBlurEst {
public:
    static constexpr int kMostLevels = 8;

    /// @throws const char* "CBlurEst::CBlurEst - ippsMalloc_32s failed" when memory is exhausted
    CBlurEst();

    /// Builds the pyramid.
    /// @param image CV_8UC1 of at least one pixel, shared
    /// @param kernel CV_32FC1 of odd sides, shared: it receives the result
    /// @param progress sink of the progress, on a record; null tells no one
    /// @return 1
    /// @throws const char* for an image of another type or a kernel without data; cv::Exception
    ///         when memory is exhausted
    int setup(const cv::Mat& image, const cv::Mat& kernel, CProgressSpan* progress);

    /// Estimates the kernel into `m_kPyr[0]`, once: sum 1, no negative entries, or not-a-number
    /// entries when the image has no edge to learn from.
    /// @param strength sigma that softens the finest level's last edge image; 0.1 and below is off
    /// @return 1
    /// @throws whatever `estKernel` and `deconvLevel` throw
    int estimate(float strength);

    /// One level, three iterations. Reads the latent image that the coarser level left in
    /// `m_imPyr[level + 1]`, writes `m_kPyr[level]`, and above level 0 leaves its latent image in
    /// `m_imPyr[level]`.
    void estimateLvl(int level);

    /// Selects the pixels on which the kernel equations are written: strong, clean edges, about
    /// `count` of them, none in the outer band of `max(side, 8)` pixels.
    ///
    /// What counts is how far a pixel stands from the mean of its neighbourhood once medians have
    /// smoothed the image. All pixels of the weakest response that is needed are taken together, so
    /// there may be more than `count`; responses below 4 grey levels are never taken. A histogram
    /// stands in for sorting.
    /// @param edge CV_8UC1
    /// @param mask CV_8UC1, created; a selected pixel holds its response, the others 0
    /// @param side larger side of the kernel; up to 3 the medians are 3 pixels long, above that 5
    void computeMask(const cv::Mat& edge, cv::Mat& mask, int count, int side);

    /// Solves the kernel of a level from its edge image and its blurred image; see the function of
    /// that name.
    /// @return 1
    int estKernel(const cv::Mat& edge, const cv::Mat& mask, const cv::Mat& blurred,
                  cv::Mat& kernel);

    /// Renews an image by deconvolution with `kernel`, block by block. A kernel of not-a-number
    /// entries gives black.
    /// @param mode 0 only copies `in` to `out`
    /// @param in,out CV_8UC1 of one size
    /// @throws const char* from `CBlockProcP1` and `CDeconvHL`; when memory is exhausted
    ///         cv::Exception or std::bad_alloc
    void deconvLevel(int mode, const cv::Mat& in, const cv::Mat& kernel, cv::Mat& out);

    /// Block side for a level image: 256, 512 or 1024 from its larger side. Above 1024 it is 512
    /// again: the image is cut into blocks rather than restored in one.
    static int deconvBlockSize(int width, int height);

    std::int32_t m_pyrLvls = 0; ///< index of the coarsest level; 0 is the finest
    std::array<cv::Mat, kMostLevels> m_imPyr;
    std::array<cv::Mat, kMostLevels> m_kPyr;
    std::array<std::int32_t, kMostLevels> m_lvlIters{};
    float m_psfLambda = 0.001f;
    float m_psfW0 = 0.0f;
    float m_psfW1 = 1.0f;
    float m_psfW2 = 1.0f;
    float m_edgeGain = 1.0f;
    float m_edgeSmooth = 0.0f;
    std::int32_t m_maskPerTap = 2000; ///< pixels kept per unit of kernel side
    float m_kFloor = 0.05f;           ///< kernel floor as a fraction of the peak

private:
    struct AlignedFree {
        void operator()(std::int32_t* block) const noexcept { alignedFree(block); }
    };
    using Histogram = std::unique_ptr<std::int32_t[], AlignedFree>;

    void buildPyramid();
    cv::Mat firstLatent(int level) const;
    int thresholdFor(int count) const;
    void softenEdges(cv::Mat& edge, cv::Mat& scratch) const;
    void advanceProgress();

    Histogram m_hist;
    Histogram m_histLevels;
    float m_altWeight = 0.01f; ///< read by nothing
    CProgressSpan* m_progress = nullptr;
};

} // namespace vel
