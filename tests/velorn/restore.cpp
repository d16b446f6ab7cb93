#include "tests/velorn/failure.h"
#include "tests/velorn/HostKernel.h"
#include "tests/velorn/HostPicture.h"

namespace velorntest {
namespace {

/// Stripes that a restoration changes.
HostPicture stripedPicture(const Layout& layout) {
    HostPicture picture(layout);
    for (int y = 0; y < layout.height; ++y) {
        for (int x = 0; x < layout.width; ++x) {
            for (int c = 0; c < layout.channels; ++c) {
                const int phase = (x + 2 * y + 3 * c) % 24;
                picture.set(x, y, c, 0.3 + 0.015 * (phase < 12 ? phase : 24 - phase));
            }
        }
    }
    return picture;
}

TEST(Restore, ChangesThePixelsAndNothingElse) {
    const HostKernel disc = madeKernel(VELORN_BLUR_DISC, 2.0f);
    const VelornKernel* kernel = disc.get();
    for (const bool isUpsideDown : {false, true}) {
        HostPicture source = stripedPicture({90, 70, 3, false, VELORN_SAMPLES_U16, 5, false, 1});
        HostPicture target({90, 70, 3, false, VELORN_SAMPLES_U8, 7, isUpsideDown, 3});
        const std::vector<std::uint8_t> before = source.bytes();
        const VelornPicture from = source.view();
        const VelornPicture to = target.view();
        VelornRestoreReport report{};
        report.size = sizeof report;
        ASSERT_EQ(velornRestore(&from, &to, &kernel, 1, nullptr, &report), VELORN_STATUS_OK)
            << velornLastMessage();
        EXPECT_EQ(source.bytes(), before);
        EXPECT_TRUE(target.guardsAreIntact());
        EXPECT_GT(target.get(35, 30, 1), 0.2);
        EXPECT_GT(report.strength, 0.0f);
        EXPECT_GE(report.tiles, 1);
        EXPECT_GE(report.secondsTotal, report.secondsTiles);
    }
}

TEST(Restore, KernelsLargerThanThePictureFail) {
    const HostKernel disc = madeKernel(VELORN_BLUR_DISC, 4.0f);
    const VelornKernel* kernel = disc.get();
    HostPicture picture = stripedPicture({20, 8});
    const std::vector<std::uint8_t> before = picture.bytes();
    const VelornPicture view = picture.view();
    EXPECT_VELORN_FAILURE(velornRestore(&view, &view, &kernel, 1, nullptr, nullptr),
                          VELORN_STATUS_KERNEL_TOO_LARGE,
                          "the kernel is 9 by 9, but the source is only 20 by 8");
    EXPECT_EQ(picture.bytes(), before);
}

TEST(Restore, ACancelledCallLeavesTheTargetUnchanged) {
    const HostKernel disc = madeKernel(VELORN_BLUR_DISC, 4.0f);
    const VelornKernel* kernel = disc.get();
    HostPicture picture = stripedPicture({200, 200});
    const std::vector<std::uint8_t> before = picture.bytes();
    const VelornPicture view = picture.view();
    VelornRestoreSettings settings{};
    settings.size = sizeof settings;
    ASSERT_EQ(velornRestoreDefaults(&settings), VELORN_STATUS_OK);
    settings.progress = [](double, void*) -> std::int32_t { return 0; };
    EXPECT_VELORN_FAILURE(velornRestore(&view, &view, &kernel, 1, &settings, nullptr),
                          VELORN_STATUS_CANCELLED, "cancelled");
    EXPECT_EQ(picture.bytes(), before);
}

} // namespace
} // namespace velorntest
