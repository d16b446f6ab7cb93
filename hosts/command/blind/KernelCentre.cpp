#include "hosts/command/blind/KernelCentre.h"

#include <algorithm>
#include <cmath>

namespace velorn {
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

} // namespace

BlurKernel centred(const BlurKernel& kernel) {
    Profile columns(static_cast<std::size_t>(kernel.width));
    Profile rows(static_cast<std::size_t>(kernel.height));
    for (int r = 0; r < kernel.height; ++r) {
        for (int c = 0; c < kernel.width; ++c) {
            const double weight = std::abs(static_cast<double>(kernel.at(r, c)));
            columns[static_cast<std::size_t>(c)] += weight;
            rows[static_cast<std::size_t>(r)] += weight;
        }
    }
    const int right = shiftToMiddle(columns);
    const int down = shiftToMiddle(rows);
    BlurKernel moved{kernel.width, kernel.height, std::vector<float>(kernel.weights.size(), 0.0f)};
    for (int r = std::max(0, -down); r < std::min(kernel.height, kernel.height - down); ++r) {
        for (int c = std::max(0, -right); c < std::min(kernel.width, kernel.width - right); ++c) {
            moved.weights[static_cast<std::size_t>(r + down) *
                              static_cast<std::size_t>(kernel.width) +
                          static_cast<std::size_t>(c + right)] = kernel.at(r, c);
        }
    }
    return moved;
}

} // namespace velorn
