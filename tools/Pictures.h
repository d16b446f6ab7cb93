#pragma once

#include "hosts/command/pictures/ImageFile.h"

#include <filesystem>
#include <opencv2/core.hpp>

namespace velorn::tools {

/// Reads a file's colours as CV_32FC3, red first, 0..255. Grey becomes three equal channels.
cv::Mat readColours(const std::filesystem::path& path);

/// `colours` (CV_32FC3, 0..255) rounded to 8 bits.
RgbPixels eightBits(const cv::Mat& colours);

/// Writes `colours` (CV_32FC3, 0..255), rounded to 8 bits.
void writeColours(const std::filesystem::path& path, const cv::Mat& colours);

/// `pixels` (8 bits) as CV_32FC3.
cv::Mat coloursOf(const RgbPixels& pixels);

/// Peak signal-to-noise ratio of two pictures of equal size, in decibels; white is 255.
double decibels(const cv::Mat& first, const cv::Mat& second);

} // namespace velorn::tools
