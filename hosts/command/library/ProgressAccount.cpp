#include "hosts/command/library/ProgressAccount.h"

#include <cmath>
#include <cstdint>
#include <utility>

namespace velorn {
namespace {

/// Units of progress for a whole task: far more than a picture has tiles.
constexpr int kUnits = 1'000'000;

extern "C" std::int32_t report(std::int32_t current, std::int32_t limit, void* userData) {
    const auto& progress = *static_cast<const ProgressFunction*>(userData);
    return progress(current, limit) ? 1 : 0;
}

} // namespace

ProgressAccount::ProgressAccount(ProgressFunction progress)
    // The library spends one unit more than the total: it reports the start of its work.
    : m_progress(std::move(progress)), m_record{kUnits, kUnits + 1, report, &m_progress, 0} {}

ProgressFunction partOf(const ProgressFunction& whole, double start, double end) {
    return [&whole, start, end](int current, int limit) {
        const double share = std::lerp(start, end, static_cast<double>(current) / limit);
        return whole(static_cast<int>(share * kUnits), kUnits);
    };
}

} // namespace velorn
