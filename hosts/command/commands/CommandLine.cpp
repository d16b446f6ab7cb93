#include "hosts/command/commands/CommandLine.h"

#include "hosts/command/arguments/ArgumentParser.h"
#include "hosts/command/options/CompletionParser.h"

namespace velorn {
namespace {

constexpr const char* kExitStatus =
    "Exit status: 0 success, 1 failure, 2 wrong command line, 3 some of many\n"
    "pictures failed, 128 + N signal N (130 Ctrl-C, 141 closed pipe).";
constexpr const char* kExamples = "Examples:\n"
                                  "  velorn deblur blurred.jpg restored.png --disc 4\n"
                                  "  velorn deblur shaken.tif restored.tif --motion 12,30\n"
                                  "  velorn deblur unknown.jpg restored.png --blind\n"
                                  "  velorn deblur photos --output-dir restored --blind\n"
                                  "  velorn try blurred.jpg --disc 4 -o strengths.png\n"
                                  "  velorn try blurred.jpg --disc 2,3,4,5 -o radii.png\n"
                                  "  velorn estimate unknown.jpg --sheet candidates.png\n"
                                  "  velorn deblur - - --format png --disc 4 < in.jpg > out.png\n\n"
                                  "Run 'velorn COMMAND --help' for the options of a command.\n";

} // namespace

std::optional<Command> parseCommandLine(int argc, const char* const* argv, std::ostream& out) {
    ArgumentParser parser("velorn", "Removes blur from photographs.");
    parser.setVersion("velorn " VELORN_VERSION);
    parser.setFooter(kExitStatus);
    DeblurParser deblur(parser);
    TryParser trial(parser);
    EstimateParser estimate(parser);
    KernelParser kernel(parser);
    PreviewParser preview(parser);
    CompletionParser completion(parser);
    parser.setFooter(std::string(kExamples) + kExitStatus);
    const std::vector<std::string> words(argv + std::min(argc, 1), argv + argc);
    if (!parser.parse(DeblurParser::completed(words), out)) {
        return std::nullopt;
    }
    if (completion.isChosen()) {
        out << completion.script(parser.description());
        return std::nullopt;
    }
    if (deblur.isChosen()) {
        return deblur.result();
    }
    if (trial.isChosen()) {
        return trial.result();
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
