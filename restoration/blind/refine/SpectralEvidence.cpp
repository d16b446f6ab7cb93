#include "restoration/blind/refine/SpectralEvidence.h"

#include "restoration/blind/refine/minimise.h"
#include "restoration/blind/spectra/hannWindow.h"
#include "velimproclib/veldeblurcv/deconvolution/SpectralQuotient.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace restoration {
namespace {

constexpr int kLargestWindow = 256;
/// Patches of the frequency plane along an axis. The level of a sharp picture's spectrum changes
/// little within one.
constexpr int kPatches = 32;
/// Cycles per pixel. Below, windows are too small to see frequencies apart.
constexpr double kLeastFrequency = 0.015;
constexpr double kLargestFrequency = 0.5;
/// Keeps kernels without any power at a frequency apart from 0.
constexpr double kLeastBlur = 1e-9;
/// The least level of a patch before levels are fitted, in units of the noise.
constexpr double kLeastLevel = 0.02;
constexpr int kFirstRounds = 20;
constexpr int kRounds = 2;
constexpr int kSteps = 20;
constexpr double kAttraction = 0.05;
/// Weights of 0 begin with this share of the mean weight: from 0 nothing moves them.
constexpr double kLeastWeight = 1e-4;
constexpr int kLanes = vel::RealFft2D::kLanes;
constexpr int kRowFloats = vel::RealFft2D::kRowFloats;

int windowSide(const Plane& picture) {
    int side = kLargestWindow;
    while (side > std::min(picture.width(), picture.height())) {
        side /= 2;
    }
    return side;
}

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

double sumOfSquares(const std::vector<double>& values) {
    double sum = 0.0;
    for (const double value : values) {
        sum += value * value;
    }
    return sum;
}

/// The kernel whose weights are the squares of `roots`, scaled to sum 1.
void setSquares(const std::vector<double>& roots, SquareKernel& kernel) {
    const double sum = sumOfSquares(roots);
    for (std::size_t i = 0; i < roots.size(); ++i) {
        kernel.values[i] = roots[i] * roots[i] / sum;
    }
}

} // namespace

SpectralEvidence::SpectralEvidence(const Plane& picture, double noiseVariance,
                                   const Cancellation& cancellation)
    : m_transform(windowSide(picture), cancellation), m_plane(side(), side()),
      m_window(hannWindow(side())), m_noise(noiseVariance) {
    m_spectrum.resize(m_transform.fft().spectrumFloats());
    markPatches();
    measure(picture);
    SquareKernel point(1);
    point.at(0, 0) = 1.0;
    m_unblurred = misfit(point);
}

double SpectralEvidence::misfit(const SquareKernel& kernel) {
    resetLevels();
    setKernel(kernel);
    fitLevels(kFirstRounds);
    return evaluate(kernel, nullptr) - m_unblurred;
}

void SpectralEvidence::improve(SquareKernel& kernel) {
    resetLevels();
    setKernel(kernel);
    fitLevels(kFirstRounds);
    const SquareKernel start = kernel;
    const double energy = sumOfSquares(start.values);
    const auto count = static_cast<double>(kernel.values.size());
    std::vector<double> roots;
    for (const double value : start.values) {
        roots.push_back(std::sqrt(std::max(value, kLeastWeight / count)));
    }
    std::vector<double> byWeight;
    const auto function = [&](const std::vector<double>& place, std::vector<double>& gradient) {
        setSquares(place, kernel);
        double value = evaluate(kernel, &byWeight);
        double along = 0.0;
        for (std::size_t i = 0; i < place.size(); ++i) {
            const double moved = kernel.values[i] - start.values[i];
            value += kAttraction * moved * moved / energy;
            byWeight[i] += 2.0 * kAttraction * moved / energy;
            along += byWeight[i] * kernel.values[i];
        }
        const double sum = sumOfSquares(place);
        for (std::size_t i = 0; i < place.size(); ++i) {
            gradient[i] = 2.0 * place[i] / sum * (byWeight[i] - along);
        }
        return value;
    };
    minimise(function, kSteps, roots);
    setSquares(roots, kernel);
}

/// Calls work(frequency, float* slot) for all slots of the half spectrum; the imaginary part
/// follows the real one at a distance of `kLanes`.
template <class Work>
void SpectralEvidence::forEachFrequency(const Work& work) {
    auto frequency = m_frequencies.begin();
    m_transform.forEachBlock(m_spectrum.data(), [&](int, float* columns) {
        for (int row = 0; row < side(); ++row) {
            for (int lane = 0; lane < kLanes; ++lane, ++frequency) {
                work(*frequency, columns + row * kRowFloats + lane);
            }
        }
    });
}

double SpectralEvidence::evaluate(const SquareKernel& kernel, std::vector<double>* gradient) {
    setKernel(kernel);
    fitLevels(kRounds);
    double sum = 0.0;
    forEachFrequency([&](const Frequency& at, float* slot) {
        double factor = 0.0;
        if (at.patch >= 0) {
            const double level = m_levels[static_cast<std::size_t>(at.patch)] * at.prior;
            const double model = level * at.blur + m_noise;
            const double ratio = at.power / model;
            sum += std::log(model) + ratio;
            factor = (1.0 - ratio) / model * level;
        }
        for (const int part : {0, kLanes}) {
            slot[part] = static_cast<float>(static_cast<double>(slot[part]) * factor);
        }
    });
    if (gradient != nullptr) {
        m_transform.forEachBlock(m_spectrum.data(), [&](int block, float* columns) {
            m_transform.fft().inverseColumns(columns, block);
        });
        m_transform.inverseRows(m_spectrum.data(), 0, kernel.side - 1, m_plane);
        const double scale = static_cast<double>(side()) * side() / m_count;
        gradient->clear();
        for (int y = 0; y < kernel.side; ++y) {
            std::transform(m_plane.row(y), m_plane.row(y) + kernel.side,
                           std::back_inserter(*gradient),
                           [=](float value) { return scale * static_cast<double>(value); });
        }
    }
    return sum / m_count;
}

void SpectralEvidence::setKernel(const SquareKernel& kernel) {
    std::ranges::fill(m_plane.values(), 0.0f);
    for (int y = 0; y < kernel.side; ++y) {
        for (int x = 0; x < kernel.side; ++x) {
            m_plane.row(y)[x] = static_cast<float>(kernel.at(y, x));
        }
    }
    m_transform.forward(m_plane, m_spectrum.data());
    forEachFrequency([](Frequency& at, const float* slot) {
        const auto re = static_cast<double>(slot[0]);
        const auto im = static_cast<double>(slot[kLanes]);
        at.blur = std::max(re * re + im * im, kLeastBlur);
    });
}

void SpectralEvidence::resetLevels() {
    std::vector<double> priors(m_levels.size());
    std::ranges::fill(m_levels, 0.0);
    for (const Frequency& at : m_frequencies) {
        if (at.patch >= 0) {
            const auto patch = static_cast<std::size_t>(at.patch);
            m_levels[patch] += std::max(at.power - m_noise, kLeastLevel * m_noise);
            priors[patch] += at.prior;
        }
    }
    for (std::size_t patch = 0; patch < m_levels.size(); ++patch) {
        m_levels[patch] /= priors[patch];
    }
}

/// Multiplicative updates for this distance of spectra (Fevotte, Bertin, Durrieu, Neural
/// Computation 21, 2009).
void SpectralEvidence::fitLevels(int rounds) {
    constexpr double kMostChange = 10.0;
    std::vector<double> seen(m_levels.size());
    std::vector<double> expected(m_levels.size());
    for (int round = 0; round < rounds; ++round) {
        m_transform.cancellation().check();
        std::ranges::fill(seen, 0.0);
        std::ranges::fill(expected, 0.0);
        for (const Frequency& at : m_frequencies) {
            if (at.patch >= 0) {
                const auto patch = static_cast<std::size_t>(at.patch);
                const double shape = at.blur * at.prior;
                const double model = m_levels[patch] * shape + m_noise;
                seen[patch] += at.power / model * (shape / model);
                expected[patch] += shape / model;
            }
        }
        for (std::size_t patch = 0; patch < m_levels.size(); ++patch) {
            m_levels[patch] *=
                std::clamp(seen[patch] / expected[patch], 1.0 / kMostChange, kMostChange);
        }
    }
}

void SpectralEvidence::measure(const Plane& picture) {
    const std::vector<int> lefts = windowStarts(picture.width(), side());
    const std::vector<int> tops = windowStarts(picture.height(), side());
    for (const int top : tops) {
        for (const int left : lefts) {
            addWindow(picture, left, top);
        }
    }
    const double energy = sumOfSquares(m_window);
    const double scale = 1.0 / (energy * energy * static_cast<double>(lefts.size() * tops.size()));
    for (Frequency& at : m_frequencies) {
        at.power *= scale;
    }
}

void SpectralEvidence::addWindow(const Plane& picture, int left, int top) {
    const auto weight = [&](int i) { return m_window[static_cast<std::size_t>(i)]; };
    double mean = 0.0;
    double sum = 0.0;
    for (int y = 0; y < side(); ++y) {
        for (int x = 0; x < side(); ++x) {
            mean += weight(y) * weight(x) * static_cast<double>(picture.row(top + y)[left + x]);
            sum += weight(y) * weight(x);
        }
    }
    mean /= sum;
    for (int y = 0; y < side(); ++y) {
        for (int x = 0; x < side(); ++x) {
            const double value = static_cast<double>(picture.row(top + y)[left + x]) - mean;
            m_plane.row(y)[x] = static_cast<float>(value * weight(x) * weight(y));
        }
    }
    m_transform.forward(m_plane, m_spectrum.data());
    forEachFrequency([](Frequency& at, const float* slot) {
        const auto re = static_cast<double>(slot[0]);
        const auto im = static_cast<double>(slot[kLanes]);
        at.power += re * re + im * im;
    });
}

void SpectralEvidence::markPatches() {
    const vel::RealFft2D& fft = m_transform.fft();
    const std::array<std::size_t, 4> reals = vel::realSlots(fft);
    std::vector<int> numbers(static_cast<std::size_t>((kPatches + 1) * (kPatches + 1)), -1);
    const double patchSide = static_cast<double>(side()) / kPatches;
    for (int block = 0; block < fft.blockCount(); ++block) {
        for (int slot = 0; slot < side() * kLanes; ++slot) {
            const int row = slot / kLanes;
            const int lane = slot % kLanes;
            int u = block * kLanes + lane;
            int v = fft.frequencyOf(row);
            v -= v > side() / 2 ? side() : 0;
            if (u == 0 && v < 0) { // this slot holds a frequency of the last column
                u = side() / 2;
            }
            const double f = std::hypot(u, v) / side();
            const auto place = static_cast<std::size_t>(row * kRowFloats + lane);
            const bool isReal = block == 0 && std::ranges::find(reals, place) != reals.end();
            Frequency frequency;
            frequency.prior = 1.0 / (f * f * f);
            if (u <= side() / 2 && !isReal && f >= kLeastFrequency && f <= kLargestFrequency) {
                const int column = static_cast<int>(u / patchSide);
                const int line = static_cast<int>((v + side() / 2) / patchSide);
                int& number = numbers[static_cast<std::size_t>(line * (kPatches + 1) + column)];
                if (number < 0) {
                    number = static_cast<int>(m_levels.size());
                    m_levels.push_back(0.0);
                }
                frequency.patch = number;
                m_count += 1.0;
            }
            m_frequencies.push_back(frequency);
        }
    }
}

} // namespace restoration
