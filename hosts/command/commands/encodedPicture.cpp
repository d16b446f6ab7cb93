#include "hosts/command/commands/encodedPicture.h"

#include "hosts/command/files/fileFailures.h"
#include "hosts/command/files/standardStreams.h"
#include "hosts/command/options/FormatOption.h"

namespace velorn {

std::vector<unsigned char> encodedPicture(const ImageFile& picture,
                                          const std::filesystem::path& output,
                                          const std::string& format) {
    const Format& target = outputFormat(output, format);
    try {
        return picture.encode(target, EncodingOptions{}).file;
    } catch (const Failure& failure) {
        throw cannotWrite(shownOutput(output), onOneLine(failure.what()));
    }
}

} // namespace velorn
