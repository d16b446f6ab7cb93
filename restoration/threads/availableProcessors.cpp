#include "restoration/threads/availableProcessors.h"

#include <algorithm>
#include <thread>

#if defined(__linux__)
#include <sched.h>
#endif

namespace restoration {

int availableProcessors() noexcept {
#if defined(__linux__)
    cpu_set_t allowed;
    CPU_ZERO(&allowed);
    if (sched_getaffinity(0, sizeof allowed, &allowed) == 0) {
        return std::max(1, CPU_COUNT(&allowed));
    }
#endif
    // The set of processors is larger than cpu_set_t, or the system has no such set.
    return std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
}

} // namespace restoration
