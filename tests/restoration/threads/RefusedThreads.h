#pragma once

namespace restoration {

/// Lets the system start `allowed` more threads of the process and refuse all others, as long as
/// the object lives.
class RefusedThreads {
public:
    explicit RefusedThreads(int allowed) noexcept;
    ~RefusedThreads();
    RefusedThreads(const RefusedThreads&) = delete;
    RefusedThreads& operator=(const RefusedThreads&) = delete;
};

} // namespace restoration
