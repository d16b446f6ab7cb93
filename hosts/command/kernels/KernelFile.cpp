#include "hosts/command/kernels/KernelFile.h"

#include "hosts/command/files/fileFailures.h"
#include "hosts/command/files/openForReading.h"
#include "hosts/command/files/standardStreams.h"
#include "hosts/command/pictures/ImageFile.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <iterator>
#include <sstream>

namespace velorn {
namespace {

constexpr const char* kDescription = "velorn blur kernel, pixels per weight: ";
/// The approximate side in pixels of kernel pictures.
constexpr int kShownSide = 256;

bool isText(const std::filesystem::path& path) {
    std::string extension = path.extension().string();
    std::ranges::transform(extension, extension.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension == ".txt" || extension == ".csv";
}

void checkSize(KernelSize size, const std::filesystem::path& path) {
    if (size.largerSide() > kLargestKernelSide) {
        throw failureIn(path, "the kernel is larger than " +
                                  KernelSize{kLargestKernelSide, kLargestKernelSide}.text());
    }
}

std::vector<float> parseRow(std::string line, const std::string& place) {
    line.erase(std::min(line.find('#'), line.size()));
    std::ranges::replace_if(
        line, [](char c) { return c == ',' || c == ';' || c == '\r'; }, ' ');
    std::istringstream words(line);
    std::vector<float> row;
    for (std::string word; words >> word;) {
        const char* begin = word.data() + (word.front() == '+' ? 1 : 0);
        const char* end = word.data() + word.size();
        float weight = 0.0f;
        const auto parsed = std::from_chars(begin, end, weight);
        if (parsed.ec != std::errc{} || parsed.ptr != end) {
            throw Failure(place + ": '" + word + "' is not a number");
        }
        row.push_back(weight);
    }
    return row;
}

/// Whether the bytes of a file are text, and none of the pictures that are.
bool holdsText(const std::filesystem::path& path) {
    std::ifstream file = openForReading(path);
    const std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    const bool isPnm = bytes.size() > 1 && bytes[0] == 'P' && bytes[1] >= '1' && bytes[1] <= '6';
    return !isPnm && !bytes.starts_with("#?") && std::ranges::none_of(bytes, [](char c) {
        return static_cast<unsigned char>(c) < 0x20 && (c < '\t' || c > '\r');
    });
}

BlurKernel readText(const InputFile& input) {
    const std::filesystem::path& path = input.shown();
    std::ifstream file = openForReading(input.openable());
    BlurKernel kernel;
    int number = 0;
    for (std::string line; std::getline(file, line);) {
        const std::string place = quoted(path) + " line " + std::to_string(++number);
        const std::vector<float> row = parseRow(line, place);
        if (row.empty()) {
            continue;
        }
        const int width = static_cast<int>(row.size());
        if (kernel.height > 0 && width != kernel.width) {
            throw Failure(place + ": " + std::to_string(width) +
                          " numbers where the first row has " + std::to_string(kernel.width));
        }
        kernel.width = width;
        ++kernel.height;
        checkSize(kernel.size(), path);
        kernel.weights.insert(kernel.weights.end(), row.begin(), row.end());
    }
    if (kernel.height == 0) {
        throw Failure(quoted(path) + " contains no numbers");
    }
    return kernel;
}

int scaleOf(const ImageFile& picture) {
    const std::string description = picture.description();
    const std::size_t length = std::strlen(kDescription);
    int scale = 1;
    if (description.compare(0, length, kDescription) == 0) {
        std::from_chars(description.data() + length, description.data() + description.size(),
                        scale);
    }
    return std::max(scale, 1);
}

BlurKernel readPicture(const InputFile& input, std::optional<int> wantedScale) {
    const std::filesystem::path& path = input.shown();
    const ImageFile picture = ImageFile::read(input);
    const int scale = wantedScale ? *wantedScale : scaleOf(picture);
    if (picture.width() % scale != 0 || picture.height() % scale != 0) {
        throw failureIn(path, "sides of " + std::to_string(picture.width()) + " by " +
                                  std::to_string(picture.height()) +
                                  " pixels are not multiples of the kernel scale " +
                                  std::to_string(scale));
    }
    BlurKernel kernel{picture.width() / scale, picture.height() / scale, {}};
    checkSize(kernel.size(), path);
    const int colours = picture.isGrey() ? 1 : 3;
    std::vector<double> sums(static_cast<std::size_t>(kernel.width) *
                             static_cast<std::size_t>(kernel.height));
    std::visit(
        [&](const auto& samples) {
            std::size_t first = 0;
            for (int y = 0; y < picture.height(); ++y) {
                for (int x = 0; x < picture.width(); ++x) {
                    const auto weight = static_cast<std::size_t>(y / scale) *
                                            static_cast<std::size_t>(kernel.width) +
                                        static_cast<std::size_t>(x / scale);
                    for (int c = 0; c < colours; ++c) {
                        sums[weight] += samples[first + static_cast<std::size_t>(c)];
                    }
                    first += static_cast<std::size_t>(picture.channels());
                }
            }
        },
        picture.samples());
    // Scales the sums to 0..1, so that they fit a float for every depth and scale.
    const double unit = 65535.0 * colours * scale * scale;
    std::ranges::transform(sums, std::back_inserter(kernel.weights),
                           [unit](double sum) { return static_cast<float>(sum / unit); });
    return kernel;
}

std::string textOf(const BlurKernel& kernel) {
    std::string text;
    for (int r = 0; r < kernel.height; ++r) {
        for (int c = 0; c < kernel.width; ++c) {
            char digits[32];
            const auto end = std::to_chars(digits, digits + sizeof digits, kernel.at(r, c)).ptr;
            text.append(digits, end);
            text += c + 1 < kernel.width ? ' ' : '\n';
        }
    }
    return text;
}

ImageFile pictureOf(const BlurKernel& kernel) {
    const int scale = std::max(1, kShownSide / kernel.largerSide());
    ImageFile picture(kernel.width * scale, kernel.height * scale, 1, 16);
    const float peak = std::ranges::max(kernel.weights);
    auto& samples = std::get<std::vector<std::uint16_t>>(picture.samples());
    auto sample = samples.begin();
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            const float share = std::max(0.0f, kernel.at(y / scale, x / scale) / peak);
            *sample++ = static_cast<std::uint16_t>(std::lround(share * 65535.0f));
        }
    }
    picture.setDescription(kDescription + std::to_string(scale));
    return picture;
}

} // namespace

BlurKernel KernelFile::read(const std::filesystem::path& path, std::optional<int> scale) {
    const InputFile input(path);
    const bool wantsText = isStandardStream(path) ? holdsText(input.openable()) : isText(path);
    return checkedKernel(wantsText ? readText(input) : readPicture(input, scale),
                         quoted(input.shown()));
}

void KernelFile::checkWritable(const std::filesystem::path& path) {
    if (!isText(path)) {
        ImageFile::checkWritable(path);
    }
}

std::vector<unsigned char> KernelFile::encode(const BlurKernel& kernel,
                                              const std::filesystem::path& path) {
    if (isText(path)) {
        const std::string text = textOf(kernel);
        return {text.begin(), text.end()};
    }
    return pictureOf(kernel).encode(path);
}

} // namespace velorn
