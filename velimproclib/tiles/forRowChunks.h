#pragma once

#include "velimproclib/primitives/base/TeamLoop.h"
#include "velimproclib/tiles/worthATeam.h"

#include <cstdint>
#include <opencv2/core.hpp>

namespace vel {

/// Calls work(cv::Range) for chunks of rows that cover `rows` rows of `columns` pixels, in any
/// order, and in parallel where the area is worth a team. Rethrows the first failure after all
/// chunks have ended. The rows that a chunk has in a few planes fit the innermost cache.
template <class Work>
void forRowChunks(std::int32_t columns, std::int32_t rows, const Work& work) {
    constexpr int kRowsPerChunk = 16;
    const auto loop = [&] {
        forEachRowBand(rows, kRowsPerChunk,
                       [&](int begin, int end) { work(cv::Range(begin, end)); });
    };
    if (worthATeam(columns, rows)) {
        runInTeam(loop);
    } else {
        loop();
    }
}

} // namespace vel
