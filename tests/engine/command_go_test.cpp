#include <gtest/gtest.h>
#include <QTimer>

#include <filesystem>
#include <sstream>

#include "cli/cli_app.h"
#include "support/ui_fixture.h"

namespace lumiquilt {
namespace {

using testing::UiTest;

QImage rgb(const QImage& picture) {
    return picture.convertToFormat(QImage::Format_RGB888);
}

struct CliRun {
    int code;
    std::string out;
    std::string err;
};

CliRun cli(const std::vector<std::string>& args) {
    std::ostringstream out;
    std::ostringstream err;
    const int code = runCli(args, "/", out, err);
    return {code, out.str(), err.str()};
}

class CreateImageTest : public UiTest {
  protected:
    void SetUp() override {
        UiTest::SetUp();
        start();
        form().activateFirstTime();
    }
    void create(const std::string& first, const std::string& increment = "10") {
        setFileName(first);
        setIncrement(increment);
        form().CommandGo_Click();
    }
    QImage montage() { return rgb(form().montageWindow()->PictureFile->picture()); }
    void expectOneMessage(const std::string& text, const std::string& title, MessageIcon icon) {
        ASSERT_EQ(ui.messages.size(), 1u);
        EXPECT_EQ(lastMessage().text, text);
        EXPECT_EQ(lastMessage().title, title);
        EXPECT_EQ(lastMessage().icon, icon);
        EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
    }
};

TEST_F(CreateImageTest, MakesTheMontageAndItsReport) {
    makeSeries("s", 3);
    form().m.mnusimpleCol[2]->trigger();
    create("s1.png", "10");
    EXPECT_TRUE(ui.messages.empty()) << lastMessage().text;
    EXPECT_TRUE(form().montageWindow()->isVisible());
    EXPECT_EQ(montage().size(), QSize(40, 30));
    EXPECT_EQ(form().montageWindow()->Caption(), "Montage in focus image from s1.png");
    // The field returns to what the user typed; the settings get the completed name.
    EXPECT_EQ(form().textFileName->text(), "s1.png");
    EXPECT_EQ(settings->readKey("filename"), dir.path("s1.png"));
    EXPECT_EQ(form().recentFiles().at(0), "s1.png");
    EXPECT_NE(
        state.propertiesString.find("  Montage method used =2 (Average Color Difference)\r\n"),
        std::string::npos);
    // The Window menu lists the montage and the three pictures.
    EXPECT_TRUE(form().m.mnuWindow2[0]->isVisible());
    EXPECT_EQ(form().m.mnuWindow2[0]->text(), "Montage in focus image from s1.png");
    EXPECT_TRUE(form().m.mnuWindow[3]->isVisible());
    EXPECT_FALSE(form().runInProgress());
    EXPECT_TRUE(form().CommandGo->isEnabled());
}

TEST_F(CreateImageTest, WindowProgramAndCliMakeTheSameMontage) {
    makeSeries("s", 4, 53, 37);
    for (int method = 0; method < 7; ++method) {
        form().m.mnusimpleCol[static_cast<size_t>(method)]->trigger();
        create(dir.path("s1.png"), "7");
        ASSERT_TRUE(ui.messages.empty());
        const std::string outFile = dir.path("cli" + std::to_string(method) + ".png");
        const CliRun r = cli({"montage", dir.path("s1.png"), "-i", "7", "-m",
                              std::to_string(method), "-o", outFile, "--report", "-"});
        ASSERT_EQ(r.code, 0) << r.err;
        EXPECT_EQ(rgb(QImage(QString::fromStdString(outFile))), montage()) << "method " << method;
        EXPECT_EQ(r.out, state.propertiesString) << "method " << method;
    }
}

// A bracket taken by hand: image k moved by shifts[k - 1], its mark on the feature
// that image 1's mark covers at the design place (13, 13).
class OffsetRunTest : public CreateImageTest {
  protected:
    void makeBracket() {
        const double gains[] = {0.6, 1.0, 1.7};
        for (int k = 1; k <= 3; ++k) {
            const auto [dx, dy] = shifts[k - 1];
            testing::savePictureFile(testing::shiftedScene(64, 48, dx, dy, gains[k - 1]),
                                     dir.path("h" + std::to_string(k) + ".png"));
        }
    }
    const std::pair<int, int> shifts[3] = {{0, 0}, {5, -3}, {-4, 6}};
};

TEST_F(OffsetRunTest, WindowProgramAndCliAlignAlike) {
    makeBracket();
    create(dir.path("h1.png"), "6");
    for (int k = 2; k <= 3; ++k) {
        const auto [dx, dy] = shifts[k - 1];
        form().pictureWindow(k)->PictureFile->moveShape(0, dx, dy);
        form().pictureWindow(k)->PictureFile->moveShape(1, dx + 8, dy + 8);
    }
    form().m.mnuAddOffsets->trigger();
    struct Row {
        const char* option;
        QAction* entry;
        QSize size;
    };
    // Spread 9 across (-4 to 5) and 9 down (-3 to 6).
    const Row rows[] = {
        {"min", form().m.mnuActivateOffsetsMin, QSize(52, 36)},
        {"max", form().m.mnuActivateOffsetsMax, QSize(76, 60)},
        {"same", form().m.mnuActivateOffsetsSame, QSize(64, 48)},
    };
    const int screenWidth = QGuiApplication::primaryScreen()->geometry().width();
    for (const Row& row : rows) {
        row.entry->trigger();
        create(dir.path("h1.png"), "6");
        ASSERT_TRUE(ui.messages.empty()) << lastMessage().text;
        // The montage window takes the new size; in the minimum and maximum areas its
        // left edge leaves out the frames, unlike the arrangement's.
        const FormMontagePicture* w = form().montageWindow();
        EXPECT_EQ(montage().size(), row.size) << row.option;
        EXPECT_EQ(w->PictureFile->size(), row.size) << row.option;
        EXPECT_EQ(w->size(), row.size) << row.option;
        if (row.entry != form().m.mnuActivateOffsetsSame) {
            EXPECT_EQ(w->x(), screenWidth - row.size.width() - state.sizingFrameHeight)
                << row.option;
        }
        EXPECT_TRUE(w->isVisible());

        // The same marks: (13, 13) moved by each image's shift.
        const std::string outFile = dir.path(std::string("cli-") + row.option + ".png");
        const std::vector<std::string> args = {
            "montage", dir.path("h1.png"), "-i",     "6",  "--offsets", row.option, "--mark",
            "2:18,10", "--mark",           "3:9,19", "-o", outFile,     "--report", "-"};
        const CliRun r = cli(args);
        ASSERT_EQ(r.code, 0) << r.err;
        EXPECT_EQ(rgb(QImage(QString::fromStdString(outFile))), montage()) << row.option;
        EXPECT_EQ(r.out, state.propertiesString) << row.option;
        EXPECT_NE(r.out.find("  Image 3 offset X =9\r\n  Image 3 offset Y =19\r\n"),
                  std::string::npos)
            << r.out;
    }
}

TEST_F(OffsetRunTest, MinimumWithNothingLeftKeepsThePicturesAndTheOffsets) {
    makeBracket();
    create(dir.path("h1.png"), "6");
    form().pictureWindow(2)->PictureFile->moveShape(0, 80, 0);  // 64 - 80 leaves nothing
    form().m.mnuAddOffsets->trigger();
    form().m.mnuActivateOffsetsMin->trigger();
    create(dir.path("h1.png"), "6");
    expectOneMessage(
        "I cannot continue with this selected 'minimum area' for the offsets, as with these "
        "offset positions there is no image.",
        "Change the area from the 'minimum'.", MessageIcon::critical);
    EXPECT_FALSE(form().montageWindow()->isVisible());
    EXPECT_EQ(visiblePictureWindows(), 3);
    EXPECT_TRUE(form().m.mnuAddOffsets->isChecked());
    EXPECT_FALSE(form().runInProgress());
}

TEST_F(CreateImageTest, IncrementTexts) {
    makeSeries("s", 2);
    struct Row {
        const char* text;
        const char* field;  // what the field shows after the run
        int increment;
    };
    const Row rows[] = {{"abc", "10", 10}, {"-3", "1", 1}, {"3.5", "3.5", 4}};
    for (const Row& row : rows) {
        create(dir.path("s1.png"), row.text);
        EXPECT_EQ(form().TextIncrement->text().toStdString(), row.field) << row.text;
        EXPECT_EQ(state.increment, row.increment) << row.text;
    }
    EXPECT_TRUE(ui.messages.empty());
}

TEST_F(CreateImageTest, MissingFileEmptiesItsRecentEntry) {
    form().addRecentFile(dir.path("gone1.png"));
    create(dir.path("gone1.png"));
    expectOneMessage("So very sorry, but I can't find that file.", "roll the dice again",
                     MessageIcon::exclamation);
    EXPECT_TRUE(form().recentFiles().at(0).empty());
    EXPECT_EQ(settings->readKey("filename"), "0");
}

TEST_F(CreateImageTest, InvalidPictureStopsTheRun) {
    makeSeries("s", 4);
    testing::writeBytes(dir.path("s3.png"), "this is not a picture");
    create("s1.png");
    expectOneMessage("This is not a valid picture file that I can read.", "Try a different format",
                     MessageIcon::critical);
    EXPECT_EQ(state.imageCount, 2);
    EXPECT_EQ(visiblePictureWindows(), 0);  // loaded, but not arranged
    EXPECT_FALSE(form().montageWindow()->isVisible());
    EXPECT_EQ(form().textFileName->text(), "s1.png");
}

TEST_F(CreateImageTest, ImageOfAnotherSizeIsReportedAndCut) {
    testing::savePictureFile(testing::patternPicture(40, 30, 1), dir.path("d1.png"));
    testing::savePictureFile(testing::patternPicture(64, 48, 2), dir.path("d2.png"));
    create(dir.path("d1.png"));
    expectOneMessage(
        "Image 2 has a different dimension (64,48) from Image 1 (40,30).   All images must be "
        "the same size.",
        "You can edit each picture to the same size", MessageIcon::critical);
    EXPECT_EQ(montage().size(), QSize(40, 30));
    // Ignoring the image silences the message.
    form().m.mnuignoreImage[1]->trigger();
    create(dir.path("d1.png"));
    EXPECT_EQ(ui.messages.size(), 1u);
}

TEST_F(CreateImageTest, ASecondRunIsRefusedWhileOneIsUnderWay) {
    makeSeries("s", 3);
    bool sawDisabled = false;
    int countDuringRun = -1;
    QTimer::singleShot(0, &form(), [&] {
        sawDisabled = !form().CommandGo->isEnabled() && !form().m.mnuLoad->isEnabled() &&
                      form().textFileName->isReadOnly();
        form().CommandGo_Click();  // must not start a second run
        form().mnuLoad_Click();
        countDuringRun = state.imageCount;
    });
    create(dir.path("s1.png"));
    EXPECT_TRUE(sawDisabled);
    EXPECT_GE(countDuringRun, 1);
    EXPECT_EQ(state.imageCount, 3);
    EXPECT_TRUE(form().CommandGo->isEnabled());
}

TEST_F(CreateImageTest, MemberVanishingDuringTheRunEndsTheSeriesThere) {
    makeSeries("v", 4);
    // The first yield comes after image 1 is loaded; image 3 goes then.
    QTimer::singleShot(0, &form(), [&] { std::filesystem::remove(dir.path("v3.png")); });
    create(dir.path("v1.png"));
    EXPECT_TRUE(ui.messages.empty());
    EXPECT_EQ(state.imageCount, 2);
    EXPECT_TRUE(form().montageWindow()->isVisible());
    EXPECT_EQ(visiblePictureWindows(), 2);
}

}  // namespace
}  // namespace lumiquilt
