#include "velimproclib/veldeblurcv/deconvolution/ChromaDeconv.h"

#include "velimproclib/primitives/base/TeamLoop.h"
#include "velimproclib/veldeblurcv/deconvolution/kernelSpectrum.h"
#include "velimproclib/veldeblurcv/deconvolution/planeTransforms.h"
#include "velimproclib/veldeblurcv/deconvolution/SpectralQuotient.h"
#include "velimproclib/veldeblurcv/deconvolution/transformOrder.h"

#include <algorithm>
#include <cstddef>

namespace vel {

void CChromaDeconv::setup(const cv::Mat& kernel, cv::Point, cv::Size size, float weight) {
    constexpr int kOrderOfOtherSides = 10;
    m_kernel = kernel;
    m_imSize = size;
    m_w = size.width;
    m_h = size.height;
    m_order = transformOrder(m_w).value_or(kOrderOfOtherSides);
    m_weight = weight;

    m_fft = std::make_unique<RealFft2D>(m_order, m_order);
    m_scratch.allocate(m_fft->scratchFloats());
    transformKernel(m_kernel, *m_fft, m_scratch, m_spectrum);
    makeFilter();
}

void CChromaDeconv::makeFilter() {
    SpectralQuotient quotient;
    quotient.setKernel(*m_fft, m_spectrum.data());
    m_filter.resize(m_fft->spectrumFloats());
    std::fill_n(m_filter.data(), m_filter.size(), 0.0f);
    forEachBlock(*m_fft, [&](int block, std::size_t offset) {
        quotient.divide(block, m_spectrum.data() + offset, m_weight, m_filter.data() + offset);
    });
}

void CChromaDeconv::Proc(cv::Mat& in, cv::Mat& out) {
    const RealFft2D& fft = *m_fft;
    out.create(fft.height(), fft.width(), CV_32FC1);
    m_scratch.fitTeam();
    runInTeam([&] {
        forwardRows(fft, in, m_spectrum.data(), m_scratch);
        forEachBlock(fft, [&](int index, std::size_t offset) {
            float* block = m_spectrum.data() + offset;
            fft.forwardColumns(block, index);
            multiplyByConjugate(fft, index, block, m_filter.data() + offset, block);
            fft.inverseColumns(block, index);
        });
        inverseRows(fft, m_spectrum.data(), out, m_scratch);
    });
}

} // namespace vel
