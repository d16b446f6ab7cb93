#pragma once

#include "tests/velorn/HostKernel.h"
#include "tests/velorn/HostPicture.h"

#include <cmath>
#include <cstddef>
#include <random>
#include <vector>

namespace velorntest {

/// Overlapping discs and rectangles of random sizes and colours: edges in all directions. Defined
/// everywhere, with a period of 1024 pixels; 0.1..0.9.
class Scene {
public:
    static const Scene& get() {
        static const Scene scene;
        return scene;
    }

    double at(int x, int y, int channel) const { return m_values[index(x, y, channel)]; }

private:
    static constexpr int kSide = 1024;

    static std::size_t index(int x, int y, int channel) {
        const int column = ((x % kSide) + kSide) % kSide;
        const int row = ((y % kSide) + kSide) % kSide;
        return static_cast<std::size_t>((row * kSide + column) * 4 + channel);
    }

    Scene() : m_values(std::size_t{4} * kSide * kSide, 0.5) {
        std::mt19937 random(5);
        const auto draw = [&random](int least, int most) {
            return least + static_cast<int>(random() % static_cast<unsigned>(most - least + 1));
        };
        for (int shape = 0; shape < 4000; ++shape) {
            const int x = draw(0, kSide - 1);
            const int y = draw(0, kSide - 1);
            const int radius = draw(3, 28);
            const int height = shape % 2 == 0 ? radius : draw(2, 20);
            const double grey = 0.15 + draw(0, 60) / 100.0;
            double colour[4];
            for (double& value : colour) {
                value = grey + draw(-5, 15) / 100.0;
            }
            for (int dy = -height; dy <= height; ++dy) {
                for (int dx = -radius; dx <= radius; ++dx) {
                    if (shape % 2 == 1 || dx * dx + dy * dy <= radius * radius) {
                        for (int c = 0; c < 4; ++c) {
                            m_values[index(x + dx, y + dy, c)] = colour[c];
                        }
                    }
                }
            }
        }
    }

    std::vector<double> m_values;
};

inline double sceneAt(int x, int y, int channel) {
    return Scene::get().at(x, y, channel);
}

/// The scene blurred by `kernel` (null: sharp), with noise of `sigma` levels. Alpha is a pattern of
/// its own.
inline HostPicture scenePicture(const Layout& layout, const VelornKernel* kernel,
                                double sigma = 1.0) {
    std::mt19937 random(17);
    std::normal_distribution<double> normal(0.0, sigma / 255.0);
    const std::vector<float> weights = kernel != nullptr ? valuesOf(kernel) : std::vector{1.0f};
    const int width = kernel != nullptr ? velornKernelWidth(kernel) : 1;
    const int height = kernel != nullptr ? velornKernelHeight(kernel) : 1;
    HostPicture picture(layout);
    for (int y = 0; y < layout.height; ++y) {
        for (int x = 0; x < layout.width; ++x) {
            for (int c = 0; c < layout.channels; ++c) {
                if (layout.hasAlpha && c + 1 == layout.channels) {
                    picture.set(x, y, c, ((x * 7 + y * 13) % 256) / 255.0);
                    continue;
                }
                double sum = normal(random);
                for (int r = 0; r < height; ++r) {
                    for (int k = 0; k < width; ++k) {
                        sum += double{weights[static_cast<std::size_t>(r * width + k)]} *
                               sceneAt(x + width / 2 - k, y + height / 2 - r, c);
                    }
                }
                picture.set(x, y, c, sum);
            }
        }
    }
    return picture;
}

/// The root mean square distance of the colours of a picture from the sharp scene, in levels.
inline double distanceFromScene(HostPicture& picture) {
    const Layout& layout = picture.layout();
    const int colours = layout.channels - (layout.hasAlpha ? 1 : 0);
    double sum = 0.0;
    for (int y = 0; y < layout.height; ++y) {
        for (int x = 0; x < layout.width; ++x) {
            for (int c = 0; c < colours; ++c) {
                const double difference = 255.0 * (picture.get(x, y, c) - sceneAt(x, y, c));
                sum += difference * difference;
            }
        }
    }
    return std::sqrt(sum / (layout.width * layout.height * colours));
}

} // namespace velorntest
