#include "restoration/blind/refine/SpectrumModel.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace restoration {
namespace {

constexpr double kNoise = 1e-3;
constexpr double kLevel = 2e-4;

/// The model of windows of 64 by 64 pixels.
class Spectrum : public testing::Test {
protected:
    using Frequency = SpectrumModel::Frequency;

    /// Gives every frequency the blur of a kernel and the power that is expected with it.
    void blur(double (*blurAt)(const Frequency&)) {
        for (Frequency& at : m_model.frequencies()) {
            at.blur = blurAt(at);
            at.power = kLevel * at.prior * at.blur + kNoise;
        }
    }

    void expectLevels(double tolerance) {
        for (const Frequency& at : m_model.frequencies()) {
            if (at.patch >= 0) {
                EXPECT_NEAR(m_model.sharpPower(at) / (kLevel * at.prior), 1.0, tolerance);
            }
        }
    }

    vel::RealFft2D m_fft{6, 6};
    SpectrumModel m_model{m_fft, kNoise};
    Cancellation m_cancellation;
};

TEST_F(Spectrum, FirstLevelsExplainAPictureWithoutBlur) {
    blur([](const Frequency&) { return 1.0; });
    m_model.resetLevels();
    expectLevels(1e-9);
    m_model.fitLevels(3, m_cancellation);
    expectLevels(1e-9);
}

TEST_F(Spectrum, FittedLevelsExplainABlurredPicture) {
    // Weaker at higher frequencies
    blur([](const Frequency& at) { return at.prior / (at.prior + 100.0); });
    m_model.resetLevels();
    m_model.fitLevels(200, m_cancellation);
    expectLevels(1e-3);
}

TEST_F(Spectrum, FrequenciesOutsideOfTheRangeDoNotCount) {
    double count = 0.0;
    for (const Frequency& at : m_model.frequencies()) {
        // 64 pixels hold no whole wave of less than 1/64 cycles per pixel; at most 1/2 is looked
        // at.
        const bool isWithin = at.prior <= 64.0 * 64.0 * 64.0 && at.prior >= 8.0;
        EXPECT_TRUE(at.patch < 0 || isWithin);
        count += at.patch >= 0 ? 1.0 : 0.0;
    }
    EXPECT_EQ(m_model.count(), count);
    EXPECT_GT(count, 64 * 32 * 0.7);
}

TEST_F(Spectrum, FrequenciesOfAPatchHaveOneLevel) {
    blur([](const Frequency&) { return 1.0; });
    m_model.resetLevels();
    Frequency& first = *std::ranges::find_if(m_model.frequencies(),
                                             [](const Frequency& at) { return at.patch >= 0; });
    first.power *= 2.0;
    m_model.resetLevels();
    for (const Frequency& at : m_model.frequencies()) {
        if (at.patch >= 0) {
            EXPECT_EQ(m_model.sharpPower(at) > kLevel * at.prior * (1.0 + 1e-9),
                      at.patch == first.patch);
        }
    }
}

} // namespace
} // namespace restoration
