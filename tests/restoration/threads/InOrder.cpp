#include "restoration/threads/InOrder.h"

#include "restoration/threads/Team.h"

#include <gtest/gtest.h>
#include <latch>
#include <numeric>
#include <vector>

namespace restoration {
namespace {

TEST(InOrder, TakesResultsInTheOrderOfTheirPieces) {
    for (const int threads : {1, 2, 3, 8}) {
        Team team(threads, {});
        std::vector<int> taken;
        InOrder<int> results(
            2, [&](std::size_t, int& result) { taken.push_back(result); }, team.cancellation());
        team.forEach(500, [&](std::size_t piece, int) {
            if (piece % 7 == 0) {
                std::this_thread::yield();
            }
            results.put(piece, static_cast<int>(piece));
        });
        std::vector<int> expected(500);
        std::iota(expected.begin(), expected.end(), 0);
        EXPECT_EQ(taken, expected);
    }
}

TEST(InOrder, AWorkerGoesOnWhileItsResultWaits) {
    Team team(2, {});
    std::size_t taken = 0;
    std::latch others(2);
    InOrder<int> results(
        2, [&](std::size_t, int&) { ++taken; }, team.cancellation());
    team.forEach(3, [&](std::size_t piece, int) {
        if (piece == 0) {
            others.wait();
        }
        results.put(piece, 0);
        if (piece != 0) {
            others.count_down();
        }
    });
    EXPECT_EQ(taken, 3u);
}

TEST(InOrder, TheFailureOfAPieceWakesTheWorkersThatWaitForIt) {
    Team team(3, {});
    std::latch all(3);
    InOrder<int> results(
        0, [](std::size_t, int&) {}, team.cancellation());
    EXPECT_THROW(team.forEach(3,
                              [&](std::size_t piece, int) {
                                  all.arrive_and_wait();
                                  if (piece == 0) {
                                      throw std::bad_alloc();
                                  }
                                  results.put(piece, 0);
                              }),
                 std::bad_alloc);
}

TEST(InOrder, PassesOnTheFailureOfTheTaker) {
    Team team(2, {});
    InOrder<int> results(
        1, [](std::size_t, int&) { throw std::bad_alloc(); }, team.cancellation());
    EXPECT_THROW(team.forEach(20, [&](std::size_t piece, int) { results.put(piece, 0); }),
                 std::bad_alloc);
}

} // namespace
} // namespace restoration
