#pragma once

#include "velimproclib/primitives/FailureRelay.h"

#include <omp.h>

#include <algorithm>
#include <utility>

/// Loops of independent pieces as tasks of whatever team exists.
///
/// The deconvolvers run in two sections of one region, a long one and a short one. Their loops are
/// made of tasks: when the short section has ended, its thread waits at the region's barrier and
/// there takes tasks of the long one. A nested region would stay with one thread.
namespace vel {

/// Runs `work` so that its loops find a team: the one that the caller is part of or, outside of any
/// active region, a new one. Failures of `work` reach the caller.
template <class Work>
void runInTeam(Work&& work) {
    if (omp_in_parallel()) {
        std::forward<Work>(work)();
        return;
    }
    FailureRelay relay;
#pragma omp parallel default(none) shared(relay, work)
#pragma omp single
    relay.run(work);
    relay.rethrow();
}

/// body(piece, thread) for 0 <= piece < pieces; `thread` numbers the executing thread in its team.
/// Returns when all pieces are done. The pieces run in any order; `body` must not throw.
template <class Body>
void forEachPiece(int pieces, const Body& body) {
    const int threads = omp_get_num_threads();
    if (threads == 1) {
        for (int piece = 0; piece < pieces; ++piece) {
            body(piece, 0);
        }
        return;
    }
    // Enough tasks for threads that come and go, few enough that they cost nothing.
    constexpr int kTasksPerThread = 4;
    const int tasks = std::min(pieces, kTasksPerThread * threads);
#pragma omp taskloop default(none) shared(body) firstprivate(pieces) num_tasks(tasks)
    for (int piece = 0; piece < pieces; ++piece) {
        body(piece, omp_get_thread_num());
    }
}

} // namespace vel
