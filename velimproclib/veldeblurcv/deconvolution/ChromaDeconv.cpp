#include "velimproclib/veldeblurcv/deconvolution/ChromaDeconv.h"

#include "velimproclib/primitives/base/TeamLoop.h"
#include "velimproclib/veldeblurcv/deconvolution/kernelSpectrum.h"
#include "velimproclib/veldeblurcv/deconvolution/rowGroups.h"
#include "velimproclib/veldeblurcv/deconvolution/SpectralQuotient.h"

#include <algorithm>
#include <cstddef>

namespace vel {
namespace {

/// The binary logarithm of the transform's side for planes of `width` columns.
int orderFor(int width) {
    switch (width) {
    case 256:
        return 8;
    case 512:
        return 9;
    default:
        return 10;
    }
}

/// Working memory of one thread: that of the transform and the rows of a group.
std::size_t scratchFloats(const RealFft2D& fft) {
    return fft.scratchFloats() + groupFloats(fft);
}

/// The rows of `group` as the transform wants them, with zeros where the plane ends earlier.
void fillRows(const cv::Mat& plane, int group, int side, float* rows) {
    const int columns = std::min(plane.cols, side);
    for (int i = 0; i < kGroupRows; ++i, rows += side) {
        const int r = group * kGroupRows + i;
        const int taken = r < plane.rows ? columns : 0;
        if (taken > 0) {
            std::copy_n(plane.ptr<float>(r), taken, rows);
        }
        std::fill(rows + taken, rows + side, 0.0f);
    }
}

/// What of the rows of `group` lies within the plane.
void cutRows(const float* rows, int group, int side, cv::Mat& plane) {
    const int last = std::min(plane.rows, (group + 1) * kGroupRows);
    for (int r = group * kGroupRows; r < last; ++r, rows += side) {
        std::copy_n(rows, std::min(plane.cols, side), plane.ptr<float>(r));
    }
}

} // namespace

void CChromaDeconv::setup(const cv::Mat& kernel, cv::Point, cv::Size size, float weight) {
    m_kernel = kernel;
    m_imSize = size;
    m_w = size.width;
    m_h = size.height;
    m_order = orderFor(m_w);
    m_weight = weight;

    m_fft = std::make_unique<RealFft2D>(m_order, m_order);
    const RealFft2D& fft = *m_fft;
    m_spectrum.resize(fft.spectrumFloats());
    m_scratch.allocate(scratchFloats(fft));

    AlignedFloats& kernelSpectrum = m_spectrum;
    transformKernel(m_kernel, fft, m_scratch.of(0), kernelSpectrum);
    SpectralQuotient quotient;
    quotient.setKernel(fft, kernelSpectrum.data());
    m_filter.resize(fft.spectrumFloats());
    std::fill_n(m_filter.data(), m_filter.size(), 0.0f);
    for (int index = 0; index < fft.blockCount(); ++index) {
        const std::size_t offset = static_cast<std::size_t>(index) * fft.blockFloats();
        quotient.divide(index, kernelSpectrum.data() + offset, m_weight, m_filter.data() + offset);
    }
}

void CChromaDeconv::Proc(cv::Mat& in, cv::Mat& out) {
    out.create(m_h, m_w, CV_32FC1);
    if (!fillsTransform()) {
        in.copyTo(out);
    }
    m_scratch.fitTeam();
    runInTeam([&] {
        forwardRows(in);
        filterBlocks();
        inverseRows(out);
    });
}

bool CChromaDeconv::fillsTransform() const noexcept {
    return m_w == m_fft->width() && m_h == m_fft->height();
}

void CChromaDeconv::forwardRows(const cv::Mat& in) {
    const RealFft2D& fft = *m_fft;
    forEachPiece(fft.groupCount(), [&](int group, int thread) {
        float* scratch = m_scratch.of(thread);
        if (fillsTransform()) {
            fft.forwardRows(in.ptr<float>(), static_cast<std::ptrdiff_t>(in.step), group,
                            m_spectrum.data(), scratch);
        } else {
            float* rows = scratch + fft.scratchFloats();
            fillRows(in, group, fft.width(), rows);
            fft.forwardRowGroup(rows, groupRowBytes(fft), group, m_spectrum.data(), scratch);
        }
    });
}

void CChromaDeconv::filterBlocks() {
    const RealFft2D& fft = *m_fft;
    forEachPiece(fft.blockCount(), [&](int index, int) {
        const std::size_t offset = static_cast<std::size_t>(index) * fft.blockFloats();
        float* block = m_spectrum.data() + offset;
        fft.forwardColumns(block, index);
        multiplyByConjugate(fft, index, block, m_filter.data() + offset, block);
        fft.inverseColumns(block, index);
    });
}

void CChromaDeconv::inverseRows(cv::Mat& out) {
    const RealFft2D& fft = *m_fft;
    forEachPiece(fft.groupCount(), [&](int group, int thread) {
        float* scratch = m_scratch.of(thread);
        if (fillsTransform()) {
            fft.inverseRows(m_spectrum.data(), group, out.ptr<float>(),
                            static_cast<std::ptrdiff_t>(out.step), scratch);
        } else {
            float* rows = scratch + fft.scratchFloats();
            fft.inverseRowGroup(m_spectrum.data(), group, rows, groupRowBytes(fft), scratch);
            cutRows(rows, group, fft.width(), out);
        }
    });
}

} // namespace vel
