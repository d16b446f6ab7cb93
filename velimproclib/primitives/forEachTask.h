#pragma once

#include "velimproclib/primitives/FailureRelay.h"

#include <algorithm>
#include <omp.h>

/// Parallel work that spreads inside a section as well as outside.
///
/// Parallel regions inside a section of another region run on one thread, since the runtime does
/// not fan out nested regions by default. Tasks do spread: they belong to the whole team, and a
/// thread that waits at the end of the sections takes them. So work inside a region becomes tasks
/// of that region's team, and work outside opens a region of its own.
namespace vel {

namespace detail {

template <class Body>
void spawnTasks(int count, Body& body, FailureRelay& relay) {
#pragma omp taskloop grainsize(1) shared(body, relay)
    for (int i = 0; i < count; ++i) {
        relay.run([&] { body(i); });
    }
}

} // namespace detail

/// Runs `body(i)` for i = 0 .. count-1, in any order and on any thread of the team, and returns
/// when all have ended. The first failure is rethrown then; the other tasks run all the same.
template <class Body>
void forEachTask(int count, Body&& body) {
    FailureRelay relay;
    if (omp_in_parallel() != 0) {
        detail::spawnTasks(count, body, relay);
    } else {
#pragma omp parallel
#pragma omp single
        detail::spawnTasks(count, body, relay);
    }
    relay.rethrow();
}

/// Runs `body(begin, end)` for bands of at most `bandRows` (at least 1) rows that cover 0 .. rows,
/// as `forEachTask` does.
template <class Body>
void forEachRowBand(int rows, int bandRows, Body&& body) {
    const int bands = rows / bandRows + (rows % bandRows != 0 ? 1 : 0);
    forEachTask(bands, [&](int band) {
        const int begin = band * bandRows;
        body(begin, begin + std::min(bandRows, rows - begin));
    });
}

} // namespace vel
