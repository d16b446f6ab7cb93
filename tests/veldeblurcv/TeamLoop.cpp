#include "velimproclib/veldeblurcv/TeamLoop.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <vector>

namespace {

using namespace vel;

std::vector<int> countVisits(int pieces) {
    std::vector<int> visits(static_cast<std::size_t>(pieces), 0);
    std::atomic<bool> inTeam = true;
    forEachPiece(pieces, [&](int piece, int thread) {
        ++visits[static_cast<std::size_t>(piece)];
        inTeam = inTeam && thread >= 0 && thread < omp_get_num_threads();
    });
    EXPECT_TRUE(inTeam);
    return visits;
}

TEST(TeamLoop, EveryPieceRunsOnce) {
    const int before = omp_get_max_threads();
    for (const int threads : {1, 2, 4}) {
        omp_set_num_threads(threads);
        for (const int pieces : {1, 2, 3, 16, 67}) {
            std::vector<int> visits;
            runInTeam([&] { visits = countVisits(pieces); });
            EXPECT_EQ(visits, std::vector<int>(static_cast<std::size_t>(pieces), 1));
        }
    }
    omp_set_num_threads(before);
}

TEST(TeamLoop, LoopsOutsideOfAnyTeamRunToo) {
    EXPECT_EQ(countVisits(5), std::vector<int>(5, 1));
}

TEST(TeamLoop, TheTeamOfTheCallerIsTaken) {
    std::atomic<int> teams = 0;
#pragma omp parallel sections num_threads(2)
    {
#pragma omp section
        runInTeam([&] { teams += omp_get_level(); });
#pragma omp section
        runInTeam([&] { teams += omp_get_level(); });
    }
    EXPECT_EQ(teams, 2);
}

TEST(TeamLoop, FailuresReachTheCaller) {
    const auto fail = [] { throw std::runtime_error("no memory for a tile"); };
    EXPECT_THROW(runInTeam(fail), std::runtime_error);
}

} // namespace
