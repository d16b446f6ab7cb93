#include "hosts/command/kernels/KernelTaps.h"

namespace velorn {

std::vector<KernelTap> tapsOf(const BlurKernel& kernel) {
    std::vector<KernelTap> taps;
    for (int r = 0; r < kernel.height; ++r) {
        for (int c = 0; c < kernel.width; ++c) {
            if (kernel.at(r, c) != 0.0f) {
                taps.push_back({kernel.width / 2 - c, kernel.height / 2 - r, kernel.at(r, c)});
            }
        }
    }
    return taps;
}

} // namespace velorn
