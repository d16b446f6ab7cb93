#include "velimproclib/veldeblurcv/estimation/progress/ProgressSpan.h"

#include "velimproclib/primitives/base/canCallBack.h"
#include "velimproclib/primitives/base/narrowToInt32.h"
#include "velimproclib/primitives/base/truncate.h"

#include <algorithm>

namespace vel {

namespace {

/// The host chooses the account's numbers, so their sums may exceed 32 bits.
std::int32_t sum(std::int32_t a, std::int32_t b) noexcept {
    return narrowToInt32(std::int64_t{a} + b);
}

} // namespace

CProgressSpan::CProgressSpan(ProgressRecord* record) noexcept : m_record(record) {
    restAt(record == nullptr ? 0 : record->current);
}

CProgressSpan::~CProgressSpan() {
    if (m_record != nullptr) {
        m_record->current = m_end;
    }
}

int CProgressSpan::begin(float share, int steps) {
    if (!canCall()) {
        restAt(m_record == nullptr ? 0 : m_record->current);
        return 0;
    }
    m_start = m_record->current;
    const std::int32_t units = truncateToInt(double{share} * m_record->total);
    m_end = std::min(sum(m_start, units), m_record->limit);
    const double length = static_cast<double>(std::int64_t{m_end} - m_start);
    m_step = std::max(1, truncateToInt(length / steps + double{0.3f}));
    m_record->callback(sum(m_start, 1), m_record->limit, m_record->userData);
    return m_step;
}

int CProgressSpan::advance() {
    if (!canCall()) {
        return 1;
    }
    m_record->current = std::min(sum(m_record->current, m_step), m_end);
    return callBack();
}

int CProgressSpan::finish() {
    if (!canCall()) {
        return 1;
    }
    m_record->current = m_end;
    return callBack();
}

void CProgressSpan::beginSub(int parts) noexcept {
    if (m_record == nullptr) {
        return;
    }
    m_savedCurrent = m_record->current;
    m_savedStep = m_step;
    m_step = std::max(1, m_step / std::max(1, parts));
}

void CProgressSpan::endSub() noexcept {
    if (m_record == nullptr) {
        return;
    }
    m_record->current = sum(m_savedCurrent, m_savedStep);
    m_step = m_savedStep;
}

bool CProgressSpan::canCall() const noexcept {
    return m_record != nullptr && canCallBack(*m_record);
}

void CProgressSpan::restAt(std::int32_t position) noexcept {
    m_start = position;
    m_end = position;
    m_step = 0;
    m_savedCurrent = position;
    m_savedStep = 0;
}

int CProgressSpan::callBack() {
    return m_record->callback(m_record->current, m_record->limit, m_record->userData);
}

} // namespace vel
