#pragma once

#include "velorn.h"

#include <gtest/gtest.h>
#include <memory>
#include <utility>
#include <vector>

namespace velorntest {

struct FreeKernel {
    void operator()(VelornKernel* kernel) const { velornFreeKernel(kernel); }
};
using HostKernel = std::unique_ptr<VelornKernel, FreeKernel>;

inline HostKernel madeKernel(VelornBlur blur, float extent, float angle = 0.0f) {
    VelornKernel* kernel = nullptr;
    EXPECT_EQ(velornMakeKernel(blur, extent, angle, &kernel), VELORN_STATUS_OK)
        << velornLastMessage();
    return HostKernel(kernel);
}

inline std::vector<float> valuesOf(const VelornKernel* kernel) {
    const float* const values = velornKernelValues(kernel);
    return {values, values + velornKernelWidth(kernel) * velornKernelHeight(kernel)};
}

} // namespace velorntest
