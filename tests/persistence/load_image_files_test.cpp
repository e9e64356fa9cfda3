#include <gtest/gtest.h>

#include <filesystem>

#include "series/series_name.h"
#include "support/ui_fixture.h"

namespace lumiquilt {
namespace {

using testing::UiTest;

class LoadImageFilesTest : public UiTest {
  protected:
    void SetUp() override {
        UiTest::SetUp();
        start();
        form().activateFirstTime();  // the silent first load is behind us
    }
    void load(const std::string& first) {
        setFileName(first);
        form().mnuLoad_Click();
    }
    int visibleIgnoreEntries() {
        int n = 0;
        for (QAction* entry : form().m.mnuignoreImage) {
            n += entry->isVisible();
        }
        return n;
    }
    void expectOneMessage(const std::string& text, const std::string& title) {
        ASSERT_EQ(ui.messages.size(), 1u);
        EXPECT_EQ(lastMessage().text, text);
        EXPECT_EQ(lastMessage().title, title);
        EXPECT_EQ(lastMessage().icon, MessageIcon::critical);
    }
};

TEST_F(LoadImageFilesTest, LoadsAndShowsTheSeries) {
    makeSeries("s", 4);
    load(dir.path("s1.png"));
    EXPECT_TRUE(ui.messages.empty());
    EXPECT_EQ(state.imageCount, 4);
    EXPECT_EQ(visiblePictureWindows(), 4);
    EXPECT_EQ(visibleIgnoreEntries(), 4);
    EXPECT_FLOAT_EQ(state.imageWidth, 40);
    EXPECT_FLOAT_EQ(state.imageHeight, 30);
    // Load keeps the completed name and adds nothing to the recent list.
    EXPECT_EQ(form().textFileName->text().toStdString(), dir.path("s1.png"));
    EXPECT_TRUE(form().recentFiles().at(0).empty());
    // The Window menu lists the four pictures.
    EXPECT_EQ(form().m.mnuWindow[4]->text().toStdString(), "Image 4 -- " + dir.path("s4.png"));
    EXPECT_TRUE(form().m.mnuWindow[4]->isVisible());
    EXPECT_FALSE(form().m.mnuWindow[5]->isVisible());
}

TEST_F(LoadImageFilesTest, IgnoreChecksSurviveALoadAndGoWithANewName) {
    makeSeries("s", 4);
    makeSeries("t", 2);
    load(dir.path("s1.png"));
    form().m.mnuignoreImage[2]->trigger();
    EXPECT_TRUE(form().m.mnuignoreImage[2]->isChecked());
    form().mnuLoad_Click();  // same name: the check stays
    EXPECT_TRUE(form().m.mnuignoreImage[2]->isChecked());
    // A series of two hides the entries of images 3 and 4 and their windows.
    load(dir.path("t1.png"));
    EXPECT_FALSE(form().m.mnuignoreImage[2]->isChecked());
    EXPECT_EQ(visibleIgnoreEntries(), 2);
    EXPECT_EQ(visiblePictureWindows(), 2);
}

TEST_F(LoadImageFilesTest, NameWithoutADigitOrWithTooLargeANumberIsRefused) {
    // The too-large text is Create Image's too; the no-digit text is Load's own.
    const std::pair<const char*, std::string> rows[] = {
        {"plain.png",
         "You must have a number as the last letter in the file name,  eg c:\\myfile1.bmp, or "
         "c:\\myotherfile6"},
        {"n40000.png", kNumberTooLargeMessage},
    };
    for (const auto& [name, text] : rows) {
        SCOPED_TRACE(name);
        ui.messages.clear();
        testing::savePictureFile(testing::patternPicture(8, 8, 1), dir.path(name));
        load(dir.path(name));
        expectOneMessage(text, kNoDigitTitle);
        EXPECT_EQ(state.imageCount, 0);
    }
}

TEST_F(LoadImageFilesTest, BareNameIsLookedForInTheProgramsFolderWithBmp) {
    testing::savePictureFile(testing::patternPicture(8, 8, 1), dir.path("pic1.bmp"));
    load("pic1");
    EXPECT_TRUE(ui.messages.empty());
    EXPECT_EQ(form().textFileName->text().toStdString(), dir.path("pic1.bmp"));
    EXPECT_EQ(state.imageCount, 1);
}

TEST_F(LoadImageFilesTest, RecentEntryLoadsAndMovesToTheHeadAndAVanishedOneIsEmptiedInPlace) {
    makeSeries("a", 2);
    makeSeries("b", 1);
    form().addRecentFile(dir.path("a1.png"));
    form().addRecentFile(dir.path("b1.png"));
    form().mnuRecentFile_Click(1);
    EXPECT_EQ(state.imageCount, 2);
    EXPECT_EQ(form().recentFiles().at(0), dir.path("a1.png"));
    EXPECT_EQ(form().recentFiles().at(1), dir.path("b1.png"));

    std::filesystem::remove(dir.path("b1.png"));
    form().mnuRecentFile_Click(1);
    ASSERT_EQ(ui.messages.size(), 1u);
    EXPECT_EQ(lastMessage().text, kFileMissingMessage);
    EXPECT_TRUE(form().recentFiles().at(1).empty());
    EXPECT_EQ(form().recentFiles().at(0), dir.path("a1.png"));
    EXPECT_EQ(settings->readKey("recent file 1"), "");
    EXPECT_FALSE(form().m.mnuRecentFile[1]->isVisible());
}

TEST_F(LoadImageFilesTest, AFileThatIsNoPictureEndsTheSeriesSilently) {
    testing::writeBytes(dir.path("x1.png"), "not a picture");
    load(dir.path("x1.png"));
    EXPECT_TRUE(ui.messages.empty());
    EXPECT_EQ(state.imageCount, 0);
    EXPECT_EQ(visiblePictureWindows(), 0);
    EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);

    makeSeries("c", 4);
    testing::writeBytes(dir.path("c3.png"), "corrupt");
    load(dir.path("c1.png"));
    EXPECT_TRUE(ui.messages.empty());
    EXPECT_EQ(state.imageCount, 2);
}

TEST_F(LoadImageFilesTest, MoreThanThirtyFilesTellsOnceAndShowsNothing) {
    makeSeries("m", 32, 4, 4);
    load(dir.path("m1.png"));
    expectOneMessage(tooManyPicturesMessage(), kTooManyPicturesTitle);
    EXPECT_EQ(state.imageCount, 30);
    EXPECT_EQ(visiblePictureWindows(), 0);
}

TEST_F(LoadImageFilesTest, BrowseCancelChangesNothingAndAnAnswerLoads) {
    makeSeries("s", 2);
    setFileName("/keep/me1.jpg");
    form().CommandBrowse_Click();
    ASSERT_EQ(ui.fileRequests.size(), 1u);
    EXPECT_EQ(ui.fileRequests[0].fileName, "/keep/me1.jpg");
    EXPECT_EQ(form().textFileName->text(), "/keep/me1.jpg");
    EXPECT_EQ(state.imageCount, 0);

    ui.fileAnswers.push_back(dir.path("s1.png"));
    form().m.mnuOpen->trigger();
    EXPECT_EQ(state.imageCount, 2);
}

}  // namespace
}  // namespace lumiquilt
