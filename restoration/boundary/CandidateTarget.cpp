#include "restoration/boundary/CandidateTarget.h"

#include "restoration/boundary/argumentChecks.h"
#include "restoration/boundary/findReport.h"
#include "restoration/boundary/records.h"
#include "restoration/boundary/VelornKernel.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <memory>
#include <string>
#include <utility>

namespace restoration {

CandidateTarget::CandidateTarget(VelornKernel** kernels, VelornFindReport* reports,
                                 std::int32_t capacity)
    : m_kernels(kernels), m_reports(reports), m_capacity(capacity) {
    requirePointer(kernels, "kernels");
    requireRange(capacity, 1, std::numeric_limits<std::int32_t>::max(), "capacity");
    if (reports == nullptr) {
        return;
    }
    requireRecord(reports, "reports");
    for (std::int32_t i = 1; i < capacity; ++i) {
        const std::uint32_t size = reportAt(i)->size;
        if (size != reports->size) {
            refuse("reports[" + std::to_string(i) + "].size is " + std::to_string(size) +
                   ", but must be " + std::to_string(reports->size) + ", that of the first report");
        }
    }
}

std::int32_t CandidateTarget::write(std::vector<FoundKernel> found) const {
    std::vector<std::unique_ptr<VelornKernel>> made;
    const std::size_t count = std::min(found.size(), static_cast<std::size_t>(m_capacity));
    for (std::size_t i = 0; i < count; ++i) {
        made.push_back(std::make_unique<VelornKernel>());
    }
    for (std::size_t i = 0; i < count; ++i) {
        const auto index = static_cast<std::int32_t>(i);
        if (m_reports != nullptr) {
            writeRecord(findReport(found[i], found.size()), *reportAt(index));
        }
        made[i]->kernel = std::move(found[i].kernel);
        m_kernels[i] = made[i].release();
    }
    return static_cast<std::int32_t>(count);
}

/// A host that knows fewer fields has shorter records, therefore their size is their distance.
VelornFindReport* CandidateTarget::reportAt(std::int32_t index) const {
    auto* const first = reinterpret_cast<std::byte*>(m_reports);
    return reinterpret_cast<VelornFindReport*>(first + std::size_t{m_reports->size} *
                                                           static_cast<std::size_t>(index));
}

} // namespace restoration
