#include "tests/restoration/threads/RefusedThreads.h"

#include <atomic>
#include <cerrno>
#include <dlfcn.h>
#include <limits>
#include <pthread.h>

namespace {

constexpr int kAll = std::numeric_limits<int>::max();
std::atomic<int> allowedThreads{kAll};

using Create = int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);

} // namespace

/// Takes the place of the system's function in the whole program.
extern "C" [[gnu::visibility("default")]] int pthread_create(pthread_t* thread,
                                                             const pthread_attr_t* attributes,
                                                             void* (*start)(void*),
                                                             void* argument) noexcept {
    static const auto create = reinterpret_cast<Create>(dlsym(RTLD_NEXT, "pthread_create"));
    if (allowedThreads != kAll && allowedThreads-- <= 0) {
        allowedThreads = 0;
        return EAGAIN;
    }
    return create(thread, attributes, start, argument);
}

namespace restoration {

RefusedThreads::RefusedThreads(int allowed) noexcept {
    allowedThreads = allowed;
}

RefusedThreads::~RefusedThreads() {
    allowedThreads = kAll;
}

} // namespace restoration
