#include "restoration/blind/runs/LatentGradients.h"

#include "restoration/blind/runs/gaussianBlur.h"
#include "restoration/blind/runs/gradientRows.h"

#include <algorithm>
#include <utility>

namespace restoration {
namespace {

constexpr float kLargestBeta = 8.0f;
constexpr int kRowsOfGroup = vel::RealFft2D::kLanes;

} // namespace

void placeCyclically(const SquareKernel& kernel, Plane& plane) {
    std::ranges::fill(plane.values(), 0.0f);
    const int radius = kernel.radius();
    for (int y = 0; y < kernel.side; ++y) {
        float* row = plane.row((y - radius + plane.height()) % plane.height());
        for (int x = 0; x < kernel.side; ++x) {
            row[(x - radius + plane.width()) % plane.width()] = static_cast<float>(kernel.at(y, x));
        }
    }
}

LatentGradients::LatentGradients(SquareTransform& transform, Plane picture, int width, int height)
    : m_transform(transform), m_picture(std::move(picture)), m_width(width), m_height(height),
      m_latent(transform.side(), transform.side()), m_right(transform.side(), transform.side()),
      m_down(transform.side(), transform.side()), m_rows(transform.side(), kRowsOfGroup),
      m_lines(3 * static_cast<std::size_t>(transform.side())) {
    for (vel::AlignedFloats* spectrum : {&m_pictureSpectrum, &m_numerator, &m_spectrum}) {
        spectrum->resize(transform.fft().spectrumFloats());
    }
    transform.forward(m_picture, m_pictureSpectrum.data());
}

std::size_t LatentGradients::find(const SquareKernel& kernel, float lambda) {
    setKernel(kernel);
    const Plane* x = &m_picture;
    float beta = 2.0f * lambda;
    for (; 2.0f * beta < kLargestBeta; beta *= 2.0f) {
        transformKeptDivergence(*x, lambda / beta);
        solve(beta);
        x = &m_latent;
    }
    return keepGradients(*x, lambda / beta);
}

void LatentGradients::setKernel(const SquareKernel& kernel) {
    placeCyclically(kernel, m_latent);
    m_transform.forward(m_latent, m_spectrum.data());
    m_quotient.setKernel(m_transform.fft(), m_spectrum.data());
    m_transform.forEachBlock(m_spectrum.data(), [&](int block, const float* columns) {
        const auto offset = static_cast<std::size_t>(columns - m_spectrum.data());
        vel::multiplyByConjugate(m_transform.fft(), block, m_pictureSpectrum.data() + offset,
                                 columns, m_numerator.data() + offset);
    });
}

void LatentGradients::transformKeptDivergence(const Plane& x, float threshold) {
    const int side = m_transform.side();
    float* right = m_lines.data();
    float* above = right + side;
    float* down = above + side;
    keptGradientRow(x.row(side - 1), x.row(0), side, threshold, right, above);
    for (int group = 0; group < m_transform.fft().groupCount(); ++group) {
        const int first = group * kRowsOfGroup;
        for (int y = first; y < std::min(first + kRowsOfGroup, side); ++y) {
            keptGradientRow(x.row(y), x.row((y + 1) % side), side, threshold, right, down);
            divergenceRow(right, down, above, side, m_rows.row(y - first));
            std::swap(above, down);
        }
        m_transform.forwardGroup(m_rows.row(0), group, m_spectrum.data());
    }
}

/// Replaces the row transforms in m_spectrum by the plane m_latent.
void LatentGradients::solve(float beta) {
    const vel::RealFft2D& fft = m_transform.fft();
    m_transform.forEachBlock(m_spectrum.data(), [&](int block, float* columns) {
        const auto offset = static_cast<std::size_t>(columns - m_spectrum.data());
        fft.forwardColumns(columns, block);
        m_quotient.divide(block, m_numerator.data() + offset, beta, columns);
        fft.inverseColumns(columns, block);
    });
    m_transform.inverseRows(m_spectrum.data(), 0, m_transform.side() - 1, m_latent);
}

std::size_t LatentGradients::keepGradients(const Plane& x, float threshold) {
    const int side = m_transform.side();
    std::size_t kept = 0;
    for (int y = 0; y < side; ++y) {
        float* right = m_right.row(y);
        float* down = m_down.row(y);
        keptGradientRow(x.row(y), x.row((y + 1) % side), side, threshold, right, down);
        for (int c = 0; y < m_height && c < m_width; ++c) {
            kept += right[c] != 0.0f || down[c] != 0.0f ? 1 : 0;
        }
    }
    return kept;
}

void LatentGradients::smooth(double sigma, const Cancellation& cancellation) {
    const std::vector<float> taps = gaussianTaps(sigma);
    m_right = blurred(m_right, taps, Reflection::RepeatsLast, cancellation);
    m_down = blurred(m_down, taps, Reflection::RepeatsLast, cancellation);
}

void LatentGradients::clearMargin(int margin) {
    for (int y = 0; y < m_transform.side(); ++y) {
        const bool isInside = y >= margin && y < m_height - margin;
        const int first = isInside ? std::min(margin, m_width) : m_transform.side();
        const int last = isInside ? std::max(m_width - margin, first) : m_transform.side();
        for (float* row : {m_right.row(y), m_down.row(y)}) {
            std::fill(row, row + first, 0.0f);
            std::fill(row + last, row + m_transform.side(), 0.0f);
        }
    }
}

void LatentGradients::transformDivergence(float* spectrum) {
    const int side = m_transform.side();
    for (int y = 0; y < side; ++y) {
        divergenceRow(m_right.row(y), m_down.row(y), m_down.row((y + side - 1) % side), side,
                      m_latent.row(y));
    }
    m_transform.forward(m_latent, spectrum);
}

} // namespace restoration
