#pragma once

#include <opencv2/imgproc.hpp>

namespace vel::test {

/// Filled shapes of many sizes with sharp edges in all directions.
/// @param type CV_8UC1 or CV_8UC3
inline cv::Mat drawnScene(cv::Size size, int type) {
    cv::Mat image(size, type, cv::Scalar::all(120));
    cv::RNG random(11);
    const int shapes = size.area() / 300 + 1;
    for (int i = 0; i < shapes; ++i) {
        const cv::Point centre(random.uniform(0, size.width), random.uniform(0, size.height));
        const int grey = random.uniform(10, 245);
        const cv::Scalar colour(grey, 255 - (255 - grey) / 2, grey / 2 + 10);
        if (i % 2 == 0) {
            cv::circle(image, centre, random.uniform(3, 18), colour, cv::FILLED, cv::LINE_AA);
        } else {
            const cv::Size2f sides(static_cast<float>(random.uniform(4, 40)),
                                   static_cast<float>(random.uniform(4, 20)));
            cv::Point2f corners[4];
            cv::RotatedRect(centre, sides, static_cast<float>(random.uniform(0, 90)))
                .points(corners);
            const cv::Point polygon[] = {corners[0], corners[1], corners[2], corners[3]};
            cv::fillConvexPoly(image, polygon, 4, colour, cv::LINE_AA);
        }
    }
    return image;
}

/// `image` convolved with `kernel`, CV_32FC1.
inline cv::Mat blurredWith(const cv::Mat& image, const cv::Mat& kernel) {
    cv::Mat turned;
    cv::flip(kernel, turned, -1);
    cv::Mat out;
    cv::filter2D(image, out, -1, turned, cv::Point(-1, -1), 0, cv::BORDER_REPLICATE);
    return out;
}

} // namespace vel::test
