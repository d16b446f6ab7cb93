// The formats of files, from end to end: the command runs as a process on real files.
#include "hosts/command/codecs/encodePixels.h"
#include "hosts/command/codecs/EncodingOptions.h"
#include "hosts/command/codecs/JpegHeader.h"
#include "hosts/command/codecs/webp.h"
#include "hosts/command/formats/Format.h"
#include "tests/hosts/command/CommandProcess.h"
#include "tests/support/TestPictures.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <jpeglib.h>
#include <lcms2.h>

namespace {

using OIIO::ImageSpec;
using OIIO::TypeDesc;
using vel::test::bytesOfFile;
using vel::test::ProgramResult;
using vel::test::readPicture;
using vel::test::variedSamples;
using vel::test::writeBytes;
using vel::test::writePicture;
using velorn::Pixels;
using Bytes = std::vector<std::uint8_t>;
using Words = std::vector<std::uint16_t>;

class FileFormats : public vel::test::CommandProcess {
protected:
    /// Runs `velorn deblur FROM TO --no-deconvolve`, which leaves the pixels unchanged.
    ProgramResult copy(const std::string& from, const std::string& to,
                       const std::vector<std::string>& options = {}) {
        std::vector<std::string> words{"deblur", at(from), at(to), "--no-deconvolve"};
        words.insert(words.end(), options.begin(), options.end());
        return run(std::move(words));
    }

    void expectCopied(const std::string& from, const std::string& to,
                      const std::vector<std::string>& options = {}) {
        const ProgramResult result = copy(from, to, options);
        EXPECT_EQ(result.exitStatus, 0) << from << " to " << to << ": " << result.errors;
        EXPECT_EQ(result.errors, "") << from << " to " << to;
    }

    /// Expects one warning that contains `part`.
    void expectWarning(const std::string& from, const std::string& to, const std::string& part) {
        const ProgramResult result = copy(from, to);
        EXPECT_EQ(result.exitStatus, 0) << result.errors;
        EXPECT_EQ(result.errors.find("velorn: warning: "), 0u) << to << result.errors;
        EXPECT_NE(result.errors.find(part), std::string::npos) << to << result.errors;
        EXPECT_EQ(std::ranges::count(result.errors, '\n'), 1) << result.errors;
    }

    /// Expects a failure in one line that contains `part`, and no file.
    void expectRefused(const std::string& from, const std::string& to, const std::string& part,
                       const std::vector<std::string>& options = {}) {
        const ProgramResult result = copy(from, to, options);
        EXPECT_EQ(result.exitStatus, 1) << from << " to " << to << ": " << result.errors;
        EXPECT_NE(result.errors.find(part), std::string::npos) << result.errors;
        EXPECT_EQ(std::ranges::count(result.errors, '\n'), 1) << result.errors;
        EXPECT_FALSE(std::filesystem::exists(at(to)));
    }

    void writeGrey(const std::string& name, int width, int height) {
        const ImageSpec spec(width, height, 1, TypeDesc::UINT8);
        writePicture(at(name), spec, variedSamples<std::uint8_t>(spec));
    }

    /// A picture whose neighbours differ little, 64 by 48.
    template <class T>
    std::vector<T> writeSmooth(const std::string& name, int channels) {
        ImageSpec spec(64, 48, channels, OIIO::BaseTypeFromC<T>::value);
        if (channels % 2 == 0) {
            spec.alpha_channel = channels - 1;
            spec.channelnames.back() = std::string(1, 'A');
        }
        std::vector<T> samples(spec.image_pixels() * static_cast<std::size_t>(channels));
        constexpr std::size_t unit = sizeof(T) == 1 ? 1 : 257;
        for (std::size_t i = 0; i < samples.size(); ++i) {
            const std::size_t pixel = i / static_cast<std::size_t>(channels);
            const std::size_t channel = i % static_cast<std::size_t>(channels);
            samples[i] = static_cast<T>(unit * (40 + pixel % 64 + pixel / 64 + 30 * channel));
        }
        writePicture(at(name), spec, samples);
        return samples;
    }
};

TEST_F(FileFormats, EveryWrittenFormatTakesEveryKindOfPicture) {
    for (const int channels : {1, 2, 3, 4}) {
        writeSmooth<std::uint8_t>("in8.png", channels);
        writeSmooth<std::uint16_t>("in16.png", channels);
        for (const velorn::Format& format : velorn::kFormats) {
            if (!format.isWritten) {
                continue;
            }
            for (const int bits : {8, 16}) {
                const std::string from = "in" + std::to_string(bits) + ".png";
                const std::string to = "out." + std::string(format.extensions[0]);
                SCOPED_TRACE(from + " " + to + " " + std::to_string(channels));
                const ProgramResult result = copy(from, to);
                ASSERT_EQ(result.exitStatus, 0) << result.errors;
                const velorn::PictureShape shape{64, 48, channels, bits};
                const auto held = velorn::heldShape(format, shape);
                EXPECT_EQ(result.errors == "", velorn::lossesOf(format, shape).empty())
                    << result.errors;
                ImageSpec spec;
                const auto written = readPicture<float>(at(to), spec);
                EXPECT_EQ(spec.nchannels, held.channels);
                EXPECT_EQ(spec.width, 64);
                EXPECT_EQ(spec.height, 48);
                ASSERT_FALSE(written.empty());
                EXPECT_EQ(spec.format.size() == 1, held.bits == 8 && !format.isLinear);
                // The way back gives the pixels again.
                ASSERT_EQ(copy(to, "back.png").exitStatus, 0);
                ImageSpec ignored;
                const auto first = readPicture<float>(at(from), spec);
                const auto back = readPicture<float>(at("back.png"), ignored);
                // Coarse coding of colours, and of light by a common exponent.
                const float tolerance = format.coding == velorn::Coding::lossless ? 0.002f : 0.03f;
                for (std::size_t i = 0; i < 64u * 48u; ++i) {
                    const auto from0 = first[i * static_cast<std::size_t>(channels)];
                    ASSERT_NEAR(back[i * static_cast<std::size_t>(held.channels)], from0,
                                tolerance);
                }
            }
        }
    }
}

TEST_F(FileFormats, BytesDoNotDependOnTheNumberOfThreads) {
    writeSmooth<std::uint16_t>("in.png", 3);
    expectCopied("in.png", "one.tif", {"--threads", "1"});
    expectCopied("in.png", "three.tif", {"--threads", "3"});
    EXPECT_EQ(bytesOfFile(at("one.tif")), bytesOfFile(at("three.tif")));
}

TEST_F(FileFormats, LimitsOfAFormatAreStatedBeforeTheWorkStarts) {
    writeGrey("wide.png", 70000, 2);
    expectRefused("wide.png", "out.jpg", "65500");
    expectRefused("wide.png", "out.webp", "16383");
    expectRefused("wide.png", "out.tga", "65535");
    expectCopied("wide.png", "out.tif");
    writeGrey("small.png", 8, 8);
    expectRefused("small.png", "out.jpg", "8 bits per sample", {"--depth", "16"});
    for (const std::string name : {"out.dpx", "out.gif", "out.heic", "out.xyz"}) {
        expectRefused("small.png", name, "JPEG, PNG, TIFF, WebP, PNM, BMP, TGA, EXR and HDR");
    }
}

TEST_F(FileFormats, TgaAndGreyWithAlphaDoNotCrash) {
    const auto samples = writeSmooth<std::uint8_t>("in.png", 2);
    expectCopied("in.png", "out.tga");
    ImageSpec spec;
    const auto written = readPicture<std::uint8_t>(at("out.tga"), spec);
    ASSERT_EQ(written.size(), 2 * samples.size());
    for (std::size_t i = 0; i < samples.size() / 2; ++i) {
        ASSERT_EQ(written[4 * i], samples[2 * i]);
        ASSERT_EQ(written[4 * i + 3], samples[2 * i + 1]);
    }
    expectRefused("in.png", "out.dpx", "only read");
}

TEST_F(FileFormats, LosslessWebpWithAlphaStaysLosslessAndUnassociated) {
    const auto samples = [&] {
        ImageSpec spec(40, 30, 4, TypeDesc::UINT8);
        spec.alpha_channel = 3;
        auto values = variedSamples<std::uint8_t>(spec);
        for (std::size_t i = 3; i < values.size(); i += 4) {
            values[i] = static_cast<std::uint8_t>(i % 5 == 0 ? 0 : values[i]);
        }
        writePicture(at("in.png"), spec, values);
        return values;
    }();
    velorn::EncoderSettings lossless;
    lossless.isLossless = true;
    writeBytes(at("in.webp"), velorn::encodeWebp(Pixels{40, 30, 4, samples}, lossless));
    ImageSpec spec;
    expectCopied("in.webp", "out.png");
    EXPECT_EQ(readPicture<std::uint8_t>(at("out.png"), spec), samples);
    expectCopied("in.webp", "out.webp");
    EXPECT_TRUE(velorn::readWebpHeader(bytesOfFile(at("out.webp")))->isLossless);
    expectCopied("out.webp", "again.png");
    EXPECT_EQ(readPicture<std::uint8_t>(at("again.png"), spec), samples);
    expectCopied("in.webp", "lossy.webp", {"--quality", "80"});
    EXPECT_FALSE(velorn::readWebpHeader(bytesOfFile(at("lossy.webp")))->isLossless);
}

TEST_F(FileFormats, AssociatedAlphaOfTiffIsDividedOut) {
    ImageSpec spec(2, 1, 4, TypeDesc::UINT16);
    spec.alpha_channel = 3;
    const std::string path = at("in.tif");
    const auto output = OIIO::ImageOutput::create(path);
    const Words products{10000, 20000, 30000, 32768, 0, 0, 0, 0};
    ASSERT_TRUE(output->open(path, spec));
    ASSERT_TRUE(output->write_image(TypeDesc::UINT16, products.data()));
    ASSERT_TRUE(output->close());
    for (const std::string name : {"out.png", "out.tif"}) {
        expectCopied("in.tif", name);
        ImageSpec back;
        EXPECT_EQ(readPicture<std::uint16_t>(at(name), back),
                  (Words{20000, 39999, 59999, 32768, 0, 0, 0, 0}))
            << name;
    }
}

TEST_F(FileFormats, LinearLightIsCodedAndDecoded) {
    ImageSpec spec(2, 1, 4, TypeDesc::FLOAT);
    spec.alpha_channel = 3;
    // A fifth of white light, opaque, and a half-transparent copy with associated alpha.
    const std::vector<float> light{0.2f, 0.2f, 0.2f, 1.0f, 0.1f, 0.1f, 0.1f, 0.5f};
    writePicture(at("in.exr"), spec, light);
    expectCopied("in.exr", "out.png");
    ImageSpec back;
    const auto coded = readPicture<std::uint16_t>(at("out.png"), back);
    // 1.055 * 0.2^(1/2.4) - 0.055 = 0.48453
    ASSERT_EQ(coded.size(), 8u);
    EXPECT_NEAR(coded[0], 31754, 1);
    EXPECT_NEAR(coded[4], 31754, 1);
    EXPECT_EQ(coded[7], 32768);
    expectCopied("out.png", "back.exr");
    const auto decoded = readPicture<float>(at("back.exr"), back);
    for (std::size_t i = 0; i < light.size(); ++i) {
        EXPECT_NEAR(decoded[i], light[i], 2e-5f) << i;
    }
    writePicture(at("bright.exr"), ImageSpec(1, 1, 3, TypeDesc::FLOAT),
                 std::vector<float>{0.5f, 0.5f, 1.5f});
    expectRefused("bright.exr", "none.png", "outside 0..1");
}

TEST_F(FileFormats, PnmHoldsSixteenBitsAndOthersWarn) {
    const auto samples = writeSmooth<std::uint16_t>("in.png", 3);
    expectCopied("in.png", "out.ppm");
    // The image library's reader of this format is not exact.
    const auto bytes = bytesOfFile(at("out.ppm"));
    const std::string header = "P6\n64 48\n65535\n";
    ASSERT_EQ(bytes.size(), header.size() + 2 * samples.size());
    EXPECT_TRUE(std::equal(header.begin(), header.end(), bytes.begin()));
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const auto* word = &bytes[header.size() + 2 * i];
        ASSERT_EQ(word[0] * 256 + word[1], samples[i]);
    }
    for (const std::string name : {"out.bmp", "out.tga", "out.webp", "out.jpg"}) {
        expectWarning("in.png", name, "16 bits per sample");
    }
    writeSmooth<std::uint8_t>("alpha.png", 4);
    expectWarning("alpha.png", "out.jpg", "the alpha channel");
}

TEST_F(FileFormats, DepthIsThatOfTheOption) {
    writeSmooth<std::uint8_t>("in8.png", 3);
    writeSmooth<std::uint16_t>("in16.png", 3);
    expectCopied("in8.png", "out.png", {"--depth", "16"});
    ImageSpec spec;
    readPicture<std::uint16_t>(at("out.png"), spec);
    EXPECT_EQ(spec.format, TypeDesc::UINT16);
    expectCopied("in16.png", "out.png", {"--depth", "8"});
    const auto eight = readPicture<std::uint8_t>(at("out.png"), spec);
    EXPECT_EQ(spec.format, TypeDesc::UINT8);
    EXPECT_EQ(eight, readPicture<std::uint8_t>(at("in8.png"), spec));
}

TEST_F(FileFormats, OrientationTurnsThePixelsWhereItCannotBeStored) {
    ImageSpec spec(3, 2, 1, TypeDesc::UINT8);
    spec.attribute("Orientation", 6);
    writePicture(at("in.tif"), spec, Bytes{1, 2, 3, 4, 5, 6});
    for (const std::string name : {"out.bmp", "out.pgm", "out.tga"}) {
        const ProgramResult result = copy("in.tif", name);
        EXPECT_EQ(result.exitStatus, 0) << result.errors;
        EXPECT_EQ(result.errors.find("Orientation"), std::string::npos) << result.errors;
        ImageSpec back;
        EXPECT_EQ(readPicture<std::uint8_t>(at(name), back), (Bytes{4, 1, 5, 2, 6, 3})) << name;
        EXPECT_EQ(back.width, 2);
        EXPECT_EQ(back.get_int_attribute("Orientation", 1), 1);
    }
    expectCopied("in.tif", "out.png");
    ImageSpec back;
    EXPECT_EQ(readPicture<std::uint8_t>(at("out.png"), back), (Bytes{1, 2, 3, 4, 5, 6}));
}

TEST_F(FileFormats, JpegKeepsQualityAndSubsamplingOfItsSource) {
    const auto samples = writeSmooth<std::uint8_t>("in.png", 3);
    const auto headerOf = [&](const std::string& name) {
        return *velorn::readJpegHeader(bytesOfFile(at(name)));
    };
    using velorn::Subsampling;
    for (const int quality : {30, 75, 92, 100}) {
        for (const Subsampling subsampling :
             {Subsampling::none, Subsampling::half, Subsampling::quarter}) {
            velorn::EncoderSettings settings;
            settings.quality = quality;
            settings.subsampling = subsampling;
            writeBytes(at("in.jpg"),
                       velorn::encodePixels(Pixels{64, 48, 3, samples},
                                            *velorn::formatNamed("jpeg"), settings, {}));
            expectCopied("in.jpg", "out.jpg");
            EXPECT_EQ(headerOf("out.jpg").quality, quality);
            EXPECT_EQ(headerOf("out.jpg").subsampling, subsampling);
        }
    }
    const auto webpSize = [&](const std::string& from) {
        expectCopied(from, "out.webp");
        return bytesOfFile(at("out.webp")).size();
    };
    // WebP does not adopt the quality of a JPEG file: its scale is another one.
    expectCopied("in.jpg", "same.png");
    EXPECT_EQ(webpSize("in.jpg"), webpSize("same.png"));
    expectCopied("in.jpg", "out.jpg", {"--quality", "60", "--subsampling", "422"});
    EXPECT_EQ(headerOf("out.jpg").quality, 60);
    EXPECT_EQ(headerOf("out.jpg").subsampling, Subsampling::half);
    expectCopied("in.png", "out.jpg");
    EXPECT_EQ(headerOf("out.jpg").quality, 97);
    EXPECT_EQ(headerOf("out.jpg").subsampling, Subsampling::none);
}

/// Writes two pictures into a TIFF file; the second one is a quarter as large and may be marked as
/// a reduced copy.
void writeTwo(const std::string& path, int kind, bool isReducedFirst = false) {
    const auto output = OIIO::ImageOutput::create(path);
    bool isFirst = true;
    for (const bool isReduced : {isReducedFirst, !isReducedFirst}) {
        ImageSpec spec(isReduced ? 8 : 32, isReduced ? 8 : 32, 3, TypeDesc::UINT8);
        if (isReduced) {
            spec.attribute("tiff:subfiletype", kind);
        }
        const Bytes samples(spec.image_pixels() * 3, isReduced ? 9 : 200);
        ASSERT_TRUE(output->open(
            path, spec, isFirst ? OIIO::ImageOutput::Create : OIIO::ImageOutput::AppendSubimage));
        ASSERT_TRUE(output->write_image(TypeDesc::UINT8, samples.data()));
        isFirst = false;
    }
    ASSERT_TRUE(output->close());
}

TEST_F(FileFormats, ReducedCopyInATiffFileIsIgnored) {
    writeTwo(at("two.tif"), 0);
    expectRefused("two.tif", "none.png", "more than one picture");
    for (const bool isReducedFirst : {false, true}) {
        writeTwo(at("in.tif"), 1, isReducedFirst);
        for (const std::string name : {"out.png", "out.tif"}) {
            expectCopied("in.tif", name);
            ImageSpec spec;
            EXPECT_EQ(readPicture<std::uint8_t>(at(name), spec), Bytes(32 * 32 * 3, 200));
        }
        expectCopied("out.tif", "again.png");
    }
}

TEST_F(FileFormats, LargePicturesAreRefusedBeforeMemoryIsAllocated) {
    writeGrey("in.png", 100, 50);
    expectRefused("in.png", "none.png", "--max-pixels", {"--max-pixels", "4999"});
    expectCopied("in.png", "out.png", {"--max-pixels", "5000"});
    // The header of a picture of 40 gigapixels, in a file of a few bytes.
    writeBytes(at("bomb.pgm"), [] {
        const std::string header = "P5\n200000 200000\n255\n";
        return std::vector<unsigned char>(header.begin(), header.end());
    }());
    expectRefused("bomb.pgm", "none.png", "200000 by 200000 pixels, more than --max-pixels");
    // All commands that read pictures have the limit.
    const std::vector<std::vector<std::string>> calls{
        {"estimate", at("bomb.pgm")},
        {"preview", at("bomb.pgm"), at("none.png")},
        {"try", at("bomb.pgm"), "--disc", "3", "-o", at("none.png")},
        {"estimate", at("in.png"), "--max-pixels", "4999"},
        {"preview", at("in.png"), at("none.png"), "--max-pixels", "4999"}};
    for (std::vector<std::string> words : calls) {
        words.insert(words.begin(), VELORN_PROGRAM);
        const ProgramResult result = vel::test::runProgram(words);
        EXPECT_EQ(result.exitStatus, 1) << words[1];
        EXPECT_NE(result.errors.find("more than --max-pixels"), std::string::npos)
            << words[1] << result.errors;
        EXPECT_FALSE(std::filesystem::exists(at("none.png"))) << words[1];
    }
    const ProgramResult shown = vel::test::runProgram(
        {VELORN_PROGRAM, "preview", at("in.png"), at("shown.png"), "--max-pixels", "5000"});
    EXPECT_EQ(shown.exitStatus, 0) << shown.errors;
}

/// The profile of a press whose inks darken independently of each other.
std::vector<unsigned char> pressProfile() {
    const cmsHPROFILE profile = cmsCreateProfilePlaceholder(nullptr);
    cmsSetDeviceClass(profile, cmsSigOutputClass);
    cmsSetColorSpace(profile, cmsSigCmykData);
    cmsSetPCS(profile, cmsSigLabData);
    cmsSetProfileVersion(profile, 2.4);
    cmsPipeline* pipeline = cmsPipelineAlloc(nullptr, 4, 3);
    cmsStage* grid = cmsStageAllocCLut16bit(nullptr, 9, 4, 3, nullptr);
    cmsStageSampleCLut16bit(
        grid,
        [](const cmsUInt16Number in[], cmsUInt16Number out[], void*) {
            const double black = 1.0 - in[3] / 65535.0;
            const auto share = [&](int ink) { return (1.0 - in[ink] / 65535.0) * black; };
            const double mean = (share(0) + share(1) + share(2)) / 3.0;
            const cmsCIELab lab{100.0 * mean, 60.0 * (share(0) - share(1)),
                                60.0 * (share(1) - share(2))};
            cmsFloat2LabEncodedV2(out, &lab);
            return cmsInt32Number{1};
        },
        nullptr, 0);
    cmsPipelineInsertStage(pipeline, cmsAT_END, grid);
    cmsWriteTag(profile, cmsSigAToB0Tag, pipeline);
    cmsPipelineFree(pipeline);
    cmsUInt32Number size = 0;
    cmsSaveProfileToMem(profile, nullptr, &size);
    std::vector<unsigned char> bytes(size);
    cmsSaveProfileToMem(profile, bytes.data(), &size);
    cmsCloseProfile(profile);
    return bytes;
}

/// Writes inks, white paper beside full black, as a TIFF file; without inks where `profile` is
/// empty.
void writeInks(const std::string& path, const std::vector<unsigned char>& profile) {
    ImageSpec spec(2, 1, 4, TypeDesc::UINT8);
    spec.channelnames = {"C", "M", "Y", "K"};
    spec.attribute("tiff:ColorSpace", "CMYK");
    spec.attribute("oiio:ColorSpace", "CMYK");
    if (!profile.empty()) {
        vel::test::attachProfile(spec, profile);
    }
    writePicture(path, spec, Bytes{0, 0, 0, 0, 0, 0, 0, 255});
}

TEST_F(FileFormats, CmykBecomesRgbByItsProfileOrIsRefused) {
    writeInks(at("in.tif"), pressProfile());
    for (const std::string name : {"out.png", "out.tif", "out.jpg"}) {
        expectCopied("in.tif", name);
        ImageSpec spec;
        const auto samples = readPicture<std::uint8_t>(at(name), spec);
        ASSERT_EQ(samples.size(), 6u) << name;
        for (std::size_t c = 0; c < 3; ++c) {
            EXPECT_GE(samples[c], 250) << name;
            EXPECT_LE(samples[3 + c], 5) << name;
        }
        EXPECT_EQ(spec.find_attribute("ICCProfile"), nullptr) << name;
    }
    writeInks(at("bare.tif"), {});
    expectRefused("bare.tif", "none.png", "CMYK picture without a colour profile");
}

/// How the inks of a JPEG file are stored.
struct InkStorage {
    /// Of libjpeg: JCS_CMYK or JCS_YCCK.
    J_COLOR_SPACE space;
    /// Files with the marker of Adobe store 255 for no ink.
    bool hasMarker;
};

constexpr JDIMENSION kBandWidth = 16;

/// The bytes of a JPEG file with bands of paper, cyan, magenta, yellow and black.
std::vector<unsigned char> inkJpeg(const InkStorage& storage,
                                   const std::vector<unsigned char>& profile) {
    constexpr JDIMENSION kBands = 5;
    jpeg_error_mgr errors;
    jpeg_compress_struct encoder;
    encoder.err = jpeg_std_error(&errors);
    jpeg_create_compress(&encoder);
    unsigned char* memory = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&encoder, &memory, &size);
    encoder.image_width = kBands * kBandWidth;
    encoder.image_height = kBandWidth;
    encoder.input_components = 4;
    encoder.in_color_space = JCS_CMYK;
    jpeg_set_defaults(&encoder);
    jpeg_set_colorspace(&encoder, storage.space);
    jpeg_set_quality(&encoder, 100, TRUE);
    encoder.write_Adobe_marker = storage.hasMarker ? TRUE : FALSE;
    jpeg_start_compress(&encoder, TRUE);
    if (!profile.empty()) {
        constexpr std::string_view kName("ICC_PROFILE\0\1\1", 14);
        std::vector<unsigned char> segment(kName.begin(), kName.end());
        segment.insert(segment.end(), profile.begin(), profile.end());
        jpeg_write_marker(&encoder, JPEG_APP0 + 2, segment.data(),
                          static_cast<unsigned int>(segment.size()));
    }
    const std::uint8_t none = storage.hasMarker ? 255 : 0;
    Bytes row(std::size_t{4} * encoder.image_width, none);
    for (std::size_t x = kBandWidth; x < encoder.image_width; ++x) {
        row[4 * x + x / kBandWidth - 1] = static_cast<std::uint8_t>(255 - none);
    }
    JSAMPROW rows = row.data();
    while (encoder.next_scanline < encoder.image_height) {
        jpeg_write_scanlines(&encoder, &rows, 1);
    }
    jpeg_finish_compress(&encoder);
    jpeg_destroy_compress(&encoder);
    const std::vector<unsigned char> file(memory, memory + size);
    std::free(memory);
    return file;
}

TEST_F(FileFormats, InksOfJpegBecomeRgbHoweverTheyAreStored) {
    for (const InkStorage& storage :
         {InkStorage{JCS_CMYK, true}, InkStorage{JCS_YCCK, true}, InkStorage{JCS_CMYK, false}}) {
        writeBytes(at("in.jpg"), inkJpeg(storage, pressProfile()));
        for (const std::string name : {"out.png", "out.jpg"}) {
            SCOPED_TRACE(name + (storage.hasMarker ? " marker " : " ") +
                         std::to_string(storage.space));
            expectCopied("in.jpg", name);
            ImageSpec spec;
            const auto samples = readPicture<std::uint8_t>(at(name), spec);
            ASSERT_EQ(spec.nchannels, 3);
            ASSERT_EQ(spec.width, 5 * static_cast<int>(kBandWidth));
            EXPECT_EQ(spec.find_attribute("ICCProfile"), nullptr);
            const auto band = [&](std::size_t index) {
                return &samples[3 * (index * kBandWidth + kBandWidth / 2)];
            };
            // The inks of the profile: without cyan, the colour has no red; and so on.
            for (std::size_t c = 0; c < 3; ++c) {
                EXPECT_GE(band(0)[c], 245);
                EXPECT_LE(band(4)[c], 10);
            }
            EXPECT_LT(band(1)[0] + 60, band(1)[1]);
            EXPECT_GT(band(2)[0], band(2)[1] + 60);
            EXPECT_GT(band(3)[1], band(3)[2] + 60);
        }
    }
}

TEST_F(FileFormats, InksOfJpegWithoutTheirProfileAreRefused) {
    for (const bool hasMarker : {false, true}) {
        writeBytes(at("bare.jpg"), inkJpeg({JCS_CMYK, hasMarker}, {}));
        expectRefused("bare.jpg", "none.png", "CMYK picture without a colour profile");
        writeBytes(at("rgb.jpg"), inkJpeg({JCS_CMYK, hasMarker}, vel::test::minimalProfile()));
        expectRefused("rgb.jpg", "none.png", "does not describe CMYK inks");
    }
}

} // namespace
