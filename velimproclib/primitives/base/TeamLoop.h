#pragma once

#include "velimproclib/primitives/base/ControlWord.h"
#include "velimproclib/primitives/base/FailureRelay.h"
#include "velimproclib/primitives/base/Team.h"

#include <algorithm>
#include <omp.h>
#include <utility>

/// Loops of independent pieces that spread inside a section as well as outside.
///
/// A parallel region inside a section of another region has one thread, since the runtime does not
/// nest regions by default. Tasks do spread: they belong to the whole team, and a thread that waits
/// at the end of the sections runs them. Therefore the loops are made of tasks of the existing
/// team, and `runInTeam` opens a region only where there is none. The team may be the host's own,
/// when the host calls from a region. Therefore every task adopts the control word of the thread
/// that created it.
namespace vel {

/// Runs `work` so that its loops find a team: the caller's own or, outside of any active region, a
/// new one. Failures of `work` reach the caller.
template <class Work>
void runInTeam(Work&& work) {
    if (omp_in_parallel() != 0) {
        std::forward<Work>(work)();
        return;
    }
    FailureRelay failures;
    openTeam([&]() noexcept {
#pragma omp single
        failures.run(work);
    });
    failures.rethrow();
}

/// body(piece, thread) for 0 <= piece < pieces, in any order, shared among the caller's team;
/// outside of any region the caller runs all pieces. `thread` is the number of the executing thread
/// in its team. Returns after all pieces have run, then rethrows the first failure.
template <class Body>
void forEachPiece(int pieces, const Body& body) {
    FailureRelay failures;
    const ControlWord word = ControlWord::ofThisThread();
    const auto run = [&](int piece) { failures.run([&] { body(piece, omp_get_thread_num()); }); };
    const int threads = omp_get_num_threads();
    if (threads == 1) {
        for (int piece = 0; piece < pieces; ++piece) {
            run(piece);
        }
    } else {
        // Enough tasks to balance threads of unequal speed, few enough to cost nothing.
        constexpr int kTasksPerThread = 4;
        const int tasks = std::clamp(pieces, 1, kTasksPerThread * threads);
#pragma omp taskloop default(none) shared(run, word) firstprivate(pieces) num_tasks(tasks)
        for (int piece = 0; piece < pieces; ++piece) {
            const AdoptedControlWord adopted(word);
            run(piece);
        }
    }
    failures.rethrow();
}

/// body(begin, end) for bands of at most `bandRows` (at least 1) rows that cover 0 .. rows. Runs
/// and fails as `forEachPiece` does.
template <class Body>
void forEachRowBand(int rows, int bandRows, const Body& body) {
    const int bands = rows / bandRows + (rows % bandRows != 0 ? 1 : 0);
    forEachPiece(bands, [&](int band, int) {
        const int begin = band * bandRows;
        body(begin, begin + std::min(bandRows, rows - begin));
    });
}

} // namespace vel
