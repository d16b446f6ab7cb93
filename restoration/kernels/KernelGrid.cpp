#include "restoration/kernels/KernelGrid.h"

#include <algorithm>
#include <utility>

namespace restoration {
namespace {

/// Two neighbouring cells of an axis and the weight of the second one.
struct Between {
    int first;
    int second;
    double weight;
};

Between between(double place, int cells) {
    const double position = std::clamp(place * cells - 0.5, 0.0, cells - 1.0);
    const int first = std::min(static_cast<int>(position), cells - 1);
    return {first, std::min(first + 1, cells - 1), position - first};
}

/// Adds `weight` times `kernel` to `sum`, which holds a kernel at least as large.
void add(const Kernel& kernel, double weight, Kernel& sum) {
    const int left = sum.width / 2 - kernel.width / 2;
    const int top = sum.height / 2 - kernel.height / 2;
    for (int y = 0; y < kernel.height; ++y) {
        float* target = sum.row(top + y) + left;
        const float* source = kernel.row(y);
        for (int x = 0; x < kernel.width; ++x) {
            target[x] += static_cast<float>(weight * static_cast<double>(source[x]));
        }
    }
}

/// The summed squared differences of `kernel` and `mean`, which is at least as large.
double squaredDistance(const Kernel& kernel, const Kernel& mean) {
    Kernel difference = mean;
    add(kernel, -1.0, difference);
    double sum = 0.0;
    for (const float value : difference.values) {
        sum += static_cast<double>(value) * static_cast<double>(value);
    }
    return sum;
}

} // namespace

KernelGrid::KernelGrid(std::vector<Kernel> kernels, int columns, int rows)
    : m_kernels(std::move(kernels)), m_columns(columns), m_rows(rows) {
    for (const Kernel& kernel : m_kernels) {
        m_width = std::max(m_width, kernel.width);
        m_height = std::max(m_height, kernel.height);
    }
    findTypical();
}

bool KernelGrid::isUniform() const {
    return std::ranges::all_of(m_kernels, [&](const Kernel& kernel) {
        const Kernel& first = m_kernels.front();
        return kernel.width == first.width && kernel.height == first.height &&
               kernel.values == first.values;
    });
}

Kernel KernelGrid::interpolated(double x, double y) const {
    const Between columns = between(x, m_columns);
    const Between rows = between(y, m_rows);
    Kernel mean = empty();
    mean.trust.share = 0.0f;
    const auto addCell = [&](int column, int row, double weight) {
        if (weight > 0.0) {
            add(at(column, row), weight, mean);
            mean.trust.share += static_cast<float>(weight) * at(column, row).trust.share;
        }
    };
    addCell(columns.first, rows.first, (1.0 - columns.weight) * (1.0 - rows.weight));
    addCell(columns.second, rows.first, columns.weight * (1.0 - rows.weight));
    addCell(columns.first, rows.second, (1.0 - columns.weight) * rows.weight);
    addCell(columns.second, rows.second, columns.weight * rows.weight);
    return mean;
}

/// A kernel of the sides of the grid, all zero, with the origin of the typical one.
Kernel KernelGrid::empty() const {
    Kernel kernel = typical();
    kernel.width = m_width;
    kernel.height = m_height;
    kernel.values.assign(static_cast<std::size_t>(m_width) * static_cast<std::size_t>(m_height),
                         0.0f);
    return kernel;
}

void KernelGrid::findTypical() {
    Kernel mean = empty();
    for (const Kernel& kernel : m_kernels) {
        add(kernel, 1.0 / static_cast<double>(m_kernels.size()), mean);
    }
    const auto nearest = std::ranges::min_element(
        m_kernels, {}, [&](const Kernel& kernel) { return squaredDistance(kernel, mean); });
    m_typical = static_cast<std::size_t>(nearest - m_kernels.begin());
}

} // namespace restoration
