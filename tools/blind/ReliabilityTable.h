#pragma once

#include "BlindTrial.h"

#include <array>

namespace velorn::tools {

/// Compares confidences with what they promise: how many restorations of each class of confidence
/// are better than the blurred picture.
class ReliabilityTable {
public:
    void count(const BlindTrial& trial);
    void print() const;

private:
    struct Class {
        int trials = 0;
        int better = 0;
        double confidence = 0.0;
    };
    /// Confidences of 0 to 0.1, 0.1 to 0.2, and so on.
    std::array<Class, 10> m_classes{};
};

} // namespace velorn::tools
