#include "restoration/blind/local/findKernelGrid.h"

#include "restoration/blind/local/cellTrust.h"
#include "restoration/blind/local/GridSearch.h"
#include "restoration/blind/local/judgeGrid.h"
#include "restoration/blind/squares/kernelSides.h"
#include "restoration/blind/squares/likeness.h"

#include <algorithm>
#include <cstddef>
#include <span>
#include <utility>

namespace restoration {
namespace {

/// The share of the call that the search for one kernel takes.
constexpr double kShareOfWhole = 0.2;
/// Kernels that resemble that of the whole picture more than this do not differ.
constexpr double kSame = 0.93;
/// Cells that agree with themselves less than this, on the mean, are not reliable.
constexpr double kReliable = 0.8;

FoundGrid oneCell(std::vector<FoundKernel> whole) {
    const CellReport report{true, whole.front().confidence, 1.0f};
    return {KernelGrid({whole.front().kernel}, 1, 1), {report}, std::move(whole)};
}

bool isDifferent(const GridKernels& kernels) {
    return likenessToWhole(kernels) <= kSame && meanAgreement(kernels) >= kReliable;
}

/// The smallest side that holds every kernel.
int sideOf(std::span<const SquareKernel> kernels) {
    int radius = 0;
    for (const SquareKernel& kernel : kernels) {
        radius = std::max(radius, extentOf(kernel) / 2);
    }
    return 2 * radius + 1;
}

/// `square`, cut to `side`.
Kernel kernelOf(const SquareKernel& square, int side, const Trust& trust) {
    const SquareKernel cut = withSide(square, side);
    Kernel kernel{cut.side, cut.side, {}, trust};
    kernel.values.assign(cut.values.begin(), cut.values.end());
    return kernel;
}

CellReport reportOf(const CellKernel& found, const SquareKernel& smooth,
                    const SquareKernel& whole) {
    return {found.agreement > 0.0, static_cast<float>(found.agreement),
            static_cast<float>(std::min(likeness(smooth, whole), 1.0))};
}

FoundGrid gridOf(const GridSearch& search, const Trust& whole) {
    const GridKernels& kernels = search.kernels();
    const int side = sideOf(search.smooth());
    std::vector<Kernel> cells;
    std::vector<CellReport> reports;
    for (std::size_t i = 0; i < kernels.found.size(); ++i) {
        const SquareKernel& smooth = search.smooth()[i];
        cells.push_back(kernelOf(smooth, side, cellTrust(kernels.found[i], whole)));
        reports.push_back(reportOf(kernels.found[i], smooth, kernels.whole));
    }
    return {KernelGrid(std::move(cells), kernels.cells.columns, kernels.cells.rows),
            std::move(reports),
            {}};
}

} // namespace

FoundGrid findKernelGrid(const Plane& luminance, const FindSettings& settings, Team& team) {
    team.progress().beginSpan(kShareOfWhole);
    std::vector<FoundKernel> whole = findCandidates(luminance, settings, team);
    team.progress().beginSpan(1.0);
    // No kernel fits the whole of a picture whose blur differs, and the first one may be a point.
    const auto blurred = std::ranges::find_if(
        whole, [](const FoundKernel& found) { return found.kernel.largerSide() > 1; });
    if (blurred == whole.end()) {
        return oneCell(std::move(whole));
    }
    GridSearch search(luminance, blurred->kernel, team);
    if (!search.hasSeveralCells()) {
        return oneCell(std::move(whole));
    }
    search.find();
    const bool isSharp = blurred != whole.begin() && !showsBlur(search.kernels());
    if (isSharp || !isDifferent(search.kernels())) {
        return oneCell(std::move(whole));
    }
    search.divide();
    FoundGrid found = gridOf(search, blurred->kernel.trust);
    whole.erase(whole.begin(), blurred);
    found.whole = std::move(whole);
    return found;
}

} // namespace restoration
