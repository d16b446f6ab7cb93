#pragma once

#include "hosts/command/kernels/BlurKernel.h"
#include "hosts/command/pictures/ImageFile.h"
#include "tests/support/BlurredPicture.h"
#include "tests/support/RunProgram.h"
#include "tests/support/TemporaryFolder.h"

#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace vel::test {

/// Tests that run `velorn` as a process on files of a temporary folder.
class CommandProcess : public testing::Test {
protected:
    /// The path of a file of the folder.
    std::string at(const std::string& name) const { return (m_folder / name).string(); }

    /// Runs `velorn WORDS...`.
    static ProgramResult run(std::vector<std::string> words,
                             const std::function<void()>& inChild = {}) {
        words.insert(words.begin(), VELORN_PROGRAM);
        return runProgram(words, inChild);
    }

    /// Writes `pixels`, which have 8 bits.
    void write(const std::string& name, const velorn::RgbPixels& pixels) const {
        velorn::ImageFile picture(pixels.width, pixels.height, 3, 8);
        picture.setRgb(pixels);
        writeBytes(at(name), picture.encode(name));
    }

    TemporaryFolder m_folder;
};

/// `sharp` blurred by a disc of `radius`.
inline velorn::RgbPixels outOfFocus(const velorn::RgbPixels& sharp, float radius) {
    return blurred(sharp, velorn::makeKernel({velorn::AnalyticBlur::Shape::Disc, radius, 0.0f}));
}

} // namespace vel::test
