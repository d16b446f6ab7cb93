#include "velimproclib/tiles/TileTaper.h"

#include "velimproclib/primitives/base/TeamLoop.h"
#include "velimproclib/tiles/blend.h"
#include "velimproclib/tiles/worthATeam.h"

#include <algorithm>

namespace vel {

namespace {

/// The weight of the plane by distance from the edge. It is 0 for a quarter of the margin and two
/// rows more, then grows evenly, and stays below 1 at the inner end of the margin.
std::vector<float> fadeWeights(int border) {
    const int replaced = border / 4;
    const float delta = 1.0f / static_cast<float>(border - replaced);
    float alpha = 0;
    std::vector<float> weights;
    for (int i = 0; i < border; ++i) {
        weights.push_back(alpha);
        if (i > replaced) {
            alpha += delta;
        }
    }
    return weights;
}

/// What one taper does to every plane.
struct Taper {
    std::vector<float> weights; ///< of the plane, by distance from the edge
    GaussianBlur blur;

    int margin() const { return static_cast<int>(weights.size()); }
    /// Rows or columns taken from each edge. The blur of the margin reads all of them, and nothing
    /// beyond.
    int edge() const { return margin() + blur.reach(); }
};

/// The index in 0 .. size - 1 that `index` meets when the plane is reflected at its edges without
/// repeating the edge pixel. `index` is at most size - 1 outside.
int reflected(int index, int size) {
    if (index < 0) {
        return -index;
    }
    return index < size ? index : 2 * (size - 1) - index;
}

/// The last `edge` rows of the plane above the first ones, continued by reflection on both sides.
void joinRows(const cv::Mat& plane, const Taper& taper, cv::Mat& joined) {
    const int edge = taper.edge();
    const int reach = taper.blur.reach();
    joined.create(2 * edge, plane.cols + 2 * reach, CV_32FC1);
    for (int y = 0; y < joined.rows; ++y) {
        const float* source = plane.ptr<float>(y < edge ? plane.rows - edge + y : y - edge);
        float* target = joined.ptr<float>(y) + reach;
        std::copy_n(source, plane.cols, target);
        for (int i = 1; i <= reach; ++i) {
            target[-i] = source[reflected(-i, plane.cols)];
            target[plane.cols - 1 + i] = source[reflected(plane.cols - 1 + i, plane.cols)];
        }
    }
}

/// The last `edge` columns of the plane beside the first ones, continued by reflection above and
/// below.
void joinColumns(const cv::Mat& plane, const Taper& taper, cv::Mat& joined) {
    const int edge = taper.edge();
    const int reach = taper.blur.reach();
    joined.create(plane.rows + 2 * reach, 2 * edge, CV_32FC1);
    for (int y = 0; y < joined.rows; ++y) {
        const float* source = plane.ptr<float>(reflected(y - reach, plane.rows));
        std::copy_n(source + plane.cols - edge, edge, joined.ptr<float>(y));
        std::copy_n(source, edge, joined.ptr<float>(y) + edge);
    }
}

float faded(float seam, float plane, float weight) {
    return blend(static_cast<double>(seam), static_cast<double>(plane), weight);
}

/// Length of the bands that are faded in one go.
constexpr int kBandLength = 128;

void fadeRows(cv::Mat& plane, const cv::Mat& seam, const std::vector<float>& weights) {
    const int margin = static_cast<int>(weights.size());
    forEachRowBand(plane.cols, kBandLength, [&](int begin, int end) {
        for (int i = 0; i < margin; ++i) {
            const float weight = weights[static_cast<std::size_t>(i)];
            float* top = plane.ptr<float>(i);
            float* bottom = plane.ptr<float>(plane.rows - 1 - i);
            const float* topSeam = seam.ptr<float>(margin + i);
            const float* bottomSeam = seam.ptr<float>(margin - 1 - i);
            for (int x = begin; x < end; ++x) {
                top[x] = faded(topSeam[x], top[x], weight);
                bottom[x] = faded(bottomSeam[x], bottom[x], weight);
            }
        }
    });
}

void fadeColumns(cv::Mat& plane, const cv::Mat& seam, const std::vector<float>& weights) {
    const int margin = static_cast<int>(weights.size());
    forEachRowBand(plane.rows, kBandLength, [&](int begin, int end) {
        for (int y = begin; y < end; ++y) {
            float* left = plane.ptr<float>(y);
            float* right = left + plane.cols - 1;
            const float* leftSeam = seam.ptr<float>(y) + margin;
            const float* rightSeam = leftSeam - 1;
            for (int i = 0; i < margin; ++i) {
                const float weight = weights[static_cast<std::size_t>(i)];
                left[i] = faded(leftSeam[i], left[i], weight);
                right[-i] = faded(rightSeam[-i], right[-i], weight);
            }
        }
    });
}

} // namespace

void CTileTaper::taperBlock(std::span<cv::Mat> planes, std::int32_t border) {
    if (border < 1 || planes.empty()) {
        return;
    }
    const cv::Mat& first = planes.front();
    // Wide borders would overflow 32 bits; a strip that does not fit needs no exact length.
    const std::int64_t edge = std::int64_t{border} + border / 2 + 1;
    if (edge > std::min(first.rows, first.cols)) {
        return;
    }
    const int blurSide = 2 * (border / 2) + 3;
    const Taper taper{fadeWeights(border), GaussianBlur(blurSide, 0.2 * blurSide)};
    m_rowSeams.resize(planes.size());
    m_columnSeams.resize(planes.size());
    const auto taperPlane = [&](int p, int) {
        cv::Mat& plane = planes[static_cast<std::size_t>(p)];
        Seam& rows = m_rowSeams[static_cast<std::size_t>(p)];
        joinRows(plane, taper, rows.joined);
        taper.blur.blur(rows.joined, rows.along, rows.blurred);
        fadeRows(plane, rows.blurred, taper.weights);
        Seam& columns = m_columnSeams[static_cast<std::size_t>(p)];
        joinColumns(plane, taper, columns.joined);
        taper.blur.blur(columns.joined, columns.along, columns.blurred);
        fadeColumns(plane, columns.blurred, taper.weights);
    };
    // Loops within a loop, so that a thread that has no plane left takes bands of another's.
    const auto taperPlanes = [&] { forEachPiece(static_cast<int>(planes.size()), taperPlane); };
    if (worthATeam(first.cols, first.rows)) {
        runInTeam(taperPlanes);
    } else {
        taperPlanes();
    }
}

} // namespace vel
