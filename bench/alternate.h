#pragma once

#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstddef>
#include <cstring>
#include <vector>

namespace vel::bench {

inline double median(std::vector<double>& values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// Alternates `work` and `reference`. Reports the time of `work` and, as `counter`, the median time
/// of `work` divided by that of `reference`: other load on the machine slows both down. Register
/// the benchmark with `UseManualTime`.
template <class Work, class Reference>
void runAgainst(benchmark::State& state, const char* counter, Work&& work, Reference&& reference) {
    using Clock = std::chrono::steady_clock;
    std::vector<double> referenceTimes;
    std::vector<double> workTimes;
    for (auto _ : state) {
        const auto start = Clock::now();
        reference();
        benchmark::ClobberMemory();
        const auto middle = Clock::now();
        work();
        benchmark::ClobberMemory();
        const auto end = Clock::now();
        referenceTimes.push_back(std::chrono::duration<double>(middle - start).count());
        workTimes.push_back(std::chrono::duration<double>(end - middle).count());
        state.SetIterationTime(workTimes.back());
    }
    state.counters[counter] = median(workTimes) / median(referenceTimes);
}

/// The same with a memcpy of `planeBytes` bytes as the reference; the counter is `copies`.
template <class Work>
void runAgainstCopy(benchmark::State& state, std::size_t planeBytes, Work&& work) {
    const std::vector<unsigned char> from(planeBytes, 1);
    std::vector<unsigned char> to(planeBytes);
    runAgainst(state, "copies", work, [&] { std::memcpy(to.data(), from.data(), planeBytes); });
}

} // namespace vel::bench
