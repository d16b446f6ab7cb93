#pragma once

namespace restoration {

/// Lets `succeeding` calls of `new` in the whole program succeed, then one fail, as long as the
/// object lives.
class FailingNew {
public:
    explicit FailingNew(int succeeding) noexcept;
    ~FailingNew();
    FailingNew(const FailingNew&) = delete;
    FailingNew& operator=(const FailingNew&) = delete;

    bool hasFailed() const noexcept;
};

} // namespace restoration
