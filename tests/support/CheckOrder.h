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

/// The memory that the pointers of a routine under test point to, filled with a pattern.
class CheckedBlocks {
public:
    CheckedBlocks() { fill(); }

    void fill() {
        for (std::size_t i = 0; i < m_blocks.size(); ++i) {
            m_blocks[i].assign(kBytes, pattern(i));
        }
    }

    bool untouched() const {
        for (std::size_t i = 0; i < m_blocks.size(); ++i) {
            if (m_blocks[i] != std::vector<unsigned char>(kBytes, pattern(i))) {
                return false;
            }
        }
        return true;
    }

    CheckedArguments validArguments() {
        CheckedArguments valid{};
        for (std::size_t i = 0; i < m_blocks.size(); ++i) {
            valid.pointers[i] = m_blocks[i].data();
        }
        valid.sizes.fill(2);
        valid.steps.fill(64);
        return valid;
    }

private:
    static constexpr std::size_t kBytes = 4096;

    static unsigned char pattern(std::size_t i) { return static_cast<unsigned char>(0x30 + i); }

    std::array<std::vector<unsigned char>, 6> m_blocks;
};

/// Calls the routine with valid arguments, then once per fault with all later arguments faulty,
/// too. Pointers are checked before sizes and sizes before steps. Expects that failed calls write
/// nothing.
inline void expectChecksInOrder(const CheckedRoutine& routine) {
    SCOPED_TRACE(routine.name);
    CheckedBlocks blocks;
    const CheckedArguments valid = blocks.validArguments();
    EXPECT_GE(routine.call(valid), kOk);
    blocks.fill();

    CheckedArguments badSteps = valid;
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
            CheckedArguments bad = valid;
            bad.steps[i] = step;
            EXPECT_EQ(routine.call(bad), routine.badStep) << "step " << i << " is " << step;
        }
    }
    EXPECT_TRUE(blocks.untouched());
}

} // namespace vel::test
