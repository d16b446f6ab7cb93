#pragma once

#include <omp.h>

namespace restoration {

/// While an instance lives, parallel regions that the current thread opens have one thread: the
/// functions of the core that open regions run serially on the worker that calls them.
///
/// The number of threads is a setting of each thread (OpenMP 5.2, 2.4: nthreads-var has the scope
/// of a data environment), therefore no other thread sees the change, and it ends with the object:
/// a team may run pieces on the host's own thread.
class SerialOpenMp {
public:
    SerialOpenMp() noexcept : m_threads(omp_get_max_threads()) { omp_set_num_threads(1); }
    ~SerialOpenMp() { omp_set_num_threads(m_threads); }
    SerialOpenMp(const SerialOpenMp&) = delete;
    SerialOpenMp& operator=(const SerialOpenMp&) = delete;

private:
    int m_threads;
};

} // namespace restoration
