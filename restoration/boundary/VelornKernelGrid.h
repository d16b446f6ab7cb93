#pragma once

#include "restoration/blind/local/CellReport.h"
#include "restoration/boundary/VelornKernel.h"
#include "restoration/kernels/KernelGrid.h"
#include "velorn.h"

#include <cstddef>
#include <utility>
#include <vector>

/// The grid behind the host's pointer.
struct VelornKernelGrid {
    /// @param cellReports  one for each kernel
    /// @throws std::bad_alloc
    VelornKernelGrid(restoration::KernelGrid kernelGrid,
                     std::vector<restoration::CellReport> cellReports)
        : grid(std::move(kernelGrid)), reports(std::move(cellReports)) {
        for (int row = 0; row < grid.rows(); ++row) {
            for (int column = 0; column < grid.columns(); ++column) {
                cells.push_back({grid.at(column, row)});
            }
        }
    }

    bool hasCell(std::int32_t column, std::int32_t row) const noexcept {
        return column >= 0 && row >= 0 && column < grid.columns() && row < grid.rows();
    }
    std::size_t index(std::int32_t column, std::int32_t row) const noexcept {
        return static_cast<std::size_t>(row) * static_cast<std::size_t>(grid.columns()) +
               static_cast<std::size_t>(column);
    }

    restoration::KernelGrid grid;
    std::vector<restoration::CellReport> reports;
    std::vector<VelornKernel> cells; ///< what the host sees of the kernels
};
