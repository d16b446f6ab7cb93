#include "velimproclib/veldeblurcv/estimation/solver/SelectedPixels.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <random>

namespace {

using vel::PixelPosition;
using vel::PixelRange;
using vel::SelectedPixels;

/// A mask that selects about one pixel in `rarity`, with random values.
cv::Mat randomMask(int width, int height, unsigned rarity, std::mt19937& random) {
    cv::Mat mask(height, width, CV_8UC1);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const bool selected = random() % rarity == 0;
            mask.at<std::uint8_t>(y, x) =
                static_cast<std::uint8_t>(selected ? 1 + random() % 255 : 0);
        }
    }
    return mask;
}

std::vector<PixelPosition> plainScan(const cv::Mat& mask, PixelRange rows, PixelRange columns) {
    std::vector<PixelPosition> found;
    for (auto y = static_cast<int>(rows.begin); y < rows.end; ++y) {
        for (auto x = static_cast<int>(columns.begin); x < columns.end; ++x) {
            if (mask.at<std::uint8_t>(y, x) != 0) {
                found.push_back({y, x});
            }
        }
    }
    return found;
}

struct Scan {
    std::vector<PixelPosition> found;
    int rowsTaken = 0;
    int batches = 0;
};

/// All batches, of which only the last may be incomplete.
Scan scanned(const cv::Mat& mask, PixelRange walked, PixelRange rows, PixelRange columns,
             int batchPixels) {
    SelectedPixels pixels(mask, walked, rows, columns, batchPixels);
    EXPECT_EQ(pixels.capacity(), static_cast<std::size_t>(batchPixels));
    Scan scan;
    std::vector<PixelPosition> batch;
    bool full = true;
    for (pixels.next(batch, [&] { ++scan.rowsTaken; }); !batch.empty();
         pixels.next(batch, [&] { ++scan.rowsTaken; })) {
        EXPECT_TRUE(full);
        full = batch.size() == pixels.capacity();
        ++scan.batches;
        scan.found.insert(scan.found.end(), batch.begin(), batch.end());
    }
    return scan;
}

TEST(SelectedPixels, BatchesOfAnyLengthHoldThePixelsOfThePlainScan) {
    std::mt19937 random(81);
    for (int i = 0; i < 60; ++i) {
        const int width = 1 + static_cast<int>(random() % 67);
        const int height = 1 + static_cast<int>(random() % 9);
        const cv::Mat mask = randomMask(width, height, 1U << (i % 6), random);
        const PixelRange rows{0, height};
        const PixelRange columns{0, width};
        const std::vector<PixelPosition> expected = plainScan(mask, rows, columns);
        for (const int batchPixels : {1, 2, 7, 64, 1000}) {
            const Scan scan = scanned(mask, rows, rows, columns, batchPixels);
            ASSERT_EQ(scan.found, expected) << width << " by " << height;
            EXPECT_EQ(scan.rowsTaken, height);
        }
    }
}

TEST(SelectedPixels, OnlyTheGivenRowsAndColumnsCount) {
    std::mt19937 random(82);
    const cv::Mat mask = randomMask(40, 30, 2, random);
    for (const auto& [rows, columns] : {std::pair<PixelRange, PixelRange>{{3, 27}, {5, 38}},
                                        {{0, 1}, {39, 40}},
                                        {{29, 30}, {0, 40}}}) {
        EXPECT_EQ(scanned(mask, rows, rows, columns, 16).found, plainScan(mask, rows, columns));
    }
}

TEST(SelectedPixels, EveryWalkedRowIsReportedEvenWithoutPixels) {
    const cv::Mat empty(20, 20, CV_8UC1, cv::Scalar(0));
    const cv::Mat full(20, 20, CV_8UC1, cv::Scalar(1));
    EXPECT_EQ(scanned(empty, {4, 17}, {4, 17}, {0, 20}, 8).rowsTaken, 13);
    // Rows in which pixels do not count, and columns of which none counts.
    EXPECT_EQ(scanned(full, {4, 17}, {10, 11}, {0, 20}, 8).rowsTaken, 13);
    EXPECT_EQ(scanned(full, {4, 17}, {10, 11}, {0, 20}, 8).found.size(), 20U);
    EXPECT_EQ(scanned(full, {4, 17}, {4, 17}, {9, 9}, 8).rowsTaken, 13);
    EXPECT_EQ(scanned(full, {4, 17}, {4, 17}, {9, 3}, 8).batches, 0);
}

TEST(SelectedPixels, WithoutARowNoPixelIsFound) {
    const cv::Mat full(5, 5, CV_8UC1, cv::Scalar(1));
    for (const PixelRange none : {PixelRange{3, 3}, PixelRange{6, -1}}) {
        const Scan scan = scanned(full, none, none, {0, 5}, 8);
        EXPECT_EQ(scan.rowsTaken, 0);
        EXPECT_EQ(scan.batches, 0);
    }
}

} // namespace
