#include <gtest/gtest.h>
#include <QApplication>
#include <QMouseEvent>

#include "series/picture_io.h"
#include "support/ui_fixture.h"

namespace lumiquilt {
namespace {

using testing::UiTest;

class WindowsTest : public UiTest {
  protected:
    void SetUp() override {
        UiTest::SetUp();
        start();
        form().activateFirstTime();
    }
    // Shows picture windows 1..count with the given captions, as a load would.
    void showPictures(const std::vector<std::string>& captions) {
        for (size_t i = 0; i < captions.size(); ++i) {
            FormPicture* w = form().pictureWindow(static_cast<int>(i) + 1);
            w->setWindowTitle(QString::fromStdString(captions[i]));
            w->show();
        }
    }
    // The texts of the visible entries from first on.
    template <size_t N>
    static std::vector<std::string> visible(const std::array<QAction*, N>& entries, size_t first) {
        std::vector<std::string> out;
        for (size_t i = first; i < N; ++i) {
            if (entries[i]->isVisible()) {
                out.push_back(entries[i]->text().toStdString());
            }
        }
        return out;
    }
    // The Window menu's list of picture windows (slot 0 unused), and its second list.
    std::vector<std::string> visibleEntries() { return visible(form().m.mnuWindow, 1); }
    std::vector<std::string> visibleEntries2() { return visible(form().m.mnuWindow2, 0); }
};

TEST_F(WindowsTest, HelpAndContactOpenTheirPagesAndFourCommandsStayHidden) {
    for (QAction* hidden :
         {form().m.mnuSelect, form().m.mnuEvaluate, form().m.mnuEvaluateAll, form().m.mnuSmooth}) {
        EXPECT_FALSE(hidden->isVisible()) << hidden->text().toStdString();
    }
    form().m.mnuHelp->trigger();
    form().m.mnuContact->trigger();
    EXPECT_EQ(ui.opened,
              (std::vector<std::string>{state.appPath + "lumiquilt.html", kProductWebPage}));
}

TEST_F(WindowsTest, ExactlyOneMethodAndAtMostOneDisplayEntryAreChecked) {
    const auto checks = [](const auto& entries) {
        std::string s;
        for (const QAction* entry : entries) {
            s += entry->isChecked() ? '1' : '0';
        }
        return s;
    };
    form().m.mnusimpleCol[4]->trigger();
    form().m.mnusimpleCol[4]->trigger();  // the checked one stays checked
    EXPECT_EQ(checks(form().m.mnusimpleCol), "0000100");
    QAction* min = form().m.mnuActivateOffsetsMin;
    QAction* max = form().m.mnuActivateOffsetsMax;
    QAction* same = form().m.mnuActivateOffsetsSame;
    const std::vector<QAction*> areas = {min, max, same};
    min->trigger();
    EXPECT_EQ(checks(areas), "100");
    min->trigger();  // a second click leaves none
    EXPECT_EQ(checks(areas), "000");
    max->trigger();
    same->trigger();
    EXPECT_EQ(checks(areas), "001");
    form().m.mnuAddOffsets->trigger();
    EXPECT_TRUE(form().m.mnuAddOffsets->isChecked());
    EXPECT_EQ(checks(areas), "001");
}

TEST_F(WindowsTest, WindowMenuListsTwelvePictureWindowsAtMost) {
    std::vector<std::string> captions;
    for (int k = 1; k <= 13; ++k) {
        captions.push_back("Image " + std::to_string(k) + " -- /p/s" + std::to_string(k) + ".jpg");
    }
    showPictures(captions);
    form().updateWindowMenu();
    std::vector<std::string> expected(captions.begin(), captions.begin() + 12);
    EXPECT_EQ(visibleEntries(), expected);
    // A closed window in the middle moves the later entries up.
    form().pictureWindow(5)->unload();
    expected.erase(expected.begin() + 4);
    EXPECT_EQ(visibleEntries(), expected);
    form().updateWindowMenu();
    expected.push_back(captions[12]);
    EXPECT_EQ(visibleEntries(), expected);
}

TEST_F(WindowsTest, SameCaptionBringsUpTheLowerNumber) {
    showPictures({"Image 1 -- /p/a.jpg", "twin", "twin"});
    form().pictureWindow(2)->hide();
    form().updateWindowMenu();
    form().pictureWindow(2)->show();
    form().updateWindowMenu();
    form().pictureWindow(2)->hide();
    form().mnuWindow_Click(2);  // "twin": window 2 comes back, window 3 is untouched
    EXPECT_TRUE(form().pictureWindow(2)->isVisible());
}

TEST_F(WindowsTest, MontageAndMethodWindowsInTheSecondList) {
    form().montageWindow()->setWindowTitle("Montage in focus image from a1.jpg");
    form().montageWindow()->show();
    for (int i = 0; i < 7; ++i) {
        form().methodWindow(i)->setWindowTitle(QString("Method %1").arg(i));
        form().methodWindow(i)->show();
    }
    form().updateWindowMenu();
    EXPECT_EQ(visibleEntries2(), (std::vector<std::string>{
                                     "Montage in focus image from a1.jpg", "Method 0", "Method 1",
                                     "Method 2", "Method 3", "Method 4", "Method 5", "Method 6"}));
    form().methodWindow(2)->mnuClose->trigger();
    EXPECT_EQ(visibleEntries2(), (std::vector<std::string>{"Montage in focus image from a1.jpg",
                                                           "Method 0", "Method 1", "Method 3",
                                                           "Method 4", "Method 5", "Method 6"}));
    form().methodWindow(4)->hide();
    form().mnuWindow2_Click(4);  // "Method 4"
    EXPECT_TRUE(form().methodWindow(4)->isVisible());
    form().montageWindow()->mnuClose->trigger();
    EXPECT_EQ(visibleEntries2().front(), "Method 0");
}

TEST_F(WindowsTest, RightButtonOpensThePopupAtOneHundred) {
    FormPicture* picture = form().pictureWindow(1);
    picture->PictureFile->setPicture(testing::patternPicture(50, 40, 1));
    picture->show();
    QMouseEvent left(QEvent::MouseButtonRelease, QPointF(3, 3), QPointF(3, 3), Qt::LeftButton,
                     Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(picture->PictureFile, &left);
    EXPECT_FALSE(picture->mnuMenu->isVisible());
    QMouseEvent right(QEvent::MouseButtonRelease, QPointF(3, 3), QPointF(3, 3), Qt::RightButton,
                      Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(picture->PictureFile, &right);
    EXPECT_TRUE(picture->mnuMenu->isVisible());
    EXPECT_EQ(picture->mnuMenu->pos(), picture->mapToGlobal(QPoint(100, 100)));
    picture->mnuMenu->hide();
}

// A picture standing in a frame is shown without a copy; the copy that saving or a
// full-size paint asks for is made then, and one that finds no room reads as no
// picture rather than ending the program.
TEST_F(WindowsTest, AFramedPictureIsCopiedOnlyWhenAskedFor) {
    const QImage picture = testing::patternPicture(9, 5, 3).convertToFormat(QImage::Format_RGB32);
    SampleBuffer frame;
    frame.allocateZeroed(3u * 12 * 8);
    readPictureIntoFrame(viewOf(picture), frame.data(), 12, 8);
    FormPicture* window = form().pictureWindow(1);
    PictureBox* box = window->PictureFile;
    box->setFramedPicture({frameAsPicture(frame.data(), 12, 8, 9, 5), frame.hold()});
    frame.allocateZeroed(0);  // the hold keeps the samples
    EXPECT_EQ(box->pictureSize(), QSize(9, 5));
    EXPECT_TRUE(box->hasPicture());
    // At full size a paint takes its part straight from the frame, and keeps nothing.
    window->show();
    const std::size_t held = SampleBuffer::held();
    EXPECT_EQ(box->grab(QRect(0, 0, 9, 5)).toImage().convertToFormat(QImage::Format_RGB32),
              picture);
    EXPECT_EQ(box->grab(QRect(3, 1, 4, 3)).toImage().convertToFormat(QImage::Format_RGB32),
              picture.copy(3, 1, 4, 3));
    EXPECT_EQ(SampleBuffer::held(), held);

    struct Reset {
        ~Reset() { SampleBuffer::setBudget(0); }
    } reset;
    SampleBuffer::setBudget(SampleBuffer::held());
    EXPECT_TRUE(box->picture().isNull());
    box->repaint();
    SampleBuffer::setBudget(0);
    const std::size_t withFrame = SampleBuffer::held();
    EXPECT_EQ(box->picture(), picture);
    // The copy takes the frame's place, which may then be rewritten or given back.
    EXPECT_EQ(box->view().bits, box->picture().constBits());
    EXPECT_LT(SampleBuffer::held(), withFrame);
    EXPECT_EQ(box->grab(QRect(0, 0, 9, 5)).toImage().convertToFormat(QImage::Format_RGB32),
              picture);
}

// Qt leaves out the window's background under a picture control only when what it
// paints covers it opaquely; anywhere else the background shows.
TEST_F(WindowsTest, OnlyAnOpaqueCoveringPictureSparesTheBackground) {
    const QImage opaque = testing::patternPicture(40, 30, 3).convertToFormat(QImage::Format_RGB32);
    QImage clear(40, 30, QImage::Format_ARGB32);
    clear.fill(Qt::transparent);
    struct Row {
        const char* what;
        QImage picture;
        double scale;
        QSize box;  // empty: the picture's own size
        bool spared;
    };
    const Row rows[] = {
        {"opaque", opaque, 1.0, {}, true},
        {"opaque, shown at half", opaque, 0.5, {}, true},
        {"transparent", clear, 1.0, {}, false},
        {"opaque in a larger control", opaque, 1.0, QSize(60, 50), false},
        {"none", QImage(), 1.0, QSize(40, 30), false},
    };
    FormPicture* window = form().pictureWindow(1);
    PictureBox* box = window->PictureFile;
    window->resize(80, 60);
    window->show();
    const QRgb background = window->palette().color(QPalette::Window).rgb();
    for (const Row& row : rows) {
        box->setAutoSize(row.box.isEmpty());
        box->setDisplayScale(row.scale);
        if (row.picture.isNull()) {
            box->clearPicture();
        } else {
            box->setPicture(row.picture);
        }
        if (!row.box.isEmpty()) {
            box->resize(row.box);
        }
        EXPECT_EQ(box->testAttribute(Qt::WA_OpaquePaintEvent), row.spared) << row.what;
        const QImage seen = window->grab().toImage().convertToFormat(QImage::Format_RGB32);
        const QSize shown = PictureBox::shownSizeAt(row.picture.size(), row.scale);
        for (const QPoint at : {QPoint(1, 1), QPoint(box->width() - 1, box->height() - 1)}) {
            const bool onPicture = !row.picture.isNull() && at.x() < shown.width() &&
                                   at.y() < shown.height() && row.picture.pixel(0, 0) >> 24 != 0;
            if (!onPicture) {
                EXPECT_EQ(seen.pixel(at), background) << row.what << " at " << at.x();
            }
        }
    }
    box->setAutoSize(true);
    box->setDisplayScale(1.0);
}

TEST_F(WindowsTest, ClosingWindowsInAnyOrderIsSafe) {
    makeSeries("s", 3);
    setFileName(dir.path("s1.png"));
    setIncrement("10");
    form().CommandGo_Click();
    form().montageWindow()->close();
    form().pictureWindow(2)->close();
    form().usedWindow()->close();
    form().pictureWindow(1)->mnuClose->trigger();
    form().pictureWindow(3)->close();
    form().previewWindow()->close();
    form().updateWindowMenu();
    EXPECT_EQ(visibleEntries().size(), 0u);
    EXPECT_TRUE(visibleEntries2().empty());
    // The next run fills the slots anew.
    form().CommandGo_Click();
    EXPECT_TRUE(ui.messages.empty());
    EXPECT_EQ(visiblePictureWindows(), 3);
    EXPECT_TRUE(form().montageWindow()->isVisible());
}

}  // namespace
}  // namespace lumiquilt
