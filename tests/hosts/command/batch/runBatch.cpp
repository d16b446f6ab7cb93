#include "hosts/command/batch/runBatch.h"

#include "hosts/command/files/TemporaryFile.h"
#include "hosts/command/terminal/Failure.h"
#include "tests/support/TemporaryFolder.h"

#include <atomic>
#include <csignal>
#include <future>
#include <gtest/gtest.h>
#include <iostream>
#include <mutex>
#include <new>
#include <set>
#include <sstream>
#include <thread>

namespace {

using velorn::BatchSettings;
using velorn::Failure;
using velorn::Interrupt;
using velorn::PictureContext;
using velorn::PictureFiles;
using velorn::PlannedPicture;
using velorn::RestorePicture;
using velorn::runBatch;

std::vector<PlannedPicture> plan(int count) {
    std::vector<PlannedPicture> pictures;
    for (int i = 0; i < count; ++i) {
        const std::string name = std::to_string(i);
        pictures.push_back({{name, "out/" + name}, std::nullopt});
    }
    return pictures;
}

struct Outcome {
    int exitStatus;
    std::string text;
};

Outcome outcomeOf(const std::vector<PlannedPicture>& pictures, const RestorePicture& restore,
                  const BatchSettings& settings = {2, 1000}) {
    const Interrupt interrupt;
    std::ostringstream terminal;
    const int status = runBatch(pictures, settings, restore, interrupt, terminal, false);
    return {status, terminal.str()};
}

TEST(RunBatch, EveryPictureIsRestoredOnce) {
    std::mutex mutex;
    std::multiset<std::string> inputs;
    const Outcome outcome =
        outcomeOf(plan(20), [&](const PictureFiles& files, const PictureContext&) {
            const std::lock_guard lock(mutex);
            inputs.insert(files.input.string());
        });
    EXPECT_EQ(outcome.exitStatus, 0);
    EXPECT_EQ(inputs.size(), 20u);
    EXPECT_EQ(std::set<std::string>(inputs.begin(), inputs.end()).size(), 20u);
    EXPECT_EQ(outcome.text.find("velorn: 20 restored in "), 0u) << outcome.text;
}

TEST(RunBatch, FailuresOfEveryKindAreListedAndTheRestGoesOn) {
    auto pictures = plan(6);
    pictures[3].failure = "known before";
    pictures[4].isSkipped = true;
    const Outcome outcome =
        outcomeOf(pictures, [](const PictureFiles& files, const PictureContext&) {
            if (files.input == "0") {
                throw Failure("'0': bad");
            }
            if (files.input == "1") {
                throw std::bad_alloc();
            }
            if (files.input == "2") {
                throw 7;
            }
        });
    EXPECT_EQ(outcome.exitStatus, 3);
    EXPECT_EQ(outcome.text.find("velorn: '0': bad\n"
                                "velorn: '1': out of memory\n"
                                "velorn: '2': unknown error\n"
                                "velorn: known before\n"
                                "velorn: 1 restored, 4 failed, 1 skipped in "),
              0u)
        << outcome.text;
}

TEST(RunBatch, LinesOfAPictureStayTogether) {
    const Outcome outcome =
        outcomeOf(plan(8), [](const PictureFiles& files, const PictureContext& context) {
            context.print(files.input.string() + " a\n");
            std::this_thread::yield();
            context.print(files.input.string() + " b\n");
        });
    for (int i = 0; i < 8; ++i) {
        const std::string name = std::to_string(i);
        EXPECT_NE(outcome.text.find(name + " a\n" + name + " b\n"), std::string::npos)
            << outcome.text;
    }
}

TEST(RunBatch, PicturesThatNeedMostOfTheMemoryRunAloneWithAllThreads) {
    std::atomic<int> running = 0;
    std::atomic<int> most = 0;
    std::mutex mutex;
    std::set<int> threads;
    outcomeOf(plan(8),
              [&](const PictureFiles&, const PictureContext& context) {
                  const int count = context.reserve(600);
                  most = std::max(most.load(), ++running);
                  std::this_thread::yield();
                  --running;
                  const std::lock_guard lock(mutex);
                  threads.insert(count);
              },
              {4, 1000});
    EXPECT_EQ(most, 1);
    EXPECT_EQ(threads, std::set<int>{4});
}

TEST(RunBatch, ThreadsAreDividedAmongThePicturesThatCanRunAtOnce) {
    std::mutex mutex;
    std::vector<int> threads;
    const auto record = [&](std::uint64_t bytes) {
        return [&, bytes](const PictureFiles&, const PictureContext& context) {
            const int count = context.reserve(bytes);
            const std::lock_guard lock(mutex);
            threads.push_back(count);
        };
    };
    outcomeOf(plan(1), record(1), {8, 1000});
    EXPECT_EQ(threads, std::vector<int>{8});
    threads.clear();
    outcomeOf(plan(40), record(1), {8, 1000});
    EXPECT_EQ(threads.front(), 1);
    threads.clear();
    outcomeOf(plan(40), record(450), {8, 1000});
    EXPECT_EQ(threads.front(), 4);
}

TEST(RunBatch, SignalEndsTheBatchAndCountsWhatIsLeft) {
    const Interrupt interrupt;
    std::ostringstream terminal;
    const RestorePicture restore = [&](const PictureFiles&, const PictureContext& context) {
        std::raise(SIGTERM);
        if (!context.progress(0.5)) {
            interrupt.check();
        }
    };
    EXPECT_THROW(runBatch(plan(9), {1, 1000}, restore, interrupt, terminal, false),
                 velorn::Interrupted);
    EXPECT_EQ(terminal.str().find("velorn: 0 restored, 9 left in "), 0u) << terminal.str();
}

TEST(RunBatchDeathTest, PictureThatDoesNotEndAfterASignalIsAbandonedWithoutATrace) {
    const vel::test::TemporaryFolder folder;
    const auto batch = [&] {
        const Interrupt interrupt;
        const RestorePicture restore = [&](const PictureFiles&, const PictureContext&) {
            const velorn::TemporaryFile file(folder / "out.png");
            std::raise(SIGINT);
            std::promise<void>().get_future().wait(); // never
        };
        runBatch(plan(1), {1, 1000}, restore, interrupt, std::cerr, false);
    };
    EXPECT_EXIT(batch(), testing::ExitedWithCode(130), "0 restored, 1 left");
    EXPECT_EQ(folder.fileCount(), 0u);
}

} // namespace
