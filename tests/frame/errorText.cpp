// The error text, tested through the shared library.
#include "tests/frame/DeblurCalls.h"

#include <cstring>
#include <string>

namespace {

using namespace vel::test;

class ErrorText : public DeblurCalls {
protected:
    /// Fails with a text of 42 characters.
    int32_t failWithALongText() {
        ImageRecord image = record();
        image.sourceStep = 1;
        return callWith(&image);
    }
    /// Fails with a text of 33 characters.
    int32_t failWithAShortText() { return callWith(nullptr); }

    ImageRecord record() { return {psC3U8, pixels.data, 24, target.data, 24, 8, 8}; }

    const std::string longText = "ornDeblurSharpen - step shorter than a row";
    const std::string shortText = "ornDeblurSharpen - image_p ==NULL";
    const cv::Mat pixels = flat(cv::Size(8, 8), 100);
    cv::Mat target = flat(cv::Size(8, 8), 0);

private:
    int32_t callWith(ImageRecord* image) {
        ProgressRecord silent{100, 100, nullptr, nullptr, 0};
        KernelRecord kernel = sides(1, 1);
        return call(&silent, image, &kernel, {});
    }
};

TEST_F(ErrorText, ShorterTextKeepsOneStaleCharacterOfTheTextBefore) {
    ASSERT_EQ(failWithALongText(), VELORN_TEXT_FAILURE);
    ASSERT_EQ(std::string(errorMessage()).substr(0, longText.size()), longText);
    ASSERT_EQ(failWithAShortText(), VELORN_TEXT_FAILURE);
    EXPECT_EQ(errorMessage(), shortText + longText[shortText.size()]);
}

TEST_F(ErrorText, NextGuardedCallClearsTheText) {
    ASSERT_EQ(failWithAShortText(), VELORN_TEXT_FAILURE);
    ASSERT_STRNE(errorMessage(), "");
    EXPECT_EQ(run(pixels, target, sides(1, 1), {}), VELORN_OK);
    EXPECT_STREQ(errorMessage(), "");
}

TEST_F(ErrorText, NextGuardedCallClearsTheTextBeforeItCallsBack) {
    ASSERT_EQ(failWithAShortText(), VELORN_TEXT_FAILURE);
    struct Reader {
        decltype(getErrMsg)* errorMessage;
        std::size_t longest = 0;
    } reader{errorMessage};
    ProgressRecord progress{100, 100,
                            [](int32_t, int32_t, void* userData) -> int32_t {
                                auto& self = *static_cast<Reader*>(userData);
                                self.longest =
                                    std::max(self.longest, std::strlen(self.errorMessage()));
                                return 1;
                            },
                            &reader, 0};
    EXPECT_EQ(run(pixels, target, sides(1, 1), {}, &progress), VELORN_OK);
    EXPECT_EQ(reader.longest, 0u);
}

/// Makes refused calls from inside the callback and notes the text after each.
struct RefusedCalls {
    decltype(ornDeblurSharpen)* deblurSharpen;
    decltype(ornBlurEstimate)* blurEstimate;
    decltype(ornCreateKernel)* createKernel;
    char* text;
    std::vector<std::string> textsAfter;

    /// A running call has no text of its own, therefore the test plants one.
    template <class Call>
    void refuse(const Call& call) {
        std::strcpy(text, "planted");
        EXPECT_EQ(call(), VELORN_OK);
        textsAfter.emplace_back(text);
    }
    static int32_t callBack(int32_t, int32_t, void* userData) {
        auto& self = *static_cast<RefusedCalls*>(userData);
        self.refuse([&] {
            return self.deblurSharpen(nullptr, nullptr, nullptr, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0);
        });
        self.refuse([&] { return self.blurEstimate(nullptr, nullptr, nullptr, 0); });
        self.refuse([&] { return self.createKernel(0, 1.0f, 0.0f, nullptr); });
        return 1;
    }
};

TEST_F(ErrorText, RefusedCallClearsTheTextOfTheRunningOne) {
    RefusedCalls refused{deblurSharpen,
                         VELORN_FIND(library, ornBlurEstimate),
                         createKernel,
                         const_cast<char*>(errorMessage()),
                         {}};
    ProgressRecord progress{100, 100, &RefusedCalls::callBack, &refused, 0};
    EXPECT_EQ(run(pixels, target, sides(1, 1), {}, &progress), VELORN_OK);
    // Five callbacks of three refused calls.
    EXPECT_EQ(refused.textsAfter, std::vector<std::string>(15));
    EXPECT_STREQ(errorMessage(), "");
    EXPECT_EQ(largestDifference(pixels, target), 0);
}

} // namespace
