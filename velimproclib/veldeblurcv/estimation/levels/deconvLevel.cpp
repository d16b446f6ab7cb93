#include "velimproclib/veldeblurcv/estimation/levels/deconvLevel.h"

#include "velimproclib/tiles/BlockProcP1.h"
#include "velimproclib/tiles/tileSide.h"
#include "velimproclib/veldeblurcv/deconvolution/DeconvHL.h"
#include "velimproclib/veldeblurcv/estimation/progress/ProgressSpan.h"

namespace vel {

namespace {

// The estimator deconvolves at this strength, whatever the host deblurs with later.
constexpr float kLambda = 2000.0f;
constexpr float kAlpha = 0.5f;

constexpr int kOverlap = 8;
constexpr int kBorder = 16;
constexpr int kTaper = 1;

} // namespace

void deconvLevel(const cv::Mat& in, const cv::Mat& kernel, cv::Mat& out, CProgressSpan& progress) {
    const int side = tileSideFor(in.cols, in.rows);
    CBlockProcP1 blocks;
    blocks.init(in, out, side, side, false, kOverlap, kBorder, kTaper);
    progress.beginSub(blocks.blocksAcross() * blocks.blocksDown());
    CDeconvHL deconv;
    deconv.setup(kernel, cv::Point(kernel.cols / 2, kernel.rows / 2), cv::Size(side, side), kLambda,
                 kAlpha, true);
    cv::Mat restored(side, side, CV_32FC1);
    while (cv::Mat* block = blocks.nextBlock()) {
        deconv.Proc(*block, restored);
        restored.copyTo(*block);
        blocks.doneABlock();
        progress.advance();
    }
    progress.endSub();
}

} // namespace vel
