#include "hosts/command/metadata/heifBlocks.h"

#include <libheif/heif.h>
#include <memory>

namespace velorn {
namespace {

using Context = std::unique_ptr<heif_context, decltype(&heif_context_free)>;
using Picture = std::unique_ptr<heif_image_handle, decltype(&heif_image_handle_release)>;

bool isOk(const heif_error& error) {
    return error.code == heif_error_Ok;
}

/// The first block of the kind `type`, with the content type `content` unless that is empty.
std::string blockOf(const heif_image_handle* picture, const char* type,
                    const std::string& content) {
    const int count = heif_image_handle_get_number_of_metadata_blocks(picture, type);
    std::vector<heif_item_id> ids(static_cast<std::size_t>(count));
    heif_image_handle_get_list_of_metadata_block_IDs(picture, type, ids.data(), count);
    for (const heif_item_id id : ids) {
        if (!content.empty() &&
            heif_image_handle_get_metadata_content_type(picture, id) != content) {
            continue;
        }
        std::string block(heif_image_handle_get_metadata_size(picture, id), '\0');
        if (isOk(heif_image_handle_get_metadata(picture, id, block.data()))) {
            return block;
        }
    }
    return {};
}

/// EXIF begins after four bytes that state how far it is away, and as many bytes (ISO/IEC
/// 23008-12:2017, annex A).
std::string withoutOffset(const std::string& block) {
    if (block.size() < 4) {
        return {};
    }
    std::size_t offset = 0;
    for (int i = 0; i < 4; ++i) {
        offset = offset << 8 | static_cast<unsigned char>(block[static_cast<std::size_t>(i)]);
    }
    return offset <= block.size() - 4 ? block.substr(4 + offset) : std::string();
}

std::vector<unsigned char> profileOf(const heif_image_handle* picture) {
    std::vector<unsigned char> profile(heif_image_handle_get_raw_color_profile_size(picture));
    if (profile.empty() ||
        !isOk(heif_image_handle_get_raw_color_profile(picture, profile.data()))) {
        return {};
    }
    return profile;
}

} // namespace

HeifBlocks heifBlocks(std::span<const unsigned char> file) {
    const Context context(heif_context_alloc(), heif_context_free);
    heif_image_handle* found = nullptr;
    if (!context ||
        !isOk(heif_context_read_from_memory_without_copy(context.get(), file.data(), file.size(),
                                                         nullptr)) ||
        !isOk(heif_context_get_primary_image_handle(context.get(), &found))) {
        return {};
    }
    const Picture picture(found, heif_image_handle_release);
    return {withoutOffset(blockOf(found, "Exif", {})),
            blockOf(found, "mime", "application/rdf+xml"), profileOf(found)};
}

} // namespace velorn
