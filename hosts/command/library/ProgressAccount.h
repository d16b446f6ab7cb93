#pragma once

#include "velorncore10.h"

#include <functional>

namespace velorn {

/// Receives the progress of a call as `current` of `limit`. Returns whether to continue; false asks
/// for cancellation.
using ProgressFunction = std::function<bool(int current, int limit)>;

/// A function for one part of a longer task: reports the progress of the part as progress of
/// `whole` between the shares `start` and `end`, which lie in 0..1. `whole` must outlive the
/// result.
ProgressFunction partOf(const ProgressFunction& whole, double start, double end);

/// The progress record of one library call. Its callback calls `progress`, which must not throw;
/// the library may do so from another thread, one call at a time.
class ProgressAccount {
public:
    explicit ProgressAccount(ProgressFunction progress);
    ProgressAccount(const ProgressAccount&) = delete;
    ProgressAccount& operator=(const ProgressAccount&) = delete;

    ProgressRecord* record() { return &m_record; }

private:
    ProgressFunction m_progress;
    ProgressRecord m_record;
};

} // namespace velorn
