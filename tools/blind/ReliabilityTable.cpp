#include "ReliabilityTable.h"

#include <algorithm>
#include <iomanip>
#include <iostream>

namespace velorn::tools {

void ReliabilityTable::count(const BlindTrial& trial) {
    const auto last = static_cast<int>(m_classes.size()) - 1;
    const int index = std::clamp(static_cast<int>(trial.confidence * 10.0f), 0, last);
    Class& counted = m_classes[static_cast<std::size_t>(index)];
    ++counted.trials;
    counted.better += trial.gain() > 0.0 ? 1 : 0;
    counted.confidence += static_cast<double>(trial.confidence);
}

void ReliabilityTable::print() const {
    std::cout << "| confidence | cases | mean confidence | share better than the picture "
                 "|\n|---|---|---|---|\n"
              << std::fixed;
    for (std::size_t i = 0; i < m_classes.size(); ++i) {
        const Class& counted = m_classes[i];
        if (counted.trials == 0) {
            continue;
        }
        std::cout << std::setprecision(1) << "| " << static_cast<double>(i) / 10.0 << " to "
                  << static_cast<double>(i + 1) / 10.0 << " | " << counted.trials << " | "
                  << std::setprecision(2) << counted.confidence / counted.trials << " | "
                  << static_cast<double>(counted.better) / counted.trials << " |\n";
    }
}

} // namespace velorn::tools
