#include "core/startup.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <tuple>

#include "support/ui_fixture.h"

namespace lumiquilt {
namespace {

using testing::UiTest;

class StartupTest : public UiTest {
  protected:
    void putSettings(const std::string& content) {
        testing::writeBytes(dir.path("Lumiquilt.ini"), "[preferences]\n" + content);
    }
};

TEST_F(StartupTest, BareStartTakesTheDefaultsWritesNothingAndClosingEndsTheProgram) {
    int splash = 0;
    hooks.showSplash = [&] { ++splash; };
    start();
    EXPECT_EQ(splash, 1);
    EXPECT_EQ(form().textFileName->text().toStdString(), kDesignFileName);
    EXPECT_EQ(form().TextIncrement->text(), "0");
    EXPECT_TRUE(form().m.mnusimpleCol[0]->isChecked());
    EXPECT_TRUE(form().m.mnuActivateOffsetsSame->isChecked());
    EXPECT_EQ(state.markGrabX, -999);
    form().activateFirstTime();
    EXPECT_TRUE(ui.messages.empty());
    EXPECT_EQ(visiblePictureWindows(), 0);
    EXPECT_EQ(state.firstLoadAfterStart, kFalse);
    EXPECT_EQ(state.loadOnActivate, kFalse);
    EXPECT_FALSE(std::filesystem::exists(dir.path("Lumiquilt.ini")));
    form().close();
    EXPECT_TRUE(ended);
}

TEST_F(StartupTest, FileAndIncrementFromTheCommandLine) {
    // .png is handed to the desktop; the program takes .jpg, .bmp and .gif.
    testing::savePictureFile(testing::patternPicture(40, 30, 1), dir.path("shot1.jpg"));
    testing::savePictureFile(testing::patternPicture(40, 30, 2), dir.path("shot2.jpg"));
    start({dir.path("shot1.jpg"), "-i20"});
    ASSERT_TRUE(window);
    EXPECT_EQ(form().textFileName->text().toStdString(), dir.path("shot1.jpg"));
    EXPECT_EQ(form().TextIncrement->text(), "20");
    form().activateFirstTime();
    EXPECT_TRUE(ui.messages.empty());
    EXPECT_EQ(state.imageCount, 2);
    EXPECT_EQ(visiblePictureWindows(), 2);
    EXPECT_EQ(form().pictureWindow(2)->Caption().toStdString(),
              "Image 2 -- " + dir.path("shot2.jpg"));
    // The cascade: 20 pixels apart.
    EXPECT_EQ(form().pictureWindow(2)->x() - form().pictureWindow(1)->x(), 20);
    EXPECT_EQ(form().pictureWindow(1)->size(), QSize(40, 30));
}

TEST_F(StartupTest, IncrementSwitchAloneLeavesTheFileToTheSettings) {
    putSettings("filename=  /some/where/x1.bmp  \nIncrement=35\n");
    start({"-i30"});
    EXPECT_EQ(form().textFileName->text(), "/some/where/x1.bmp");
    EXPECT_EQ(form().TextIncrement->text(), "30");
}

TEST_F(StartupTest, MissingCommandLineFileIsReportedAndItsSwitchesLost) {
    putSettings("Increment= 25 \n");
    start({"/no/such/scene1.jpg", "-i20"});
    ASSERT_EQ(ui.messages.size(), 1u);
    EXPECT_EQ(lastMessage().text,
              "I am sorry, but I cannot find the file that is on the Shortcut or Command Line "
              "used to call this  'Lumiquilt'  program.");
    EXPECT_EQ(lastMessage().title, "The command line was /no/such/scene1.jpg");
    EXPECT_EQ(lastMessage().icon, MessageIcon::exclamation);
    EXPECT_EQ(form().TextIncrement->text(), "25");
    EXPECT_TRUE(state.commandLine.empty());
}

TEST_F(StartupTest, OtherFilesAreHandedToTheDesktop) {
    for (const char* name : {"project.mon", "photo1.jpeg", "photo1.png"}) {
        testing::writeBytes(dir.path(name), "x");
        ui.opened.clear();
        start({dir.path(name)});
        EXPECT_TRUE(handedToDesktop) << name;
        EXPECT_FALSE(window) << name;
        ASSERT_EQ(ui.opened.size(), 1u);
        EXPECT_EQ(ui.opened[0], dir.path(name));
    }
}

TEST_F(StartupTest, SettingsAreReadIntoTheirPlaces) {
    putSettings(
        "Montage method=3\nautoSmooth=1\nedgeFactor=29\nfocusFactor=10\ndiffFactor=100\n"
        "edgefactor2=4\nrightmouse=7\nOriginating image=1\nrecent file 0=/a/one1.jpg\n"
        "recent file 1=0\nrecent file 2=/a/three1.jpg\nTarget color=255\n");
    start();
    EXPECT_TRUE(form().m.mnusimpleCol[3]->isChecked());
    EXPECT_FALSE(form().m.mnusimpleCol[0]->isChecked());
    EXPECT_EQ(std::tuple(state.autoSmooth, state.edgeFactor, state.focusFactor, state.diffFactor,
                         state.edgefactor2, state.rightMouseEnabled, state.showUsedWindow),
              std::tuple(1, 0.29f, 0.1f, 100, 0.4f, 1, 1));
    EXPECT_EQ(form().m.mnuRecentFile[0]->text(), "/a/one1.jpg");
    EXPECT_FALSE(form().m.mnuRecentFile[1]->isVisible());
    EXPECT_EQ(form().m.mnuRecentFile[2]->text(), "/a/three1.jpg");
    EXPECT_EQ(form().targetColor(), 255u);
}

TEST_F(StartupTest, LoadImagesKeyRunsAnEarlySilentLoad) {
    putSettings("Load images=1\nfilename=/no/such/place1.jpg\n");
    start();
    EXPECT_TRUE(ui.messages.empty());
    EXPECT_EQ(state.firstLoadAfterStart, kFalse);
    // The first activation now reports the missing file.
    form().activateFirstTime();
    ASSERT_EQ(ui.messages.size(), 1u);
    EXPECT_EQ(lastMessage().text, "So very sorry, but I can't find that file.");
}

TEST_F(StartupTest, ResolutionSwitchScalesTheWindows) {
    start({"-resolution800x600"});
    EXPECT_DOUBLE_EQ(state.scaleX, 800.0 / 1024 * state.twipsPerPixel / 15);
    EXPECT_DOUBLE_EQ(state.scaleY, 600.0 / 768 * state.twipsPerPixel / 15);
}

}  // namespace
}  // namespace lumiquilt
