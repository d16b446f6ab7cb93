// Runs the small Windows host on a bitmap.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <vector>
#include <windows.h>

namespace {

constexpr int kWidth = 331; // rows need padding
constexpr int kHeight = 290;
constexpr int kStep = (3 * kWidth + 3) / 4 * 4;
constexpr int kRadius = 3;

using Pixels = std::vector<std::uint8_t>;

std::uint8_t sharpSample(int x, int y, int c) {
    const bool isBar = (x / 11 + y / 17) % 2 == 0;
    const bool isRing = ((x - 150) * (x - 150) + (y - 90) * (y - 90)) / 1500 % 2 == 0;
    return static_cast<std::uint8_t>(50 + (isBar ? 70 : 0) + (isRing ? 80 : 0) + 10 * c);
}

/// A picture in which every sample is the mean over a disc of the given radius.
Pixels picture(int radius) {
    Pixels pixels(static_cast<std::size_t>(kStep) * kHeight);
    for (int y = 0; y < kHeight; ++y) {
        for (int i = 0; i < 3 * kWidth; ++i) {
            int sum = 0;
            int count = 0;
            for (int dy = -radius; dy <= radius; ++dy) {
                for (int dx = -radius; dx <= radius; ++dx) {
                    if (dx * dx + dy * dy <= radius * radius) {
                        sum += sharpSample(i / 3 + dx + radius, y + dy + radius, i % 3);
                        ++count;
                    }
                }
            }
            pixels[static_cast<std::size_t>(y * kStep + i)] =
                static_cast<std::uint8_t>(sum / count);
        }
    }
    return pixels;
}

/// The sharp picture, with the same displacement as the blurred one of `picture`.
Pixels sharpPicture() {
    Pixels pixels(static_cast<std::size_t>(kStep) * kHeight);
    for (int y = 0; y < kHeight; ++y) {
        for (int i = 0; i < 3 * kWidth; ++i) {
            pixels[static_cast<std::size_t>(y * kStep + i)] =
                sharpSample(i / 3 + kRadius, y + kRadius, i % 3);
        }
    }
    return pixels;
}

void writeBitmap(const std::filesystem::path& path, const Pixels& pixels) {
    BITMAPFILEHEADER start{};
    BITMAPINFOHEADER info{};
    start.bfType = 0x4D42;
    start.bfOffBits = sizeof start + sizeof info;
    start.bfSize = start.bfOffBits + static_cast<DWORD>(pixels.size());
    info.biSize = sizeof info;
    info.biWidth = kWidth;
    info.biHeight = kHeight;
    info.biPlanes = 1;
    info.biBitCount = 24;
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<const char*>(&start), sizeof start);
    file.write(reinterpret_cast<const char*>(&info), sizeof info);
    file.write(reinterpret_cast<const char*>(pixels.data()),
               static_cast<std::streamsize>(pixels.size()));
}

Pixels readPixels(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    file.seekg(sizeof(BITMAPFILEHEADER) + sizeof(BITMAPINFOHEADER));
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

double meanSquare(const Pixels& a, const Pixels& b) {
    double sum = 0.0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        const double difference = static_cast<double>(a[i]) - static_cast<double>(b[i]);
        sum += difference * difference;
    }
    return sum / static_cast<double>(a.size());
}

class DeblurBitmap : public ::testing::Test {
protected:
    DeblurBitmap() { std::filesystem::create_directories(folder); }
    ~DeblurBitmap() override {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }

    /// Runs the host. Stores its output in `printed` and returns its exit status.
    int run(const std::string& library) {
        const std::filesystem::path log = folder / "printed.txt";
        const std::string command = quoted(VELORN_DEBLUR_BITMAP) + " " + quoted(library) + " " +
                                    quoted((folder / "blurred.bmp").string()) + " " +
                                    quoted((folder / "restored.bmp").string()) + " 3 > " +
                                    quoted(log.string()) + " 2>&1";
        const int status = std::system(quoted(command).c_str());
        printed.clear();
        std::ifstream file(log);
        for (std::string line; std::getline(file, line);) {
            printed.push_back(line);
        }
        return status;
    }
    static std::string quoted(std::string text) {
        for (char& letter : text) {
            letter = letter == '/' ? '\\' : letter;
        }
        return '"' + text + '"';
    }

    std::filesystem::path folder = std::filesystem::temp_directory_path() /
                                   ("velorn-bitmap-" + std::to_string(GetCurrentProcessId()));
    std::vector<std::string> printed;
};

TEST_F(DeblurBitmap, RestoresABlurredBitmapAndPrintsItsProgress) {
    const Pixels sharp = sharpPicture();
    const Pixels blurred = picture(kRadius);
    writeBitmap(folder / "blurred.bmp", blurred);
    ASSERT_EQ(run(VELORN_LIBRARY), 0);
    const Pixels restored = readPixels(folder / "restored.bmp");
    ASSERT_EQ(restored.size(), sharp.size());
    EXPECT_LT(meanSquare(restored, sharp), 0.35 * meanSquare(blurred, sharp));
    ASSERT_GE(printed.size(), 2u);
    EXPECT_EQ(printed.back().substr(0, 10), "100 of 100");
    for (std::size_t i = 1; i < printed.size(); ++i) {
        EXPECT_GE(std::atoi(printed[i].c_str()), std::atoi(printed[i - 1].c_str()));
    }
}

TEST_F(DeblurBitmap, NamesTheFileThatItCannotLoadOrOpen) {
    EXPECT_EQ(run("no such library.dll"), 1);
    ASSERT_FALSE(printed.empty());
    EXPECT_NE(printed.front().find("cannot load"), std::string::npos);
    EXPECT_EQ(run(VELORN_LIBRARY), 1);
    ASSERT_FALSE(printed.empty());
    EXPECT_NE(printed.front().find("cannot open"), std::string::npos);
}

} // namespace
