// Tells how near pictures come to a reference, and shows them side by side with a magnified part.
#include "Failure.h"
#include "Pictures.h"

#include <CLI/CLI.hpp>
#include <iomanip>
#include <iostream>
#include <opencv2/imgproc.hpp>

namespace {

using namespace velorn;
using namespace velorn::tools;

constexpr int kPanelWidth = 480;
constexpr int kGap = 12;
constexpr int kCaptionHeight = 34;
const cv::Scalar kPaper(250, 250, 248);
const cv::Scalar kInk(30, 30, 34);
const cv::Scalar kFrame(230, 40, 40);

struct Panel {
    cv::Mat picture;
    std::string caption;
};

cv::Mat scaledTo(const cv::Mat& picture, int width, int method) {
    const int height = picture.rows * width / picture.cols;
    cv::Mat scaled;
    cv::resize(picture, scaled, {width, height}, 0, 0, method);
    return scaled;
}

/// The picture reduced, with the magnified part framed, and the part below it pixel by pixel.
cv::Mat drawPanel(const Panel& panel, const cv::Rect& inset) {
    cv::Mat whole = scaledTo(panel.picture, kPanelWidth, cv::INTER_AREA);
    const double scale = static_cast<double>(kPanelWidth) / panel.picture.cols;
    cv::rectangle(whole, cv::Point(cv::Point2d(inset.tl()) * scale),
                  cv::Point(cv::Point2d(inset.br()) * scale), kFrame, 2);
    const cv::Mat part = scaledTo(panel.picture(inset), kPanelWidth, cv::INTER_NEAREST);
    cv::Mat drawn(kCaptionHeight + whole.rows + kGap + part.rows, kPanelWidth, CV_32FC3, kPaper);
    cv::putText(drawn, panel.caption, {2, kCaptionHeight - 11}, cv::FONT_HERSHEY_DUPLEX, 0.62, kInk,
                1, cv::LINE_AA);
    whole.copyTo(drawn(cv::Rect(0, kCaptionHeight, whole.cols, whole.rows)));
    part.copyTo(drawn(cv::Rect(0, kCaptionHeight + whole.rows + kGap, part.cols, part.rows)));
    return drawn;
}

cv::Mat drawSheet(const std::vector<Panel>& panels, const cv::Rect& inset) {
    cv::Mat sheet;
    for (const Panel& panel : panels) {
        const cv::Mat drawn = drawPanel(panel, inset);
        const int left = sheet.empty() ? kGap : 0;
        cv::Mat framed;
        cv::copyMakeBorder(drawn, framed, kGap, kGap, left, kGap, cv::BORDER_CONSTANT, kPaper);
        if (sheet.empty()) {
            sheet = framed;
        } else {
            cv::hconcat(sheet, framed, sheet);
        }
    }
    return sheet;
}

std::string decibelText(double value) {
    std::ostringstream text;
    text << std::fixed << std::setprecision(2) << value << " dB";
    return text.str();
}

cv::Rect insetIn(const cv::Mat& picture, const std::vector<int>& wanted) {
    const cv::Rect inset(wanted[0], wanted[1], wanted[2], wanted[3]);
    const cv::Rect inside = inset & cv::Rect(0, 0, picture.cols, picture.rows);
    if (inside.area() == 0) {
        throw Failure("the inset lies outside the picture");
    }
    return inside;
}

void compare(const std::string& reference, const std::vector<std::string>& others,
             const std::vector<std::string>& labels, const std::string& sheet,
             const std::vector<int>& inset) {
    const cv::Mat truth = readColours(reference);
    const auto labelOf = [&](std::size_t i, const std::string& path) {
        return i < labels.size() ? labels[i] : std::filesystem::path(path).filename().string();
    };
    std::vector<Panel> panels{{truth, labelOf(0, reference)}};
    for (std::size_t i = 0; i < others.size(); ++i) {
        const cv::Mat picture = readColours(others[i]);
        if (picture.size() != truth.size()) {
            throw Failure(velorn::quoted(others[i]) + " and " + velorn::quoted(reference) +
                          " differ in size");
        }
        const std::string label = labelOf(i + 1, others[i]);
        const std::string value = decibelText(decibels(truth, picture));
        std::cout << std::left << std::setw(24) << label << value << '\n';
        panels.push_back({picture, label + ", " + value});
    }
    if (!sheet.empty()) {
        writeColours(sheet, drawSheet(panels, insetIn(truth, inset)));
    }
}

} // namespace

int main(int argc, char** argv) {
    CLI::App app{"Prints the peak signal to noise ratio of pictures against a reference."};
    std::string reference;
    std::vector<std::string> others;
    std::vector<std::string> labels;
    std::string sheet;
    std::vector<int> inset{0, 0, 160, 120};
    app.add_option("REFERENCE", reference, "The picture to compare with")->required();
    app.add_option("PICTURES", others, "Pictures of the same size")->required();
    app.add_option("--labels", labels, "Names shown, the reference's first")->delimiter(',');
    app.add_option("--sheet", sheet, "Where to write all pictures side by side");
    app.add_option("--inset", inset, "X,Y,WIDTH,HEIGHT of the part that is magnified")
        ->delimiter(',')
        ->expected(4);
    CLI11_PARSE(app, argc, argv);
    try {
        compare(reference, others, labels, sheet, inset);
        return 0;
    } catch (const std::exception& failure) {
        std::cerr << "comparePictures: " << failure.what() << '\n';
        return 1;
    }
}
