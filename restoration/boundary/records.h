#pragma once

#include "restoration/boundary/argumentChecks.h"
#include "velorn.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

/// Records that later versions extend: they begin with `size`, the size that the host knows.
namespace restoration {

/// The sizes of a record in all versions so far, in ascending order. Most records have one.
template <class Record>
inline constexpr std::uint32_t kKnownSizes[] = {sizeof(Record)};

/// Version 1.0 ended before the fields named here.
template <>
inline constexpr std::uint32_t kKnownSizes<VelornFindSettings>[] = {
    offsetof(VelornFindSettings, region), sizeof(VelornFindSettings)};
template <>
inline constexpr std::uint32_t kKnownSizes<VelornFindReport>[] = {offsetof(VelornFindReport, kind),
                                                                  sizeof(VelornFindReport)};

/// @throws Failure VELORN_STATUS_INVALID_ARGUMENT for null and sizes that no version had
template <class Record>
void requireRecord(const Record* record, const std::string& name) {
    requirePointer(record, name);
    if (std::ranges::find(kKnownSizes<Record>, record->size) == std::end(kKnownSizes<Record>)) {
        refuse(name + "->size is " + numberText(std::int64_t{record->size}) + ", but must be " +
               numberText(std::int64_t{sizeof(Record)}) + ", the size of the record");
    }
}

/// The same; null is legal.
template <class Record>
void requireRecordOrNull(const Record* record, const std::string& name) {
    if (record != nullptr) {
        requireRecord(record, name);
    }
}

/// The host's record on top of `defaults`, which stay in the fields that the host does not know.
template <class Record>
Record readRecord(const Record& record, Record defaults) noexcept {
    std::memcpy(&defaults, &record, record.size);
    defaults.size = sizeof(Record);
    return defaults;
}

/// Writes the fields of `values` that the host knows.
template <class Record>
void writeRecord(Record values, Record& record) noexcept {
    values.size = record.size;
    std::memcpy(&record, &values, values.size);
}

} // namespace restoration
