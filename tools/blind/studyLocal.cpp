// Measures the restoration of blur that differs across the picture: blurs sharp pictures by turning
// cameras and by subjects apart from their surroundings, and restores them with one kernel and with
// kernels on a grid, both found blindly, and with the true ones.
#include "Degradation.h"
#include "hosts/command/arguments/ArgumentParser.h"
#include "hosts/command/terminal/Failure.h"
#include "KernelLikeness.h"
#include "LocalBlurs.h"
#include "Pictures.h"
#include "restored.h"
#include "SamplePictures.h"

#include <algorithm>
#include <chrono>
#include <iomanip>
#include <iostream>
#include <optional>
#include <utility>

namespace {

using namespace velorn;
using namespace velorn::tools;

constexpr std::uint32_t kSeed = 17;
/// Columns and rows of the grid of true kernels.
constexpr int kTrueCells = 16;

/// Settings of the study.
struct Study {
    int half = 0;
    int every = 1; ///< one of so many cases is measured
    double noise = 1.0;
    std::filesystem::path folder; ///< where pictures are written; empty: they are not
};

/// Decibels; those of restorations after the best shift by whole pixels.
struct Trial {
    double blurred = 0.0;
    double one = 0.0;       ///< one kernel, found
    double local = 0.0;     ///< kernels on a grid, found
    double trueOne = 0.0;   ///< the true kernel of the middle
    double trueLocal = 0.0; ///< the true kernels
    double oneLikeness = 0.0;
    double localLikeness = 0.0;
    int columns = 0;
    int rows = 0;
    double seconds = 0.0; ///< of the search for the grid
};

VelornPicture viewOf(RgbPixels& pixels) {
    auto& samples = std::get<std::vector<std::uint8_t>>(pixels.samples);
    return api::pictureOf(samples.data(), pixels.width, pixels.height, 3);
}

RgbPixels restoredLocally(RgbPixels pixels, const api::KernelGrid& grid) {
    api::restoreLocal(viewOf(pixels), viewOf(pixels), grid);
    return pixels;
}

/// A part of a blurred picture whose kernels are known.
class Scene {
public:
    Scene(const cv::Mat& picture, const LocalBlur& blur, double noise)
        : m_blur(blur), m_size(picture.size()),
          m_inside(blur.reach, blur.reach, picture.cols - 2 * blur.reach,
                   picture.rows - 2 * blur.reach) {
        const cv::Mat noisy = withNoise(blur.blurred(picture), noise, kSeed);
        m_photograph = {picture(m_inside).clone(), eightBits(noisy(m_inside))};
    }

    const Photograph& photograph() const { return m_photograph; }

    /// The kernel at a place of the photograph, in shares of its sides.
    BlurKernel kernelAt(double x, double y) const {
        return m_blur.kernelAt((m_inside.x + x * m_inside.width) / m_size.width,
                               (m_inside.y + y * m_inside.height) / m_size.height);
    }

    BlurKernel kernelOfCell(int column, int row, int columns, int rows) const {
        return kernelAt((column + 0.5) / columns, (row + 0.5) / rows);
    }

    api::KernelGrid trueGrid() const {
        std::vector<api::Kernel> kernels;
        for (int row = 0; row < kTrueCells; ++row) {
            for (int column = 0; column < kTrueCells; ++column) {
                kernels.push_back(libraryKernel(kernelOfCell(column, row, kTrueCells, kTrueCells)));
            }
        }
        return api::KernelGrid::of(kernels, kTrueCells, kTrueCells);
    }

private:
    LocalBlur m_blur;
    cv::Size m_size;
    cv::Rect m_inside;
    Photograph m_photograph;
};

template <class Kernels>
double meanLikeness(const Scene& scene, int columns, int rows, const Kernels& kernels) {
    double sum = 0.0;
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < columns; ++column) {
            sum += likeness(blurKernelOf(kernels(column, row)),
                            scene.kernelOfCell(column, row, columns, rows));
        }
    }
    return sum / (columns * rows);
}

class Runner {
public:
    explicit Runner(const Study& study) : m_study(study) {}

    std::optional<Trial> run(const NamedPicture& picture, const LocalBlur& blur) const {
        const Scene scene(picture.colours, blur, m_study.noise);
        RgbPixels taken = scene.photograph().taken;
        VelornFindSettings settings = api::findSettings();
        settings.threads = 1;
        std::optional<api::FoundKernel> one;
        std::optional<api::FoundKernelGrid> grid;
        Trial trial;
        try {
            one = api::findKernel(viewOf(taken), settings);
            const auto start = std::chrono::steady_clock::now();
            grid = api::findKernelGrid(viewOf(taken), settings);
            const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
            trial.seconds = time.count();
        } catch (const api::Failure&) {
            return std::nullopt;
        }
        trial.columns = grid->grid.columns();
        trial.rows = grid->grid.rows();
        const int columns = std::max(trial.columns, 4);
        const int rows = std::max(trial.rows, 4);
        trial.oneLikeness =
            meanLikeness(scene, columns, rows, [&](int, int) { return one->kernel; });
        trial.localLikeness = meanLikeness(scene, trial.columns, trial.rows,
                                           [&](int c, int r) { return grid->grid.at(c, r); });
        const Photograph& photograph = scene.photograph();
        const auto measure = [&](const char* name, const RgbPixels& pixels) {
            write(picture, blur, name, pixels);
            return photograph.decibelsWhenMoved(pixels);
        };
        trial.blurred = measure("blurred", taken);
        trial.one = measure("one", restored(taken, one->kernel));
        trial.local = measure("local", restoredLocally(taken, grid->grid));
        const BlurKernel middle = scene.kernelAt(0.5, 0.5);
        trial.trueOne = middle.width == 1
                            ? trial.blurred
                            : measure("true-one", restored(taken, libraryKernel(middle)));
        trial.trueLocal = measure("true-local", restoredLocally(taken, scene.trueGrid()));
        return trial;
    }

private:
    void write(const NamedPicture& picture, const LocalBlur& blur, const std::string& kind,
               const RgbPixels& pixels) const {
        if (!m_study.folder.empty()) {
            std::string name = picture.name + " " + blur.name + " " + kind + ".png";
            std::ranges::replace(name, ' ', '_');
            writeColours(m_study.folder / name, coloursOf(pixels));
        }
    }

    Study m_study;
};

/// Means over trials.
class Summary {
public:
    explicit Summary(std::string name) : m_name(std::move(name)) {}

    void count(const Trial& trial) {
        ++m_trials;
        m_one += trial.one - trial.blurred;
        m_local += trial.local - trial.blurred;
        m_trueOne += trial.trueOne - trial.blurred;
        m_trueLocal += trial.trueLocal - trial.blurred;
        m_worseThanOne += trial.local < trial.one - 0.1 ? 1 : 0;
        m_worseThanPicture += trial.local < trial.blurred ? 1 : 0;
        m_seconds += trial.seconds;
    }

    static void printHeading() {
        std::cout << "\n| blur | cases | one kernel found | grid found | true kernel of the middle "
                     "| true kernels | grid worse than one kernel | worse than the picture | "
                     "seconds |\n|---|---|---|---|---|---|---|---|---|\n";
    }

    void print() const {
        if (m_trials > 0) {
            std::cout << "| " << m_name << " | " << m_trials << " | " << m_one / m_trials << " | "
                      << m_local / m_trials << " | " << m_trueOne / m_trials << " | "
                      << m_trueLocal / m_trials << " | " << m_worseThanOne << " | "
                      << m_worseThanPicture << " | " << m_seconds / m_trials << " |\n";
        }
    }

private:
    std::string m_name;
    int m_trials = 0;
    int m_worseThanOne = 0;
    int m_worseThanPicture = 0;
    double m_one = 0.0;
    double m_local = 0.0;
    double m_trueOne = 0.0;
    double m_trueLocal = 0.0;
    double m_seconds = 0.0;
};

void printTrial(const std::string& picture, const std::string& blur,
                const std::optional<Trial>& trial) {
    std::cout << "| " << picture << " | " << blur << " | ";
    if (!trial) {
        std::cout << "not found ||||||||" << std::endl;
        return;
    }
    std::cout << trial->columns << " x " << trial->rows << " | " << trial->oneLikeness << " | "
              << trial->localLikeness << " | " << trial->blurred << " | " << trial->one << " | "
              << trial->local << " | " << trial->trueOne << " | " << trial->trueLocal << " |"
              << std::endl;
}

void runStudy(const std::vector<NamedPicture>& pictures, const Study& study) {
    std::cout
        << std::fixed << std::setprecision(2)
        << "| picture | blur | grid | likeness of one kernel | of the grid | blurred dB | one "
           "dB | grid dB | true one dB | true local dB |\n"
           "|---|---|---|---|---|---|---|---|---|---|\n";
    const Runner runner(study);
    Summary rotations("rotation");
    Summary subjects("subject");
    int number = 0;
    for (const NamedPicture& picture : pictures) {
        for (const LocalBlur& blur : localBlurs(study.half, picture.colours.size())) {
            if (number++ % study.every != 0) {
                continue;
            }
            const std::optional<Trial> trial = runner.run(picture, blur);
            printTrial(picture.name, blur.name, trial);
            if (trial) {
                (blur.family == "rotation" ? rotations : subjects).count(*trial);
            }
        }
    }
    Summary::printHeading();
    rotations.print();
    subjects.print();
}

} // namespace

int main(int argc, char** argv) {
    ArgumentParser parser("studyLocal",
                          "Measures the restoration of blur that differs across the picture.");
    std::vector<std::string> files;
    Study study;
    parser.add("PICTURES", files, "Sharp photographs, NAME=FILE").required();
    parser.add("--half", study.half, "Blurs: 0 to tune on, 1 to measure on").showDefault();
    parser.add("--every", study.every, "One of so many cases is measured, at least 1")
        .showDefault();
    parser.add("--noise", study.noise, "Standard deviation of the noise, in levels of 255")
        .showDefault();
    parser.add("--folder", study.folder, "Write the pictures into this folder");
    try {
        if (!parser.parse({argv + 1, argv + argc}, std::cout)) {
            return 0;
        }
        if (study.every < 1 || study.half < 0 || study.half > 1) {
            throw UsageFailure("--every must be at least 1, --half 0 or 1");
        }
        runStudy(picturesFrom(files), study);
        return 0;
    } catch (const std::exception& failure) {
        std::cerr << "studyLocal: " << failure.what() << '\n';
        return 1;
    }
}
