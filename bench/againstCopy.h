#pragma once

#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstddef>
#include <cstring>
#include <vector>

namespace vel::bench {

/// Runs `work` in turns with a memcpy of `planeBytes` bytes and reports the time of `work` and, as
/// `copies`, the ratio of both medians. What disturbs the machine disturbs both.
/// The benchmark is registered with `UseManualTime`.
template <class Work>
void runAgainstCopy(benchmark::State& state, std::size_t planeBytes, Work&& work) {
    using Clock = std::chrono::steady_clock;
    const std::vector<unsigned char> from(planeBytes, 1);
    std::vector<unsigned char> to(planeBytes);
    std::vector<double> copyTimes;
    std::vector<double> workTimes;
    for (auto _ : state) {
        const auto start = Clock::now();
        std::memcpy(to.data(), from.data(), planeBytes);
        benchmark::ClobberMemory();
        const auto middle = Clock::now();
        work();
        benchmark::ClobberMemory();
        const auto end = Clock::now();
        copyTimes.push_back(std::chrono::duration<double>(middle - start).count());
        workTimes.push_back(std::chrono::duration<double>(end - middle).count());
        state.SetIterationTime(workTimes.back());
    }
    const auto median = [](std::vector<double>& times) {
        const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
        std::nth_element(times.begin(), middle, times.end());
        return *middle;
    };
    state.counters["copies"] = median(workTimes) / median(copyTimes);
}

} // namespace vel::bench
