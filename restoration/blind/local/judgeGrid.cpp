#include "restoration/blind/local/judgeGrid.h"

#include "restoration/blind/squares/likeness.h"

#include <algorithm>
#include <cstddef>

namespace restoration {

double likenessToWhole(const GridKernels& kernels) {
    double sum = 0.0;
    double weights = 0.0;
    for (const CellKernel& found : kernels.found) {
        sum += found.weight() * likeness(found.kernel, kernels.whole);
        weights += found.weight();
    }
    return weights > 0.0 ? sum / weights : 1.0;
}

double meanAgreement(const GridKernels& kernels) {
    double sum = 0.0;
    double cells = 0.0;
    for (const CellKernel& found : kernels.found) {
        sum += found.agreement;
        cells += found.agreement > 0.0 ? 1.0 : 0.0;
    }
    return cells > 0.0 ? sum / cells : 0.0;
}

bool showsBlur(const GridKernels& kernels) {
    const auto shown = std::ranges::count_if(kernels.found, [](const CellKernel& found) {
        return found.agreement > 0.0 && !found.isSharp && !found.isContradicted;
    });
    return 2 * static_cast<std::size_t>(shown) > kernels.found.size();
}

} // namespace restoration
