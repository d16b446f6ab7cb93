#include "hosts/command/commands/Options.h"

#include "hosts/command/commands/SettingOptions.h"
#include "hosts/command/terminal/Failure.h"
#include "hosts/command/terminal/Numbers.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <CLI/CLI.hpp>
#include <sstream>

namespace velorn {
namespace {

constexpr const char* kExitCodes = "Exit status: 0 done, 1 failed, 2 wrong command line, 130 "
                                   "interrupted by Ctrl-C.";

/// Options with their descriptions below them, indented: the descriptions have several lines.
class HelpFormatter : public CLI::Formatter {
public:
    std::string make_option(const CLI::Option* option, bool isPositional) const override {
        std::string text =
            "  " + make_option_name(option, isPositional) + make_option_opts(option) + "\n";
        std::istringstream lines(make_option_desc(option));
        for (std::string line; std::getline(lines, line);) {
            text += "        " + line + "\n";
        }
        return text;
    }
    std::string make_option_opts(const CLI::Option* option) const override {
        const bool isNamed = option->nonpositional();
        return isNamed && !option->get_type_name().empty() ? " " + option->get_type_name() : "";
    }
};

AnalyticBlur blurOf(AnalyticBlur::Shape shape, const std::vector<float>& numbers,
                    const std::string& option) {
    const AnalyticBlur blur{shape, numbers[0], numbers.size() > 1 ? numbers[1] : 0.0f};
    const float least = shape == AnalyticBlur::Shape::Motion ? 1.0f : 0.1f;
    if (!(blur.extent >= least && blur.extent <= 500.0f)) {
        throw UsageFailure(option + " must be from " + numberText(least) + " to 500 pixels");
    }
    if (!(blur.angle >= -360.0f && blur.angle <= 360.0f)) {
        throw UsageFailure(option + ": the angle must be from -360 to 360 degrees");
    }
    return blur;
}

/// The sides of a kernel to look for: N, or N and M with an x between.
KernelSize kernelSizeOf(const std::string& text, const std::string& option) {
    const auto sideAt = [&](std::size_t begin, std::size_t end) {
        int side = 0;
        const auto parsed = std::from_chars(text.data() + begin, text.data() + end, side);
        const bool isNumber = parsed.ec == std::errc{} && parsed.ptr == text.data() + end;
        if (!isNumber || side < 3 || side > kLargestEstimatedSide || side % 2 == 0) {
            throw UsageFailure(option + " must be odd numbers from 3 to " +
                               std::to_string(kLargestEstimatedSide) + ", like 15 or 15x9");
        }
        return side;
    };
    const std::size_t cross = std::min(text.find('x'), text.size());
    const int width = sideAt(0, cross);
    return {width, cross == text.size() ? width : sideAt(cross + 1, text.size())};
}

/// The options that say how a kernel is looked for.
class BlindOptions {
public:
    explicit BlindOptions(CLI::App& command) : m_command(command) {}

    CLI::Option* addSize(const std::string& name, const std::string& text) {
        m_sizeName = name;
        return m_command.add_option(name, m_sizeText, text)->type_name("N[xM]");
    }
    /// `words` with the standard size after every --blind that no size follows.
    static std::vector<std::string> completed(std::vector<std::string> words) {
        for (std::size_t i = 0; i < words.size() && words[i] != "--"; ++i) {
            const bool isFollowed = i + 1 < words.size() && isSizeLike(words[i + 1]);
            if (words[i] == "--blind" && !isFollowed) {
                words[i] += "=" + standardSize();
            }
        }
        return words;
    }
    static std::string standardSize() { return std::to_string(BlindSettings().size.width); }

    CLI::Option* addTurn() {
        return m_command
            .add_option("--turn", m_turnText,
                        "yes, no or auto, default: auto\n"
                        "A picture does not tell which way round an uneven blur was. auto tries\n"
                        "both on a piece of the picture and keeps the better; yes turns the\n"
                        "kernel found by 180 degrees, no leaves it as it is.")
            ->type_name("WAY");
    }
    CLI::Option* addStrength() {
        return m_command
            .add_option("--strength", m_settings.strength,
                        "0..2, default: " + numberText(m_settings.strength) +
                            "\nHow far edges are softened before the kernel is fitted to them: "
                            "higher values give\ncalmer, narrower kernels. Below 0.2 it is off.")
            ->type_name("NUMBER");
    }

    BlindSettings result() const {
        BlindSettings settings = m_settings;
        settings.size = kernelSizeOf(m_sizeText, m_sizeName);
        if (!(settings.strength >= 0.0f && settings.strength <= 2.0f)) {
            throw UsageFailure("--strength must be from 0 to 2");
        }
        if (m_turnText == "yes") {
            settings.turn = Turn::Yes;
        } else if (m_turnText == "no") {
            settings.turn = Turn::No;
        } else if (m_turnText != "auto") {
            throw UsageFailure("--turn must be yes, no or auto");
        }
        return settings;
    }

private:
    /// Whether a word is meant for a size, right or wrong, and not for a file.
    static bool isSizeLike(const std::string& word) {
        return !word.empty() && word.front() >= '0' && word.front() <= '9' &&
               word.find_first_not_of("0123456789x.,") == std::string::npos;
    }

    CLI::App& m_command;
    BlindSettings m_settings;
    std::string m_sizeName;
    std::string m_sizeText = standardSize();
    std::string m_turnText = "auto";
};

/// The `deblur` command on the command line, and what was given for it.
class DeblurParser {
public:
    explicit DeblurParser(CLI::App& app)
        : m_command(*app.add_subcommand("deblur", "Restore the sharpness of a picture.")),
          m_blindOptions(m_command) {
        m_command
            .add_option("IN", m_options.input,
                        "Picture to restore: 8 or 16 bits, grey or RGB. Floating-point\n"
                        "pictures with samples in 0..1 are worked on at 16 bits.")
            ->required();
        m_command
            .add_option("OUT", m_options.output,
                        "Where to write it; may be IN itself. The extension names the format.\n"
                        "Alpha is carried over untouched where the format has it, colour\n"
                        "profile, EXIF and other metadata likewise.")
            ->required();
        addKernelOptions();
        m_settings.addTo(m_command);
        addFramePasses();
        m_command.add_flag(
            "-v,--verbose", m_options.isVerbose,
            "Tell the noise found and the strength chosen, and show the kernel of --blind.");
        m_command.footer(kExitCodes);
    }

    bool isChosen() const { return m_command.parsed(); }

    DeblurOptions result() {
        m_options.kernel = kernelSource();
        m_options.settings = m_settings.result();
        m_options.settings.deconvolve = !m_isSharpenOnly;
        m_options.lambdaIsGiven = m_settings.lambdaIsGiven();
        if (m_options.framePasses < 0 || m_options.framePasses > 8) {
            throw UsageFailure("--frame-passes must be from 0 to 8");
        }
        return m_options;
    }

private:
    void addKernelOptions() {
        const auto addBlur = [this](const char* name, const char* type, const char* text) {
            auto* option = m_command.add_option(name, m_numbers, text)->type_name(type);
            option->group("How the picture is blurred (one of these)")->delimiter(',');
            return option;
        };
        m_gaussian = addBlur("--gaussian", "SIGMA",
                             "Soft blur of this standard deviation in pixels, 0.1..500.");
        m_gaussian->expected(1);
        m_disc = addBlur("--disc", "RADIUS",
                         "Lens out of focus: disc of this radius in pixels, 0.1..500.");
        m_disc->expected(1);
        m_motion = addBlur("--motion", "LENGTH,ANGLE",
                           "Straight motion over so many pixels (1..500), at an angle in degrees\n"
                           "that rises to the right: 0 is level, 90 upright, 45 like a slash.");
        m_motion->expected(2)->allow_extra_args(false);
        m_kernel = m_command
                       .add_option("--kernel", m_path.path,
                                   "A kernel from a file: a matrix of numbers (.txt, .csv) "
                                   "or a picture.")
                       ->type_name("FILE")
                       ->group(m_motion->get_group());
        m_blind =
            m_blindOptions
                .addSize("--blind", "Unknown: find the kernel in the picture itself. N (or N wide, "
                                    "M high) is the\nsize of the kernel to look for: odd, 3..63, a "
                                    "little more than the blur is wide;\ntwice as much does harm. "
                                    "Without N it is " +
                                        BlindOptions::standardSize() +
                                        ".\nTells when that kernel explains the picture badly. See "
                                        "also 'velorn estimate'.")
                ->type_name("[N[xM]]")
                ->group(m_motion->get_group());
        m_blindOptions.addTurn()->needs(m_blind);
        m_noDeconvolve =
            m_command
                .add_flag("--no-deconvolve", m_isSharpenOnly,
                          "Leave the blur as it is; only sharpen edges and enhance detail.")
                ->group(m_motion->get_group());
        m_scale = m_command
                      .add_option("--kernel-scale", m_scaleValue,
                                  "Side in pixels of the square that stands for one weight in "
                                  "a kernel picture.\nPictures written by 'velorn kernel' tell "
                                  "it themselves.")
                      ->type_name("N")
                      ->needs(m_kernel);
    }

    void addFramePasses() {
        m_command
            .add_option("--frame-passes", m_options.framePasses,
                        "0..8, default: 2\n"
                        "How often the picture is continued beyond its frame, against streaks that "
                        "start there.\n0 restores the bare picture in a single pass.")
            ->type_name("N")
            ->group("Settings");
    }

    KernelSource kernelSource() {
        const std::array<CLI::Option*, 6> choices{m_gaussian, m_disc,  m_motion,
                                                  m_kernel,   m_blind, m_noDeconvolve};
        if (std::ranges::count_if(choices, [](auto* choice) { return choice->count() > 0; }) != 1) {
            throw UsageFailure("deblur needs exactly one of --gaussian, --disc, --motion, "
                               "--kernel, --blind and --no-deconvolve");
        }
        if (m_gaussian->count() > 0) {
            return blurOf(AnalyticBlur::Shape::Gaussian, m_numbers, "--gaussian");
        }
        if (m_disc->count() > 0) {
            return blurOf(AnalyticBlur::Shape::Disc, m_numbers, "--disc");
        }
        if (m_motion->count() > 0) {
            return blurOf(AnalyticBlur::Shape::Motion, m_numbers, "--motion");
        }
        if (m_kernel->count() > 0) {
            if (m_scale->count() > 0) {
                if (m_scaleValue < 1 || m_scaleValue > kLargestKernelSide) {
                    throw UsageFailure("--kernel-scale must be from 1 to " +
                                       std::to_string(kLargestKernelSide));
                }
                m_path.scale = m_scaleValue;
            }
            return m_path;
        }
        if (m_blind->count() > 0) {
            return m_blindOptions.result();
        }
        return std::monostate{};
    }

    CLI::App& m_command;
    BlindOptions m_blindOptions;
    SettingOptions m_settings;
    DeblurOptions m_options;
    std::vector<float> m_numbers;
    KernelPath m_path;
    int m_scaleValue = 1;
    bool m_isSharpenOnly = false;
    CLI::Option* m_gaussian = nullptr;
    CLI::Option* m_disc = nullptr;
    CLI::Option* m_motion = nullptr;
    CLI::Option* m_kernel = nullptr;
    CLI::Option* m_scale = nullptr;
    CLI::Option* m_blind = nullptr;
    CLI::Option* m_noDeconvolve = nullptr;
};

/// The `kernel` command on the command line, and what was given for it.
class KernelParser {
public:
    explicit KernelParser(CLI::App& app)
        : m_command(*app.add_subcommand("kernel", "Write a blur kernel to a file.")) {
        m_command.require_subcommand(1);
        addShape("gaussian", "Soft blur.", {{"SIGMA", "Standard deviation in pixels, 0.1..500."}});
        addShape("disc", "Lens out of focus.", {{"RADIUS", "Radius in pixels, 0.1..500."}});
        addShape("motion", "Straight motion.",
                 {{"LENGTH", "Length in pixels, 1..500."},
                  {"ANGLE", "Degrees, rising to the right: 0 is level, 90 upright."}});
    }

    bool isChosen() const { return m_command.parsed(); }

    KernelOptions result() const {
        for (std::size_t i = 0; i < m_shapes.size(); ++i) {
            if (m_shapes[i]->parsed()) {
                return {
                    blurOf(static_cast<AnalyticBlur::Shape>(i), m_numbers, m_shapes[i]->get_name()),
                    m_output};
            }
        }
        throw UsageFailure("kernel needs one of gaussian, disc and motion");
    }

private:
    struct Number {
        const char* name;
        const char* text;
    };

    void addShape(const char* name, const char* text, const std::vector<Number>& numbers) {
        auto* shape = m_command.add_subcommand(name, text);
        for (const Number& number : numbers) {
            shape
                ->add_option_function<float>(
                    number.name, [this](const float& value) { m_numbers.push_back(value); },
                    number.text)
                ->required()
                ->type_name("NUMBER");
        }
        shape
            ->add_option("-o,--output", m_output,
                         "Where to write it: numbers that read back exactly (.txt, .csv), or a\n"
                         "picture, enlarged, the largest weight white (.png, .tif ...).")
            ->required()
            ->type_name("FILE");
        m_shapes.push_back(shape);
    }

    CLI::App& m_command;
    std::vector<CLI::App*> m_shapes;
    std::vector<float> m_numbers;
    std::filesystem::path m_output;
};

/// The `estimate` command on the command line, and what was given for it.
class EstimateParser {
public:
    explicit EstimateParser(CLI::App& app)
        : m_command(*app.add_subcommand("estimate", "Find the blur kernel of a picture.")),
          m_blindOptions(m_command) {
        m_command.add_option("IN", m_options.input, "Blurred picture: 8 or 16 bits, grey or RGB.")
            ->required();
        m_blindOptions.addSize("--size",
                               "odd, 3..63, default: " + BlindOptions::standardSize() +
                                   "\nSide of the kernel to look for (or N wide, M high): a little "
                                   "more than the blur\nis wide; twice as much does harm.");
        m_blindOptions.addStrength();
        m_blindOptions.addTurn();
        m_command
            .add_option("-o,--output", m_options.output,
                        "Where to write the kernel: numbers (.txt, .csv) or a picture, for\n"
                        "'velorn deblur --kernel'. It is shown in the terminal as well.")
            ->required()
            ->type_name("FILE");
        m_command.footer(kExitCodes);
    }

    bool isChosen() const { return m_command.parsed(); }

    EstimateOptions result() {
        m_options.blind = m_blindOptions.result();
        return m_options;
    }

private:
    CLI::App& m_command;
    BlindOptions m_blindOptions;
    EstimateOptions m_options;
};

/// The `preview` command on the command line, and what was given for it.
class PreviewParser {
public:
    explicit PreviewParser(CLI::App& app)
        : m_command(*app.add_subcommand("preview", "Write a picture as a display shows it.")) {
        m_command
            .add_option("IN", m_options.input,
                        "Picture to show: 8 or 16 bits, grey or RGB. Its colours are told by its\n"
                        "profile, by sRGB when it has none or is grey. Alpha is left out.")
            ->required();
        m_command
            .add_option("OUT", m_options.output,
                        "Where to write what is shown: 8 bits, upright, without metadata.")
            ->required();
        m_command
            .add_option("--scale", m_options.scale,
                        "0.01..32, default: 1\n"
                        "Magnification. From 0.99 to 1.01 pixels are shown one by one.")
            ->type_name("NUMBER");
        m_profile = m_command
                        .add_option("--profile", m_profilePath,
                                    "The display's ICC profile, default: sRGB. OUT then carries "
                                    "it.")
                        ->type_name("FILE");
        m_command.footer(kExitCodes);
    }

    bool isChosen() const { return m_command.parsed(); }

    PreviewOptions result() {
        if (!(m_options.scale >= 0.01f && m_options.scale <= 32.0f)) {
            throw UsageFailure("--scale must be from 0.01 to 32");
        }
        if (m_profile->count() > 0) {
            m_options.profile = m_profilePath;
        }
        return m_options;
    }

private:
    CLI::App& m_command;
    PreviewOptions m_options;
    std::filesystem::path m_profilePath;
    CLI::Option* m_profile = nullptr;
};

} // namespace

std::optional<Command> parseCommandLine(int argc, const char* const* argv, std::ostream& out) {
    CLI::App app{"Restores the sharpness of blurred photographs.", "velorn"};
    app.formatter(std::make_shared<HelpFormatter>());
    app.set_version_flag("--version", "velorn " VELORN_VERSION, "Show the version and exit.");
    app.require_subcommand(1);
    app.footer("'velorn COMMAND --help' tells more of each command.");
    DeblurParser deblur(app);
    EstimateParser estimate(app);
    KernelParser kernel(app);
    PreviewParser preview(app);
    try {
        std::vector<std::string> words = BlindOptions::completed(
            SettingOptions::completed({argv + std::min(argc, 1), argv + argc}));
        std::ranges::reverse(words);
        app.parse(std::move(words));
    } catch (const CLI::Success& request) {
        app.exit(request, out, out);
        return std::nullopt;
    } catch (const CLI::Error& error) {
        throw UsageFailure(onOneLine(error.what()));
    }
    if (deblur.isChosen()) {
        return deblur.result();
    }
    if (estimate.isChosen()) {
        return estimate.result();
    }
    if (preview.isChosen()) {
        return preview.result();
    }
    return kernel.result();
}

} // namespace velorn
