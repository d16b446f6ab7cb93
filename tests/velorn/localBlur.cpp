#include "tests/velorn/failure.h"
#include "tests/velorn/Restoration.h"
#include "tests/velorn/Scene.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

namespace velorntest {
namespace {

struct FreeGrid {
    void operator()(VelornKernelGrid* grid) const { velornFreeKernelGrid(grid); }
};
using HostGrid = std::unique_ptr<VelornKernelGrid, FreeGrid>;

HostGrid madeGrid(const std::vector<const VelornKernel*>& kernels, int columns, int rows) {
    VelornKernelGrid* grid = nullptr;
    EXPECT_EQ(velornMakeKernelGrid(kernels.data(), columns, rows, &grid), VELORN_STATUS_OK)
        << velornLastMessage();
    return HostGrid(grid);
}

/// Wide enough for many tiles.
constexpr Layout kWide{.width = 460, .height = 220};

HostPicture restoredLocally(HostPicture& source, const VelornKernelGrid* grid,
                            const VelornRestoreSettings& settings = defaultSettings()) {
    HostPicture target(kWide);
    const VelornPicture from = source.view();
    const VelornPicture to = target.view();
    EXPECT_EQ(velornRestoreLocal(&from, &to, grid, &settings, nullptr), VELORN_STATUS_OK)
        << velornLastMessage();
    EXPECT_TRUE(target.guardsAreIntact());
    return target;
}

/// The left half of the picture blurred by one kernel, the right one by another.
HostPicture twoBlurs(const VelornKernel* left, const VelornKernel* right) {
    HostPicture picture = scenePicture(kWide, left, 1.0);
    HostPicture other = scenePicture(kWide, right, 1.0);
    for (int y = 0; y < kWide.height; ++y) {
        const int half = kWide.width / 2 * picture.pixelBytes();
        std::copy(other.row(y) + half, other.row(y) + other.rowBytes(), picture.row(y) + half);
    }
    return picture;
}

/// The root mean square distance of some columns from the sharp scene, in levels.
double distanceOf(HostPicture& picture, int begin, int end) {
    double sum = 0.0;
    for (int y = 0; y < kWide.height; ++y) {
        for (int x = begin; x < end; ++x) {
            const double difference = 255.0 * (picture.get(x, y, 1) - sceneAt(x, y, 1));
            sum += difference * difference;
        }
    }
    return std::sqrt(sum / (kWide.height * (end - begin)));
}

std::vector<std::uint8_t> bytesOf(HostPicture& picture) {
    std::vector<std::uint8_t> bytes;
    for (int y = 0; y < picture.layout().height; ++y) {
        bytes.insert(bytes.end(), picture.row(y), picture.row(y) + picture.rowBytes());
    }
    return bytes;
}

class LocalBlur : public testing::Test {
protected:
    LocalBlur()
        : m_disc(madeKernel(VELORN_BLUR_DISC, 4.0f)),
          m_motion(madeKernel(VELORN_BLUR_MOTION, 9.0f, 30.0f)),
          m_grid(madeGrid({m_disc.get(), m_disc.get(), m_motion.get(), m_motion.get()}, 4, 1)),
          m_picture(twoBlurs(m_disc.get(), m_motion.get())) {}

    HostKernel m_disc;
    HostKernel m_motion;
    HostGrid m_grid;
    HostPicture m_picture;
};

TEST_F(LocalBlur, RestoresEachPartWithItsKernel) {
    HostPicture local = restoredLocally(m_picture, m_grid.get());
    HostPicture allDisc = restored(m_picture, {m_disc.get()});
    HostPicture allMotion = restored(m_picture, {m_motion.get()});
    // Far from the boundary each half is as good as with its kernel alone, and better than with
    // the other one.
    EXPECT_LT(distanceOf(local, 0, 150), 1.1 * distanceOf(allDisc, 0, 150));
    EXPECT_LT(distanceOf(local, 0, 150), 0.8 * distanceOf(allMotion, 0, 150));
    EXPECT_LT(distanceOf(local, 310, 460), 1.1 * distanceOf(allMotion, 310, 460));
    EXPECT_LT(distanceOf(local, 310, 460), 0.8 * distanceOf(allDisc, 310, 460));
}

TEST_F(LocalBlur, EqualKernelsGiveTheBytesOfOneKernel) {
    const std::vector<const VelornKernel*> kernels(6, m_disc.get());
    const HostGrid grid = madeGrid(kernels, 3, 2);
    HostPicture local = restoredLocally(m_picture, grid.get());
    HostPicture one = restored(m_picture, {m_disc.get()});
    EXPECT_EQ(bytesOf(local), bytesOf(one));
}

/// Kernels that differ a little go through the tiles of a local blur.
TEST_F(LocalBlur, NearlyEqualKernelsGiveNearlyTheRestorationOfOne) {
    const HostKernel other = madeKernel(VELORN_BLUR_DISC, 4.001f);
    const HostGrid grid = madeGrid({m_disc.get(), other.get()}, 2, 1);
    HostPicture picture = scenePicture(kWide, m_disc.get(), 1.0);
    HostPicture local = restoredLocally(picture, grid.get());
    HostPicture one = restored(picture, {m_disc.get()});
    double sum = 0.0;
    for (int y = 0; y < kWide.height; ++y) {
        for (int x = 0; x < kWide.width; ++x) {
            const double difference = 255.0 * (local.get(x, y, 1) - one.get(x, y, 1));
            sum += difference * difference;
        }
    }
    EXPECT_LT(std::sqrt(sum / (kWide.width * kWide.height)), 2.0);
    EXPECT_NEAR(distanceFromScene(local), distanceFromScene(one), 0.3);
}

TEST_F(LocalBlur, PointsLeaveTheirPartAsItIs) {
    const float one = 1.0f;
    VelornKernel* made = nullptr;
    ASSERT_EQ(velornKernelFromValues(&one, 1, 1, &made), VELORN_STATUS_OK);
    const HostKernel point(made);
    const HostGrid grid = madeGrid({point.get(), point.get(), point.get(), m_motion.get()}, 4, 1);
    HostPicture local = restoredLocally(m_picture, grid.get());
    for (int y = 0; y < kWide.height; ++y) {
        ASSERT_TRUE(
            std::equal(local.row(y), local.row(y) + 150 * local.pixelBytes(), m_picture.row(y)))
            << y;
    }
}

TEST_F(LocalBlur, RegionsHaveTheBytesOfTheWhole) {
    HostPicture whole = restoredLocally(m_picture, m_grid.get());
    for (const VelornRegion& region :
         {VelornRegion{0, 0, 1, 1}, VelornRegion{187, 0, 90, 220}, VelornRegion{3, 100, 455, 5}}) {
        VelornRestoreSettings settings = defaultSettings();
        settings.region = region;
        HostPicture part({.width = region.width, .height = region.height});
        const VelornPicture from = m_picture.view();
        const VelornPicture to = part.view();
        ASSERT_EQ(velornRestoreLocal(&from, &to, m_grid.get(), &settings, nullptr),
                  VELORN_STATUS_OK);
        for (int y = 0; y < region.height; ++y) {
            const std::uint8_t* const expected =
                whole.row(region.y + y) + region.x * whole.pixelBytes();
            ASSERT_TRUE(std::equal(part.row(y), part.row(y) + part.rowBytes(), expected)) << y;
        }
    }
}

TEST_F(LocalBlur, DoesNotDependOnTheNumberOfThreads) {
    VelornRestoreSettings settings = defaultSettings();
    settings.threads = 1;
    HostPicture first = restoredLocally(m_picture, m_grid.get(), settings);
    settings.threads = 3;
    HostPicture second = restoredLocally(m_picture, m_grid.get(), settings);
    EXPECT_EQ(bytesOf(first), bytesOf(second));
}

TEST_F(LocalBlur, SourceMayBeTheTarget) {
    HostPicture apart = restoredLocally(m_picture, m_grid.get());
    const VelornPicture view = m_picture.view();
    ASSERT_EQ(velornRestoreLocal(&view, &view, m_grid.get(), nullptr, nullptr), VELORN_STATUS_OK);
    EXPECT_EQ(bytesOf(apart), bytesOf(m_picture));
}

TEST_F(LocalBlur, CancelledCallsLeaveTheTarget) {
    HostPicture target(kWide);
    const std::vector<std::uint8_t> before = bytesOf(target);
    for (const double limit : {0.0, 0.5, 1.0}) {
        VelornRestoreSettings settings = defaultSettings();
        settings.userData = const_cast<double*>(&limit);
        settings.progress = [](double done, void* userData) -> std::int32_t {
            return done < *static_cast<const double*>(userData) ? 1 : 0;
        };
        const VelornPicture from = m_picture.view();
        const VelornPicture to = target.view();
        EXPECT_VELORN_FAILURE(velornRestoreLocal(&from, &to, m_grid.get(), &settings, nullptr),
                              VELORN_STATUS_CANCELLED, "cancelled");
        EXPECT_EQ(bytesOf(target), before);
    }
}

TEST_F(LocalBlur, RefusesWrongArguments) {
    HostPicture target(kWide);
    const VelornPicture from = m_picture.view();
    const VelornPicture to = target.view();
    EXPECT_VELORN_INVALID(velornRestoreLocal(nullptr, &to, m_grid.get(), nullptr, nullptr),
                          "source is null");
    EXPECT_VELORN_INVALID(velornRestoreLocal(&from, &to, nullptr, nullptr, nullptr),
                          "grid is null");
    VelornPicture small = from;
    small.width = 5;
    VelornPicture smallTarget = to;
    smallTarget.width = 5;
    EXPECT_VELORN_FAILURE(velornRestoreLocal(&small, &smallTarget, m_grid.get(), nullptr, nullptr),
                          VELORN_STATUS_KERNEL_TOO_LARGE,
                          "the kernel is 9 by 9, but the source is only 5 by 220");
    VelornRestoreReport report{};
    EXPECT_EQ(velornRestoreLocal(&from, &to, m_grid.get(), nullptr, &report),
              VELORN_STATUS_INVALID_ARGUMENT);
}

TEST(KernelGrid, RefusesWrongArguments) {
    const HostKernel disc = madeKernel(VELORN_BLUR_DISC, 2.0f);
    const VelornKernel* const kernels[] = {disc.get(), nullptr};
    VelornKernelGrid* grid = reinterpret_cast<VelornKernelGrid*>(&grid);
    EXPECT_VELORN_INVALID(velornMakeKernelGrid(kernels, 2, 1, &grid), "kernels[1] is null");
    EXPECT_EQ(grid, nullptr);
    EXPECT_VELORN_INVALID(velornMakeKernelGrid(kernels, 0, 1, &grid),
                          "columns is 0, but must be 1..16");
    EXPECT_VELORN_INVALID(velornMakeKernelGrid(kernels, 1, 17, &grid),
                          "rows is 17, but must be 1..16");
    EXPECT_VELORN_INVALID(velornMakeKernelGrid(nullptr, 1, 1, &grid), "kernels is null");
    EXPECT_VELORN_INVALID(velornMakeKernelGrid(kernels, 1, 1, nullptr), "grid is null");
    EXPECT_EQ(velornFindKernelGrid(nullptr, nullptr, &grid, nullptr),
              VELORN_STATUS_INVALID_ARGUMENT);
}

TEST(KernelGrid, ShowsItsKernels) {
    const HostKernel disc = madeKernel(VELORN_BLUR_DISC, 2.0f);
    const HostKernel motion = madeKernel(VELORN_BLUR_MOTION, 7.0f, 45.0f);
    const HostGrid grid = madeGrid({disc.get(), motion.get()}, 1, 2);
    EXPECT_EQ(velornKernelGridColumns(grid.get()), 1);
    EXPECT_EQ(velornKernelGridRows(grid.get()), 2);
    EXPECT_EQ(valuesOf(velornKernelGridCell(grid.get(), 0, 1)), valuesOf(motion.get()));
    EXPECT_EQ(velornKernelGridCell(grid.get(), 1, 0), nullptr);
    EXPECT_EQ(velornKernelGridCell(grid.get(), 0, -1), nullptr);
    EXPECT_EQ(velornKernelGridCell(nullptr, 0, 0), nullptr);
    EXPECT_EQ(velornKernelGridColumns(nullptr), 0);
    VelornCellReport report{};
    report.size = sizeof report;
    ASSERT_EQ(velornKernelGridReport(grid.get(), 0, 1, &report), VELORN_STATUS_OK);
    EXPECT_EQ(report.isFound, 0);
    EXPECT_EQ(report.confidence, 1.0f);
    EXPECT_VELORN_INVALID(velornKernelGridReport(grid.get(), 0, 2, &report),
                          "row is 2, but must be 0..1");
    velornFreeKernelGrid(nullptr);
}

HostGrid found(HostPicture& picture, int threads, VelornFindReport* report = nullptr) {
    VelornFindSettings settings{};
    settings.size = sizeof settings;
    EXPECT_EQ(velornFindDefaults(&settings), VELORN_STATUS_OK);
    settings.threads = threads;
    const VelornPicture view = picture.view();
    VelornKernelGrid* grid = nullptr;
    EXPECT_EQ(velornFindKernelGrid(&view, &settings, &grid, report), VELORN_STATUS_OK)
        << velornLastMessage();
    return HostGrid(grid);
}

TEST(FindKernelGrid, FindsOneKernelWhereTheBlurIsTheSame) {
    const HostKernel disc = madeKernel(VELORN_BLUR_DISC, 3.0f);
    HostPicture picture = scenePicture({.width = 620, .height = 300}, disc.get(), 0.5);
    VelornFindReport report{};
    report.size = sizeof report;
    const HostGrid grid = found(picture, 0, &report);
    EXPECT_EQ(velornKernelGridColumns(grid.get()), 1);
    EXPECT_EQ(velornKernelGridRows(grid.get()), 1);
    EXPECT_GT(report.confidence, 0.0f);
}

TEST(FindKernelGrid, FindsTheKernelsOfBothHalves) {
    const HostKernel disc = madeKernel(VELORN_BLUR_DISC, 2.0f);
    const HostKernel motion = madeKernel(VELORN_BLUR_MOTION, 15.0f, 0.0f);
    constexpr Layout kLayout{.width = 900, .height = 300};
    HostPicture picture = scenePicture(kLayout, disc.get(), 0.5);
    HostPicture other = scenePicture(kLayout, motion.get(), 0.5);
    for (int y = 0; y < kLayout.height; ++y) {
        const int half = kLayout.width / 2 * picture.pixelBytes();
        std::copy(other.row(y) + half, other.row(y) + other.rowBytes(), picture.row(y) + half);
    }
    const HostGrid grid = found(picture, 1);
    ASSERT_EQ(velornKernelGridColumns(grid.get()), 6);
    ASSERT_EQ(velornKernelGridRows(grid.get()), 2);
    // The mean distance of the weights from the middle, to the sides.
    const auto width = [&](int column) {
        const VelornKernel* kernel = velornKernelGridCell(grid.get(), column, 0);
        const std::vector<float> values = valuesOf(kernel);
        const int columns = velornKernelWidth(kernel);
        double sum = 0.0;
        for (std::size_t i = 0; i < values.size(); ++i) {
            sum += double{values[i]} * std::abs(static_cast<int>(i) % columns - columns / 2);
        }
        return sum;
    };
    EXPECT_LT(width(0), 1.8);
    EXPECT_GT(width(5), 2.6);
    const HostGrid again = found(picture, 2);
    for (int column = 0; column < 6; ++column) {
        EXPECT_EQ(valuesOf(velornKernelGridCell(grid.get(), column, 0)),
                  valuesOf(velornKernelGridCell(again.get(), column, 0)));
    }
}

} // namespace
} // namespace velorntest
