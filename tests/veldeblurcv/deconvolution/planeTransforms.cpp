#include "velimproclib/veldeblurcv/deconvolution/planeTransforms.h"

#include "tests/support/noisePlane.h"
#include "velimproclib/primitives/base/AlignedFloats.h"

#include <gtest/gtest.h>

#include <set>

namespace {

using namespace vel;

struct Transform {
    explicit Transform(int order) : fft(order, order) {
        spectrum.resize(fft.spectrumFloats());
        scratch.allocate(fft.scratchFloats());
    }

    RealFft2D fft;
    AlignedFloats spectrum;
    ThreadScratch scratch;
};

TEST(PlaneTransforms, TheInverseRestoresEveryRow) {
    for (const int order : {5, 8}) {
        Transform transform(order);
        const RealFft2D& fft = transform.fft;
        const cv::Mat plane = test::noisePlane(fft.height(), fft.width(), 1, -1.0f, 1.0f);
        cv::Mat restored(plane.size(), CV_32FC1, cv::Scalar(9));
        runInTeam([&] {
            forwardRows(fft, plane, transform.spectrum.data(), transform.scratch);
            forEachBlock(fft, [&](int block, std::size_t offset) {
                fft.forwardColumns(transform.spectrum.data() + offset, block);
                fft.inverseColumns(transform.spectrum.data() + offset, block);
            });
            inverseRows(fft, transform.spectrum.data(), restored, transform.scratch);
        });
        EXPECT_LT(cv::norm(restored, plane, cv::NORM_INF), 1e-5) << order;
    }
}

TEST(PlaneTransforms, TheFirstElementOfTheSpectrumIsTheSumOfThePlane) {
    Transform transform(6);
    const RealFft2D& fft = transform.fft;
    const cv::Mat plane = test::noisePlane(fft.height(), fft.width(), 2, 0.0f, 1.0f);
    forwardRows(fft, plane, transform.spectrum.data(), transform.scratch);
    fft.forwardColumns(transform.spectrum.data(), 0);
    EXPECT_NEAR(transform.spectrum.data()[0], cv::sum(plane)[0], 1e-2);
}

TEST(PlaneTransforms, EveryBlockIsVisitedOnceAtItsOffset) {
    Transform transform(8);
    const RealFft2D& fft = transform.fft;
    std::set<std::size_t> offsets;
    forEachBlock(fft, [&](int block, std::size_t offset) {
        EXPECT_EQ(offset, static_cast<std::size_t>(block) * fft.blockFloats());
        EXPECT_TRUE(offsets.insert(offset).second) << block;
    });
    EXPECT_EQ(offsets.size(), static_cast<std::size_t>(fft.blockCount()));
}

} // namespace
