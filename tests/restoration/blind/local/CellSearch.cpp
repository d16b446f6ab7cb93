#include "restoration/blind/local/CellSearch.h"

#include "restoration/blind/squares/kernelSides.h"
#include "restoration/blind/squares/likeness.h"
#include "tests/restoration/blind/drawnPictures.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <utility>
#include <vector>

namespace restoration {
namespace {

constexpr int kSide = 21;

SquareKernel square(const WholeKernel& kernel) {
    return withSide(kernel.scaled(), kSide);
}

/// All weights alike.
WholeKernel box(int side) {
    WholeKernel kernel(side);
    std::ranges::fill(kernel.weights, 1);
    return kernel;
}

Plane pictureWith(const WholeKernel& blur) {
    return blurredPicture(DrawnScene(240, 220, 3), blur, 1, 4);
}

Plane greyPicture() {
    Plane picture(220, 200);
    std::ranges::fill(picture.values(), 0.5f);
    return picture;
}

class CellOfPicture {
public:
    explicit CellOfPicture(Plane part) : m_part(std::move(part)) {}

    CellKernel first(const SquareKernel& whole) {
        m_progress.beginPhase(1.0, search().firstUnits());
        return search().first(whole, m_progress);
    }
    CellKernel second(const CellKernel& known, const SquareKernel& neighbours) {
        m_progress.beginPhase(1.0, search().secondUnits());
        return search().second(known, neighbours, m_progress);
    }
    CellKernel closer(const std::vector<SquareKernel>& starts, double agreement) {
        m_progress.beginPhase(1.0, search().closerUnits(starts.size()));
        return search().closer(starts, agreement, m_progress);
    }
    double done() const { return m_progress.done(); }

private:
    CellSearch search() const { return {m_part, {kSide, kSide}, m_cancellation}; }

    Plane m_part;
    Cancellation m_cancellation;
    ProgressMeter m_progress;
};

TEST(CellSearch, CloserBeginsWithTheKernelThatExplainsTheCellBest) {
    CellOfPicture cell(pictureWith(hook()));
    const SquareKernel truth = square(hook());
    const SquareKernel other = square(line11());
    const CellKernel last = cell.closer({other, square(discOfRadius3()), truth}, 0.6);
    EXPECT_GT(likeness(last.kernel, truth), 0.9);
    EXPECT_EQ(cell.closer({truth, other, square(discOfRadius3())}, 0.6).kernel.values,
              last.kernel.values);
}

TEST(CellSearch, CloserIsNoWorseThanItsStartAndBetterThanAWrongOne) {
    CellOfPicture cell(pictureWith(hook()));
    const SquareKernel wrong = square(box(5));
    const CellKernel found = cell.closer({wrong}, 0.6);
    EXPECT_GT(likeness(found.kernel, square(hook())), likeness(wrong, square(hook())) + 0.05);
    EXPECT_LE(cell.closer({found.kernel}, 0.6).score(), found.score());
}

TEST(CellSearch, CloserKeepsTheAgreementAndHasEvidence) {
    CellOfPicture cell(pictureWith(hook()));
    const CellKernel found = cell.closer({square(hook())}, 0.6);
    EXPECT_EQ(found.agreement, 0.6);
    EXPECT_EQ(found.evidence.agreement, 0.6);
    EXPECT_TRUE(found.hasEvidence);
    EXPECT_FALSE(found.isSharp);
}

TEST(CellSearch, WithoutEdgesKernelsStayAsTheyAre) {
    CellOfPicture cell(greyPicture());
    const CellKernel closer = cell.closer({square(line11()), square(hook())}, 0.6);
    EXPECT_EQ(closer.kernel.values, square(line11()).values);
    EXPECT_EQ(closer.agreement, 0.6);
    EXPECT_FALSE(closer.hasEvidence);
    const CellKernel first = cell.first(square(line11()));
    EXPECT_EQ(first.kernel.values, square(line11()).values);
    EXPECT_EQ(first.agreement, 0.0);
    EXPECT_FALSE(first.hasEvidence);
    const CellKernel second = cell.second(first, square(hook()));
    EXPECT_EQ(second.kernel.values, square(line11()).values);
}

TEST(CellSearch, EveryUnitOfProgressPasses) {
    for (Plane (*const picture)() :
         {+[] { return greyPicture(); }, +[] { return pictureWith(hook()); }}) {
        CellOfPicture cell(picture());
        cell.closer({square(line11()), square(hook())}, 0.6);
        EXPECT_EQ(cell.done(), 1.0);
    }
}

TEST(CellSearch, CellsWithSharpEdgesGetASinglePixel) {
    CellOfPicture cell(pictureWith(box(1)));
    const CellKernel found = cell.first(square(box(11)));
    EXPECT_TRUE(found.isSharp);
    EXPECT_EQ(extentOf(found.kernel), 1);
}

TEST(CellSearch, TheSpectrumContradictsKernelsThatAreTooWide) {
    CellOfPicture narrow(pictureWith(box(3)));
    const CellKernel found = narrow.first(square(box(11)));
    EXPECT_FALSE(found.isSharp);
    EXPECT_TRUE(found.isContradicted);
    CellOfPicture wide(pictureWith(hook()));
    EXPECT_FALSE(wide.first(square(hook())).isContradicted);
}

TEST(CellSearch, SecondKeepsThatACellIsContradicted) {
    CellOfPicture cell(pictureWith(hook()));
    CellKernel known = cell.closer({square(line11())}, 0.6);
    for (const bool isContradicted : {false, true}) {
        known.isContradicted = isContradicted;
        EXPECT_EQ(cell.second(known, square(hook())).isContradicted, isContradicted);
    }
}

} // namespace
} // namespace restoration
