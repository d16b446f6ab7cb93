#include "restoration/blind/spectra/SquareTransform.h"

#include <algorithm>
#include <bit>

namespace restoration {
namespace {

int orderOf(int side) {
    return std::countr_zero(static_cast<unsigned>(side));
}

std::ptrdiff_t stepOf(const Plane& plane) {
    return static_cast<std::ptrdiff_t>(plane.width()) * static_cast<std::ptrdiff_t>(sizeof(float));
}

} // namespace

int powerOfTwoFrom(int length) noexcept {
    return static_cast<int>(std::bit_ceil(static_cast<unsigned>(std::max(length, 1))));
}

SquareTransform::SquareTransform(int side, const Cancellation& cancellation)
    : m_fft(orderOf(side), orderOf(side)), m_cancellation(cancellation) {
    m_scratch.resize(m_fft.scratchFloats());
}

void SquareTransform::forwardGroup(const float* rows, int group, float* spectrum) {
    m_cancellation.check();
    const auto step =
        static_cast<std::ptrdiff_t>(side()) * static_cast<std::ptrdiff_t>(sizeof *rows);
    m_fft.forwardRowGroup(rows, step, group, spectrum, m_scratch.data());
}

void SquareTransform::forward(const Plane& plane, int rows, float* spectrum) {
    const int groups =
        std::min((rows + vel::RealFft2D::kLanes - 1) / vel::RealFft2D::kLanes, m_fft.groupCount());
    const int transformed = std::min(groups * vel::RealFft2D::kLanes, side());
    for (int group = 0; group < groups; ++group) {
        m_cancellation.check();
        m_fft.forwardRows(plane.row(0), stepOf(plane), group, spectrum, m_scratch.data());
    }
    const auto start = static_cast<std::size_t>(transformed) * vel::RealFft2D::kRowFloats;
    const auto end = static_cast<std::size_t>(side()) * vel::RealFft2D::kRowFloats;
    forEachBlock(spectrum, [&](int block, float* columns) {
        std::fill(columns + start, columns + end, 0.0f);
        m_fft.forwardColumns(columns, block);
    });
}

double SquareTransform::powerAt(int v, int u, const float* spectrum) const noexcept {
    constexpr int kLanes = vel::RealFft2D::kLanes;
    return powerIn(spectrum + static_cast<std::size_t>(u / kLanes) * m_fft.blockFloats() +
                   m_fft.rowOf(v) * vel::RealFft2D::kRowFloats + u % kLanes);
}

void SquareTransform::inverseRows(const float* spectrum, int first, int last, Plane& plane) {
    const int end = last / vel::RealFft2D::kLanes;
    for (int group = first / vel::RealFft2D::kLanes; group <= end; ++group) {
        m_cancellation.check();
        m_fft.inverseRows(spectrum, group, plane.row(0), stepOf(plane), m_scratch.data());
    }
}

} // namespace restoration
