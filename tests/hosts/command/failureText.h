#pragma once

#include "hosts/command/terminal/Failure.h"

#include <string>

namespace vel::test {

/// The text of the failure that `work` throws, of type `Thrown`; empty if it throws nothing.
template <class Thrown = velorn::Failure, class Work>
std::string failureText(const Work& work) {
    try {
        work();
    } catch (const Thrown& failure) {
        return failure.what();
    }
    return "";
}

} // namespace vel::test
