#pragma once

#include "hosts/command/batch/PictureContext.h"
#include "hosts/command/batch/plannedPictures.h"
#include "hosts/command/terminal/Interrupt.h"

#include <functional>
#include <ostream>

namespace velorn {

/// Restores one picture and writes the result.
/// @throws Failure that names the file; Interrupted
using RestorePicture = std::function<void(const PictureFiles&, const PictureContext&)>;

/// What the pictures of a batch may use together, and whether they print the kernels found.
struct BatchSettings {
    int threads = 1;
    std::uint64_t memory = 0;
    bool printsBlur = false;
};

/// Restores the pictures of a plan, several at once: as many as there are threads and as memory
/// permits. Goes on after a failure and prints the outcome at the end.
///
/// A picture gets the threads that the pictures which can run beside it leave: many small ones have
/// one thread each; one that takes all memory, and the last one, have all of them.
///
/// After a signal, pictures in work are given up and the outcome so far is printed. If they do not
/// end at once, because an encoder cannot be interrupted, this removes the temporary files and ends
/// the process.
/// @returns the exit status
/// @throws Interrupted
int runBatch(const std::vector<PlannedPicture>& plan, const BatchSettings& settings,
             const RestorePicture& restore, const Interrupt& interrupt, std::ostream& terminal,
             bool isTerminal);

} // namespace velorn
