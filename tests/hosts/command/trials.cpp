// Runs `velorn try`, and compares its tiles with what `velorn deblur` makes of the whole picture.
#include "tests/hosts/command/CommandProcess.h"
#include "tests/support/TestPictures.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <optional>
#include <regex>
#include <sstream>

namespace {

using Bytes = std::vector<std::uint8_t>;
using vel::test::ProgramResult;
using vel::test::readPicture;

const std::string kProgram = VELORN_PROGRAM;

/// 8-bit pixels of three channels.
struct Pixels {
    int width = 0;
    int height = 0;
    Bytes samples;

    const std::uint8_t* at(int x, int y) const {
        return &samples[3 * (static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                             static_cast<std::size_t>(x))];
    }
    Pixels part(int x, int y, int partWidth, int partHeight) const {
        Pixels result{partWidth, partHeight, {}};
        for (int r = y; r < y + partHeight; ++r) {
            result.samples.insert(result.samples.end(), at(x, r), at(x, r) + 3 * partWidth);
        }
        return result;
    }
};

struct Place {
    int x;
    int y;
};

bool isAt(const Pixels& sheet, const Pixels& tile, Place place) {
    for (int y = 0; y < tile.height; ++y) {
        const std::uint8_t* row = tile.at(0, y);
        if (!std::equal(row, row + 3 * tile.width, sheet.at(place.x, place.y + y))) {
            return false;
        }
    }
    return true;
}

/// The first place after `last`, row by row, where the sheet shows exactly these pixels.
std::optional<Place> placeOf(const Pixels& tile, const Pixels& sheet, Place last = {-1, 0}) {
    for (int y = last.y; y + tile.height <= sheet.height; ++y) {
        for (int x = y == last.y ? last.x + 1 : 0; x + tile.width <= sheet.width; ++x) {
            if (isAt(sheet, tile, {x, y})) {
                return Place{x, y};
            }
        }
    }
    return std::nullopt;
}

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}

class Trials : public vel::test::CommandProcess {
protected:
    void writeSoft(const std::string& name, int width, int height, int orientation = 1) {
        const auto soft = vel::test::outOfFocus(vel::test::drawnPicture(width, height), 3.0f);
        OIIO::ImageSpec spec(width, height, 3, OIIO::TypeDesc::UINT8);
        spec.attribute("Orientation", orientation);
        vel::test::writePicture(at(name), spec, std::get<Bytes>(soft.samples));
    }

    Pixels read(const std::string& name) const {
        OIIO::ImageSpec spec;
        Bytes samples = readPicture<std::uint8_t>(at(name), spec);
        return {spec.width, spec.height, std::move(samples)};
    }

    /// Runs the command line that `line` of the output gives, in a shell, and reads the result.
    Pixels restoredBy(const std::string& line, const std::string& name) const {
        std::string command = line.substr(line.find("velorn deblur"));
        command.replace(0, std::string("velorn").size(), kProgram);
        command.replace(command.find(" OUT "), 5, " '" + at(name) + "' ");
        const ProgramResult result = vel::test::runProgram({"/bin/sh", "-c", command});
        EXPECT_EQ(result.exitStatus, 0) << command << '\n' << result.errors;
        return read(name);
    }

    /// Tries, with a region of 90 by 60 pixels at (40, 30) of soft.png, and checks that the sheet
    /// shows that part as it is, and then what each printed command line makes of it.
    /// @return the printed lines about tiles
    std::vector<std::string> expectTilesOfWhole(std::vector<std::string> words) const {
        const std::vector<std::string> start{"try",           at("soft.png"), "-o",
                                             at("sheet.png"), "--region",     "40,30,90,60"};
        words.insert(words.begin(), start.begin(), start.end());
        const ProgramResult result = run(words);
        EXPECT_EQ(result.exitStatus, 0) << result.errors;
        auto lines = linesOf(result.output);
        EXPECT_EQ(lines.at(0), "region:  40,30,90,60");
        lines.erase(lines.begin());
        const Pixels sheet = read("sheet.png");
        auto last = placeOf(read("soft.png").part(40, 30, 90, 60), sheet);
        EXPECT_TRUE(last);
        for (const std::string& line : lines) {
            const Pixels part = restoredBy(line, "restored.png").part(40, 30, 90, 60);
            last = placeOf(part, sheet, last.value_or(Place{sheet.width, sheet.height}));
            EXPECT_TRUE(last) << line;
        }
        return lines;
    }
};

TEST_F(Trials, StrengthsAreThoseOfRestorationsOfTheWholePicture) {
    writeSoft("soft.png", 200, 150);
    const auto lines = expectTilesOfWhole({"--disc", "3"});
    ASSERT_EQ(lines.size(), 5u);
    EXPECT_TRUE(std::regex_match(lines[2],
                                 std::regex("tile 3:  .* --disc 3  # automatic strength: [0-9]+")))
        << lines[2];
    for (const std::size_t i : {0u, 1u, 3u, 4u}) {
        EXPECT_NE(lines[i].find(" --lambda "), std::string::npos) << lines[i];
    }
}

TEST_F(Trials, SettingsApplyToAllTilesAndAppearInTheirWords) {
    writeSoft("soft.png", 200, 150);
    const auto lines =
        expectTilesOfWhole({"--gaussian", "1.5", "--strengths", "auto/2,1500", "--sharpen",
                            "--light", "display", "--keep-clipped", "--detail", "0.1"});
    ASSERT_EQ(lines.size(), 2u);
    for (const std::string& line : lines) {
        EXPECT_NE(line.find("--sharpen 0.3,1.2 --detail 0.1"), std::string::npos) << line;
        EXPECT_NE(line.find("--light display --keep-clipped"), std::string::npos) << line;
    }
    EXPECT_NE(lines[1].find("--lambda 1500 "), std::string::npos);
}

TEST_F(Trials, QualityIsTheSameForAllStrengths) {
    writeSoft("soft.png", 200, 150);
    const auto usual = expectTilesOfWhole({"--disc", "3", "--strengths", "auto,2auto"});
    EXPECT_EQ(usual[0].find("--quality"), std::string::npos);
    EXPECT_NE(usual[1].find(" --quality normal"), std::string::npos);
    // This preset uses the deconvolution alone.
    const auto fast =
        expectTilesOfWhole({"--disc", "3", "--strengths", "auto,2auto", "--preset", "motion"});
    EXPECT_EQ(fast[1].find("--quality"), std::string::npos);
    const auto given =
        expectTilesOfWhole({"--disc", "3", "--strengths", "auto,2auto", "--quality", "best"});
    EXPECT_NE(given[1].find(" --quality best"), std::string::npos);
    EXPECT_EQ(given[1].find(" --quality normal"), std::string::npos);
}

TEST_F(Trials, QualityOfTheFileKeepsThatOfTheRestoration) {
    writeSoft("soft.png", 200, 150);
    const auto lines =
        expectTilesOfWhole({"--disc", "3", "--strengths", "auto,2auto", "--quality", "90"});
    EXPECT_NE(lines[1].find(" --quality normal,90"), std::string::npos) << lines[1];
}

TEST_F(Trials, LimitOfPixelsAppearsInTheWords) {
    writeSoft("soft.png", 200, 150);
    const auto lines =
        expectTilesOfWhole({"--disc", "3", "--strengths", "auto", "--max-pixels", "30000"});
    EXPECT_NE(lines[0].find(" --max-pixels 30000"), std::string::npos) << lines[0];
}

TEST_F(Trials, SeriesOfBlursHasTheAutomaticStrengthOfEach) {
    writeSoft("soft.png", 200, 150);
    ASSERT_EQ(run({"kernel", "disc", "3", "-o", at("a kernel.txt")}).exitStatus, 0);
    const auto lines =
        expectTilesOfWhole({"--disc", "2,3.5", "--gaussian", "1.5", "--motion", "5,30", "--motion",
                            "7,-30.5", "--kernel", at("a kernel.txt"), "--disc", "4"});
    ASSERT_EQ(lines.size(), 7u);
    const std::vector<std::string> blurs{"--gaussian 1.5",
                                         "--disc 2",
                                         "--disc 3.5",
                                         "--disc 4",
                                         "--motion 5,30",
                                         "--motion 7,-30.5",
                                         "--kernel '" + at("a kernel.txt") + "'"};
    for (std::size_t i = 0; i < blurs.size(); ++i) {
        EXPECT_NE(lines[i].find(" OUT " + blurs[i] + "  # automatic strength: "), std::string::npos)
            << lines[i];
    }
}

TEST_F(Trials, SeriesOfBlursCanHaveStrengths) {
    writeSoft("soft.png", 200, 150);
    const auto lines = expectTilesOfWhole({"--disc", "2,3", "--strengths", "3auto,auto"});
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_NE(lines[0].find(" --disc 2 --lambda "), std::string::npos);
    EXPECT_NE(lines[3].find(" --disc 3  # automatic"), std::string::npos);
}

TEST_F(Trials, BlindTrialsShowAllCandidates) {
    writeSoft("soft.png", 200, 150);
    const auto lines = expectTilesOfWhole({"--blind"});
    ASSERT_GE(lines.size(), 2u);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        EXPECT_NE(lines[i].find(" --blind --candidate " + std::to_string(i + 1) + "  # "),
                  std::string::npos)
            << lines[i];
        EXPECT_NE(lines[i].find("confidence "), std::string::npos);
    }
}

TEST_F(Trials, BlindTrialsOfStrengthsShowOneCandidate) {
    writeSoft("soft.png", 200, 150);
    const auto lines =
        expectTilesOfWhole({"--blind", "9", "--candidate", "2", "--strengths", "auto,3000"});
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_NE(lines[1].find(" --blind 9 --candidate 2 --lambda 3000 "), std::string::npos)
        << lines[1];
}

TEST_F(Trials, TilesAreUprightAndTheRegionRefersToThePictureAsDisplayed) {
    writeSoft("soft.tif", 200, 150, 6);
    const ProgramResult result = run({"try", at("soft.tif"), "-o", at("sheet.png"), "--region",
                                      "20,50,60,90", "--motion", "5,20", "--strengths", "2000"});
    ASSERT_EQ(result.exitStatus, 0) << result.errors;
    const Pixels stored = restoredBy(linesOf(result.output).at(1), "restored.tif");
    // The top row as stored is displayed at the right.
    Pixels displayed{60, 90, {}};
    for (int y = 50; y < 50 + 90; ++y) {
        for (int x = 20; x < 20 + 60; ++x) {
            const std::uint8_t* pixel = stored.at(y, stored.height - 1 - x);
            displayed.samples.insert(displayed.samples.end(), pixel, pixel + 3);
        }
    }
    EXPECT_TRUE(placeOf(displayed, read("sheet.png")));
}

TEST_F(Trials, RegionIsChosenByTexture) {
    const auto drawn = vel::test::drawnPicture(640, 440);
    velorn::ImageFile picture(1500, 1000, 3, 8);
    auto& samples = std::get<Bytes>(picture.samples());
    for (int y = 0; y < 440; ++y) {
        const auto* row = &std::get<Bytes>(drawn.samples)[static_cast<std::size_t>(3 * 640 * y)];
        std::copy(row, row + 3 * 640,
                  &samples[static_cast<std::size_t>(3 * (1500 * (500 + y) + 800))]);
    }
    vel::test::writeBytes(at("in.png"), picture.encode(at("in.png")));
    const ProgramResult result =
        run({"try", at("in.png"), "-o", at("sheet.png"), "--disc", "3", "--strengths", "2000"});
    ASSERT_EQ(result.exitStatus, 0) << result.errors;
    std::smatch found;
    const std::string first = linesOf(result.output).at(0);
    ASSERT_TRUE(std::regex_match(first, found, std::regex("region:  (\\d+),(\\d+),600,400")));
    EXPECT_NEAR(std::stoi(found[1]), 820, 32);
    EXPECT_NEAR(std::stoi(found[2]), 520, 32);
}

TEST_F(Trials, SheetHasTheProfileOfThePicture) {
    OIIO::ImageSpec spec(64, 48, 3, OIIO::TypeDesc::UINT8);
    const auto profile = vel::test::minimalProfile();
    vel::test::attachProfile(spec, profile);
    vel::test::writePicture(at("in.png"), spec, vel::test::variedSamples<std::uint8_t>(spec));
    const ProgramResult result =
        run({"try", at("in.png"), "-o", at("sheet.png"), "--disc", "2", "--strengths", "500"});
    ASSERT_EQ(result.exitStatus, 0) << result.errors;
    EXPECT_EQ(velorn::ImageFile::read(at("sheet.png")).profile(), profile);
}

TEST_F(Trials, InterruptsLeaveNoFile) {
    velorn::ImageFile picture(1500, 1200, 1, 8);
    vel::test::writeBytes(at("in.png"), picture.encode(at("in.png")));
    const ProgramResult result = vel::test::runOnTerminal(
        {kProgram, "try", at("in.png"), "-o", at("sheet.png"), "--disc", "3"}, SIGINT);
    EXPECT_EQ(result.exitStatus, 130);
    EXPECT_EQ(m_folder.fileCount(), 1u);
}

TEST_F(Trials, FailuresSayWhatIsWrongAndLeaveNoSheet) {
    writeSoft("soft.png", 200, 150);
    struct Case {
        std::vector<std::string> words;
        int exitStatus;
        const char* text;
    };
    const std::vector<Case> cases{
        {{"--disc", "3", "--region", "140,30,90,60"},
         1,
         "--region 140,30,90,60 is not inside of the picture, which is 200 by 150 pixels"},
        {{"--disc", "3", "--region", "10,10,5,60"}, 2, "W and H must be at least 16"},
        {{"--disc", "3", "--region", "10,-1,50,60"}, 2, "X and Y must be at least 0"},
        {{}, 2, "try needs one of --gaussian, --disc, --motion, --kernel and --blind"},
        {{"--blind", "--disc", "3"}, 2, "--blind excludes"},
        {{"--disc", "3", "--strengths", "some"}, 2, "--strengths must be a list"},
        {{"--disc", "3", "--strengths", "auto", "--lambda", "5"}, 2, "exclude each other"},
        {{"--disc", "3,900"}, 2, "--disc must be from 0.1 to 255 pixels"},
        {{"--motion", "12"}, 2, "--motion needs a length and an angle"},
        {{"--disc", "0.1"}, 1, "strengths have no effect with --disc 0.1"},
        {{"--disc", "3", "--candidate", "2"}, 2, "--candidate"},
        {{"--kernel", at("none.txt")}, 1, "none.txt"},
        {{"--disc", "3", "--max-pixels", "29999"},
         1,
         "200 by 150 pixels, more than --max-pixels 29999"},
        {{"--blind", "--candidate", "32"}, 1, "there is no candidate 32"},
    };
    for (const Case& one : cases) {
        std::vector<std::string> words{"try", at("soft.png"), "-o", at("sheet.png")};
        words.insert(words.end(), one.words.begin(), one.words.end());
        const ProgramResult result = run(words);
        EXPECT_EQ(result.exitStatus, one.exitStatus) << one.text;
        EXPECT_EQ(std::ranges::count(result.errors, '\n'), 1) << result.errors;
        EXPECT_NE(result.errors.find(one.text), std::string::npos) << result.errors;
        EXPECT_EQ(m_folder.fileCount(), 1u);
    }
    EXPECT_EQ(run({"try", at("soft.png"), "--disc", "3"}).exitStatus, 2);
    EXPECT_EQ(run({"try", at("soft.png"), "--disc", "3", "-o", at("s.xyz")}).exitStatus, 1);
    EXPECT_EQ(m_folder.fileCount(), 1u);
}

} // namespace
