#include "velimproclib/veldeblurcv/deconvolution/DeconvHL.h"

#include "velimproclib/primitives/base/TeamLoop.h"
#include "velimproclib/veldeblurcv/deconvolution/adjointRow.h"
#include "velimproclib/veldeblurcv/deconvolution/betaSchedule.h"
#include "velimproclib/veldeblurcv/deconvolution/kernelSpectrum.h"
#include "velimproclib/veldeblurcv/deconvolution/planeTransforms.h"
#include "velimproclib/veldeblurcv/deconvolution/transformOrder.h"
#include "velimproclib/veldeblurcv/shrinkage/ShrinkCurve.h"
#include "velimproclib/veldeblurcv/shrinkage/ShrinkTable.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <utility>

namespace vel {
namespace {

constexpr int kGroupRows = RealFft2D::kLanes; // rows that the transform takes at a time

std::size_t groupFloats(const RealFft2D& fft) {
    return kGroupRows * static_cast<std::size_t>(fft.width());
}

/// The working memory of one thread: that of the transform, a group of rows and three lines.
struct RowScratch {
    RowScratch(float* memory, const RealFft2D& fft)
        : adjoint(memory + fft.scratchFloats()), wx(adjoint + groupFloats(fft)),
          wyAbove(wx + fft.width()), wy(wyAbove + fft.width()) {}

    static std::size_t floats(const RealFft2D& fft) {
        constexpr std::size_t kLines = 3;
        return fft.scratchFloats() + groupFloats(fft) +
               kLines * static_cast<std::size_t>(fft.width());
    }

    float* adjoint; ///< `kGroupRows` rows without gaps
    float* wx;
    float* wyAbove;
    float* wy;
};

/// Shrinks the gradients of `estimate` and writes the rows of `group` of their transposed
/// differences to `scratch.adjoint`.
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
    setSize(size);
    m_lambda = lambda;
    m_alpha = std::clamp(static_cast<double>(alpha), 0.0, 1.0); // a NaN stays
    m_beta = kFirstBeta;

    m_fft = std::make_unique<RealFft2D>(m_order, m_order);
    m_numerator.resize(m_fft->spectrumFloats());
    m_spectrum.resize(m_fft->spectrumFloats());
    m_scratch.allocate(RowScratch::floats(*m_fft));
    if (!m_useStored) {
        m_lut.allocate(kShrinkLevels - 1);
        m_lut.build(m_alpha, kBetaRate, m_newtonIters);
    }
    prepareKernel();
}

void CDeconvHL::setSize(cv::Size size) {
    m_imSize = size;
    m_w = size.width;
    m_h = size.height;
    if (m_w != m_h) {
        throw "CDeconvHL::setup - m_w != m_h";
    }
    const std::optional<int> order = transformOrder(m_w);
    if (!order) {
        throw "CDeconvHL::setup - size not 256/512/1024";
    }
    m_order = *order;
}

void CDeconvHL::prepareKernel() {
    transformKernel(m_kernel, *m_fft, m_scratch, m_kernelSpectrum);
    m_quotient.setKernel(*m_fft, m_kernelSpectrum.data());
}

void CDeconvHL::Proc(cv::Mat& in, cv::Mat& out) {
    out.create(m_h, m_w, CV_32FC1);
    m_scratch.fitTeam();
    runInTeam([&] {
        makeNumerator(in);
        const cv::Mat* estimate = &in;
        forEachBeta([&](double beta) {
            m_beta = beta;
            runPass(*estimate, out);
            estimate = &out;
        });
    });
}

void CDeconvHL::makeNumerator(const cv::Mat& in) {
    const RealFft2D& fft = *m_fft;
    forwardRows(fft, in, m_numerator.data(), m_scratch);
    forEachBlock(fft, [&](int index, std::size_t offset) {
        float* block = m_numerator.data() + offset;
        fft.forwardColumns(block, index);
        multiplyByConjugate(fft, index, block, m_kernelSpectrum.data() + offset, block);
    });
}

void CDeconvHL::runPass(const cv::Mat& estimate, cv::Mat& out) {
    const int level = shrinkLevel(m_beta, kBetaRate);
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
    inverseRows(*m_fft, m_spectrum.data(), out, m_scratch);
}

template <class Shrink>
void CDeconvHL::transformAdjoint(const cv::Mat& estimate, const Shrink& shrinkDifferences) {
    const RealFft2D& fft = *m_fft;
    const auto rowBytes = static_cast<std::ptrdiff_t>(sizeof(float)) * fft.width();
    forEachPiece(fft.groupCount(), [&](int group, int thread) {
        float* memory = m_scratch.of(thread);
        const RowScratch rows(memory, fft);
        makeAdjointRows(estimate, group, rows, shrinkDifferences);
        fft.forwardRowGroup(rows.adjoint, rowBytes, group, m_spectrum.data(), memory);
    });
}

void CDeconvHL::divideBlocks(float gamma) {
    const RealFft2D& fft = *m_fft;
    forEachBlock(fft, [&](int index, std::size_t offset) {
        float* block = m_spectrum.data() + offset;
        fft.forwardColumns(block, index);
        m_quotient.divide(index, m_numerator.data() + offset, gamma, block);
        fft.inverseColumns(block, index);
    });
}

} // namespace vel
