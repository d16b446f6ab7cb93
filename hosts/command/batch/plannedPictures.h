#pragma once

#include "hosts/command/batch/OutputName.h"
#include "hosts/command/batch/PictureFiles.h"

#include <optional>
#include <string>
#include <vector>

namespace velorn {

/// What the user requests of many pictures.
struct BatchRequest {
    /// Pictures, and folders of pictures.
    std::vector<std::filesystem::path> inputs;
    std::filesystem::path folder;
    OutputName name{OutputName::kDefault};
    Existing existing = Existing::Replace;
};

/// A picture of a batch, in the order of the inputs.
struct PlannedPicture {
    PictureFiles files;
    /// Why it cannot be restored, where that is known before the work.
    std::optional<std::string> failure;
    /// Whether its result exists and stays.
    bool isSkipped = false;
};

/// The pictures of a batch: those named, and in place of a folder the pictures in it, sorted by
/// name. Hidden files, folders in the folder and files without the extension of a picture format
/// are left out; so are, where existing results stay, pictures of a folder that are results of
/// others. Reads the names of files, but not their content, and writes nothing.
/// @throws UsageFailure that names the files when two pictures have the same output, when an output
///         is an input, which would be lost, and when no format has the extension of the outputs.
std::vector<PlannedPicture> plannedPictures(const BatchRequest& request);

} // namespace velorn
