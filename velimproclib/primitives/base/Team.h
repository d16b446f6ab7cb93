#pragma once

#include "velimproclib/primitives/base/ControlWord.h"
#include "velimproclib/primitives/base/FailureRelay.h"

#include <cstdint>
#include <omp.h>

/// The only place that opens parallel regions. OpenMP's threads outlive a region and keep a control
/// word of their own, therefore every region gives them the caller's word: results depend on the
/// word of the calling thread and not on the thread that happens to do the work.
namespace vel {

/// Opens a parallel region of at most `threads` (at least 1) threads and calls `body` on each of
/// them, under the control word of the caller. Inside an active region the new region has one
/// thread, unless the host allows nesting. Each thread gets its own word back after the barrier
/// that ends the region's last construct; `body` must therefore end with a construct that has a
/// barrier when it creates tasks. No exception may leave `body`: use a `FailureRelay`.
template <class Body>
void openTeam(int threads, const Body& body) noexcept {
    const ControlWord word = ControlWord::ofThisThread();
#pragma omp parallel default(none) shared(word, body) num_threads(threads)
    {
        const AdoptedControlWord adopted(word);
        body();
    }
}

/// The same with as many threads as the host's settings give.
template <class Body>
void openTeam(const Body& body) noexcept {
    openTeam(omp_get_max_threads(), body);
}

/// Runs two pieces of work on two threads of a new region, or one after the other where there is
/// only one thread. The first failure is rethrown after both have ended.
template <class First, class Second>
void runSideBySide(const First& first, const Second& second) {
    FailureRelay failures;
    openTeam([&]() noexcept {
#pragma omp sections
        {
#pragma omp section
            failures.run(first);
#pragma omp section
            failures.run(second);
        }
    });
    failures.rethrow();
}

/// body(row) for 0 <= row < rows on at most `threads` (at least 1) threads of a new region; each
/// thread takes one contiguous range of rows. The first failure is rethrown after all rows have
/// run.
template <class Body>
void forEachRow(std::int32_t rows, int threads, const Body& body) {
    FailureRelay failures;
    openTeam(threads, [&]() noexcept {
#pragma omp for schedule(static)
        for (std::int32_t row = 0; row < rows; ++row) {
            failures.run([&] { body(row); });
        }
    });
    failures.rethrow();
}

/// The same with as many threads as the host's settings give.
template <class Body>
void forEachRow(std::int32_t rows, const Body& body) {
    forEachRow(rows, omp_get_max_threads(), body);
}

} // namespace vel
