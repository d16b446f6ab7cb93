#pragma once

#include "velimproclib/primitives/base/Team.h"
#include "velorncore10.h"

#include <cstddef>
#include <cstdint>
#include <lcms2.h>
#include <memory>
#include <omp.h>
#include <vector>

/// A transform between two ICC profiles, and the walk that applies it to the rows of an image.
namespace vel {

struct DeleteTransform {
    void operator()(void* transform) const noexcept { cmsDeleteTransform(transform); }
};
using ColourTransform = std::unique_ptr<void, DeleteTransform>;

struct CreatedTransform {
    std::int32_t status;
    ColourTransform transform; ///< null if there is nothing to convert
};

/// Opens the profiles and creates the relative colorimetric transform of packed pixels of `format`
/// on both sides. It has no cache of the last pixel, therefore all threads may share it.
/// @return status 1 with the transform, or without if both pointers are null or both sizes are
///         below 1; 0 if a profile cannot be read; `refused` if the transform cannot be created
CreatedTransform createTransform(const PSProfilesRecord& profiles, cmsUInt32Number format,
                                 std::int32_t refused);

/// Threads that share the rows of an image: as many as the host's settings give, at most 32.
int transformTeamSize() noexcept;

/// The buffers of a thread: one row of red, green, blue elements before and after the transform.
template <class Element>
struct RowBuffers {
    std::vector<Element> in;
    std::vector<Element> out;

    explicit RowBuffers(std::int32_t width)
        : in(3 * static_cast<std::size_t>(width)), out(3 * static_cast<std::size_t>(width)) {}
};

/// Loads, transforms and stores every row, on a team of threads with buffers of their own. All
/// memory is allocated before the team starts.
/// @param load fills a row buffer from row y; `store` writes one back to row y
/// @throws std::bad_alloc
template <class Element, class Load, class Store>
void transformRows(const ColourTransform& transform, std::int32_t width, std::int32_t height,
                   Load&& load, Store&& store) {
    if (width < 1 || height < 1) {
        return;
    }
    const int threads = transformTeamSize();
    std::vector<RowBuffers<Element>> buffers(static_cast<std::size_t>(threads),
                                             RowBuffers<Element>(width));
    forEachRow(height, threads, [&](std::int32_t y) {
        auto& [in, out] = buffers[static_cast<std::size_t>(omp_get_thread_num())];
        load(y, in);
        cmsDoTransform(transform.get(), in.data(), out.data(), static_cast<cmsUInt32Number>(width));
        store(y, out);
    });
}

} // namespace vel
