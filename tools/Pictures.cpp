#include "Pictures.h"

#include "hosts/command/files/TemporaryFile.h"
#include "hosts/command/pictures/PixelScale.h"

#include <algorithm>
#include <cmath>

namespace velorn::tools {
namespace {

cv::Mat coloursOf(const RgbPixels& pixels, double white) {
    cv::Mat colours(pixels.height, pixels.width, CV_32FC3);
    std::visit(
        [&](const auto& samples) {
            std::transform(samples.begin(), samples.end(), colours.ptr<float>(),
                           [white](auto v) { return static_cast<float>(v * 255.0 / white); });
        },
        pixels.samples);
    return colours;
}

} // namespace

cv::Mat readColours(const std::filesystem::path& path) {
    const RgbPixels pixels = ImageFile::read(path).rgb();
    return coloursOf(pixels, pixels.isEightBit() ? 255.0 : kFifteenBitWhite);
}

cv::Mat coloursOf(const RgbPixels& pixels) {
    return coloursOf(pixels, 255.0);
}

RgbPixels eightBits(const cv::Mat& colours) {
    RgbPixels pixels{colours.cols, colours.rows, {}};
    auto& samples = pixels.samples.emplace<std::vector<std::uint8_t>>();
    for (int y = 0; y < colours.rows; ++y) {
        const auto* row = colours.ptr<float>(y);
        std::transform(row, row + 3 * colours.cols, std::back_inserter(samples), [](float v) {
            return static_cast<std::uint8_t>(std::lround(std::clamp(v, 0.0f, 255.0f)));
        });
    }
    return pixels;
}

void writeColours(const std::filesystem::path& path, const cv::Mat& colours) {
    ImageFile picture(colours.cols, colours.rows, 3, 8);
    picture.setRgb(eightBits(colours));
    TemporaryFile file(path);
    file.write(picture.encode(path));
    file.commit();
}

double decibels(const cv::Mat& first, const cv::Mat& second) {
    const double distance = cv::norm(first, second, cv::NORM_L2SQR);
    const auto samples = static_cast<double>(first.total()) * first.channels();
    return 10.0 * std::log10(255.0 * 255.0 * samples / distance);
}

} // namespace velorn::tools
