#include "hosts/command/options/BatchOptions.h"

#include "hosts/command/terminal/Failure.h"

namespace velorn {
namespace {

constexpr const char* kGroup = "Outputs";

} // namespace

void BatchOptions::addTo(ArgumentParser& parser) {
    m_folderOption =
        parser
            .add("--output-dir", m_folder,
                 "Restore many pictures and write the results to this folder, which is created if "
                 "necessary. Pictures that fail are listed at the end; the others are restored.")
            .valueName("DIR")
            .group(kGroup);
    m_nameOption =
        parser
            .add("--name", m_name,
                 "default: " + m_name +
                     "; only with --output-dir"
                     "\nNames of the results. {stem} is the name of the input without extension, "
                     "{ext} its extension with the dot, {number} the place of the input, such as "
                     "0001. {stem}-restored.png writes PNG files.")
            .valueName("TEMPLATE")
            .group(kGroup)
            .needs(m_folderOption);
    parser
        .add("--skip-existing", m_skips,
             "Skip pictures whose output exists: an interrupted command that is repeated goes on "
             "where it was.")
        .group(kGroup);
    parser
        .add("--no-clobber", m_refuses,
             "Fail for pictures whose output exists. By default, it is replaced.")
        .group(kGroup);
}

std::optional<BatchRequest> BatchOptions::request(std::vector<std::filesystem::path> inputs) const {
    if (!m_folderOption.isGiven()) {
        return std::nullopt;
    }
    if (m_folder.empty()) {
        throw UsageFailure("--output-dir needs the name of a folder");
    }
    return BatchRequest{std::move(inputs), m_folder, OutputName(m_name), existing()};
}

Existing BatchOptions::existing() const {
    if (m_skips && m_refuses) {
        throw UsageFailure("--skip-existing and --no-clobber exclude each other");
    }
    return m_skips ? Existing::Skip : m_refuses ? Existing::Refuse : Existing::Replace;
}

} // namespace velorn
