#pragma once

#include "velimproclib/primitives/base/FailureRelay.h"

#include <algorithm>
#include <omp.h>
#include <utility>

/// Loops of independent pieces that spread inside a section as well as outside.
///
/// A parallel region inside a section of another one stays with one thread, since the runtime does
/// not fan out nested regions by default. Tasks do spread: they belong to the whole team, and a
/// thread that waits at the end of the sections takes them. So the loops are made of tasks of
/// whatever team exists, and `runInTeam` opens a region only where there is none.
namespace vel {

/// Runs `work` so that its loops find a team: the one that the caller is part of or, outside of any
/// active region, a new one. Failures of `work` reach the caller.
template <class Work>
void runInTeam(Work&& work) {
    if (omp_in_parallel() != 0) {
        std::forward<Work>(work)();
        return;
    }
    FailureRelay relay;
#pragma omp parallel default(none) shared(relay, work)
#pragma omp single
    relay.run(work);
    relay.rethrow();
}

/// body(piece, thread) for 0 <= piece < pieces, in any order, shared out among the caller's team;
/// outside of any region the caller runs them alone. `thread` numbers the executing thread in its
/// team. Returns when all pieces have ended; the first failure is rethrown then, and the other
/// pieces have run all the same.
template <class Body>
void forEachPiece(int pieces, const Body& body) {
    FailureRelay relay;
    const auto run = [&](int piece) { relay.run([&] { body(piece, omp_get_thread_num()); }); };
    const int threads = omp_get_num_threads();
    if (threads == 1) {
        for (int piece = 0; piece < pieces; ++piece) {
            run(piece);
        }
    } else {
        // Enough tasks for threads that come and go, few enough that they cost nothing.
        constexpr int kTasksPerThread = 4;
        const int tasks = std::clamp(pieces, 1, kTasksPerThread * threads);
#pragma omp taskloop default(none) shared(run) firstprivate(pieces) num_tasks(tasks)
        for (int piece = 0; piece < pieces; ++piece) {
            run(piece);
        }
    }
    relay.rethrow();
}

/// body(begin, end) for bands of at most `bandRows` (at least 1) rows that cover 0 .. rows, as
/// `forEachPiece` does.
template <class Body>
void forEachRowBand(int rows, int bandRows, const Body& body) {
    const int bands = rows / bandRows + (rows % bandRows != 0 ? 1 : 0);
    forEachPiece(bands, [&](int band, int) {
        const int begin = band * bandRows;
        body(begin, begin + std::min(bandRows, rows - begin));
    });
}

} // namespace vel
