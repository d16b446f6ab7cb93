// velorn for C++: the functions of velorn.h with objects that free themselves, failures as
// exceptions and progress functions that may be lambdas. Header only, C++17. velorn.h documents
// what the functions do.
//
//   using namespace velorn;
//   const auto disc = api::Kernel::of(VELORN_BLUR_DISC, 4.0f);
//   const auto picture = api::pictureOf(pixels.data(), width, height, 3);
//   api::restore(picture, picture, {disc});
#ifndef VELORN_HPP
#define VELORN_HPP

#include "velorn.h"

#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <stdexcept>
#include <type_traits>
#include <utility>
#include <vector>

namespace velorn::api {

/// A status other than VELORN_STATUS_OK; `what` is the message of the call.
class Failure : public std::runtime_error {
public:
    Failure(VelornStatus status, const char* message)
        : std::runtime_error(message), m_status(status) {}

    VelornStatus status() const noexcept { return m_status; }

private:
    VelornStatus m_status;
};

/// @throws Failure for any status but VELORN_STATUS_OK
inline void check(VelornStatus status) {
    if (status != VELORN_STATUS_OK) {
        throw Failure(status, velornLastMessage());
    }
}

/// Receives the progress of a call, 0..1, and returns whether the call continues. An exception
/// cancels the call and leaves it.
using Progress = std::function<bool(double done)>;

/// A blur kernel. Copies share the values, which never change.
class Kernel {
public:
    /// The kernel of an analytic blur.
    static Kernel of(VelornBlur blur, float extent, float angle = 0.0f) {
        VelornKernel* kernel = nullptr;
        check(velornMakeKernel(blur, extent, angle, &kernel));
        return Kernel(kernel);
    }

    /// width * height values, row by row.
    static Kernel fromValues(const float* values, int width, int height) {
        VelornKernel* kernel = nullptr;
        check(velornKernelFromValues(values, width, height, &kernel));
        return Kernel(kernel);
    }

    /// Owns `kernel`, which is not null.
    explicit Kernel(VelornKernel* kernel) : m_kernel(kernel, &velornFreeKernel) {}

    /// Shares `kernel`, which is not null.
    explicit Kernel(std::shared_ptr<const VelornKernel> kernel) : m_kernel(std::move(kernel)) {}

    Kernel rotatedBy180() const {
        VelornKernel* kernel = nullptr;
        check(velornRotateKernel(get(), &kernel));
        return Kernel(kernel);
    }

    const VelornKernel* get() const noexcept { return m_kernel.get(); }
    int width() const noexcept { return velornKernelWidth(get()); }
    int height() const noexcept { return velornKernelHeight(get()); }
    const float* values() const noexcept { return velornKernelValues(get()); }

private:
    std::shared_ptr<const VelornKernel> m_kernel;
};

/// A picture of std::uint8_t, std::uint16_t or float samples. The pixels of a source may be const.
/// @param rowStride bytes; 0: the rows have no gaps
template <class Sample>
VelornPicture pictureOf(Sample* pixels, int width, int height, int channels, bool hasAlpha = false,
                        std::ptrdiff_t rowStride = 0) {
    using Plain = std::remove_const_t<Sample>;
    static_assert(std::is_same_v<Plain, std::uint8_t> || std::is_same_v<Plain, std::uint16_t> ||
                  std::is_same_v<Plain, float>);
    VelornPicture picture{};
    picture.data = const_cast<Plain*>(pixels);
    picture.rowStride = rowStride != 0 ? rowStride
                                       : static_cast<std::ptrdiff_t>(sizeof(Sample)) * channels *
                                             std::ptrdiff_t{width};
    picture.width = width;
    picture.height = height;
    picture.channels = channels;
    picture.hasAlpha = hasAlpha ? 1 : 0;
    picture.samples = std::is_same_v<Plain, float> ? VELORN_SAMPLES_F32
                      : sizeof(Sample) == 1        ? VELORN_SAMPLES_U8
                                                   : VELORN_SAMPLES_U16;
    return picture;
}

/// The default settings of a restoration.
inline VelornRestoreSettings restoreSettings() {
    VelornRestoreSettings settings{};
    settings.size = sizeof settings;
    check(velornRestoreDefaults(&settings));
    return settings;
}

/// The default settings of a search.
inline VelornFindSettings findSettings() {
    VelornFindSettings settings{};
    settings.size = sizeof settings;
    check(velornFindDefaults(&settings));
    return settings;
}

namespace detail {

/// Carries a Progress through the C function pointer of `Settings`. Exceptions must not pass
/// through the library, therefore they wait here for the end of the call.
class ProgressCall {
public:
    template <class Settings>
    ProgressCall(const Progress& progress, Settings& settings) : m_progress(progress) {
        if (m_progress) {
            settings.progress = &ProgressCall::report;
            settings.userData = this;
        }
    }

    /// @throws the exception of the progress function, or Failure
    void finish(VelornStatus status) {
        if (m_exception) {
            std::rethrow_exception(m_exception);
        }
        check(status);
    }

private:
    static std::int32_t report(double done, void* userData) noexcept {
        ProgressCall& call = *static_cast<ProgressCall*>(userData);
        try {
            return call.m_progress(done) ? 1 : 0;
        } catch (...) {
            call.m_exception = std::current_exception();
            return 0;
        }
    }

    const Progress& m_progress;
    std::exception_ptr m_exception;
};

} // namespace detail

/// See velornRestore. `progress`, if there is one, replaces that of the settings.
inline VelornRestoreReport restore(const VelornPicture& source, const VelornPicture& target,
                                   const std::vector<Kernel>& kernels,
                                   VelornRestoreSettings settings = restoreSettings(),
                                   const Progress& progress = {}) {
    std::vector<const VelornKernel*> pointers;
    for (const Kernel& kernel : kernels) {
        pointers.push_back(kernel.get());
    }
    VelornRestoreReport report{};
    report.size = sizeof report;
    detail::ProgressCall call(progress, settings);
    call.finish(velornRestore(&source, &target, pointers.data(),
                              static_cast<std::int32_t>(pointers.size()), &settings, &report));
    return report;
}

/// See velornNoise.
inline VelornNoiseReport noise(const VelornPicture& picture) {
    VelornNoiseReport report{};
    report.size = sizeof report;
    check(velornNoise(&picture, &report));
    return report;
}

struct FoundKernel {
    Kernel kernel;
    VelornFindReport report;
};

/// See velornFindKernel. `progress`, if there is one, replaces that of the settings.
inline FoundKernel findKernel(const VelornPicture& picture,
                              VelornFindSettings settings = findSettings(),
                              const Progress& progress = {}) {
    VelornFindReport report{};
    report.size = sizeof report;
    VelornKernel* kernel = nullptr;
    detail::ProgressCall call(progress, settings);
    call.finish(velornFindKernel(&picture, &settings, &kernel, &report));
    return {Kernel(kernel), report};
}

/// See velornFindCandidates: best first, at least one. `progress`, if there is one, replaces that
/// of the settings.
inline std::vector<FoundKernel> findCandidates(const VelornPicture& picture,
                                               VelornFindSettings settings = findSettings(),
                                               const Progress& progress = {}) {
    struct Free {
        void operator()(VelornKernel* kernel) const { velornFreeKernel(kernel); }
    };
    constexpr std::size_t kMost = VELORN_MOST_CANDIDATES;
    std::vector<VelornKernel*> kernels(kMost);
    std::vector<std::unique_ptr<VelornKernel, Free>> owned(kMost);
    std::vector<VelornFindReport> reports(kMost);
    for (VelornFindReport& report : reports) {
        report.size = sizeof report;
    }
    std::int32_t count = 0;
    detail::ProgressCall call(progress, settings);
    call.finish(velornFindCandidates(&picture, &settings, kernels.data(), reports.data(),
                                     VELORN_MOST_CANDIDATES, &count));
    for (std::size_t i = 0; i < kMost; ++i) {
        owned[i].reset(kernels[i]);
    }
    std::vector<FoundKernel> found;
    for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
        found.push_back({Kernel(owned[i].release()), reports[i]});
    }
    return found;
}

/// Kernels on a grid. Copies share the kernels, which never change.
class KernelGrid {
public:
    /// columns * rows kernels, row by row.
    static KernelGrid of(const std::vector<Kernel>& kernels, int columns, int rows) {
        if (columns < 1 || rows < 1 ||
            kernels.size() != static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows)) {
            throw Failure(VELORN_STATUS_INVALID_ARGUMENT, "the grid needs columns * rows kernels");
        }
        std::vector<const VelornKernel*> pointers;
        for (const Kernel& kernel : kernels) {
            pointers.push_back(kernel.get());
        }
        VelornKernelGrid* grid = nullptr;
        check(velornMakeKernelGrid(pointers.data(), columns, rows, &grid));
        return KernelGrid(grid);
    }

    /// Owns `grid`, which is not null.
    explicit KernelGrid(VelornKernelGrid* grid) : m_grid(grid, &velornFreeKernelGrid) {}

    const VelornKernelGrid* get() const noexcept { return m_grid.get(); }
    int columns() const noexcept { return velornKernelGridColumns(get()); }
    int rows() const noexcept { return velornKernelGridRows(get()); }

    /// The kernel of a cell inside the grid.
    Kernel at(int column, int row) const {
        return Kernel(
            std::shared_ptr<const VelornKernel>(m_grid, velornKernelGridCell(get(), column, row)));
    }

    VelornCellReport report(int column, int row) const {
        VelornCellReport report{};
        report.size = sizeof report;
        check(velornKernelGridReport(get(), column, row, &report));
        return report;
    }

private:
    std::shared_ptr<const VelornKernelGrid> m_grid;
};

/// See velornRestoreLocal. `progress`, if there is one, replaces that of the settings.
inline VelornRestoreReport restoreLocal(const VelornPicture& source, const VelornPicture& target,
                                        const KernelGrid& grid,
                                        VelornRestoreSettings settings = restoreSettings(),
                                        const Progress& progress = {}) {
    VelornRestoreReport report{};
    report.size = sizeof report;
    detail::ProgressCall call(progress, settings);
    call.finish(velornRestoreLocal(&source, &target, grid.get(), &settings, &report));
    return report;
}

struct FoundKernelGrid {
    KernelGrid grid;
    VelornFindReport report;
};

/// See velornFindKernelGrid. `progress`, if there is one, replaces that of the settings.
inline FoundKernelGrid findKernelGrid(const VelornPicture& picture,
                                      VelornFindSettings settings = findSettings(),
                                      const Progress& progress = {}) {
    VelornFindReport report{};
    report.size = sizeof report;
    VelornKernelGrid* grid = nullptr;
    detail::ProgressCall call(progress, settings);
    call.finish(velornFindKernelGrid(&picture, &settings, &grid, &report));
    return {KernelGrid(grid), report};
}

} // namespace velorn::api

#endif
