#include "restoration/blind/candidates/PictureSpectrum.h"

#include "restoration/blind/spectra/SquareTransform.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace restoration {
namespace {

constexpr int kCellSide = 4;
constexpr int kRings = 16;
constexpr double kLowest = 0.012;
constexpr double kLeastNoise = 0.3;
constexpr double kLevels = 255.0;
/// The logarithms of the amplitude that are tried, and the steps of its refinement.
constexpr double kFaintest = -6.0;
constexpr double kStrongest = 8.0;
constexpr double kCoarseStep = 0.8;
constexpr double kFinestStep = 0.1;

/// The means over cells of |F|^2, from a half spectrum: cells of rows of frequencies 0, 4, ... up
/// to `side` - 4, each with the columns 0, 4, ... up to side / 2 - 4. Column 0, which holds two
/// columns, is left out.
std::vector<double> cellPowers(const vel::RealFft2D& fft, const float* spectrum,
                               const Cancellation& cancellation) {
    constexpr int kLanes = vel::RealFft2D::kLanes;
    const int side = fft.height();
    const auto columns = static_cast<std::size_t>(side / 2 / kCellSide);
    std::vector<double> sums(static_cast<std::size_t>(side / kCellSide) * columns);
    for (int block = 0; block < fft.blockCount(); ++block) {
        cancellation.check();
        const float* values = spectrum + static_cast<std::size_t>(block) * fft.blockFloats();
        for (int v = 0; v < side; ++v) {
            const float* row = values + fft.rowOf(v) * vel::RealFft2D::kRowFloats;
            double* cells = sums.data() + static_cast<std::size_t>(v / kCellSide) * columns;
            for (int lane = block == 0 ? 1 : 0; lane < kLanes; ++lane) {
                const auto re = static_cast<double>(row[lane]);
                const auto im = static_cast<double>(row[lane + kLanes]);
                cells[(block * kLanes + lane) / kCellSide] += re * re + im * im;
            }
        }
    }
    for (std::size_t i = 0; i < sums.size(); ++i) {
        sums[i] /= i % columns == 0 ? kCellSide * (kCellSide - 1) : kCellSide * kCellSide;
    }
    return sums;
}

/// The frequency in the middle of the cell at `place`, in cycles per pixel.
double frequencyOf(int place, int side) {
    const auto along = [side](int cell) {
        const double middle = kCellSide * cell + (kCellSide - 1) / 2.0;
        return (middle < side / 2.0 ? middle : middle - side) / side;
    };
    const int columns = side / 2 / kCellSide;
    return std::hypot(along(place / columns), along(place % columns));
}

/// The Hann window of samples in the middle of pixels.
std::vector<double> hann(int length) {
    std::vector<double> window;
    for (int i = 0; i < length; ++i) {
        window.push_back(0.5 - 0.5 * std::cos(2.0 * std::numbers::pi * (i + 0.5) / length));
    }
    return window;
}

/// The picture less its mean under a window, in levels; zero beyond it.
Plane windowed(const Plane& picture, int side) {
    double sum = 0.0;
    for (int y = 0; y < picture.height(); ++y) {
        double line = 0.0;
        for (int x = 0; x < picture.width(); ++x) {
            line += static_cast<double>(picture.row(y)[x]);
        }
        sum += line;
    }
    const double mean = sum / (static_cast<double>(picture.width()) * picture.height());
    const std::vector<double> columns = hann(picture.width());
    const std::vector<double> rows = hann(picture.height());
    Plane plane(side, side);
    std::ranges::fill(plane.values(), 0.0f);
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            const double weight =
                rows[static_cast<std::size_t>(y)] * columns[static_cast<std::size_t>(x)];
            plane.row(y)[x] = static_cast<float>(kLevels * weight *
                                                 (static_cast<double>(picture.row(y)[x]) - mean));
        }
    }
    return plane;
}

} // namespace

PictureSpectrum::PictureSpectrum(const Plane& picture, int side, double noise,
                                 const Cancellation& cancellation)
    : m_noiseVariance(std::pow(std::max(noise, kLeastNoise), 2)) {
    SquareTransform transform(side, cancellation);
    vel::AlignedFloats spectrum;
    spectrum.resize(transform.fft().spectrumFloats());
    transform.forward(windowed(picture, side), spectrum.data());
    const std::vector<double> powers = cellPowers(transform.fft(), spectrum.data(), cancellation);
    // The mean square of the window of Hann is 3/8 for each axis.
    const double weight = 9.0 / 64.0 * picture.width() * picture.height();
    for (std::size_t place = 0; place < powers.size(); ++place) {
        const double frequency = frequencyOf(static_cast<int>(place), side);
        if (frequency >= kLowest) {
            m_cells.push_back(cellOf(place, frequency, powers[place] / weight));
        }
    }
}

PictureSpectrum::Cell PictureSpectrum::cellOf(std::size_t place, double frequency, double power) {
    Cell cell{place, std::min(static_cast<int>(2.0 * kRings * frequency), kRings - 1), power, {}};
    for (std::size_t i = 0; i < kFalls.size(); ++i) {
        cell.expected[i] = std::pow(frequency, -kFalls[i]);
    }
    return cell;
}

SpectrumFit PictureSpectrum::fitOf(const BlurSpectrum& blur,
                                   const Cancellation& cancellation) const {
    const std::vector<double> blurs = cellPowers(blur.fft(), blur.spectrum(), cancellation);
    SpectrumFit best;
    bool isFirst = true;
    for (std::size_t fall = 0; fall < kFalls.size(); ++fall) {
        cancellation.check();
        double level = kFaintest;
        double least = unlikelihood(blurs, fall, level);
        const auto attempt = [&](double other) {
            const double value = unlikelihood(blurs, fall, other);
            if (value < least) {
                least = value;
                level = other;
            }
        };
        for (int i = 1; kFaintest + i * kCoarseStep <= kStrongest; ++i) {
            attempt(kFaintest + i * kCoarseStep);
        }
        for (double step = kCoarseStep / 2.0; step >= kFinestStep; step /= 2.0) {
            const double middle = level;
            attempt(middle - step);
            attempt(middle + step);
        }
        if (isFirst || least < best.unlikelihood) {
            best = {least, unevenness(blurs, fall, level)};
            isFirst = false;
        }
    }
    return best;
}

double PictureSpectrum::variance(const std::vector<double>& blurs, std::size_t cell,
                                 std::size_t fall, double amplitude) const {
    return amplitude * m_cells[cell].expected[fall] * blurs[m_cells[cell].place] + m_noiseVariance;
}

double PictureSpectrum::unlikelihood(const std::vector<double>& blurs, std::size_t fall,
                                     double level) const {
    const double amplitude = std::exp(level);
    double sum = 0.0;
    for (std::size_t i = 0; i < m_cells.size(); ++i) {
        const double expected = variance(blurs, i, fall, amplitude);
        sum += std::log(expected) + m_cells[i].power / expected;
    }
    return sum / static_cast<double>(m_cells.size());
}

double PictureSpectrum::unevenness(const std::vector<double>& blurs, std::size_t fall,
                                   double level) const {
    struct Ring {
        double count = 0.0;
        double sum = 0.0;
        double squares = 0.0;
    };
    constexpr double kLeastPower = 1e-9;
    const double amplitude = std::exp(level);
    std::array<Ring, kRings> rings;
    for (std::size_t i = 0; i < m_cells.size(); ++i) {
        const double ratio =
            std::log((m_cells[i].power + kLeastPower) / variance(blurs, i, fall, amplitude));
        Ring& ring = rings[static_cast<std::size_t>(m_cells[i].ring)];
        ring.count += 1.0;
        ring.sum += ratio;
        ring.squares += ratio * ratio;
    }
    double squares = 0.0;
    for (const Ring& ring : rings) {
        squares += ring.count > 0.0 ? ring.squares - ring.sum * ring.sum / ring.count : 0.0;
    }
    return std::log(squares / static_cast<double>(m_cells.size()) + kLeastPower);
}

} // namespace restoration
