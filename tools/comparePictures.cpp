// Prints the distance of pictures from a reference, and draws them on one sheet with a magnified
// part of each.
#include "hosts/command/files/fileFailures.h"
#include "Pictures.h"
#include "runTool.h"

#include <algorithm>
#include <iomanip>
#include <iostream>
#include <limits>
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

/// Draws the reduced picture with a frame around the inset, and below it the magnified inset.
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

/// Arranges the panels in rows of at most `columns`, from left to right and from top to bottom.
cv::Mat drawSheet(const std::vector<Panel>& panels, const cv::Rect& inset, int columns) {
    const int count = static_cast<int>(panels.size());
    const int across = std::min(columns, count);
    const int down = (count + across - 1) / across;
    const cv::Size cell = drawPanel(panels[0], inset).size() + cv::Size(kGap, kGap);
    cv::Mat sheet(down * cell.height + kGap, across * cell.width + kGap, CV_32FC3, kPaper);
    for (int i = 0; i < count; ++i) {
        const cv::Mat drawn = drawPanel(panels[static_cast<std::size_t>(i)], inset);
        const cv::Point place(i % across * cell.width + kGap, i / across * cell.height + kGap);
        drawn.copyTo(sheet(cv::Rect(place, drawn.size())));
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

struct Request {
    std::string reference;
    std::vector<std::string> others;
    std::vector<std::string> labels;
    std::string sheet;
    std::vector<int> inset{0, 0, 160, 120};
    int columns = std::numeric_limits<int>::max();
    bool referenceIsLast = false;
};

std::string labelOf(const Request& request, std::size_t i, const std::string& path) {
    return i < request.labels.size() ? request.labels[i]
                                     : std::filesystem::path(path).filename().string();
}

Panel comparedPanel(const Request& request, const cv::Mat& truth, std::size_t i) {
    const std::string& path = request.others[i];
    const cv::Mat picture = readColours(path);
    if (picture.size() != truth.size()) {
        throw Failure(velorn::quoted(path) + " and " + velorn::quoted(request.reference) +
                      " differ in size");
    }
    const std::string label = labelOf(request, i + 1, path);
    const std::string value = decibelText(decibels(truth, picture));
    std::cout << std::left << std::setw(24) << label << value << '\n';
    return {picture, label + ", " + value};
}

void compare(const Request& request) {
    const cv::Mat truth = readColours(request.reference);
    std::vector<Panel> panels{{truth, labelOf(request, 0, request.reference)}};
    for (std::size_t i = 0; i < request.others.size(); ++i) {
        panels.push_back(comparedPanel(request, truth, i));
    }
    if (request.referenceIsLast) {
        std::ranges::rotate(panels, panels.begin() + 1);
    }
    if (!request.sheet.empty()) {
        writeColours(request.sheet,
                     drawSheet(panels, insetIn(truth, request.inset), request.columns));
    }
}

} // namespace

int main(int argc, char** argv) {
    ArgumentParser parser("comparePictures",
                          "Prints the peak signal-to-noise ratio of pictures against a reference.");
    Request request;
    parser.add("REFERENCE", request.reference, "Picture to compare with").required();
    parser.add("PICTURES", request.others, "Pictures of the same size").required();
    parser.add("--labels", request.labels, "Captions, the reference's first").commaSeparated();
    parser.add("--sheet", request.sheet, "Write all pictures side by side to this file");
    parser.add("--columns", request.columns, "Largest number of pictures in a row").within(1, 1000);
    parser.add("--reference-last", request.referenceIsLast, "Show the reference last");
    parser.add("--inset", request.inset, "X,Y,WIDTH,HEIGHT of the magnified part")
        .commaSeparated(4);
    return runTool("comparePictures", parser, argc, argv, [&] { compare(request); });
}
