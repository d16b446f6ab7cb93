#pragma once

namespace restoration {

/// @throws Failure VELORN_STATUS_KERNEL_TOO_LARGE
[[noreturn]] void throwKernelTooLarge();

/// @throws Failure VELORN_STATUS_INVALID_ARGUMENT for sides below 1 and even sides,
///         VELORN_STATUS_KERNEL_TOO_LARGE for sides above VELORN_LARGEST_KERNEL_SIDE
void checkKernelSides(int width, int height);

} // namespace restoration
