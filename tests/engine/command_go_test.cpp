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

CliRun cli(const std::vector<std::string>& args, const std::string& folder = "/") {
    std::ostringstream out;
    std::ostringstream err;
    const int code = runCli(args, folder, out, err);
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
};

TEST_F(CreateImageTest, MakesTheMontageAndItsReportAsTheCliDoes) {
    makeSeries("s", 3);
    form().m.mnusimpleCol[2]->trigger();
    setFileName("s1.png");
    setIncrement("abc");
    form().m.mnuignoreImage[1]->setChecked(true);  // after the name, which clears it
    form().CommandGo_Click();
    EXPECT_TRUE(ui.messages.empty()) << lastMessage().text;
    EXPECT_TRUE(form().montageWindow()->isVisible());
    const CliRun r = cli({"montage", "s1.png", "-i", "abc", "-m", "2", "--ignore", "2", "-o",
                          "cli.png", "--report", "-"},
                         dir.root());
    ASSERT_EQ(r.code, 0) << r.err;
    EXPECT_EQ(rgb(QImage(QString::fromStdString(dir.path("cli.png")))), montage());
    EXPECT_EQ(r.out, state.propertiesString);
    EXPECT_EQ(form().montageWindow()->Caption(), "Montage in focus image from s1.png");
    // The fields return to what the user typed, the increment checked; the settings get
    // the completed name.
    EXPECT_EQ(form().textFileName->text(), "s1.png");
    EXPECT_EQ(form().TextIncrement->text(), "10");
    EXPECT_EQ(settings->readKey("filename"), dir.path("s1.png"));
    EXPECT_EQ(form().recentFiles().at(0), "s1.png");
    // The Window menu lists the montage and the three pictures.
    EXPECT_TRUE(form().m.mnuWindow2[0]->isVisible());
    EXPECT_EQ(form().m.mnuWindow2[0]->text(), "Montage in focus image from s1.png");
    EXPECT_TRUE(form().m.mnuWindow[3]->isVisible());
    EXPECT_FALSE(form().runInProgress());
    EXPECT_TRUE(form().CommandGo->isEnabled());
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
    }
}

TEST_F(CreateImageTest, MissingFileEmptiesItsRecentEntry) {
    form().addRecentFile(dir.path("gone1.png"));
    create(dir.path("gone1.png"));
    // The engine's message reaches the message box whole, and the hourglass ends.
    ASSERT_EQ(ui.messages.size(), 1u);
    EXPECT_EQ(lastMessage().text, "So very sorry, but I can't find that file.");
    EXPECT_EQ(lastMessage().title, "roll the dice again");
    EXPECT_EQ(lastMessage().icon, MessageIcon::exclamation);
    EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
    EXPECT_TRUE(form().recentFiles().at(0).empty());
    EXPECT_EQ(settings->readKey("filename"), "0");
}

// A later click on a series that stayed as it was reads no file: the windows keep the
// very pictures they had. One edited file, or Load Image Files giving the windows
// pictures of its own, has the next click read the series anew.
TEST_F(CreateImageTest, ALaterClickReadsTheSeriesOnlyWhenItChanged) {
    makeSeries("s", 3);
    // Where each window's samples stand: a series read again stands in new memory,
    // taken while the windows still hold the old.
    auto keys = [this] {
        std::vector<const uint8_t*> k;
        for (int i = 1; i <= 3; ++i) {
            k.push_back(form().pictureWindow(i)->PictureFile->view().bits);
        }
        return k;
    };
    create("s1.png");
    const std::vector<const uint8_t*> first = keys();
    create("s1.png");
    EXPECT_EQ(keys(), first);

    // Written through a new file renamed over the old, as an editor saving would.
    const QImage changed = testing::patternPicture(40, 30, 9);
    testing::savePictureFile(changed, dir.path("new.png"));
    std::filesystem::rename(dir.path("new.png"), dir.path("s2.png"));
    create("s1.png");
    const std::vector<const uint8_t*> second = keys();
    for (int i = 0; i < 3; ++i) {
        EXPECT_NE(second[i], first[i]) << i;
    }
    EXPECT_EQ(rgb(form().pictureWindow(2)->PictureFile->picture()), rgb(changed));
    const CliRun r = cli({"montage", "s1.png", "-i", "10", "-o", "cli.png"}, dir.root());
    ASSERT_EQ(r.code, 0) << r.err;
    EXPECT_EQ(rgb(QImage(QString::fromStdString(dir.path("cli.png")))), montage());

    form().mnuLoad_Click();
    const std::vector<const uint8_t*> loaded = keys();
    create("s1.png");
    for (int i = 0; i < 3; ++i) {
        EXPECT_NE(keys()[i], loaded[i]) << i;
    }
}

// The windows show their members straight from the series buffer, reduced when they
// are larger than the screen; what later runs do with the buffer leaves every window's
// picture as it was loaded.
TEST_F(CreateImageTest, SeriesWindowsKeepTheirPicturesWhateverLaterRunsRead) {
    makeSeries("a", 3, 1000, 760);
    makeSeries("b", 2, 24, 20);
    auto file = [this](const std::string& name) {
        return rgb(QImage(QString::fromStdString(dir.path(name))));
    };
    create("a1.png");
    ASSERT_LT(form().pictureWindow(3)->PictureFile->displayScale(), 1.0);
    create("b1.png");
    ASSERT_EQ(state.imageCount, 2);
    EXPECT_EQ(rgb(form().pictureWindow(1)->PictureFile->picture()), file("b1.png"));
    EXPECT_EQ(rgb(form().pictureWindow(2)->PictureFile->picture()), file("b2.png"));
    EXPECT_EQ(rgb(form().pictureWindow(3)->PictureFile->picture()), file("a3.png"));
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

}  // namespace
}  // namespace lumiquilt
