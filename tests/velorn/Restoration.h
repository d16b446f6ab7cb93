#pragma once

#include "tests/velorn/HostPicture.h"
#include "velorn.h"

#include <gtest/gtest.h>
#include <vector>

namespace velorntest {

inline VelornRestoreSettings defaultSettings() {
    VelornRestoreSettings settings{};
    settings.size = sizeof settings;
    EXPECT_EQ(velornRestoreDefaults(&settings), VELORN_STATUS_OK);
    return settings;
}

using Kernels = std::vector<const VelornKernel*>;

/// One call of velornRestore.
inline VelornStatus restore(const VelornPicture& source, const VelornPicture& target,
                            const Kernels& kernels, const VelornRestoreSettings& settings) {
    return velornRestore(&source, &target, kernels.data(),
                         static_cast<std::int32_t>(kernels.size()), &settings, nullptr);
}

/// The restoration of `source` (or of the region of the settings) into a picture of `layout`.
inline HostPicture restored(HostPicture& source, const Kernels& kernels,
                            const VelornRestoreSettings& settings, const Layout& layout) {
    HostPicture target(layout);
    EXPECT_EQ(restore(source.view(), target.view(), kernels, settings), VELORN_STATUS_OK)
        << velornLastMessage();
    EXPECT_TRUE(target.guardsAreIntact());
    return target;
}

inline HostPicture restored(HostPicture& source, const Kernels& kernels,
                            const VelornRestoreSettings& settings = defaultSettings()) {
    return restored(source, kernels, settings, source.layout());
}

} // namespace velorntest
