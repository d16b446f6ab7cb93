#include "restoration/blind/parts/FrequencyCells.h"

namespace restoration::frequencies {

double Cell::meanOf(const Spectrum& spectrum) const {
    double sum = 0.0;
    for (const std::size_t slot : slots) {
        sum += spectrum[slot];
    }
    return sum / static_cast<double>(slots.size());
}

std::array<Cells, kDirections> cellsOfDirections() {
    std::array<Cells, kDirections> cells;
    forEachFrequency([&](std::size_t slot, double frequency, double angle) {
        for (std::size_t band = 0; band < kBands.size(); ++band) {
            if (kBands[band].holds(frequency)) {
                Cell& cell = cells[directionOf(angle)][band];
                cell.slots.push_back(slot);
                cell.frequency += frequency;
            }
        }
    });
    for (Cells& direction : cells) {
        for (Cell& cell : direction) {
            cell.frequency /= static_cast<double>(cell.slots.size());
        }
    }
    return cells;
}

} // namespace restoration::frequencies
