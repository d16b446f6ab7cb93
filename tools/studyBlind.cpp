// Measures the blind search for kernels: blurs sharp pictures, finds the kernels, restores the
// pictures with them and with the true ones, and compares. Blurs and pictures form two halves:
// settings are tuned on one, and the other shows what they are worth.
#include "BlurFamilies.h"
#include "hosts/command/arguments/ArgumentParser.h"
#include "hosts/command/terminal/Failure.h"
#include "KernelLikeness.h"
#include "restored.h"
#include "SamplePictures.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <iomanip>
#include <iostream>
#include <optional>

namespace {

using namespace velorn;
using namespace velorn::tools;

constexpr std::uint32_t kSeed = 11;
constexpr int kWidth = 600;
constexpr int kHeight = 500;

/// Settings of the study.
struct Study {
    int every = 1; ///< one of so many cases is measured
    std::vector<double> noises{0.5, 1.0, 2.0, 3.0};
};

/// The results for one blurred picture, in decibels; those of restorations after the best shift by
/// whole pixels.
struct Trial {
    double blurred = 0.0;
    double blind = 0.0;
    double inPlace = 0.0;
    double known = 0.0;
    double likeness = 0.0;
    double seconds = 0.0;
    bool isWarned = false;

    double gain() const { return blind - blurred; }
    double possibleGain() const { return known - blurred; }
    /// Squared error over that of the restoration with the true kernel.
    double errorRatio() const { return std::pow(10.0, (known - blind) / 10.0); }
    bool isWorse() const { return gain() < 0.0; }
};

/// Empty when the picture has too few edges.
std::optional<api::FoundKernel> foundIn(const RgbPixels& pixels) {
    const auto& samples = std::get<std::vector<std::uint8_t>>(pixels.samples);
    VelornFindSettings settings = api::findSettings();
    settings.threads = 1;
    try {
        return api::findKernel(api::pictureOf(samples.data(), pixels.width, pixels.height, 3),
                               settings);
    } catch (const api::Failure&) {
        return std::nullopt;
    }
}

std::optional<Trial> runTrial(const Photograph& photograph, const BlurKernel& truth) {
    const auto start = std::chrono::steady_clock::now();
    const auto found = foundIn(photograph.taken);
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
    if (!found) {
        return std::nullopt;
    }
    const RgbPixels blind = restored(photograph.taken, found->kernel);
    Trial trial;
    trial.blurred = photograph.decibels();
    trial.blind = photograph.decibelsWhenMoved(blind);
    trial.inPlace = photograph.decibelsOf(blind);
    trial.known =
        truth.width == 1
            ? trial.blurred
            : photograph.decibelsWhenMoved(restored(photograph.taken, libraryKernel(truth)));
    trial.likeness = likeness(blurKernelOf(found->kernel), truth);
    trial.seconds = time.count();
    trial.isWarned = found->report.confidence < 0.5f;
    return trial;
}

/// Counts and means over trials.
class Summary {
public:
    /// @param found empty when the search found no kernel
    void count(const std::optional<Trial>& found) {
        if (!found) {
            ++m_failures;
            return;
        }
        const Trial& trial = *found;
        ++m_trials;
        m_gain += trial.gain();
        m_inPlace += trial.inPlace - trial.blurred;
        m_possible += trial.possibleGain();
        m_likeness += trial.likeness;
        m_seconds += trial.seconds;
        m_withinTwo += trial.errorRatio() <= 2.0 ? 1 : 0;
        m_withinThree += trial.errorRatio() <= 3.0 ? 1 : 0;
        m_worse += trial.isWorse() ? 1 : 0;
        m_worseWarned += trial.isWorse() && trial.isWarned ? 1 : 0;
        m_falselyWarned += !trial.isWorse() && trial.isWarned ? 1 : 0;
    }

    static void printHeading() {
        std::cout
            << "| blur | cases | likeness | gain dB | in place | gain known | share | error "
               "ratio at most 2 | at most 3 | worse | of these warned | warned, better | not "
               "found | seconds |\n|---|---|---|---|---|---|---|---|---|---|---|---|---|---|\n";
    }

    void print(const std::string& name) const {
        const double trials = std::max(m_trials, 1);
        const auto percent = [&](int count) { return std::lround(100.0 * count / trials); };
        std::cout << std::fixed << "| " << name << " | " << m_trials << " | "
                  << std::setprecision(2) << m_likeness / trials << " | " << m_gain / trials
                  << " | " << m_inPlace / trials << " | " << m_possible / trials << " | ";
        if (m_possible > 0.0) {
            std::cout << m_gain / m_possible;
        }
        std::cout << " | " << percent(m_withinTwo) << " % | " << percent(m_withinThree) << " % | "
                  << m_worse << " | " << m_worseWarned << " | " << m_falselyWarned << " | "
                  << m_failures << " | " << m_seconds / trials << " |\n";
    }

private:
    int m_trials = 0;
    int m_failures = 0;
    int m_withinTwo = 0;
    int m_withinThree = 0;
    int m_worse = 0;
    int m_worseWarned = 0;
    int m_falselyWarned = 0;
    double m_gain = 0.0;
    double m_inPlace = 0.0;
    double m_possible = 0.0;
    double m_likeness = 0.0;
    double m_seconds = 0.0;
};

/// Summaries in the order in which their names are first met.
class Summaries {
public:
    Summary& of(const std::string& name) {
        const auto found = std::ranges::find(m_named, name, &Named::first);
        return found != m_named.end() ? found->second
                                      : m_named.emplace_back(name, Summary()).second;
    }

    void print() const {
        for (const auto& [name, summary] : m_named) {
            summary.print(name);
        }
    }

private:
    using Named = std::pair<std::string, Summary>;
    std::vector<Named> m_named;
};

void printTrial(const std::string& picture, const std::string& blur, double noise,
                const std::optional<Trial>& trial) {
    std::cout << std::fixed << "| " << picture << " | " << blur << " | " << std::setprecision(1)
              << noise << " | ";
    if (!trial) {
        std::cout << "not found |||||" << std::endl;
        return;
    }
    std::cout << std::setprecision(2) << trial->likeness << " | " << trial->blurred << " | "
              << trial->blind << " | " << trial->known << " | " << (trial->isWarned ? "yes" : "")
              << " |" << std::endl;
}

void runHalf(int half, const std::vector<NamedPicture>& pictures, const Study& study) {
    std::cout
        << "\n| picture | blur | noise | likeness | blurred dB | blind dB | known dB | warned "
           "|\n|---|---|---|---|---|---|---|---|\n";
    Summaries byFamily;
    Summaries byPicture;
    Summary all;
    const std::vector<FamilyBlur> blurs = blurFamilies(half);
    for (std::size_t p = static_cast<std::size_t>(half); p < pictures.size(); p += 2) {
        for (std::size_t b = 0; b < blurs.size(); ++b) {
            if ((b + p / 2) % static_cast<std::size_t>(study.every) != 0) {
                continue;
            }
            const auto& [family, blur] = blurs[b];
            const double noise = study.noises[(b / 3 + p) % study.noises.size()];
            const Photograph photograph =
                photographOf(pictures[p].colours, blur.kernel, noise, kSeed);
            const auto trial = runTrial(photograph, blur.kernel);
            printTrial(pictures[p].name, blur.name, noise, trial);
            byFamily.of(family).count(trial);
            if (family != "none") {
                byPicture.of(pictures[p].name).count(trial);
                all.count(trial);
            }
        }
    }
    std::cout << "\nHalf " << half << "\n\n";
    Summary::printHeading();
    byFamily.print();
    all.print("all blurred");
    byPicture.print();
}

/// The middle of a picture, at most as large as the drawn views.
NamedPicture cropped(const NamedPicture& picture) {
    const int width = std::min(picture.colours.cols, kWidth);
    const int height = std::min(picture.colours.rows, kHeight);
    const cv::Rect middle((picture.colours.cols - width) / 2, (picture.colours.rows - height) / 2,
                          width, height);
    return {picture.name, picture.colours(middle).clone()};
}

} // namespace

int main(int argc, char** argv) {
    ArgumentParser parser("studyBlind",
                          "Measures the blind search for kernels on pictures with known blurs.");
    std::vector<std::string> files;
    Study study;
    int half = -1;
    parser.add("PICTURES", files,
               "Further sharp photographs, NAME=FILE; every second one belongs to half 0");
    parser.add("--every", study.every, "One of so many cases is measured, at least 1")
        .showDefault();
    parser.add("--half", half, "0 to tune on, 1 to measure on, -1 for both").showDefault();
    parser
        .add("--noise", study.noises, "Standard deviations of the noise, in levels of 255, in turn")
        .commaSeparated();
    try {
        if (!parser.parse({argv + 1, argv + argc}, std::cout)) {
            return 0;
        }
        if (study.every < 1) {
            throw UsageFailure("--every must be at least 1");
        }
        std::vector<NamedPicture> pictures = drawnViews(kWidth, kHeight);
        std::ranges::transform(picturesFrom(files), std::back_inserter(pictures), cropped);
        for (const int each : {0, 1}) {
            if (half == -1 || half == each) {
                runHalf(each, pictures, study);
            }
        }
        return 0;
    } catch (const std::exception& failure) {
        std::cerr << "studyBlind: " << failure.what() << '\n';
        return 1;
    }
}
