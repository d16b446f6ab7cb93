#include "hosts/command/commands/EstimateOptions.h"

namespace velorn {

EstimateParser::EstimateParser(ArgumentParser& parser)
    : m_command(parser.addCommand("estimate", "Find the blur kernel of a picture.")) {
    m_command.add("IN", m_options.input, "Blurred picture: 8 or 16 bits per channel, grey or RGB.")
        .required();
    m_blindOptions.addSize(
        m_command, "--size",
        "Largest side of the kernel, or its largest width if M gives the height.");
    m_blindOptions.addStrength(m_command);
    m_blindOptions.addTurn(m_command);
    m_command
        .add("-o,--output", m_options.output,
             "File to write the kernel to, for 'velorn deblur --kernel': a matrix of numbers "
             "(.txt, .csv) or a picture. The kernel is also printed.")
        .required()
        .valueName("FILE");
}

EstimateOptions EstimateParser::result() const {
    EstimateOptions options = m_options;
    options.blind = m_blindOptions.result();
    return options;
}

} // namespace velorn
