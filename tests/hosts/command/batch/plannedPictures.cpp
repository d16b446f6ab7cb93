#include "hosts/command/batch/plannedPictures.h"

#include "hosts/command/terminal/Failure.h"
#include "tests/hosts/command/failureText.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;
using vel::test::TemporaryFolder;
using vel::test::writeText;
using velorn::Existing;
using velorn::OutputName;
using velorn::PlannedPicture;
using velorn::plannedPictures;
using velorn::UsageFailure;

class PlannedPictures : public testing::Test {
protected:
    PlannedPictures() {
        for (const char* name : {"a/2.jpg", "a/1.PNG", "a/notes.txt", "a/.hidden.jpg", "b/1.PNG"}) {
            write(name);
        }
        fs::create_directory(m_folder / "a/folder.jpg");
    }

    void write(const std::string& name) {
        fs::create_directories((m_folder / name).parent_path());
        writeText(m_folder / name, "x");
    }

    std::vector<PlannedPicture> planned(const std::vector<std::string>& inputs,
                                        const std::string& folder = "out",
                                        const std::string& name = OutputName::kDefault,
                                        Existing existing = Existing::Replace) const {
        std::vector<fs::path> paths;
        for (const std::string& input : inputs) {
            paths.push_back(m_folder / input);
        }
        return plannedPictures({paths, m_folder / folder, OutputName(name), existing});
    }

    std::string refusalOf(const std::vector<std::string>& inputs, const std::string& folder,
                          const std::string& name = OutputName::kDefault,
                          Existing existing = Existing::Replace) const {
        return vel::test::failureText<UsageFailure>(
            [&] { planned(inputs, folder, name, existing); });
    }

    TemporaryFolder m_folder;
};

TEST_F(PlannedPictures, FolderGivesItsPicturesByName) {
    const auto plan = planned({"a"});
    ASSERT_EQ(plan.size(), 2u);
    EXPECT_EQ(plan[0].files.input, m_folder / "a/1.PNG");
    EXPECT_EQ(plan[0].files.output, m_folder / "out/1.PNG");
    EXPECT_EQ(plan[1].files.input, m_folder / "a/2.jpg");
    EXPECT_FALSE(plan[0].failure || plan[0].isSkipped);
}

TEST_F(PlannedPictures, FolderWithoutPicturesFails) {
    fs::create_directory(m_folder / "empty");
    const auto plan = planned({"empty", "a/2.jpg"});
    ASSERT_EQ(plan.size(), 2u);
    EXPECT_NE(plan[0].failure.value_or("").find("no pictures"), std::string::npos);
    EXPECT_FALSE(plan[1].failure);
}

TEST_F(PlannedPictures, EqualOutputsAreRefusedWithBothInputs) {
    const std::string refusal = refusalOf({"a/1.PNG", "b/1.PNG"}, "out");
    EXPECT_NE(refusal.find("a/1.PNG"), std::string::npos) << refusal;
    EXPECT_NE(refusal.find("b/1.PNG"), std::string::npos) << refusal;
    EXPECT_NE(refusalOf({"a", "a/2.jpg"}, "out").find("given twice"), std::string::npos);
    EXPECT_EQ(refusalOf({"a/1.PNG", "b/1.PNG"}, "out", "{stem}-{number}{ext}"), "");
}

TEST_F(PlannedPictures, OutputThatIsAnInputIsRefused) {
    EXPECT_NE(refusalOf({"a"}, "a").find("would replace"), std::string::npos);
    EXPECT_NE(refusalOf({"a"}, "a/../a").find("would replace"), std::string::npos);
    write("b/2.jpg");
    EXPECT_NE(refusalOf({"a/2.jpg", "b/1.PNG", "b/2.jpg"}, "b", "2.jpg").find("same output"),
              std::string::npos);
    write("c/0001.jpg");
    EXPECT_NE(refusalOf({"a/2.jpg", "c/0001.jpg"}, "c", "{number}{ext}").find("would replace"),
              std::string::npos);
    fs::create_symlink(m_folder / "a", m_folder / "link");
    EXPECT_NE(refusalOf({"a"}, "link").find("would replace"), std::string::npos);
    EXPECT_EQ(refusalOf({"a"}, "a", "{stem}-restored{ext}"), "");
}

TEST_F(PlannedPictures, ResultsInTheFolderOfTheInputsAreNoInputsWhenTheyStay) {
    write("a/2-restored.jpg");
    EXPECT_NE(refusalOf({"a"}, "a", "{stem}-restored{ext}"), "");
    const auto plan = planned({"a"}, "a", "{stem}-restored{ext}", Existing::Skip);
    ASSERT_EQ(plan.size(), 2u);
    EXPECT_FALSE(plan[0].isSkipped);
    EXPECT_EQ(plan[1].files.input, m_folder / "a/2.jpg");
    EXPECT_TRUE(plan[1].isSkipped);
}

TEST_F(PlannedPictures, ExistingOutputsAreReplacedSkippedOrRefused) {
    write("out/2.jpg");
    const auto replaced = planned({"a"});
    EXPECT_FALSE(replaced[1].failure || replaced[1].isSkipped);
    const auto skipped = planned({"a"}, "out", OutputName::kDefault, Existing::Skip);
    EXPECT_FALSE(skipped[0].isSkipped);
    EXPECT_TRUE(skipped[1].isSkipped);
    const auto refused = planned({"a"}, "out", OutputName::kDefault, Existing::Refuse);
    EXPECT_FALSE(refused[0].failure);
    EXPECT_NE(refused[1].failure.value_or("").find("--no-clobber"), std::string::npos);
}

TEST_F(PlannedPictures, ExtensionThatNoFormatHasIsRefusedOrFails) {
    EXPECT_NE(refusalOf({"a"}, "out", "{stem}.xyz").find("--name"), std::string::npos);
    EXPECT_NE(refusalOf({"a"}, "out", "{stem}").find("--name"), std::string::npos);
    const auto plan = planned({"a/notes.txt", "a/2.jpg"});
    EXPECT_NE(plan[0].failure.value_or("").find("notes.txt"), std::string::npos);
    EXPECT_FALSE(plan[1].failure);
}

} // namespace
