// Digests of the results of the exports. Every platform and every processor must give the same
// ones: the inputs are made in integers, and the outputs are compared to the byte.
#include "tests/frame/LoadedLibrary.h"
#include "tests/support/Digest.h"
#include "tests/support/IccProfiles.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <initializer_list>
#include <opencv2/core/utility.hpp>
#include <optional>
#include <span>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace vel::test;

/// Interleaved colour pixels without padding: bars, rings and grain, softened by a box of 5 by 5.
/// 8 bits, or 16 on the 15-bit scale.
template <class T>
struct Picture {
    Picture(int pictureWidth, int pictureHeight)
        : width(pictureWidth), height(pictureHeight),
          samples(static_cast<std::size_t>(width * height * 3)) {}

    T& at(int x, int y, int c) {
        return samples[static_cast<std::size_t>((y * width + x) * 3 + c)];
    }
    int32_t step() const { return width * 3 * static_cast<int32_t>(sizeof(T)); }
    PlaneRecord record() const {
        return {sizeof(T) == 1 ? psC3U8 : psC3U16, samples.data(), step(), width, height};
    }

    int width;
    int height;
    std::vector<T> samples;
};

int sharpLevel(int x, int y, int c) {
    const int distance = (x - 70) * (x - 70) + (y - 50) * (y - 50);
    const bool isRing = distance / 700 % 2 == 0;
    const bool isBar = (x / 9 + y / 23) % 2 == 0;
    const auto grain = static_cast<int>((static_cast<unsigned>(x * 31 + y) * 2654435761u) >> 29);
    return 40 + (isRing ? 90 : 0) + (isBar ? 50 : 0) + 10 * c + grain;
}

template <class T>
Picture<T> softPicture(int width, int height) {
    Picture<T> picture(width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            for (int c = 0; c < 3; ++c) {
                int sum = 0;
                for (int i = 0; i < 25; ++i) {
                    sum += sharpLevel(x + i % 5, y + i / 5, c);
                }
                picture.at(x, y, c) = static_cast<T>(sizeof(T) == 1 ? sum / 25 : sum * 128 / 25);
            }
        }
    }
    return picture;
}

struct Settings {
    int32_t deconvolve = 0;
    float limitStrength = 0.0f;
    float edgeGain = 1.0f;
    float detailGain = 0.0f;
    float detailGamma = 0.0f;
};

constexpr Settings kAllStages{1, 0.7f, 1.8f, 0.4f, 0.3f};

/// The number that OpenCV gives to a processor feature, or nothing for a name that it does not
/// know.
std::optional<int> featureNamed(const std::string& name) {
    for (int feature = 1; feature < CV_HARDWARE_MAX_FEATURE; ++feature) {
        if (cv::getHardwareFeatureName(feature) == name) {
            return feature;
        }
    }
    return std::nullopt;
}

/// The value of an environment variable, empty if it is not set.
std::string environment(const char* name) {
    const char* const value = std::getenv(name);
    return value != nullptr ? value : "";
}

/// True if the maths library of C fuses multiplications and additions. For this argument glibc then
/// returns the second nearest double.
bool mathsLibraryFuses() {
    const volatile double argument = 0x1.61c03a3868186p+1;
    return std::exp(argument) == 0x1.fb755912d652fp+3;
}

class Digests : public ::testing::Test {
protected:
    void SetUp() override {
        checkThatOpenCVIsLimited();
        const bool unfused = environment("GLIBC_TUNABLES").find("-FMA") != std::string::npos;
        ASSERT_FALSE(unfused && mathsLibraryFuses()) << "fused maths functions are still in use";
    }

    /// OpenCV ignores names that it does not know in its list of processor features to disable.
    void checkThatOpenCVIsLimited() {
        std::istringstream names(environment("OPENCV_CPU_DISABLE"));
        for (std::string name; std::getline(names, name, ',');) {
            const std::optional<int> feature = featureNamed(name);
            ASSERT_TRUE(feature) << "OpenCV knows no feature " << name;
            ASSERT_FALSE(cv::checkHardwareSupport(*feature)) << name << " is still in use";
        }
    }

    KernelRecord kernelOf(int32_t type, float first, float second) {
        KernelRecord kernel{0, 0, 0, 0, kernelValues.data()};
        EXPECT_EQ(createKernel(type, first, second, &kernel), VELORN_OK);
        return kernel;
    }
    void addKernel(Digest& digest, int32_t type, float first, float second = 0.0f) {
        const KernelRecord kernel = kernelOf(type, first, second);
        const auto count = static_cast<std::size_t>(kernel.width * kernel.height);
        digest.add(std::span<const int32_t>({kernel.width, kernel.height}));
        digest.add(std::span<const float>(kernel.data, count));
    }

    std::string gaussianKernels() {
        Digest digest;
        for (int i = 1; i <= 400; ++i) {
            addKernel(digest, 0, static_cast<float>(i) * 0.03125f);
        }
        return digest.text();
    }
    std::string discKernels() {
        Digest digest;
        for (int i = 16; i <= 800; ++i) {
            addKernel(digest, 1, static_cast<float>(i) * 0.03125f);
        }
        return digest.text();
    }
    std::string motionKernels() {
        Digest digest;
        for (int angle = -30; angle < 200; angle += 5) {
            for (int i = 1; i <= 60; ++i) {
                addKernel(digest, 2, static_cast<float>(i) * 0.75f, static_cast<float>(angle));
            }
        }
        return digest.text();
    }

    template <class T>
    std::vector<T> restoredSamples(const Settings& s, int width, int height) {
        const Picture<T> source = softPicture<T>(width, height);
        Picture<T> target(width, height);
        ImageRecord image{source.record().format, source.samples.data(), source.step(),
                          target.samples.data(),  target.step(),         source.width,
                          source.height};
        KernelRecord kernel = kernelOf(1, 2.5f, 0.0f);
        ProgressRecord progress{100, 100, nullptr, nullptr, 0};
        EXPECT_EQ(deblurSharpen(&progress, &image, &kernel, s.deconvolve, 8000.0f, 0.5f,
                                s.limitStrength, 0.85f, 1.5f * (s.edgeGain - 1.0f), s.edgeGain,
                                0.005f, s.detailGain, s.detailGamma),
                  VELORN_OK);
        return target.samples;
    }
    /// One tile of 8 bits, and several of 16.
    std::string restored(const Settings& settings) {
        Digest digest;
        digest.add(restoredSamples<std::uint8_t>(settings, 300, 270));
        digest.add(restoredSamples<std::uint16_t>(settings, 1100, 480));
        return digest.text();
    }

    std::string estimated(int width, int height, std::initializer_list<float> strengths) {
        Digest digest;
        for (const float strength : strengths) {
            const auto source = softPicture<std::uint8_t>(width, height);
            PlaneRecord image = source.record();
            KernelRecord kernel{11, 9, 0, 0, kernelValues.data()};
            ProgressRecord progress{100, 100, nullptr, nullptr, 0};
            EXPECT_EQ(blurEstimate(&progress, &image, &kernel, strength), VELORN_OK);
            EXPECT_GT(kernel.data[4 * 11 + 4], 0.02f); // a kernel and not a refusal
            digest.add(std::span<const float>(kernel.data, 99));
        }
        return digest.text();
    }

    template <class T>
    void addDisplay(Digest& digest, float scale, PSProfilesRecord* profiles) {
        const Picture<T> source = softPicture<T>(300, 270);
        PlaneRecord image = source.record();
        std::vector<std::uint8_t> shown(210 * 150 * 4);
        EXPECT_EQ(showImage(profiles, &image, shown.data(), 210 * 4, 210, 150, scale), VELORN_OK);
        digest.add(shown);
    }
    std::string displayed(PSProfilesRecord* profiles) {
        Digest digest;
        for (const float scale : {1.0f, 0.37f, 0.5f, 0.731f, 1.9f}) {
            addDisplay<std::uint8_t>(digest, scale, profiles);
            addDisplay<std::uint16_t>(digest, scale, profiles);
        }
        return digest.text();
    }

    LoadedLibrary library;
    decltype(ornDeblurSharpen)* deblurSharpen = VELORN_FIND(library, ornDeblurSharpen);
    decltype(ornBlurEstimate)* blurEstimate = VELORN_FIND(library, ornBlurEstimate);
    decltype(ornCreateKernel)* createKernel = VELORN_FIND(library, ornCreateKernel);
    decltype(PSImageICC2QImage)* showImage = VELORN_FIND(library, PSImageICC2QImage);
    decltype(psC1U8toU15)* toU15 = VELORN_FIND(library, psC1U8toU15);
    decltype(psC1U15toU8)* toU8 = VELORN_FIND(library, psC1U15toU8);
    std::vector<float> kernelValues = std::vector<float>(128 * 128);
};

constexpr const char* kGaussianKernels = "9A66191681E10DCD";
constexpr const char* kDiscKernels = "B70252C71A932F15";
constexpr const char* kMotionKernels = "2A9DB8FC04B17BDD";

TEST_F(Digests, KernelsOfAllTypes) {
    EXPECT_EQ(gaussianKernels(), kGaussianKernels);
    EXPECT_EQ(discKernels(), kDiscKernels);
    EXPECT_EQ(motionKernels(), kMotionKernels);
}

#if defined(__i386__)

/// Sets the x87 unit of this thread to 53 bits for its lifetime, the default of Windows.
class FiftyThreeBits {
public:
    FiftyThreeBits() {
        asm volatile("fnstcw %0" : "=m"(m_before));
        const auto narrowed = static_cast<std::uint16_t>((m_before & ~0x300u) | 0x200u);
        asm volatile("fldcw %0" : : "m"(narrowed));
    }
    ~FiftyThreeBits() { asm volatile("fldcw %0" : : "m"(m_before)); }
    FiftyThreeBits(const FiftyThreeBits&) = delete;
    FiftyThreeBits& operator=(const FiftyThreeBits&) = delete;

private:
    std::uint16_t m_before = 0;
};

TEST_F(Digests, KernelsUnderThePrecisionOfHosts) {
    const FiftyThreeBits precision;
    EXPECT_EQ(gaussianKernels(), kGaussianKernels);
    EXPECT_EQ(discKernels(), kDiscKernels);
    EXPECT_EQ(motionKernels(), kMotionKernels);
}

#endif

TEST_F(Digests, ScaleConversions) {
    std::vector<std::uint8_t> narrow(256);
    std::vector<std::uint16_t> wide(65536);
    for (std::size_t i = 0; i < wide.size(); ++i) {
        wide[i] = static_cast<std::uint16_t>(i);
        narrow[i % 256] = static_cast<std::uint8_t>(i);
    }
    std::vector<std::uint16_t> widened(256);
    std::vector<std::uint8_t> narrowed(65536);
    EXPECT_EQ(toU15(narrow.data(), 256, 256, 1, widened.data(), 512), VELORN_OK);
    EXPECT_EQ(toU8(wide.data(), 512, 256, 256, narrowed.data(), 256), VELORN_OK);
    Digest digest;
    digest.add(widened);
    digest.add(narrowed);
    EXPECT_EQ(digest.text(), "5ADB1B56EF504AE5");
}

TEST_F(Digests, DisplayImages) {
    EXPECT_EQ(displayed(nullptr), "8956902A94E5A065");
}

TEST_F(Digests, DisplayImagesBetweenProfiles) {
    const ProfileBytes wide = wideGamutProfile();
    PSProfilesRecord fromWide{wide.data(), static_cast<int32_t>(wide.size()), nullptr, 0};
    PSProfilesRecord toWide{nullptr, 0, wide.data(), static_cast<int32_t>(wide.size())};
    EXPECT_EQ(displayed(&fromWide), "5B67B0738E13B16D");
    EXPECT_EQ(displayed(&toWide), "5A8CC8A3005820E9");
}

TEST_F(Digests, DeconvolvedPictures) {
    EXPECT_EQ(restored({.deconvolve = 1}), "7612A1F7513B0D92");
}

TEST_F(Digests, DeconvolvedAndLimitedPictures) {
    EXPECT_EQ(restored({.deconvolve = 1, .limitStrength = 0.7f}), "0FE9FA4604793D6B");
}

TEST_F(Digests, PicturesWithSharpenedEdges) {
    EXPECT_EQ(restored({.edgeGain = 1.8f}), "5865713934F6ACBA");
}

TEST_F(Digests, PicturesWithEnhancedDetail) {
    EXPECT_EQ(restored({.detailGain = 0.4f, .detailGamma = 0.3f}), "E290C817960436F7");
}

TEST_F(Digests, PicturesThroughAllStages) {
    EXPECT_EQ(restored(kAllStages), "2656061A7BD886C3");
}

TEST_F(Digests, EstimatedKernels) {
    EXPECT_EQ(estimated(160, 140, {0.0f, 0.8f}), "D6A8B7AEA432D13C");
}

TEST_F(Digests, EstimatedKernelsOfPicturesInSeveralRowsOfBlocks) {
    EXPECT_EQ(estimated(150, 256, {0.0f}), "74BBC88C177E9849");
}

} // namespace
