// Writes velimproclib/veldeblurcv/shrinkage/ShrinkTableData.cpp, the stored shrinkage table.
//
//     makeShrinkTable > velimproclib/veldeblurcv/shrinkage/ShrinkTableData.cpp
//     makeShrinkTable --verify velimproclib/veldeblurcv/shrinkage/ShrinkTableData.cpp
//
// The table approximates, for alpha = 0, 0.1 .. 1 and beta = (2 sqrt 2)^0 .. (2 sqrt 2)^5,
//
//     w(v) = argmin over w of |w|^alpha + (beta / 2) (w - v)^2
//
// by one polyline per pair. w is odd, therefore all equations are solved for v > 0. There w is 0 up
// to a threshold, jumps, and rises after the jump as a concave curve whose inverse has a closed
// form,
//
//     v(w) = w + (alpha / beta) w^(alpha - 1).
//
// A chord of a concave curve has an error of one sign, largest where the curve is parallel to the
// chord. That point has a closed form too, which gives the largest error of a segment without
// sampling. Bisection over the grid of the knots finds the longest segment within an error bound. A
// side is a greedy sequence of longest segments, and the bound is lowered until the knots just
// reach the end.
//
// The two sides have different aims and are not mirror images. On the negative side the bound of a
// segment is proportional to the gradient at its begin: the knots are dense near the jump, where
// the gradients of real images are. On the positive side all segments have the same bound, which
// makes the largest error as small as the number of knots allows.

#include "velimproclib/veldeblurcv/shrinkage/ShrinkTable.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace {

using vel::kShrinkAlphas;
using vel::kShrinkLevels;

constexpr double kEnd = 10.0;
constexpr double kGridPerUnit = 10000.0; // knots are multiples of 0.0001
constexpr int kEndIndex = 100000;

constexpr int kAlphaOfTheEstimator = 5; // alpha = 0.5

struct Problem {
    double alpha;
    double beta;
};

struct Row {
    std::vector<double> levels;
    std::vector<double> values;
};

// The rows of alpha = 0.5 are part of the table's definition: the estimator's results depend on
// them.
const std::array<Row, kShrinkLevels> kEstimatorRows = {{
    {{-10, -2.2374, -1.7233, -1.5306, -1.5001, -1.5, 1.5, 1.5001, 1.6601, 2.0427, 4.1799, 10},
     {-9.84061, -1.87195, -1.28164, -1.04041, -1.00013, 0, 0, 1.00013, 1.20452, 1.65391, 3.92761,
      9.84061}},
    {{-10, -1.145, -0.8693, -0.7688, -0.7501, -0.75, 0.75, 0.7501, 0.8302, 1.0218, 2.0954, 10},
     {-9.94394, -0.965051, -0.650043, -0.524772, -0.500133, 0, 0, 0.500133, 0.602446, 0.827465,
      1.96943, 9.94394}},
    {{-10, -0.5773, -0.436, -0.385, -0.375, -0.3749, 0.3749, 0.375, 0.4151, 0.511, 1.0492, 10},
     {-9.98022, -0.487815, -0.326644, -0.263167, -0.25, 0, 0, 0.25, 0.301223, 0.413846, 0.986266,
      9.98022}},
    {{-10, -0.2895, -0.2182, -0.1926, -0.1875, -0.1874, 0.1874, 0.1875, 0.2076, 0.2557, 0.5272, 10},
     {-9.99301, -0.244843, -0.163562, -0.131714, -0.125, 0, 0, 0.125, 0.150673, 0.20715, 0.495819,
      9.99301}},
    {{-10, -0.1449, -0.1092, -0.0963, -0.0938, -0.0937, 0.0937, 0.0938, 0.1039, 0.1282, 0.2681, 10},
     {-9.99753, -0.122586, -0.0819011, -0.0658569, -0.0625666, 0, 0, 0.0625666, 0.0754598, 0.103971,
      0.252554, 9.99753}},
    {{-10, -0.0725, -0.0546, -0.0482, -0.0469, -0.0468, 0.0468, 0.0469, 0.052, 0.0643, 0.1368, 10},
     {-9.99913, -0.0613482, -0.0409505, -0.0329934, -0.0312833, 0, 0, 0.0312833, 0.0377915,
      0.0522118, 0.129113, 9.99913}},
}};

double toGradient(int index) {
    return index / kGridPerUnit;
}

/// The gradient at which zero and the non-zero solution cost the same, for alpha < 1.
double threshold(const Problem& p) {
    const double w = std::pow(2 * (1 - p.alpha) / p.beta, 1 / (2 - p.alpha));
    return w + p.alpha / p.beta * std::pow(w, p.alpha - 1);
}

/// The non-zero solution for v above the threshold. Newton's method from w = v falls monotonically
/// to the root, because the derivative of the cost is convex there; the bracket is only a
/// safeguard.
double solveAboveThreshold(const Problem& p, double v) {
    double low =
        std::pow(p.alpha * (1 - p.alpha) / p.beta, 1 / (2 - p.alpha)); // the cost's inflection
    double high = v;
    double w = v;
    for (int i = 0; i < 200; ++i) {
        const double power = p.alpha * std::pow(w, p.alpha - 1);
        const double slope = power + p.beta * (w - v);
        const double curvature = (p.alpha - 1) * power / w + p.beta;
        (slope > 0 ? high : low) = w;
        double next = w - slope / curvature;
        if (!(next > low && next < high)) {
            next = 0.5 * (low + high);
        }
        if (std::abs(next - w) <= 1e-16 * v) {
            return next;
        }
        w = next;
    }
    return w;
}

/// The largest error of the chord between two grid points above the threshold.
double chordError(const Problem& p, int from, int to) {
    const double v0 = toGradient(from);
    const double v1 = toGradient(to);
    const double w0 = solveAboveThreshold(p, v0);
    const double slope = (solveAboveThreshold(p, v1) - w0) / (v1 - v0);
    if (slope <= 1) {
        return 0; // the curve is steeper than 1 everywhere: only rounding remains
    }
    const double w =
        std::pow(p.alpha * (1 - p.alpha) / p.beta / (1 - 1 / slope), 1 / (2 - p.alpha));
    const double v = w + p.alpha / p.beta * std::pow(w, p.alpha - 1);
    return v > v0 && v < v1 ? w - (w0 + slope * (v - v0)) : 0;
}

enum class Bound { Uniform, ProportionalToGradient };

/// The knots of at most `segments` segments from `first`, each the longest within the bound.
std::vector<int> layGreedily(const Problem& p, int first, int segments, Bound kind, double bound) {
    std::vector<int> knots = {first};
    for (int s = 0; s < segments && knots.back() < kEndIndex; ++s) {
        const int from = knots.back();
        const double allowed =
            kind == Bound::ProportionalToGradient ? bound * toGradient(from) : bound;
        int low = from + 1;
        int high = kEndIndex;
        while (low < high) {
            const int middle = (low + high + 1) / 2;
            if (chordError(p, from, middle) <= allowed) {
                low = middle;
            } else {
                high = middle - 1;
            }
        }
        knots.push_back(low);
    }
    return knots;
}

/// The knots of one side, from just after the jump to the end, for the lowest bound that reaches
/// the end.
std::vector<int> placeKnots(const Problem& p, int first, int segments, Bound kind) {
    double tooLow = 0;
    double enough = 1;
    for (int i = 0; i < 45; ++i) {
        const double bound = 0.5 * (tooLow + enough);
        const std::vector<int> knots = layGreedily(p, first, segments, kind, bound);
        (knots.back() == kEndIndex ? enough : tooLow) = bound;
    }
    return layGreedily(p, first, segments, kind, enough);
}

void appendNegativeSide(Row& row, const Problem& p, const std::vector<int>& knots) {
    for (auto knot = knots.rbegin(); knot != knots.rend(); ++knot) {
        row.levels.push_back(-toGradient(*knot));
        row.values.push_back(-solveAboveThreshold(p, toGradient(*knot)));
    }
}

void appendPositiveSide(Row& row, const Problem& p, const std::vector<int>& knots) {
    for (const int knot : knots) {
        row.levels.push_back(toGradient(knot));
        row.values.push_back(solveAboveThreshold(p, toGradient(knot)));
    }
}

/// The row for an alpha with a jump: two ends, two jump pairs, and half of the other knots on each
/// side.
Row fitRowWithJump(const Problem& p, int knots) {
    // (2 sqrt 2)^2 is slightly above 8 in double. Therefore a threshold on the grid comes out
    // slightly below its grid point, and the knot there is the outer one, as in the estimator's
    // rows.
    const int inner = static_cast<int>(std::floor(threshold(p) * kGridPerUnit));
    const int segments = knots / 2 - 2;
    Row row;
    appendNegativeSide(row, p, placeKnots(p, inner + 1, segments, Bound::ProportionalToGradient));
    row.levels.insert(row.levels.end(), {-toGradient(inner), toGradient(inner)});
    row.values.insert(row.values.end(), {0.0, 0.0});
    appendPositiveSide(row, p, placeKnots(p, inner + 1, segments, Bound::Uniform));
    return row;
}

/// The row for alpha = 1, the soft threshold, which is a polyline itself.
Row softThresholdRow(double beta) {
    const double edge = 1 / beta;
    const double middle = (kEnd + edge) / 2;
    return {{-kEnd, -middle, -edge, edge, middle, kEnd},
            {edge - kEnd, edge - middle, 0, 0, middle - edge, kEnd - edge}};
}

Row makeRow(int level, int tenths) {
    const double beta = std::pow(2 * std::sqrt(2.0), level);
    if (tenths == kAlphaOfTheEstimator) {
        return kEstimatorRows[static_cast<std::size_t>(level)];
    }
    if (tenths == 10) {
        return softThresholdRow(beta);
    }
    return fitRowWithJump({tenths / 10.0, beta}, vel::shrinkKnots(tenths));
}

/// The shortest float literal that reads back as the float nearest to `value`.
std::string literal(double value) {
    std::array<char, 32> text{};
    const auto single = static_cast<float>(value);
    for (int digits = 6; digits <= 9; ++digits) {
        std::snprintf(text.data(), text.size(), "%.*g", digits, static_cast<double>(single));
        if (std::strtof(text.data(), nullptr) == single) {
            break;
        }
    }
    std::string result = text.data();
    if (result.find_first_of(".e") == std::string::npos) {
        result += ".0";
    }
    return result + "f";
}

/// Writes one row as a braced list with line breaks.
void writeRow(std::ostream& out, const std::vector<double>& numbers, double last) {
    constexpr std::size_t kColumns = 100;
    std::string line = "    {";
    const auto append = [&](const std::string& item) {
        if (line.size() + 1 + item.size() > kColumns) {
            out << line << "\n";
            line = "    ";
        }
        line += line.back() == '{' ? item : " " + item;
    };
    for (const double number : numbers) {
        append(literal(number) + ",");
    }
    append(literal(last) + "},");
    out << line << "\n";
}

std::string makeTable() {
    std::ostringstream out;
    out << "// Generated by tools/makeShrinkTable.cpp. Do not edit.\n"
           "#include \"velimproclib/veldeblurcv/shrinkage/ShrinkTable.h\"\n"
           "\n"
           "// clang-format off\n"
           "namespace vel {\n"
           "\n"
           "const float kStoredShrinkTable[kShrinkRows][kShrinkColumns] = {\n";
    for (int level = 0; level < kShrinkLevels; ++level) {
        for (int tenths = 0; tenths < kShrinkAlphas; ++tenths) {
            const Row row = makeRow(level, tenths);
            out << "    // level " << level << ", alpha " << tenths / 10 << "." << tenths % 10
                << "\n";
            writeRow(out, row.levels, tenths / 10.0);
            writeRow(out, row.values, static_cast<double>(row.levels.size()));
        }
    }
    out << "};\n\n} // namespace vel\n";
    return out.str();
}

int verify(const char* path) {
    std::ifstream file(path, std::ios::binary);
    const std::string committed{std::istreambuf_iterator<char>(file),
                                std::istreambuf_iterator<char>()};
    if (committed == makeTable()) {
        return 0;
    }
    std::cerr << path << " differs from the output of makeShrinkTable\n";
    return 1;
}

} // namespace

int main(int argc, char** argv) {
    if (argc == 3 && std::string_view(argv[1]) == "--verify") {
        return verify(argv[2]);
    }
    if (argc != 1) {
        std::cerr << "usage: makeShrinkTable [--verify FILE]\n";
        return 2;
    }
    std::cout << makeTable();
    return 0;
}
