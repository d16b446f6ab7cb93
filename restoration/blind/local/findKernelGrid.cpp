#include "restoration/blind/local/findKernelGrid.h"

#include "restoration/blind/local/CellSearch.h"
#include "restoration/blind/parts/edgeParts.h"
#include "restoration/blind/parts/usablePart.h"
#include "restoration/blind/squares/kernelShape.h"
#include "restoration/blind/squares/moveKernel.h"
#include "restoration/blind/squares/squareKernelOf.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <utility>

namespace restoration {
namespace {

constexpr int kCellSide = 300;
constexpr int kMostCells = 5;
constexpr int kLeastPart = 256;
/// Side of the transforms of a cell, and of a quarter of one.
constexpr int kTransformSide = 512;
constexpr int kQuarterTransformSide = 256;
/// The highest strength for kernels of cells, which are found in few pixels, and which do not
/// follow what changes within a cell.
constexpr float kStrongest = 300.0f;
/// Kernels that a quarter of a cell may begin with.
constexpr std::size_t kMostStarts = 5;
/// Of the kernels of cells.
constexpr int kLargestSide = 47;
/// The share of the call that the search for one kernel takes.
constexpr double kShareOfWhole = 0.2;
/// Kernels that resemble that of the whole picture more than this do not differ.
constexpr double kSame = 0.93;
/// Cells that agree with themselves less than this, on the mean, are not reliable.
constexpr double kReliable = 0.8;
/// The weight of a neighbour in the smoothed kernel of a cell, over that of the cell.
constexpr double kNeighbour = 0.1;

struct Cells {
    int columns;
    int rows;

    std::size_t count() const {
        return static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows);
    }
};

Cells cellsFor(const Plane& picture) {
    const auto along = [](int length) {
        return std::clamp(static_cast<int>(std::floor(length / double{kCellSide} + 0.5)), 1,
                          kMostCells);
    };
    return {along(picture.width()), along(picture.height())};
}

class GridSearch {
public:
    GridSearch(const Plane& luminance, const Kernel& whole, Team& team)
        : m_luminance(luminance), m_team(team), m_cells(cellsFor(luminance)),
          m_bounds(boundsFor(whole, luminance)), m_whole(squareKernelOf(whole, m_bounds.side())) {}

    bool hasSeveralCells() const { return m_cells.count() > 1; }

    void find() {
        findParts();
        findFirst();
        findSecond();
        alignAndSmooth(0.6);
    }

    /// Divides each cell into four, and begins there with the kernels found.
    void divide() {
        const Coarse coarse{m_cells, std::move(m_found), std::move(m_smooth)};
        m_cells = {2 * coarse.cells.columns, 2 * coarse.cells.rows};
        m_transformSide = kQuarterTransformSide;
        findParts();
        m_team.progress().beginPhase(0.98, unitsOf([](const CellSearch& search) {
                                         return search.closerUnits(kMostStarts);
                                     }));
        m_found.assign(m_cells.count(), {});
        m_team.forEach(m_cells.count(),
                       [&](std::size_t i, int) { m_found[i] = quarter(i, coarse); });
        alignAndSmooth(1.0);
    }

    /// The mean likeness of the kernels found and that of the whole picture.
    double likenessToWhole() const {
        double sum = 0.0;
        double weights = 0.0;
        for (std::size_t i = 0; i < m_found.size(); ++i) {
            sum += weightOf(m_found[i]) * likeness(m_found[i].kernel, m_whole);
            weights += weightOf(m_found[i]);
        }
        return weights > 0.0 ? sum / weights : 1.0;
    }

    /// The mean agreement of the cells that have edges; 0 without any.
    double meanAgreement() const {
        double sum = 0.0;
        double cells = 0.0;
        for (const CellKernel& found : m_found) {
            sum += found.agreement;
            cells += found.agreement > 0.0 ? 1.0 : 0.0;
        }
        return cells > 0.0 ? sum / cells : 0.0;
    }

    /// Whether the power spectra of most cells show a blur.
    bool isBlurred() const {
        const auto shown = std::ranges::count_if(m_found, [](const CellKernel& found) {
            return found.agreement > 0.0 && !found.isSharp && !found.isContradicted;
        });
        return 2 * static_cast<std::size_t>(shown) > m_found.size();
    }

    FoundGrid result(const Kernel& whole) const {
        int radius = 0;
        for (const SquareKernel& kernel : m_smooth) {
            radius = std::max(radius, extentOf(kernel) / 2);
        }
        std::vector<Kernel> kernels;
        std::vector<CellReport> reports;
        for (std::size_t i = 0; i < m_smooth.size(); ++i) {
            const SquareKernel cut = withSide(m_smooth[i], 2 * radius + 1);
            Kernel kernel = whole;
            kernel.width = cut.side;
            kernel.height = cut.side;
            kernel.values.assign(cut.values.begin(), cut.values.end());
            const CellKernel& found = m_found[i];
            kernel.trust = trustOf(found, whole);
            kernels.push_back(std::move(kernel));
            reports.push_back({found.agreement > 0.0, static_cast<float>(found.agreement),
                               static_cast<float>(std::min(likeness(m_smooth[i], m_whole), 1.0))});
        }
        return {
            KernelGrid(std::move(kernels), m_cells.columns, m_cells.rows), std::move(reports), {}};
    }

private:
    /// The kernels of a grid that is divided.
    struct Coarse {
        Cells cells;
        std::vector<CellKernel> found;
        std::vector<SquareKernel> smooth;
    };

    /// A cell and its share in the kernel at a place.
    struct Share {
        std::size_t cell = 0;
        double weight = 0.0;
    };

    static KernelBounds boundsFor(const Kernel& whole, const Plane& picture) {
        const int shorter = std::min(picture.width(), picture.height());
        const int side = std::min({whole.largerSide() * 3 / 2 + 6, kLargestSide, shorter / 5}) | 1;
        return {std::max(side, whole.largerSide()), std::max(side, whole.largerSide())};
    }

    /// The pixels that cell `i` looks at: its surroundings as far as the transforms reach, or the
    /// part with the most edges.
    Rect partOf(std::size_t i) {
        const int column = static_cast<int>(i) % m_cells.columns;
        const int row = static_cast<int>(i) / m_cells.columns;
        const int width = m_luminance.width() / m_cells.columns;
        const int height = m_luminance.height() / m_cells.rows;
        const int most = m_transformSide - 2 * (m_bounds.side() / 2) - 2;
        const auto lengthFor = [&](int cell, int all) {
            return std::min({std::max(cell * 4 / 3, kLeastPart), all, most});
        };
        const Rect part{0, 0, lengthFor(width, m_luminance.width()),
                        lengthFor(height, m_luminance.height())};
        const Rect cell{column * width, row * height, width, height};
        if (part.width >= width && part.height >= height) {
            return {
                std::clamp(cell.x + (width - part.width) / 2, 0, m_luminance.width() - part.width),
                std::clamp(cell.y + (height - part.height) / 2, 0,
                           m_luminance.height() - part.height),
                part.width, part.height};
        }
        const Rect inside = edgeParts(usablePart(m_luminance, cell), std::min(part.width, width),
                                      std::min(part.height, height), 1, m_team)
                                .front();
        return {cell.x + inside.x, cell.y + inside.y, inside.width, inside.height};
    }

    void findParts() {
        m_parts.clear();
        for (std::size_t i = 0; i < m_cells.count(); ++i) {
            m_parts.push_back(usablePart(m_luminance, partOf(i)));
        }
    }

    CellSearch searchOf(std::size_t cell) const {
        return {m_parts[cell], m_bounds, m_team.cancellation()};
    }

    /// The sum of `units` of the searches of all cells.
    template <class Units>
    std::size_t unitsOf(const Units& units) const {
        std::size_t sum = 0;
        for (std::size_t i = 0; i < m_cells.count(); ++i) {
            sum += units(searchOf(i));
        }
        return sum;
    }

    void findFirst() {
        m_team.progress().beginPhase(
            0.4, unitsOf([](const CellSearch& search) { return search.firstUnits(); }));
        m_found.resize(m_cells.count());
        m_team.forEach(m_cells.count(), [&](std::size_t i, int) {
            m_found[i] = searchOf(i).first(m_whole, m_team.progress());
        });
    }

    void findSecond() {
        m_team.progress().beginPhase(
            0.6, unitsOf([](const CellSearch& search) { return search.secondUnits(); }));
        std::vector<CellKernel> improved(m_cells.count());
        m_team.forEach(m_cells.count(), [&](std::size_t i, int) {
            improved[i] = searchOf(i).second(m_found[i], aroundCell(i, 0.0), m_team.progress());
        });
        m_found = std::move(improved);
    }

    /// The kernel of quarter `i` of the cells of `coarse`. Sharp cells have sharp quarters.
    CellKernel quarter(std::size_t i, const Coarse& coarse) const {
        const std::array<Share, 4> shares = around(i, coarse.cells);
        const CellKernel& own = coarse.found[shares.front().cell];
        if (own.isSharp) {
            m_team.progress().advance(searchOf(i).closerUnits(kMostStarts));
            return own;
        }
        SquareKernel mean(m_bounds.side());
        double agreement = 0.0;
        std::vector<SquareKernel> starts{mean};
        for (const auto& [cell, weight] : shares) {
            const SquareKernel& kernel = coarse.smooth[cell];
            for (std::size_t k = 0; k < mean.values.size(); ++k) {
                mean.values[k] += weight * kernel.values[k];
            }
            agreement += weight * coarse.found[cell].agreement;
            if (!coarse.found[cell].isSharp) {
                starts.push_back(kernel);
            }
        }
        starts.front() = mean;
        const CellSearch search = searchOf(i);
        m_team.progress().advance(search.closerUnits(kMostStarts) -
                                  search.closerUnits(starts.size()));
        return search.closer(starts, agreement, m_team.progress());
    }

    /// The cells of `coarse` around the middle of quarter `i`: its own, then the nearest ones
    /// beside it, above or below, and across the corner. At the rim of the picture cells repeat.
    std::array<Share, 4> around(std::size_t i, const Cells& coarse) const {
        constexpr double kNear = 0.75;
        constexpr double kFar = 0.25;
        const int x = static_cast<int>(i) % m_cells.columns;
        const int y = static_cast<int>(i) / m_cells.columns;
        const auto other = [](int place, int cells) {
            return std::clamp(place / 2 + (place % 2 == 0 ? -1 : 1), 0, cells - 1);
        };
        const auto cellAt = [&](int column, int row) {
            return static_cast<std::size_t>(row * coarse.columns + column);
        };
        const int column = other(x, coarse.columns);
        const int row = other(y, coarse.rows);
        return {{{cellAt(x / 2, y / 2), kNear * kNear},
                 {cellAt(column, y / 2), kFar * kNear},
                 {cellAt(x / 2, row), kNear * kFar},
                 {cellAt(column, row), kFar * kFar}}};
    }

    /// How far a restoration may rely on the kernel of a cell. Cells without edges have that of the
    /// whole picture or of the neighbours.
    static Trust trustOf(const CellKernel& found, const Kernel& whole) {
        Trust trust = whole.trust;
        if (found.isSharp) {
            trust.share = 1.0f;
        } else if (found.hasEvidence) {
            trust = trustIn(found.evidence, confidenceIn(found.evidence));
        }
        trust.strongest = std::min(trust.strongest, kStrongest);
        return trust;
    }

    void alignAndSmooth(double until) {
        m_team.progress().beginPhase(until, 1);
        m_team.run([&] {
            m_smooth.clear();
            align();
            for (std::size_t i = 0; i < m_found.size(); ++i) {
                m_smooth.push_back(m_found[i].isSharp ? m_found[i].kernel : aroundCell(i, 1.0));
            }
        });
    }

    /// Moves the kernels so that they agree in position: first their centres of mass, then each
    /// onto the mean of its neighbours. Together they do not move.
    void align() {
        const std::vector<CellKernel> unmoved = m_found;
        std::vector<KernelPlace> moves;
        for (CellKernel& found : m_found) {
            const KernelPlace centre = centreOf(found.kernel);
            moves.push_back({-centre.right, -centre.down});
            found.kernel = moved(found.kernel, moves.back());
        }
        constexpr int kSweeps = 4;
        constexpr double kStep = 0.7; // neighbours move, too
        for (int sweep = 0; sweep < kSweeps; ++sweep) {
            m_team.cancellation().check();
            for (std::size_t i = 0; i < m_found.size(); ++i) {
                if (!m_found[i].isSharp) {
                    const KernelPlace by = bestMove(m_found[i].kernel, aroundCell(i, 0.0));
                    moves[i] = {moves[i].right + kStep * by.right, moves[i].down + kStep * by.down};
                    m_found[i].kernel = moved(unmoved[i].kernel, moves[i]);
                }
            }
        }
        double right = 0.0;
        double down = 0.0;
        double weights = 0.0;
        for (const CellKernel& found : m_found) {
            const KernelPlace centre = centreOf(found.kernel);
            right += weightOf(found) * centre.right;
            down += weightOf(found) * centre.down;
            weights += weightOf(found);
        }
        for (std::size_t i = 0; i < m_found.size() && weights > 0.0; ++i) {
            if (!m_found[i].isSharp) {
                m_found[i].kernel = moved(unmoved[i].kernel, {moves[i].right - right / weights,
                                                              moves[i].down - down / weights});
            }
        }
    }

    /// How much a kernel counts for its neighbours.
    static double weightOf(const CellKernel& found) {
        return found.isSharp ? 0.0 : found.agreement * found.agreement * found.agreement;
    }

    /// The mean kernel of the neighbours of a cell, and of the cell itself with weight `own`. Where
    /// none is reliable it is that of the whole picture.
    SquareKernel aroundCell(std::size_t cell, double own) const {
        const int column = static_cast<int>(cell) % m_cells.columns;
        const int row = static_cast<int>(cell) / m_cells.columns;
        SquareKernel sum(m_bounds.side());
        const auto add = [&](const SquareKernel& kernel, double weight) {
            for (std::size_t i = 0; i < sum.values.size(); ++i) {
                sum.values[i] += weight * kernel.values[i];
            }
        };
        // Faint, for cells all of whose neighbours are unreliable.
        constexpr double kFaint = 0.01;
        add(m_whole, kFaint);
        for (int y = std::max(row - 1, 0); y <= std::min(row + 1, m_cells.rows - 1); ++y) {
            for (int x = std::max(column - 1, 0); x <= std::min(column + 1, m_cells.columns - 1);
                 ++x) {
                const CellKernel& found =
                    m_found[static_cast<std::size_t>(y * m_cells.columns + x)];
                const double distance = std::abs(x - column) + std::abs(y - row);
                const double share =
                    distance == 0.0 ? own : (distance > 1.0 ? 0.5 : 1.0) * kNeighbour;
                if (share * weightOf(found) > 0.0) {
                    add(found.kernel, share * weightOf(found));
                }
            }
        }
        double total = 0.0;
        for (const double value : sum.values) {
            total += value;
        }
        for (double& value : sum.values) {
            value /= total;
        }
        return sum;
    }

    const Plane& m_luminance;
    Team& m_team;
    Cells m_cells;
    int m_transformSide = kTransformSide;
    KernelBounds m_bounds;
    SquareKernel m_whole;
    std::vector<Plane> m_parts;
    std::vector<CellKernel> m_found;
    std::vector<SquareKernel> m_smooth;
};

FoundGrid oneCell(std::vector<FoundKernel> whole) {
    const CellReport report{true, whole.front().confidence, 1.0f};
    return {KernelGrid({whole.front().kernel}, 1, 1), {report}, std::move(whole)};
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
    const bool isDoubtful = blurred != whole.begin() && !search.isBlurred();
    if (isDoubtful || search.likenessToWhole() > kSame || search.meanAgreement() < kReliable) {
        return oneCell(std::move(whole));
    }
    search.divide();
    FoundGrid found = search.result(blurred->kernel);
    whole.erase(whole.begin(), blurred);
    found.whole = std::move(whole);
    return found;
}

} // namespace restoration
