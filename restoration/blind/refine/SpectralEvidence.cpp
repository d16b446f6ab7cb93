#include "restoration/blind/refine/SpectralEvidence.h"

#include "restoration/blind/refine/minimise.h"
#include "restoration/blind/spectra/meanPeriodogram.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>

namespace restoration {
namespace {

/// Keeps kernels without any power at a frequency apart from 0.
constexpr double kLeastBlur = 1e-9;
constexpr int kFirstRounds = 20;
constexpr int kRounds = 2;
constexpr int kSteps = 20;
constexpr double kAttraction = 0.05;
/// Weights of 0 begin with this share of the mean weight: from 0 nothing moves them.
constexpr double kLeastWeight = 1e-4;
constexpr int kLanes = vel::RealFft2D::kLanes;

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
    : m_transform(windowSideOf(picture), cancellation), m_plane(side(), side()),
      m_model(m_transform.fft(), noiseVariance) {
    m_spectrum.resize(m_transform.fft().spectrumFloats());
    const std::vector<double> power = meanPeriodogram(picture, m_transform);
    for (std::size_t i = 0; i < power.size(); ++i) {
        m_model.frequencies()[i].power = power[i];
    }
    SquareKernel point(1);
    point.at(0, 0) = 1.0;
    m_unblurred = misfit(point);
}

double SpectralEvidence::misfit(const SquareKernel& kernel) {
    fitLevelsTo(kernel);
    return evaluate(kernel, nullptr) - m_unblurred;
}

void SpectralEvidence::improve(SquareKernel& kernel) {
    fitLevelsTo(kernel);
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

void SpectralEvidence::fitLevelsTo(const SquareKernel& kernel) {
    m_model.resetLevels();
    setKernel(kernel);
    m_model.fitLevels(kFirstRounds, m_transform.cancellation());
}

double SpectralEvidence::evaluate(const SquareKernel& kernel, std::vector<double>* gradient) {
    setKernel(kernel);
    m_model.fitLevels(kRounds, m_transform.cancellation());
    double sum = 0.0;
    m_transform.forEachSlot(m_spectrum.data(), [&](std::size_t i, float* slot) {
        const SpectrumModel::Frequency& at = m_model.frequencies()[i];
        double factor = 0.0;
        if (at.patch >= 0) {
            const double level = m_model.sharpPower(at);
            const double model = level * at.blur + m_model.noise();
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
        const double scale = static_cast<double>(side()) * side() / m_model.count();
        gradient->clear();
        for (int y = 0; y < kernel.side; ++y) {
            std::transform(m_plane.row(y), m_plane.row(y) + kernel.side,
                           std::back_inserter(*gradient),
                           [=](float value) { return scale * static_cast<double>(value); });
        }
    }
    return sum / m_model.count();
}

void SpectralEvidence::setKernel(const SquareKernel& kernel) {
    std::ranges::fill(m_plane.values(), 0.0f);
    for (int y = 0; y < kernel.side; ++y) {
        for (int x = 0; x < kernel.side; ++x) {
            m_plane.row(y)[x] = static_cast<float>(kernel.at(y, x));
        }
    }
    m_transform.forward(m_plane, m_spectrum.data());
    m_transform.forEachSlot(m_spectrum.data(), [&](std::size_t i, const float* slot) {
        m_model.frequencies()[i].blur = std::max(SquareTransform::powerIn(slot), kLeastBlur);
    });
}

} // namespace restoration
