#include "restoration/blind/local/alignKernels.h"

#include "restoration/blind/local/meanAround.h"
#include "restoration/blind/squares/moveKernel.h"

#include <cstddef>

namespace restoration {
namespace {

constexpr int kSweeps = 4;
/// The share of the best move that a sweep makes: the neighbours move, too.
constexpr double kStep = 0.7;

/// Kernels that move. Every move starts from the kernel as it was found: repeated moves by parts of
/// pixels would widen it.
class MovingKernels {
public:
    explicit MovingKernels(GridKernels& kernels)
        : m_kernels(kernels), m_found(kernels.found), m_moves(m_found.size()) {}

    void centreEach() {
        for (std::size_t i = 0; i < m_found.size(); ++i) {
            const KernelPlace centre = centreOf(m_found[i].kernel);
            moveTo(i, {-centre.right, -centre.down});
        }
    }

    /// One sweep over the cells that are not sharp.
    void moveOntoNeighbours() {
        for (std::size_t i = 0; i < m_found.size(); ++i) {
            if (!m_found[i].isSharp) {
                const KernelPlace by =
                    bestMove(m_kernels.found[i].kernel, meanAround(m_kernels, i, 0.0));
                moveTo(i, {m_moves[i].right + kStep * by.right, m_moves[i].down + kStep * by.down});
            }
        }
    }

    void centreTogether() {
        const KernelPlace mean = meanCentre();
        for (std::size_t i = 0; i < m_found.size(); ++i) {
            if (!m_found[i].isSharp) {
                moveTo(i, {m_moves[i].right - mean.right, m_moves[i].down - mean.down});
            }
        }
    }

private:
    void moveTo(std::size_t i, const KernelPlace& move) {
        m_moves[i] = move;
        m_kernels.found[i].kernel = moved(m_found[i].kernel, move);
    }

    /// The mean centre of mass, weighted by reliability; the middle without reliable kernels.
    KernelPlace meanCentre() const {
        KernelPlace sum;
        double weights = 0.0;
        for (const CellKernel& found : m_kernels.found) {
            const KernelPlace centre = centreOf(found.kernel);
            sum.right += found.weight() * centre.right;
            sum.down += found.weight() * centre.down;
            weights += found.weight();
        }
        return weights > 0.0 ? KernelPlace{sum.right / weights, sum.down / weights} : KernelPlace{};
    }

    GridKernels& m_kernels;
    const std::vector<CellKernel> m_found;
    std::vector<KernelPlace> m_moves;
};

} // namespace

void alignKernels(GridKernels& kernels, const Cancellation& cancellation) {
    MovingKernels moving(kernels);
    moving.centreEach();
    for (int sweep = 0; sweep < kSweeps; ++sweep) {
        cancellation.check();
        moving.moveOntoNeighbours();
    }
    moving.centreTogether();
}

} // namespace restoration
