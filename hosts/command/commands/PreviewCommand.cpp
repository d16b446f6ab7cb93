#include "hosts/command/commands/PreviewCommand.h"

#include "hosts/command/pictures/DisplayPixels.h"
#include "hosts/command/pictures/ImageFile.h"
#include "hosts/command/pictures/upright.h"
#include "hosts/command/terminal/Failure.h"
#include "hosts/command/terminal/TemporaryFile.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>

namespace velorn {
namespace {

ProfileBytes readProfile(const std::filesystem::path& path) {
    checkReadable(path);
    errno = 0;
    std::ifstream file(path, std::ios::binary);
    ProfileBytes bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (!file.is_open() || file.bad()) {
        throw Failure("cannot read " + quoted(path) + ": " + std::strerror(errno));
    }
    if (bytes.empty() || !isDisplayProfile(bytes)) {
        throw Failure(quoted(path) + " is not the profile of an RGB display");
    }
    return bytes;
}

/// The profile that the picture's colours are told by. Grey pictures are shown as equal red, green
/// and blue, which no grey profile describes: they count as sRGB.
ProfileBytes profileOf(const ImageFile& picture, const PreviewOptions& options,
                       std::ostream& terminal) {
    ProfileBytes profile = picture.isGrey() ? ProfileBytes{} : picture.profile();
    if (!profile.empty() && !isSourceProfile(profile)) {
        terminal << "velorn: warning: " << quoted(options.input)
                 << ": its colour profile cannot be used; taken as sRGB\n";
        return {};
    }
    return profile;
}

DisplayPixels shown(const ImageFile& picture, const DisplayProfiles& profiles,
                    const PreviewOptions& options) {
    try {
        return displayPixels(picture.rgb(), profiles, options.scale);
    } catch (const Failure& failure) {
        throw Failure(quoted(options.input) + ": " + failure.what());
    }
}

RgbPixels coloursOf(const DisplayPixels& pixels) {
    std::vector<std::uint8_t> samples;
    samples.reserve(pixels.bytes.size() / 4 * 3);
    for (std::size_t i = 0; i < pixels.bytes.size(); i += 4) {
        samples.insert(samples.end(), {pixels.bytes[i + 2], pixels.bytes[i + 1], pixels.bytes[i]});
    }
    return {pixels.width, pixels.height, std::move(samples)};
}

} // namespace

void runPreview(const PreviewOptions& options, const Interrupt& interrupt, std::ostream& terminal) {
    ImageFile::checkWritable(options.output);
    DisplayProfiles profiles;
    if (options.profile) {
        profiles.display = readProfile(*options.profile);
    }
    const ImageFile picture = ImageFile::read(options.input);
    profiles.picture = profileOf(picture, options, terminal);
    TemporaryFile target(options.output);
    interrupt.check();

    const RgbPixels colours =
        upright(coloursOf(shown(picture, profiles, options)), picture.orientation());
    ImageFile preview(colours.width, colours.height, 3, 8);
    preview.setRgb(colours);
    if (!profiles.display.empty()) {
        preview.setProfile(profiles.display);
    }
    target.write(preview.encode(options.output));
    interrupt.check();
    target.commit();
}

} // namespace velorn
