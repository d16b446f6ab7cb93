// Prints the similarity of kernels to a reference, and draws them side by side.
#include "hosts/command/kernels/KernelFile.h"
#include "hosts/command/terminal/Failure.h"
#include "KernelLikeness.h"
#include "Pictures.h"
#include "runTool.h"

#include <iomanip>
#include <iostream>
#include <opencv2/imgproc.hpp>

namespace {

using namespace velorn;
using namespace velorn::tools;

constexpr int kPanelSide = 300;
constexpr int kGap = 12;
constexpr int kCaptionHeight = 34;
const cv::Scalar kPaper(250, 250, 248);
const cv::Scalar kInk(30, 30, 34);

struct Panel {
    BlurKernel kernel;
    std::string caption;
};

/// Draws the kernel in the centre of a square of `side` by `side` weights. The largest weight is
/// white.
cv::Mat drawPanel(const Panel& panel, int side) {
    const float peak = std::ranges::max(panel.kernel.weights);
    cv::Mat weights(side, side, CV_32FC3, cv::Scalar::all(0));
    for (int r = 0; r < panel.kernel.height; ++r) {
        for (int c = 0; c < panel.kernel.width; ++c) {
            const float level = 255.0f * panel.kernel.at(r, c) / peak;
            weights.at<cv::Vec3f>(r + (side - panel.kernel.height) / 2,
                                  c + (side - panel.kernel.width) / 2) = {level, level, level};
        }
    }
    cv::Mat square;
    cv::resize(weights, square, {kPanelSide, kPanelSide}, 0, 0, cv::INTER_NEAREST);
    cv::Mat drawn;
    cv::copyMakeBorder(square, drawn, kGap + kCaptionHeight, kGap, kGap, kGap, cv::BORDER_CONSTANT,
                       kPaper);
    cv::putText(drawn, panel.caption, {kGap + 2, kGap + kCaptionHeight - 11},
                cv::FONT_HERSHEY_DUPLEX, 0.62, kInk, 1, cv::LINE_AA);
    return drawn;
}

void writeSheet(const std::string& path, const std::vector<Panel>& panels) {
    int side = 0;
    for (const Panel& panel : panels) {
        side = std::max(side, panel.kernel.largerSide());
    }
    std::vector<cv::Mat> drawn;
    for (const Panel& panel : panels) {
        drawn.push_back(drawPanel(panel, side));
    }
    cv::Mat sheet;
    cv::hconcat(drawn, sheet);
    writeColours(path, sheet);
}

void compare(const std::vector<std::string>& files, const std::vector<std::string>& labels,
             const std::string& sheet) {
    std::vector<Panel> panels;
    for (std::size_t i = 0; i < files.size(); ++i) {
        const std::string label =
            i < labels.size() ? labels[i] : std::filesystem::path(files[i]).filename().string();
        panels.push_back({KernelFile::read(files[i], std::nullopt), label});
        if (i > 0) {
            std::ostringstream value;
            value << std::fixed << std::setprecision(3)
                  << likeness(panels.back().kernel, panels.front().kernel);
            std::cout << std::left << std::setw(24) << label << "likeness " << value.str() << '\n';
            panels.back().caption += ", likeness " + value.str();
        }
    }
    if (!sheet.empty()) {
        writeSheet(sheet, panels);
    }
}

} // namespace

int main(int argc, char** argv) {
    ArgumentParser parser(
        "compareKernels",
        "Prints the similarity of blur kernels to the first of them. 1 means the same shape,\n"
        "at any position in the kernel.");
    std::vector<std::string> files;
    std::vector<std::string> labels;
    std::string sheet;
    parser.add("KERNELS", files, "Kernel files, the reference first").required();
    parser.add("--labels", labels, "Captions, one for each kernel").commaSeparated();
    parser.add("--sheet", sheet, "Write all kernels side by side to this file");
    return runTool("compareKernels", parser, argc, argv, [&] { compare(files, labels, sheet); });
}
