#include "hosts/command/sheet/CandidateSheet.h"

#include "hosts/command/sheet/detailArea.h"
#include "hosts/command/sheet/shownPart.h"
#include "tests/support/BlurredPicture.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestPictures.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace {

namespace api = velorn::api;
using velorn::CandidateSheet;
using velorn::ImageFile;
using velorn::PictureArea;
using velorn::RgbPixels;
using Bytes = std::vector<std::uint8_t>;

api::FoundKernel candidate(float radius) {
    api::FoundKernel found{api::Kernel::of(VELORN_BLUR_DISC, radius), {}};
    found.report.kind = VELORN_KIND_DISC;
    found.report.extent = radius;
    found.report.confidence = 0.7f;
    return found;
}

/// Whether `part` lies somewhere in `whole`, pixel for pixel.
bool holds(const ImageFile& whole, const RgbPixels& part) {
    const auto& all = std::get<Bytes>(whole.samples());
    const auto& wanted = std::get<Bytes>(part.samples);
    const auto rowBytes = static_cast<std::size_t>(3 * part.width);
    for (int y = 0; y + part.height <= whole.height(); ++y) {
        for (int x = 0; x + part.width <= whole.width(); ++x) {
            int r = 0;
            while (r < part.height &&
                   std::equal(&wanted[static_cast<std::size_t>(r) * rowBytes],
                              &wanted[static_cast<std::size_t>(r) * rowBytes] + rowBytes,
                              &all[static_cast<std::size_t>(((y + r) * whole.width() + x) * 3)])) {
                ++r;
            }
            if (r == part.height) {
                return true;
            }
        }
    }
    return false;
}

class CandidateSheetTest : public testing::Test {
protected:
    CandidateSheetTest() {
        const auto disc = velorn::makeKernel({velorn::AnalyticBlur::Shape::Disc, 3.0f, 0.0f});
        m_soft = vel::test::blurred(vel::test::drawnPicture(500, 360), disc);
    }

    /// The blurred picture, stored with an orientation.
    ImageFile stored(int orientation) {
        OIIO::ImageSpec spec(500, 360, 3, OIIO::TypeDesc::UINT8);
        spec.attribute("Orientation", orientation);
        vel::test::writePicture(m_path, spec, std::get<Bytes>(m_soft.samples));
        return ImageFile::read(m_path);
    }

    ImageFile sheetOf(const ImageFile& picture, const std::vector<api::FoundKernel>& found,
                      const std::optional<PictureArea>& look = {}) {
        return CandidateSheet(picture, m_path, look, 1, m_interrupt).draw(found, m_progress);
    }

    /// The part of the restoration of the whole picture that the sheet shows.
    RgbPixels expectedDetail(const ImageFile& picture, const api::Kernel& kernel,
                             const PictureArea& area) {
        ImageFile restored = picture;
        api::restore(restored.view(), restored.view(), {kernel});
        return velorn::shownPart(restored, area, 1, m_interrupt);
    }

    vel::test::TemporaryFolder m_folder;
    std::filesystem::path m_path = m_folder / "in.tif";
    velorn::RgbPixels m_soft;
    velorn::Interrupt m_interrupt;
    api::Progress m_progress = [this](double done) {
        m_reports.push_back(done);
        return true;
    };
    std::vector<double> m_reports;
};

TEST_F(CandidateSheetTest, ShowsADetailAsItIsAndRestoredWithEachKernel) {
    const ImageFile picture = stored(1);
    const std::vector<api::FoundKernel> found{candidate(3.0f), candidate(2.0f)};
    const ImageFile sheet = sheetOf(picture, found);
    const PictureArea area = velorn::detailArea(picture, {0, 0, 500, 360}, 400, 300, m_interrupt);
    EXPECT_TRUE(holds(sheet, velorn::shownPart(picture, area, 1, m_interrupt)));
    EXPECT_TRUE(holds(sheet, expectedDetail(picture, found[0].kernel, area)));
    EXPECT_TRUE(holds(sheet, expectedDetail(picture, found[1].kernel, area)));
    EXPECT_FALSE(holds(sheet, expectedDetail(picture, candidate(2.5f).kernel, area)));
}

TEST_F(CandidateSheetTest, ShowsThePictureUpright) {
    const ImageFile picture = stored(6);
    const std::vector<api::FoundKernel> found{candidate(3.0f)};
    const PictureArea area = velorn::detailArea(picture, {0, 0, 500, 360}, 300, 400, m_interrupt);
    const RgbPixels detail = expectedDetail(picture, found[0].kernel, area);
    EXPECT_EQ(detail.width, 360);
    EXPECT_EQ(detail.height, 300);
    EXPECT_TRUE(holds(sheetOf(picture, found), detail));
}

TEST_F(CandidateSheetTest, DetailLiesInThePartToLookAt) {
    const ImageFile picture = stored(1);
    const ImageFile sheet = sheetOf(picture, {candidate(3.0f)}, PictureArea{320, 200, 100, 80});
    EXPECT_TRUE(holds(sheet, velorn::shownPart(picture, {320, 200, 100, 80}, 1, m_interrupt)));
}

TEST_F(CandidateSheetTest, GrowsWithTheNumberOfCandidates) {
    const ImageFile picture = stored(1);
    const ImageFile one = sheetOf(picture, {candidate(3.0f)});
    const ImageFile two = sheetOf(picture, {candidate(3.0f), candidate(2.0f)});
    EXPECT_EQ(two.width(), one.width());
    EXPECT_GT(two.height(), one.height() + 300);
}

TEST_F(CandidateSheetTest, ProgressRisesToOne) {
    sheetOf(stored(1), {candidate(3.0f), candidate(2.0f)});
    EXPECT_TRUE(std::ranges::is_sorted(m_reports));
    EXPECT_EQ(m_reports.back(), 1.0);
    EXPECT_LT(m_reports.front(), 0.5);
}

TEST_F(CandidateSheetTest, TinyGreyPicturesWithAlphaHaveASheet) {
    OIIO::ImageSpec spec(40, 32, 2, OIIO::TypeDesc::UINT16);
    spec.alpha_channel = 1;
    vel::test::writePicture(m_path, spec, vel::test::variedSamples<std::uint16_t>(spec));
    const ImageFile picture = ImageFile::read(m_path);
    const std::vector<api::FoundKernel> found{candidate(1.0f)};
    EXPECT_TRUE(
        holds(sheetOf(picture, found), velorn::shownPart(picture, {0, 0, 40, 32}, 1, m_interrupt)));
}

} // namespace
