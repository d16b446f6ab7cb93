#include "velimproclib/veldeblurcv/deconvolution/DeconvHL.h"

#include "velimproclib/primitives/arithmetic/Lookups.h"
#include "velimproclib/primitives/arithmetic/PlaneArithmetic.h"
#include "velimproclib/primitives/base/TeamLoop.h"
#include "velimproclib/primitives/base/truncate.h"
#include "velimproclib/veldeblurcv/deconvolution/GradientRows.h"
#include "velimproclib/veldeblurcv/deconvolution/kernelSpectrum.h"
#include "velimproclib/veldeblurcv/deconvolution/rowGroups.h"
#include "velimproclib/veldeblurcv/shrinkage/ShrinkCurve.h"
#include "velimproclib/veldeblurcv/shrinkage/ShrinkTable.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vel {
namespace {

/// The working memory of one thread: that of the transform, the rows of a group and three lines.
struct RowScratch {
    RowScratch(float* memory, const RealFft2D& fft)
        : adjoint(memory + fft.scratchFloats()), wx(adjoint + groupFloats(fft)),
          wyAbove(wx + fft.width()), wy(wyAbove + fft.width()) {}

    static std::size_t floats(const RealFft2D& fft) {
        constexpr std::size_t kLines = 3;
        return fft.scratchFloats() + groupFloats(fft) +
               kLines * static_cast<std::size_t>(fft.width());
    }

    float* adjoint;
    float* wx;
    float* wyAbove;
    float* wy;
};

/// The rows of `group` of the transposed differences of the shrunk gradients of `estimate`.
template <class Shrink>
void makeAdjointRows(const cv::Mat& estimate, int group, RowScratch scratch,
                     const Shrink& shrinkDifferences) {
    const auto n = static_cast<std::size_t>(estimate.cols);
    const int first = group * kGroupRows;
    if (first > 0) {
        shrinkDifferences(estimate.ptr<float>(first), estimate.ptr<float>(first - 1),
                          scratch.wyAbove, n);
    }
    for (int r = first; r < first + kGroupRows; ++r) {
        const float* row = estimate.ptr<float>(r);
        shrinkDifferences(row + 1, row, scratch.wx, n - 1);
        scratch.wx[n - 1] = 0;
        if (r + 1 < estimate.rows) {
            shrinkDifferences(estimate.ptr<float>(r + 1), row, scratch.wy, n);
        } else {
            std::fill_n(scratch.wy, n, 0.0f);
        }
        float* adjoint = scratch.adjoint + static_cast<std::size_t>(r - first) * n;
        adjointRow(scratch.wx, r > 0 ? scratch.wyAbove : nullptr, scratch.wy, adjoint, n);
        std::swap(scratch.wy, scratch.wyAbove);
    }
}

} // namespace

void CDeconvHL::setup(const cv::Mat& kernel, cv::Point, cv::Size size, float lambda, float alpha,
                      bool useStored) {
    m_useStored = useStored;
    m_kernel = kernel;
    m_imSize = size;
    m_w = size.width;
    m_h = size.height;
    if (m_w != m_h) {
        throw "CDeconvHL::setup - m_w != m_h";
    }
    switch (m_w) {
    case 1024:
        m_order = 10;
        break;
    case 512:
        m_order = 9;
        break;
    case 256:
        m_order = 8;
        break;
    default:
        throw "CDeconvHL::setup - size not 256/512/1024";
    }
    m_lambda = lambda;
    m_alpha = std::clamp(static_cast<double>(alpha), 0.0, 1.0); // keeps not-a-number
    m_tableKnots = shrinkKnots(shrinkAlphaIndex(m_alpha));
    m_beta = 1.0;
    m_betaSteps = truncateToInt(std::log(m_betaMax) / std::log(m_betaRate));

    m_fft = std::make_unique<RealFft2D>(m_order, m_order);
    m_numerator.resize(m_fft->spectrumFloats());
    m_spectrum.resize(m_fft->spectrumFloats());
    m_scratch.allocate(RowScratch::floats(*m_fft));
    if (!m_useStored) {
        m_lut.allocate(m_betaSteps);
        buildShrinkTable();
    }
    transformKernel(m_kernel, *m_fft, m_scratch.of(0), m_kernelSpectrum);
    m_quotient.setKernel(*m_fft, m_kernelSpectrum.data());
}

void CDeconvHL::buildShrinkTable() {
    m_lut.build(m_alpha, m_betaRate, m_newtonIters);
}

void CDeconvHL::Proc(cv::Mat& in, cv::Mat& out) {
    out.create(m_h, m_w, CV_32FC1);
    m_scratch.fitTeam();
    m_beta = 1.0;
    runInTeam([&] {
        makeNumerator(in);
        runPass(in, out);
        for (m_beta = m_betaRate * m_beta; m_beta < m_betaMax; m_beta = m_betaRate * m_beta) {
            runPass(out, out);
        }
    });
}

void CDeconvHL::makeNumerator(const cv::Mat& in) {
    const RealFft2D& fft = *m_fft;
    forEachPiece(fft.groupCount(), [&](int group, int thread) {
        fft.forwardRows(in.ptr<float>(), static_cast<std::ptrdiff_t>(in.step), group,
                        m_numerator.data(), m_scratch.of(thread));
    });
    forEachPiece(fft.blockCount(), [&](int index, int) {
        const std::size_t offset = static_cast<std::size_t>(index) * fft.blockFloats();
        float* block = m_numerator.data() + offset;
        fft.forwardColumns(block, index);
        multiplyByConjugate(fft, index, block, m_kernelSpectrum.data() + offset, block);
    });
}

void CDeconvHL::runPass(const cv::Mat& estimate, cv::Mat& out) {
    const int level = shrinkLevel(m_beta, m_betaRate);
    if (m_useStored) {
        const ShrinkCurve curve(storedShrink(level, shrinkAlphaIndex(m_alpha)));
        transformAdjoint(estimate, [&](const float* minuend, const float* subtrahend, float* w,
                                       std::size_t count) {
            shrinkDifferenceRow(curve, minuend, subtrahend, w, count);
        });
    } else {
        transformAdjoint(estimate, [&](const float* minuend, const float* subtrahend, float* w,
                                       std::size_t count) {
            for (std::size_t i = 0; i < count; ++i) {
                w[i] = m_lut.at(level, minuend[i] - subtrahend[i]);
            }
        });
    }
    divideBlocks(static_cast<float>(m_beta / m_lambda));
    inverseRows(out);
}

template <class Shrink>
void CDeconvHL::transformAdjoint(const cv::Mat& estimate, const Shrink& shrinkDifferences) {
    const RealFft2D& fft = *m_fft;
    forEachPiece(fft.groupCount(), [&](int group, int thread) {
        float* memory = m_scratch.of(thread);
        const RowScratch rows(memory, fft);
        makeAdjointRows(estimate, group, rows, shrinkDifferences);
        fft.forwardRowGroup(rows.adjoint, groupRowBytes(fft), group, m_spectrum.data(), memory);
    });
}

void CDeconvHL::divideBlocks(float gamma) {
    const RealFft2D& fft = *m_fft;
    forEachPiece(fft.blockCount(), [&](int index, int) {
        const std::size_t offset = static_cast<std::size_t>(index) * fft.blockFloats();
        float* block = m_spectrum.data() + offset;
        fft.forwardColumns(block, index);
        m_quotient.divide(index, m_numerator.data() + offset, gamma, block);
        fft.inverseColumns(block, index);
    });
}

void CDeconvHL::inverseRows(cv::Mat& out) {
    const RealFft2D& fft = *m_fft;
    forEachPiece(fft.groupCount(), [&](int group, int thread) {
        fft.inverseRows(m_spectrum.data(), group, out.ptr<float>(),
                        static_cast<std::ptrdiff_t>(out.step), m_scratch.of(thread));
    });
}

void CDeconvHL::applyShrink(cv::Mat& w, cv::Mat& v) const {
    const int level = shrinkLevel(m_beta, m_betaRate);
    if (m_useStored) {
        const StoredShrink row = storedShrink(level, shrinkAlphaIndex(m_alpha));
        const auto vStep = static_cast<std::int32_t>(v.step);
        const auto wStep = static_cast<std::int32_t>(w.step);
        clampBelowInPlaceF32(v.ptr<float>(), vStep, m_w, m_h, row.levels[0]);
        clampAboveInPlaceF32(v.ptr<float>(), vStep, m_w, m_h, row.levels[m_tableKnots - 1]);
        lutLinearF32(v.ptr<float>(), vStep, w.ptr<float>(), wStep, m_w, m_h, row.values, row.levels,
                     m_tableKnots);
        return;
    }
    for (int r = 0; r < m_h; ++r) {
        std::transform(v.ptr<float>(r), v.ptr<float>(r) + m_w, w.ptr<float>(r),
                       [&](float gradient) { return m_lut.at(level, gradient); });
    }
}

} // namespace vel
