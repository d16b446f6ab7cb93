#pragma once

#include "restoration/blind/findKernel.h"
#include "velorn.h"

#include <cstdint>
#include <vector>

namespace restoration {

/// The host's arrays that receive the kernels of a search and their reports.
class CandidateTarget {
public:
    /// @param reports may be null; otherwise the records have one size, that of their distance
    /// @throws Failure VELORN_STATUS_INVALID_ARGUMENT
    CandidateTarget(VelornKernel** kernels, VelornFindReport* reports, std::int32_t capacity);

    /// Gives as many kernels to the host as fit, in their order.
    /// @returns their number
    /// @throws std::bad_alloc, with the arrays unchanged
    std::int32_t write(std::vector<FoundKernel> found) const;

private:
    VelornFindReport* reportAt(std::int32_t index) const;

    VelornKernel** m_kernels;
    VelornFindReport* m_reports;
    std::int32_t m_capacity;
};

} // namespace restoration
