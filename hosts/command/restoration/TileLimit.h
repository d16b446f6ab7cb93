#pragma once

namespace velorn {

/// The largest side that a kernel may have for a picture of this size. The library works in square
/// tiles and gives up a margin that grows with the kernel; a larger kernel leaves no tile over.
int largestKernelSide(int width, int height);

} // namespace velorn
