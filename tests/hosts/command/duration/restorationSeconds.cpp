#include "hosts/command/duration/restorationSeconds.h"

#include "velorn.h"

#include <gtest/gtest.h>

namespace {

using velorn::aboutText;
using velorn::restorationSeconds;

/// Processor seconds of measured runs of this program, files included.
TEST(RestorationSeconds, FollowMeasuredRunsWithinAFactorOfTwo) {
    struct Run {
        int width;
        int height;
        int kernelSide;
        std::int32_t quality;
        double seconds;
    };
    for (const Run& run : {Run{3000, 2000, 7, VELORN_QUALITY_NORMAL, 1.7},
                           Run{3000, 2000, 31, VELORN_QUALITY_NORMAL, 2.5},
                           Run{3000, 2000, 103, VELORN_QUALITY_NORMAL, 4.2},
                           Run{3000, 2000, 253, VELORN_QUALITY_NORMAL, 5.9},
                           Run{3000, 2000, 511, VELORN_QUALITY_NORMAL, 11.3},
                           Run{3000, 2000, 7, VELORN_QUALITY_FAST, 1.3},
                           Run{3000, 2000, 103, VELORN_QUALITY_FAST, 3.1},
                           Run{3000, 2000, 511, VELORN_QUALITY_FAST, 9.6},
                           Run{3000, 2000, 7, VELORN_QUALITY_BEST, 3.0},
                           Run{3000, 2000, 103, VELORN_QUALITY_BEST, 6.9},
                           Run{1500, 1000, 7, VELORN_QUALITY_NORMAL, 0.7},
                           Run{1500, 1000, 103, VELORN_QUALITY_NORMAL, 1.5},
                           Run{1500, 1000, 511, VELORN_QUALITY_NORMAL, 8.1}}) {
        const double ratio =
            restorationSeconds({run.width, run.height, false, run.kernelSide, run.quality, 1}) /
            run.seconds;
        EXPECT_GT(ratio, 0.5) << run.width << " " << run.kernelSide << " " << run.quality;
        EXPECT_LT(ratio, 2.0) << run.width << " " << run.kernelSide << " " << run.quality;
    }
}

TEST(RestorationSeconds, AreSharedByThreads) {
    const double one = restorationSeconds({3000, 2000, false, 31, VELORN_QUALITY_NORMAL, 1});
    const double four = restorationSeconds({3000, 2000, false, 31, VELORN_QUALITY_NORMAL, 4});
    EXPECT_DOUBLE_EQ(one, 4.0 * four);
}

TEST(RestorationSeconds, OfTheLargestSidesAreFinite) {
    EXPECT_GT(restorationSeconds({1 << 30, 1 << 30, false, 511, VELORN_QUALITY_BEST, 1}), 1e12);
}

TEST(AboutText, CountsMinutesThenHours) {
    EXPECT_EQ(aboutText(5.0), "about 1 minute");
    EXPECT_EQ(aboutText(170.0), "about 3 minutes");
    EXPECT_EQ(aboutText(3600.0), "about 60 minutes");
    EXPECT_EQ(aboutText(7200.0), "about 2 hours");
    EXPECT_EQ(aboutText(1e300).substr(0, 6), "about ");
}

} // namespace
