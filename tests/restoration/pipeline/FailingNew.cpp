#include "tests/restoration/pipeline/FailingNew.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

constexpr int kNoFailure = -1;
std::atomic<int> callsToFailure{kNoFailure};

/// Counts a call down; whether it is the one that fails.
bool failsNow() noexcept {
    int calls = callsToFailure;
    while (calls >= 0) {
        if (callsToFailure.compare_exchange_weak(calls, calls - 1)) {
            return calls == 0;
        }
    }
    return false;
}

} // namespace

void* operator new(std::size_t bytes) {
    void* const memory = failsNow() ? nullptr : std::malloc(bytes > 0 ? bytes : 1);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}
// The sanitizer's would not call the function above, and its memory may not be freed below.
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
    try {
        return ::operator new(bytes);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace restoration {

FailingNew::FailingNew(int succeeding) noexcept {
    callsToFailure = succeeding;
}

FailingNew::~FailingNew() {
    callsToFailure = kNoFailure;
}

bool FailingNew::hasFailed() const noexcept {
    return callsToFailure == kNoFailure;
}

} // namespace restoration
