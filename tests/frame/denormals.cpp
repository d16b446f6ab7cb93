// Results under the floating-point control word of the calling thread, with a kernel so small that
// the deconvolution computes with denormals.
#include "tests/frame/LoadedLibrary.h"
#include "tests/support/ControlBits.h"
#include "tests/support/Threads.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <vector>

namespace {

using namespace vel::test;

constexpr int kSide = 150;
constexpr int kThreads = 4;

std::vector<std::uint16_t> grainyPixels() {
    std::vector<std::uint16_t> samples(std::size_t{3} * kSide * kSide);
    std::uint32_t state = 7;
    for (std::uint16_t& sample : samples) {
        state = state * 1664525u + 1013904223u;
        sample = static_cast<std::uint16_t>(state >> 17);
    }
    return samples;
}

/// Calls `work` on `count` threads of the runtime. They outlive the region, and a library that
/// shares the runtime finds them waiting.
template <class Work>
void onThreads(int count, const Work& work) {
#pragma omp parallel num_threads(count)
    work();
}

/// Sets the denormal bits of every thread of the runtime but the calling one while it lives.
class WorkerBits {
public:
    explicit WorkerBits(unsigned bits) {
        onThreads(kThreads, [&] {
            if (omp_get_thread_num() != 0) {
                m_words[static_cast<std::size_t>(omp_get_thread_num())].emplace(bits);
            }
        });
    }
    ~WorkerBits() {
        onThreads(kThreads,
                  [&] { m_words[static_cast<std::size_t>(omp_get_thread_num())].reset(); });
    }
    WorkerBits(const WorkerBits&) = delete;
    WorkerBits& operator=(const WorkerBits&) = delete;

    /// The number of threads, the calling one apart, that flush denormals now.
    static int flushing() {
        std::array<int, kThreads> flushing{};
        onThreads(kThreads, [&] {
            const int thread = omp_get_thread_num();
            flushing[static_cast<std::size_t>(thread)] = thread != 0 && flushesDenormals() ? 1 : 0;
        });
        return static_cast<int>(std::count(flushing.begin(), flushing.end(), 1));
    }

private:
    std::array<std::optional<ControlBits>, kThreads> m_words;
};

class Denormals : public ::testing::Test {
protected:
    void SetUp() override {
        if (!kHasControlWord) {
            GTEST_SKIP() << "no floating-point control word on this processor";
        }
    }

    /// All three stages with a kernel that sums to about 1e-20.
    std::vector<std::uint16_t> restored(int threads) {
        const ThreadCount count(threads);
        std::vector<std::uint16_t> source = grainyPixels();
        std::vector<std::uint16_t> target(source.size());
        ImageRecord image{psC3U16,   source.data(), 6 * kSide, target.data(),
                          6 * kSide, kSide,         kSide};
        std::vector<float> values(25, 4e-22f);
        KernelRecord kernel{5, 5, 2, 2, values.data()};
        ProgressRecord progress{100, 100, nullptr, nullptr, 0};
        EXPECT_EQ(m_deblurSharpen(&progress, &image, &kernel, 1, 8000.0f, 0.5f, 0.05f, 0.85f, 1.5f,
                                  1.8f, 0.005f, 0.4f, 0.3f),
                  VELORN_OK);
        return target;
    }

    /// Which thread takes which part of the work is left to chance, hence several runs.
    void expectEveryTeamRestores(const std::vector<std::uint16_t>& expected) {
        for (int run = 0; run < 16; ++run) {
            EXPECT_TRUE(restored(kThreads) == expected) << "run " << run;
        }
    }

    LoadedLibrary m_library;
    decltype(ornDeblurSharpen)* m_deblurSharpen = VELORN_FIND(m_library, ornDeblurSharpen);
};

TEST_F(Denormals, ResultsFollowTheWordOfTheCallerWhateverTheOtherThreadsHave) {
    for (const unsigned callersBits : {0u, kFlushDenormals}) {
        const ControlBits caller(callersBits);
        const std::vector<std::uint16_t> alone = restored(1);
        for (const unsigned workersBits : {0u, kFlushDenormals}) {
            SCOPED_TRACE(testing::Message() << callersBits << ", " << workersBits);
            const WorkerBits workers(workersBits);
            expectEveryTeamRestores(alone);
            EXPECT_EQ(WorkerBits::flushing(), workersBits == 0 ? 0 : kThreads - 1)
                << "the threads did not get their own word back";
        }
    }
}

TEST_F(Denormals, TheKernelMakesTheResultDependOnTheWord) {
    std::vector<std::uint16_t> flushed;
    {
        const ControlBits flushing(kFlushDenormals);
        flushed = restored(1);
    }
    const ControlBits plain(0);
    EXPECT_FALSE(restored(1) == flushed);
}

TEST_F(Denormals, TheCallKeepsTheWordOfTheCaller) {
    for (const unsigned bits : {0u, kFlushDenormals}) {
        const ControlBits caller(bits);
        restored(kThreads);
        EXPECT_EQ(flushesDenormals(), bits != 0);
    }
}

} // namespace
