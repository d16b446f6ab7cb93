#pragma once

#include <string>
#include <utility>

namespace vel::test {

/// The text failure of `run`, or nothing.
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
