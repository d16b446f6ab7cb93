#include "velimproclib/tiles/TileTaper.h"

#include "velimproclib/primitives/base/TeamLoop.h"
#include "velimproclib/tiles/blend.h"
#include "velimproclib/tiles/worthATeam.h"

#include <algorithm>
#include <cstring>
#include <opencv2/imgproc.hpp>

namespace vel {

namespace {

/// Length of the parts of a seam that are blurred in one go. Fixed, so that neither the work nor
/// the result depends on the number of threads.
constexpr int kPartLength = 256;

int partsOf(int length) {
    return std::max(length / kPartLength, 1);
}

/// The last part takes what is left.
cv::Range partOf(int length, int part) {
    const bool isLast = part + 1 == partsOf(length);
    return {part * kPartLength, isLast ? length : (part + 1) * kPartLength};
}

/// The weight of the plane by distance from the edge: a quarter of the margin and two rows more are
/// pure seam, then the plane comes in evenly, and is not quite all at the margin's inner end.
void fillFade(std::vector<float>& fade, int border) {
    const int replaced = border / 4;
    const float delta = 1.0f / static_cast<float>(border - replaced);
    float alpha = 0;
    fade.resize(static_cast<std::size_t>(border));
    for (int i = 0; i < border; ++i) {
        fade[static_cast<std::size_t>(i)] = alpha;
        if (i > replaced) {
            alpha += delta;
        }
    }
}

void fadeIn(float* plane, const float* seam, int count, float alpha) {
    for (int x = 0; x < count; ++x) {
        plane[x] = blend(static_cast<double>(seam[x]), static_cast<double>(plane[x]), alpha);
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
    const int middle = seam.rows / 2;
    for (int i = 0; i < static_cast<int>(fade.size()); ++i) {
        const float alpha = fade[static_cast<std::size_t>(i)];
        const int last = plane.rows - 1 - i;
        fadeIn(plane.ptr<float>(i, columns.start), seam.ptr<float>(middle + i, columns.start),
               columns.size(), alpha);
        fadeIn(plane.ptr<float>(last, columns.start),
               seam.ptr<float>(middle - 1 - i, columns.start), columns.size(), alpha);
    }
}

void fadeColumns(cv::Mat& plane, const cv::Mat& seam, cv::Range rows,
                 const std::vector<float>& fade) {
    const int middle = seam.cols / 2;
    for (int y = rows.start; y < rows.end; ++y) {
        float* left = plane.ptr<float>(y);
        float* right = left + plane.cols - 1;
        const float* leftSeam = seam.ptr<float>(y, middle);
        const float* rightSeam = leftSeam - 1;
        for (int i = 0; i < static_cast<int>(fade.size()); ++i) {
            const float alpha = fade[static_cast<std::size_t>(i)];
            fadeIn(left + i, leftSeam + i, 1, alpha);
            fadeIn(right - i, rightSeam - i, 1, alpha);
        }
    }
}

} // namespace

// Only what the fade reads is blurred: the `border` rows or columns on each side of the seam, and
// those in parts, side by side. Each part is a view into the joined strip, so that the filter reads
// its neighbours from there, and comes out as it would from the whole strip: the strip is just so
// wide that its own reflecting ends are never reached across the seam.

void CTileTaper::blurPart(const Seam& seam, cv::Rect part, cv::Point offset) const {
    cv::Mat blurred = seam.blurred(part);
    cv::GaussianBlur(seam.joined(part + offset), blurred, m_blurSize, m_sigma, m_sigma,
                     cv::BORDER_REFLECT_101);
}

void CTileTaper::taperRows(cv::Mat& plane, Seam& seam) const {
    const int margin = static_cast<int>(m_fade.size());
    joinRows(plane, seam.joined, m_edge);
    seam.blurred.create(2 * margin, plane.cols, CV_32FC1);
    forEachPiece(partsOf(plane.cols), [&](int part, int) {
        const cv::Range columns = partOf(plane.cols, part);
        blurPart(seam, {columns.start, 0, columns.size(), 2 * margin}, {0, m_edge - margin});
        fadeRows(plane, seam.blurred, columns, m_fade);
    });
}

void CTileTaper::taperColumns(cv::Mat& plane, Seam& seam) const {
    const int margin = static_cast<int>(m_fade.size());
    joinColumns(plane, seam.joined, m_edge);
    seam.blurred.create(plane.rows, 2 * margin, CV_32FC1);
    forEachPiece(partsOf(plane.rows), [&](int part, int) {
        const cv::Range rows = partOf(plane.rows, part);
        blurPart(seam, {0, rows.start, 2 * margin, rows.size()}, {m_edge - margin, 0});
        fadeColumns(plane, seam.blurred, rows, m_fade);
    });
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
    const int count = static_cast<int>(planes.size());
    // Loops within a loop, so that a thread that has no plane left takes parts of another's.
    const auto taperPlanes = [&] {
        forEachPiece(count, [&](int p, int) {
            const auto index = static_cast<std::size_t>(p);
            taperRows(planes[index], m_rowSeams[index]);
            taperColumns(planes[index], m_columnSeams[index]);
        });
    };
    if (worthATeam(first.cols, first.rows)) {
        runInTeam(taperPlanes);
    } else {
        taperPlanes();
    }
}

} // namespace vel
