#include "velimproclib/tiles/TileTaper.h"

#include "velimproclib/primitives/FailureRelay.h"
#include "velimproclib/tiles/ParallelGrain.h"

#include <algorithm>
#include <cstring>
#include <opencv2/imgproc.hpp>

namespace vel {

namespace {

/// Columns of a seam of rows that are blurred in one go. Fixed, so that neither the work nor the
/// result depends on the number of threads.
constexpr int kChunkColumns = 256;

/// The weight of the plane by distance from the edge: a quarter of the margin and two rows more are
/// pure seam, then the plane comes in evenly, and is not quite all at the margin's inner end.
void fillFade(std::vector<float>& fade, int border) {
    const int replaced = border / 4;
    const float delta = 1.0F / static_cast<float>(border - replaced);
    float alpha = 0;
    fade.resize(static_cast<std::size_t>(border));
    for (int i = 0; i < border; ++i) {
        fade[static_cast<std::size_t>(i)] = alpha;
        if (i > replaced) {
            alpha += delta;
        }
    }
}

/// Weights and products in double, one rounding.
float mix(float plane, float seam, double alpha) {
    return static_cast<float>(alpha * static_cast<double>(plane) +
                              (1.0 - alpha) * static_cast<double>(seam));
}

void mixRow(float* plane, const float* seam, int count, float alpha) {
    for (int x = 0; x < count; ++x) {
        plane[x] = mix(plane[x], seam[x], static_cast<double>(alpha));
    }
}

void joinRows(const cv::Mat& plane, cv::Mat& joined, int edge) {
    joined.create(2 * edge, plane.cols, CV_32FC1);
    plane.rowRange(plane.rows - edge, plane.rows).copyTo(joined.rowRange(0, edge));
    plane.rowRange(0, edge).copyTo(joined.rowRange(edge, 2 * edge));
}

void joinColumns(const cv::Mat& plane, cv::Mat& joined, int edge) {
    joined.create(plane.rows, 2 * edge, CV_32FC1);
    plane.colRange(plane.cols - edge, plane.cols).copyTo(joined.colRange(0, edge));
    plane.colRange(0, edge).copyTo(joined.colRange(edge, 2 * edge));
}

void fadeRows(cv::Mat& plane, const cv::Mat& seam, cv::Range columns,
              const std::vector<float>& fade) {
    const int edge = seam.rows / 2;
    for (int i = 0; i < static_cast<int>(fade.size()); ++i) {
        const float alpha = fade[static_cast<std::size_t>(i)];
        const int last = plane.rows - 1 - i;
        mixRow(plane.ptr<float>(i, columns.start), seam.ptr<float>(edge + i, columns.start),
               columns.size(), alpha);
        mixRow(plane.ptr<float>(last, columns.start), seam.ptr<float>(edge - 1 - i, columns.start),
               columns.size(), alpha);
    }
}

void fadeColumns(cv::Mat& plane, const cv::Mat& seam, cv::Range rows,
                 const std::vector<float>& fade) {
    const int edge = seam.cols / 2;
    for (int y = rows.start; y < rows.end; ++y) {
        float* left = plane.ptr<float>(y);
        float* right = left + plane.cols - 1;
        const float* leftSeam = seam.ptr<float>(y, edge);
        const float* rightSeam = leftSeam - 1;
        for (int i = 0; i < static_cast<int>(fade.size()); ++i) {
            const auto alpha = static_cast<double>(fade[static_cast<std::size_t>(i)]);
            left[i] = mix(left[i], leftSeam[i], alpha);
            right[-i] = mix(right[-i], rightSeam[-i], alpha);
        }
    }
}

} // namespace

// A part of a seam is blurred as a view into it: the filter then reads its neighbours from the
// seam, as it does for the seam as a whole, and reflects only where the seam itself ends.

void CTileTaper::taperRows(std::span<cv::Mat> planes) {
    const int count = static_cast<int>(planes.size());
    const int columns = planes.front().cols;
    const int chunks = std::max(columns / kChunkColumns, 1);
    const bool inParallel = worthATeam(planes.front().cols, planes.front().rows);
    FailureRelay failure;
#pragma omp parallel if (inParallel)
    {
#pragma omp for schedule(static)
        for (int p = 0; p < count; ++p) {
            failure.run([&, p] {
                const auto index = static_cast<std::size_t>(p);
                Seam& seam = m_rowSeams[index];
                joinRows(planes[index], seam.joined, m_edge);
                seam.blurred.create(seam.joined.size(), CV_32FC1);
            });
        }
#pragma omp for schedule(static)
        for (int task = 0; task < count * chunks; ++task) {
            failure.run([&, task] {
                const auto index = static_cast<std::size_t>(task / chunks);
                const int chunk = task % chunks;
                const cv::Range part(chunk * kChunkColumns,
                                     chunk + 1 == chunks ? columns : (chunk + 1) * kChunkColumns);
                const Seam& seam = m_rowSeams[index];
                cv::Mat blurred(seam.blurred, cv::Range::all(), part);
                cv::GaussianBlur(seam.joined.colRange(part), blurred, m_blurSize, m_sigma, m_sigma,
                                 cv::BORDER_REFLECT_101);
                fadeRows(planes[index], seam.blurred, part, m_fade);
            });
        }
    }
    failure.rethrow();
}

void CTileTaper::taperColumns(std::span<cv::Mat> planes) {
    const int count = static_cast<int>(planes.size());
    const bool inParallel = worthATeam(planes.front().cols, planes.front().rows);
    FailureRelay failure;
#pragma omp parallel if (inParallel)
    {
#pragma omp for schedule(static)
        for (int p = 0; p < count; ++p) {
            failure.run([&, p] {
                const auto index = static_cast<std::size_t>(p);
                Seam& seam = m_columnSeams[index];
                joinColumns(planes[index], seam.joined, m_edge);
                seam.blurred.create(seam.joined.size(), CV_32FC1);
            });
        }
#pragma omp for schedule(static)
        for (int task = 0; task < 2 * count; ++task) {
            failure.run([&, task] {
                const auto index = static_cast<std::size_t>(task / 2);
                const int start = task % 2 * m_edge;
                const cv::Range part(start, start + m_edge);
                const Seam& seam = m_columnSeams[index];
                cv::Mat blurred(seam.blurred, cv::Range::all(), part);
                cv::GaussianBlur(seam.joined.colRange(part), blurred, m_blurSize, m_sigma, m_sigma,
                                 cv::BORDER_REFLECT_101);
            });
        }
#pragma omp for schedule(static)
        for (int task = 0; task < 2 * count; ++task) {
            failure.run([&, task] {
                const auto index = static_cast<std::size_t>(task / 2);
                cv::Mat& plane = planes[index];
                const int half = plane.rows / 2;
                const cv::Range part =
                    task % 2 == 0 ? cv::Range(0, half) : cv::Range(half, plane.rows);
                fadeColumns(plane, m_columnSeams[index].blurred, part, m_fade);
            });
        }
    }
    failure.rethrow();
}

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
    m_edge = static_cast<std::int32_t>(edge);
    m_blurSize = {blurSide, blurSide};
    m_sigma = 0.2 * blurSide;
    fillFade(m_fade, border);
    m_rowSeams.resize(planes.size());
    m_columnSeams.resize(planes.size());
    taperRows(planes);
    taperColumns(planes);
}

} // namespace vel
