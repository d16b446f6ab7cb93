#pragma once

#include "velorncore10.h"

#include <cstddef>
#include <vector>

namespace vel::test {

/// Records the arguments of the progress callback and cancels in the call of a given number
/// (counted from 1).
struct Listener {
    std::vector<int32_t> heard;
    std::vector<int32_t> limits;
    std::size_t cancelAt = 0;

    static int32_t listen(int32_t current, int32_t limit, void* userData) {
        auto& self = *static_cast<Listener*>(userData);
        self.heard.push_back(current);
        self.limits.push_back(limit);
        return self.heard.size() == self.cancelAt ? 0 : 7;
    }
    ProgressRecord record(int32_t total, int32_t limit, int32_t current = 0) {
        return {total, limit, &Listener::listen, this, current};
    }
};

} // namespace vel::test
