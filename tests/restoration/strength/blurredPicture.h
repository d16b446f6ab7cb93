#pragma once

#include "restoration/kernels/analyticKernel.h"
#include "restoration/pictures/PictureBuffer.h"
#include "restoration/pictures/PictureReader.h"
#include "restoration/pictures/PictureWriter.h"
#include "restoration/pipeline/restorePicture.h"
#include "tests/restoration/deconvolution/CircularScene.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <random>
#include <utility>
#include <vector>

namespace restoration::test {

/// A picture of floats, all channels blurred alike but with noise of their own, and the truth.
class BlurredPicture {
public:
    /// @param scene   the sharp picture, periodic and square
    /// @param noise   standard deviation in levels of 255, for each channel
    BlurredPicture(Plane scene, const Kernel& kernel, const std::vector<double>& noise)
        : m_sharp(std::move(scene)),
          m_buffer(
              {nullptr, 0, side(), side(), static_cast<int>(noise.size()), 0, VELORN_SAMPLES_F32}) {
        const Plane seen = blurred(m_sharp, kernel);
        std::mt19937 random(5);
        std::normal_distribution<float> normal;
        std::vector<float> row(static_cast<std::size_t>(side()));
        for (int channel = 0; channel < static_cast<int>(noise.size()); ++channel) {
            const auto deviation =
                static_cast<float>(noise[static_cast<std::size_t>(channel)] / 255.0);
            for (int y = 0; y < side(); ++y) {
                for (int x = 0; x < side(); ++x) {
                    row[static_cast<std::size_t>(x)] = seen.row(y)[x] + deviation * normal(random);
                }
                PictureWriter(picture()).writeChannel(channel, y, 0, side(), row.data());
            }
        }
    }

    const VelornPicture& picture() const noexcept { return m_buffer.picture(); }
    PictureReader reader() const noexcept { return PictureReader(picture()); }

    /// Decibels of the first channel, restored with `strength`, away from the frame.
    double decibels(const Kernel& kernel, float strength, float alpha) const {
        VelornRestoreSettings settings{};
        settings.size = sizeof settings;
        settings.strength = strength;
        settings.chromaStrength = settings.noise = VELORN_AUTOMATIC;
        settings.alpha = alpha;
        settings.edgeRadius = 0.85f;
        settings.edgeGain = 1.0f;
        settings.edgeFloor = 0.005f;
        settings.continueFrame = 1;
        settings.region = {0, 0, side(), side()};
        settings.threads = 1;
        const PictureBuffer result(picture());
        const Kernel* kernels[] = {&kernel};
        restorePicture(picture(), result.picture(), kernels, settings);
        constexpr int kRim = 16;
        double sum = 0.0;
        std::vector<float> row(static_cast<std::size_t>(side()));
        for (int y = kRim; y < side() - kRim; ++y) {
            PictureReader(result.picture()).readChannel(0, y, 0, side(), row.data());
            for (int x = kRim; x < side() - kRim; ++x) {
                const auto error = static_cast<double>(row[static_cast<std::size_t>(x)]) -
                                   static_cast<double>(m_sharp.row(y)[x]);
                sum += error * error;
            }
        }
        const double pixels = (side() - 2.0 * kRim) * (side() - 2.0 * kRim);
        return -10.0 * std::log10(sum / pixels);
    }

private:
    int side() const noexcept { return m_sharp.width(); }

    Plane m_sharp;
    PictureBuffer m_buffer;
};

/// Discs of random sizes and greys that cover each other, periodic: the statistics of their edges
/// are those of photographs (dead leaves; A. B. Lee, D. Mumford, J. Huang, Occlusion models for
/// natural images, 2001).
inline Plane leavesScene(int side) {
    Plane plane(side, side);
    std::ranges::fill(plane.values(), 0.5f);
    std::mt19937 random(9);
    const auto uniform = [&] { return static_cast<double>(random()) / 4294967296.0; };
    for (int leaf = 0; leaf < side * side / 40; ++leaf) {
        const int radius = static_cast<int>(2.0 / std::sqrt(0.002 + uniform()));
        const int left = static_cast<int>(uniform() * side);
        const int top = static_cast<int>(uniform() * side);
        const auto grey = static_cast<float>(0.1 + 0.8 * uniform());
        for (int y = -radius; y <= radius; ++y) {
            for (int x = -radius; x <= radius; ++x) {
                if (x * x + y * y <= radius * radius) {
                    plane.row(wrapped(top + y, side))[wrapped(left + x, side)] = grey;
                }
            }
        }
    }
    return plane;
}

/// The same scene a little out of focus: no sharp edge is left.
inline Plane softScene(int side) {
    return blurred(leavesScene(side), analyticKernel(VELORN_BLUR_GAUSSIAN, 1.2f, 0.0f));
}

} // namespace restoration::test
