#include "BlindCases.h"

#include "hosts/command/terminal/Failure.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace velorn::tools {
namespace {

constexpr std::uint32_t kSeed = 11;
constexpr int kWidth = 600;
constexpr int kHeight = 500;

/// The middle of a picture, at most as large as the drawn views.
NamedPicture cropped(const NamedPicture& picture) {
    const int width = std::min(picture.colours.cols, kWidth);
    const int height = std::min(picture.colours.rows, kHeight);
    const cv::Rect middle((picture.colours.cols - width) / 2, (picture.colours.rows - height) / 2,
                          width, height);
    return {picture.name, picture.colours(middle).clone()};
}

/// The drawn views of a half and the photographs in `files`.
std::vector<NamedPicture> picturesOf(int half, const std::vector<std::string>& files) {
    std::vector<NamedPicture> views = drawnViews(kWidth, kHeight);
    std::vector<NamedPicture> pictures;
    for (std::size_t i = static_cast<std::size_t>(half); i < views.size(); i += 2) {
        pictures.push_back(views[i]);
    }
    std::ranges::transform(picturesFrom(files), std::back_inserter(pictures), cropped);
    return pictures;
}

} // namespace

void CaseRules::addTo(ArgumentParser& parser) {
    parser.add("PICTURES", files, "Sharp photographs of this half, NAME=FILE");
    parser.add("--half", half, "Blurs and drawn pictures to tune on: 0, to measure on: 1")
        .showDefault();
    parser.add("--every", every, "One of so many blurred cases is measured, at least 1")
        .showDefault();
    parser.add("--noise", noises, "Standard deviations of the noise, in levels of 255, in turn")
        .commaSeparated();
}

void CaseRules::check() const {
    if (every < 1) {
        throw UsageFailure("--every must be at least 1");
    }
    if (half != 0 && half != 1) {
        throw UsageFailure("--half must be 0 or 1");
    }
}

void forEachCase(const CaseRules& rules, const std::function<void(const BlindCase&)>& work) {
    const std::vector<NamedPicture> pictures = picturesOf(rules.half, rules.files);
    const std::vector<FamilyBlur> blurs = blurFamilies(rules.half);
    for (std::size_t p = 0; p < pictures.size(); ++p) {
        for (std::size_t b = 0; b < blurs.size(); ++b) {
            BlindCase blindCase{pictures[p].name, blurs[b], 0.0, {}};
            if (blindCase.isBlurred() && (b + p) % static_cast<std::size_t>(rules.every) != 0) {
                continue;
            }
            blindCase.noise = rules.noises[(b / 3 + p) % rules.noises.size()];
            blindCase.photograph =
                photographOf(pictures[p].colours, blurs[b].blur.kernel, blindCase.noise, kSeed);
            work(blindCase);
        }
    }
}

} // namespace velorn::tools
