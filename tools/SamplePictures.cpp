#include "SamplePictures.h"

#include "Degradation.h"
#include "Pictures.h"
#include "Scene.h"

#include <algorithm>

namespace velorn::tools {

std::vector<NamedPicture> picturesFrom(std::span<const std::string> files) {
    std::vector<NamedPicture> pictures;
    for (const std::string& file : files) {
        const std::size_t equals = file.find('=');
        if (equals == std::string::npos) {
            pictures.push_back({std::filesystem::path(file).stem().string(), readColours(file)});
        } else {
            pictures.push_back({file.substr(0, equals), readColours(file.substr(equals + 1))});
        }
    }
    return pictures;
}

std::vector<NamedPicture> drawnViews(int width, int height) {
    const cv::Mat scene = drawScene(1024, 768, 0, 1);
    const auto view = [&](const char* name, int left, int top) {
        return NamedPicture{name, scene(cv::Rect(left, top, width, height)).clone()};
    };
    return {view("drawn house", 180, 40), view("drawn shop", 400, 244),
            view("drawn garden", 0, 244)};
}

double Photograph::decibels() const {
    return decibelsOf(taken);
}

double Photograph::decibelsOf(const RgbPixels& restored) const {
    return tools::decibels(sharp, coloursOf(restored));
}

double Photograph::decibelsWhenMoved(const RgbPixels& restored) const {
    const cv::Mat colours = coloursOf(restored);
    const cv::Rect inside(kReach, kReach, sharp.cols - 2 * kReach, sharp.rows - 2 * kReach);
    double best = 0.0;
    for (int down = -kReach; down <= kReach; ++down) {
        for (int right = -kReach; right <= kReach; ++right) {
            const cv::Mat moved = colours(inside + cv::Point(right, down));
            best = std::max(best, tools::decibels(sharp(inside), moved));
        }
    }
    return best;
}

Photograph photographOf(const cv::Mat& picture, const BlurKernel& kernel, double noise,
                        std::uint32_t seed) {
    const cv::Mat blurred = withNoise(blurInside(picture, kernel), noise, seed);
    const cv::Rect inside(kernel.width / 2, kernel.height / 2, blurred.cols, blurred.rows);
    return {picture(inside).clone(), eightBits(blurred)};
}

} // namespace velorn::tools
