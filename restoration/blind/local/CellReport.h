#pragma once

namespace restoration {

/// What a search for a grid of kernels says about one cell.
struct CellReport {
    /// Whether the kernel was estimated in the cell. Otherwise it is that of the neighbours or of
    /// the whole picture.
    bool isFound = false;
    /// 0..1: how far the kernel can be trusted.
    float confidence = 1.0f;
    /// The likeness of the kernel and that of the whole picture, 0..1.
    float likeness = 1.0f;
};

} // namespace restoration
