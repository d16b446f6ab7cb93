#include "hosts/command/batch/plannedPictures.h"

#include "hosts/command/batch/picturesIn.h"
#include "hosts/command/files/fileFailures.h"
#include "hosts/command/pictures/ImageFile.h"

#include <map>
#include <set>
#include <sys/stat.h>
#include <utility>

namespace velorn {
namespace {

namespace fs = std::filesystem;

/// Two names of the same file have equal identities.
using FileIdentity = std::pair<dev_t, ino_t>;

std::optional<FileIdentity> identityOf(const fs::path& path) {
    struct stat state {};
    if (::stat(path.c_str(), &state) != 0) {
        return std::nullopt;
    }
    return FileIdentity{state.st_dev, state.st_ino};
}

/// A picture, and whether it was found in a folder instead of named.
struct Candidate {
    PlannedPicture picture;
    bool isFound = false;
};

Candidate candidate(const fs::path& input, bool isFound) {
    Candidate made{{}, isFound};
    made.picture.files.input = input;
    return made;
}

std::vector<Candidate> candidatesOf(const std::vector<fs::path>& inputs) {
    std::vector<Candidate> all;
    for (const fs::path& input : inputs) {
        std::error_code ignored;
        if (!fs::is_directory(input, ignored)) {
            all.push_back(candidate(input, false));
            continue;
        }
        try {
            for (const fs::path& picture : picturesIn(input)) {
                all.push_back(candidate(picture, true));
            }
        } catch (const Failure& failure) {
            all.push_back(candidate(input, false));
            all.back().picture.failure = failure.what();
        }
    }
    return all;
}

void nameOutputs(std::vector<Candidate>& candidates, const BatchRequest& request) {
    std::size_t number = 0;
    for (Candidate& item : candidates) {
        PictureFiles& files = item.picture.files;
        files.output = request.folder / request.name.of(files.input, ++number);
    }
}

/// Removes the pictures that were found in a folder and are results of others.
void leaveResultsOut(std::vector<Candidate>& candidates) {
    std::set<FileIdentity> results;
    for (const Candidate& item : candidates) {
        const auto output = identityOf(item.picture.files.output);
        if (output && output != identityOf(item.picture.files.input)) {
            results.insert(*output);
        }
    }
    std::erase_if(candidates, [&](const Candidate& item) {
        const auto input = identityOf(item.picture.files.input);
        return item.isFound && input && results.contains(*input);
    });
}

void checkOutputsDiffer(const std::vector<Candidate>& candidates) {
    std::map<fs::path, fs::path> inputs;
    for (const Candidate& item : candidates) {
        const PictureFiles& files = item.picture.files;
        std::error_code error;
        const fs::path output = fs::weakly_canonical(files.output, error);
        const auto [other, isNew] = inputs.try_emplace(error ? files.output : output, files.input);
        if (isNew) {
            continue;
        }
        if (other->second == files.input) {
            throw UsageFailure(quoted(files.input) + " is given twice");
        }
        throw UsageFailure(quoted(other->second) + " and " + quoted(files.input) +
                           " have the same output " + quoted(files.output) +
                           "; --name with {number} distinguishes them");
    }
}

/// A result that replaces an input could not be made again, and not be improved upon.
void checkInputsStay(const std::vector<Candidate>& candidates) {
    std::map<FileIdentity, fs::path> inputs;
    for (const Candidate& item : candidates) {
        if (const auto identity = identityOf(item.picture.files.input)) {
            inputs.try_emplace(*identity, item.picture.files.input);
        }
    }
    for (const Candidate& item : candidates) {
        const PictureFiles& files = item.picture.files;
        const auto identity = identityOf(files.output);
        const auto input = identity ? inputs.find(*identity) : inputs.end();
        if (input != inputs.end()) {
            throw UsageFailure("the result of " + quoted(files.input) +
                               " would replace the input " + quoted(input->second) +
                               "; choose another --output-dir or --name");
        }
    }
}

/// @throws UsageFailure when no picture could be written
void checkExtension(const BatchRequest& request) {
    if (!request.name.keepsExtension()) {
        try {
            ImageFile::checkWritable(request.name.of("in.png", 1));
        } catch (const Failure& failure) {
            throw UsageFailure(std::string("--name: ") + failure.what());
        }
    }
}

/// Decides what is known before the work.
void decide(PlannedPicture& picture, Existing existing) {
    std::error_code ignored;
    if (picture.failure) {
        return;
    }
    if (existing != Existing::Replace && fs::exists(picture.files.output, ignored)) {
        if (existing == Existing::Skip) {
            picture.isSkipped = true;
        } else {
            picture.failure = outputExists(picture.files.output).what();
        }
        return;
    }
    try {
        ImageFile::checkWritable(picture.files.output);
    } catch (const Failure& failure) {
        picture.failure = failure.what();
    }
}

} // namespace

std::vector<PlannedPicture> plannedPictures(const BatchRequest& request) {
    checkExtension(request);
    std::vector<Candidate> candidates = candidatesOf(request.inputs);
    nameOutputs(candidates, request);
    if (request.existing == Existing::Skip) {
        leaveResultsOut(candidates);
    }
    // A folder that cannot be read has no output.
    std::vector<Candidate> readable = candidates;
    std::erase_if(readable, [](const Candidate& item) { return item.picture.failure.has_value(); });
    checkOutputsDiffer(readable);
    checkInputsStay(readable);

    std::vector<PlannedPicture> planned;
    for (Candidate& item : candidates) {
        decide(item.picture, request.existing);
        planned.push_back(std::move(item.picture));
    }
    return planned;
}

} // namespace velorn
