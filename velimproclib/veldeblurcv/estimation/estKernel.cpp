#include "velimproclib/veldeblurcv/estimation/estKernel.h"

#include "velimproclib/veldeblurcv/estimation/PSFEst.h"

namespace vel {

int estKernel(const cv::Mat& edge, const cv::Mat& mask, const cv::Mat& blurred, cv::Mat& kernel,
              const KernelSolveSettings& settings, CProgressSpan* progress) {
    CPSFEst solver;
    if (kernel.cols % 2 == 0 || kernel.rows % 2 == 0) {
        throw "CBlurEst::estKernel - kernel.size() is not odd";
    }
    solver.setup(kernel.size(), edge.size(), cv::Point(kernel.cols / 2, kernel.rows / 2),
                 settings.lambda, settings.weight0, settings.weight1, settings.weight1,
                 settings.weight2, settings.weight2, settings.weight2);
    solver.setProgress(progress);
    solver.computeLA(edge, blurred, mask);
    solver.computePSF().copyTo(kernel);
    cleanKernel(kernel, settings.floor);
    return 1;
}

void cleanKernel(cv::Mat& kernel, float floor) {
    double peak = 0.0;
    cv::minMaxLoc(kernel, nullptr, &peak);
    const auto threshold = static_cast<float>(double{floor} * peak);
    float sum = 0.0f;
    for (int row = 0; row < kernel.rows; ++row) {
        for (int column = 0; column < kernel.cols; ++column) {
            float& entry = kernel.at<float>(row, column);
            entry = entry < threshold ? 0.0f : static_cast<float>(entry - 0.5 * threshold);
            sum += entry;
        }
    }
    kernel.convertTo(kernel, kernel.type(), 1.0 / double{sum}, 0.0);
}

} // namespace vel
