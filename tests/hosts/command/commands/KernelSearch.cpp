#include "hosts/command/commands/KernelSearch.h"

#include "hosts/command/terminal/Failure.h"
#include "tests/hosts/command/failureText.h"

#include <gtest/gtest.h>
#include <optional>
#include <sstream>

namespace {

using velorn::BlindSettings;
namespace api = velorn::api;

/// A kernel of `width` pixels in a row.
api::FoundKernel found(int width, float confidence, int kind = VELORN_KIND_FREE) {
    const std::vector<float> weights(static_cast<std::size_t>(width), 1.0f);
    api::FoundKernel result{api::Kernel::fromValues(weights.data(), width, 1), {}};
    result.report.confidence = confidence;
    result.report.kind = kind;
    result.report.parts = 1;
    result.report.partAgreement = 1.0f;
    return result;
}

class ChosenKernel : public testing::Test {
protected:
    api::FoundKernel choose() {
        return velorn::chosenKernel(m_found, "in.png", m_settings, m_terminal);
    }
    std::string failure() {
        return vel::test::failureText([&] { choose(); });
    }

    std::vector<api::FoundKernel> m_found{found(3, 0.83f), found(5, 0.32f), found(7, 0.5f)};
    BlindSettings m_settings;
    std::ostringstream m_terminal;
};

TEST_F(ChosenKernel, IsTheFirstUnlessTheSettingsSayOtherwise) {
    EXPECT_EQ(choose().kernel.width(), 3);
    m_settings.candidate = 3;
    EXPECT_EQ(choose().kernel.width(), 7);
    EXPECT_EQ(m_terminal.str(), "");
}

TEST_F(ChosenKernel, NumberBeyondTheCandidatesIsAFailureThatNamesTheirNumber) {
    m_settings.candidate = 4;
    EXPECT_EQ(failure(), "'in.png': there is no candidate 4: the search has found 3");
}

TEST_F(ChosenKernel, UncertainOneIsAWarning) {
    m_settings.candidate = 2;
    EXPECT_EQ(choose().kernel.width(), 5);
    EXPECT_EQ(m_terminal.str(),
              "velorn: warning: 'in.png': the kernel found is uncertain (confidence 32 %): the "
              "result may be worse than the picture; see the candidates with 'velorn estimate "
              "--sheet'\n");
}

TEST_F(ChosenKernel, UncertainOneIsAFailureIfTheSettingsAreStrict) {
    m_settings.isStrict = true;
    EXPECT_EQ(choose().kernel.width(), 3);
    m_settings.candidate = 2;
    EXPECT_EQ(failure(), "'in.png': the kernel found is uncertain (confidence 32 %); nothing is "
                         "written because of --strict");
    EXPECT_EQ(m_terminal.str(), "");
}

TEST_F(ChosenKernel, PictureThatIsNotBlurredIsAWarningOrAFailure) {
    m_found.insert(m_found.begin(), found(1, 0.2f, VELORN_KIND_NONE));
    EXPECT_EQ(choose().kernel.width(), 1);
    EXPECT_EQ(m_terminal.str(), "velorn: warning: 'in.png': the picture does not look blurred and "
                                "is not restored\n");
    m_settings.isStrict = true;
    EXPECT_EQ(failure(), "'in.png': the picture does not look blurred; nothing is written because "
                         "of --strict");
}

TEST_F(ChosenKernel, ThatExplainsThePictureBadlyIsAFailureIfTheSettingsAreStrict) {
    m_found[0].report.misfit = 7.9f * 7.9f;
    m_settings.isStrict = true;
    EXPECT_NO_THROW(choose());
    m_found[0].report.misfit = 8.1f * 8.1f;
    EXPECT_THROW(choose(), velorn::Failure);
    m_settings.isStrict = false;
    EXPECT_NO_THROW(choose());
    EXPECT_EQ(m_terminal.str(), "");
}

TEST_F(ChosenKernel, PartsWithDifferentKernelsAreAFailureIfTheSettingsAreStrict) {
    m_found[0].report.parts = 3;
    m_found[0].report.partAgreement = 0.65f;
    m_settings.isStrict = true;
    EXPECT_THROW(choose(), velorn::Failure);
    m_found[0].report.partAgreement = 0.75f;
    EXPECT_NO_THROW(choose());
}

TEST_F(ChosenKernel, PartsWithDifferentKernelsAreAWarning) {
    m_found[0].report.parts = 3;
    m_found[0].report.partAgreement = 0.75f;
    choose();
    EXPECT_EQ(m_terminal.str(), "");
    m_found[0].report.partAgreement = 0.65f;
    choose();
    EXPECT_EQ(m_terminal.str(),
              "velorn: warning: 'in.png': the blur differs across the picture: no kernel fits all "
              "of it; try --local with 'velorn deblur --blind'\n");
}

class LocalKernels : public testing::Test {
protected:
    /// A grid of `columns` equal kernels, in a picture whose parts have different kernels.
    void setColumns(int columns) {
        const api::FoundKernel kernel = found(3, 0.83f);
        const std::vector<api::Kernel> kernels(static_cast<std::size_t>(columns), kernel.kernel);
        m_found = {api::KernelGrid::of(kernels, columns, 1), kernel.report};
        m_found->report.parts = 3;
        m_found->report.partAgreement = 0.65f;
    }
    std::string warnings() {
        std::ostringstream terminal;
        velorn::checkLocalKernels(*m_found, "in.png", m_settings, terminal);
        return terminal.str();
    }

    std::optional<api::FoundKernelGrid> m_found;
    BlindSettings m_settings;
};

TEST_F(LocalKernels, FitAllOfThePictureIfThereAreSeveral) {
    setColumns(2);
    EXPECT_TRUE(velorn::isLocal(m_found->grid));
    EXPECT_EQ(warnings(), "");
    setColumns(1);
    EXPECT_FALSE(velorn::isLocal(m_found->grid));
    EXPECT_EQ(warnings(), "velorn: warning: 'in.png': the blur differs across the picture: no "
                          "kernel fits all of it\n");
}

TEST_F(LocalKernels, AreAWarningOrAFailureIfThatOfThePictureIsUncertain) {
    setColumns(2);
    m_found->report.confidence = 0.32f;
    EXPECT_NE(warnings().find("uncertain (confidence 32 %)"), std::string::npos);
    m_settings.isStrict = true;
    EXPECT_THROW(warnings(), velorn::Failure);
}

} // namespace
