#pragma once

#include "velimproclib/primitives/base/Status.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace vel::test {

/// The arguments of a primitive in a test of its checks.
struct CheckedArguments {
    std::array<void*, 6> pointers;
    std::array<std::int32_t, 4> sizes;
    std::array<std::int32_t, 6> steps;

    template <class T>
    T* at(std::size_t i) const {
        return static_cast<T*>(pointers[i]);
    }

    /// The middle of the block, for routines that read a border around their region.
    template <class T>
    T* inside(std::size_t i) const {
        constexpr std::size_t kBorderBytes = 1024;
        auto* block = at<unsigned char>(i);
        return block == nullptr ? nullptr : reinterpret_cast<T*>(block + kBorderBytes);
    }
};

/// A primitive and the number of pointers, sizes and steps that it checks.
struct CheckedRoutine {
    std::string name;
    std::size_t pointers;
    std::size_t sizes;
    std::size_t steps;
    std::function<Status(const CheckedArguments&)> call;
    Status badStep = kBadStep;
};

/// Calls the routine with valid arguments, then once per fault with all later arguments faulty,
/// too. Pointers are checked before sizes and sizes before steps. Expects that failed calls write
/// nothing.
inline void expectChecksInOrder(const CheckedRoutine& routine) {
    SCOPED_TRACE(routine.name);
    constexpr std::size_t kBytes = 4096;
    std::array<std::vector<unsigned char>, 6> blocks;
    CheckedArguments sound{};
    const auto reset = [&] {
        for (std::size_t i = 0; i < blocks.size(); ++i) {
            blocks[i].assign(kBytes, static_cast<unsigned char>(0x30 + i));
            sound.pointers[i] = blocks[i].data();
        }
    };
    reset();
    sound.sizes.fill(2);
    sound.steps.fill(64);
    EXPECT_GE(routine.call(sound), kOk);
    reset();

    const auto untouched = [&] {
        for (std::size_t i = 0; i < blocks.size(); ++i) {
            if (blocks[i] !=
                std::vector<unsigned char>(kBytes, static_cast<unsigned char>(0x30 + i))) {
                return false;
            }
        }
        return true;
    };
    CheckedArguments badSteps = sound;
    badSteps.steps.fill(0);
    CheckedArguments badSizesAndSteps = badSteps;
    badSizesAndSteps.sizes.fill(0);
    for (std::size_t i = 0; i < routine.pointers; ++i) {
        CheckedArguments bad = badSizesAndSteps;
        bad.pointers[i] = nullptr;
        EXPECT_EQ(routine.call(bad), kNullPointer) << "pointer " << i;
    }
    for (std::size_t i = 0; i < routine.sizes; ++i) {
        for (const std::int32_t size : {0, -1, INT32_MIN}) {
            CheckedArguments bad = badSteps;
            bad.sizes[i] = size;
            EXPECT_EQ(routine.call(bad), kBadSize) << "size " << i << " is " << size;
        }
    }
    for (std::size_t i = 0; i < routine.steps; ++i) {
        for (const std::int32_t step : {0, -64, INT32_MIN}) {
            CheckedArguments bad = sound;
            bad.steps[i] = step;
            EXPECT_EQ(routine.call(bad), routine.badStep) << "step " << i << " is " << step;
        }
    }
    EXPECT_TRUE(untouched());
}

} // namespace vel::test
