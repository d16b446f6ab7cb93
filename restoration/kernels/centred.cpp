#include "restoration/kernels/centred.h"

#include <algorithm>
#include <cmath>

namespace restoration {
namespace {

/// The sums of a kernel's columns, or of its rows.
using Profile = std::vector<double>;

/// The shift that brings the centre of mass of `profile` to its middle, limited so that only zeros
/// are lost.
int shiftToMiddle(const Profile& profile) {
    const int count = static_cast<int>(profile.size());
    double mass = 0.0;
    double moment = 0.0;
    int first = count;
    int last = -1;
    for (int i = 0; i < count; ++i) {
        const double weight = profile[static_cast<std::size_t>(i)];
        mass += weight;
        moment += weight * (i - count / 2);
        if (weight != 0.0) {
            first = std::min(first, i);
            last = i;
        }
    }
    if (!(mass > 0.0)) {
        return 0;
    }
    const int wanted = -static_cast<int>(std::lround(moment / mass));
    return std::clamp(wanted, -first, count - 1 - last);
}

Kernel shifted(const Kernel& kernel, int right, int down) {
    Kernel moved = kernel;
    std::ranges::fill(moved.values, 0.0f);
    const int firstColumn = std::max(0, -right);
    const int count = kernel.width - std::abs(right);
    for (int row = std::max(0, -down); row < std::min(kernel.height, kernel.height - down); ++row) {
        std::copy_n(kernel.row(row) + firstColumn, count,
                    moved.row(row + down) + firstColumn + right);
    }
    return moved;
}

} // namespace

Kernel centred(const Kernel& kernel) {
    Profile columns(static_cast<std::size_t>(kernel.width));
    Profile rows(static_cast<std::size_t>(kernel.height));
    for (int r = 0; r < kernel.height; ++r) {
        for (int c = 0; c < kernel.width; ++c) {
            const double weight = std::abs(static_cast<double>(kernel.at(r, c)));
            columns[static_cast<std::size_t>(c)] += weight;
            rows[static_cast<std::size_t>(r)] += weight;
        }
    }
    return shifted(kernel, shiftToMiddle(columns), shiftToMiddle(rows));
}

} // namespace restoration
