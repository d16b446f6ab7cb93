#include "velimproclib/veldeblurcv/shrinkage/BuiltShrinkTable.h"

#include "velimproclib/primitives/arithmetic/Vectors.h"
#include "velimproclib/primitives/base/truncate.h"

#include <cstddef>

namespace vel {
namespace {

constexpr std::int32_t kEntries = BuiltShrinkTable::kLutSize + 1;

using Vector = std::vector<float>;

void scale(float factor, Vector& values) {
    for (float& value : values) {
        value *= factor;
    }
}

void add(float term, Vector& values) {
    for (float& value : values) {
        value += term;
    }
}

void square(Vector& values) {
    for (float& value : values) {
        value *= value;
    }
}

/// Working vectors of the length of the table.
struct Work {
    Vector x = Vector(kEntries);         ///< current solution
    Vector magnitude = Vector(kEntries); ///< |x|
    Vector p = Vector(kEntries);
    Vector q = Vector(kEntries);
    Vector r = Vector(kEntries);
};

/// One Newton step on alpha |x|^(alpha - 1) sign(x) + beta (x - v) for all entries except the
/// first.
void newtonStep(Work& work, const Vector& v, double alpha, float beta) {
    vsAbs(kEntries, work.x.data(), work.magnitude.data());
    vsPowx(kEntries, work.magnitude.data(), static_cast<float>(alpha - 1), work.p.data());
    vsPowx(kEntries, work.magnitude.data(), static_cast<float>(alpha - 2), work.q.data());
    scale(static_cast<float>(alpha), work.p);
    scale(static_cast<float>(alpha * (alpha - 1)), work.q);
    add(beta, work.q);
    vsSub(kEntries, work.x.data(), v.data(), work.r.data());
    scale(beta, work.r);
    for (std::size_t j = 1; j < work.x.size(); ++j) {
        const double sign = 0 > work.x[j] ? -1.0 : 1.0;
        const auto derivative = static_cast<float>(sign * work.p[j] + work.r[j]);
        if (work.q[j] == 0) {
            work.x[j] = 0;
        } else {
            work.x[j] = static_cast<float>(work.x[j] - static_cast<double>(derivative) / work.q[j]);
        }
    }
}

/// Stores the solution where its cost is below that of 0, else 0.
void decide(Work& work, const Vector& v, double alpha, float beta, Vector& table) {
    const auto halfBeta = static_cast<float>(beta * 0.5);
    Vector& zeroCost = work.p;
    zeroCost = v;
    square(zeroCost);
    scale(halfBeta, zeroCost);

    vsSub(kEntries, work.x.data(), v.data(), work.r.data());
    square(work.r);
    scale(halfBeta, work.r);
    vsAbs(kEntries, work.x.data(), work.magnitude.data());
    Vector& cost = work.q;
    vsPowx(kEntries, work.magnitude.data(), static_cast<float>(alpha), cost.data());
    vsAdd(kEntries, cost.data(), work.r.data(), cost.data());

    for (std::size_t j = 1; j < table.size(); ++j) {
        table[j] = cost[j] < zeroCost[j] ? work.x[j] : 0.0f;
    }
}

} // namespace

void BuiltShrinkTable::allocate(int lastLevel) {
    m_lutX.assign(kEntries, 0.0f);
    for (std::size_t j = 1; j < m_lutX.size(); ++j) {
        m_lutX[j] = static_cast<float>(static_cast<double>(j - 1) * 0.0001 - 10);
    }
    m_lut.assign(static_cast<std::size_t>(lastLevel) + 1, Vector(kEntries, 0.0f));
}

void BuiltShrinkTable::build(double alpha, double betaRate, int newtonIters) {
    Work work;
    float beta = 1.0f;
    for (Vector& table : m_lut) {
        work.x = m_lutX;
        for (int i = 0; i < newtonIters; ++i) {
            newtonStep(work, m_lutX, alpha, beta);
        }
        decide(work, m_lutX, alpha, beta, table);
        beta = static_cast<float>(beta * betaRate);
    }
}

float BuiltShrinkTable::at(int level, float v) const noexcept {
    const Vector& lut = m_lut[static_cast<std::size_t>(level)];
    std::int64_t cell = std::int64_t{1} - truncateToInt((v + 10) / -0.0001);
    if (cell + 1 >= kLutSize) {
        cell = kLutSize - 2;
    }
    if (cell < 0) {
        cell = 0;
    }
    const auto j = static_cast<std::size_t>(cell);
    const float slope = (lut[j + 1] - lut[j]) / (m_lutX[j + 1] - m_lutX[j]);
    return slope * (v - m_lutX[j]) + lut[j];
}

} // namespace vel
