#include "restoration/blind/spectra/meanPeriodogram.h"

#include "restoration/blind/spectra/hannWindow.h"

#include <algorithm>
#include <cstddef>

namespace restoration {
namespace {

constexpr int kLargestWindow = 256;

/// Where windows of `side` begin on an axis of `length`: neighbours share half of their pixels, or
/// more.
std::vector<int> windowStarts(int length, int side) {
    const int last = length - side;
    const int gaps = (2 * last + side - 1) / side;
    std::vector<int> starts{0};
    for (int i = 1; i <= gaps; ++i) {
        starts.push_back(last * i / gaps);
    }
    return starts;
}

/// Writes a window of the picture, less its mean, to `window`.
/// @param weights of the window along both axes
void takeWindow(const Plane& picture, int left, int top, const std::vector<double>& weights,
                Plane& window) {
    const auto weight = [&](int i) { return weights[static_cast<std::size_t>(i)]; };
    double mean = 0.0;
    double sum = 0.0;
    for (int y = 0; y < window.height(); ++y) {
        for (int x = 0; x < window.width(); ++x) {
            mean += weight(y) * weight(x) * static_cast<double>(picture.row(top + y)[left + x]);
            sum += weight(y) * weight(x);
        }
    }
    mean /= sum;
    for (int y = 0; y < window.height(); ++y) {
        for (int x = 0; x < window.width(); ++x) {
            const double value = static_cast<double>(picture.row(top + y)[left + x]) - mean;
            window.row(y)[x] = static_cast<float>(value * weight(x) * weight(y));
        }
    }
}

} // namespace

int windowSideOf(const Plane& picture) {
    int side = kLargestWindow;
    while (side > std::min(picture.width(), picture.height())) {
        side /= 2;
    }
    return side;
}

std::vector<double> meanPeriodogram(const Plane& picture, SquareTransform& transform) {
    const int side = transform.side();
    const std::vector<double> weights = hannWindow(side);
    const std::vector<int> lefts = windowStarts(picture.width(), side);
    const std::vector<int> tops = windowStarts(picture.height(), side);
    Plane window(side, side);
    vel::AlignedFloats spectrum;
    spectrum.resize(transform.fft().spectrumFloats());
    std::vector<double> power(transform.slotCount());
    for (const int top : tops) {
        for (const int left : lefts) {
            takeWindow(picture, left, top, weights, window);
            transform.forward(window, spectrum.data());
            transform.forEachSlot(spectrum.data(), [&](std::size_t i, const float* slot) {
                power[i] += SquareTransform::powerIn(slot);
            });
        }
    }
    double energy = 0.0;
    for (const double weight : weights) {
        energy += weight * weight;
    }
    const double scale = 1.0 / (energy * energy * static_cast<double>(lefts.size() * tops.size()));
    for (double& value : power) {
        value *= scale;
    }
    return power;
}

} // namespace restoration
