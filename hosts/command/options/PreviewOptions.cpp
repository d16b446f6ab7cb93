#include "hosts/command/options/PreviewOptions.h"

#include "hosts/command/arguments/NumberRange.h"
#include "hosts/command/arguments/Numbers.h"
#include "hosts/command/files/standardStreams.h"

namespace velorn {
namespace {

constexpr NumberRange kScales{0.01f, 32.0f};

} // namespace

PreviewParser::PreviewParser(ArgumentParser& parser)
    : m_command(parser.addCommand("preview", "Write a picture as a display shows it.")) {
    m_command
        .add("IN", m_options.input,
             "Picture to show: 8 or 16 bits per channel, grey or RGB. Colours are converted from "
             "its ICC profile; sRGB is assumed for grey pictures and without a profile. "
             "'-' is the standard input.")
        .required();
    m_command
        .add("OUT", m_options.output,
             "File to write: 8 bits per channel, upright, without alpha and metadata. The "
             "extension selects the format. '-' is the standard output.")
        .required();
    m_command
        .add("--scale", m_options.scale,
             kScales.text() + ", default: " + numberText(m_options.scale) +
                 "\nMagnification. From 0.99 to 1.01, pixels are copied one by one.")
        .valueName("NUMBER");
    m_format.addTo(m_command, "OPTIONS");
    m_profile = m_command
                    .add("--profile", m_profilePath,
                         "default: sRGB"
                         "\nICC profile of the display. It is stored in OUT.")
                    .valueName("FILE");
    m_fileOptions.addLimitTo(m_command);
}

PreviewOptions PreviewParser::result() const {
    PreviewOptions options = m_options;
    options.format = m_format.result(options.output);
    kScales.check("--scale", options.scale);
    options.maxPixels = m_fileOptions.maxPixels();
    if (m_profile.isGiven()) {
        options.profile = m_profilePath;
    }
    checkStandardInput({options.input, options.profile.value_or("")});
    return options;
}

} // namespace velorn
