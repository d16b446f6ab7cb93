#include "velimproclib/veldeblurcv/estimation/solver/estKernel.h"

#include "velimproclib/veldeblurcv/estimation/solver/normaliseEstimate.h"
#include "velimproclib/veldeblurcv/estimation/solver/PSFEst.h"

namespace vel {

int estKernel(const cv::Mat& edge, const cv::Mat& mask, const cv::Mat& blurred, cv::Mat& kernel,
              const KernelSolveSettings& settings, CProgressSpan& progress) {
    if (kernel.cols % 2 == 0 || kernel.rows % 2 == 0) {
        throw "CBlurEst::estKernel - kernel.size() is not odd";
    }
    CPSFEst solver(progress);
    solver.setup(kernel.size(), edge.size(), cv::Point(kernel.cols / 2, kernel.rows / 2),
                 settings.lambda, settings.weight0, settings.weight1, settings.weight1,
                 settings.weight2, settings.weight2, settings.weight2);
    solver.computeLA(edge, blurred, mask);
    solver.computePSF().copyTo(kernel);
    normaliseEstimate(kernel, settings.floor);
    return 1;
}

} // namespace vel
