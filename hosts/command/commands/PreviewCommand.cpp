#include "hosts/command/commands/PreviewCommand.h"

#include "hosts/command/commands/encodedPicture.h"
#include "hosts/command/files/fileFailures.h"
#include "hosts/command/files/InputFile.h"
#include "hosts/command/files/openForReading.h"
#include "hosts/command/files/OutputFile.h"
#include "hosts/command/files/standardStreams.h"
#include "hosts/command/options/FormatOption.h"
#include "hosts/command/pictures/DisplayPixels.h"
#include "hosts/command/pictures/ImageFile.h"
#include "hosts/command/pictures/upright.h"

#include <iterator>

namespace velorn {
namespace {

ProfileBytes readProfile(const std::filesystem::path& path) {
    const InputFile input(path);
    std::ifstream file = openForReading(input.openable());
    const ProfileBytes bytes{std::istreambuf_iterator<char>(file),
                             std::istreambuf_iterator<char>()};
    if (bytes.empty() || !isDisplayProfile(bytes)) {
        throw failureIn(input.shown(), "not an ICC profile of an RGB display");
    }
    return bytes;
}

/// The profile of the picture's colours. Grey pictures are displayed as equal red, green and blue,
/// which a grey profile does not describe: for them, the result is empty, which means sRGB.
ProfileBytes profileOf(const ImageFile& picture, const PreviewOptions& options,
                       std::ostream& terminal) {
    ProfileBytes profile = picture.isGrey() ? ProfileBytes{} : picture.profile();
    if (!profile.empty() && !isSourceProfile(profile)) {
        terminal << "velorn: warning: " << quoted(shownInput(options.input))
                 << ": its colour profile cannot be used; assuming sRGB\n";
        return {};
    }
    return profile;
}

/// The colours of display pixels: red first, without the fourth byte.
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
    outputFormat(options.output, options.format);
    DisplayProfiles profiles;
    if (options.profile) {
        profiles.display = readProfile(*options.profile);
    }
    const ImageFile picture = ImageFile::read(options.input, options.maxPixels);
    profiles.picture = profileOf(picture, options, terminal);
    OutputFile target(options.output);
    interrupt.check();

    const DisplayPixels shown = naming(shownInput(options.input), [&] {
        return displayPixels(picture.rgb(), profiles, options.scale);
    });
    const RgbPixels colours = upright(coloursOf(shown), picture.orientation());
    ImageFile preview(colours.width, colours.height, 3, 8);
    preview.setRgb(colours);
    if (!profiles.display.empty()) {
        preview.setProfile(profiles.display);
    }
    target.write(encodedPicture(preview, options.output, options.format));
    interrupt.check();
    target.commit();
}

} // namespace velorn
