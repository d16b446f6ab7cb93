#pragma once

#include "restoration/threads/Cancellation.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <map>
#include <mutex>
#include <utility>

namespace restoration {

/// Takes the results of pieces in the order of the pieces, whichever order they end in. Workers
/// `put` results of the pieces 0, 1, 2...; the worker whose result is next takes it, and those that
/// wait behind it, by calling `take`. One thread at a time takes; the others go on with the next
/// piece meanwhile. At most `limit` results wait: a worker that is further ahead blocks.
template <class Result>
class InOrder {
public:
    using Take = std::function<void(std::size_t piece, Result& result)>;

    InOrder(std::size_t limit, Take take, const Cancellation& cancellation)
        : m_limit(limit), m_take(std::move(take)), m_cancellation(cancellation) {}

    /// Every piece puts one result. Pieces must start in ascending order.
    /// @throws Failure VELORN_STATUS_CANCELLED, and what `take` throws
    void put(std::size_t piece, Result result) {
        std::unique_lock lock(m_mutex);
        waitForRoom(lock, piece);
        m_waiting.emplace(piece, std::move(result));
        if (!m_isTaking) {
            m_isTaking = true;
            takeAll(lock);
            m_isTaking = false;
        }
    }

private:
    void waitForRoom(std::unique_lock<std::mutex>& lock, std::size_t piece) {
        const auto hasRoom = [&] { return piece == m_next || m_waiting.size() < m_limit; };
        // A piece that fails puts nothing, so the wait also looks for the end of the call.
        constexpr std::chrono::milliseconds kInterval(20);
        while (!m_hasTaken.wait_for(lock, kInterval, hasRoom)) {
            m_cancellation.check();
        }
    }

    void takeAll(std::unique_lock<std::mutex>& lock) {
        for (auto first = m_waiting.find(m_next); first != m_waiting.end();
             first = m_waiting.find(m_next)) {
            Result result = std::move(first->second);
            m_waiting.erase(first);
            lock.unlock();
            m_take(m_next, result);
            lock.lock();
            ++m_next;
            m_hasTaken.notify_all();
        }
    }

    std::size_t m_limit;
    Take m_take;
    const Cancellation& m_cancellation;

    std::mutex m_mutex; // guards what follows
    std::condition_variable m_hasTaken;
    std::map<std::size_t, Result> m_waiting;
    std::size_t m_next = 0;
    bool m_isTaking = false;
};

} // namespace restoration
