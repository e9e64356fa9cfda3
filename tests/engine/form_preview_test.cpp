// The preview window: its progress during a run, the two Show Preview commands, and
// its place in the Window menu.
#include <gtest/gtest.h>

#include <cmath>

#include "engine/form_preview.h"
#include "engine/preview.h"
#include "support/ui_fixture.h"

namespace lumiquilt {
namespace {

using testing::UiTest;

class PreviewTest : public UiTest {
  protected:
    void SetUp() override {
        UiTest::SetUp();
        start();
        form().activateFirstTime();
    }
    FormPreview* preview() { return form().previewWindow(); }
    QImage shown() {
        return preview()->PicturePreview->picture().convertToFormat(QImage::Format_RGB888);
    }
    std::vector<std::string> window2Entries() {
        std::vector<std::string> out;
        for (QAction* entry : form().m.mnuWindow2) {
            if (entry->isVisible()) {
                out.push_back(entry->text().toStdString());
            }
        }
        return out;
    }
    // The colour that preview pixel (px, py), top-down, must show of a source of
    // width by height, top-down, by nearest-neighbour sampling in bottom-up buffers.
    static QColor expected(const QImage& source, int px, int py) {
        const int frame = 160;
        const int16_t maxX = paddedBound(source.width());
        const int16_t maxY = paddedBound(source.height());
        const int sx = previewSource(px, previewReduce(frame - 1, maxX), maxX);
        const int sy = previewSource(frame - 1 - py, previewReduce(frame - 1, maxY), maxY);
        if (sx >= source.width() || sy >= source.height()) {
            return QColor(0, 0, 0);  // a padding sample
        }
        return source.pixelColor(sx, source.height() - 1 - sy);
    }
    // The preview shows `source` at every (px, py) of these, top-down.
    void expectShows(const QImage& source, std::initializer_list<int> xs,
                     std::initializer_list<int> ys) {
        for (int py : ys) {
            for (int px : xs) {
                EXPECT_EQ(shown().pixelColor(px, py), expected(source, px, py)) << px << "," << py;
            }
        }
    }
    // Loads a series s1.png .. of count pictures of width by height.
    void load(int count, int width, int height) {
        makeSeries("s", count, width, height);
        setFileName(dir.path("s1.png"));
        form().mnuLoad_Click();
    }
};

TEST(PreviewFrame, WholeGroupsOfFourPixels) {
    EXPECT_EQ(FormPreview::frameSize(15), 160);
    EXPECT_EQ(FormPreview::frameSize(10), 240);
    EXPECT_EQ(FormPreview::frameSize(7), 340);  // 342 is no whole number of groups of four
}

TEST_F(PreviewTest, ARunShowsItsProgressAndThePreviewJoinsTheWindowMenu) {
    makeSeries("s", 2, 640, 480);
    setFileName(dir.path("s1.png"));
    setIncrement("1");
    form().CommandGo_Click();
    ASSERT_TRUE(ui.messages.empty());
    EXPECT_TRUE(preview()->isVisible());
    // With increment 1 every preview row is drawn, each from the first buffer row
    // that scales to it.
    const QImage montage =
        form().montageWindow()->PictureFile->picture().convertToFormat(QImage::Format_RGB888);
    const float reduceY = previewReduce(159, 479);
    const float reduceX = previewReduce(159, 639);
    for (int row : {0, 1, 80, 158, 159}) {
        int y = 0;
        while (std::lround(static_cast<float>(y) * reduceY) < row) {
            ++y;
        }
        for (int px : {0, 1, 80, 159}) {
            EXPECT_EQ(shown().pixelColor(px, 159 - row),
                      montage.pixelColor(previewSource(px, reduceX, 639), 479 - y))
                << px << "," << row;
        }
    }
    EXPECT_EQ(
        window2Entries(),
        (std::vector<std::string>{"Montage in focus image from " + dir.path("s1.png"), "Preview"}));
    // Closing the preview takes its entry out; the next run brings both back.
    preview()->close();
    EXPECT_FALSE(preview()->isVisible());
    EXPECT_EQ(window2Entries().size(), 1u);
    setIncrement("40");
    form().CommandGo_Click();
    EXPECT_EQ(window2Entries().back(), "Preview");
    // A wide increment draws only the first buffer row of each row of blocks: the rows
    // between keep the cleared colour.
    const QColor cleared = preview()->palette().color(QPalette::Window);
    EXPECT_EQ(shown().pixelColor(50, 3), cleared);
    EXPECT_NE(shown().pixelColor(50, 159), cleared);  // buffer row 0
    // Load Image Files unloads it.
    form().mnuLoad_Click();
    EXPECT_FALSE(preview()->isVisible());
    EXPECT_EQ(window2Entries().size(), 0u);
}

TEST_F(PreviewTest, AWindowWhoseCaptionIsNoPicturesGetsNothing) {
    load(1, 40, 30);
    FormPicture stray(&form());
    stray.setWindowTitle("Image 9 -- nowhere.png");
    PreviewCommands(form()).mnuShowPreview_Click(&stray);
    EXPECT_TRUE(ui.messages.empty());
    EXPECT_FALSE(form().hasPreviewWindow() && preview()->isVisible());
}

TEST_F(PreviewTest, ShowPreviewOfASourceTheMontageAndAMethodWindow) {
    makeSeries("s", 3, 80, 60);
    setFileName(dir.path("s1.png"));
    form().m.mnuAllMethods->trigger();
    ASSERT_EQ(ui.messages.size(), 1u);
    ASSERT_EQ(window2Entries().size(), 9u);  // the montage, seven results, the preview

    // Each request clears and draws again; the menu entry stays single.
    for (int k : {2, 3}) {
        form().pictureWindow(k)->mnuShowPreview->trigger();
        expectShows(testing::patternPicture(80, 60, k), {0, 33, 100, 159}, {0, 40, 121, 159});
    }
    for (FormMontagePicture* w : {form().methodWindow(2), form().montageWindow()}) {
        w->mnuShowPreview2->trigger();
        expectShows(w->PictureFile->picture().convertToFormat(QImage::Format_RGB888), {0, 80, 159},
                    {0, 80, 159});
    }
    EXPECT_EQ(window2Entries().size(), 9u);
    EXPECT_EQ(ui.messages.size(), 1u);
}

// The method windows go into their slots in place; a main montage window that still
// shows slot 100 must keep its own montage, not take method 0's.
TEST_F(PreviewTest, MethodWindowsIntoTheirSlotsLeaveTheMainMontageAsItWas) {
    makeSeries("s", 3, 80, 60);
    setFileName(dir.path("s1.png"));
    form().m.mnuAllMethods->trigger();
    ASSERT_EQ(ui.messages.size(), 1u);
    PixelBuffers& b = state.buffers;
    PictureBox* main = form().montageWindow()->PictureFile;
    main->setFramedPicture({frameAsPicture(b.montageSlot(PixelBuffers::kFirstMontageSlot),
                                           b.montageMaxX + 1, b.montageMaxY + 1, 80, 60),
                            b.montagePixels.hold()},
                           QImage(), bgrPictureOf);
    const QImage before = bgrPictureOf(main->view());
    const QImage method0 = form().methodWindow(0)->PictureFile->picture();
    ASSERT_NE(before, method0) << "the test needs slot 100 to change";

    form().methodWindow(2)->mnuShowPreview2->trigger();
    EXPECT_EQ(bgrPictureOf(frameAsPicture(b.montageSlot(PixelBuffers::kFirstMontageSlot),
                                          b.montageMaxX + 1, b.montageMaxY + 1, 80, 60)),
              method0);
    EXPECT_EQ(main->picture(), before);
    EXPECT_EQ(ui.messages.size(), 1u);
}

}  // namespace
}  // namespace lumiquilt
