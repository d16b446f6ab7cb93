#pragma once

#include "hosts/command/arguments/ArgumentParser.h"
#include "hosts/command/batch/plannedPictures.h"

#include <optional>
#include <string>

namespace velorn {

/// The options that restore many pictures, and those that keep outputs which exist.
class BatchOptions {
public:
    BatchOptions() = default;
    BatchOptions(const BatchOptions&) = delete;
    BatchOptions& operator=(const BatchOptions&) = delete;

    /// Adds the options to `parser`, which keeps references to this object.
    void addTo(ArgumentParser& parser);

    /// What the command line requests of the pictures `inputs`; nothing without --output-dir.
    /// @throws UsageFailure that names what is wrong.
    std::optional<BatchRequest> request(std::vector<std::filesystem::path> inputs) const;

    /// @throws UsageFailure when the command line contradicts itself.
    Existing existing() const;

private:
    Argument m_folderOption;
    Argument m_nameOption;
    std::filesystem::path m_folder;
    std::string m_name = OutputName::kDefault;
    bool m_skips = false;
    bool m_refuses = false;
};

} // namespace velorn
