#include "hosts/command/options/EstimateOptions.h"

#include "hosts/command/files/standardStreams.h"
#include "hosts/command/terminal/Failure.h"

namespace velorn {

EstimateParser::EstimateParser(ArgumentParser& parser)
    : m_command(parser.addCommand("estimate", "Find and print the blur kernel of a picture.")) {
    m_command
        .add("IN", m_options.input,
             "Blurred picture: 8 or 16 bits per channel, grey or RGB. '-' is the standard input.")
        .required();
    m_blindOptions.addSize(
        m_command, "--size",
        "Largest side of the kernel, or its largest width if M gives the height.");
    m_blindOptions.addStrength(m_command);
    m_blindOptions.addTurn(m_command);
    m_blindOptions.addChoices(m_command);
    m_threads.addTo(m_command, "OPTIONS");
    m_command
        .add("-o,--output", m_options.output,
             "File to write the kernel to, for 'velorn deblur --kernel': a matrix of numbers "
             "(.txt, .csv) or a picture. Without it, the kernel is only printed.")
        .valueName("FILE");
    m_format.addTo(m_command, "OPTIONS");
    m_command
        .add("--sheet", m_options.sheet,
             "Picture to write that shows all candidates: each kernel with its confidence, and the "
             "same detail of the picture restored with it.")
        .valueName("FILE");
    m_fileOptions.addLimitTo(m_command);
}

EstimateOptions EstimateParser::result() const {
    EstimateOptions options = m_options;
    options.blind = m_blindOptions.result();
    options.blind.threads = m_threads.result();
    options.maxPixels = m_fileOptions.maxPixels();
    if (!options.sheet.empty() && options.sheet == options.output) {
        throw UsageFailure("--output and --sheet name the same file");
    }
    takeFormat(options);
    checkStandardInput({options.input, options.blind.start.value_or("")});
    return options;
}

/// Gives --format to the standard output, else to the kernel, else to the sheet.
void EstimateParser::takeFormat(EstimateOptions& options) const {
    if (m_format.isGiven() && options.output.empty() && options.sheet.empty()) {
        throw UsageFailure("--format needs --output or --sheet");
    }
    if (isStandardStream(options.sheet) || options.output.empty()) {
        options.sheetFormat = m_format.resultForPicture(options.sheet);
    } else {
        options.format = m_format.result(options.output);
    }
}

} // namespace velorn
