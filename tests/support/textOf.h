#pragma once

#include <string>
#include <utility>

namespace vel::test {

/// The text that `run` throws, if any.
template <class Run>
std::string textOf(Run&& run) {
    try {
        std::forward<Run>(run)();
    } catch (const char* text) {
        return text;
    }
    return {};
}

} // namespace vel::test
