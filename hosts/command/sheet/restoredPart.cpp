#include "hosts/command/sheet/restoredPart.h"

#include "hosts/command/library/callLibrary.h"
#include "hosts/command/pictures/upright.h"
#include "hosts/command/sheet/shownPart.h"

#include <cstdint>
#include <vector>

namespace velorn {

RestoredPart restoredPart(const ImageFile& picture, const std::filesystem::path& path,
                          const PictureArea& area, const api::Kernel& kernel,
                          VelornRestoreSettings settings, const Interrupt& interrupt,
                          const api::Progress& progress) {
    const int channels = picture.channels();
    std::vector<std::uint8_t> samples(static_cast<std::size_t>(area.width) *
                                      static_cast<std::size_t>(area.height) *
                                      static_cast<std::size_t>(channels));
    const VelornPicture target =
        api::pictureOf(samples.data(), area.width, area.height, channels, channels % 2 == 0);
    const std::vector<unsigned char> profile = picture.profile();
    settings.profile = profile.empty() ? nullptr : profile.data();
    settings.profileSize = profile.size();
    settings.region = {area.x, area.y, area.width, area.height};
    const VelornRestoreReport report = callLibrary(path, interrupt, [&] {
        return api::restore(picture.view(), target, {kernel}, settings, progress);
    });
    return {upright(coloursOf(samples, area.width, area.height, channels), picture.orientation()),
            report};
}

} // namespace velorn
