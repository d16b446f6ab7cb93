#pragma once

#include "velimproclib/primitives/base/AlignedFloats.h"

#include <omp.h>

#include <algorithm>
#include <cstddef>

namespace vel {

/// Working memory for every thread of a team.
class ThreadScratch {
public:
    /// Allocates memory for the largest team that the runtime's settings give at present.
    /// @throws std::bad_alloc
    void allocate(std::size_t floatsPerThread) {
        m_floatsPerThread = (floatsPerThread + kAlignment - 1) / kAlignment * kAlignment;
        m_floats.resize(0);
        fitTeam();
    }

    /// Grows when the caller's team, or the team that the caller would get, has become larger. Call
    /// it before any thread of the team holds a pointer: the memory moves.
    /// @throws std::bad_alloc
    void fitTeam() {
        const int threads = std::max({1, omp_get_max_threads(), omp_get_num_threads()});
        const std::size_t needed = static_cast<std::size_t>(threads) * m_floatsPerThread;
        if (needed > m_floats.size()) {
            m_floats.resize(needed);
        }
    }

    /// The memory of thread `thread` of the team, aligned to 64 bytes.
    float* of(int thread) noexcept {
        return m_floats.data() + static_cast<std::size_t>(thread) * m_floatsPerThread;
    }

private:
    static constexpr std::size_t kAlignment = 16;

    AlignedFloats m_floats;
    std::size_t m_floatsPerThread = 0;
};

} // namespace vel
