// The functions of velorn.h: they check their arguments and call the library.
#include "restoration/blind/findKernel.h"
#include "restoration/blind/local/findKernelGrid.h"
#include "restoration/boundary/argumentChecks.h"
#include "restoration/boundary/CandidateTarget.h"
#include "restoration/boundary/checkPicture.h"
#include "restoration/boundary/findReport.h"
#include "restoration/boundary/findSettings.h"
#include "restoration/boundary/gridArguments.h"
#include "restoration/boundary/guardedCall.h"
#include "restoration/boundary/lastMessage.h"
#include "restoration/boundary/records.h"
#include "restoration/boundary/restoreKernels.h"
#include "restoration/boundary/restoreSettings.h"
#include "restoration/boundary/VelornKernel.h"
#include "restoration/boundary/VelornKernelGrid.h"
#include "restoration/kernels/analyticKernel.h"
#include "restoration/kernels/checkKernelSides.h"
#include "restoration/kernels/kernelFromValues.h"
#include "restoration/kernels/rotatedBy180.h"
#include "restoration/noise/measureNoise.h"
#include "restoration/pictures/luminancePlane.h"
#include "restoration/pipeline/restorePicture.h"
#include "restoration/threads/Team.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

using namespace restoration;

namespace {

/// Runs `make` and gives its kernel to the host; null after a failure. `name` is what the host
/// calls the pointer.
template <class Make>
VelornStatus makeKernel(VelornKernel** kernel, const Make& make,
                        const char* name = "kernel") noexcept {
    if (kernel != nullptr) {
        *kernel = nullptr;
    }
    return guardedCall([&] {
        requirePointer(kernel, name);
        auto made = std::make_unique<VelornKernel>();
        made->kernel = make();
        *kernel = made.release();
    });
}

Kernel kernelOfBlur(std::int32_t blur, float extent, float angle) {
    constexpr FloatRange kExtents{.excludesLeast = true};
    constexpr FloatRange kAngles{.least = -std::numeric_limits<float>::infinity()};
    requireRange(blur, VELORN_BLUR_GAUSSIAN, VELORN_BLUR_MOTION, "blur");
    requireRange(extent, kExtents, "extent");
    if (blur == VELORN_BLUR_MOTION) {
        requireRange(angle, kAngles, "angle");
    }
    return analyticKernel(static_cast<VelornBlur>(blur), extent, angle);
}

Kernel kernelOfValues(const float* values, std::int32_t width, std::int32_t height) {
    requirePointer(values, "values");
    checkKernelSides(width, height);
    return kernelFromValues({values, values + std::ptrdiff_t{width} * height}, width, height);
}

/// Best first, at least one.
std::vector<FoundKernel> foundKernels(const VelornPicture& picture,
                                      const VelornFindSettings& settings) {
    Team team(settings.threads, {settings.progress, settings.userData});
    const Plane luminance = luminancePlane(PictureReader(picture), team);
    std::vector<FoundKernel> found = findCandidates(luminance, searchOf(settings), team);
    team.finish();
    found.resize(std::min(found.size(), std::size_t{VELORN_MOST_CANDIDATES}));
    return found;
}

/// The same for grids.
template <class Make>
VelornStatus makeGrid(VelornKernelGrid** grid, const Make& make) noexcept {
    if (grid != nullptr) {
        *grid = nullptr;
    }
    return guardedCall([&] {
        requirePointer(grid, "grid");
        *grid = make().release();
    });
}

} // namespace

const char* velornLastMessage(void) {
    return lastMessage();
}

const char* velornVersion(void) {
    return VELORN_VERSION;
}

VelornStatus velornMakeKernel(int32_t blur, float extent, float angle, VelornKernel** kernel) {
    return makeKernel(kernel, [=] { return kernelOfBlur(blur, extent, angle); });
}

VelornStatus velornKernelFromValues(const float* values, int32_t width, int32_t height,
                                    VelornKernel** kernel) {
    return makeKernel(kernel, [=] { return kernelOfValues(values, width, height); });
}

VelornStatus velornRotateKernel(const VelornKernel* kernel, VelornKernel** rotated) {
    const auto rotate = [=] {
        requirePointer(kernel, "kernel");
        return rotatedBy180(kernel->kernel);
    };
    return makeKernel(rotated, rotate, "rotated");
}

int32_t velornKernelWidth(const VelornKernel* kernel) {
    return kernel != nullptr ? kernel->kernel.width : 0;
}

int32_t velornKernelHeight(const VelornKernel* kernel) {
    return kernel != nullptr ? kernel->kernel.height : 0;
}

const float* velornKernelValues(const VelornKernel* kernel) {
    return kernel != nullptr ? kernel->kernel.values.data() : nullptr;
}

void velornFreeKernel(VelornKernel* kernel) {
    delete kernel;
}

VelornStatus velornRestoreDefaults(VelornRestoreSettings* settings) {
    return guardedCall([=] {
        requireRecord(settings, "settings");
        writeRecord(restoreDefaults(), *settings);
    });
}

VelornStatus velornFindDefaults(VelornFindSettings* settings) {
    return guardedCall([=] {
        requireRecord(settings, "settings");
        writeRecord(findDefaults(), *settings);
    });
}

VelornStatus velornRestore(const VelornPicture* source, const VelornPicture* target,
                           const VelornKernel* const* kernels, int32_t kernelCount,
                           const VelornRestoreSettings* settings, VelornRestoreReport* report) {
    return guardedCall([=] {
        checkPicture(source, "source");
        const VelornRestoreSettings checked = checkedSettings(settings, *source);
        checkTarget(target, *source, checked.region.width, checked.region.height);
        const std::vector<const Kernel*> blurs = checkedKernels(kernels, kernelCount, *source);
        requireRecordOrNull(report, "report");
        const VelornRestoreReport done = restorePicture(*source, *target, blurs, checked);
        if (report != nullptr) {
            writeRecord(done, *report);
        }
    });
}

VelornStatus velornNoise(const VelornPicture* picture, VelornNoiseReport* report) {
    return guardedCall([=] {
        checkPicture(picture, "picture");
        requireRecord(report, "report");
        const NoiseLevels levels = measureNoise(colourRows(PictureReader(*picture)));
        VelornNoiseReport measured{};
        measured.luminance = levels.luminance;
        std::ranges::copy(levels.channels, measured.channels);
        writeRecord(measured, *report);
    });
}

VelornStatus velornFindKernel(const VelornPicture* picture, const VelornFindSettings* settings,
                              VelornKernel** kernel, VelornFindReport* report) {
    return makeKernel(kernel, [=] {
        checkPicture(picture, "picture");
        const VelornFindSettings checked = checkedSettings(settings, *picture);
        requireRecordOrNull(report, "report");
        std::vector<FoundKernel> found = foundKernels(*picture, checked);
        if (report != nullptr) {
            writeRecord(findReport(found.front(), found.size()), *report);
        }
        return std::move(found.front().kernel); // a copy could fail after the report is written
    });
}

VelornStatus velornFindCandidates(const VelornPicture* picture, const VelornFindSettings* settings,
                                  VelornKernel** kernels, VelornFindReport* reports,
                                  int32_t capacity, int32_t* count) {
    if (kernels != nullptr) {
        std::fill_n(kernels, capacity, nullptr);
    }
    if (count != nullptr) {
        *count = 0;
    }
    return guardedCall([=] {
        checkPicture(picture, "picture");
        const VelornFindSettings checked = checkedSettings(settings, *picture);
        const CandidateTarget target(kernels, reports, capacity);
        requirePointer(count, "count");
        *count = target.write(foundKernels(*picture, checked));
    });
}

VelornStatus velornMakeKernelGrid(const VelornKernel* const* kernels, int32_t columns, int32_t rows,
                                  VelornKernelGrid** grid) {
    return makeGrid(grid, [=] {
        KernelGrid made = checkedGrid(kernels, columns, rows);
        const auto cells = static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows);
        return std::make_unique<VelornKernelGrid>(std::move(made), std::vector<CellReport>(cells));
    });
}

VelornStatus velornFindKernelGrid(const VelornPicture* picture, const VelornFindSettings* settings,
                                  VelornKernelGrid** grid, VelornFindReport* report) {
    return makeGrid(grid, [=] {
        checkPicture(picture, "picture");
        const VelornFindSettings checked = checkedSettings(settings, *picture);
        requireRecordOrNull(report, "report");
        Team team(checked.threads, {checked.progress, checked.userData});
        const Plane luminance = luminancePlane(PictureReader(*picture), team);
        FoundGrid found = findKernelGrid(luminance, searchOf(checked), team);
        auto made =
            std::make_unique<VelornKernelGrid>(std::move(found.grid), std::move(found.reports));
        team.finish();
        if (report != nullptr) {
            writeRecord(findReport(found.whole.front(), found.whole.size()), *report);
        }
        return made;
    });
}

int32_t velornKernelGridColumns(const VelornKernelGrid* grid) {
    return grid != nullptr ? grid->grid.columns() : 0;
}

int32_t velornKernelGridRows(const VelornKernelGrid* grid) {
    return grid != nullptr ? grid->grid.rows() : 0;
}

const VelornKernel* velornKernelGridCell(const VelornKernelGrid* grid, int32_t column,
                                         int32_t row) {
    const bool exists = grid != nullptr && grid->hasCell(column, row);
    return exists ? &grid->cells[grid->index(column, row)] : nullptr;
}

VelornStatus velornKernelGridReport(const VelornKernelGrid* grid, int32_t column, int32_t row,
                                    VelornCellReport* report) {
    return guardedCall([=] {
        requirePointer(grid, "grid");
        requireRange(column, 0, grid->grid.columns() - 1, "column");
        requireRange(row, 0, grid->grid.rows() - 1, "row");
        requireRecord(report, "report");
        const CellReport& cell = grid->reports[grid->index(column, row)];
        writeRecord(VelornCellReport{0, cell.isFound ? 1 : 0, cell.confidence, cell.likeness},
                    *report);
    });
}

void velornFreeKernelGrid(VelornKernelGrid* grid) {
    delete grid;
}

VelornStatus velornRestoreLocal(const VelornPicture* source, const VelornPicture* target,
                                const VelornKernelGrid* grid, const VelornRestoreSettings* settings,
                                VelornRestoreReport* report) {
    return guardedCall([=] {
        checkPicture(source, "source");
        const VelornRestoreSettings checked = checkedSettings(settings, *source);
        checkTarget(target, *source, checked.region.width, checked.region.height);
        checkGrid(grid, *source);
        requireRecordOrNull(report, "report");
        const VelornRestoreReport done = restorePicture(*source, *target, grid->grid, checked);
        if (report != nullptr) {
            writeRecord(done, *report);
        }
    });
}
