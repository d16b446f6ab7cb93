#pragma once

#include "hosts/command/options/BlindSettings.h"
#include "hosts/command/pictures/ImageFile.h"
#include "hosts/command/terminal/Interrupt.h"
#include "velorn.hpp"

#include <filesystem>
#include <ostream>
#include <vector>

namespace velorn {

/// Finds the kernels that a picture may have, best first, turned as the settings say. The settings
/// refer to the picture as displayed, the kernels to its rows and columns as stored. `path` is the
/// name of the picture in messages.
/// @throws Failure that names `path`, or the file of the kernel to refine; Interrupted.
std::vector<api::FoundKernel> findKernels(const ImageFile& picture,
                                          const std::filesystem::path& path,
                                          const BlindSettings& settings, const Interrupt& interrupt,
                                          const api::Progress& progress);

/// Finds the kernels of the parts of a picture; otherwise as `findKernels`. The cells of the
/// grid refer to the rows and columns as stored.
api::FoundKernelGrid findLocalKernels(const ImageFile& picture, const std::filesystem::path& path,
                                      const BlindSettings& settings, const Interrupt& interrupt,
                                      const api::Progress& progress);

/// The one of `found` that the settings choose. Warns on `terminal` when a restoration with it may
/// be worse than the picture, and when no kernel fits all of the picture.
/// @throws Failure that names `path` when there is no such candidate, or when the settings are
///         strict and the kernel is uncertain
api::FoundKernel chosenKernel(const std::vector<api::FoundKernel>& found,
                              const std::filesystem::path& path, const BlindSettings& settings,
                              std::ostream& terminal);

/// Whether `grid` has more than one kernel.
bool isLocal(const api::KernelGrid& grid);

/// Warns on `terminal` about kernels of parts as `chosenKernel` does about one kernel.
/// @throws Failure that names `path` when the settings are strict and the kernel of the whole
///         picture is uncertain
void checkLocalKernels(const api::FoundKernelGrid& found, const std::filesystem::path& path,
                       const BlindSettings& settings, std::ostream& terminal);

} // namespace velorn
