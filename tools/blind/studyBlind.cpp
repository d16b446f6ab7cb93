// Measures the blind search for kernels: blurs sharp pictures, finds the kernels, restores the
// pictures with them and with the true ones, and compares. Blurs and drawn pictures form two
// halves: settings are tuned on half 0, and half 1 shows what they are worth.
#include "BlindTrial.h"
#include "BlurFamilies.h"
#include "hosts/command/arguments/ArgumentParser.h"
#include "hosts/command/terminal/Failure.h"
#include "ReliabilityTable.h"
#include "SamplePictures.h"
#include "TrialSummary.h"

#include <algorithm>
#include <iomanip>
#include <iostream>

namespace {

using namespace velorn;
using namespace velorn::tools;

constexpr std::uint32_t kSeed = 11;
constexpr int kWidth = 600;
constexpr int kHeight = 500;
constexpr const char* kUnblurred = "none";

/// Settings of the study.
struct Study {
    int half = 0;
    int every = 1; ///< one of so many blurred cases is measured
    std::vector<double> noises{0.5, 1.0, 2.0, 3.0};
};

/// Summaries in the order in which their names are first met.
class Summaries {
public:
    TrialSummary& of(const std::string& name) {
        const auto found = std::ranges::find(m_named, name, &Named::first);
        return found != m_named.end() ? found->second
                                      : m_named.emplace_back(name, TrialSummary()).second;
    }

    void print() const {
        for (const auto& [name, summary] : m_named) {
            summary.print(name);
        }
    }

private:
    using Named = std::pair<std::string, TrialSummary>;
    std::vector<Named> m_named;
};

void printTrial(const std::string& picture, const std::string& blur, double noise,
                const std::optional<BlindTrial>& trial) {
    std::cout << std::fixed << "| " << picture << " | " << blur << " | " << std::setprecision(1)
              << noise << " | ";
    if (!trial) {
        std::cout << "not found |||||" << std::endl;
        return;
    }
    std::cout << std::setprecision(2) << trial->likeness << " | " << trial->blurred << " | "
              << trial->blind << " | " << trial->known << " | " << trial->confidence << " |"
              << std::endl;
}

void run(const std::vector<NamedPicture>& pictures, const Study& study) {
    std::cout
        << "\n| picture | blur | noise | likeness | blurred dB | blind dB | known dB | confidence "
           "|\n|---|---|---|---|---|---|---|---|\n";
    Summaries byFamily;
    Summaries byPicture;
    TrialSummary all;
    ReliabilityTable reliability;
    const std::vector<FamilyBlur> blurs = blurFamilies(study.half);
    for (std::size_t p = 0; p < pictures.size(); ++p) {
        for (std::size_t b = 0; b < blurs.size(); ++b) {
            const auto& [family, blur] = blurs[b];
            const bool isBlurred = family != kUnblurred;
            if (isBlurred && (b + p) % static_cast<std::size_t>(study.every) != 0) {
                continue;
            }
            const double noise = study.noises[(b / 3 + p) % study.noises.size()];
            const Photograph photograph =
                photographOf(pictures[p].colours, blur.kernel, noise, kSeed);
            const auto trial = blindTrial(photograph, blur.kernel);
            printTrial(pictures[p].name, blur.name, noise, trial);
            byFamily.of(family).count(trial);
            if (isBlurred) {
                byPicture.of(pictures[p].name).count(trial);
                all.count(trial);
                if (trial) {
                    reliability.count(*trial);
                }
            }
        }
    }
    std::cout << "\nHalf " << study.half << "\n\n";
    TrialSummary::printHeading("blur");
    byFamily.print();
    all.print("all blurred");
    std::cout << '\n';
    TrialSummary::printHeading("picture");
    byPicture.print();
    std::cout << '\n';
    reliability.print();
}

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

void check(const Study& study) {
    if (study.every < 1) {
        throw UsageFailure("--every must be at least 1");
    }
    if (study.half != 0 && study.half != 1) {
        throw UsageFailure("--half must be 0 or 1");
    }
}

} // namespace

int main(int argc, char** argv) {
    ArgumentParser parser("studyBlind",
                          "Measures the blind search for kernels on pictures with known blurs.");
    std::vector<std::string> files;
    Study study;
    parser.add("PICTURES", files, "Sharp photographs of this half, NAME=FILE");
    parser.add("--half", study.half, "Blurs and drawn pictures to tune on: 0, to measure on: 1")
        .showDefault();
    parser.add("--every", study.every, "One of so many blurred cases is measured, at least 1")
        .showDefault();
    parser
        .add("--noise", study.noises, "Standard deviations of the noise, in levels of 255, in turn")
        .commaSeparated();
    try {
        if (!parser.parse({argv + 1, argv + argc}, std::cout)) {
            return 0;
        }
        check(study);
        run(picturesOf(study.half, files), study);
        return 0;
    } catch (const std::exception& failure) {
        std::cerr << "studyBlind: " << failure.what() << '\n';
        return 1;
    }
}
